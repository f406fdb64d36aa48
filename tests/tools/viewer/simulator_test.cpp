#include "tests/support/simulatorprocess.h"
#include "tools/viewer/mainwindow.h"

#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using rataip::viewer::LapWindow;
using rataip::viewer::MainWindow;
using rataip::viewer::Session;

// Only a failing test waits this long.
constexpr int kLongestWaitMs = 90'000;

QSharedPointer<TLM::SDK::Lap> ownFlyingLap(const MainWindow& window) {
    for (const auto& lap : window.laps().laps()) {
        if (lap->detailedTelemetry() && lap->completed() &&
            lap->lapType() == TLM::SDK::LapType::FlyingLap) {
            return lap;
        }
    }
    return {};
}

TEST(ViewerAndSimulator, ShowsCarsTracesAndLapsThroughThePlugin) {
    const QTemporaryDir folder;
    QSettings settings(folder.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    Session session;
    MainWindow window(session, settings);
    window.show();
    ASSERT_TRUE(session.loadPlugin(QStringLiteral(PLUGIN_FILE)))
        << session.pluginError().toStdString();
    session.connectToSource();
    EXPECT_EQ(session.state(), Session::State::Waiting);

    const testsupport::SimulatorProcess simulator(
        testsupport::onShortTrack(5, {"--speed", "4", "--quiet"}));
    ASSERT_TRUE(QTest::qWaitFor([&session] { return session.state() == Session::State::Connected; },
                                kLongestWaitMs));
    ASSERT_TRUE(
        QTest::qWaitFor([&window] { return !ownFlyingLap(window).isNull(); }, kLongestWaitMs));

    window.refresh();
    EXPECT_TRUE(session.isDataArriving());
    EXPECT_EQ(window.findChild<QTableView*>(QStringLiteral("Cars"))->model()->rowCount(), 5);
    const auto* const traces = window.findChild<rataip::viewer::LiveTraces*>();
    for (const rataip::viewer::PlotPanel* panel : traces->panels()) {
        EXPECT_FALSE(panel->lines().constLast()->points().isEmpty())
            << panel->accessibleName().toStdString();
        EXPECT_FALSE(panel->lines().constFirst()->points().isEmpty()) << "of the previous lap";
    }

    const auto lap = ownFlyingLap(window);
    const LapWindow& view = *window.openLap(lap);
    ASSERT_EQ(view.panels().size(), 4);
    const auto distance = lap->channel(QStringLiteral("lapdist"));
    for (const rataip::viewer::PlotPanel* panel : view.panels()) {
        const auto channel = lap->channel(panel->accessibleName());
        const QList<QPointF> points = panel->lines().constLast()->points();
        ASSERT_EQ(points.size(), channel->samples.size());
        for (qsizetype i = 0; i < points.size(); ++i) {
            EXPECT_EQ(points.at(i), QPointF(distance->sample(i), channel->sample(i)));
        }
    }
}

}  // namespace
