#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace torture {

struct Options {
    std::chrono::seconds duration{600};
    int kills = 0;                     // in mid-write, at least, no matter how long they take
    long long copies = -1;             // at least; if negative, a share of five million
    std::chrono::seconds patience{1};  // for a reconnection
    std::uint32_t seed = 1;            // of the order and the moments of the faults
    int driveHours = 0;                // simulated hours of undisturbed driving; 0 for the faults
    std::string plugin;                // file of the plugin
};

/** The options of a command line; empty if they are invalid. */
[[nodiscard]] std::optional<Options> readOptions(const std::vector<std::string>& arguments);

[[nodiscard]] bool asksForHelp(const std::vector<std::string>& arguments);
[[nodiscard]] const char* helpText();

}  // namespace torture
