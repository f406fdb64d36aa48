#include "benchmarks/obvious/reader.h"
#include "reader/irtelemetryreader.h"
#include "tests/benchmarks/sameresults.h"
#include "tests/fuzz/fuzztarget.h"
#include "tests/fuzz/quietqt.h"
#include "tests/support/testblock.h"

#include <QDateTime>
#include <QSharedPointer>
#include <QTime>

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

// The input is a drive, one step per tick: its bytes say where the cars are and what the simulator
// reports of them. Every lap is checked, and the reader is compared with the literal one.

namespace {

using fuzz::require;
using TLM::SDK::Lap;
using LapPointer = QSharedPointer<Lap>;

constexpr int kSlots = 64;
constexpr int kOwnCar = 3;
constexpr std::array kOtherCars{1, 6, 7};
constexpr std::array kDrivenCars{kOwnCar, 1, 6, 7};

// The arrays end after the last driven car: empty slots cost time and cover no more code.
constexpr int kPublishedCars = 8;
const QTime kNoLapTime(0, 59, 59);

/** Takes an input byte by byte; after its end come zeros. */
class InputBytes {
public:
    InputBytes(const std::uint8_t* data, std::size_t size) : m_data(data), m_left(size) {}

    [[nodiscard]] bool isEmpty() const { return m_left == 0; }

    [[nodiscard]] int take() {
        if (m_left == 0) {
            return 0;
        }
        --m_left;
        return *m_data++;
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_left;
};

// Numbers that no simulator should publish; the largest bytes choose them.
constexpr std::array kHostileNumbers{std::numeric_limits<double>::quiet_NaN(),
                                     std::numeric_limits<double>::infinity(),
                                     -std::numeric_limits<double>::infinity(),
                                     1e25,
                                     -1.0,
                                     3e9,
                                     -3e9,
                                     0.0};

/** A number from 0 to `most`, or a hostile one for the largest bytes. */
double numberOf(int byte, double most) {
    constexpr int kOrdinary = 256 - static_cast<int>(kHostileNumbers.size());
    if (byte >= kOrdinary) {
        return kHostileNumbers[static_cast<std::size_t>(byte - kOrdinary)];
    }
    return most * byte / kOrdinary;
}

float asFloat(double number) {
    // All finite numbers here are within a float's range; otherwise the cast would be undefined.
    return static_cast<float>(number);
}

/** The published data, which each step of the input changes. */
class Simulator {
public:
    explicit Simulator(bool replay) : m_replay(replay) {
        for (const char* name : {"SessionTime", "SessionTimeRemain"}) {
            m_block.addVariable(name, irsdk_double, 1, "s");
        }
        for (const char* name :
             {"SessionTick", "SessionNum", "SessionState", "Lap", "ReplayPlaySpeed"}) {
            m_block.addVariable(name, irsdk_int);
        }
        for (const char* name : {"IsOnTrack", "PlayerCarInPitStall", "OnPitRoad"}) {
            m_block.addVariable(name, irsdk_bool);
        }
        m_block.addVariable("LapDistPct", irsdk_float, 1, "%");
        for (const char* name :
             {"LapCurrentLapTime", "LapLastLapTime", "EnergyMGU_KLapDeployPct"}) {
            m_block.addVariable(name, irsdk_float, 1, "s");
        }
        m_block.addVariable("FuelLevel", irsdk_float, 1, "l");
        m_block.addVariable("CarIdxLapDistPct", irsdk_float, kPublishedCars, "%");
        m_block.addVariable("CarIdxOnPitRoad", irsdk_bool, kPublishedCars);
        m_block.addVariable("CarIdxLapCompleted", irsdk_int, kPublishedCars);
        m_block.addVariable("CarIdxLastLapTime", irsdk_float, kPublishedCars, "s");
        m_block.setAll("CarIdxLapDistPct", -1.0);
        m_block.set("ReplayPlaySpeed", 1);
        for (const int car : kDrivenCars) {
            m_block.set("CarIdxLapDistPct", 0.0, car);
        }
    }

    [[nodiscard]] testsupport::TestBlock& block() { return m_block; }

