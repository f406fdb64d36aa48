#include "tests/tools/laps/samplelap.h"
#include "tests/tools/laps/slowtogo.h"
#include "tools/laps/lapexporter.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using rataip::laps::LapExporter;
using rataip::laps::LapFormat;

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
    EXPECT_TRUE(SlowToGo::isTidy);
}

}  // namespace
