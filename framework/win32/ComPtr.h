// A move-only owner of one COM interface pointer, and a scope that makes sure
// COM is usable on the current thread.
#pragma once

#include <objbase.h>
#include <windows.h>

#include <utility>

namespace framework::win32 {

// Holds one reference. Move-only so that every AddRef in the code is visible:
// a second reference is made with Copy().
template <class T>
class ComPtr {
public:
    ComPtr() noexcept = default;
    // Takes over a reference that the caller already holds.
    explicit ComPtr(T* pointer) noexcept : pointer_(pointer) {}
    ~ComPtr() { Reset(); }

    ComPtr(ComPtr&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
    ComPtr& operator=(ComPtr&& other) noexcept {
        if (this != &other) {
            Reset();
            pointer_ = std::exchange(other.pointer_, nullptr);
        }
        return *this;
    }
    ComPtr(const ComPtr&) = delete;
    ComPtr& operator=(const ComPtr&) = delete;

    T* Get() const noexcept { return pointer_; }
    T* operator->() const noexcept { return pointer_; }
    explicit operator bool() const noexcept { return pointer_ != nullptr; }

    // For out parameters of creating calls: releases what is held and gives
    // the address to write the new pointer to.
    T** Put() noexcept {
        Reset();
        return &pointer_;
    }
    void** PutVoid() noexcept { return reinterpret_cast<void**>(Put()); }

    T* Detach() noexcept { return std::exchange(pointer_, nullptr); }

    void Reset() noexcept {
        if (T* old = std::exchange(pointer_, nullptr)) old->Release();
    }

    ComPtr Copy() const noexcept {
        if (pointer_ != nullptr) pointer_->AddRef();
        return ComPtr(pointer_);
    }

    // QueryInterface into another owner; the HRESULT tells whether it worked.
    template <class U>
    HRESULT As(ComPtr<U>* other) const noexcept {
        if (pointer_ == nullptr) return E_POINTER;
        return pointer_->QueryInterface(__uuidof(U), other->PutVoid());
    }

private:
    T* pointer_ = nullptr;
};

// Makes COM usable on this thread for the lifetime of the object. A thread
// that already has an apartment keeps it: a single-threaded one just counts
// one more initialisation (undone here), a multithreaded one answers
// RPC_E_CHANGED_MODE, which is usable too and must not be undone.
class ComInitialization {
public:
    explicit ComInitialization(DWORD model = COINIT_APARTMENTTHREADED) noexcept
        : result_(::CoInitializeEx(nullptr, model)) {}
    ~ComInitialization() {
        if (SUCCEEDED(result_)) ::CoUninitialize();
    }
    ComInitialization(const ComInitialization&) = delete;
    ComInitialization& operator=(const ComInitialization&) = delete;

    bool Usable() const noexcept { return SUCCEEDED(result_) || result_ == RPC_E_CHANGED_MODE; }
    HRESULT Result() const noexcept { return result_; }

private:
    HRESULT result_;
};

}  // namespace framework::win32
