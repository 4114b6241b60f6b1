// The record of dwells: what is written is read back, whatever happens to file, disk and program.
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <fstream>
#include <limits>

#include "host/history/blob_code.h"
#include "host/history/history_schema.h"
#include "host/history/replay.h"
#include "tests/history/history_fixture.h"

namespace pelagrim_host {
namespace {

namespace fs = std::filesystem;

int64_t test_clock_ms = 0;
int64_t testClock() {
  return test_clock_ms;
}
int64_t everySecond() {
  return test_clock_ms += 1000;
}

int64_t twentyASecond() {
  return test_clock_ms += 50;
}

void expectSame(const DwellRecord& got, const DwellRecord& want, KeptLevels levels) {
  EXPECT_EQ(got.slice.sample_rate_hz, want.slice.sample_rate_hz);
  EXPECT_EQ(got.slice.centre_hz, want.slice.centre_hz);
  EXPECT_EQ(got.end_unix_ms, want.end_unix_ms);
  EXPECT_EQ(got.first_unix_ms, want.first_unix_ms);
  EXPECT_EQ(got.first_sample, want.first_sample);
  EXPECT_EQ(got.samples, want.samples);
  EXPECT_EQ(got.frames, want.frames);
  EXPECT_EQ(got.lost_samples, want.lost_samples);
  EXPECT_EQ(got.full_scale_samples, want.full_scale_samples);
  EXPECT_EQ(got.threshold_db, want.threshold_db);
  EXPECT_EQ(got.floor_is_sure, want.floor_is_sure);
  EXPECT_EQ(got.row_frames, want.row_frames);
  ASSERT_EQ(got.detections.size(), want.detections.size());
  for (size_t i = 0; i < want.detections.size(); ++i) {
    EXPECT_EQ(got.detections[i].centre_hz, want.detections[i].centre_hz);
    EXPECT_EQ(got.detections[i].width_hz, want.detections[i].width_hz);
    EXPECT_EQ(got.detections[i].peak_db, want.detections[i].peak_db);
    EXPECT_EQ(got.detections[i].floor_db, want.detections[i].floor_db);
  }
  ASSERT_EQ(got.places.size(), want.places.size());
  for (size_t i = 0; i < want.places.size(); ++i) {
    EXPECT_EQ(got.places[i].low_hz, want.places[i].low_hz);
    EXPECT_EQ(got.places[i].high_hz, want.places[i].high_hz);
    EXPECT_EQ(got.places[i].threshold, want.places[i].threshold);
    EXPECT_EQ(got.places[i].edges_ms, want.places[i].edges_ms);
  }
  if (levels == KeptLevels::kNone) {
    EXPECT_TRUE(got.mean_db.empty() && got.max_db.empty() && got.low_db.empty());
    return;
  }
  ASSERT_EQ(got.max_db.size(), want.max_db.size());
  for (size_t i = 0; i < want.max_db.size(); ++i) {
    EXPECT_NEAR(got.max_db[i], want.max_db[i], 0.051);
    EXPECT_NEAR(got.low_db[i], want.low_db[i], 0.051);
    const double tolerance = levels == KeptLevels::kExact ? 0.0 : 0.051;
    EXPECT_NEAR(got.mean_db[i], want.mean_db[i], tolerance);
  }
}

TEST_F(HistoryTest, WhatIsWrittenIsReadBack) {
  record(20);
  EXPECT_EQ(told_, std::vector<std::string>());
  HistoryReader reader(path_);
  const auto runs = reader.runs();
  ASSERT_EQ(runs.size(), 1u);
  EXPECT_EQ(runs[0].name, run().name);
  EXPECT_EQ(runs[0].kind, run().kind);
  EXPECT_EQ(runs[0].source + runs[0].identity + runs[0].settings + runs[0].program +
                runs[0].receiver + runs[0].place,
            "bandabcthreshold = 120.2.0noneJO62");
  EXPECT_EQ(runs[0].start_unix_ms, 12345);
  EXPECT_TRUE(runs[0].ended);

  const All found = all();
  EXPECT_EQ(found.order, "a" + std::string(20, 'd'));
  EXPECT_EQ(found.anchors[0].value.list, "# a list\n");
  EXPECT_EQ(found.anchors[0].value.raster_hz, 5000.0);
  EXPECT_TRUE(std::isnan(found.anchors[0].value.band_hi_hz));
  for (unsigned i = 0; i < 20; ++i) {
    EXPECT_EQ(found.dwells[i].run, runs[0].id);
    EXPECT_EQ(found.dwells[i].levels, KeptLevels::kExact);
    expectSame(found.dwells[i].record, someDwell(i), KeptLevels::kExact);
  }
  std::vector<int64_t> ends;
  reader.visitDwells([&](const auto& dwell) { ends.push_back(dwell.record.end_unix_ms); }, false,
                     someDwell(3).end_unix_ms, someDwell(6).end_unix_ms);
  EXPECT_EQ(ends, (std::vector{someDwell(3).end_unix_ms, someDwell(4).end_unix_ms,
                               someDwell(5).end_unix_ms}));
}

TEST(BlobCode, KeepsOddLevels) {
  const std::vector<float> odd = {NAN, INFINITY, -200.0F, 1e30F, -0.04F, 12.34F};
  const auto exact = unpackExactLevels(packExactLevels(odd), odd.size());
  EXPECT_TRUE(std::isnan(exact[0]));
  EXPECT_TRUE(std::equal(exact.begin() + 1, exact.end(), odd.begin() + 1));
  const auto rounded = unpackCentibels(packCentibels(odd), odd.size());
  EXPECT_TRUE(std::isnan(rounded[0]));
  EXPECT_EQ(std::vector<float>(rounded.begin() + 1, rounded.end()),
            (std::vector<float>{3276.7F, -200.0F, 3276.7F, 0.0F, 12.3F}));
}

TEST_F(HistoryTest, TakesAtMostOneTransactionASecond) {
  test_clock_ms = 5000;
  auto history = writer({.steady_ms = testClock});
  history.beginRun(run());
  history.anchor(anchor());
  test_clock_ms += 999;
  history.dwell(someDwell(0));
  EXPECT_EQ(all().order, "");
  test_clock_ms += 1;
  history.dwell(someDwell(1));
  EXPECT_EQ(all().order, "add");  // and it is read while it is written
  EXPECT_TRUE(fs::exists(path_.string() + "-wal"));
  history.end();
  EXPECT_FALSE(fs::exists(path_.string() + "-wal"));
}

/// A place where this process may write nothing, even if root runs it.
struct ReadOnly {
  explicit ReadOnly(fs::path place) : directory(std::move(place)) {
    fs::permissions(directory, fs::perms(0555));
    if (geteuid() == 0) was_root = seteuid(65534) == 0;
  }
  ~ReadOnly() {
    if (was_root && seteuid(0) != 0) ADD_FAILURE() << "not root again";
    fs::permissions(directory, fs::perms::owner_all);
  }
  ReadOnly(const ReadOnly&) = delete;
  ReadOnly& operator=(const ReadOnly&) = delete;

