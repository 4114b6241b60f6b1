#pragma once

#include <filesystem>

namespace pelagrim_curves {

// Each measures one question with the plug-in's own code and writes its charts, with their figures,
// into `dir`. The results depend only on the code: two runs agree to the byte.

/// Seen or not, against level, for a carrier and for a signal ten bins wide.
void measureLevels(const std::filesystem::path& dir);

/// Seen or not, against the share of time on the air, by dwell and by level.
void measureDutyCycles(const std::filesystem::path& dir);

/// Detections in pure noise, against threshold, by number of frames.
void measureFalseAlarms(const std::filesystem::path& dir);

/// One burst in a dwell: seen or not, against its length.
void measureBursts(const std::filesystem::path& dir);

/// How far centre and width are off, against true width, by level.
void measureAccuracy(const std::filesystem::path& dir);

/// The width of a carrier and of the spike at the slice's centre, against level.
void measureCarriers(const std::filesystem::path& dir);

/// Width and guess for the stations of the simulated band, at several sample rates: a table.
void measureKinds(const std::filesystem::path& dir);

/// AM and two-tone keying: how many pieces they break into, against dwell.
void measureShortDwells(const std::filesystem::path& dir);

/// The floor and the stations found in a slice, against how much of it is in use.
void measureFullBands(const std::filesystem::path& dir);

}  // namespace pelagrim_curves
