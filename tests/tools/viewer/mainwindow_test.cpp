#include "tools/viewer/mainwindow.h"

#include "tests/support/printqt.h"
#include "tests/tools/laps/samplelap.h"
#include "tests/tools/viewer/handsource.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWidgetAction>

#include <gtest/gtest.h>

#include <memory>

namespace {

using rataip::viewer::LapWindow;
using rataip::viewer::MainWindow;
using rataip::viewer::OutcomeLine;
using rataip::viewer::Session;
using rataip::viewer::TrackStrip;

// Only a failing test waits this long.
constexpr int kGenerousMs = 60'000;

class Window : public ::testing::Test {
protected:
    void showWindow() {
        window = std::make_unique<MainWindow>(session, settings);
        window->resize(1500, 920);
        window->show();
        window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }

    void connectSource() {
        session.setSource(source);
        session.connectToSource();
        source.sendCars(20, 3);
        source.sendTick(20, 3, 1, 0.5);
    }

    [[nodiscard]] QAction* actionOf(const char* shortcut) const {
        const QList<QAction*> actions = window->findChildren<QAction*>();
        for (QAction* action : actions) {
            if (action->shortcut() == QKeySequence(QString::fromLatin1(shortcut))) {
                return action;
            }
        }
        return nullptr;
    }

    [[nodiscard]] QString messages() const {
        return window->findChild<QPlainTextEdit*>()->toPlainText();
    }

    [[nodiscard]] bool saysInTime(const QString& text, int times = 1) const {
        return QTest::qWaitFor([&] { return messages().count(text) == times; }, kGenerousMs);
    }

    QTemporaryDir folder;
    QSettings settings{folder.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat};
    HandSource source;
    Session session;
    std::unique_ptr<MainWindow> window;
};

TEST_F(Window, SaysWhatToDoWhenThePluginCannotBeLoaded) {
    session.setPluginError(QStringLiteral("cannot use x.so as plugin: there is no such file"));
    showWindow();
    EXPECT_TRUE(window->noticeText().contains(QStringLiteral("there is no such file")));
    EXPECT_TRUE(window->noticeText().contains(QStringLiteral("Open plugin")));
    EXPECT_TRUE(actionOf("Ctrl+O")->isEnabled());
    EXPECT_FALSE(actionOf("F6")->isEnabled());
}

TEST_F(Window, SaysWhatToDoWhenNoSimulatorIsFound) {
    source.isThere = false;
    session.setSource(source);
    session.connectToSource();
    showWindow();
    EXPECT_TRUE(window->noticeText().contains(QStringLiteral("No simulator was found. Start")));
    EXPECT_TRUE(actionOf("F5")->isEnabled());
    EXPECT_FALSE(actionOf("F6")->isEnabled());
    EXPECT_FALSE(actionOf("F7")->isEnabled()) << "nothing is connected";
}

TEST_F(Window, DisconnectsOnlyWhileItIsConnected) {
    session.setSource(source);
    showWindow();
    EXPECT_FALSE(actionOf("F7")->isEnabled());
    session.connectToSource();
    EXPECT_TRUE(actionOf("F7")->isEnabled());
    source.isThere = false;
    source.disconnectFromSource();
    EXPECT_FALSE(actionOf("F7")->isEnabled()) << "the simulator is gone";
}

TEST_F(Window, SaysHowToConnect) {
    session.setSource(source);
    showWindow();
    EXPECT_TRUE(window->noticeText().contains(QStringLiteral("F6")));
    EXPECT_TRUE(actionOf("F6")->isEnabled());
    EXPECT_FALSE(actionOf("F7")->isEnabled());
    EXPECT_FALSE(actionOf("Ctrl+O")->isEnabled()) << "a session takes one plugin";
}

TEST_F(Window, SaysWhenDataArrivesAndWhenItDoesNot) {
    session.setSource(source);
    session.connectToSource();
    showWindow();
    window->refresh();
    auto* const lamp = window->findChild<rataip::viewer::Lamp*>();
    EXPECT_FALSE(lamp->isLit());
    EXPECT_TRUE(window->noticeText().contains(QStringLiteral("no data is arriving")));
    source.sendTick(1, 0, 1, 0.5);
    window->refresh();
    EXPECT_TRUE(lamp->isLit());
    EXPECT_EQ(lamp->accessibleName(), QStringLiteral("Data is arriving"));
    EXPECT_TRUE(window->noticeText().startsWith(QStringLiteral("Connected: Hand Plugin")));
}

TEST_F(Window, ControlsTheSourceByItsKeys) {
    session.setSource(source);
    showWindow();
    QTest::keyClick(window.get(), Qt::Key_F5);
    EXPECT_TRUE(messages().contains(QStringLiteral("A simulator is there"))) << "probed";
    QTest::keyClick(window.get(), Qt::Key_F6);
    EXPECT_EQ(session.state(), Session::State::Connected);
    QTest::keyClick(window.get(), Qt::Key_F7);
    EXPECT_EQ(session.state(), Session::State::Disconnected);
    source.isThere = false;
    QTest::keyClick(window.get(), Qt::Key_F5);
    EXPECT_TRUE(messages().contains(QStringLiteral("No simulator that delivers data was found")));
}

TEST_F(Window, ShowsTheCarsInTheTableAndOnTheTrack) {
    showWindow();
    connectSource();
    window->refresh();
    const auto* const table = window->findChild<QTableView*>(QStringLiteral("Cars"));
    ASSERT_EQ(table->model()->rowCount(), 20);
    EXPECT_EQ(table->model()->index(0, rataip::viewer::CarTableModel::Driver).data().toString(),
              QStringLiteral("Driver 0"))
        << "the leader first";
    EXPECT_EQ(window->findChild<TrackStrip*>()->marks().size(), 20);
}

TEST_F(Window, SortsTheCarsByAClickOnAHeading) {
    showWindow();
    connectSource();
    window->refresh();
    auto* const table = window->findChild<QTableView*>(QStringLiteral("Cars"));
    QHeaderView& header = *table->horizontalHeader();
    const int column = rataip::viewer::CarTableModel::Slot;
    const QPoint place(header.sectionViewportPosition(column) + header.sectionSize(column) / 2,
                       header.height() / 2);
    QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, place);
    const QString first = table->model()->index(0, column).data().toString();
    QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, place);
    const QString last = table->model()->index(0, column).data().toString();
    EXPECT_EQ((QSet<QString>{first, last}),
              (QSet<QString>{QStringLiteral("0"), QStringLiteral("19")}));
}

