#include "irsdk/layout.h"
#include "tests/support/publishercommands.h"

#include <cstdlib>
#include <iostream>
#include <string>

// Publishes the simulator's objects by commands on its standard input, and answers each of them.
int main() {
    testsupport::PublisherCommands commands;
    for (std::string line; std::getline(std::cin, line);) {
        if (line == "die") {
            std::cout << "ok" << std::endl;
            std::_Exit(EXIT_SUCCESS);
        }
        if (line == "quit") {
            // Without a block there is no status to clear, which is no error here.
            static_cast<void>(commands.run("stop"));
            static_cast<void>(commands.run("status 0"));
            break;
        }
        std::cout << commands.run(line) << std::endl;
    }
    return EXIT_SUCCESS;
}
