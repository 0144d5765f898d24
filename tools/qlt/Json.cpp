#include "tools/qlt/Json.h"

#include <cmath>
#include <cstdio>

namespace qlt {

uint32_t AnsiToCodePoint(unsigned char byte) {
    // Windows-1252 gives 0x80..0x9F to typographic characters; the five bytes
    // it leaves undefined keep their C1 code points, as Windows maps them.
    static const uint16_t kHighControls[32] = {
        0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
    if (byte >= 0x80 && byte < 0xA0) return kHighControls[byte - 0x80];
    return byte;
}

std::string JsonString(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        switch (c) {
            case '"': out += "\\\""; break;
            case '\\': out += "\\\\"; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            case '\t': out += "\\t"; break;
            case '\b': out += "\\b"; break;
            case '\f': out += "\\f"; break;
            default:
                if (byte < 0x20 || byte >= 0x7F) {
                    char escape[8];
                    std::snprintf(escape, sizeof escape, "\\u%04x",
                                  static_cast<unsigned int>(AnsiToCodePoint(byte)));
                    out += escape;
                } else {
                    out += c;
                }
        }
    }
    out += '"';
    return out;
}

void JsonObject::Name(const std::string& name) {
    if (!body_.empty()) body_ += ',';
    body_ += JsonString(name);
    body_ += ':';
}

JsonObject& JsonObject::Text(const std::string& name, const std::string& value) {
    Name(name);
    body_ += JsonString(value);
    return *this;
}

JsonObject& JsonObject::Number(const std::string& name, int64_t value) {
    Name(name);
    body_ += std::to_string(value);
    return *this;
}

JsonObject& JsonObject::Real(const std::string& name, double value) {
    Name(name);
    if (!std::isfinite(value)) {
        body_ += "null";
        return *this;
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", value);
    body_ += text;
    return *this;
}

JsonObject& JsonObject::Bool(const std::string& name, bool value) {
    Name(name);
    body_ += value ? "true" : "false";
    return *this;
}

JsonObject& JsonObject::Null(const std::string& name) {
    Name(name);
    body_ += "null";
    return *this;
}

JsonObject& JsonObject::Numbers(const std::string& name, const std::vector<int64_t>& values) {
    Name(name);
    body_ += '[';
    for (size_t i = 0; i < values.size(); ++i) {
        if (i != 0) body_ += ',';
        body_ += std::to_string(values[i]);
    }
    body_ += ']';
    return *this;
}

JsonObject& JsonObject::Texts(const std::string& name, const std::vector<std::string>& values) {
    Name(name);
    body_ += '[';
    for (size_t i = 0; i < values.size(); ++i) {
        if (i != 0) body_ += ',';
        body_ += JsonString(values[i]);
    }
    body_ += ']';
    return *this;
}

JsonObject& JsonObject::Raw(const std::string& name, const std::string& json) {
    Name(name);
    body_ += json;
    return *this;
}

}  // namespace qlt
