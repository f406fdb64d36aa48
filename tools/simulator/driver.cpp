#include "tools/simulator/driver.h"

#include "tools/simulator/text.h"

#include <array>

namespace simulator {

namespace {

constexpr std::array<CarModel, 4> kModels = {{
    {181, 4011, "kestrelgt", "Kestrel GT Evo", "Kestrel GT", "GT", 0xffda59, 0.995, 1.00},
    {182, 4011, "ardenv8gt", "Arden V8 GT", "Arden GT", "GT", 0xffda59, 0.990, 1.01},
    {207, 4026, "nordwindtc", "Nordwind TC", "Nordwind TC", "Touring", 0x33ceff, 0.945, 1.06},
    {209, 4026, "mistraltc", "Mistral Touring", "Mistral TC", "Touring", 0x33ceff, 0.940, 1.07},
}};

// Some contain letters beyond ASCII, in Latin-1 like the whole text.
constexpr std::array<const char*, 32> kFirstNames = {"Anna",
                                                     "Bj\xF6rn",
                                                     "Carlos",
                                                     "Dana",
                                                     "Emil",
                                                     "Fran\xE7ois",
                                                     "Greta",
                                                     "Hugo",
                                                     "Ida",
                                                     "Jonas",
                                                     "Katja",
                                                     "Luca",
                                                     "Mar\xED"
                                                     "a",
                                                     "Nils",
                                                     "Olga",
                                                     "Pedro",
                                                     "Quentin",
                                                     "Rosa",
                                                     "S\xF8ren",
                                                     "Tara",
                                                     "Ugo",
                                                     "Vera",
                                                     "Walter",
                                                     "Xenia",
                                                     "Yuki",
                                                     "Zo\xEB",
                                                     "Andr\xE9",
                                                     "Beth",
                                                     "Cyril",
                                                     "Dora",
                                                     "Erik",
                                                     "Frida"};

constexpr std::array<const char*, 32> kLastNames = {
    "Albrecht", "Bergman", "Castillo", "Dupont",   "Eriksen",   "Fontana", "G\xFCnther", "Hansen",
    "Ivanova",  "Jensen",  "Kowalski", "Lindberg", "M\xFCller", "Novak",   "Olsen",      "Pereira",
    "Quist",    "Rossi",   "Schmidt",  "Tanaka",   "Ullmann",   "Vogel",   "Weiss",      "Xavier",
    "Young",    "Zimmer",  "Abel",     "Brandt",   "Conti",     "Dahl",    "Egger",      "Frost"};

constexpr std::array<const char*, 12> kTeams = {
    "Blue Harbour Racing", "Team Nordlicht",   "Copper Hill",          "Oak & Iron Motorsport",
    "Redline Collective",  "Valley Racers",    "Silver Fox Racing",    "Team Kaltwasser",
    "Granite Motorsport",  "Lakeside Drivers", "Northern Apex Racing", "Third Gear Club"};

struct Licence {
    const char* letter;
    int level;
    int color;
};
constexpr std::array<Licence, 5> kLicences = {{{"D", 8, 0xfc8a27},
                                               {"C", 11, 0xfeec04},
                                               {"B", 15, 0x00c702},
                                               {"A", 19, 0x0153db},
                                               {"R", 3, 0xfc0706}}};

constexpr std::array<const char*, 8> kClubs = {"Alpine",  "Baltic",    "Celtic", "Danube",
                                               "Iberian", "Low Lands", "Nordic", "Rhine"};

template <typename List>
const auto& pick(const List& list, Random& random) {
    return list[static_cast<std::size_t>(random.below(static_cast<int>(list.size())))];
}

Driver drawDriver(int slot, Random random) {
    Driver driver;
    // The last names shift after every 32 slots, so that all pairs differ.
    const auto first = static_cast<std::size_t>(slot) % kFirstNames.size();
    const auto last = (first * 7 + static_cast<std::size_t>(slot) / kFirstNames.size() * 5 + 3) %
                      kLastNames.size();
    const std::string firstName = kFirstNames[first];
    const std::string lastName = kLastNames[last];
    driver.userName = firstName + " " + lastName;
    driver.abbreviation = lastName + ", " + firstName.substr(0, 1);
    driver.initials = firstName.substr(0, 1) + lastName.substr(0, 1);
    driver.userId = 100000 + slot * 1000 + random.below(1000);
    driver.teamName = pick(kTeams, random);
    driver.teamId = -driver.userId;
    driver.number = 2 + slot * 3 + random.below(3);
    driver.rating = random.whole(900, 6800);
    const Licence& licence = pick(kLicences, random);
    driver.licenceLevel = licence.level;
    driver.licenceColor = licence.color;
    driver.licence = std::string(licence.letter) + " " + fixedText(random.between(1.0, 4.99), 2);
    driver.club = pick(kClubs, random);
    driver.division = "Division " + std::to_string(random.whole(1, 10));
    driver.model = &pick(kModels, random);
    return driver;
}

}  // namespace

std::vector<Driver> drawDrivers(int cars, Random random) {
    std::vector<Driver> drivers;
    drivers.reserve(static_cast<std::size_t>(cars));
    for (int slot = 0; slot < cars; ++slot) {
        drivers.push_back(drawDriver(slot, random.stream(static_cast<std::uint64_t>(slot))));
    }
    return drivers;
}

}  // namespace simulator