TEST_F(Window, DrawsAtItsOwnPace) {
    showWindow();
    connectSource();
    auto* const traces = window->findChild<rataip::viewer::LiveTraces*>();
    const auto pointsDrawn = [traces] {
        return traces->panels().constFirst()->lines().constLast()->points().size();
    };
    window->refresh();
    const qsizetype before = pointsDrawn();
    for (quint64 tick = 2; tick < 50; ++tick) {
        source.sendTick(20, 3, tick, 0.5 + 0.001 * static_cast<double>(tick));
    }
    EXPECT_EQ(pointsDrawn(), before) << "ticks alone draw nothing";
    ASSERT_TRUE(QTest::qWaitFor([&] { return pointsDrawn() == before + 48; }, kGenerousMs))
        << pointsDrawn() - before;
}

TEST_F(Window, DoesNotRedrawTracesThatGrewByLessThanAPixel) {
    showWindow();
    connectSource();
    window->refresh();
    const auto* const traces = window->findChild<rataip::viewer::LiveTraces*>();
    const auto pointsDrawn = [traces] {
        return traces->panels().constFirst()->lines().constLast()->points().size();
    };
    const qsizetype before = pointsDrawn();
    source.sendTick(20, 3, 2, 0.50001);
    window->refresh();
    EXPECT_EQ(pointsDrawn(), before);
    source.sendTick(20, 3, 3, 0.51);
    window->refresh();
    EXPECT_EQ(pointsDrawn(), before + 2) << "no point is lost";
}

TEST_F(Window, StartsTheTracesAgainWithALap) {
    showWindow();
    connectSource();
    source.sendTick(20, 3, 2, 0.9);
    source.sendTick(20, 3, 3, 0.95);
    window->refresh();
    source.sendTick(20, 3, 4, 0.04);
    window->refresh();
    const auto* const traces = window->findChild<rataip::viewer::LiveTraces*>();
    for (const auto* panel : traces->panels()) {
        EXPECT_EQ(panel->lines().constLast()->count(), 1) << panel->accessibleName().toStdString();
    }
}

