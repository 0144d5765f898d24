#include "browser/SelectionTarget.h"

#include <cctype>
#include <cstring>

namespace browser {

namespace {

bool EqualsIgnoringCase(const std::string& text, const char* upper) {
    if (text.size() != std::strlen(upper)) return false;
    for (size_t i = 0; i < text.size(); ++i)
        if (std::toupper(static_cast<unsigned char>(text[i])) != static_cast<unsigned char>(upper[i]))
            return false;
    return true;
}

}  // namespace

bool IsPictureFile(const std::string& fileName) {
    const size_t dot = fileName.find('.');
    if (dot == std::string::npos) return false;
    const std::string type = fileName.substr(dot + 1);
    for (const char* picture : kPictureTypes)
        if (EqualsIgnoringCase(type, picture)) return true;
    return false;
}

SelectionTarget TargetOfPath(const std::string& path, const ExistsTest& exists) {
    if (exists(path)) return {TargetKind::Picture, path};
    const std::string container = path + kContainerExtension;
    if (exists(container)) return {TargetKind::Container, container};
    return {};
}

SelectionTarget TargetOfPathContainerFirst(const std::string& path, const ExistsTest& exists) {
    const std::string container = path + kContainerExtension;
    if (exists(container)) return {TargetKind::Container, container};
    return {TargetKind::Picture, path};
}

}  // namespace browser
