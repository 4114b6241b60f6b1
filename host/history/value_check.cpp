#include "host/history/value_check.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "survey/spectrum.h"

namespace pelagrim_host {
namespace {

using pelagrim::kSpectrumBins;

// Beyond any receiver and any clock.
constexpr double kMaxHz = 1e13;
constexpr int64_t kMaxUnixMs = 1'000'000'000'000'000;
constexpr uint64_t kMaxSamples = uint64_t{1} << 53;
constexpr size_t kMaxPlaces = 1'000'000;

bool isPlace(double hz) {
  return std::abs(hz) <= kMaxHz;
}

bool isTime(int64_t unix_ms) {
  return unix_ms >= -kMaxUnixMs && unix_ms <= kMaxUnixMs;
}

bool isWidth(double hz) {
  return hz >= 0.0 && hz <= kMaxHz;
}

bool isDetection(const pelagrim::Detection& found) {
  return isPlace(found.centre_hz) && isWidth(found.width_hz) && !std::isnan(found.peak_db) &&
         !std::isnan(found.floor_db);
}

bool isWatchedPlace(const WatchedPlace& place) {
  return isPlace(place.low_hz) && isPlace(place.high_hz) && place.low_hz <= place.high_hz &&
         place.threshold > 0.0 && std::isfinite(place.threshold) &&
         std::is_sorted(place.edges_ms.begin(), place.edges_ms.end());
}

bool isChannel(const std::pair<const long, pelagrim::Channel>& entry) {
  const pelagrim::Channel& channel = entry.second;
  return !std::isnan(channel.centre_hz) && !std::isnan(channel.width_hz) && channel.hits >= 1 &&
         channel.looks >= channel.hits;
}

}  // namespace

std::string_view whatIsWrong(const DwellRecord& dwell) {
  const double rate_hz = dwell.slice.sample_rate_hz;
  if (!(rate_hz > 0.0 && rate_hz <= kMaxHz)) return "the sample rate";
  if (!isPlace(dwell.slice.centre_hz)) return "the centre";
  if (!isTime(dwell.end_unix_ms) || !isTime(dwell.first_unix_ms)) return "the time";
  if (dwell.samples > kMaxSamples || dwell.first_sample > kMaxSamples) return "the samples";
  if (dwell.lost_samples > kMaxSamples || dwell.full_scale_samples > kMaxSamples) {
    return "the samples lost or at full scale";
  }
  if (dwell.frames == 0) return "the frames";
  if (dwell.row_frames == 0) return "the length of a row";
  if (dwell.detections.size() > kSpectrumBins) return "the number of detections";
  if (!std::all_of(dwell.detections.begin(), dwell.detections.end(), isDetection)) {
    return "a detection";
  }
  if (dwell.places.size() > kMaxPlaces) return "the number of places";
  if (!std::all_of(dwell.places.begin(), dwell.places.end(), isWatchedPlace)) return "a place";
  return {};
}

std::string_view whatIsWrong(const HistoryAnchor& anchor) {
  if (!(anchor.rate_hz > 0.0 && anchor.rate_hz <= kMaxHz)) return "the sample rate";
  if (!(anchor.raster_hz > 0.0)) return "the raster";
  if (anchor.channels &&
      !std::all_of(anchor.channels->begin(), anchor.channels->end(), isChannel)) {
    return "a channel";
  }
  return {};
}

}  // namespace pelagrim_host
