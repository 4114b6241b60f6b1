// Files that cannot be opened, read, written or closed.

#include <sys/stat.h>

#include <cerrno>

#include "tests/reliability/fault_scenario.h"

namespace {

constexpr char kUsersSettings[] = "start = 144000000\nstop = 146000000\n# mine\n";
constexpr char kUsersLabels[] = "144 146 My band\n";
const char* const kFiles[] = {"survey.cfg", "survey-labels.txt", "survey.csv"};

TEST(FileCalls, FailWithoutHarmWhicheverItIs) {
  using faults::Call;
#ifdef PELAGRIM_SANITIZED
  constexpr long kReadStep = 25;  // every call is slow, and reading makes many
#else
  constexpr long kReadStep = 1;
#endif
  struct Case {
    Call call;
    int error;
    bool may_shrink;  // the disk did not take, or give, what survey.csv held
  };
  const Case cases[] = {{Call::kOpenToRead, EACCES, true},   {Call::kOpenToRead, EMFILE, true},
                        {Call::kOpenToRead, ENOMEM, false},  {Call::kOpenToWrite, EROFS, false},
                        {Call::kOpenToWrite, ENOSPC, false}, {Call::kRead, EIO, true},
                        {Call::kRead, ENOMEM, false},        {Call::kWrite, ENOSPC, true},
                        {Call::kClose, EIO, false}};
  for (const bool users_files : {false, true}) {
    for (const Case& test : cases) {
      for (const long count : {1L, 1'000L}) {
        bool struck = true;
        for (long n = 1; struck; n += test.call == Call::kRead ? kReadStep : 1) {
          SCOPED_TRACE(testing::Message() << "call " << static_cast<int>(test.call) << ", error "
                                          << test.error << ", the " << n << "-th");
          PluginHost host;
          FaultScenario scenario;
          FaultScenario::fill(host);
          if (users_files) {
            host.dir.write("survey.cfg", kUsersSettings);
            host.dir.write("survey-labels.txt", kUsersLabels);
          }
          scenario.may_shrink = test.may_shrink;
          faults::set({.call = test.call, .first = n, .count = count, .error = test.error});
          scenario.play(host);
          struck = faults::callsSeen() >= n;
          faults::set({});
          FaultScenario::expectSane(host);
          if (test.error != ENOMEM) {  // a create may fail only when memory runs out
            EXPECT_TRUE(FaultScenario::remembersItsLastDwell(host));
          }
          if (users_files) {
            EXPECT_EQ(host.dir.read("survey.cfg"), kUsersSettings);
            EXPECT_EQ(host.dir.read("survey-labels.txt"), kUsersLabels);
          }
          // The next dwell that can be written saves everything in memory.
          host.create(1024000.0, 145e6);
          host.processUntil(2'000'000, band(1, {100}));
          const auto remembered = host.rows();
          host.create(1024000.0, 145e6);
          const auto resumed = host.rows();
          ASSERT_EQ(resumed.size(), remembered.size());
          EXPECT_TRUE(std::equal(resumed.begin() + 1, resumed.end(), remembered.begin() + 1));
          ASSERT_FALSE(HasFailure());
        }
      }
    }
  }
}

TEST(FileCalls, WriteTheWholeTextAtOnce) {
  PluginHost host;
  FaultScenario scenario;
  scenario.play(host);
  EXPECT_EQ(faults::bytesHeldBack(), 0U) << "the file is short for as long as the rest waits";
}

TEST(FilesInPlace, NeedNotBeFiles) {
  struct Case {
    const char* name;
    void (*put)(const std::string& path);
  };
  const Case cases[] = {
      {"directory", [](const std::string& path) { mkdir(path.c_str(), 0755); }},
      {"symlink loop",
       [](const std::string& path) { std::filesystem::create_symlink(path, path); }},
      {"full device",
       [](const std::string& path) { std::filesystem::create_symlink("/dev/full", path); }},
      {"read error",
       [](const std::string& path) { std::filesystem::create_symlink("/proc/self/mem", path); }},
      {"pipe", [](const std::string& path) { mkfifo(path.c_str(), 0644); }},
      {"under a file",
       [](const std::string& path) { std::filesystem::create_symlink("/dev/null/x", path); }},
  };
  for (const Case& test : cases) {
    for (const char* const file : kFiles) {
      SCOPED_TRACE(testing::Message() << test.name << " as " << file);
      PluginHost host;
      const std::filesystem::path path = host.dir.path() / file;
      test.put(path.string());
      const auto kind = std::filesystem::symlink_status(path).type();
      FaultScenario scenario;
      scenario.may_shrink = true;
      scenario.play(host);
      EXPECT_EQ(std::filesystem::symlink_status(path).type(), kind) << "was replaced";
      FaultScenario::expectSane(host);
      // The other two files work, and memory holds what was found since the last create.
      for (const char* const other : kFiles) {
        if (other != file) {
          EXPECT_GT(host.dir.read(other).size(), 0U) << other;
        }
      }
      EXPECT_TRUE(FaultScenario::remembersItsLastDwell(host));
    }
  }
}

}  // namespace
