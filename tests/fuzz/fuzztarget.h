#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// What every fuzz target defines. A fuzzer's runtime calls the first once and the second with one
// input after another; replay.cpp does the same with the inputs of the tree.
//
// A target never fails by its result: a finding is the end of the process, by a sanitizer or by
// require().

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

/** Ends the program as a fuzzer expects it of a finding, unless `holds`. */
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "Not so: %s\n", what);
        std::abort();
    }
}

}  // namespace fuzz
