#include "tests/tools/laps/samplelap.h"
#include "tests/tools/viewer/texts.h"
#include "tools/viewer/lapwindow.h"

#include <QAction>
#include <QComboBox>
#include <QCoreApplication>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTreeView>

#include <gtest/gtest.h>

namespace {

using rataip::laps::Axis;
using rataip::viewer::LapListModel;
using rataip::viewer::LapWindow;
using rataip::viewer::PlotPanel;
using TLM::SDK::Channel;
using TLM::SDK::Lap;

constexpr qsizetype otherLine = 0;
constexpr qsizetype thisLine = 1;

/** That a line shows a channel, reading by reading, over another channel less an offset. */
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
        expectReadings(*panel->lines().at(thisLine), *lap->channel(QStringLiteral("lapdist")), 0.0,
                       *lap->channel(panel->accessibleName()));
        EXPECT_TRUE(panel->lines().at(otherLine)->points().isEmpty());
    }
}

TEST_F(LapView, PlotsThemOverTimeFromTheLapsStart) {
    window->setAxis(Axis::Time);
    for (const PlotPanel* panel : window->panels()) {
        expectReadings(*panel->lines().at(thisLine), *lap->channel(QStringLiteral("sessiontime")),
                       500.0, *lap->channel(panel->accessibleName()));
    }
    EXPECT_EQ(window->panels().constLast()->axisText(), QStringLiteral("Time (s)"));
}

TEST_F(LapView, LaysASecondLapOverTheFirst) {
    window->compareWith(other);
    for (const PlotPanel* panel : window->panels()) {
        expectReadings(*panel->lines().at(thisLine), *lap->channel(QStringLiteral("lapdist")), 0.0,
                       *lap->channel(panel->accessibleName()));
        expectReadings(*panel->lines().at(otherLine), *other->channel(QStringLiteral("lapdist")),
                       0.0, *other->channel(panel->accessibleName()));
    }
    window->compareWith({});
    EXPECT_TRUE(window->panels().constFirst()->lines().at(otherLine)->points().isEmpty());
}

TEST_F(LapView, ComparesWithALapThatLacksChannels) {
    window->compareWith(otherLap());
    EXPECT_FALSE(window->panels().at(0)->lines().at(otherLine)->points().isEmpty());
    EXPECT_TRUE(window->panels().at(1)->lines().at(otherLine)->points().isEmpty());
}

TEST_F(LapView, OffersTheOtherLapsToCompareWithAsTheyCome) {
    const auto* const choice = window->findChild<QComboBox*>();
    EXPECT_EQ(choice->count(), 2) << "none and the other";
    laps.add(ownLap(5));
    EXPECT_EQ(choice->count(), 3);
    window->compareWith(other);
    laps.add(ownLap(6));
    EXPECT_EQ(choice->currentIndex(), 1) << "the choice stays";
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

TEST_F(LapView, LabelsStandInThePicture) {
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
    EXPECT_TRUE(view.panels().constFirst()->lines().at(thisLine)->points().isEmpty());
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

TEST_F(LapView, CutsNoTextOff) {
    window->compareWith(other);
    QCoreApplication::processEvents();
    window->grab();
    EXPECT_EQ(textsCutOff(*window).join(QLatin1Char('\n')).toStdString(), "");
}

}  // namespace
