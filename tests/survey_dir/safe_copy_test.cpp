#include "host/survey_dir/safe_copy.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "host/process/whole_file.h"
#include "tests/support/temporary_dir.h"

namespace pelagrim_host {
namespace {

const std::string kHeader =
    "# survey.csv format 2: each centre_hz is the middle of its signal's bins\n"
    "centre_hz,width_hz,min_width_hz,max_width_hz,peak_db,floor_db,hits,looks,first_unix_ms,"
    "last_unix_ms,guess\n";

std::string listOf(int channels) {
  std::string text = kHeader;
  for (int i = 0; i < channels; ++i) {
    text += std::to_string(144000000 + 5000 * i) + ",3000,3000,3000,1.0,-20.0,1,1,7,7,SSB/CW?\n";
  }
  return text;
}

class SafeCopyTest : public testing::Test {
 protected:
  void put(const std::string& text) { std::ofstream(results_, std::ios::binary) << text; }
  std::string there() { return readWholeFile(results_); }

  /// A run that writes the lists one after the other and then ends in order, or does not.
  void run(const std::vector<std::string>& lists, bool ends) {
    SafeCopy copy(dir_.path(), std::chrono::milliseconds(0),
                  [this](const std::string& line) { warnings_.push_back(line); });
    for (const std::string& list : lists) {
      put(list);
      copy.dwellWritten();
      waitFor([&] { return newestCopy(dir_.path())->results == list; });
    }
    if (ends) copy.end();
  }

  template <typename Condition>
  static void waitFor(const Condition& condition) {
    for (int i = 0; i < 1000 && !condition(); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_TRUE(condition());
  }

  TemporaryDir dir_;
  std::filesystem::path results_ = std::filesystem::path(dir_.path()) / "survey.csv";
  std::vector<std::string> warnings_;
};

TEST_F(SafeCopyTest, PutsBackOnlyWhatARunHasLeftCutShort) {
  const std::string whole = listOf(3);
  const struct {
    const char* what;
    bool ended;
    std::string found;  ///< by the next run
    std::string restored;
  } cases[] = {
      {"emptied by a kill", false, "", whole},
      {"cut in a row", false, whole.substr(0, whole.size() - 9), whole},
      {"cut between rows", false, listOf(2), whole},
      {"whole", false, whole, whole},
      {"another dwell was written", false, listOf(4), listOf(4)},
      {"emptied by a person", true, "", ""},
      {"cut by a person", true, listOf(2), listOf(2)},
  };
  for (const auto& [what, ended, found, restored] : cases) {
    SCOPED_TRACE(what);
    put("");
    run({listOf(1), whole}, ended);
    put(found);
    EXPECT_EQ(restoreResults(dir_.path()).has_value(), restored != found);
    EXPECT_EQ(there(), restored);
  }
  run({whole}, false);
  std::filesystem::remove(results_);
  EXPECT_FALSE(restoreResults(dir_.path()));
  EXPECT_FALSE(std::filesystem::exists(results_)) << "what a person took away stays away";
}

TEST_F(SafeCopyTest, KeepsThePreviousListWhenASlotIsTornOrTheListIsCut) {
  run({listOf(1), listOf(2), listOf(3)}, false);
  // The newest slot is torn in the middle: the one before it counts.
  for (const char* const slot : {"survey.copy-1", "survey.copy-2"}) {
    const auto path = std::filesystem::path(dir_.path()) / slot;
    std::string text = readWholeFile(path);
    if (text.find("sequence 4\n") == std::string::npos) continue;
    text[600] ^= 1;
    std::ofstream(path, std::ios::binary) << text;
  }
  EXPECT_EQ(newestCopy(dir_.path())->results, listOf(2));

  put(listOf(5));
  SafeCopy copy(dir_.path(), std::chrono::milliseconds(0), [](const std::string&) {});
  const uint64_t first = newestCopy(dir_.path())->sequence;
  copy.dwellWritten();
  waitFor([&] { return newestCopy(dir_.path())->sequence > first; });
  put(listOf(4));  // a full disk may cut it at the end of a row
  copy.end();
  EXPECT_EQ(newestCopy(dir_.path())->results, listOf(5));
  EXPECT_FALSE(newestCopy(dir_.path())->run_ended);
}

TEST_F(SafeCopyTest, AcceptsAShorterListOnlyWhereTheRasterMergesChannels) {
  for (const auto& [rows, is_whole] : {std::pair(2, true), {1, false}}) {
    put(listOf(5));
    SafeCopy copy(dir_.path(), std::chrono::milliseconds(0), [](const std::string&) {});
    copy.surveyStarts(15e3);  // 0 and 5 kHz are one slot, 10 to 20 kHz the next
    put(listOf(rows));
    copy.end();
    EXPECT_EQ(newestCopy(dir_.path())->results, listOf(is_whole ? rows : 5));
    EXPECT_EQ(newestCopy(dir_.path())->run_ended, is_whole);
  }
}

}  // namespace
}  // namespace pelagrim_host
