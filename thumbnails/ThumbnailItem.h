// One thumbnail in memory: a small bitmap and the path of the picture it
// stands for, kept on disk as a .thm file (ThmFile.h). The browser fills an
// item from a container's rendition by copying a whole loaded descriptor
// into `bitmap`; an item loaded from a picture file is fitted to the 85 by
// 64 box (ThumbnailFit.h). The thumbnail library owns the items.
#pragma once

#include <string>

#include "foundation/FilePath.h"
#include "thumbnails/BitmapDescriptor.h"

namespace thumbnails {

// The directory that relative names are relative to. The library sets it when
// it starts; an item only reads it. Libraries start on any user-interface
// thread, so the code reads and writes it through the two functions below,
// which hold a lock; the variable itself is there for tests on one thread.
extern foundation::CFilePath thumbnailRoot;
foundation::CFilePath ThumbnailRoot();
void SetThumbnailRoot(const foundation::CFilePath& root);

class CThumbnailItem {
public:
    // Empty texts and an empty bitmap.
    CThumbnailItem();
    // Gives the pixels back to the imaging layer (ReleaseBitmap, then
    // FreeBitmap), except when the item knows its picture only by a relative
    // name (filePath empty, relativeName not): such an item deliberately
    // leaves its pixels alone.
    virtual ~CThumbnailItem();
    CThumbnailItem(const CThumbnailItem&) = delete;
    CThumbnailItem& operator=(const CThumbnailItem&) = delete;

    // filePath becomes the picture's path, then LoadAndFit; its result.
    // A null picture changes nothing and gives false.
    bool LoadFromFile(const foundation::CFilePath* picture);
    // relativeName becomes the rightmost (picture length - root length)
    // characters of the picture's path, then LoadAndFit; its result. The
    // root is not checked to be a prefix; an empty root takes the whole path
    // and a root longer than the path the empty text.
    bool LoadFromFileRelative(const foundation::CFilePath* picture);
    // Loads the picture at 24 bits, blue-green-red, into `bitmap` (what it
    // held before is overwritten, not given back) and resizes it with
    // resampling to FitIntoThumbnailBox. True when the resize succeeded; a
    // failed resize leaves the bitmap at its loaded size.
    bool LoadAndFit(const foundation::CFilePath* picture);

    // filePath, or thumbnailRoot followed directly by relativeName when
    // filePath is empty (so the root itself when both are).
    void GetFullPath(foundation::CFilePath& out) const;
    // The file title (up to the first dot) of filePath, or of relativeName
    // when filePath is empty.
    void GetTitle(std::string& out) const;

    // Reads a .thm file. The texts change as they are read, also when a later
    // field is short; the image is loaded at 24 bits, blue-green-red, in
    // whatever format the imaging layer recognises. False at any short read
    // or failed load. A file that cannot be opened (or a null path) throws
    // FileError.
    bool ReadThm(const foundation::CFilePath* thmPath);
    // Writes the item as a .thm file, created or truncated, with the bitmap
    // as a 24-bit BMP. True, always: a failed save writes an empty image. A
    // file that cannot be opened or written (or a null path) throws
    // FileError.
    bool WriteThm(const foundation::CFilePath* thmPath);

    imaging::BitmapDescriptor bitmap;
    std::string relativeName;
    foundation::CFilePath filePath;
};

}  // namespace thumbnails
