#include "tests/tools/laps/samplelap.h"
#include "tools/laps/lapexporter.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

using rataip::laps::LapExporter;
using rataip::laps::LapFormat;

std::atomic<bool> isTidy = false;

/** What a format leaves to the end of its thread. */
struct SlowToGo {
    ~SlowToGo() {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        isTidy = true;
    }
    bool isThere = false;
};

TEST(LapExporter, IsNotGoneBeforeItsThreadHasTidiedUp) {
    const QTemporaryDir folder;
    const LapFormat format{QStringLiteral("x"), [](const TLM::SDK::Lap&, QIODevice&) {
                               thread_local SlowToGo slow;
                               slow.isThere = true;
                               return true;
                           }};
    {
        LapExporter exporter(QDir(folder.path()), {format});
        exporter.add(ownLap());
    }
    EXPECT_TRUE(isTidy);
}

}  // namespace
