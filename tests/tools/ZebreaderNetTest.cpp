// zebreader with network ports: a scan through ser2net named by --device, and the port map
// keeping an address as it was given.
#include "tools/ToolFixture.h"

#include "sim/Ser2net.h"
#include "sim/Simulators.h"

namespace zebreader81::test {
namespace {

using nlohmann::json;

TEST_F(ZebreaderTool, ScanReadsThroughANetworkSerialServerNamedByDevice)
{
    if (sim::Ser2net::program().empty())
        GTEST_SKIP() << "ser2net is not installed (scripts/setup installs it)";
    auto scanner = sim::makeSimulator(2, sim::sampleSheets(2));
    sim::Ser2net server(scanner->path(), sim::Ser2net::Mode::Raw);
    ASSERT_TRUE(server.running()) << server.log();
    const auto r = run({"scan", "--model", "2", "--device", server.url(), "--sheets", "1", "--sleep", "1",
                        "--timeout", "2"});
    ASSERT_EQ(r.status, 0) << r.err << r.out;
    const auto lines = jsonLines(r.out);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back()["summary"],
              json::parse(R"({"result":true,"sheets":1,"read":1,"cancelScan":true})"));
}

TEST_F(ZebreaderTool, PortsMapKeepsANetworkAddressAsGiven)
{
    auto r = run({"ports", "map", "3", "rfc2217://scanbox:2003"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "COM3 -> rfc2217://scanbox:2003\n");
    r = run({"ports", "--json"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(json::parse(r.out)["ports"][2],
              json::parse(R"({"port":3,"path":"rfc2217://scanbox:2003","from":"stored","network":true})"));
    r = run({"ports"});
    EXPECT_NE(r.out.find("COM3  rfc2217://scanbox:2003  (stored, network)"), std::string::npos) << r.out;
}

} // namespace
} // namespace zebreader81::test
