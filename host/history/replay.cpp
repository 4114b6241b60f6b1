#include "host/history/replay.h"

#include <algorithm>
#include <optional>

#include "files/c_locale.h"
#include "files/results_file.h"
#include "files/results_row.h"
#include "files/text_file.h"
#include "survey/spectrum.h"

namespace pelagrim_host {
namespace {

/// The next piece as pelagrim::LineReader cuts it, and removes it from `text`.
std::string takePiece(std::string_view& text) {
  constexpr size_t kMaxPiece = pelagrim::LineReader::kMaxPiece;
  const size_t line_feed = text.substr(0, kMaxPiece).find('\n');
  const size_t size =
      line_feed == std::string_view::npos ? std::min(text.size(), kMaxPiece) : line_feed + 1;
  std::string piece(text.substr(0, size));
  text.remove_prefix(size);
  return piece;
}

}  // namespace

std::vector<pelagrim::Channel> channelsOfList(std::string_view list, double rate_hz) {
  const pelagrim::CLocale c_locale;
  std::vector<pelagrim::Channel> channels;
  bool marked = false;
  while (!list.empty()) {
    const std::string piece = takePiece(list);
    marked = marked || piece.starts_with(pelagrim::kFormatMark);
    if (const auto row = pelagrim::parseResultsRow(piece.c_str())) channels.push_back(row->channel);
  }
  if (!marked) {
    const double half_bin_hz = 0.5 * (rate_hz * (1.0 / pelagrim::kSpectrumBins));
    for (pelagrim::Channel& channel : channels) channel.centre_hz -= half_bin_hz;
  }
  return channels;
}

Replay::Replay(const HistoryAnchor& anchor)
    : rate_hz_(anchor.rate_hz), threshold_db_(anchor.threshold_db) {
  survey_.raster_hz = anchor.raster_hz;
  survey_.band_lo_hz = anchor.band_lo_hz;
  survey_.band_hi_hz = anchor.band_hi_hz;
  if (anchor.channels) {
    survey_.channels = *anchor.channels;
  } else {
    for (const auto& channel : channelsOfList(anchor.list, rate_hz_)) survey_.restore(channel);
  }
}

void Replay::add(const DwellRecord& dwell) {
  survey_.lookAt(dwell.slice.lowHz(), dwell.slice.highHz());
  for (const pelagrim::Detection& found : dwell.detections) survey_.add(found, dwell.end_unix_ms);
}

std::string Replay::list() const {
  return pelagrim::surveyText(survey_);
}

HistoryAnchor Replay::anchor() const {
  return {.rate_hz = rate_hz_,
          .threshold_db = threshold_db_,
          .raster_hz = survey_.raster_hz,
          .band_lo_hz = survey_.band_lo_hz,
          .band_hi_hz = survey_.band_hi_hz,
          .list = {},
          .channels = survey_.channels};
}

}  // namespace pelagrim_host
