#include "browser/TreeLevel.h"

#include <algorithm>
#include <cctype>

#include "browser/ShellAccess.h"

namespace browser {

namespace {

// A key under HKEY_CLASSES_ROOT, closed when it goes.
class ClassesKey {
public:
    explicit ClassesKey(const std::string& name) {
        if (name.empty() ||
            ::RegOpenKeyExA(HKEY_CLASSES_ROOT, name.c_str(), 0, KEY_READ, &key_) != ERROR_SUCCESS)
            key_ = nullptr;
    }
    ~ClassesKey() {
        if (key_ != nullptr) ::RegCloseKey(key_);
    }
    ClassesKey(const ClassesKey&) = delete;
    ClassesKey& operator=(const ClassesKey&) = delete;

    bool Exists() const { return key_ != nullptr; }
    // The key's default value as text; empty when there is none.
    std::string DefaultText() const {
        if (key_ == nullptr) return std::string();
        char text[MAX_PATH + 1] = {};
        DWORD type = 0;
        DWORD size = MAX_PATH;
        if (::RegQueryValueExA(key_, nullptr, nullptr, &type, reinterpret_cast<BYTE*>(text), &size) !=
                ERROR_SUCCESS ||
            (type != REG_SZ && type != REG_EXPAND_SZ))
            return std::string();
        text[MAX_PATH] = '\0';
        return text;
    }

private:
    HKEY key_ = nullptr;
};

bool HasIconHandler(const std::string& className) {
    return ClassesKey(className + "\\ShellEx\\IconHandler").Exists();
}

bool NamesTheFileItself(const std::string& className) {
    return ClassesKey(className + "\\DefaultIcon").DefaultText().find("%1") != std::string::npos;
}

// The sort key of a text under the comparison of the tree's sorted
// insertion (lstrcmpi: the user's locale, case ignored). The platform
// promises that comparing two keys byte by byte orders the texts as that
// comparison does, equal keys for equal texts included.
std::string SortKey(const std::string& text) {
    constexpr DWORD kFlags = LCMAP_SORTKEY | NORM_IGNORECASE;
    char room[512];
    const int written = ::LCMapStringA(LOCALE_USER_DEFAULT, kFlags, text.c_str(), -1, room, sizeof room);
    if (written > 0) return std::string(room, static_cast<size_t>(written));
    const int size = ::LCMapStringA(LOCALE_USER_DEFAULT, kFlags, text.c_str(), -1, nullptr, 0);
    if (size <= 0) return std::string();
    std::string key(static_cast<size_t>(size), '\0');
    ::LCMapStringA(LOCALE_USER_DEFAULT, kFlags, text.c_str(), -1, key.data(), size);
    return key;
}

}  // namespace

std::string ShellExtensionOf(const std::string& fileName) {
    const size_t dot = fileName.rfind('.');
    if (dot == std::string::npos) return std::string();
    std::string extension = fileName.substr(dot);
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension;
}

bool IconDependsOnFile(const std::string& extension) {
    if (extension.size() < 2 || extension[0] != '.') return true;
    if (HasIconHandler(extension) || NamesTheFileItself(extension)) return true;
    if (HasIconHandler("SystemFileAssociations\\" + extension)) return true;
    const std::string progId = ClassesKey(extension).DefaultText();
    if (!progId.empty() && (HasIconHandler(progId) || NamesTheFileItself(progId))) return true;
    return false;
}

int FileIconIndexes::IndexOf(const std::string& directoryPath, const std::string& fileName) {
    const std::string extension = ShellExtensionOf(fileName);
    auto depends = dependsOnFile_.find(extension);
    if (depends == dependsOnFile_.end())
        depends = dependsOnFile_.emplace(extension, IconDependsOnFile(extension)).first;
    if (!depends->second) {
        const auto known = byType_.find(extension);
        if (known != byType_.end()) return known->second;
    }
    bool answered = false;
    const int index = ShellIconIndex(directoryPath + "\\" + fileName, kSmallFileIcon, &answered);
    // A file the shell could not answer for says nothing about its type.
    if (!depends->second && answered) byType_.emplace(extension, index);
    return index;
}

void SortedLevel::Add(const std::string& text, int image, const std::string& directoryPath) {
    entries_.push_back(Entry{text, image, directoryPath});
}

std::vector<size_t> SortedLevel::SortedOrder() const {
    std::vector<std::string> keys;
    keys.reserve(entries_.size());
    for (const Entry& entry : entries_) keys.push_back(SortKey(entry.text));
    std::vector<size_t> order(entries_.size());
    for (size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::sort(order.begin(), order.end(), [&keys](size_t a, size_t b) { return keys[a] < keys[b]; });
    for (size_t i = 1; i < order.size(); ++i) {
        // Where two texts are equal, or a key could not be made, where the
        // items go is the tree's own business.
        if (keys[order[i]].empty() || keys[order[i - 1]] == keys[order[i]]) return {};
    }
    if (!order.empty() && keys[order[0]].empty()) return {};
    return order;
}

void SortedLevel::InsertInto(const TreeControl& tree, HTREEITEM parent,
                             const std::function<void(HTREEITEM, const std::string&)>& onDirectory) const {
    std::vector<size_t> order = SortedOrder();
    const bool placedHere = !entries_.empty() && !order.empty() && tree.GetChildItem(parent) == nullptr;
    if (!placedHere) {
        order.resize(entries_.size());
        for (size_t i = 0; i < order.size(); ++i) order[i] = i;
    }
    for (const size_t index : order) {
        const Entry& entry = entries_[index];
        const HTREEITEM node = tree.InsertItem(TreeControl::kItemMask, entry.text, entry.image, 0, parent,
                                               placedHere ? TVI_LAST : TVI_SORT);
        if (node != nullptr && !entry.directoryPath.empty() && onDirectory)
            onDirectory(node, entry.directoryPath);
    }
}

}  // namespace browser
