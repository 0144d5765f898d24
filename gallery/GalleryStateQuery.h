// What a gallery shows, asked of its window by a registered message, so that
// a container built apart from the control (the test container's script
// mode) can read it without knowing the window object's layout. Each field
// comes back as the message's result, so the message carries no pointer and
// is as safe to answer for another process as for this one.
#pragma once

#include <windows.h>

namespace gallery {

// The registered message's name: "Lumbrel.GalleryState".
inline UINT GalleryStateMessage() {
    static const UINT message = ::RegisterWindowMessageA("Lumbrel.GalleryState");
    return message;
}

// The message's wParam: which value to give back.
enum GalleryStateField : WPARAM {
    // kGalleryStateSignature: a window that gives anything else back is no gallery.
    kGalleryStateSignatureField = 0,
    kGalleryStateCells,
    kGalleryStateSelectedIndex,
    kGalleryStateCurrentIndex,
    kGalleryStateCellWidth,
    kGalleryStateCellHeight,
    kGalleryStateColumns,
    kGalleryStateTopRow,
};

// "LGS1": a gallery answering this set of fields.
constexpr LRESULT kGalleryStateSignature = 0x4C475331;

}  // namespace gallery
