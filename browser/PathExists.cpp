#include "browser/PathExists.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace browser {

bool PathExistsOnDisk(const std::string& path) {
#ifdef _WIN32
    return _access(path.c_str(), 0) == 0;
#else
    return access(path.c_str(), F_OK) == 0;
#endif
}

}  // namespace browser
