// Owners for kernel objects and global memory, and a scoped GlobalLock.
#pragma once

#include <windows.h>

#include <cstddef>
#include <utility>

#include "framework/win32/UniqueHandle.h"

namespace framework::win32 {

namespace detail {

// CreateFile reports failure with INVALID_HANDLE_VALUE, not null.
struct FileHandleTraits {
    using Handle = HANDLE;
    static Handle Invalid() { return INVALID_HANDLE_VALUE; }
    static void Release(Handle handle) { ::CloseHandle(handle); }
};

struct KernelHandleTraits {
    using Handle = HANDLE;
    static Handle Invalid() { return nullptr; }
    static void Release(Handle handle) { ::CloseHandle(handle); }
};

struct GlobalMemoryTraits {
    using Handle = HGLOBAL;
    static Handle Invalid() { return nullptr; }
    static void Release(Handle handle) { ::GlobalFree(handle); }
};

}  // namespace detail

using UniqueFile = UniqueHandle<detail::FileHandleTraits>;
using UniqueKernelHandle = UniqueHandle<detail::KernelHandleTraits>;
using UniqueGlobal = UniqueHandle<detail::GlobalMemoryTraits>;

// Locks global memory for the lifetime of the object. For movable memory the
// pointer is valid only while locked, hence a scope rather than a call pair.
class GlobalLockView {
public:
    explicit GlobalLockView(HGLOBAL memory) noexcept
        : memory_(memory), data_(memory != nullptr ? ::GlobalLock(memory) : nullptr) {}
    ~GlobalLockView() {
        if (data_ != nullptr) ::GlobalUnlock(memory_);
    }
    GlobalLockView(const GlobalLockView&) = delete;
    GlobalLockView& operator=(const GlobalLockView&) = delete;

    void* Data() const noexcept { return data_; }
    // The size that GlobalAlloc may have rounded up; 0 when not locked.
    std::size_t Size() const noexcept { return data_ != nullptr ? ::GlobalSize(memory_) : 0; }
    explicit operator bool() const noexcept { return data_ != nullptr; }

private:
    HGLOBAL memory_;
    void* data_;
};

}  // namespace framework::win32
