#include "tools/qlt/FolderSource.h"

#include <cctype>

namespace qlt {

bool ParseRenditionFormat(const std::string& text, RenditionFormat& format) {
    std::string lower;
    for (char c : text) lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (lower == "bmp") {
        format = RenditionFormat::kBmp;
    } else if (lower == "jpeg" || lower == "jpg") {
        format = RenditionFormat::kJpeg;
    } else if (lower == "png") {
        format = RenditionFormat::kPng;
    } else {
        return false;
    }
    return true;
}

}  // namespace qlt
