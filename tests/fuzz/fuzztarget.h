#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// Every fuzz target defines these. A fuzzer's runtime calls the first once and the second for each
// input; replay.cpp does the same with the inputs of the tree.
//
// A target reports a finding by ending the process, by a sanitizer or by require(), never by its
// result.

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

/** Reports a finding unless `isTrue`. */
inline void require(bool isTrue, const char* what) {
    if (!isTrue) {
        std::fprintf(stderr, "Not so: %s\n", what);
        std::abort();
    }
}

}  // namespace fuzz
