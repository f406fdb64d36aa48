#include "sdk/utilities.h"

#include <QFileInfo>
#include <QSet>
#include <QStringBuilder>
#include <QStringList>

namespace TLM::SDK {

namespace {

QSet<QString> filesWithADot(const QDir& dir) {
    static const QStringList kNameFilters{QStringLiteral("*.*")};
    const QStringList names =
        dir.entryList(kNameFilters, QDir::Files | QDir::NoDot | QDir::NoDotDot, QDir::Unsorted);
    return {names.begin(), names.end()};
}

}  // namespace

bool isValidValue(double v) {
    // Hosts hold their threshold as a float; the double 1e24 lies just below it.
    constexpr double kInvalidThreshold = static_cast<double>(1e24F);
    return v < kInvalidThreshold;
}

QString generateUniqueFileName(const QDir& dir, const QString& fileName) {
    const QFileInfo wanted(fileName);
    const QString base = wanted.baseName();
    const QString suffix = wanted.suffix();
    const QSet<QString> taken = filesWithADot(dir);

    QString candidate = base % QLatin1Char('.') % suffix;
    for (int n = 1; taken.contains(candidate); ++n) {
        candidate = base % QLatin1Char('_') % QString::number(n) % QLatin1Char('.') % suffix;
    }
    return dir.absolutePath() % QLatin1Char('/') % candidate;
}

}  // namespace TLM::SDK
