#include "reader/laprecorder.h"

#include "sdk/shared.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using TLM::SDK::Channel;
using TLM::SDK::Lap;
using TLM::SDK::LapHeader;

namespace reader {

namespace {

// Rows that are kept before they go into the channels. Twice as many are hardly faster, and make
// the tick in which they go longer.
constexpr qsizetype kRows = 32;

// A channel's first room in entries; a lap that breaks off at once has not taken much more. The
// rooms of a lap's channels differ, so that they are never all too small in one tick: moving
// thousands of long lists at once would hold up the host for longer than a frame.
constexpr qsizetype kFirstRoom = 64;

// Room grows towards the expected length by this factor at most, so that a lap that breaks off
// early does not take the room of a whole one.
constexpr qsizetype kGrowthLimit = 24;

// The longest room taken on the word of a hint: 20 minutes at 60 samples a second. After a lap
// during which a car stood for hours the next one is hardly as long.
constexpr qsizetype kMaxExpectedSamples = 72'000;

// A fall of the lap distance by more than half a lap from near the lap's end is the line.
constexpr double kLineCrossingFall = 0.5;
constexpr double kLineCrossingFrom = 0.9;

}  // namespace

/** A lap and the rows that are not in its channels yet. */
class LapRecorder::Recording {
public:
    explicit Recording(QSharedPointer<Lap> recorded) : lap(std::move(recorded)) {}

    const QSharedPointer<Lap> lap;
    qsizetype expectedSamples = 0;

    void add(const CarSample& sample, std::optional<double> trackKilometres);
    [[nodiscard]] LapCourse takeCourse();
    void giveOut();
    void discard();
    [[nodiscard]] qsizetype size() const { return lap->size() + m_rowCount; }

private:
    [[nodiscard]] bool takesRowsOf(const CarSample& sample);
    [[nodiscard]] bool findColumns(const RowLayout& layout);
    void createColumns();
    void followTrack(std::optional<double> kilometres);
    void makeRoom(std::size_t column, qsizetype length);
    void flush();
    void followCourse();

