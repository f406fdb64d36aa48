#include "tests/tools/laps/samplelap.h"
#include "tools/viewer/lapsaving.h"
#include "tools/viewer/settings.h"

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
constexpr int generousMs = 60'000;

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

/** The folder that the dialog offers at first; `answer` then answers the dialog. */
template <typename Answer>
QString offeredFolder(LapSaving& saving, const Answer& answer) {
    QWidget asking;
    QString offered;
    QTimer answering;
    QObject::connect(&answering, &QTimer::timeout, [&] {
        if (auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
            offered = dialog->directory().absolutePath();
            answer(*dialog);
        }
    });
    answering.start(10);
    saving.askAndSave(ownLap(), asking);
    return offered;
}

TEST_F(StoredSettings, OfferTheFolderOfTheLastLapThatWasSaved) {
    const QDir target(folder.path());
    ASSERT_TRUE(target.mkdir(QStringLiteral("laps")));
    const QString chosen = target.filePath(QStringLiteral("laps"));
    LapSaving saving(settings);
    QSignalSpy ended(&saving, &LapSaving::ended);
    offeredFolder(saving, [&chosen](QFileDialog& dialog) {
        dialog.setDirectory(chosen);
        static_cast<QDialog&>(dialog).accept();
    });
    ASSERT_TRUE(ended.wait(generousMs));
    EXPECT_TRUE(ended.constFirst().constFirst().toString().startsWith(QStringLiteral("Saved ")));
    const QString offered = offeredFolder(saving, [](QFileDialog& dialog) { dialog.reject(); });
    EXPECT_EQ(offered, chosen);
    EXPECT_EQ(QDir(chosen).entryList(QDir::Files).size(), 3) << "a cancelled dialog saves nothing";
}

}  // namespace
