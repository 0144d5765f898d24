// The commands of `qlt`, the tool that makes, lists, extracts from and checks
// .qlt art containers. Everything runs in-process with the output streams
// given, so tests drive the tool exactly as its command line does.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace qlt {

enum ExitCode : int {
    kExitOk = 0,
    kExitProblems = 1,  // the command ran, and found problems or not what was asked for
    kExitUsage = 2,     // bad usage, or a file that can't be read or written
};

// Runs one command line without the program name: {"list", "a.qlt", "--json"}.
// Messages that the container reader would show the user go to `err` for the
// duration of the call.
int RunQlt(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

}  // namespace qlt
