#include "tests/support/printqt.h"
#include "tests/tools/laps/samplelap.h"
#include "tests/tools/viewer/handsource.h"
#include "tests/tools/viewer/texts.h"
#include "tools/viewer/mainwindow.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace {

using rataip::viewer::LapWindow;
using rataip::viewer::MainWindow;
using rataip::viewer::Session;

// The environment sets the scale of the screen. The same cases run at several scales.
class TextFit : public ::testing::TestWithParam<QSize> {
protected:
    /** A window of the tested size, connected to a source. */
    [[nodiscard]] std::unique_ptr<MainWindow> connectedWindow() {
        session.setSource(source);
        session.connectToSource();
        auto window = std::make_unique<MainWindow>(session, settings);
        window->resize(GetParam());
        window->show();
        return window;
    }

    QTemporaryDir folder;
    QSettings settings{folder.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat};
    HandSource source;
    Session session;
};

std::string cutOff(QWidget& window) {
    QCoreApplication::processEvents();
    // The window may just have changed a text by its timer, which asks for a new layout.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    window.grab();
    return textsCutOff(window).join(QLatin1Char('\n')).toStdString();
}

TEST_P(TextFit, InTheWindowWithAFullField) {
    const auto window = connectedWindow();
    source.sendCars(64, 3);
    source.sendTick(64, 3, 1, 0.5);
    for (int number = 1; number <= 12; ++number) {
        emit source.dataEmitter()->sendTelemetryLap(ownLap(number));
        emit source.dataEmitter()->sendTelemetryLap(otherLap(number));
    }
    window->refresh();
    EXPECT_EQ(cutOff(*window), "");
    EXPECT_EQ(window->size(), GetParam());
}

TEST_P(TextFit, InTheWindowWithoutAPlugin) {
    session.setPluginError(
        QStringLiteral("cannot use /a/rather/long/path/to/a/folder/of/plugins/librataip.so as "
                       "plugin: it was built for version 0.3 of the interface, this program takes "
                       "version 0.2"));
    MainWindow window(session, settings);
    window.resize(GetParam());
    window.show();
    EXPECT_EQ(cutOff(window), "");
    EXPECT_EQ(window.size(), GetParam());
}

TEST_P(TextFit, InTheWindowThatWaits) {
    source.isThere = false;
    const auto window = connectedWindow();
    EXPECT_EQ(cutOff(*window), "");
    EXPECT_EQ(window->size(), GetParam());
}

TEST_P(TextFit, InALapWithAnother) {
    rataip::viewer::LapListModel laps;
    const auto other = otherLap();
    laps.add(other);
    LapWindow window(ownLap(), laps);
    window.compareWith(other);
    window.resize(GetParam());
    window.show();
    EXPECT_EQ(cutOff(window), "");
    window.findChild<QTabWidget*>()->setCurrentIndex(1);
    EXPECT_EQ(cutOff(window), "");
    EXPECT_EQ(window.size(), GetParam());
}

TEST_P(TextFit, InTheWindowThatReportsAFailedSave) {
    const auto window = connectedWindow();
    source.sendCars(20, 3);
    source.sendTick(20, 3, 1, 0.5);
    emit window->saving().ended(QStringLiteral(
        "The lap was not saved: cannot write "
        "/a/rather/long/path/to/a/folder/of/laps/"
        "car03_Ada-Berg_practice_lap4_flying_1m34s512.csv: No space left on device."));
    window->refresh();
    EXPECT_EQ(cutOff(*window), "");
    EXPECT_EQ(window->size(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Sizes, TextFit,
                         ::testing::Values(QSize(1500, 920), QSize(1200, 800), QSize(1024, 740),
                                           QSize(800, 600)),
                         [](const auto& sized) { return std::to_string(sized.param.width()); });

}  // namespace
