#include "tests/fuzz/fuzztarget.h"
#include "tests/fuzz/seeds.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <system_error>
#include <vector>

// Runs a target without a fuzzer, as a test: over the target's seeds, over changed seeds that are
// the same on every machine, and over former findings.
//
// A finding ends the process, so each input is written to a file before it runs. Put into the
// folder of findings, it runs again with the next replay.

namespace {

constexpr int kCutsASeed = 24;
constexpr int kChangesASeed = 120;
constexpr int kMostChangedBytes = 6;

/** Runs inputs, and leaves the last one in a file unless all of them pass. */
class Runner {
public:
    explicit Runner(const std::string& target) : m_file(target + "-input") {
        say("The input that is run is kept in " + std::filesystem::absolute(m_file).string());
    }

    void run(const std::string& bytes) const {
        std::ofstream(m_file, std::ios::binary) << bytes;
        // On the heap and of exactly this size: a read past the input is a finding.
        const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }

    /** Flushes, so that the line is out when the process ends. */
    static void say(const std::string& line) {
        std::printf("%s\n", line.c_str());
        std::fflush(stdout);
    }

    void end() const {
        std::error_code nothingToBeDone;
        std::filesystem::remove(m_file, nothingToBeDone);
    }

private:
    std::filesystem::path m_file;
};

int runSeed(const Runner& runner, const fuzz::Seed& seed, std::mt19937& random) {
    const std::string& bytes = seed.bytes;
    Runner::say("seed " + seed.name);
    runner.run(bytes);
    Runner::say("  cut off");
    for (int cut = 0; cut < kCutsASeed; ++cut) {
        runner.run(bytes.substr(0, bytes.size() * static_cast<std::size_t>(cut) / kCutsASeed));
    }
    Runner::say("  changed");
    for (int i = 0; i < kChangesASeed; ++i) {
        std::string changed = bytes;
        const auto changes = random() % kMostChangedBytes + 1;
        for (unsigned long change = 0; change < changes && !changed.empty(); ++change) {
            // Half of them in the first bytes, which are headers and counts.
            const std::size_t range =
                random() % 2 == 0 ? changed.size() : std::min<std::size_t>(changed.size(), 256);
            changed[random() % range] = static_cast<char>(random());
        }
        runner.run(changed);
    }
    return 1 + kCutsASeed + kChangesASeed;
}

int runSeeds(const Runner& runner, const std::string& target) {
    std::mt19937 random(1);
    int count = 0;
    for (const fuzz::Seed& seed : fuzz::seedsOf(target)) {
        count += runSeed(runner, seed, random);
    }
    return count;
}

int runFindings(const Runner& runner, const std::filesystem::path& folder) {
    int count = 0;
    if (!std::filesystem::is_directory(folder)) {
        return count;
    }
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        Runner::say(entry.path().string());
        std::ifstream file(entry.path(), std::ios::binary);
        runner.run(std::string(std::istreambuf_iterator<char>(file), {}));
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
    const Runner runner(argv[1]);
    const int seeds = runSeeds(runner, argv[1]);
    const int findings = runFindings(runner, std::filesystem::path(argv[2]) / argv[1]);
    runner.end();
    std::printf("%d inputs from seeds, %d former findings\n", seeds, findings);
    return seeds > 0 ? 0 : 1;
}
