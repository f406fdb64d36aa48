#include "benchmarks/obvious/texttree.h"
#include "reader/irtelemetryreader.h"
#include "sdk/lap.h"
#include "tests/fuzz/fuzztarget.h"
#include "tests/fuzz/quietqt.h"
#include "yaml/tyamltree.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

// The input is a session text, read twice into one tree and into a reader.

namespace {

// The first and the last car, and those of the seeds; all 64 would take most of a run's time.
constexpr std::array kLookedAt{0, 1, 2, 63};

/** Walks both trees in parallel, without recursion: a text can nest deeper than the stack. */
template <typename Tree>
bool areSameTrees(const TStringTree& left, const Tree& right) {
    std::vector<std::pair<const TStringTree*, const Tree*>> pairs{{&left, &right}};
    while (!pairs.empty()) {
        const auto [a, b] = pairs.back();
        pairs.pop_back();
        const QStringList values = a->valueKeys();
        const QStringList subs = a->subTreesKeys();
        if (values != b->valueKeys() || subs != b->subTreesKeys()) {
            return false;
        }
        for (const QString& key : values) {
            if (a->value(key) != b->value(key)) {
                return false;
            }
        }
        for (const QString& key : subs) {
            pairs.emplace_back(a->sub(key), b->sub(key));
        }
    }
    return true;
}

void readIntoTrees(const char* text) {
    TYamlTree once;
    TYamlTree twice;
    obvious::TextTree plain;
    once.setYaml(text);
    plain.setYaml(text);
    fuzz::require(areSameTrees(once, plain), "a tree is what the rules say, line by line");
    twice.setYaml(text);
    twice.setYaml(text);
    fuzz::require(areSameTrees<TStringTree>(once, twice),
                  "the same text again leaves the tree as it is");
}

void readIntoReader(const char* text) {
    iRTelemetryReader reader;
    reader.setYaml(text);
    static_cast<void>(reader.updateCarList());
    reader.setYaml(text);
    fuzz::require(!reader.updateCarList(), "the same text again changes no car");
    for (const int car : kLookedAt) {
        TLM::SDK::Lap lap;
        reader.getSessionInfo(car, &lap);
        fuzz::require(lap.driverName() == reader.driverName(car), "a lap has its driver's name");
    }
}

}  // namespace

int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    fuzz::silenceQt();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    readIntoTrees(text.c_str());
    readIntoReader(text.c_str());
    return 0;
}
