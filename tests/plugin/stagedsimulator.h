#pragma once

#include "tests/support/publisher.h"
#include "tests/support/testblock.h"

#include <cstdint>
#include <string>
#include <vector>

/** What a session text tells; each test changes what it is about. */
struct StagedSession {
    struct Driver {
        int car;
        std::string name;
    };

    std::string simMode = "full";
    std::string trackLength = {};  // such as "4.00 km"; none when empty
    std::string type = "Practice";
    int ownCar = 2;
    std::vector<Driver> drivers = {{2, "Own Driver"}, {5, "Fast Driver"}, {9, "Slow Driver"}};

    [[nodiscard]] std::string text() const;
};

/**
 * A simulator that a test moves by hand: a block of a few variables, published by a second process.
 * Three cars (the own one, fastCar and slowCar) drive in the middle of their first lap.
 *
 * It either stands, and nextTick() publishes one snapshot, or it runs by itself, as connecting
 * needs it; the snapshots of its running are no readings. After publish() it stands.
 */
class StagedSimulator {
public:
    static constexpr int ownCar = 2;
    static constexpr int fastCar = 5;
    static constexpr int slowCar = 9;

    /** What it publishes, to be changed before publish() or, the values, before nextTick(). */
    testsupport::TestBlock block;
    testsupport::Publisher publisher{testsupport::Publisher::Where::OtherProcess};

    StagedSimulator();

    /** A table of the same variables with the last one moved to the end of longer buffers. */
    void layOut(int bufferLength);

    void publish();
    /** Runs with snapshots that can be read; false when it ran already. */
    bool run();
    /** Runs and wakes those who wait, but with snapshots of a length of which none can be read. */
    void runWithoutData();
    void stand();

    /** Publishes the staged values as the snapshot of the next tick. */
    void nextTick();

    /** Makes the next ticks see the car one lap further. */
    void crossLine(int car);

    /** Rewrites the session text in the published block; the counter grows by one. */
    void rewriteSession(const StagedSession& session);

    /** Writes a text over the published one without telling anyone. */
    void overwriteSession(const StagedSession& session);

    /** Moves the update counter without touching the text. */
    void setSessionUpdate(std::int32_t counter);

    /** Stops for ever, with the objects left behind as after a crash until this is destroyed. */
    void crash() { publisher.die(); }

private:
    void addVariables(testsupport::TestBlock& target) const;
    void stageStart();
    void restoreBufferLength();
    [[nodiscard]] int newestTick();

    int m_sessionTick = 1000;
    int m_lapsOf[64] = {};
};
