// qlt: makes, lists, extracts from and checks .qlt art containers.
#include <iostream>
#include <string>
#include <vector>

#include "foundation/UserMessage.h"
#include "tools/qlt/QltCommands.h"

int main(int argc, char** argv) {
    // A command-line tool never puts up a message box: whatever the reader
    // would show the user goes to standard error.
    foundation::SetUserMessageHandler([](const std::string& text) { std::cerr << "qlt: " << text << "\n"; });
    std::vector<std::string> args(argv + (argc > 0 ? 1 : 0), argv + argc);
    const int status = qlt::RunQlt(args, std::cout, std::cerr);
    std::cout.flush();
    return status;
}
