#include "tools/qlt/Manifest.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "tools/qlt/TextLines.h"

namespace qlt {

namespace {

std::string FileNameOf(const std::string& path) {
    const size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

class ManifestParser {
public:
    ManifestParser(const std::string& folder, const std::string& label,
                   containers::ArtContainerWriter& writer)
        : folder_(folder), label_(label), writer_(writer) {}

    ManifestResult Parse(const std::string& text);

private:
    void Line(const std::string& directive, const std::string& value);
    void Global(const std::string& directive, const std::string& value);
    void ItemDirective(const std::string& directive, const std::string& value);
    void FinishItem();
    bool LoadFile(const std::string& name, std::vector<uint8_t>& bytes);
    bool Integer(const std::string& value, int64_t low, int64_t high, const char* what, int64_t& out);
    void Fail(const std::string& message, int line = 0);

    const std::string folder_;
    const std::string label_;
    containers::ArtContainerWriter& writer_;
    ManifestResult result_;
    int line_ = 0;

    bool inItem_ = false;
    int itemLine_ = 0;
    containers::ArtItemSource item_;
    bool hasPath_ = false;
    bool hasMethod_ = false;
    bool hasCode_ = false;
    std::string dataName_;
};

void ManifestParser::Fail(const std::string& message, int line) {
    result_.messages.push_back(label_ + ":" + std::to_string(line != 0 ? line : line_) + ": " + message);
    if (result_.status == ManifestStatus::kOk) result_.status = ManifestStatus::kInvalid;
}

bool ManifestParser::Integer(const std::string& value, int64_t low, int64_t high, const char* what,
                             int64_t& out) {
    if (!ParseInteger(value, out) || out < low || out > high) {
        Fail(std::string("'") + value + "' is not a valid " + what);
        return false;
    }
    return true;
}

bool ManifestParser::LoadFile(const std::string& name, std::vector<uint8_t>& bytes) {
    std::string error;
    if (ReadWholeFile(ResolveAgainst(folder_, name), bytes, error)) return true;
    Fail(error);
    result_.status = ManifestStatus::kUnreadable;
    return false;
}

ManifestResult ManifestParser::Parse(const std::string& text) {
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        ++line_;
        const std::string line = Trim(text.substr(start, end - start));
        start = end + 1;
        if (line.empty() || line[0] == '#') continue;
        const size_t blank = line.find_first_of(kBlanks);
        const std::string directive = line.substr(0, blank);
        const std::string value = blank == std::string::npos ? std::string() : Trim(line.substr(blank));
        Line(directive, value);
    }
    FinishItem();
    return result_;
}

void ManifestParser::Line(const std::string& directive, const std::string& value) {
    if (directive == "item") {
        FinishItem();
        inItem_ = true;
        itemLine_ = line_;
        item_ = containers::ArtItemSource();
        hasPath_ = hasMethod_ = hasCode_ = false;
        dataName_.clear();
        if (value.empty()) Fail("an item needs a name");
        if (value.size() > containers::kMaxEntryTextLength)
            Fail("the name is " + std::to_string(value.size()) + " characters long; at most " +
                 std::to_string(containers::kMaxEntryTextLength) + " fit");
        item_.name = value;
        return;
    }
    if (directive == "notice" || directive == "version" || directive == "header-value" ||
        directive == "none-offset" || directive == "implode") {
        if (inItem_) {
            Fail("'" + directive + "' belongs before the first item");
            return;
        }
        Global(directive, value);
        return;
    }
    if (directive == "path" || directive == "code" || directive == "data" || directive == "method" ||
        directive == "rendition" || directive == "keywords" || directive == "keyword") {
        if (!inItem_) {
            Fail("'" + directive + "' outside an item: start one with 'item NAME'");
            return;
        }
        ItemDirective(directive, value);
        return;
    }
    Fail("unknown directive '" + directive + "'");
}

void ManifestParser::Global(const std::string& directive, const std::string& value) {
    containers::ArtWriterOptions& options = writer_.Options();
    if (directive == "notice") {
        if (value.size() > containers::kMaxNoticeLength) {
            Fail("the notice is longer than " + std::to_string(containers::kMaxNoticeLength) + " characters");
            return;
        }
        options.notice = value;
    } else if (directive == "version") {
        char* end = nullptr;
        errno = 0;
        const double version = std::strtod(value.c_str(), &end);
        if (value.empty() || *end != '\0' || errno != 0) {
            Fail("'" + value + "' is not a version number");
            return;
        }
        options.version = version;
    } else if (directive == "header-value") {
        int64_t number = 0;
        if (Integer(value, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max(),
                    "header value", number))
            options.headerWord2 = static_cast<int32_t>(number);
    } else if (directive == "none-offset") {
        if (value != "-1" && value != "0") {
            Fail("none-offset is -1 or 0, not '" + value + "'");
            return;
        }
        options.noRenditionOffset = value == "0" ? 0 : containers::kNoRendition;
    } else if (directive == "implode") {
        const size_t blank = value.find_first_of(kBlanks);
        const std::string type = value.substr(0, blank);
        const std::string size = blank == std::string::npos ? std::string() : Trim(value.substr(blank));
        if (type == "ascii") {
            options.implodeType = dcl::kCompressionAscii;
        } else if (type == "binary") {
            options.implodeType = dcl::kCompressionBinary;
        } else {
            Fail("implode takes 'ascii' or 'binary', not '" + type + "'");
            return;
        }
        if (!size.empty()) {
            if (size != "1024" && size != "2048" && size != "4096") {
                Fail("the implode dictionary is 1024, 2048 or 4096 bytes, not '" + size + "'");
                return;
            }
            options.implodeDictionarySize = static_cast<unsigned int>(std::atoi(size.c_str()));
        }
    }
}

void ManifestParser::ItemDirective(const std::string& directive, const std::string& value) {
    if (directive == "path") {
        if (hasPath_) Fail("the item has a path already");
        hasPath_ = true;
        if (value.size() > containers::kMaxEntryTextLength)
            Fail("the path is " + std::to_string(value.size()) + " characters long; at most " +
                 std::to_string(containers::kMaxEntryTextLength) + " fit");
        item_.path = value;
    } else if (directive == "code") {
        if (hasCode_) Fail("the item has a code already");
        hasCode_ = true;
        int64_t code = 0;
        if (Integer(value, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max(), "code",
                    code))
            item_.code = static_cast<int32_t>(code);
    } else if (directive == "data") {
        if (item_.data) {
            Fail("the item has data already");
            return;
        }
        if (value.empty()) {
            Fail("'data' needs a file name");
            return;
        }
        std::vector<uint8_t> bytes;
        dataName_ = value;
        if (LoadFile(value, bytes)) item_.data = std::move(bytes);
    } else if (directive == "method") {
        if (hasMethod_) Fail("the item has a method already");
        hasMethod_ = true;
        if (!ParseMethod(value, item_.method))
            Fail("the method is 0 (stored), 1 (zlib) or 2 (implode), not '" + value + "'");
    } else if (directive == "rendition") {
        const size_t blank = value.find_first_of(kBlanks);
        if (blank == std::string::npos) {
            Fail("'rendition' takes a kind and a file: rendition 0x40 small.bmp");
            return;
        }
        const std::string kindText = value.substr(0, blank);
        const std::string file = Trim(value.substr(blank));
        int64_t kind = 0;
        if (!ParseInteger(kindText, kind) ||
            (kind != 0x10 && kind != 0x20 && kind != 0x30 && kind != 0x40 && kind != 0x80)) {
            Fail("'" + kindText + "' is not a rendition kind (0x10, 0x20, 0x30, 0x40 or 0x80)");
            return;
        }
        for (const containers::ArtRenditionSource& existing : item_.renditions) {
            if (existing.kind == kind) {
                Fail("the item has a rendition of kind " + kindText + " already");
                return;
            }
        }
        containers::ArtRenditionSource rendition;
        rendition.kind = static_cast<int32_t>(kind);
        if (LoadFile(file, rendition.payload)) item_.renditions.push_back(std::move(rendition));
    } else if (directive == "keywords") {
        size_t start = 0;
        while (start <= value.size()) {
            size_t comma = value.find(',', start);
            if (comma == std::string::npos) comma = value.size();
            const std::string word = Trim(value.substr(start, comma - start));
            if (!word.empty()) item_.keywords.push_back(word);
            start = comma + 1;
        }
    } else if (directive == "keyword") {
        if (value.empty()) {
            Fail("'keyword' needs a word");
            return;
        }
        item_.keywords.push_back(value);
    }
}

void ManifestParser::FinishItem() {
    if (!inItem_) return;
    inItem_ = false;
    if (hasMethod_ && !item_.data && dataName_.empty()) Fail("the item has a method but no data", itemLine_);
    if (!hasPath_ && !dataName_.empty()) {
        item_.path = FileNameOf(dataName_);
        if (item_.path.size() > containers::kMaxEntryTextLength)
            Fail("the data file's name is too long to serve as the item's path", itemLine_);
    }
    writer_.AddItem(std::move(item_));
    item_ = containers::ArtItemSource();
}

}  // namespace

bool ParseMethod(const std::string& text, int32_t& method) {
    if (text == "0" || text == "stored") {
        method = containers::kMethodStored;
    } else if (text == "1" || text == "zlib") {
        method = containers::kMethodZlib;
    } else if (text == "2" || text == "implode") {
        method = containers::kMethodImplode;
    } else {
        return false;
    }
    return true;
}

bool ParseInteger(const std::string& text, int64_t& value) {
    if (text.empty() || text.find_first_of(kBlanks) != std::string::npos) return false;
    char* end = nullptr;
    errno = 0;
    const long long parsed = std::strtoll(text.c_str(), &end, 0);
    if (*end != '\0' || errno != 0) return false;
    // strtoll takes a leading 0 as octal; a manifest means decimal by it.
    const size_t digits = text.find_first_not_of("+-");
    if (digits != std::string::npos && text[digits] == '0' && text.size() > digits + 1 &&
        text[digits + 1] != 'x' && text[digits + 1] != 'X') {
        errno = 0;
        const long long decimal = std::strtoll(text.c_str(), &end, 10);
        if (*end != '\0' || errno != 0) return false;
        value = decimal;
        return true;
    }
    value = parsed;
    return true;
}

bool ReadWholeFile(const std::string& path, std::vector<uint8_t>& bytes, std::string& error) {
    bytes.clear();
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        error = path + ": " + std::strerror(errno);
        return false;
    }
    uint8_t buffer[65536];
    bool failed = false;
    for (;;) {
        const size_t count = std::fread(buffer, 1, sizeof buffer, file);
        bytes.insert(bytes.end(), buffer, buffer + count);
        if (count < sizeof buffer) {
            failed = std::ferror(file) != 0;
            break;
        }
    }
    std::fclose(file);
    if (failed) {
        error = path + ": read failed";
        bytes.clear();
        return false;
    }
    return true;
}

std::string FolderOf(const std::string& path) {
    const size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string ResolveAgainst(const std::string& folder, const std::string& name) {
    const bool absolute =
        (!name.empty() && (name[0] == '/' || name[0] == '\\')) || (name.size() >= 2 && name[1] == ':');
    if (absolute || folder.empty()) return name;
    return folder + name;
}

ManifestResult ParseManifest(const std::string& text, const std::string& folder, const std::string& label,
                             containers::ArtContainerWriter& writer) {
    return ManifestParser(folder, label, writer).Parse(text);
}

ManifestResult LoadManifest(const std::string& path, containers::ArtContainerWriter& writer) {
    std::vector<uint8_t> bytes;
    std::string error;
    if (!ReadWholeFile(path, bytes, error)) {
        ManifestResult result;
        result.status = ManifestStatus::kUnreadable;
        result.messages.push_back(error);
        return result;
    }
    return ParseManifest(std::string(bytes.begin(), bytes.end()), FolderOf(path), path, writer);
}

}  // namespace qlt
