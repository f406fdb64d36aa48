#include "tools/viewer/lapwindow.h"

#include "tests/support/printqt.h"
#include "tests/tools/laps/samplelap.h"
#include "tests/tools/viewer/texts.h"

#include <QAction>
#include <QComboBox>
#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPalette>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QToolBar>
#include <QTreeView>

#include <gtest/gtest.h>

namespace {

using rataip::laps::Axis;
using rataip::viewer::KeyText;
using rataip::viewer::LapListModel;
using rataip::viewer::LapWindow;
using rataip::viewer::PlotPanel;
using rataip::viewer::Settings;
using TLM::SDK::Channel;
using TLM::SDK::Lap;

constexpr qsizetype kOtherLine = 0;
constexpr qsizetype kThisLine = 1;

/** Expects the line to show all readings of a channel over another channel less an offset. */
void expectReadings(const QLineSeries& line, const Channel& over, double offset,
                    const Channel& channel) {
    const QList<QPointF> points = line.points();
    ASSERT_EQ(points.size(), channel.samples.size());
    for (qsizetype i = 0; i < points.size(); ++i) {
        EXPECT_EQ(points.at(i).x(), over.sample(i) - offset);
        EXPECT_EQ(points.at(i).y(), channel.sample(i));
    }
}

class LapView : public ::testing::Test {
protected:
    LapView() {
        laps.add(lap);
        laps.add(other);
        window = std::make_unique<LapWindow>(lap, laps);
        window->show();
    }

    [[nodiscard]] QList<QString> panelNames() const {
        QList<QString> names;
        for (const PlotPanel* panel : window->panels()) {
            names.append(panel->accessibleName());
        }
        return names;
    }

