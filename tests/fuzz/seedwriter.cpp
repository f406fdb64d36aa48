#include "tests/fuzz/seeds.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

// Writes the seeds of every target into a folder, one subfolder a target.

namespace {

bool write(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.flush();
    return file.good();
}

bool writeAll(const std::filesystem::path& folder) {
    for (const std::string& target : fuzz::targetNames()) {
        std::filesystem::create_directories(folder / target);
        for (const fuzz::Seed& seed : fuzz::seedsOf(target)) {
            if (!write(folder / target / seed.name, seed.bytes)) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc != 2 || !writeAll(argv[1])) {
        std::fputs("Usage: rataip-fuzz-seeds FOLDER (which can be written)\n", stderr);
        return 1;
    }
    return 0;
}
