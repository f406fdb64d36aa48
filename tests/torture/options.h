#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace torture {

struct Options {
    std::chrono::seconds duration{600};
    int kills = 0;                     // in mid-write, at least so many, however long they take
    long long copies = -1;             // at least so many; a share of five million when below 0
    std::chrono::seconds patience{1};  // for a reconnection
    std::uint32_t seed = 1;            // of the order and the moments of the faults
    int driveHours = 0;                // simulated hours of undisturbed driving; 0 for the faults
    std::string plugin;                // file of the plugin
};

/** What a command line asks for; nothing when it makes no sense. */
[[nodiscard]] std::optional<Options> readOptions(const std::vector<std::string>& arguments);

[[nodiscard]] bool asksForHelp(const std::vector<std::string>& arguments);
[[nodiscard]] const char* helpText();

}  // namespace torture
