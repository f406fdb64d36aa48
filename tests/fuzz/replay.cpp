#include "tests/fuzz/fuzztarget.h"
#include "tests/fuzz/seeds.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

// Runs a target without a fuzzer, so that it works wherever tests run: over the target's seeds,
// over changes of them that are the same on every machine, and over the inputs that once were
// findings.

namespace {

constexpr int kCutsASeed = 24;
constexpr int kChangesASeed = 120;
constexpr int kMostChangedBytes = 6;

void run(const std::string& bytes) {
    // On the heap and not one byte longer: a read behind the input is a finding.
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

int runSeed(const std::string& bytes, std::mt19937& random) {
    run(bytes);
    for (int cut = 0; cut < kCutsASeed; ++cut) {
        run(bytes.substr(0, bytes.size() * static_cast<std::size_t>(cut) / kCutsASeed));
    }
    for (int i = 0; i < kChangesASeed; ++i) {
        std::string changed = bytes;
        const auto changes = random() % kMostChangedBytes + 1;
        for (unsigned long change = 0; change < changes && !changed.empty(); ++change) {
            // Half of them in the first bytes, where headers and counts stand.
            const std::size_t range =
                random() % 2 == 0 ? changed.size() : std::min<std::size_t>(changed.size(), 256);
            changed[random() % range] = static_cast<char>(random());
        }
        run(changed);
    }
    return 1 + kCutsASeed + kChangesASeed;
}

int runSeeds(const std::string& target) {
    std::mt19937 random(1);
    int count = 0;
    for (const fuzz::Seed& seed : fuzz::seedsOf(target)) {
        count += runSeed(seed.bytes, random);
    }
    return count;
}

int runFindings(const std::filesystem::path& folder) {
    int count = 0;
    if (!std::filesystem::is_directory(folder)) {
        return count;
    }
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::printf("%s\n", entry.path().c_str());
        std::ifstream file(entry.path(), std::ios::binary);
        run(std::string(std::istreambuf_iterator<char>(file), {}));
        ++count;
    }
    return count;
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc != 3) {
        std::fputs("Usage: PROGRAM TARGET FOLDER-OF-FINDINGS\n", stderr);
        return 1;
    }
    LLVMFuzzerInitialize(&argc, &argv);
    const int seeds = runSeeds(argv[1]);
    const int findings = runFindings(std::filesystem::path(argv[2]) / argv[1]);
    std::printf("%d inputs from seeds, %d former findings\n", seeds, findings);
    return seeds > 0 ? 0 : 1;
}
