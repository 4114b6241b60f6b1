#pragma once

#include <optional>
#include <string_view>

#include "survey/settings.h"

namespace pelagrim {

// The keys of survey.cfg.
inline constexpr std::string_view kStartKey = "start";             // Hz
inline constexpr std::string_view kStopKey = "stop";               // Hz
inline constexpr std::string_view kThresholdKey = "threshold_db";  // dB
inline constexpr std::string_view kDwellKey = "dwell_seconds";     // s
inline constexpr std::string_view kRasterKey = "raster_hz";        // Hz
inline constexpr std::string_view kSweepKey = "sweep";             // yes or no

/// One "key = value" line. Both are parts of the line that was read.
struct SettingLine {
  std::string_view key;    ///< no blanks around it; need not be one of the keys above
  std::string_view value;  ///< everything after the "=", with blanks and remarks; never empty
};

/// Reads one line of survey.cfg, with or without its line end. Returns nothing for a blank line, a
/// comment ("#"), a line without "=" or with nothing before or after it, and a key longer than 63
/// characters, trailing blanks included. A value is cut at 255 characters.
std::optional<SettingLine> parseSettingLine(std::string_view line);

/// Whether a value of `sweep` asks to sweep: any n or N in it means no.
bool asksToSweep(std::string_view value);

/// The number at the start of a value, in any spelling that strtod reads; 0 if there is none.
/// The thread must be in the C locale (see CLocale) for a decimal point to be read.
double settingNumber(std::string_view value);

/// Stores the value in the setting that its key names; other keys change nothing.
void applySetting(const SettingLine& line, Settings& settings);

}  // namespace pelagrim
