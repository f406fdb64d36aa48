#include "tools/simulator/options.h"
#include "tools/simulator/runner.h"

#include <iostream>
#include <string>
#include <vector>

int main(int argc, char* argv[]) {
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    const simulator::CommandLine line = simulator::readCommandLine(arguments);
    switch (line.action) {
        case simulator::CommandLine::Action::Help:
            std::cout << simulator::helpText();
            return simulator::kEndedInOrder;
        case simulator::CommandLine::Action::Version:
            std::cout << "rataip-simulator " RATAIP_VERSION "\n";
            return simulator::kEndedInOrder;
        case simulator::CommandLine::Action::Refuse:
            std::cerr << "rataip-simulator: " << line.complaint << '\n';
            return simulator::kBadOptions;
        case simulator::CommandLine::Action::Run:
            break;
    }
    return simulator::Runner(line.options).run();
}
