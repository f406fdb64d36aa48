#include "tools/laps/lapname.h"

#include "tools/host/laptext.h"

#include <QStringList>

namespace rataip::laps {

using TLM::SDK::LapHeader;
using TLM::SDK::Session;

namespace {

constexpr qsizetype kSlotWidth = 2;
// File systems accept names of 255 bytes. A letter may take three bytes.
constexpr qsizetype kLongestPart = 32;

/** Letters and digits stay; each run of anything else becomes one "-". */
QString plainPart(const QString& text) {
    QString plain;
    for (const QChar letter : text.left(kLongestPart)) {
        if (letter.isLetterOrNumber()) {
            plain += letter;
        } else if (!plain.isEmpty() && !plain.endsWith(QLatin1Char('-'))) {
            plain += QLatin1Char('-');
        }
    }
    while (plain.endsWith(QLatin1Char('-'))) {
        plain.chop(1);
    }
    return plain;
}

QString sessionPart(Session session) {
    switch (session) {
        case Session::OfflineTesting:
            return QStringLiteral("testing");
        case Session::Practice:
            return QStringLiteral("practice");
        case Session::Qualify:
            return QStringLiteral("qualify");
        case Session::Warmup:
            return QStringLiteral("warmup");
        case Session::Race:
            return QStringLiteral("race");
        case Session::Unknown:
            break;
    }
    return {};
}

QString timePart(const QTime& time) {
    if (!host::hasLapTime(time)) {
        return QStringLiteral("notime");
    }
    const QString format =
        time.hour() > 0 ? QStringLiteral("h'h'mm'm'ss's'zzz") : QStringLiteral("m'm'ss's'zzz");
    return time.toString(format);
}

}  // namespace

QString lapFileName(const LapHeader& lap) {
    QStringList parts = {
        QStringLiteral("car") + plainPart(lap.carId()).rightJustified(kSlotWidth, QLatin1Char('0')),
        plainPart(lap.driverName()),
        sessionPart(lap.session()),
        QStringLiteral("lap%1").arg(lap.lapInSession()),
        host::lapTypeText(lap.lapType()),
        timePart(lap.lapTime())};
    parts.removeAll(QString());
    return parts.join(QLatin1Char('_'));
}

}  // namespace rataip::laps
