// The exception barrier of every COM method: nothing thrown inside may
// cross the interface, so the body runs in a lambda whose exceptions become
// HRESULTs.
//
//   HRESULT Thing::Method(int* out) {
//       return ComBarrier([&] { ...; return S_OK; });
//   }
#pragma once

#include <windows.h>

#include <new>

#include "framework/win32/ComPtr.h"

namespace framework::ole {

template <class Body>
HRESULT ComBarrier(Body&& body) noexcept {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

// A second reference to `pointer`, for keeping what a caller lends.
template <class T>
framework::win32::ComPtr<T> ShareComPtr(T* pointer) noexcept {
    if (pointer != nullptr) pointer->AddRef();
    return framework::win32::ComPtr<T>(pointer);
}

}  // namespace framework::ole
