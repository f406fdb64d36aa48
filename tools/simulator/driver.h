#pragma once

#include "tools/simulator/random.h"

#include <string>
#include <vector>

namespace simulator {

/** A car model and the class that it races in. */
struct CarModel {
    int id;
    int classId;
    const char* path;
    const char* screenName;
    const char* screenNameShort;
    const char* className;
    int classColor;
    double pace;  // share of the track's speed
    double estimatedLapFactor;
};

/** The driver of a car in the session information. Texts are Latin-1. */
struct Driver {
    std::string userName;
    std::string abbreviation;
    std::string initials;
    int userId = 0;
    std::string teamName;
    int teamId = 0;
    int number = 0;
    int rating = 0;
    std::string licence;
    int licenceLevel = 0;
    int licenceColor = 0;
    std::string club;
    std::string division;
    const CarModel* model = nullptr;
};

/** Draws drivers for `cars` slots with distinct names and numbers. */
std::vector<Driver> drawDrivers(int cars, Random random);

}  // namespace simulator
