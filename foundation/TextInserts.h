// Inserts into a text with numbered places, as resource strings carry them:
// "Cannot open %1 on line %2.". Portable.
#pragma once

#include <initializer_list>
#include <string>

namespace foundation {

// `pattern` with each "%1" to "%9" replaced by the insert of that number; a
// null or missing insert leaves the place empty. Any other "%" stays as it
// is, so a pattern from a resource can never ask for more than was given.
std::string FormatInserts(const std::string& pattern, std::initializer_list<const char*> inserts);

}  // namespace foundation
