#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "host/sources/gain_setting.h"
#include "host/survey_dir/list_claim.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {

/// The options of a survey, and of questions such as --info.
struct Options {
  // The source.
  std::string source;  ///< a file, "-" for standard input, empty for the simulated band
  std::optional<double> sample_rate_hz;
  std::optional<double> frequency_hz;
  std::string format;  ///< of raw samples; empty: from the file's extension
  double offset_seconds = 0.0;
  uint64_t plays = 1;   ///< of a recording; 0: without end
  bool verify = false;  ///< check a recording against its checksum
  std::optional<int64_t> start_unix_ms;
  std::optional<FrequencyRange> simulated_range;  ///< the simulated band; unset: the band surveyed
  uint64_t seed = 1;
  bool irregular = false;  ///< whether simulated stations come and go at random
  std::string truth;       ///< where to write what was on the air; empty: nowhere

  // The receiver, if it is a live one.
  std::string device;  ///< as SoapySDR writes it, "driver=rtlsdr"; empty: none
  std::optional<GainSetting> gain;
  std::string antenna;
  double ppm = 0.0;
  std::optional<double> bandwidth_hz;
  double lo_offset_hz = 0.0;
  double settle_seconds = 0.05;

  /// How long to wait for samples; unset: 5 s for a receiver, for ever for a pipe.
  std::optional<double> stall_timeout_seconds;

  // Where and how to survey; written into survey.cfg.
  std::string survey_dir;  ///< empty: chosen by the source
  ListWish list_wish = ListWish::kAsUsual;
  std::optional<FrequencyRange> band;
  std::optional<double> dwell_seconds;
  std::optional<double> threshold_db;
  std::optional<double> raster_hz;
  std::optional<bool> sweep;

  // The run.
  std::optional<uint32_t> passes;
  std::optional<double> duration_seconds;
  bool may_tune = true;
  bool realtime = false;
  bool quiet = false;
  bool json = false;
  uint32_t block_samples = 0;  ///< 0: the usual
  uint32_t threads = 3;        ///< 1: reads, surveys and shows by turns
  bool keep_history = false;   ///< record every dwell in history.sqlite
  size_t buffer_mib = 256;     ///< of samples read and not surveyed

  // The program.
  std::string plugin;  ///< empty: where it usually is

  bool isSimulated() const { return source.empty() && device.empty(); }
};

/// What the options are for. If several are asked for, the last one here wins.
enum class Task { kSurvey, kPluginInfo, kInfo, kListStations, kListDevices };

struct CommandLine {
  Task task = Task::kSurvey;
  Options options{};
};

/// Reads the command line. Returns the text if only that was asked for (--help, --version). Throws
/// UsageError.
std::variant<CommandLine, std::string> parseCommandLine(int argc, const char* const* argv);

}  // namespace pelagrim_host