    QSharedPointer<Lap> lap = ownLap(4);
    QSharedPointer<Lap> other = ownLap(3, 900);
    LapListModel laps;
    std::unique_ptr<LapWindow> window;
};

TEST_F(LapView, PlotsTheUsualChannelsAtFirst) {
    EXPECT_EQ(panelNames(), (QList<QString>{QStringLiteral("speed"), QStringLiteral("throttle"),
                                            QStringLiteral("brake"), QStringLiteral("gear")}));
}

TEST_F(LapView, PlotsTheLapsOwnReadingsOverDistance) {
    for (const PlotPanel* panel : window->panels()) {
        expectReadings(*panel->lines().at(kThisLine), *lap->channel(QStringLiteral("lapdist")), 0.0,
                       *lap->channel(panel->accessibleName()));
        EXPECT_TRUE(panel->lines().at(kOtherLine)->points().isEmpty());
    }
}

TEST_F(LapView, PlotsThemOverTimeFromTheLapsStart) {
    window->setAxis(Axis::Time);
    for (const PlotPanel* panel : window->panels()) {
        expectReadings(*panel->lines().at(kThisLine), *lap->channel(QStringLiteral("sessiontime")),
                       500.0, *lap->channel(panel->accessibleName()));
    }
    EXPECT_EQ(window->panels().constLast()->axisText(), QStringLiteral("Time (s)"));
}

TEST_F(LapView, PlotsASecondLapOverTheFirst) {
    window->compareWith(other);
    for (const PlotPanel* panel : window->panels()) {
        expectReadings(*panel->lines().at(kThisLine), *lap->channel(QStringLiteral("lapdist")), 0.0,
                       *lap->channel(panel->accessibleName()));
        expectReadings(*panel->lines().at(kOtherLine), *other->channel(QStringLiteral("lapdist")),
                       0.0, *other->channel(panel->accessibleName()));
    }
    window->compareWith({});
    EXPECT_TRUE(window->panels().constFirst()->lines().at(kOtherLine)->points().isEmpty());
}

TEST_F(LapView, ComparesWithALapThatLacksChannels) {
    window->compareWith(otherLap());
    EXPECT_EQ(window->findChild<QComboBox*>()->currentText(),
              QStringLiteral("Björn Kowalski, lap 4, 1:34.512"))
        << "offered from now on";
    EXPECT_FALSE(window->panels().at(0)->lines().at(kOtherLine)->points().isEmpty());
    EXPECT_TRUE(window->panels().at(1)->lines().at(kOtherLine)->points().isEmpty());
}

TEST_F(LapView, OffersTheOtherLapsToCompareWithAsTheyCome) {
    const auto* const choice = window->findChild<QComboBox*>();
    EXPECT_EQ(choice->count(), 2) << "none and the other";
    laps.add(ownLap(5));
    EXPECT_EQ(choice->count(), 3);
    EXPECT_EQ(choice->itemText(1), QStringLiteral("Ada Berg, lap 5, 1:34.512")) << "newest first";
    window->compareWith(other);
    EXPECT_EQ(choice->currentIndex(), 2);
    laps.add(ownLap(6));
    EXPECT_EQ(choice->currentText(), QStringLiteral("Ada Berg, lap 3, 1:34.512"))
        << "the choice stays";
}

TEST_F(LapView, OffersLapsOfTheSameCarBeforeAllOthers) {
    laps.add(otherLap());
    laps.add(ownLap(5));
    laps.add(otherLap(8));
    const auto* const choice = window->findChild<QComboBox*>();
    QStringList offered;
    for (int place = 0; place < choice->count(); ++place) {
        offered.append(choice->itemText(place).section(QStringLiteral(", 1:"), 0, 0));
    }
    EXPECT_EQ(offered.join(QStringLiteral("; ")).toStdString(),
              "no other lap; Ada Berg, lap 5; Ada Berg, lap 3; Björn Kowalski, lap 4; "
              "Björn Kowalski, lap 4");
}

TEST_F(LapView, WithdrawsReleasedLapsExceptTheOneBeingCompared) {
    // Has room for one of these laps, so that each new lap releases the one before.
    LapListModel few(1);
    few.add(other);
    LapWindow view(lap, few);
    view.compareWith(other);
    const auto* const choice = view.findChild<QComboBox*>();
    few.add(ownLap(5));
    EXPECT_EQ(choice->count(), 3) << "none, the newest, and the one being compared";
    few.add(ownLap(6));
    EXPECT_EQ(choice->count(), 3);
    EXPECT_EQ(choice->currentText(), QStringLiteral("Ada Berg, lap 3, 1:34.512"));
}

TEST_F(LapView, HandsItsLayoutToTheNextWindow) {
    const QTemporaryDir folder;
    QSettings stored(folder.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    Settings settings(stored);
    window->rememberLayoutIn(settings);
    window->resize(1234, 777);
    window->setAxis(Axis::Time);
    window->channels().choose({QStringLiteral("brake"), false}, false);
    window->channels().choose({QStringLiteral("steeringwheelangle"), false}, true);
    window->close();
    LapWindow next(other, laps);
    next.rememberLayoutIn(settings);
    EXPECT_EQ(next.size(), QSize(1234, 777));
    QStringList names;
    for (const PlotPanel* panel : next.panels()) {
        names.append(panel->accessibleName());
    }
    EXPECT_EQ(names.join(QLatin1Char(' ')).toStdString(), "speed throttle gear steeringwheelangle");
    EXPECT_EQ(next.panels().constLast()->axisText(), QStringLiteral("Time (s)"));
}

TEST_F(LapView, KnowsItsKeysWhetherOpenOrNot) {
    QList<KeyText> keys;
    const QList<QAction*> actions = window->actions();
    for (const QAction* action : actions) {
        keys.append({action->shortcut(), action->text().remove(QLatin1Char('&'))});
    }
    EXPECT_EQ(LapWindow::keys(), keys);
}

TEST_F(LapView, ShowsAndHidesItsBarByTheKey) {
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    const auto* const bar = window->findChild<QToolBar*>();
    for (const bool isShown : {false, true}) {
        QTest::keyClick(window.get(), Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
        EXPECT_EQ(bar->isVisible(), isShown);
    }
}

TEST_F(LapView, HandsOnChannelsThatItsLapLacks) {
    const QTemporaryDir folder;
    QSettings stored(folder.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    Settings settings(stored);
    {
        LapWindow first(lap, laps);
        first.rememberLayoutIn(settings);
        first.channels().choose({QStringLiteral("steeringwheelangle"), false}, true);
        first.close();
        LapWindow second(otherLap(), laps);
        second.rememberLayoutIn(settings);
        second.close();
    }
    LapWindow third(lap, laps);
    third.rememberLayoutIn(settings);
    EXPECT_EQ(third.panels().size(), 5);
}

TEST_F(LapView, TakesLinesColoursFromTheDesktopsPalette) {
    const auto legend = [this] {
        const QList<QLabel*> labels = window->findChildren<QLabel*>();
        for (const QLabel* label : labels) {
            if (label->text().contains(QStringLiteral("━━"))) {
                return label->text();
            }
        }
        return QString();
    };
    const QString light = legend();
    EXPECT_TRUE(
        light.contains(rataip::lapimage::colour(rataip::lapimage::Role::ThisLap, false).name()));
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(40, 40, 40));
    window->setPalette(dark);
    EXPECT_TRUE(
        legend().contains(rataip::lapimage::colour(rataip::lapimage::Role::ThisLap, true).name()));
}

TEST_F(LapView, ShowsTheResultOfSaving) {
    window->showOutcome(QStringLiteral("The lap was not saved: the disk is full."));
    bool isShown = false;
    const QList<QLabel*> labels = window->findChildren<QLabel*>();
    for (const QLabel* label : labels) {
        isShown = isShown ||
                  (label->isVisible() &&
                   label->text() == QStringLiteral("The lap was not saved: the disk is full."));
    }
    EXPECT_TRUE(isShown);
}

TEST_F(LapView, PlotsWhatIsTickedWithItsUnit) {
    window->channels().choose({QStringLiteral("throttle"), false}, false);
    window->channels().choose({QStringLiteral("steeringwheelangle"), false}, true);
    EXPECT_EQ(panelNames().constLast(), QStringLiteral("steeringwheelangle"));
    EXPECT_FALSE(panelNames().contains(QStringLiteral("throttle")));
    EXPECT_EQ(window->panels().constLast()->quantityText(),
              QStringLiteral("steeringwheelangle (rad)"));
    EXPECT_EQ(window->panels().constLast()->axisText(), QStringLiteral("Distance (m)"));
}

TEST_F(LapView, ShowsLabelsInItsPicture) {
    QCoreApplication::processEvents();
    window->grab();
    const QStringList texts = chartTexts(*window);
    for (const char* text :
         {"speed (m/s)", "throttle (pu)", "brake (pu)", "gear", "Distance (m)", "0", "2000"}) {
        EXPECT_TRUE(texts.contains(QString::fromLatin1(text))) << text;
    }
}

TEST_F(LapView, FindsChannelsByAPartOfTheirName) {
    auto* const search = window->findChild<QLineEdit*>();
    const QAbstractItemModel& found = *window->findChild<QTreeView*>()->model();
    search->setText(QStringLiteral("LAPDIST"));
    ASSERT_EQ(found.rowCount(), 1) << "no calculated channel is left";
    EXPECT_EQ(found.rowCount(found.index(0, 0)), 2);
    search->setText(QStringLiteral("no such channel"));
    EXPECT_EQ(found.rowCount(), 0);
    EXPECT_EQ(window->panels().size(), 4) << "what is plotted stays";
}

TEST_F(LapView, StaysEmptyWithoutDistance) {
    const auto lapOfOneChannel = QSharedPointer<Lap>::create();
    lapOfOneChannel->addChannel(channelWith({1.0, 2.0}), QStringLiteral("speed"));
    LapWindow view(lapOfOneChannel, laps);
    ASSERT_EQ(view.panels().size(), 1);
    EXPECT_TRUE(view.panels().constFirst()->lines().at(kThisLine)->points().isEmpty());
    view.setAxis(Axis::Time);
    EXPECT_FALSE(view.grab().isNull());
}

TEST_F(LapView, AsksForItsLapToBeSaved) {
    QSignalSpy asked(window.get(), &LapWindow::saveRequested);
    const QList<QAction*> actions = window->actions();
    for (QAction* action : actions) {
        if (action->shortcut() == QKeySequence(QStringLiteral("Ctrl+E"))) {
            action->trigger();
        }
    }
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked.constFirst().constFirst().value<QSharedPointer<Lap>>(), lap);
}

TEST_F(LapView, ShowsAllTextsInFull) {
    window->compareWith(other);
    QCoreApplication::processEvents();
    window->grab();
    EXPECT_EQ(textsCutOff(*window).join(QLatin1Char('\n')).toStdString(), "");
}

}  // namespace
