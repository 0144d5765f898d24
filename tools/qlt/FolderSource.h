// The items of `qlt create OUT --from DIR`: every picture of one folder, its
// main data the file itself, its renditions made by the imaging layer, and
// its keywords from an optional keyword file. The imaging layer decodes with
// WIC, so only the Windows build makes items from a folder; elsewhere the
// request fails with a message that says so.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "containers/writer/ArtContainerWriter.h"

namespace qlt {

enum class RenditionFormat { kBmp, kJpeg, kPng };

// "bmp", "jpeg" (or "jpg") and "png", without regard to case.
bool ParseRenditionFormat(const std::string& text, RenditionFormat& format);

struct FolderRequest {
    std::string folder;
    int32_t method = containers::kMethodStored;  // how each item's data is stored
    RenditionFormat format = RenditionFormat::kBmp;
    std::string keywordFile;  // empty: no keywords
};

enum class FolderStatus {
    kOk,
    kProblems,     // a picture that can't be decoded, no picture at all, a bad keyword file
    kUnreadable,   // the folder, a file in it or the keyword file can't be read
    kUnsupported,  // this build has no imaging layer
};

struct FolderResult {
    FolderStatus status = FolderStatus::kOk;
    std::vector<std::string> notes;     // files passed over, and why
    std::vector<std::string> messages;  // what stops the container from being written
};

// True in the build that can make items from a folder.
bool CanCreateFromFolder();

// Adds one item per picture of the folder to `writer`, in the order of the
// file names (without regard to case, then byte by byte). Files whose
// content is no picture are passed over with a note; subfolders are not
// entered. Nothing is added unless the status is kOk.
FolderResult AddFolderItems(const FolderRequest& request, containers::ArtContainerWriter& writer);

}  // namespace qlt
