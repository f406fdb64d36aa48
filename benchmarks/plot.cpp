#include "benchmarks/plot.h"

#include "benchmarks/contest.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>

namespace bench {

namespace {

constexpr double kWidth = 960.0;
constexpr double kHeight = 440.0;
constexpr double kLeft = 80.0;
constexpr double kRight = 190.0;
constexpr double kTop = 40.0;
constexpr double kBottom = 50.0;
constexpr double kShortest = 1e-5;  // seconds at the lower edge
constexpr double kLongest = 1e-1;   // and at the upper one

// Ticks per point of a line.
constexpr std::size_t kStretch = 45;

struct Line {
    const char* name;
    double part;
    const char* dashes;
};

constexpr std::array kLines{Line{"worst", 1.0, ""}, Line{"p99", 0.99, "6 3"},
                            Line{"p50", 0.5, "1 3"}};
constexpr std::array kColours{"#0b62a4", "#c0392b", "#555555"};

double xOf(double tick, double ticks) {
    return kLeft + (kWidth - kLeft - kRight) * tick / ticks;
}

double yOf(double seconds) {
    const double part = std::log10(seconds / kShortest) / std::log10(kLongest / kShortest);
    return kHeight - kBottom - (kHeight - kTop - kBottom) * std::clamp(part, 0.0, 1.0);
}

std::string number(double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f", value);
    return text.data();
}

std::string text(double x, double y, const std::string& content, const char* anchor = "start",
                 const char* colour = "#222222") {
    return "<text x=\"" + number(x) + "\" y=\"" + number(y) + "\" text-anchor=\"" + anchor +
           "\" fill=\"" + colour + "\">" + content + "</text>\n";
}

std::string rule(double x1, double y1, double x2, double y2) {
    return "<line x1=\"" + number(x1) + "\" y1=\"" + number(y1) + "\" x2=\"" + number(x2) +
           "\" y2=\"" + number(y2) + "\" stroke=\"#dddddd\"/>\n";
}

void writeAxes(std::ostream& svg, int ticksPerLap, double ticks) {
    struct Mark {
        double seconds;
        const char* text;
    };
    for (const Mark& mark : {Mark{1e-5, "10 us"}, Mark{1e-4, "100 us"}, Mark{1e-3, "1 ms"},
                             Mark{1e-2, "10 ms"}, Mark{1e-1, "100 ms"}}) {
        const double y = yOf(mark.seconds);
        svg << rule(kLeft, y, kWidth - kRight, y) << text(kLeft - 8.0, y + 4.0, mark.text, "end");
    }
    for (int lap = 0; lap * ticksPerLap <= static_cast<int>(ticks); ++lap) {
        const double x = xOf(lap * ticksPerLap, ticks);
        svg << rule(x, kTop, x, kHeight - kBottom)
            << text(x, kHeight - kBottom + 18.0, std::to_string(lap), "middle");
    }
    svg << text(kLeft, kTop - 16.0, "Time of a tick over a race of 64 cars")
        << text((kLeft + kWidth - kRight) / 2.0, kHeight - 10.0, "laps of the fastest car",
                "middle");
}

void writeLine(std::ostream& svg, const PlottedTicks& race, const Line& line, const char* colour) {
    svg << "<polyline fill=\"none\" stroke=\"" << colour << "\" stroke-width=\"1.3\""
        << " stroke-dasharray=\"" << line.dashes << "\" points=\"";
    const auto ticks = static_cast<double>(race.seconds.size());
    for (std::size_t first = 0; first < race.seconds.size(); first += kStretch) {
        const std::size_t end = std::min(first + kStretch, race.seconds.size());
        const std::vector<double> part(race.seconds.begin() + static_cast<std::ptrdiff_t>(first),
                                       race.seconds.begin() + static_cast<std::ptrdiff_t>(end));
        svg << number(xOf(static_cast<double>(first + end) / 2.0, ticks)) << ','
            << number(yOf(percentile(part, line.part))) << ' ';
    }
    svg << "\"/>\n";
}

void writeRace(std::ostream& svg, const PlottedTicks& race, const char* colour, double labelY) {
    constexpr double kLineHeight = 18.0;
    double y = labelY;
    svg << text(kWidth - kRight + 12.0, y, race.name, "start", colour);
    for (const Line& line : kLines) {
        writeLine(svg, race, line, colour);
        y += kLineHeight;
        svg << "<line x1=\"" << number(kWidth - kRight + 12.0) << "\" y1=\"" << number(y - 4.0)
            << "\" x2=\"" << number(kWidth - kRight + 42.0) << "\" y2=\"" << number(y - 4.0)
            << "\" stroke=\"" << colour << "\" stroke-dasharray=\"" << line.dashes << "\"/>\n"
            << text(kWidth - kRight + 50.0, y, line.name);
    }
}

}  // namespace

void writePlot(const std::string& file, int ticksPerLap, const std::vector<PlottedTicks>& races) {
    std::ofstream svg(file);
    svg << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << kWidth << "\" height=\""
        << kHeight << "\" font-family=\"sans-serif\" font-size=\"12\">\n"
        << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n";
    writeAxes(svg, ticksPerLap, static_cast<double>(races.front().seconds.size()));
    constexpr double kLegendHeight = 90.0;
    for (std::size_t i = 0; i < races.size(); ++i) {
        writeRace(svg, races[i], kColours[i % kColours.size()],
                  kTop + 12.0 + kLegendHeight * static_cast<double>(i));
    }
    svg << "</svg>\n";
    if (!svg) {
        std::cerr << "rataip-bench: cannot write " << file << '\n';
    }
}

}  // namespace bench
