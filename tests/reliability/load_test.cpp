// Loading and unloading, copies of the library, and processes that share a directory.

#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/plugin_host.h"

namespace {

constexpr double kRateHz = 1024000.0;

TEST(Load, AThousandTimesStartsAfreshAndGrowsNothing) {
#ifdef PELAGRIM_SANITIZED
  constexpr int kRounds = 50;  // the sanitizer watches memory itself
#else
  constexpr int kRounds = 1000;
#endif
  const Samples samples = band(2, {100});
  const auto growth = [](auto&& round) {
    for (int i = 0; i < 10; ++i) round();  // fills the caches of the C library
    const auto heap_before = static_cast<double>(heapBytes());
    const size_t files_before = openFiles();
    for (int i = 0; i < kRounds; ++i) round();
    EXPECT_EQ(openFiles(), files_before);
    return (static_cast<double>(heapBytes()) - heap_before) / kRounds;
  };
  // setenv keeps every value that it was ever given; that growth is the host's.
  const double setenv_bytes = growth([] {
    const TemporaryDir dir;
    setenv("ORVANE_SURVEY_DIR", dir.path().c_str(), 1);
  });
  const double bytes = growth([&] {
    PluginHost host;
    ASSERT_EQ(host.rows()[0][4], "0") << "not unloaded";
    host.create(kRateHz, 145e6);
    host.processUntil(1'020'000, samples);
    host.iq->destroy(host.handle);
    ASSERT_EQ(host.rows().size(), 2U);
  });
  EXPECT_LT(bytes, setenv_bytes + 16) << "a block of one byte takes 32";
}

TEST(Load, OfTwoCopiesMakesTwoSurveys) {
  TemporaryDir dir;
  const std::string copy = dir.text() + "/copy.so";
  std::filesystem::copy_file(PELAGRIM_PLUGIN_PATH, copy);
  PluginHost first;
  PluginHost second(copy.c_str());
  EXPECT_NE(first.panel->create(), second.panel->create());
  second.create(kRateHz, 145e6);
  second.processUntil(1'020'000, band(1, {100}));
  EXPECT_EQ(second.rows().size(), 2U);
  EXPECT_EQ(first.rows().size(), 1U);
  EXPECT_EQ(first.rows()[0][4], "0");
  EXPECT_EQ(first.clock_readings, 0);
  setenv("ORVANE_SURVEY_DIR", dir.text().c_str(), 1);
  second.create(kRateHz, 145e6);
  EXPECT_TRUE(dir.has("survey.cfg")) << "the directory is chosen at each create";
}

TEST(TwoProcesses, OnOneDirectoryLeaveAReadableFile) {
  PluginHost host;
  const auto survey = [&](const std::vector<int>& tones) {
    const pid_t child = fork();
    if (child != 0) return child;
    host.create(kRateHz, 145e6);
    const Samples samples = band(2, tones);
    for (int i = 0; i < 500; ++i) host.processUntil(host.now_ms + 20'000, samples);
    _exit(0);
  };
  std::vector<int> many;
  for (int bin = -400; bin < 400; bin += 25) many.push_back(bin);
  const pid_t children[] = {survey({100}), survey(many)};
  for (int i = 0; i < 200; ++i) {  // a third process reads all the time
    host.create(kRateHz, 145e6);
    host.lines();
    EXPECT_LE(host.rows(256).size(), 200U);
  }
  for (const pid_t child : children) {
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  host.create(kRateHz, 145e6);
  EXPECT_GE(host.rows(256).size(), 2U) << "nothing can be resumed";
  host.processUntil(host.now_ms + 20'000, band(2, {100}));
  const std::string file = host.dir.read("survey.csv");
  EXPECT_EQ(file.substr(0, 21), "# survey.csv format 2");
  EXPECT_NE(file.find("\n145100000,"), std::string::npos);
}

}  // namespace