    /** True if the session text has changed. */
    bool takeStep(InputBytes& input) {
        const int step = input.take();
        const int argument = step / kSteps;
        switch (step % kSteps) {
            case 0:
                moveCars(argument);
                break;
            case 1:
                setOwnDistance(numberOf(input.take(), 1.0));
                break;
            case 2:
                m_block.set("CarIdxLapDistPct", narrowed(numberOf(input.take(), 1.0)),
                            otherCar(argument));
                break;
            case 3:
                m_ownLap += argument - kBackwards;
                m_block.set("Lap", m_ownLap);
                break;
            case 4:
                finishLap(otherCar(argument), input.take());
                break;
            case 5:
                m_block.set("IsOnTrack", argument & 1);
                m_block.set("PlayerCarInPitStall", argument >> 1 & 1);
                m_block.set("OnPitRoad", argument >> 2 & 1);
                break;
            case 6:
                m_block.set("CarIdxOnPitRoad", argument & 1, otherCar(argument / 2));
                break;
            case 7:
                m_block.set("SessionNum", argument - 1);
                break;
            case 8:
                m_block.set("SessionState", argument);
                break;
            case 9:
                m_block.set("LapCurrentLapTime", narrowed(numberOf(input.take(), 200.0)));
                break;
            case 10:
                m_block.set("LapLastLapTime", narrowed(numberOf(input.take(), 200.0)));
                m_block.set("EnergyMGU_KLapDeployPct", narrowed(numberOf(input.take(), 1.0)));
                break;
            case 11:
                m_subSession = argument;
                return true;
            case 12:
                m_time += numberOf(input.take(), 100.0);
                break;
            case 13:
                m_tick -= argument;
                break;
            case 14:
                m_block.set("ReplayPlaySpeed", argument);
                break;
            default:
                changeText(argument, input.take());
                return true;
        }
        return false;
    }

    void advanceClock() {
        constexpr double kSecondsPerTick = 1.0 / 60;
        m_time += kSecondsPerTick;
        m_block.set("SessionTime", m_time);
        m_block.set("SessionTimeRemain", -m_time);
        m_block.set("SessionTick", ++m_tick);
    }

    [[nodiscard]] std::string sessionText() const {
        static constexpr std::array kTypes{"Practice",        "Race",   "Qualify", "Warmup",
                                           "Offline testing", "Nothing"};
        std::string text =
            "---\nWeekendInfo:\n TrackLength: 1.5 km\n SessionID: 12\n SubSessionID: " +
            std::to_string(m_subSession) + "\n SimMode: " + (m_replay ? "replay" : "full") +
            "\nSessionInfo:\n Sessions:\n";
        for (int session = 0; session < 3; ++session) {
            text += " - SessionNum: " + std::to_string(session) + "\n   SessionType: " +
                    kTypes[static_cast<std::size_t>(m_type + session) % kTypes.size()] + "\n";
            if (m_showsResults) {
                text += "   ResultsPositions:\n";
                for (std::size_t i = 0; i < kOtherCars.size(); ++i) {
                    text += "   - Position: " + std::to_string(i + 1) +
                            "\n     CarIdx: " + std::to_string(kOtherCars[i]) +
                            "\n     LapsComplete: " + std::to_string(m_results[i]) +
                            "\n     LastTime: " + std::to_string(m_lastTime) + "\n";
                }
            }
        }
        text += "DriverInfo:\n DriverCarIdx: " + std::to_string(m_ownCar) +
                "\n DriverCarFuelKgPerLtr: 0.75\n Drivers:\n";
        for (const int car : kDrivenCars) {
            text += " - CarIdx: " + std::to_string(car) + "\n   UserName: " +
                    (car == m_absentCar ? std::string() : "Driver " + std::to_string(car)) + "\n";
        }
        return text + "...\n";
    }

private:
    static constexpr int kSteps = 16;
    static constexpr int kBackwards = 4;  // arguments that count laps down

    static int otherCar(int number) {
        return kOtherCars[static_cast<std::size_t>(number) % kOtherCars.size()];
    }

    /** The block only takes values that the variable's type can represent. */
    static double narrowed(double number) { return static_cast<double>(asFloat(number)); }

