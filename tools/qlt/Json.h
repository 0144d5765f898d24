// One JSON object per output line. Texts in a container are 8-bit ANSI
// (Windows-1252), not UTF-8, so every byte outside printable ASCII goes out as
// a \u escape of the character it stands for: the output is plain ASCII and
// means the same whatever the reader's encoding.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qlt {

// `text` as a quoted JSON string.
std::string JsonString(const std::string& text);
// The Unicode code point of one Windows-1252 byte.
uint32_t AnsiToCodePoint(unsigned char byte);

class JsonObject {
public:
    JsonObject& Text(const std::string& name, const std::string& value);
    JsonObject& Number(const std::string& name, int64_t value);
    // Non-finite numbers have no JSON form and go out as null.
    JsonObject& Real(const std::string& name, double value);
    JsonObject& Bool(const std::string& name, bool value);
    JsonObject& Null(const std::string& name);
    JsonObject& Numbers(const std::string& name, const std::vector<int64_t>& values);
    JsonObject& Texts(const std::string& name, const std::vector<std::string>& values);
    // `json` must already be a complete JSON value.
    JsonObject& Raw(const std::string& name, const std::string& json);

    std::string Str() const { return "{" + body_ + "}"; }

private:
    void Name(const std::string& name);
    std::string body_;
};

}  // namespace qlt