    bool m_isGivenOut = false;
    std::shared_ptr<const RowLayout> m_layout;  // of the rows, null while the lap takes none
    std::vector<QList<double>*> m_columns;      // the channels' entries, in the order of a row
    std::unique_ptr<double[]> m_rows;
    qsizetype m_rowCount = 0;
    qsizetype m_rowsToKeep = kRows;
    std::optional<LapCourse> m_course;  // of all the rows so far
    std::size_t m_clockColumn = 0;
    std::size_t m_placeColumn = 0;
};

void LapRecorder::Recording::add(const CarSample& sample, std::optional<double> trackKilometres) {
    if (m_isGivenOut || !takesRowsOf(sample)) {
        lap->addSample(sample);
        m_course.reset();
        return;
    }
    followTrack(trackKilometres);
    const std::size_t width = m_layout->columns.size();
    std::copy_n(sample.row(), width, m_rows.get() + m_rowCount * static_cast<qsizetype>(width));
    ++m_rowCount;
    if (m_rowCount >= m_rowsToKeep) {
        flush();
        m_rowsToKeep = kRows;
    }
}

bool LapRecorder::Recording::takesRowsOf(const CarSample& sample) {
    const std::shared_ptr<const RowLayout>& layout = sample.layout();
    if (layout != nullptr && layout == m_layout) {
        return true;
    }
    flush();
    m_layout.reset();
    if (layout == nullptr || !findColumns(*layout)) {
        return false;
    }
    m_clockColumn = layout->columnOf(u"sessiontime"_s);
    m_placeColumn = layout->columnOf(nameOf(KnownValue::LapDistPct));
    // Not written to before the rows are: in a race's first tick every car begins its lap.
    m_rows = std::make_unique_for_overwrite<double[]>(layout->columns.size() *
                                                      static_cast<std::size_t>(kRows));
    // Laps that expect different lengths do not go into their channels in the same ticks.
    m_rowsToKeep = kRows - expectedSamples % kRows;
    m_layout = layout;
    return true;
}

/** Whether the channels have just the names of the layout; a lap without any gets them later. */
bool LapRecorder::Recording::findColumns(const RowLayout& layout) {
    m_columns.clear();
    const Lap::ChannelMap& channels = lap->channels();
    const bool isSame = std::equal(
        layout.columns.begin(), layout.columns.end(), channels.keyBegin(), channels.keyEnd(),
        [](const RowLayout::Column& column, const QString& name) { return column.name == name; });
    if (!isSame) {
        return channels.isEmpty();
    }
    for (const QSharedPointer<Channel>& channel : channels) {
        m_columns.push_back(&channel->samples);
    }
    return true;
}

/** A course begins with the lap, and ends where the track becomes another one. */
void LapRecorder::Recording::followTrack(std::optional<double> kilometres) {
    const std::size_t width = m_layout->columns.size();
    const bool hasColumns = m_clockColumn < width && m_placeColumn < width;
    if (size() == 0 && kilometres && hasColumns) {
        m_course.emplace(*kilometres, expectedSamples);
    } else if (m_course && (m_course->kilometres() != kilometres || !hasColumns)) {
        m_course.reset();
    }
}

void LapRecorder::Recording::createColumns() {
    for (const RowLayout::Column& column : m_layout->columns) {
        const auto channel = TLM::SDK::makeShared<Channel>();
        channel->setUnit(column.unit);
        lap->addChannel(channel, column.name);
        m_columns.push_back(&channel->samples);
    }
}

void LapRecorder::Recording::makeRoom(std::size_t column, qsizetype length) {
    QList<double>& entries = *m_columns[column];
    const qsizetype room = entries.capacity();
    if (room == 0) {
        entries.reserve(kFirstRoom + static_cast<qsizetype>(column) % kFirstRoom);
    } else if (room < length) {
        entries.reserve(std::max(2 * room, std::min(expectedSamples, kGrowthLimit * room)) +
                        static_cast<qsizetype>(column) % kFirstRoom);
    }
}

void LapRecorder::Recording::flush() {
    if (m_rowCount == 0) {
        return;
    }
    if (m_columns.empty()) {
        createColumns();
    }
    const std::size_t width = m_columns.size();
    for (std::size_t column = 0; column < width; ++column) {
        QList<double>& entries = *m_columns[column];
        const qsizetype length = entries.size();
        makeRoom(column, length + m_rowCount);
        entries.resize(length + m_rowCount);
        double* entry = entries.data() + length;
        const double* reading = m_rows.get() + column;
        for (qsizetype row = 0; row < m_rowCount; ++row) {
            *entry++ = *reading;
            reading += width;
        }
    }
    followCourse();
    m_rowCount = 0;
}

void LapRecorder::Recording::followCourse() {
    if (!m_course) {
        return;
    }
    const std::size_t width = m_columns.size();
    const double* reading = m_rows.get();
    for (qsizetype row = 0; row < m_rowCount; ++row) {
        m_course->add(reading[m_clockColumn], reading[m_placeColumn]);
        reading += width;
    }
}

LapCourse LapRecorder::Recording::takeCourse() {
    if (m_isGivenOut) {
        m_course.reset();
    }
    giveOut();
    return m_course ? *std::exchange(m_course, std::nullopt) : LapCourse();
}

void LapRecorder::Recording::giveOut() {
    if (!m_isGivenOut) {
        flush();
        m_isGivenOut = true;
        m_layout.reset();
        m_rows.reset();
    }
}

void LapRecorder::Recording::discard() {
    m_rowCount = 0;
    m_course.reset();
    m_layout.reset();
    lap->clear();
}

LapRecorder::LapRecorder(qsizetype expectedSamples)
    : m_recording(std::make_shared<Recording>(TLM::SDK::makeShared<Lap>())) {
    expect(expectedSamples);
}

void LapRecorder::expect(qsizetype samples) {
    m_recording->expectedSamples = std::clamp<qsizetype>(samples, 0, kMaxExpectedSamples);
}

qsizetype LapRecorder::expectedSamples() const {
    return m_recording->expectedSamples;
}

qsizetype LapRecorder::expectedOfNext() const {
    // An eighth to spare for a slower lap; a lap that broke off early says little about the next,
    // and one that never began nothing.
    const qsizetype samples = m_recording->size();
    const qsizetype expected = m_recording->expectedSamples;
    return samples > 0 ? std::max(samples + samples / 8, expected / 2) : expected;
}

void LapRecorder::add(const CarSample& sample, std::optional<double> trackKilometres) {
    m_recording->add(sample, trackKilometres);
}

LapCourse LapRecorder::takeCourse() {
    return m_recording->takeCourse();
}

LapPart LapRecorder::noteDistance(float lapDistPct) {
    LapHeader& values = header();
    const auto kept = values.data().find(farthestDistanceName());
    if (kept == values.data().end()) {
        values.setValue(farthestDistanceName(), QVariant(lapDistPct), QString());
        return LapPart::BeforeLine;
    }
    const double farthest = kept->value.toDouble();
    const double distance = static_cast<double>(lapDistPct);
    if (distance > farthest) {
        kept->value.setValue(distance);
        return LapPart::BeforeLine;
    }
    const bool hasCrossedLine =
        farthest - distance > kLineCrossingFall && farthest > kLineCrossingFrom;
    return hasCrossedLine ? LapPart::AfterLine : LapPart::BeforeLine;
}

const QString& LapRecorder::farthestDistanceName() {
    static const QString kName = QStringLiteral("maxLapDistPct");
    return kName;
}

bool LapRecorder::isEmpty() const {
    return m_recording->size() == 0 && m_recording->lap->isEmpty();
}

LapHeader& LapRecorder::header() const {
    return *m_recording->lap;
}

void LapRecorder::discard() {
    m_recording->discard();
}

LapRecorder& LapRecorder::operator=(const QSharedPointer<Lap>& lap) {
    auto recording = std::make_shared<Recording>(lap ? lap : TLM::SDK::makeShared<Lap>());
    recording->expectedSamples = m_recording->expectedSamples;
    recording->giveOut();  // whoever assigns the lap has it
    m_recording = std::move(recording);
    return *this;
}

const QSharedPointer<Lap>& LapRecorder::lap() const {
    return m_recording->lap;
}

const QSharedPointer<Lap>& LapRecorder::giveOut() const {
    m_recording->giveOut();
    return m_recording->lap;
}

}  // namespace reader
