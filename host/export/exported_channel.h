#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/survey_dir/saved_survey.h"

namespace pelagrim_host {

/// How a receiver would listen to a signal. kNone: nothing is known that would make it audible.
enum class ListeningMode { kNone, kCw, kUsb, kLsb, kAm, kNfm, kWfm };

/// What a format writes for each mode.
template <typename Value>
struct ModeNames {
  Value none, cw, usb, lsb, am, nfm, wfm;

  Value operator[](ListeningMode mode) const {
    switch (mode) {
      case ListeningMode::kNone:
        return none;
      case ListeningMode::kCw:
        return cw;
      case ListeningMode::kUsb:
        return usb;
      case ListeningMode::kLsb:
        return lsb;
      case ListeningMode::kAm:
        return am;
      case ListeningMode::kNfm:
        return nfm;
      case ListeningMode::kWfm:
        return wfm;
    }
    return none;
  }
};

/// What a receiver has to be set to.
struct Listening {
  ListeningMode mode = ListeningMode::kNone;
  /// Where its dial goes: the channel's centre, but for the side bands, whose pass band begins at
  /// the dial, half the bandwidth beside it.
  double dial_hz = 0.0;
  double bandwidth_hz = 0.0;
};

/// Mode and bandwidth as the guess at the channel's kind would have them: a usual bandwidth, or the
/// mean width where that is more. Side bands are upper ones from 10 MHz up.
Listening listeningTo(const SurveyedChannel& channel);

/// A channel as it goes to another program. The texts are valid UTF-8 without control characters.
struct ExportedChannel {
  SurveyedChannel seen;
  Listening listening;
  std::string band;  ///< its name in the band plan; empty: none
  std::string name;  ///< band and frequency; no two channels have the same
  bool times_are_guesses = false;
};

/// What to leave out.
struct ExportSelection {
  double min_activity = 0.0;         ///< hits by looks, 0 to 1
  uint32_t min_hits = 0;             ///< detections
  std::vector<std::string> kinds{};  ///< of pelagrim::signalKinds(); empty: all
};

/// The channels selected, in order of frequency.
std::vector<ExportedChannel> selectChannels(const SurveyFiles& survey,
                                            const ExportSelection& selection);

}  // namespace pelagrim_host
