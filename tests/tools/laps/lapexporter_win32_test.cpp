#include "tests/tools/laps/samplelap.h"
#include "tests/tools/laps/slowcleanup.h"
#include "tools/laps/lapexporter.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using rataip::laps::LapExporter;
using rataip::laps::LapFormat;

TEST(LapExporter, WaitsUntilItsThreadHasCleanedUp) {
    const QTemporaryDir folder;
    const LapFormat format{QStringLiteral("x"), [](const TLM::SDK::Lap&, QIODevice&) {
                               thread_local SlowCleanup slow;
                               slow.isThere = true;
                               return true;
                           }};
    {
        LapExporter exporter(QDir(folder.path()), {format});
        exporter.add(ownLap());
    }
    EXPECT_TRUE(SlowCleanup::isDone);
}

}  // namespace
