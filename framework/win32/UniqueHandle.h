// A move-only owner for one Win32 handle, parameterised by how the handle is
// released. The GDI, kernel and memory owners of this folder are aliases of
// it, so they share one tested implementation of ownership transfer.
//
// A traits type gives the handle type, the value that means "none" and the
// release call:
//
//   struct FontTraits {
//       using Handle = HFONT;
//       static Handle Invalid() { return nullptr; }
//       static void Release(Handle h) { ::DeleteObject(h); }
//   };
//   using UniqueFont = framework::win32::UniqueHandle<FontTraits>;
#pragma once

#include <utility>

namespace framework::win32 {

template <class Traits>
class UniqueHandle {
public:
    using Handle = typename Traits::Handle;

    UniqueHandle() noexcept : handle_(Traits::Invalid()) {}
    explicit UniqueHandle(Handle handle) noexcept : handle_(handle) {}
    ~UniqueHandle() { Reset(); }

    UniqueHandle(UniqueHandle&& other) noexcept : handle_(other.Release()) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        if (this != &other) Reset(other.Release());
        return *this;
    }
    UniqueHandle(const UniqueHandle&) = delete;
    UniqueHandle& operator=(const UniqueHandle&) = delete;

    Handle Get() const noexcept { return handle_; }
    bool IsValid() const noexcept { return handle_ != Traits::Invalid(); }
    explicit operator bool() const noexcept { return IsValid(); }

    // Gives up ownership without releasing: the caller takes the handle over.
    Handle Release() noexcept { return std::exchange(handle_, Traits::Invalid()); }

    void Reset(Handle handle = Traits::Invalid()) noexcept {
        const Handle old = std::exchange(handle_, handle);
        if (old != Traits::Invalid()) Traits::Release(old);
    }

private:
    Handle handle_;
};

}  // namespace framework::win32
