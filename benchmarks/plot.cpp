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

constexpr double width = 960.0;
constexpr double height = 440.0;
constexpr double left = 80.0;
constexpr double right = 190.0;
constexpr double top = 40.0;
constexpr double bottom = 50.0;
constexpr double shortest = 1e-5;  // seconds at the lower edge
constexpr double longest = 1e-1;   // and at the upper one

// Ticks per point of a line.
constexpr std::size_t stretch = 45;

struct Line {
    const char* name;
    double part;
    const char* dashes;
};

constexpr std::array lines{Line{"worst", 1.0, ""}, Line{"p99", 0.99, "6 3"},
                           Line{"p50", 0.5, "1 3"}};
constexpr std::array colours{"#0b62a4", "#c0392b", "#555555"};

double xOf(double tick, double ticks) {
    return left + (width - left - right) * tick / ticks;
}

double yOf(double seconds) {
    const double part = std::log10(seconds / shortest) / std::log10(longest / shortest);
    return height - bottom - (height - top - bottom) * std::clamp(part, 0.0, 1.0);
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
        svg << rule(left, y, width - right, y) << text(left - 8.0, y + 4.0, mark.text, "end");
    }
    for (int lap = 0; lap * ticksPerLap <= static_cast<int>(ticks); ++lap) {
        const double x = xOf(lap * ticksPerLap, ticks);
        svg << rule(x, top, x, height - bottom)
            << text(x, height - bottom + 18.0, std::to_string(lap), "middle");
    }
    svg << text(left, top - 16.0, "Time of a tick over a race of 64 cars")
        << text((left + width - right) / 2.0, height - 10.0, "laps of the fastest car", "middle");
}

void writeLine(std::ostream& svg, const PlottedTicks& race, const Line& line, const char* colour) {
    svg << "<polyline fill=\"none\" stroke=\"" << colour << "\" stroke-width=\"1.3\""
        << " stroke-dasharray=\"" << line.dashes << "\" points=\"";
    const auto ticks = static_cast<double>(race.seconds.size());
    for (std::size_t first = 0; first < race.seconds.size(); first += stretch) {
        const std::size_t end = std::min(first + stretch, race.seconds.size());
        const std::vector<double> part(race.seconds.begin() + static_cast<std::ptrdiff_t>(first),
                                       race.seconds.begin() + static_cast<std::ptrdiff_t>(end));
        svg << number(xOf(static_cast<double>(first + end) / 2.0, ticks)) << ','
            << number(yOf(percentile(part, line.part))) << ' ';
    }
    svg << "\"/>\n";
}

void writeRace(std::ostream& svg, const PlottedTicks& race, const char* colour, double labelY) {
    constexpr double lineHeight = 18.0;
    double y = labelY;
    svg << text(width - right + 12.0, y, race.name, "start", colour);
    for (const Line& line : lines) {
        writeLine(svg, race, line, colour);
        y += lineHeight;
        svg << "<line x1=\"" << number(width - right + 12.0) << "\" y1=\"" << number(y - 4.0)
            << "\" x2=\"" << number(width - right + 42.0) << "\" y2=\"" << number(y - 4.0)
            << "\" stroke=\"" << colour << "\" stroke-dasharray=\"" << line.dashes << "\"/>\n"
            << text(width - right + 50.0, y, line.name);
    }
}

}  // namespace

void writePlot(const std::string& file, int ticksPerLap, const std::vector<PlottedTicks>& races) {
    std::ofstream svg(file);
    svg << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\"" << height
        << "\" font-family=\"sans-serif\" font-size=\"12\">\n"
        << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n";
    writeAxes(svg, ticksPerLap, static_cast<double>(races.front().seconds.size()));
    constexpr double legendHeight = 90.0;
    for (std::size_t i = 0; i < races.size(); ++i) {
        writeRace(svg, races[i], colours[i % colours.size()],
                  top + 12.0 + legendHeight * static_cast<double>(i));
    }
    svg << "</svg>\n";
    if (!svg) {
        std::cerr << "rataip-bench: cannot write " << file << '\n';
    }
}

}  // namespace bench
