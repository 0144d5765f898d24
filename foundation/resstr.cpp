#include "foundation/resstr.h"

#include <windows.h>

#include <new>
#include <utility>
#include <vector>

#include "foundation/ReportError.h"
#include "foundation/TextInserts.h"
#include "framework/win32/Window.h"

namespace foundation {

namespace {

// Reports of this source keep the lines under which the log has always
// carried them, wherever the code now stands.
constexpr char kSourceName[] = "resstr";
constexpr long kLoadFailureLine = 53;
constexpr long kMemoryErrorLine = 65;
constexpr long kMemoryErrorWithoutTextLine = 69;

// A string table entry counts its characters in 16 bits.
constexpr long kMaxStringId = 0xFFFF;
constexpr std::size_t kMaxStringLength = 0xFFFF;

ResourceStringLoader g_loader = nullptr;

}  // namespace

bool LoadResourceString(long id, std::string& text) {
    // LoadStringA turns the id into a block number; beyond 16 bits that
    // number would be taken for a pointer to a resource name.
    if (id < 0 || id > kMaxStringId) return false;
    const HINSTANCE module = framework::win32::ResourceModule();
    std::vector<char> buffer(256);
    for (;;) {
        const int size = static_cast<int>(buffer.size());
        const int length = ::LoadStringA(module, static_cast<UINT>(id), buffer.data(), size);
        if (length <= 0) return false;
        // A text that filled the buffer may have been cut: try a larger one.
        if (length < size - 1 || buffer.size() > kMaxStringLength + 1) {
            text.assign(buffer.data(), static_cast<std::size_t>(length));
            return true;
        }
        buffer.resize(buffer.size() * 2);
    }
}

ResourceStringLoader SetResourceStringLoader(ResourceStringLoader loader) {
    const ResourceStringLoader previous = g_loader;
    g_loader = loader;
    return previous;
}

const std::string& CResString::GetText() {
    if (!text_.empty()) return text_;
    try {
        const ResourceStringLoader loader = g_loader != nullptr ? g_loader : &LoadResourceString;
        std::string loaded;
        if (loader(id_, loaded))
            text_ = std::move(loaded);
        else
            ReportErrorMessage(StringLoadFailureText(id_).c_str(), kSourceName, kLoadFailureLine);
    } catch (const std::bad_alloc& error) {
        const char* what = error.what();
        if (what != nullptr && *what != '\0')
            ReportErrorMessage(what, kSourceName, kMemoryErrorLine);
        else
            ReportErrorMessage(kStringLoadMemoryText, kSourceName, kMemoryErrorWithoutTextLine);
    }
    return text_;
}

std::string FormatResourceString(long id, const char* insert1, const char* insert2) {
    CResString pattern(id);
    return FormatInserts(pattern.GetText(), {insert1, insert2});
}

}  // namespace foundation