  fs::path directory;
  bool was_root = false;
};

TEST_F(HistoryTest, IsOneFileThatOpensInAReadOnlyPlace) {
  record(3);
  auto network = writer({.shares_memory = false});
  network.beginRun(run());
  network.dwell(someDwell(4));
  network.flush();
  EXPECT_FALSE(fs::exists(path_.string() + "-wal"));
  network.end();
  EXPECT_EQ(std::distance(fs::directory_iterator(dir_.path()), fs::directory_iterator()), 1);

  // A copy that was taken while it was written says that there is a log.
  std::string open = dir_.read("history.sqlite");
  open[18] = open[19] = 2;
  for (const bool is_open : {false, true}) {
    if (is_open) dir_.write("history.sqlite", open);
    ReadOnly place(dir_.path());
    EXPECT_EQ(all().order, "adddd");
  }
  dir_.write("history.sqlite-wal", "what was written last");
  ReadOnly place(dir_.path());
  EXPECT_THROW(HistoryReader{path_}, HistoryError);
}

TEST_F(HistoryTest, OlderRecordsAreReadAndBroughtForward) {
  {
    SQLite::Database old(path_.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    migrateHistory(old, 1);
    old.exec(
        "INSERT INTO runs VALUES (7, 'n', 0, 's', 'i', '', '', '', '', 1, 1);"
        "INSERT INTO dwells VALUES (3, 7, 1e6, 1e8, 5, 4, 0, 2048, 2, 0, 0, 12, 1, 1)");
  }
  EXPECT_EQ(all().order, "d");
  record(2);
  const All found = all();
  EXPECT_EQ(found.order, "dadd");
  EXPECT_EQ(found.dwells[0].run, 7);
  EXPECT_EQ(found.dwells[0].levels, KeptLevels::kNone);
  SQLite::Database now(path_.string());
  EXPECT_EQ(now.execAndGet("PRAGMA user_version").getInt(), historyVersion());
  EXPECT_TRUE(now.tableExists("hours"));
}

TEST_F(HistoryTest, GapsAreSeenAndNeedAnAnchor) {
  auto history = writer({.steady_ms = everySecond});
  EXPECT_TRUE(history.needsAnchor());
  history.beginRun(run());
  history.anchor(anchor());
  EXPECT_FALSE(history.needsAnchor());
  history.dwell(someDwell(0));
  history.gap(100);
  history.gap(200);
  EXPECT_TRUE(history.needsAnchor());
  DwellRecord absurd = someDwell(1);
  absurd.detections[0].centre_hz = NAN;
  absurd.end_unix_ms = 300;
  history.dwell(absurd);
  history.anchor(anchor());
  EXPECT_FALSE(history.needsAnchor());
  history.dwell(someDwell(2));
  history.end();
  const All found = all();
  EXPECT_EQ(found.order, "adgad");
  EXPECT_EQ(found.gaps[0].value.dwells, 3u);
  EXPECT_EQ(found.gaps[0].value.first_unix_ms, 100);
  EXPECT_EQ(found.gaps[0].value.last_unix_ms, 300);
  EXPECT_EQ(told_, std::vector<std::string>());
}

// ---- strangers and damage -----------------------------------------------------------------------

/// A change that needs tables without types.
std::string untyped(const std::string& table, const std::string& change) {
  return "PRAGMA writable_schema = ON; CREATE TABLE kept AS SELECT sql FROM sqlite_schema WHERE "
         "name = '" +
         table +
         "'; UPDATE sqlite_schema SET sql = replace(sql, ') STRICT', ')') WHERE "
         "name = '" +
         table + "'; PRAGMA writable_schema = RESET; " + change +
         "; PRAGMA writable_schema = ON; UPDATE sqlite_schema SET sql = (SELECT sql FROM kept) "
         "WHERE "
         "name = '" +
         table + "'; PRAGMA writable_schema = RESET; DROP TABLE kept";
}

TEST_F(HistoryTest, RefusesWhatMakesNoSense) {
  const struct {
    std::string change;
    const char* error;
  } cases[] = {
      {"PRAGMA application_id = 1", "not a survey's record"},
      {"PRAGMA user_version = 99", "newer version"},
      {"PRAGMA user_version = 0", "no schema 0"},
      {"CREATE VIEW more AS SELECT 1", "not those of"},
      {"CREATE TRIGGER t AFTER INSERT ON runs BEGIN DELETE FROM runs; END", "not those of"},
      {"DROP TABLE stretches; CREATE VIEW stretches AS SELECT 1", "not those of"},
      {"CREATE INDEX i ON dwells (abs(number))", "not those of"},
      {"DROP INDEX dwells_by_end", "not those of"},
      {"ALTER TABLE runs ADD COLUMN more TEXT", "not those of"},
      {"UPDATE dwells SET rate_hz = 9e999", "the sample rate"},
      {"UPDATE dwells SET rate_hz = -1", "the sample rate"},
      {"UPDATE dwells SET frames = -1", "frames cannot be -1"},
      {"UPDATE dwells SET frames = 5000000000", "frames cannot be"},
      {"UPDATE dwells SET row_frames = 0", "the length of a row"},
      {"UPDATE dwells SET floor_is_sure = 2", "floor_is_sure"},
      {"UPDATE dwells SET end_unix_ms = -9223372036854775807 - 1", "time"},
      {"UPDATE runs SET kind = 3", "kind cannot be 3"},
      {"UPDATE detections SET width_hz = -1", "a detection"},
      {"UPDATE stretches SET low_hz = 2 * high_hz", "a place"},
      {"UPDATE stretches SET edges = x'80'", "the last edge is cut off"},
      {"UPDATE stretches SET edges = x'ffffffffffff01'", "an edge is too long"},
      {"UPDATE stretches SET edges = x'ffffffff0f01'", "an edge is too late"},
      {"UPDATE levels SET mean = substr(mean, 1, 100)", "the packed bytes"},
      {"UPDATE levels SET mean = CAST(mean || x'00' AS BLOB)", "go on after their end"},
      {"UPDATE levels SET mean = max", "too few"},
      {"UPDATE levels SET max = mean", "too few or too many"},
      {"UPDATE levels SET low = zeroblob(500)", "damaged"},
      {"UPDATE levels SET kind = 1", "too few or too many"},
      {"UPDATE anchors SET size = size + 1", "too few"},
      {"UPDATE anchors SET size = 9000000000000", "size cannot be"},
      {"UPDATE anchors SET is_channels = 1", "the packed bytes"},
      {"UPDATE anchors SET raster_hz = 0", "the raster"},
      {untyped("dwells", "UPDATE dwells SET rate_hz = 'fast'"), "rate_hz is not a number"},
      {untyped("dwells", "UPDATE dwells SET samples = 1.5"), "samples is not a whole number"},
      {untyped("runs", "UPDATE runs SET name = x'00'"), "name is not a text"},
      {untyped("levels", "UPDATE levels SET mean = 'loud'"), "mean does not hold bytes"},
  };
  for (const auto& [change, error] : cases) {
    SCOPED_TRACE(change);
    fs::remove(path_);
    record(3);
    ASSERT_NO_THROW(tamper(change));
    try {
      HistoryReader(path_).runs();
      all();
      ADD_FAILURE() << "was read";
    } catch (const HistoryError& failure) {
      EXPECT_NE(std::string(failure.what()).find(error), std::string::npos) << failure.what();
      EXPECT_NE(std::string(failure.what()).find(path_.string()), std::string::npos);
      // Nor is a schema written to that is not ours.
      if (std::string(error) == "not those of") record(1);
      EXPECT_EQ(told_.size(), std::string(error) == "not those of" ? 1u : 0u);
      told_.clear();
    }
  }
}

TEST_F(HistoryTest, DamagedFilesGiveErrorsAndStayAsTheyAre) {
  record(5);
  const std::string whole = dir_.read("history.sqlite");
  std::vector<std::string> damaged = {"no database at all", std::string(5000, '\0'),
                                      whole.substr(0, 50), whole.substr(0, 4096),
                                      whole.substr(0, whole.size() / 2)};
  std::mt19937 random(4);
  for (int i = 0; i < 200; ++i) {
    damaged.push_back(whole);
    for (int k = 0; k < 20; ++k) damaged.back()[random() % whole.size()] = char(random());
  }
  size_t refused = 0;
  for (const std::string& bytes : damaged) {
    dir_.write("history.sqlite", bytes);
    try {
      HistoryReader(path_).runs();
      all();
    } catch (const HistoryError&) {
      ++refused;
    }
  }
  EXPECT_GE(refused, damaged.size() / 2);

  // Nor are they written to, and the survey hears of it once.
  for (size_t i = 0; i < 4; ++i) {
    dir_.write("history.sqlite", damaged[i]);
    told_.clear();
    record(700, {.steady_ms = everySecond});
    EXPECT_EQ(dir_.read("history.sqlite"), damaged[i]);
    ASSERT_EQ(told_.size(), 1u);
    EXPECT_NE(told_[0].find("cannot be written"), std::string::npos) << told_[0];
  }
}

// ---- a disk that is full, a program that is killed ----------------------------------------------

/// No file of this process may be longer.
void limitFiles(rlim_t bytes) {
  signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = bytes;
  setrlimit(RLIMIT_FSIZE, &limit);
}

TEST_F(HistoryTest, AFullDiskLeavesAGapAndItGoesOn) {
  for (const bool shares_memory : {true, false}) {
    fs::remove(path_);
    told_.clear();
    auto history = writer({.shares_memory = shares_memory, .steady_ms = everySecond});
    history.beginRun(run());
    history.anchor(anchor());
    unsigned next = 0;
    for (; next < 10; ++next) history.dwell(someDwell(next));
    limitFiles(120'000);
    for (; next < 100; ++next) history.dwell(someDwell(next));
    EXPECT_EQ(told_.size() % 2, 1u);  // it does not work now
    limitFiles(RLIM_INFINITY);
    for (; next < 110; ++next) history.dwell(someDwell(next));  // none has been lost yet
    EXPECT_EQ(told_.size() % 2, 0u);
    EXPECT_EQ(all().dwells.size(), 110u);
    EXPECT_FALSE(history.needsAnchor());
    limitFiles(100'000);
    for (; next < 1000; ++next) {
      history.dwell(someDwell(next));
      history.gap(someDwell(next).end_unix_ms);
    }
    EXPECT_TRUE(history.needsAnchor());
    EXPECT_LE(told_.size(), 7u);
    limitFiles(RLIM_INFINITY);
    history.anchor(anchor());
    for (; next < 1010; ++next) history.dwell(someDwell(next));
    history.end();
    EXPECT_EQ(told_.size() % 2, 0u);
    const All found = all();
    size_t missing = 0;
    for (const auto& gap : found.gaps) missing += gap.value.dwells;
    EXPECT_GT(missing, 890u);
    EXPECT_EQ(found.dwells.size() + missing, 1010u + 890u);
    expectSame(found.dwells.back().record, someDwell(1009), KeptLevels::kExact);
  }
}

TEST_F(HistoryTest, OutlivesKills) {
  std::mt19937 random(11);
  size_t before = 0;
  for (int kill_number = 0; kill_number < 12; ++kill_number) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
      auto history = writer({.steady_ms = everySecond});
      history.beginRun(run());
      for (unsigned i = 0;; ++i) {
        history.dwell(someDwell(i));
        if (write(ready[1], "", 1) != 1) _exit(1);
      }
    }
    close(ready[1]);
    size_t written = 0;
    char byte;
    for (const size_t until = 1 + random() % 30;
         written < until && read(ready[0], &byte, 1) == 1;) {
      ++written;
    }
    usleep(static_cast<useconds_t>(random() % 20000));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    while (read(ready[0], &byte, 1) == 1) ++written;
    close(ready[0]);

    const All found = all();
    const size_t now = found.dwells.size() - before;
    EXPECT_TRUE(now == written || now == written + 1) << now << " of " << written;
    for (unsigned i = 0; i < now; ++i) {
      EXPECT_EQ(found.dwells[before + i].record.first_sample, someDwell(i).first_sample);
    }
    before = found.dwells.size();
  }
  EXPECT_EQ(HistoryReader(path_).runs().size(), 12u);
  EXPECT_FALSE(HistoryReader(path_).runs().back().ended);
}

TEST_F(HistoryTest, ThinningKeepsWithinTheLimitAndTheListCanBeFollowed) {
  constexpr unsigned kDwells = 1200;
  const HistoryAnchor start{.rate_hz = 250e3, .threshold_db = 12.0, .raster_hz = 700.0, .list = ""};
  record(kDwells);
  const auto whole = static_cast<int64_t>(fs::file_size(path_));
  for (const int64_t limit_bytes : {whole * 9 / 10, whole / 2, whole / 40}) {
    SCOPED_TRACE(limit_bytes);
    fs::remove(path_);
    auto history = writer({.limit_bytes = limit_bytes, .steady_ms = twentyASecond});
    history.beginRun(run());
    history.anchor(start);
    Replay all_of_it(start);
    for (unsigned i = 0; i < kDwells; ++i) {
      // Centres that differ a little move the mean across the edges of slots.
      DwellRecord dwell = someDwell(i);
      for (auto& found : dwell.detections) found.centre_hz += 37.0 * (i % 11);
      all_of_it.add(dwell);
      history.dwell(std::move(dwell));
    }
    history.end();
    EXPECT_EQ(told_, std::vector<std::string>());
    EXPECT_LE(fs::file_size(path_), static_cast<uintmax_t>(limit_bytes) * 11 / 10);

    const All found = all();
    ASSERT_EQ(found.anchors.size(), 1u);
    EXPECT_EQ(found.gaps.size(), 0u);
    Replay rest(found.anchors[0].value);
    for (const auto& dwell : found.dwells) rest.add(dwell.record);
    EXPECT_EQ(rest.list(), all_of_it.list());

    // Less is kept of older dwells, and as much as there is room for.
    size_t kept[3] = {};
    for (const auto& dwell : found.dwells) ++kept[static_cast<int>(dwell.levels)];
    for (size_t i = 1; i < found.dwells.size(); ++i) {
      EXPECT_LE(found.dwells[i].levels, found.dwells[i - 1].levels);
    }
    for (size_t i = 0; i < found.dwells.size(); i += 100) {
      DwellRecord want = someDwell(kDwells - static_cast<unsigned>(found.dwells.size() - i));
      want.detections = found.dwells[i].record.detections;
      expectSame(found.dwells[i].record, want, found.dwells[i].levels);
    }
    EXPECT_GT(kept[0], 0u);
    EXPECT_EQ(found.dwells.size() == kDwells, limit_bytes > whole / 10);
    EXPECT_EQ(kept[2] == 0, limit_bytes > whole / 2);
  }
}

}  // namespace
}  // namespace pelagrim_host
