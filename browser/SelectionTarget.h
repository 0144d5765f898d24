// What a path from the tree or the host stands for: a picture file (or a
// directory: any plain path that exists), a container reached by appending
// ".QLT", or nothing.
#pragma once

#include <functional>
#include <string>

namespace browser {

// The nine picture types, in the order they are tried.
constexpr const char* kPictureTypes[9] = {"BMP", "JPG", "JPEG", "EMF", "CMP", "PNG", "WMF", "TIF", "EPS"};

// The extension that marks a container; always reported in upper case,
// whatever the case of the name on disk.
constexpr const char kContainerExtension[] = ".QLT";

// True when the text behind the first "." of the bare file name is one of the
// picture types, compared case-insensitively. A name with two dots, such as
// "holiday.2000.jpg", is no picture.
bool IsPictureFile(const std::string& fileName);

enum class TargetKind { Nothing, Picture, Container };

struct SelectionTarget {
    TargetKind kind = TargetKind::Nothing;
    std::string path;  // the path to report; empty for Nothing
};

// Whether a path exists (a file or a directory).
using ExistsTest = std::function<bool(const std::string& path)>;

// The rule of tree selections and of navigation: the plain path first, so a
// file or directory at a container's path without extension hides the
// container; then the path with ".QLT"; else nothing.
SelectionTarget TargetOfPath(const std::string& path, const ExistsTest& exists);

// The rule of gallery clicks and of the size switch: the path with ".QLT"
// first; otherwise the plain path, taken as a picture whether it exists or
// not.
SelectionTarget TargetOfPathContainerFirst(const std::string& path, const ExistsTest& exists);

}  // namespace browser
