#include "foundation/FilePath.h"

#include <algorithm>
#include <cstring>

#include "foundation/SortStrings.h"

namespace foundation {

namespace {

// The start of the file name: behind the last backslash, or failing that
// behind the last colon; npos with neither.
std::size_t FileNameStart(const std::string& path) {
    std::size_t separator = path.rfind('\\');
    if (separator == std::string::npos) separator = path.rfind(':');
    return separator == std::string::npos ? std::string::npos : separator + 1;
}

void CutExtension(std::string& path) {
    const std::string extension = ExtractExtension(path);
    if (!extension.empty()) path.erase(path.size() - extension.size() - 1);
}

}  // namespace

std::string ExtractFileName(const std::string& path) {
    const std::size_t start = FileNameStart(path);
    return start == std::string::npos ? std::string() : path.substr(start);
}

std::string ExtractFileTitle(const std::string& path) {
    const std::size_t start = FileNameStart(path);
    if (start == std::string::npos) return path;
    const std::size_t dot = path.find('.', start);
    return dot == std::string::npos ? std::string() : path.substr(start, dot - start);
}

std::string ExtractExtension(const std::string& path) {
    const std::size_t dot = path.rfind('.');
    return dot == std::string::npos ? std::string() : path.substr(dot + 1);
}

std::string ExtractTitledPath(const std::string& path) {
    return path;
}

std::string MakePath(const char* directory, const char* file, const char* extension) {
    std::string result = directory != nullptr ? directory : "";
    if (file != nullptr) {
        if (!result.empty() && result.back() != '\\') result += '\\';
        while (*file == '\\') ++file;
        result += file;
    }
    if (extension != nullptr) {
        CutExtension(result);
        while (*extension == '.') ++extension;
        if (*extension != '\0') {
            result += '.';
            result += extension;
        }
    }
    return result;
}

bool MakePath(char* out, std::size_t outSize, const char* directory, const char* file,
              const char* extension) {
    const std::string result = MakePath(directory, file, extension);
    if (out == nullptr || outSize == 0) return false;
    const std::size_t count = std::min(result.size(), outSize - 1);
    std::memcpy(out, result.data(), count);
    out[count] = '\0';
    return count == result.size();
}

std::string ToUncPath(const std::string& path, const NetworkNameQuery& query) {
    if (path.size() < 2 || path[1] != ':' || !query) return path;
    const char drive[3] = {path[0], ':', '\0'};
    char name[kMaxPathText] = {};
    std::uint32_t length = kMaxPathText;
    if (!query(drive, name, &length)) return path;
    name[kMaxPathText - 1] = '\0';
    return name + path.substr(2);
}

std::string ToDrivePath(const std::string& path, const NetworkNameQuery& query) {
    if ((path.size() >= 2 && path[1] == ':') || !query) return path;
    std::uint32_t length = kMaxPathText;
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        const char drive[3] = {letter, ':', '\0'};
        char name[kMaxPathText] = {};
        // A failed call may have raised it to the room it wanted; the buffer
        // is no bigger for that.
        length = std::min<std::uint32_t>(length, kMaxPathText);
        if (!query(drive, name, &length)) continue;
        name[kMaxPathText - 1] = '\0';
        const std::size_t nameLength = std::strlen(name);
        if (CompareNoCase(path.c_str(), name, nameLength) == 0) return drive + path.substr(nameLength);
    }
    return path;
}

CFilePath::CFilePath(const char* text) : path(text != nullptr ? text : "") {}

CFilePath::CFilePath(const char* text, int length) {
    if (text == nullptr || length <= 0) return;
    const std::size_t count = static_cast<std::size_t>(length);
    const void* end = std::memchr(text, '\0', count);
    path.assign(text,
                end != nullptr ? static_cast<std::size_t>(static_cast<const char*>(end) - text) : count);
}

CFilePath::CFilePath(const std::string& text) : path(text) {}

CFilePath::CFilePath(const char* directory, const char* file, const char* extension) {
    SetPath(directory, file, extension);
}

CFilePath::~CFilePath() = default;

void CFilePath::SetPath(const char* directory, const char* file, const char* extension) {
    char buffer[kMaxPathText];
    MakePath(buffer, sizeof buffer, directory, file, extension);
    path = buffer;
}

void CFilePath::SetExtension(const char* extension) {
    if (!path.empty()) CutExtension(path);
    if (extension != nullptr && *extension != '\0') {
        if (*extension != '.') path += '.';
        path += extension;
    }
}

void CFilePath::SetFileName(const char* name) {
    if (name == nullptr) name = "";
    while (*name == '\\') ++name;
    if (path.empty()) {
        path = name;
        return;
    }
    path.erase(path.size() - ExtractFileTitle(path).size());
    path += name;
}

void CFilePath::SetFileNameKeepExtension(const char* name) {
    std::string full = name != nullptr ? name : "";
    const std::string extension = GetExtension();
    if (!extension.empty()) {
        full += '.';
        full += extension;
    }
    SetFileName(full.c_str());
}

bool CFilePath::IsRelative() const {
    if (path.empty()) return false;
    const std::size_t colon = path.find(':');
    const std::size_t at = colon == std::string::npos ? 0 : colon + 1;
    return at >= path.size() || path[at] != '\\';
}

}  // namespace foundation
