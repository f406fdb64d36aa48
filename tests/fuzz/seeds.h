#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

/** An input from which a fuzzer starts: well-formed, and different from the others in kind. */
struct Seed {
    std::string name;
    std::string bytes;
};

/** The names of all targets. */
[[nodiscard]] const std::vector<std::string>& targetNames();

/** The seeds of a target, the same at every call; none for a name that is no target's. */
[[nodiscard]] std::vector<Seed> seedsOf(std::string_view target);

}  // namespace fuzz
