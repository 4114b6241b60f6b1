#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "survey/channel.h"

namespace pelagrim {

/// All channels found so far, at most one per slot of a fixed frequency raster.
///
/// A channel stays in the slot in which it was entered, even if its mean centre drifts into the
/// next one; a detection is matched by its own slot only. Not synchronised: callers hold the lock
/// of whatever owns the survey. Members that allocate may throw std::bad_alloc and then leave the
/// survey as it was.
struct Survey {
  std::map<long, Channel> channels;  ///< by slot
  double raster_hz = 5000.0;         ///< width of a slot
  double band_lo_hz = 0.0;  ///< detections outside the band are dropped; both limits belong to it
  double band_hi_hz = 0.0;  ///< no limits unless band_lo_hz < band_hi_hz

  /// The slot of a frequency: the nearest multiple of the raster, halves away from zero.
  long slotOf(double hz) const;

  /// Counts a look for every channel whose centre lies between lo_hz and hi_hz, ends included. Call
  /// it once per dwell, before any add.
  void lookAt(double lo_hz, double hi_hz);

  /// Merges a detection into the channel of its slot, or enters a new one. A new channel starts
  /// with this dwell's look; lookAt has already counted it for a known one.
  void add(const Detection& found, int64_t now_ms);

  /// Puts a channel into the slot of its centre, replacing whatever was there.
  void restore(const Channel& channel);

  /// Removes all channels; raster and band stay.
  void clear() { channels.clear(); }

  size_t size() const { return channels.size(); }

  /// All channels in display order: most active first, where activity is hits / looks (0 without
  /// looks). Equal ones go by centre, lowest first and one that is not a number last, then by slot.
  std::vector<Channel> byActivity() const { return busiest(channels.size()); }

  /// The first `max_count` channels of that order. Takes about linear time in the number of
  /// channels when few are wanted.
  std::vector<Channel> busiest(size_t max_count) const;
};

}  // namespace pelagrim
