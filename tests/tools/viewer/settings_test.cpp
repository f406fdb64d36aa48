#include "tools/viewer/settings.h"

#include "tests/tools/laps/samplelap.h"
#include "tools/viewer/lapsaving.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

using rataip::viewer::ChannelName;
using rataip::viewer::LapLayout;
using rataip::viewer::LapSaving;
using rataip::viewer::Settings;

// Only a failing test waits this long.
constexpr int kGenerousMs = 60'000;

class StoredSettings : public ::testing::Test {
protected:
    QTemporaryDir folder;
    QSettings stored{folder.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat};
    Settings settings{stored};
};

TEST_F(StoredSettings, HaveNoLayoutOfALapAtFirst) {
    const LapLayout layout = settings.lapLayout();
    EXPECT_FALSE(layout.size.isValid());
    EXPECT_FALSE(layout.channels);
}

TEST_F(StoredSettings, KeepCalculatedChannelsApartFromRecordedOnesOfTheSameName) {
    const QList<ChannelName> channels = {{QStringLiteral("speed"), true},
                                         {QStringLiteral("speed"), false}};
    LapLayout layout;
    layout.channels = channels;
    settings.storeLapLayout(layout);
    EXPECT_EQ(settings.lapLayout().channels, channels);
}

/** Lets the user be asked for a folder; `answer` is given the dialog until it is closed. */
template <typename Answer>
void askAndSave(LapSaving& saving, const Answer& answer) {
    QWidget asking;
    QTimer answering;
    QObject::connect(&answering, &QTimer::timeout, [&answer] {
        if (auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
            answer(*dialog);
        }
    });
    answering.start(10);
    saving.askAndSave(ownLap(), asking);
}

TEST_F(StoredSettings, OfferTheFolderInWhichALapWasSavedLast) {
    const QDir parent(folder.path());
    const QString before = parent.filePath(QStringLiteral("before"));
    const QString chosen = parent.filePath(QStringLiteral("chosen"));
    ASSERT_TRUE(parent.mkdir(before) && parent.mkdir(chosen));
    settings.storeLapFolder(before);
    LapSaving saving(settings);
    QSignalSpy ended(&saving, &LapSaving::ended);
    QString offered;
    askAndSave(saving, [&](QFileDialog& dialog) {
        offered = dialog.directory().absolutePath();
        dialog.setDirectory(chosen);
        static_cast<QDialog&>(dialog).accept();
    });
    EXPECT_EQ(offered, before);
    EXPECT_EQ(settings.lapFolder(), chosen);
    ASSERT_TRUE(ended.wait(kGenerousMs));
    EXPECT_TRUE(ended.constFirst().constFirst().toString().startsWith(QStringLiteral("Saved ")));
    EXPECT_EQ(QDir(chosen).entryList(QDir::Files).size(), 3);
}

TEST_F(StoredSettings, KeepTheFolderWhenTheDialogIsCancelled) {
    settings.storeLapFolder(folder.path());
    LapSaving saving(settings);
    askAndSave(saving, [](QFileDialog& dialog) { dialog.reject(); });
    EXPECT_EQ(settings.lapFolder(), folder.path());
}

}  // namespace
