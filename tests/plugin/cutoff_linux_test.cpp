#include "tests/plugin/plugintest.h"

#include <string>

using namespace Qt::StringLiterals;

// On other platforms a block keeps its size while it is open.

TEST_F(ConnectedPluginTest, DisconnectsWhenTheBlockWasTruncated) {
    constexpr int kToleratedMisses = 100;
    const std::string size = std::to_string(simulator.block.bytes().size());
    simulator.publisher.command("truncate 0");
    for (int i = 0; i < kToleratedMisses; ++i) {
        plugin->tick();
    }
    EXPECT_EQ(host.heard(), QStringList());
    plugin->tick();
    EXPECT_EQ(host.heard(),
              QStringList{u"Message [iRacing plugin] Sim is down (0)"_s} + disconnecting);
    EXPECT_EQ(OpenObjects::now().simulatorMaps, 0);
    // The publisher itself would crash when it ends without a block.
    simulator.publisher.command("truncate " + size);
}
