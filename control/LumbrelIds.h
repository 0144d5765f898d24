// Names and numbers of the control that code on both sides of the COM
// boundary shares: class identifiers, ProgIDs, DISPIDs and the identifiers
// of the browser dialog's controls that the control itself addresses. The
// type library's identifiers come from the header that widl makes from
// Lumbrel.idl.
#pragma once

#include <windows.h>

#include <objbase.h>

#include "Lumbrel_h.h"

namespace control {

inline constexpr CLSID kLumbrelPropPageClassId = {
    0xE59C4B47, 0xC3EF, 0x11D3, {0xBC, 0x14, 0x00, 0x60, 0x97, 0xBF, 0xE3, 0xD4}};

inline constexpr char kControlProgId[] = "LUMBREL.LumbrelCtrl.1";
inline constexpr char kControlVersionIndependentProgId[] = "LUMBREL.LumbrelCtrl";
inline constexpr char kPropPageProgId[] = "LUMBREL.LumbrelPropPage.1";

inline constexpr WORD kTypeLibMajor = 1;
inline constexpr WORD kTypeLibMinor = 0;
inline constexpr char kTypeLibVersionText[] = "1.0";

// OLEMISC_SETCLIENTSITEFIRST | OLEMISC_ACTIVATEWHENVISIBLE | OLEMISC_INSIDEOUT
// | OLEMISC_CANTLINKINSIDE | OLEMISC_RECOMPOSEONRESIZE
inline constexpr DWORD kMiscStatus = 0x20191;

// The initial size, in pixels of the screen.
inline constexpr int kInitialWidth = 0x21C;
inline constexpr int kInitialHeight = 0x162;

// SELFREG_E_TYPELIB and SELFREG_E_CLASS.
inline constexpr HRESULT kSelfRegTypeLibError = static_cast<HRESULT>(0x80040200);
inline constexpr HRESULT kSelfRegClassError = static_cast<HRESULT>(0x80040201);

// _DLumbrel
inline constexpr DISPID kDispidAspectRatio = 1;
inline constexpr DISPID kDispidThumbNailState = 2;
inline constexpr DISPID kDispidRefreshCombo = 3;
inline constexpr DISPID kDispidSetItemPath = 4;
inline constexpr DISPID kDispidDoubleClickFlag = 5;
inline constexpr DISPID kDispidRefreshControl = 6;
inline constexpr DISPID kDispidRedrawBitmaps = 7;
inline constexpr DISPID kDispidAboutBox = -552;

// _DLumbrelEvents
inline constexpr DISPID kDispidItemSel = 1;
inline constexpr DISPID kDispidItemDBClick = 2;

// The browser dialog (template 202) and the controls of it that the
// control's members and keyboard map address.
inline constexpr UINT kBrowserDialogTemplate = 202;
inline constexpr int kGalleryId = 1000;
inline constexpr int kTreeId = 1044;
inline constexpr int kLargeThumbnailsRadio = 1087;
inline constexpr int kSmallThumbnailsRadio = 1088;
inline constexpr int kAspectRatioBox = 1092;

}  // namespace control