    void setOwnDistance(double distance) {
        m_block.set("LapDistPct", narrowed(distance));
        m_block.set("CarIdxLapDistPct", narrowed(distance), kOwnCar);
        m_distance = std::isfinite(distance) ? distance : 0.0;
    }

    /** All cars drive on; laps are counted correctly at the line. */
    void moveCars(int argument) {
        constexpr double kSlowest = 0.01;
        m_distance += kSlowest + argument * kSlowest;
        if (m_distance >= 1.0) {
            m_distance -= 1.0;
            m_block.set("Lap", ++m_ownLap);
            m_lapTime = 0.0;
        }
        m_lapTime += 1.0;
        setOwnDistance(m_distance);
        m_block.set("LapCurrentLapTime", narrowed(m_lapTime));
        for (const int car : kOtherCars) {
            m_block.set("CarIdxLapDistPct", narrowed(m_distance), car);
        }
    }

    void finishLap(int car, int time) {
        m_block.set("CarIdxLapCompleted", ++m_finished, car);
        m_block.set("CarIdxLastLapTime", narrowed(numberOf(time, 200.0)), car);
    }

    void changeText(int argument, int number) {
        switch (argument % 6) {
            case 0:
                ++m_type;
                break;
            case 1:
                m_showsResults = !m_showsResults;
                break;
            case 2:
                m_results[static_cast<std::size_t>(number) % m_results.size()] += number / 16;
                m_lastTime = numberOf(number, 200.0);
                break;
            case 3:
                m_absentCar = number;
                break;
            case 4:
                m_ownCar = number - 4;
                break;
            default:
                m_ownCar = kOwnCar;
                break;
        }
    }

    testsupport::TestBlock m_block;
    bool m_replay;
    int m_tick = 1000;
    double m_time = 100.0;
    double m_distance = 0.0;
    double m_lapTime = 0.0;
    int m_ownLap = 0;
    int m_finished = 0;
    int m_subSession = 1;
    int m_type = 0;
    int m_ownCar = kOwnCar;
    int m_absentCar = -1;
    bool m_showsResults = false;
    std::array<int, kOtherCars.size()> m_results{};
    double m_lastTime = 90.0;
};

/** Checks what must be true of the laps of one car for any input. */
class LapWatch {
public:
    void beginTick(const RecorderCar& car) { m_before = samplesOf(car); }

    void endTick(const RecorderCar& car) const {
        require(samplesOf(car) <= m_before + 1, "a tick is recorded once at most");
    }

    void take(const RecorderCar& car, int ticks) {
        const LapPointer& lap = car.lap;
        require(!lap.isNull(), "a ready lap is not null");
        require(lap != m_handedOver.lap, "a lap is handed over once");
        expectUntouched();
        m_handedOver = {lap,
                        lap->size(),
                        lap->channels().size(),
                        lap->completed(),
                        lap->lapTime(),
                        lap->dateTime()};
        if (!lap->isEmpty()) {
            expectHeader(*lap);
            expectChannels(*lap, ticks);
        }
    }

    /** Recording goes on in another lap than the host's. */
    void expectUntouched() const {
        if (m_handedOver.lap.isNull()) {
            return;
        }
        const Lap& lap = *m_handedOver.lap;
        require(lap.size() == m_handedOver.size && lap.channels().size() == m_handedOver.channels &&
                    lap.completed() == m_handedOver.completed &&
                    lap.lapTime() == m_handedOver.time && lap.dateTime() == m_handedOver.date,
                "a lap that was handed over stays as it is");
    }

private:
    struct HandedOver {
        LapPointer lap;
        int size = 0;
        qsizetype channels = 0;
        bool completed = false;
        QTime time;
        QDateTime date;
    };

    static int samplesOf(const RecorderCar& car) { return car.lap->size() + car.nextLap->size(); }

    static void expectHeader(const Lap& lap) {
        require(lap.lapTime().isValid(), "a lap's time is valid");
        require(lap.completed() || lap.lapTime() == kNoLapTime,
                "a lap that was not driven to its end has no time");
        require(!lap.containsValue(QStringLiteral("maxLapDistPct")),
                "a recorder's internal value is not handed over");
        require(!lap.driverName().isNull(), "a lap has a driver");
    }

