#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

/** An input from which a fuzzer starts: well-formed, and unlike the others. */
struct Seed {
    std::string name;
    std::string bytes;
};

/** The names of all targets. */
[[nodiscard]] const std::vector<std::string>& targetNames();

/** The seeds of a target, the same at every call; none for an unknown target. */
[[nodiscard]] std::vector<Seed> seedsOf(std::string_view target);

}  // namespace fuzz
