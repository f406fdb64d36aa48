#pragma once

#include "tests/support/publisher.h"
#include "tests/support/testblock.h"

#include <cstdint>
#include <string>
#include <vector>

/** The facts of a session text; each test changes those that it is about. */
struct StagedSession {
    struct Driver {
        int car;
        std::string name;
    };

    std::string simMode = "full";
    std::string trackLength = {};  // such as "4.00 km"; not in the text if empty
    std::string type = "Practice";
    int ownCar = 2;
    std::vector<Driver> drivers = {{2, "Own Driver"}, {5, "Fast Driver"}, {9, "Slow Driver"}};

    [[nodiscard]] std::string text() const;
};

/**
 * A simulator that a test moves by hand: a block of a few variables, published by a second process.
 * Three cars (the own one, fastCar and slowCar) drive in the middle of their first lap.
 *
 * It is either stopped, and nextTick() publishes one snapshot, or it runs by itself, which
 * connecting needs; the running simulator's snapshots have no valid values. After publish() it is
 * stopped.
 */
class StagedSimulator {
public:
    static constexpr int kOwnCar = 2;
    static constexpr int kFastCar = 5;
    static constexpr int kSlowCar = 9;

    /** The published data: change it before publish(), its values also before nextTick(). */
    testsupport::TestBlock block;
    testsupport::Publisher publisher{testsupport::Publisher::Where::OtherProcess};

    StagedSimulator();

    /** A table of the same variables, with the last one at the end of longer buffers. */
    void layOut(int bufferLength);

    void publish();
    /** Runs with readable snapshots; false if it runs already. */
    bool run();
    /** Runs and wakes waiting readers, but with an invalid length of snapshots. */
    void runWithoutData();
    void stop();

    /** Publishes the staged values as the snapshot of the next tick. */
    void nextTick();

    /** From the next tick on the car is one lap further. */
    void crossLine(int car);

    /** Rewrites the session text in the published block; the counter grows by one. */
    void rewriteSession(const StagedSession& session);

    /** Overwrites the published text without changing the counter. */
    void overwriteSession(const StagedSession& session);

    /** Changes the update counter, not the text. */
    void setSessionUpdate(std::int32_t counter);

    /** Crashes; its objects stay until this is destroyed. */
    void crash() { publisher.die(); }

private:
    void addVariables();
    void stageStart();
    void restoreBufferLength();
    [[nodiscard]] int newestTick();

    int m_sessionTick = 1000;
    int m_lapsOf[64] = {};
};
