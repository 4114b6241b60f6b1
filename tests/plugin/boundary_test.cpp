// The boundary itself: descriptor, handles, null arguments, the message log.

#include "tests/support/plugin_host.h"

namespace {

TEST(Descriptor, DescribesTheThreeCapabilities) {
  PluginHost host;
  for (const uint32_t other : {0U, 2U, 4U}) EXPECT_EQ(host.query(other), nullptr) << other;
  const WendlePluginDesc* desc = host.query(3);
  ASSERT_NE(desc, nullptr);
  EXPECT_EQ(desc, host.query(3));
  EXPECT_EQ(desc->struct_size, sizeof *desc);
  EXPECT_EQ(desc->abi_version, 3U);
  EXPECT_STREQ(desc->plugin_name, "Pelagrim");
  EXPECT_STREQ(desc->version, "0.1.1");
  EXPECT_STREQ(desc->author, "Orvane project");
  EXPECT_STREQ(desc->license, "MIT");
  EXPECT_EQ(desc->capability_mask, 50U);
  ASSERT_EQ(desc->capability_count, 3U);
  const uint32_t kinds[] = {kIqProcessor, kPanel, kHostClient};
  const uint32_t sizes[] = {64, 48, 16};
  for (size_t i = 0; i < 3; ++i) {
    const WendleCapability& capability = desc->capabilities[i];
    EXPECT_EQ(capability.kind, kinds[i]);
    EXPECT_EQ(capability.table_size, sizes[i]);
    EXPECT_EQ(*static_cast<const uint32_t*>(capability.table), sizes[i]);
  }
  EXPECT_EQ(host.iq->reserved, 0U);
  EXPECT_EQ(host.iq->rate_hz, 2400000.0);
  EXPECT_EQ(host.panel->title, desc->plugin_name);
}

TEST(EntryPoints, AnswerNullArgumentsWithNothing) {
  PluginHost host;
  host.create(1e6, 145e6);
  host.process(band(1, {}));
  const int readings = host.clock_readings;
  char text[4] = "abc";
  WendlePanelRow row;
  host.iq->process(nullptr, reinterpret_cast<const float*>(text), 0);
  host.iq->process(host.handle, nullptr, 100);
  host.iq->retune(nullptr, 1.0);
  host.iq->destroy(nullptr);
  EXPECT_EQ(host.iq->poll_text(nullptr, text, 4), 0);
  EXPECT_EQ(host.iq->poll_text(host.handle, nullptr, 4), 0);
  EXPECT_EQ(host.iq->poll_text(host.handle, text, 0), 0);
  EXPECT_EQ(host.panel->poll_rows(nullptr, &row, 1), 0U);
  EXPECT_EQ(host.panel->poll_rows(host.handle, nullptr, 1), 0U);
  EXPECT_EQ(host.panel->poll_rows(host.handle, &row, 0), 0U);
  EXPECT_STREQ(text, "abc");
  EXPECT_EQ(host.clock_readings, readings);
  EXPECT_FALSE(host.dir.has("survey.csv")) << "the dwell was evaluated";
  EXPECT_EQ(host.lines().size(), 2U);  // nothing was consumed: labels and plan
}

TEST(EntryPoints, ShareOneHandleAndAreHarmlessBeforeCreate) {
  PluginHost host;
  host.handle = host.panel->create();
  EXPECT_NE(host.handle, nullptr);
  host.iq->retune(host.handle, 145e6);  // gives the dwell a start
  host.processUntil(2'000'000, band(2, {100}));
  host.iq->destroy(host.handle);
  EXPECT_TRUE(host.lines().empty());
  EXPECT_TRUE(host.tuned_hz.empty());
  EXPECT_FALSE(host.dir.has("survey.csv"));
  EXPECT_EQ(
      host.rows(),
      (std::vector<Row>{{"Survey", "sweeping", "0", "slices", "0", "dwells done", "0 labels"}}));
  EXPECT_EQ(host.iq->create(1e6, 145e6), host.handle);
  EXPECT_EQ(host.iq->create(2e6, 100e6), host.handle);
}

TEST(EntryPoints, WorkWithoutAHostOrWithoutItsClock) {
  PluginHost host;
  for (const bool attached : {false, true}) {
    host.services.now_ms = nullptr;
    host.client->attach(attached ? &host.services : nullptr);
    host.create(1e6, 145e6);
    host.lines();
    host.process(band(3, {100}));
    EXPECT_TRUE(host.lines().empty()) << "a dwell ended without a clock";
    host.iq->destroy(host.handle);
    EXPECT_EQ(host.lastLine(), "survey: 145.000 MHz, 1 here, 1 known after 1 dwell");
    EXPECT_NE(host.dir.read("survey.csv").find(",0,0,SSB/CW?\n"), std::string::npos);
    std::filesystem::remove(host.dir.path() / "survey.csv");
  }
}

TEST(MessageLog, KeepsTheFirst32LinesInOrderAndCutsThemToTheBuffer) {
  PluginHost host;
  for (int i = 0; i < 17; ++i) host.create(1e6, 145e6);  // two lines each
  char text[12];
  std::memset(text, 'x', sizeof text);
  ASSERT_EQ(host.iq->poll_text(host.handle, text, 11), 1);
  EXPECT_STREQ(text, "survey: 24");
  EXPECT_EQ(text[11], 'x');
  ASSERT_EQ(host.iq->poll_text(host.handle, text, 1), 1);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(host.lines().size(), 30U);
  host.create(1e6, 145e6);  // there is room again
  EXPECT_EQ(host.lines(), (std::vector<std::string>{
                              "survey: 24 band labels loaded",
                              "survey: 144.000-146.000 MHz in 3 slices of 1.00 MHz, 20 s each"}));
}

}  // namespace
