#include "framework/ole/Dispatch.h"

namespace framework::ole {

namespace {

// The VARIANT of `position` (0 is the first argument as the caller wrote it),
// positional or named by the argument's index; null when absent. `index`
// receives its place in rgvarg, which is what an argument error reports.
const VARIANT* FindArgument(const DISPPARAMS* params, UINT position, UINT* index) {
    for (UINT i = 0; i < params->cNamedArgs; ++i) {
        if (params->rgdispidNamedArgs[i] == static_cast<DISPID>(position)) {
            *index = i;
            return &params->rgvarg[i];
        }
    }
    const UINT positional = params->cArgs - params->cNamedArgs;
    if (position < positional) {
        *index = params->cArgs - 1 - position;
        return &params->rgvarg[*index];
    }
    return nullptr;
}

HRESULT Coerce(const VARIANT* source, VARTYPE type, Variant* target, UINT index, UINT* argError) {
    // VARIANT arguments are taken as they come; everything else is converted,
    // by reference or not, as the dispatch rules of the platform do.
    HRESULT hr = S_OK;
    if (type == VT_VARIANT)
        hr = ::VariantCopyInd(target->Get(), const_cast<VARIANT*>(source));
    else
        hr = ::VariantChangeType(target->Get(), const_cast<VARIANT*>(source), 0, type);
    if (FAILED(hr)) {
        if (argError != nullptr) *argError = index;
        if (hr != DISP_E_OVERFLOW) hr = DISP_E_TYPEMISMATCH;
    }
    return hr;
}

}  // namespace

const DispatchMember* FindDispatchMember(const DispatchMember* members, size_t count, DISPID id) {
    for (size_t i = 0; i < count; ++i)
        if (members[i].id == id) return &members[i];
    return nullptr;
}

HRESULT PrepareDispatchCall(const DispatchMember& member, WORD flags, const DISPPARAMS* params,
                            DispatchCall* call, UINT* argError) {
    if (params == nullptr || call == nullptr) return E_INVALIDARG;
    if (params->cArgs > 0 && params->rgvarg == nullptr) return E_INVALIDARG;
    if (params->cNamedArgs > params->cArgs) return E_INVALIDARG;
    if (params->cNamedArgs > 0 && params->rgdispidNamedArgs == nullptr) return E_INVALIDARG;
    call->member = &member;

    if (member.kind == DispatchMember::kProperty) {
        if (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) {
            // The new value is the one argument named DISPID_PROPERTYPUT.
            if (params->cArgs != 1 || params->cNamedArgs != 1 ||
                params->rgdispidNamedArgs[0] != DISPID_PROPERTYPUT)
                return params->cArgs != 1 ? DISP_E_BADPARAMCOUNT : DISP_E_PARAMNOTFOUND;
            call->propertyPut = true;
            return Coerce(&params->rgvarg[0], member.type, &call->arguments[0], 0, argError);
        }
        const bool asGet = (flags & DISPATCH_PROPERTYGET) || (flags & DISPATCH_METHOD);
        if (!asGet) return DISP_E_MEMBERNOTFOUND;
        if (params->cNamedArgs > 0) return DISP_E_NONAMEDARGS;
        if (params->cArgs != 0) return DISP_E_BADPARAMCOUNT;
        call->propertyGet = true;
        return S_OK;
    }

    if (!(flags & DISPATCH_METHOD)) return DISP_E_MEMBERNOTFOUND;
    if (params->cArgs != member.argumentCount) return DISP_E_BADPARAMCOUNT;
    for (UINT i = 0; i < params->cNamedArgs; ++i) {
        const DISPID named = params->rgdispidNamedArgs[i];
        if (named < 0 || static_cast<UINT>(named) >= member.argumentCount) return DISP_E_PARAMNOTFOUND;
    }
    for (UINT position = 0; position < member.argumentCount; ++position) {
        UINT index = 0;
        const VARIANT* argument = FindArgument(params, position, &index);
        if (argument == nullptr) return DISP_E_PARAMNOTOPTIONAL;
        const HRESULT hr =
            Coerce(argument, member.argumentTypes[position], &call->arguments[position], index, argError);
        if (FAILED(hr)) return hr;
    }
    return S_OK;
}

}  // namespace framework::ole
