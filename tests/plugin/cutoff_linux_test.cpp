#include "tests/plugin/plugintest.h"

#include <string>

using namespace Qt::StringLiterals;

// Elsewhere a block keeps its size for as long as somebody has it open.

TEST_F(ConnectedPluginTest, EndsInOrderWhenTheBlockWasCutOff) {
    constexpr int toleratedMisses = 100;
    const std::string size = std::to_string(simulator.block.bytes().size());
    simulator.publisher.command("truncate 0");
    for (int i = 0; i < toleratedMisses; ++i) {
        plugin->tick();
    }
    EXPECT_EQ(host.heard(), QStringList());
    plugin->tick();
    EXPECT_EQ(host.heard(),
              QStringList{u"Message [iRacing plugin] Sim is down (0)"_s} + disconnecting);
    EXPECT_EQ(OpenObjects::now().simulatorMaps, 0);
    // The publisher itself would fall over a missing block when it ends.
    simulator.publisher.command("truncate " + size);
}
