// A record of dwells as anybody may have changed it: it is read to its end, or refused with an
// error that names it. What comes out makes sense, and the list can be followed. The input says
// which bytes of a good record are changed: an offset of two bytes, a length, the bytes.

#include <algorithm>
#include <cmath>

#include "host/history/history_reader.h"
#include "host/history/history_writer.h"
#include "host/history/replay.h"
#include "input_file.h"
#include "survey/spectrum.h"

namespace {

/// A record of three dwells after an anchor.
std::string goodRecord(const ScratchDir& dir) {
  using namespace pelagrim_host;
  HistoryWriter writer(dir.pathOf("history.sqlite"), {}, [](const std::string&) { std::abort(); });
  writer.beginRun({.name = randomRunName()});
  writer.anchor({.rate_hz = 1e6,
                 .threshold_db = 12.0,
                 .raster_hz = 5e3,
                 .list = "100000000,3000,2900,3100,-10.5,-40.2,7,9,5,6,x\n"});
  for (uint64_t i = 0; i < 3; ++i) {
    DwellRecord dwell;
    dwell.slice = {1e6, 1e8};
    dwell.first_sample = i * 100'000;
    dwell.samples = 100'000;
    dwell.frames = 97;
    dwell.row_frames = 10;
    dwell.mean_db.assign(pelagrim::kSpectrumBins, -40.0F);
    dwell.max_db = dwell.low_db = dwell.mean_db;
    dwell.detections = {{1e8, 3e3, -10.0, -40.0}};
    dwell.places = {{1e8 - 1e3, 1e8 + 1e3, 3.5, {0, 20, 90}}};
    writer.dwell(dwell);
  }
  writer.end();
  return dir.read("history.sqlite");
}

std::string changed(std::string record, const uint8_t* data, size_t size) {
  for (size_t i = 0; i + 3 < size;) {
    const size_t offset = (data[i] + 256U * data[i + 1]) % record.size();
    const size_t length =
        std::min({size_t{data[i + 2]} % 32 + 1, size - i - 3, record.size() - offset});
    std::copy_n(data + i + 3, length, record.begin() + static_cast<std::ptrdiff_t>(offset));
    i += 3 + length;
  }
  return record;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace pelagrim_host;
  static const ScratchDir dir;
  static const std::string good = goodRecord(dir);
  const std::string record = changed(good, data, size);
  dir.write("history.sqlite", record.data(), record.size());
  const std::string path = dir.pathOf("history.sqlite");
  try {
    HistoryReader reader(path);
    for (const HistoryRun& run : reader.runs()) FUZZ_EXPECT(static_cast<int>(run.kind) <= 2);
    std::optional<Replay> replay;
    const auto check = [&](const HistoryDwell& dwell) {
      const DwellRecord& record = dwell.record;
      const size_t bins = dwell.levels == KeptLevels::kNone ? 0 : pelagrim::kSpectrumBins;
      FUZZ_EXPECT(record.slice.sample_rate_hz > 0.0 && std::isfinite(record.slice.centre_hz));
      FUZZ_EXPECT(record.mean_db.size() == bins && record.max_db.size() == bins);
      if (replay) replay->add(record);
    };
    reader.visit({[&](const auto& anchor) { replay.emplace(anchor.value); }, check,
                  [&](const auto&) { replay.reset(); }},
                 true);
    if (replay) FUZZ_EXPECT(!replay->list().empty());
    reader.visitDwells([](const HistoryDwell&) {}, false, 0);
  } catch (const HistoryError& failure) {
    FUZZ_EXPECT(std::string(failure.what()).find(path) != std::string::npos);
  }
  return 0;
}
