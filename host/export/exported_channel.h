#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/survey_dir/saved_survey.h"

namespace pelagrim_host {

/// How a receiver would demodulate a signal. kNone: no mode is known that would make it audible.
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

/// How a receiver has to be set.
struct Listening {
  ListeningMode mode = ListeningMode::kNone;
  /// The dial frequency: the channel's centre, but for USB and LSB half the bandwidth to the side,
  /// because their pass band begins at the dial.
  double dial_hz = 0.0;
  double bandwidth_hz = 0.0;
};

/// Mode and bandwidth that suit the guess at the channel's kind: a usual bandwidth, or the mean
/// width if that is more. SSB is USB from 10 MHz up and LSB below.
Listening listeningTo(const SurveyedChannel& channel);

/// A channel as it goes to another program. The texts are valid UTF-8 without control characters.
struct ExportedChannel {
  SurveyedChannel seen;
  Listening listening;
  std::string band;  ///< its name in the band plan; empty if it has none
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
