#include "sdk/plugininterfacelive.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstddef>

using TLM::SDK::PluginInterfaceLive;

namespace {

// By the Itanium ABI, a pointer to a virtual member function is its offset in the virtual table
// plus one, and a second word that adjusts the object's address.
template <typename Member>
std::ptrdiff_t slotOf(Member member) {
    const auto words = std::bit_cast<std::array<std::ptrdiff_t, 2>>(member);
    return (words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

}  // namespace

// Hosts call by slot, so another order is another interface. The destructor comes first and takes
// two slots.
TEST(PluginInterfaceLive, HasItsVirtualFunctionsInTheOrderOfTheInterface) {
    EXPECT_EQ(slotOf(&PluginInterfaceLive::initialize), 2);
    EXPECT_EQ(slotOf(&PluginInterfaceLive::saveSettings), 3);
    EXPECT_EQ(slotOf(&PluginInterfaceLive::loadSettings), 4);
    EXPECT_EQ(slotOf(&PluginInterfaceLive::sourceName), 5);
    EXPECT_EQ(slotOf(&PluginInterfaceLive::pluginName), 6);
    EXPECT_EQ(slotOf(&PluginInterfaceLive::pluginVersion), 7);
    EXPECT_EQ(slotOf(&PluginInterfaceLive::checkConnectionAvailability), 8);
    EXPECT_EQ(slotOf(&PluginInterfaceLive::connectToSource), 9);
    EXPECT_EQ(slotOf(&PluginInterfaceLive::disconnectFromSource), 10);
}
