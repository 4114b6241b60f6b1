#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "host/evidence/dwell_record.h"
#include "survey/channel.h"

namespace pelagrim_host {

/// A record that cannot be opened or makes no sense. The message names the file and says why.
struct HistoryError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

enum class HistorySource { kRecording = 0, kReceiver = 1, kSimulation = 2 };

/// One run of the program.
struct HistoryRun {
  int64_t id = 0;    ///< within its record; given when it is written
  std::string name;  ///< the same for runs that must hear the same; see runName
  HistorySource kind = HistorySource::kRecording;
  std::string source;    ///< as the user named it
  std::string identity;  ///< of the samples: a digest of a recording, say
  std::string settings;  ///< in force, as text
  std::string program;   ///< with its version
  std::string receiver;
  std::string place;
  int64_t start_unix_ms = 0;
  bool ended = false;  ///< in order; false for one that goes on or was killed
};

/// The name of a run on a recording: a digest of what decides what it hears.
std::string runName(std::string_view identity, std::string_view settings, std::string_view part);

/// A name for a run on a live receiver, which nobody can repeat.
std::string randomRunName();

/// From here on the list of channels follows from the dwells.
struct HistoryAnchor {
  double rate_hz = 0.0;  ///< that the plug-in was created with
  double threshold_db = 0.0;
  double raster_hz = 0.0;  ///< in force, as are the limits of the band
  double band_lo_hz = 0.0;
  double band_hi_hz = 0.0;
  std::string list{};  ///< the bytes of survey.csv
  /// Instead of the list, where dwells have been dropped: the channels by slot, with all digits.
  std::optional<std::map<long, pelagrim::Channel>> channels{};
};

/// Dwells that are not in the record: from here to the next anchor the list cannot be followed.
struct HistoryGap {
  uint64_t dwells = 0;        ///< how many are missing
  int64_t first_unix_ms = 0;  ///< ends of the first and the last of them
  int64_t last_unix_ms = 0;
};

/// How much of a dwell's levels is left.
enum class KeptLevels { kExact = 0, kCentibels = 1, kNone = 2 };

/// A dwell as it was read. With centibels, its mean levels are rounded to 0.1 dB; its maximum and
/// low levels always are. Without levels, all three are empty.
struct HistoryDwell {
  int64_t number = 0;  ///< its place in the record, in which anchors and gaps have theirs
  int64_t run = 0;
  KeptLevels levels = KeptLevels::kNone;
  DwellRecord record;
};

}  // namespace pelagrim_host
