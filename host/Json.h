// The few pieces of JSON that the script mode prints: one object per line.
#pragma once

#include <string>

namespace host {

// `text`, which is ANSI in the process's code page, as a quoted JSON string
// in UTF-8, with quotes, backslashes and control characters escaped.
std::string JsonString(const std::string& text);

}  // namespace host
