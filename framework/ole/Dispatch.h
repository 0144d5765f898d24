// Hand-written IDispatch::Invoke for dispinterfaces: a table describes each
// member (DISPID, kind, argument types); Invoke checks the call against it,
// coerces the arguments to the declared types and hands them to the object.
// A test compares each table with the type library, so the two cannot drift.
//
//   constexpr DispatchMember kMembers[] = {
//       {1, L"Visible", DispatchMember::kProperty, VT_BOOL, {}, 0},
//       {2, L"Open", DispatchMember::kMethod, VT_EMPTY, {VT_BSTR, VT_I4}, 2},
//   };
#pragma once

#include <windows.h>

#include <oaidl.h>
#include <oleauto.h>

#include <array>
#include <cstddef>

namespace framework::ole {

// Owns one VARIANT: cleared on destruction.
class Variant {
public:
    Variant() noexcept { ::VariantInit(&value_); }
    ~Variant() { ::VariantClear(&value_); }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;

    VARIANT* Get() noexcept { return &value_; }
    const VARIANT* Get() const noexcept { return &value_; }
    VARTYPE Type() const noexcept { return value_.vt; }
    void Clear() noexcept { ::VariantClear(&value_); }

private:
    VARIANT value_;
};

struct DispatchMember {
    enum Kind { kMethod, kProperty };
    static constexpr size_t kMaxArguments = 4;

    DISPID id;
    const wchar_t* name;
    Kind kind;
    // A property's type; VT_EMPTY for a method, which returns nothing.
    VARTYPE type;
    std::array<VARTYPE, kMaxArguments> argumentTypes;
    UINT argumentCount;
};

// What Invoke was asked, once checked: the member, whether a property is
// read or written, and the arguments already coerced to their declared types
// (for a property put, the one new value).
struct DispatchCall {
    const DispatchMember* member = nullptr;
    bool propertyGet = false;
    bool propertyPut = false;
    std::array<Variant, DispatchMember::kMaxArguments> arguments;
};

// Finds the member of `id` in the table.
const DispatchMember* FindDispatchMember(const DispatchMember* members, size_t count, DISPID id);

// Checks `flags` and `params` against `member` and fills `call`. Failures are
// the HRESULTs that Invoke must return, with *argError set where the
// dispatch rules ask for it (a type mismatch or an overflow).
HRESULT PrepareDispatchCall(const DispatchMember& member, WORD flags, const DISPPARAMS* params,
                            DispatchCall* call, UINT* argError);

}  // namespace framework::ole
