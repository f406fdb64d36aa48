#include "tools/simulator/variabletable.h"

#include <array>

namespace simulator {

namespace {

struct WheelName {
    WheelIndex index;
    const char* prefix;
    const char* text;
};
constexpr std::array<WheelName, kWheels> kWheelNames = {{{kLeftFront, "LF", "left front"},
                                                         {kRightFront, "RF", "right front"},
                                                         {kLeftRear, "LR", "left rear"},
                                                         {kRightRear, "RR", "right rear"}}};

struct WheelRow {
    const char* suffix;  // after the corner's letters
    const char* unit;
    const char* description;  // before the corner's text
    double (*value)(const Wheel&);
};

constexpr std::array<WheelRow, 21> kWheelRows = {{
    {"SurfaceTempInner", "C", "Tyre surface temperature, inner edge,",
     [](const Wheel& w) { return w.surface[0]; }},
    {"SurfaceTempMiddle", "C", "Tyre surface temperature, middle,",
     [](const Wheel& w) { return w.surface[1]; }},
    {"SurfaceTempOuter", "C", "Tyre surface temperature, outer edge,",
     [](const Wheel& w) { return w.surface[2]; }},
    {"CarcassTempInner", "C", "Tyre carcass temperature, inner edge,",
     [](const Wheel& w) { return w.carcass[0]; }},
    {"CarcassTempMiddle", "C", "Tyre carcass temperature, middle,",
     [](const Wheel& w) { return w.carcass[1]; }},
    {"CarcassTempOuter", "C", "Tyre carcass temperature, outer edge,",
     [](const Wheel& w) { return w.carcass[2]; }},
    {"TreadInner", "%", "Tread left, inner edge,", [](const Wheel& w) { return w.tread[0]; }},
    {"TreadMiddle", "%", "Tread left, middle,", [](const Wheel& w) { return w.tread[1]; }},
    {"TreadOuter", "%", "Tread left, outer edge,", [](const Wheel& w) { return w.tread[2]; }},
    {"Pressure", "kPa", "Tyre pressure,", [](const Wheel& w) { return w.pressure; }},
    {"ColdPressure", "kPa", "Tyre pressure when cold,",
     [](const Wheel& w) { return w.coldPressure; }},
    {"TreadSpeed", "m/s", "Speed of the tread,", [](const Wheel& w) { return w.speed; }},
    {"BrakeTemp", "C", "Brake disc temperature,",
     [](const Wheel& w) { return w.brakeTemperature; }},
    {"BrakePressure", "bar", "Brake line pressure,", [](const Wheel& w) { return w.linePressure; }},
    {"ShockDeflection", "m", "Shock deflection,", [](const Wheel& w) { return w.deflection; }},
    {"ShockVelocity", "m/s", "Shock velocity,", [](const Wheel& w) { return w.deflectionSpeed; }},
    {"RideHeight", "m", "Ride height,", [](const Wheel& w) { return w.rideHeight; }},
    {"Load", "N", "Vertical load,", [](const Wheel& w) { return w.load; }},
    {"SlipRatio", "", "Slip along the wheel,", [](const Wheel& w) { return w.slipRatio; }},
    {"SlipAngle", "rad", "Slip across the wheel,", [](const Wheel& w) { return w.slipAngle; }},
    {"TyreOdometer", "m", "Distance driven on this tyre,", [](const Wheel& w) { return w.meters; }},
}};

struct SubRow {
    const char* name;
    const char* unit;
    const char* description;
    const SubSamples& (*samples)(const CarSystems&);
};

constexpr std::array<SubRow, 5> kSubRows = {{
    {"SideAccelSamples", "m/s^2", "Acceleration across the car within the tick",
     [](const CarSystems& s) -> const SubSamples& { return s.sideAccelerations(); }},
    {"LongAccelSamples", "m/s^2", "Acceleration along the car within the tick",
     [](const CarSystems& s) -> const SubSamples& { return s.forwardAccelerations(); }},
    {"VertAccelSamples", "m/s^2", "Vertical acceleration within the tick",
     [](const CarSystems& s) -> const SubSamples& { return s.verticalAccelerations(); }},
    {"YawRateSamples", "rad/s", "Turn rate within the tick",
     [](const CarSystems& s) -> const SubSamples& { return s.yawRates(); }},
    {"SteeringTorqueSamples", "N*m", "Steering torque within the tick",
     [](const CarSystems& s) -> const SubSamples& { return s.steeringTorques(); }},
}};

void addWheelRow(std::vector<Variable>& variables, const WheelName& corner, const WheelRow& row) {
    variables.push_back(
        {.name = std::string(corner.prefix) + row.suffix,
         .type = irsdk_float,
         .count = 1,
         .unit = row.unit,
         .description = std::string(row.description) + " " + corner.text,
         .value = [index = corner.index, value = row.value](const Scene& scene, int) {
             return value(scene.world.ownSystems().wheel(index));
         }});
}

void addSuspensionSamples(std::vector<Variable>& variables, const WheelName& corner) {
    const auto add = [&](const char* suffix, const char* unit, const char* description,
                         SubSamples Wheel::*samples) {
        variables.push_back(
            {.name = std::string(corner.prefix) + suffix,
             .type = irsdk_float,
             .count = kSubSamples,
             .unit = unit,
             .description = std::string(description) + " within the tick, " + corner.text,
             .countAsTime = true,
             .value = [index = corner.index, samples](const Scene& scene, int sample) {
                 const Wheel& wheel = scene.world.ownSystems().wheel(index);
                 return (wheel.*samples)[static_cast<std::size_t>(sample)];
             }});
    };
    add("ShockDeflectionSamples", "m", "Shock deflection", &Wheel::deflections);
    add("ShockVelocitySamples", "m/s", "Shock velocity", &Wheel::deflectionSpeeds);
}

}  // namespace

void addWheelVariables(std::vector<Variable>& variables) {
    for (const WheelName& corner : kWheelNames) {
        for (const WheelRow& row : kWheelRows) {
            addWheelRow(variables, corner, row);
        }
        addSuspensionSamples(variables, corner);
    }
    for (const SubRow& row : kSubRows) {
        variables.push_back({.name = row.name,
                             .type = irsdk_float,
                             .count = kSubSamples,
                             .unit = row.unit,
                             .description = row.description,
                             .countAsTime = true,
                             .value = [samples = row.samples](const Scene& scene, int sample) {
                                 return samples(
                                     scene.world.ownSystems())[static_cast<std::size_t>(sample)];
                             }});
    }
}

}  // namespace simulator
