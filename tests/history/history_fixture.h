#pragma once

#include <SQLiteCpp/Database.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "host/history/history_file.h"
#include "host/history/history_reader.h"
#include "host/history/history_writer.h"
#include "survey/detection.h"
#include "survey/spectrum.h"
#include "tests/support/temporary_dir.h"

namespace pelagrim_host {

/// A dwell of noise with two signals, like nothing else in its numbers.
inline DwellRecord someDwell(unsigned seed) {
  std::mt19937 random(seed);
  std::exponential_distribution<double> power(0.01);
  DwellRecord dwell;
  dwell.slice = {250e3, 145e6 + 100e3 * (seed % 3)};
  dwell.first_unix_ms = 1'700'000'000'000 + 500 * int64_t{seed};
  dwell.end_unix_ms = dwell.first_unix_ms + 500;
  dwell.first_sample = 125000 * uint64_t{seed};
  dwell.samples = 125000;
  dwell.frames = 122;
  dwell.lost_samples = seed % 4;
  dwell.full_scale_samples = seed % 5;
  dwell.threshold_db = 12.0;
  dwell.floor_is_sure = seed % 2 == 0;
  dwell.row_frames = 2;
  for (size_t bin = 0; bin < pelagrim::kSpectrumBins; ++bin) {
    const bool signal = bin / 8 == 20 + seed % 50 || bin / 4 == 200;
    const auto level = static_cast<float>(10.0 * std::log10(power(random) * (signal ? 1e4 : 1.0)));
    dwell.mean_db.push_back(level);
    dwell.max_db.push_back(level + 6.25F);
    dwell.low_db.push_back(level - 6.25F);
  }
  dwell.detections = pelagrim::findDetections(dwell.mean_db, dwell.slice, dwell.threshold_db);
  dwell.places = {{145.01e6, 145.02e6, 3.5, {0, 17, 200, 100'000 + seed}},
                  {145.1e6, 145.1e6, 3.9, {}}};
  return dwell;
}

class HistoryTest : public testing::Test {
 protected:
  HistoryWriter writer(HistoryOptions options = {}) {
    return {path_, options, [this](const std::string& line) { told_.push_back(line); }};
  }

  /// A record of `dwells` dwells after an anchor, closed in order.
  void record(unsigned dwells, HistoryOptions options = {}) {
    auto history = writer(options);
    history.beginRun(run());
    history.anchor(anchor());
    for (unsigned i = 0; i < dwells; ++i) history.dwell(someDwell(i));
    history.end();
  }

  static HistoryRun run() {
    return {.name = runName("abc", "threshold = 12", "0-10"),
            .kind = HistorySource::kSimulation,
            .source = "band",
            .identity = "abc",
            .settings = "threshold = 12",
            .program = "0.2.0",
            .receiver = "none",
            .place = "JO62",
            .start_unix_ms = 12345};
  }
  static HistoryAnchor anchor() {
    return {.rate_hz = 250e3,
            .threshold_db = 12.0,
            .raster_hz = 5000.0,
            .band_hi_hz = NAN,
            .list = "# a list\n"};
  }

  struct All {
    std::vector<Numbered<HistoryAnchor>> anchors;
    std::vector<HistoryDwell> dwells;
    std::vector<Numbered<HistoryGap>> gaps;
    std::string order;
  };
  All all(bool with_levels = true) const {
    All found;
    HistoryReader reader(path_);
    reader.visit({[&](const auto& anchor) { found.anchors.push_back(anchor), found.order += 'a'; },
                  [&](const auto& dwell) { found.dwells.push_back(dwell), found.order += 'd'; },
                  [&](const auto& gap) { found.gaps.push_back(gap), found.order += 'g'; }},
                 with_levels);
    return found;
  }

  /// Changes a record behind the program's back.
  void tamper(const std::string& statements) const {
    SQLite::Database(path_.string(), SQLite::OPEN_READWRITE).exec(statements);
  }

  TemporaryDir dir_;
  std::filesystem::path path_ = historyPath(dir_.path());
  std::vector<std::string> told_;
};

}  // namespace pelagrim_host
