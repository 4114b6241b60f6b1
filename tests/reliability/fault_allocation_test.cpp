// Memory runs out: the n-th allocation inside the plug-in fails, for every n.

#include <cerrno>

#include "tests/reliability/fault_scenario.h"

namespace {

TEST(OutOfMemory, IsSurvivedWhereverItStrikes) {
#ifdef PELAGRIM_SANITIZED
  GTEST_SKIP() << "a sanitizer has its own allocator, which cannot be made to fail";
#endif
  FaultScenario scenario;
  std::string expected;
  long kept_blocks = 0;
  // What a session leaves in memory after the unload: only the values that setenv keeps.
  const auto play = [&](const faults::Plan& plan) {
    const long blocks_before = faults::liveBlocks();
    bool struck = false;
    {
      PluginHost host;
      FaultScenario::fill(host);
      faults::set(plan);
      scenario.play(host);
      struck = faults::callsSeen() >= plan.first;
      faults::set({});
      FaultScenario::expectSane(host);
      if (plan.first > 0) {
        // The same library goes on as if nothing had happened.
        FaultScenario::fill(host);
        scenario.play(host);
        EXPECT_EQ(FaultScenario::outcome(host), expected);
      } else {
        expected = FaultScenario::outcome(host);
      }
    }
    kept_blocks = faults::liveBlocks() - blocks_before;
    return struck;
  };
  play({});
  for (int i = 0; i < 2; ++i) play({.first = 1'000'000'000});  // strikes nothing
  const long setenv_blocks = kept_blocks;

  for (const long count : {1L, 1'000'000L}) {  // one failure; no memory from there on
    long n = 1;
    while (play({.call = faults::Call::kAllocate, .first = n, .count = count})) {
      ASSERT_EQ(kept_blocks, setenv_blocks) << "memory leaked";
      ASSERT_FALSE(HasFailure()) << "allocation " << n << ", " << count << " fail";
      ++n;
    }
    EXPECT_GT(n, 100) << "the session must need memory";
    std::printf("%ld allocations failed in turn, %ld at a time\n", n - 1, count);
  }
}

TEST(OutOfMemory, CostsADwellOrTheTimeUntilTheNextCreate) {
#ifdef PELAGRIM_SANITIZED
  GTEST_SKIP() << "as above";
#endif
  PluginHost host;
  const faults::Plan no_memory = {.call = faults::Call::kAllocate, .first = 1, .count = 1'000'000};
  const Samples station = band(1, {100});
  const Samples visitor = band(1, {-200});
  host.tuned_hz.reserve(8);  // the host's own memory does not fail
  FaultScenario::fill(host);
  host.create(1024000.0, 144.5e6);
  const auto before = host.rows();
  host.tune_answer = -1;
  host.now_ms += 20'000;
  faults::during(no_memory, [&] { host.process(visitor); });
  host.processUntil(host.now_ms + 19'999, station);
  EXPECT_EQ(host.rows(), before) << "counted in part, or the next dwell is not a whole one";
  host.processUntil(host.now_ms + 1, station);
  EXPECT_EQ(host.rows().size(), 5U) << "summary, refusal, two channels of the file, the station";

  const std::string file = host.dir.read("survey.csv");
  const size_t requests = host.tuned_hz.size();
  faults::during(no_memory, [&] { host.create(1024000.0, 144.5e6); });
  host.iq->retune(host.handle, 144.5e6);  // gives a dwell its start
  host.processUntil(host.now_ms + 20'000, visitor);
  host.iq->destroy(host.handle);
  EXPECT_EQ(host.tuned_hz.size(), requests) << "a survey that could not start sweeps";
  EXPECT_EQ(host.dir.read("survey.csv"), file);
}

/// Settings that cannot be read keep their values, labels are none, the survey starts empty; but if
/// memory runs out at the results, nothing is gathered that could replace them.
TEST(FileCalls, ThatFailToReadCostThatFileOnly) {
  struct Case {
    faults::Call call;
    int error;
    long first, count;
    const char* dwell_seconds;  // 7 where the new settings were read
    const char* labels;
    size_t rows;  // in the end: summary, two channels of the file, the station; 0: not gathered
  };
  using faults::Call;
  const Case cases[] = {{Call::kOpenToRead, ENOMEM, 1, 1, "5", "1 labels", 4},
                        {Call::kRead, ENOMEM, 1, 1, "5", "1 labels", 4},
                        {Call::kOpenToRead, ENOMEM, 2, 1, "7", "0 labels", 4},
                        {Call::kRead, ENOMEM, 3, 1, "7", "0 labels", 4},
                        {Call::kOpenToRead, ENOMEM, 3, 1, "7", "1 labels", 0},
                        {Call::kRead, ENOMEM, 5, 1, "7", "1 labels", 0},
                        {Call::kOpenToRead, EIO, 1, 1'000, "5", "0 labels", 2},
                        {Call::kRead, EIO, 1, 1'000, "5", "0 labels", 2}};
  for (const Case& test : cases) {
    SCOPED_TRACE(testing::Message() << "call " << static_cast<int>(test.call) << ", " << test.error
                                    << ", the " << test.first << "-th");
    PluginHost host;
    FaultScenario::fill(host);
    host.dir.write("survey-labels.txt", "144 146 mine\n");
    host.dir.write("survey.cfg", "dwell_seconds = 5\n");
    host.create(1024000.0, 144.5e6);
    host.dir.write("survey.cfg", "dwell_seconds = 7\n");
    faults::during(
        {.call = test.call, .first = test.first, .count = test.count, .error = test.error},
        [&] { host.create(1024000.0, 144.5e6); });
    const std::string plan = host.lastLine();
    EXPECT_EQ(host.rows()[0][6], test.labels);
    const std::string file = host.dir.read("survey.csv");
    host.processUntil(host.now_ms + 7'000, band(1, {100}));
    host.iq->destroy(host.handle);
    EXPECT_EQ(host.dir.read("survey.csv") != file, test.rows > 0);
    if (test.rows == 0) continue;
    EXPECT_NE(plan.find(std::string(test.dwell_seconds) + " s each"), std::string::npos) << plan;
    EXPECT_EQ(host.rows().size(), test.rows);
  }
}

}  // namespace