TEST_F(Window, ThinsTheLiveTracesToTheResolutionOfThePlots) {
    showWindow();
    connectSource();
    for (quint64 tick = 2; tick < 6000; ++tick) {
        source.sendTick(4, 3, tick, 0.04 + 0.00015 * static_cast<double>(tick));
    }
    window->refresh();
    const auto* const traces = window->findChild<rataip::viewer::LiveTraces*>();
    for (const auto* panel : traces->panels()) {
        for (const QLineSeries* line : panel->lines()) {
            EXPECT_LE(line->count(), traces->width());
        }
    }
}

TEST_F(Window, ListsLapsAndOpensOneByADoubleClick) {
    showWindow();
    connectSource();
    emit source.dataEmitter()->sendTelemetryLap(ownLap());
    auto* const table = window->findChild<QTableView*>(QStringLiteral("Laps"));
    ASSERT_EQ(table->model()->rowCount(), 1);
    const QPoint place = table->visualRect(table->model()->index(0, 1)).center();
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, place);
    const auto* const opened = window->findChild<LapWindow*>();
    ASSERT_NE(opened, nullptr);
    EXPECT_EQ(opened->windowTitle(), QStringLiteral("Ada Berg, lap 4, 1:34.512"));
}

TEST_F(Window, OpensTheSelectedLapByItsKey) {
    showWindow();
    connectSource();
    QTest::keyClick(window.get(), Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(messages().contains(QStringLiteral("Select a lap")));
    emit source.dataEmitter()->sendTelemetryLap(ownLap());
    auto* const table = window->findChild<QTableView*>(QStringLiteral("Laps"));
    table->setCurrentIndex(table->model()->index(0, 0));
    QTest::keyClick(window.get(), Qt::Key_L, Qt::ControlModifier);
    EXPECT_NE(window->findChild<LapWindow*>(), nullptr);
}

TEST_F(Window, SavesALapAsThreeFilesAndSaysWhere) {
    showWindow();
    const QString target = folder.filePath(QStringLiteral("laps"));
    window->saving().save(ownLap(), target);
    ASSERT_TRUE(saysInTime(QStringLiteral("Saved ")));
    EXPECT_EQ(QDir(target).entryList(QDir::Files).size(), 3);
}

TEST_F(Window, SaysInASentenceWhyALapCannotBeSavedAndGoesOn) {
    showWindow();
    const QString target = folder.filePath(QStringLiteral("taken"));
    QFile file(target);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    window->saving().save(ownLap(), target);
    ASSERT_TRUE(saysInTime(QStringLiteral("The lap was not saved: cannot write into")));
    connectSource();
    EXPECT_EQ(session.state(), Session::State::Connected);
    window->saving().save(ownLap(), target);
    ASSERT_TRUE(saysInTime(QStringLiteral("The lap was not saved"), 2));
}

TEST_F(Window, ShowsAFailedSaveEvenWhileTheMessagesAreHidden) {
    showWindow();
    actionOf("Ctrl+4")->trigger();
    ASSERT_FALSE(window->findChild<QPlainTextEdit*>()->isVisible());
    auto* const line = window->findChild<OutcomeLine*>();
    EXPECT_FALSE(line->isVisible());
    actionOf("Ctrl+E")->trigger();
    EXPECT_TRUE(line->isVisible()) << "no lap is selected";
    const QString target = folder.filePath(QStringLiteral("taken"));
    QFile file(target);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    window->saving().save(ownLap(), target);
    ASSERT_TRUE(saysInTime(QStringLiteral("The lap was not saved")));
    EXPECT_TRUE(line->text().startsWith(QStringLiteral("The lap was not saved: cannot write")));
    EXPECT_TRUE(line->isVisible());
    EXPECT_FALSE(line->visibleRegion().isEmpty());
}

/** Cancels the dialog that an action opens, and returns the window that it belonged to. */
QWidget* ownerOfDialog(QAction& action) {
    QWidget* owner = nullptr;
    QTimer closing;
    QObject::connect(&closing, &QTimer::timeout, [&owner] {
        if (auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
            owner = dialog->parentWidget();
            dialog->reject();
        }
    });
    closing.start(10);
    action.trigger();
    return owner;
}

TEST_F(Window, AsksForAFolderInTheWindowWhoseLapIsSaved) {
    showWindow();
    connectSource();
    emit source.dataEmitter()->sendTelemetryLap(ownLap());
    auto* const table = window->findChild<QTableView*>(QStringLiteral("Laps"));
    table->setCurrentIndex(table->model()->index(0, 0));
    EXPECT_EQ(ownerOfDialog(*actionOf("Ctrl+E")), window.get());
    LapWindow* const view = window->openLap(ownLap());
    for (QAction* action : view->actions()) {
        if (action->shortcut() == QKeySequence(QStringLiteral("Ctrl+E"))) {
            EXPECT_EQ(ownerOfDialog(*action), view);
        }
    }
}

TEST_F(Window, ShowsTheResultOfSavingInTheWindowOfALap) {
    showWindow();
    const LapWindow& view = *window->openLap(ownLap());
    window->saving().save(ownLap(), folder.filePath(QStringLiteral("laps")));
    ASSERT_TRUE(saysInTime(QStringLiteral("Saved ")));
    QStringList shown;
    const QList<QLabel*> labels = view.findChildren<QLabel*>();
    for (const QLabel* label : labels) {
        shown.append(label->text());
    }
    EXPECT_EQ(shown.filter(QStringLiteral("Saved ")).size(), 1);
}

TEST_F(Window, RemembersItsLayout) {
    showWindow();
    window->resize(1111, 777);
    actionOf("Ctrl+4")->trigger();
    auto* const table = window->findChild<QTableView*>(QStringLiteral("Cars"));
    table->setColumnWidth(rataip::viewer::CarTableModel::Team, 321);
    window->close();
    window = std::make_unique<MainWindow>(session, settings);
    window->show();
    EXPECT_EQ(window->size(), QSize(1111, 777));
    EXPECT_FALSE(window->findChild<QDockWidget*>(QStringLiteral("Messages"))->isVisible());
    EXPECT_EQ(window->findChild<QTableView*>(QStringLiteral("Cars"))
                  ->columnWidth(rataip::viewer::CarTableModel::Team),
              321);
    actionOf("Ctrl+R")->trigger();
    EXPECT_TRUE(window->findChild<QDockWidget*>(QStringLiteral("Messages"))->isVisible());
}

TEST_F(Window, UsesTheDefaultLayoutWhenTheStoredOneIsDamaged) {
    settings.setValue(QStringLiteral("window/geometry"), QByteArray("rubbish"));
    settings.setValue(QStringLiteral("window/layout"), QByteArray("rubbish"));
    showWindow();
    const QList<QDockWidget*> panes = window->findChildren<QDockWidget*>();
    EXPECT_EQ(panes.size(), 4);
    for (const QDockWidget* pane : panes) {
        EXPECT_TRUE(pane->isVisible());
    }
}

/** The actions that users see, without those inside Qt's own widgets. */
QList<QAction*> offeredActions(const QWidget& window) {
    QList<QAction*> offered;
    const QList<QAction*> all = window.findChildren<QAction*>();
    for (QAction* action : all) {
        const bool isInner = qobject_cast<QLineEdit*>(action->parent()) != nullptr ||
                             qobject_cast<QPlainTextEdit*>(action->parent()) != nullptr ||
                             qobject_cast<QWidgetAction*>(action) != nullptr;
        if (!action->isSeparator() && action->menu() == nullptr && !isInner) {
            offered.append(action);
        }
    }
    return offered;
}

void expectShortcutsAndNames(const QWidget& window) {
    QSet<QString> shortcuts;
    const QList<QAction*> actions = offeredActions(window);
    EXPECT_FALSE(actions.isEmpty());
    for (const QAction* action : actions) {
        const QString shortcut = action->shortcut().toString();
        EXPECT_FALSE(action->text().isEmpty());
        EXPECT_FALSE(shortcut.isEmpty()) << action->text().toStdString();
        EXPECT_FALSE(shortcuts.contains(shortcut)) << shortcut.toStdString();
        shortcuts.insert(shortcut);
    }
}

/** Whatever the keyboard can reach needs a name for screen readers. */
void expectNames(const QWidget& window) {
    const QList<QWidget*> widgets = window.findChildren<QWidget*>();
    for (const QWidget* widget : widgets) {
        const auto* const button = qobject_cast<const QAbstractButton*>(widget);
        const bool hasText = button != nullptr && !button->text().isEmpty();
        const bool isInner = widget->objectName().startsWith(QStringLiteral("qt_"));
        if ((widget->focusPolicy() & Qt::TabFocus) == Qt::TabFocus && !isInner && !hasText &&
            widget->window() == &window) {
            EXPECT_FALSE(widget->accessibleName().isEmpty()) << widget->metaObject()->className();
        }
    }
}

TEST_F(Window, GivesEveryActionAShortcutAndAName) {
    showWindow();
    expectShortcutsAndNames(*window);
    expectNames(*window);
}

TEST_F(Window, GivesEveryActionOfALapAShortcutAndAName) {
    showWindow();
    const LapWindow& lap = *window->openLap(ownLap());
    expectShortcutsAndNames(lap);
    expectNames(lap);
}

TEST_F(Window, ListsItsKeysAndThoseOfALapOnce) {
    showWindow();
    window->openLap(ownLap());
    window->openLap(ownLap());
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    QString text;
    // The key press returns only after the message box is closed.
    QTimer closing;
    QObject::connect(&closing, &QTimer::timeout, [&text] {
        if (auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            text = box->text();
            box->accept();
        }
    });
    closing.start(10);
    QTest::keyClick(window.get(), Qt::Key_F1);
    for (const char* key : {"F1", "F5", "F6", "F7", "Ctrl+O", "Ctrl+L", "Ctrl+Q", "Ctrl+1",
                            "Ctrl+5", "Ctrl+R", "Ctrl+D", "Ctrl+M", "Ctrl+Shift+T", "Ctrl+W"}) {
        EXPECT_EQ(text.count(QStringLiteral("<td>%1&nbsp;").arg(QLatin1String(key))), 1) << key;
    }
    EXPECT_EQ(text.count(QStringLiteral("<td>Ctrl+E&nbsp;")), 2) << "in both kinds of window";
}

TEST_F(Window, ReachesAllPanesByTheTabKey) {
    showWindow();
    connectSource();
    emit source.dataEmitter()->sendTelemetryLap(ownLap());
    window->refresh();
    for (const char* name : {"Cars", "Laps"}) {
        auto* const table = window->findChild<QTableView*>(QString::fromLatin1(name));
        // With a current cell, where a table might use the key to go to the next one.
        table->setCurrentIndex(table->model()->index(0, 0));
        table->setFocus();
    }
    // More than there are widgets to reach.
    constexpr int kSteps = 50;
    QSet<const QWidget*> reached;
    for (int step = 0; step < kSteps; ++step) {
        QWidget* const widget = QApplication::focusWidget();
        ASSERT_NE(widget, nullptr);
        reached.insert(widget);
        QTest::keyClick(widget, Qt::Key_Tab);
    }
    for (const char* name : {"Cars", "Laps"}) {
        EXPECT_TRUE(reached.contains(window->findChild<QTableView*>(QString::fromLatin1(name))));
    }
    EXPECT_TRUE(reached.contains(window->findChild<QPlainTextEdit*>()));
}

TEST_F(Window, FollowsTheDesktopsLightOrDarkPalette) {
    showWindow();
    connectSource();
    window->refresh();
    auto* const strip = window->findChild<TrackStrip*>();
    const auto groundOf = [](QWidget& widget) {
        return QColor(widget.grab().toImage().pixel(widget.width() / 2, 1));
    };
    const QPalette before = QApplication::palette();
    const QColor light = groundOf(*strip);
    QPalette dark;
    for (const auto role : {QPalette::Window, QPalette::Base, QPalette::AlternateBase,
                            QPalette::Button, QPalette::ToolTipBase}) {
        dark.setColor(role, QColor(40, 40, 40));
    }
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        dark.setColor(role, QColor(230, 230, 230));
    }
    QApplication::setPalette(dark);
    QCoreApplication::processEvents();
    EXPECT_GT(light.lightness(), 200);
    EXPECT_EQ(groundOf(*strip), QColor(40, 40, 40));
    for (rataip::viewer::PlotPanel* panel :
         window->findChild<rataip::viewer::LiveTraces*>()->panels()) {
        EXPECT_EQ(groundOf(*panel), QColor(40, 40, 40));
        EXPECT_EQ(panel->yAxis().labelsColor(), QColor(230, 230, 230));
    }
    QApplication::setPalette(before);
}

}  // namespace
