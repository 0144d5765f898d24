#include "host/Json.h"

#include <windows.h>

#include <cstdio>

#include "framework/ole/Strings.h"

namespace host {

std::string JsonString(const std::string& text) {
    const std::wstring wide = framework::ole::AnsiToWide(text);
    std::string result = "\"";
    for (size_t i = 0; i < wide.size(); ++i) {
        const unsigned code = wide[i];
        if (code == '"' || code == '\\') {
            result += '\\';
            result += static_cast<char>(code);
        } else if (code < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", code);
            result += escape;
        } else if (code < 0x80) {
            result += static_cast<char>(code);
        } else {
            // One UTF-16 unit, or a surrogate pair, to UTF-8.
            const int units = (code >= 0xD800 && code <= 0xDBFF && i + 1 < wide.size()) ? 2 : 1;
            char utf8[8];
            const int length =
                ::WideCharToMultiByte(CP_UTF8, 0, &wide[i], units, utf8, sizeof utf8, nullptr, nullptr);
            result.append(utf8, length > 0 ? static_cast<size_t>(length) : 0);
            i += static_cast<size_t>(units - 1);
        }
    }
    result += '"';
    return result;
}

}  // namespace host
