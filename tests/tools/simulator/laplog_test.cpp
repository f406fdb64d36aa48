#include "tools/simulator/laplog.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

using namespace simulator;

namespace {

const LapRecord kLap = {.car = 7,
                        .lap = 3,
                        .kind = LapKind::Flying,
                        .complete = true,
                        .seconds = 93.1234,
                        .session = 1,
                        .start = 100,
                        .finish = 5687};

}  // namespace

TEST(LapLog, WritesOneLineALapWithTheTimeAsItIsPublished) {
    const std::string line = LapLog::line(kLap);
    EXPECT_EQ(line, "7\t3\tflying\t93.1234\t93.1234\t1\t100\t5687\tyes");
}

TEST(LapLog, WritesMinusOneForALapWithoutATime) {
    LapRecord lap = kLap;
    lap.seconds.reset();
    lap.complete = false;
    lap.kind = LapKind::In;
    EXPECT_EQ(LapLog::line(lap), "7\t3\tin\t-1.0000\t-1\t1\t100\t5687\tno");
    lap.kind = LapKind::Out;
    EXPECT_EQ(LapLog::line(lap), "7\t3\tout\t-1.0000\t-1\t1\t100\t5687\tno");
}

TEST(LapLog, BeginsWithTheNamesOfItsColumnsAndCanBeReadWhileItIsOpen) {
    // Unique, because other runs may be going on.
    const auto path = std::filesystem::temp_directory_path() /
                      ("rataip-laplog-test-" + std::to_string(std::random_device()()) + ".tsv");
    std::ostringstream text;
    {
        // Closed before the file is removed, because some systems do not remove open files.
        LapLog log;
        ASSERT_TRUE(log.open(path.string()));
        log.add({kLap});
        text << std::ifstream(path).rdbuf();
    }
    EXPECT_EQ(text.str(), "# car\tlap\tkind\tseconds\tfloat\tsession\tstart\tfinish\tcomplete\n" +
                              LapLog::line(kLap) + "\n");
    std::filesystem::remove(path);
}

TEST(LapLog, SaysWhenItsFileCannotBeWritten) {
    LapLog log;
    EXPECT_FALSE(log.open(std::filesystem::temp_directory_path().string()));
}

TEST(LapLog, TakesLapsWithoutAFile) {
    LapLog log;
    log.add({kLap});
}