    static void expectChannels(const Lap& lap, int ticks) {
        for (const auto& channel : lap.channels()) {
            require(!channel.isNull(), "a channel is not null");
            require(!channel->samples.isEmpty() && channel->samples.size() <= ticks,
                    "a channel has at most an entry for each tick");
        }
    }

    HandedOver m_handedOver;
    int m_before = 0;
};

class Drive {
public:
    explicit Drive(int mode) : m_simulator((mode & 1) != 0) {
        m_reader.setDiskLoading((mode & 2) != 0);
        m_obvious.setDiskLoading((mode & 2) != 0);
        publishText();
    }

    void play(InputBytes& input) {
        while (!input.isEmpty()) {
            if (m_simulator.takeStep(input)) {
                publishText();
            }
            tick();
        }
        disconnect();
    }

private:
    void publishText() {
        const std::string text = m_simulator.sessionText();
        m_reader.setYaml(text.c_str());
        m_obvious.setYaml(text.c_str());
    }

    void tick() {
        ++m_ticks;
        m_simulator.advanceClock();
        require(m_reader.updateCarList() == m_obvious.updateCarList(), "both see the same cars");
        m_reader.prepareTick();
        m_obvious.prepareTick();
        for (int car = 0; car < kSlots; ++car) {
            m_watches[static_cast<std::size_t>(car)].beginTick(m_reader.recorderCar(car));
        }
        process(m_reader);
        process(m_obvious);
        for (int car = 0; car < kSlots; ++car) {
            m_watches[static_cast<std::size_t>(car)].endTick(m_reader.recorderCar(car));
            compare(car);
            if (m_reader.isLapReady(car)) {
                m_watches[static_cast<std::size_t>(car)].take(m_reader.recorderCar(car), m_ticks);
            }
        }
    }

    template <typename Reader>
    void process(Reader& reader) {
        testsupport::TestBlock& block = m_simulator.block();
        reader.getRawData(&block.header(), block.varHeaders(), block.snapshot(),
                          block.snapshotLength());
        reader.processData();
    }

    void compare(int index) {
        const RecorderCar& fast = m_reader.recorderCar(index);
        const RecorderCar& plain = m_obvious.recorderCar(index);
        require(fast.current.status == plain.current.status, "both see the same status");
        require(fast.current.lap == plain.current.lap, "both count the same laps");
        require(fast.lapReady == plain.lapReady, "both close the same laps");
        require(
            fast.lap->size() == plain.lap->size() && fast.nextLap->size() == plain.nextLap->size(),
            "both record the same samples");
        if (fast.lapReady) {
            expectSame(fastpath::areSameLaps(*fast.lap, *plain.lap));
        }
    }

    static void expectSame(const testing::AssertionResult& result) {
        if (!result) {
            std::fprintf(stderr, "%s\n", result.message());
        }
        require(result, "both hand over the same lap");
    }

    /**
     * As the plugin does when its connection ends: the last tick's laps stay with the host, open
     * ones are closed and not handed over.
     */
    void disconnect() {
        std::array<bool, kSlots> wereHandedOver{};
        for (int car = 0; car < kSlots; ++car) {
            wereHandedOver[static_cast<std::size_t>(car)] = m_reader.isLapReady(car);
        }
        static_cast<void>(m_reader.closeOpenLaps());
        for (int car = 0; car < kSlots; ++car) {
            require(m_reader.isLapReady(car), "a closed lap is ready");
            if (wereHandedOver[static_cast<std::size_t>(car)]) {
                require(m_reader.lap(car)->isEmpty(), "nothing follows a lap in its own tick");
            } else {
                m_obvious.processLap(car, false);
                expectSame(fastpath::areSameLaps(*m_reader.lap(car), *m_obvious.lap(car)));
            }
            m_watches[static_cast<std::size_t>(car)].expectUntouched();
        }
        tick();
    }

    Simulator m_simulator;
    iRTelemetryReader m_reader;
    obvious::Reader m_obvious;
    std::array<LapWatch, kSlots> m_watches;
    int m_ticks = 0;
};

}  // namespace

int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    fuzz::silenceQt();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputBytes input(data, size);
    Drive drive(input.take());
    drive.play(input);
    return 0;
}
