// Owns the pixels of one imaging-layer bitmap descriptor within a scope, so
// that no path out of the preview renderer leaves them behind.
#pragma once

#include "thumbnails/BitmapDescriptor.h"
#include "thumbnails/BitmapKernel.h"

namespace browser {

class PreviewBitmapOwner {
public:
    PreviewBitmapOwner() noexcept = default;
    ~PreviewBitmapOwner() { imaging::FreeBitmap(&bitmap_); }
    PreviewBitmapOwner(const PreviewBitmapOwner&) = delete;
    PreviewBitmapOwner& operator=(const PreviewBitmapOwner&) = delete;

    imaging::BitmapDescriptor* Get() noexcept { return &bitmap_; }
    const imaging::BitmapDescriptor& operator*() const noexcept { return bitmap_; }

    // The descriptor, which the caller now owns; this scope holds nothing.
    imaging::BitmapDescriptor Release() noexcept {
        const imaging::BitmapDescriptor released = bitmap_;
        bitmap_ = imaging::BitmapDescriptor{};
        return released;
    }

private:
    imaging::BitmapDescriptor bitmap_{};
};

}  // namespace browser
