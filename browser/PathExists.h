#pragma once

#include <string>

namespace browser {

// Whether `path` names an existing file or directory, as the C runtime's
// access test with mode 0 answers it.
bool PathExistsOnDisk(const std::string& path);

}  // namespace browser
