#include "host/commands/open_source.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <utility>

#include "host/process/command_errors.h"
#include "host/session/survey_clock.h"
#include "host/sources/offset_tuned_source.h"
#include "host/sources/open_recording.h"
#include "host/sources/replayed_source.h"
#include "host/sources/soapy_receiver.h"
#include "host/survey_dir/survey_place.h"

namespace pelagrim_host {
namespace {

constexpr double kSimulatedRateHz = 1e6;
constexpr double kLiveRateHz = 2.4e6;  // most receivers can do it, and it suits a survey

constexpr double kReceiverStallSeconds = 5.0;

constexpr const char* kCommandLine = "the command line";

RecordingRequest recordingAsked(const Options& options, const StopFunction& stop) {
  RecordingRequest request{.source = options.source,
                           .told = {},
                           .verify = options.verify,
                           .stop = stop,
                           .stall_seconds = options.stall_timeout_seconds};
  RecordingFacts& told = request.told;
  if (!options.format.empty()) told.format = {options.format, kCommandLine};
  if (options.sample_rate_hz) told.rate_hz = {*options.sample_rate_hz, kCommandLine};
  if (options.frequency_hz) told.centre_hz = {*options.frequency_hz, kCommandLine};
  if (options.start_unix_ms) told.start_unix_ms = {*options.start_unix_ms, kCommandLine};
  return request;
}

bool isStandardInput(const Options& options) {
  return options.source == "-";
}

/// Without anything to hear a survey would end in order and find nothing.
void refuseBandElsewhere(const Options& options, const pelagrim::Settings& settings) {
  if (!options.simulated_range || !(options.band || settings.sweep)) return;
  const auto [low_hz, high_hz] = *options.simulated_range;
  if (settings.start_hz <= high_hz && low_hz <= settings.stop_hz) return;
  throw UsageError(fmt::format(
      "--simulate: the band to survey, {} to {}, is no part of {} to {}; give --band within it",
      formatFrequency(settings.start_hz), formatFrequency(settings.stop_hz),
      formatFrequency(low_hz), formatFrequency(high_hz)));
}

std::unique_ptr<IqSource> openSimulatedBand(const Options& options,
                                            const pelagrim::Settings& settings) {
  if (!options.format.empty() || options.plays != 1 || options.offset_seconds != 0.0 ||
      options.verify) {
    throw UsageError("--format, --loop, --offset and --verify are for a recording; name one");
  }
  if (options.stall_timeout_seconds) {
    throw UsageError("--stall-timeout is for a receiver or a pipe; the simulated band never waits");
  }
  refuseBandElsewhere(options, settings);
  return std::make_unique<SimulatedBand>(simulatedBandConfig(options, settings));
}

/// A live receiver starts where a sweep does, else in the middle of the band, unless told
/// otherwise.
std::unique_ptr<IqSource> openLive(const Options& options, const pelagrim::Settings& settings,
                                   const StopFunction& stop) {
  const double rate_hz = options.sample_rate_hz.value_or(kLiveRateHz);
  const double first_centre_hz = settings.sweep ? settings.start_hz + 0.5 * rate_hz
                                                : 0.5 * (settings.start_hz + settings.stop_hz);
  return openReceiver(
      {.device = options.device,
       .sample_rate_hz = rate_hz,
       .centre_hz = options.frequency_hz.value_or(first_centre_hz),
       .gain = options.gain,
       .antenna = options.antenna,
       .ppm = options.ppm,
       .bandwidth_hz = options.bandwidth_hz,
       .settle_seconds = options.settle_seconds,
       .stall_timeout_seconds = options.stall_timeout_seconds.value_or(kReceiverStallSeconds),
       .stop = stop});
}

std::unique_ptr<IqSource> openTunable(const Options& options, const pelagrim::Settings& settings,
                                      const RemarkSink& remark, const StopFunction& stop) {
  auto source = options.isSimulated() ? openSimulatedBand(options, settings)
                                      : openLive(options, settings, stop);
  if (options.lo_offset_hz == 0.0) return source;
  const bool is_above = options.lo_offset_hz > 0.0;
  remark(fmt::format(
      "--lo-offset: the {} {} of every slice show what lies beyond its other edge, {} away",
      is_above ? "lowest" : "highest", formatFrequency(std::abs(options.lo_offset_hz)),
      formatFrequency(source->sampleRateHz())));
  return std::make_unique<OffsetTunedSource>(std::move(source), options.lo_offset_hz);
}

/// The stations of a recording are not known, and nobody can change when they transmit.
void refuseSimulatedOnly(const Options& options) {
  if (!options.irregular && options.truth.empty()) return;
  throw UsageError(fmt::format("{} is for the simulated band; leave {} out",
                               options.irregular ? "--irregular" : "--truth", options.source));
}

/// Says what is wrong with the file's name itself, before anything is asked about its samples.
void requireRecording(const std::string& source) {
  struct stat found = {};
  if (stat(source.c_str(), &found) != 0) {
    throw SourceError(fmt::format("cannot open {}: {}", source, std::strerror(errno)));
  }
  if (!S_ISDIR(found.st_mode)) return;
  if (stat(resultsPath(source).c_str(), &found) == 0) {
    throw UsageError(
        fmt::format("{} is a directory that holds a survey; did you mean "
                    "pelagrim-survey report {}?",
                    source, source));
  }
  throw SourceError(fmt::format("{} is a directory; name a recording", source));
}

}  // namespace

SimulatedBandConfig simulatedBandConfig(const Options& options,
                                        const pelagrim::Settings& settings) {
  SimulatedBandConfig config;
  const FrequencyRange surveyed = {settings.start_hz, settings.stop_hz};
  const FrequencyRange simulated = options.simulated_range.value_or(surveyed);
  config.low_hz = simulated.low_hz;
  config.high_hz = simulated.high_hz;
  config.sample_rate_hz = options.sample_rate_hz.value_or(kSimulatedRateHz);
  config.centre_hz = options.frequency_hz;
  if (!config.centre_hz && settings.sweep) {
    config.centre_hz = simulated.low_hz + 0.5 * config.sample_rate_hz;
  }
  config.seed = options.seed;
  config.irregular = options.irregular;
  return config;
}

std::unique_ptr<IqSource> openSource(const Options& options, const pelagrim::Settings& settings,
                                     const RemarkSink& remark, const StopFunction& stop) {
  if (options.source.empty()) return openTunable(options, settings, remark, stop);
  refuseSimulatedOnly(options);
  if (!isStandardInput(options)) requireRecording(options.source);
  if (options.lo_offset_hz != 0.0) {
    throw UsageError("--lo-offset: a recording cannot be tuned; leave the option out");
  }
  if (options.plays == 1 && options.offset_seconds == 0.0)
    return openRecording(recordingAsked(options, stop), remark);
  if (options.plays != 1 && isStandardInput(options)) {
    throw UsageError("--loop: standard input cannot be played again; name a file");
  }
  return std::make_unique<ReplayedSource>(
      [request = recordingAsked(options, stop), remark = RemarkSink(remark)]() mutable {
        auto source = openRecording(request, remark);
        request.verify = false;  // once is enough, for remarks as well
        remark = [](const std::string&) {};
        return source;
      },
      options.plays, options.offset_seconds, stop);
}

StartTime startTime(const Options& options, const IqSource& source) {
  const auto offset_ms = static_cast<int64_t>(options.offset_seconds * 1000.0);
  if (options.start_unix_ms) return {*options.start_unix_ms + offset_ms, "the command line"};
  if (const auto start_ms = source.startUnixMs()) {
    return {*start_ms, options.isSimulated() ? "the simulation" : "the recording"};
  }
  struct stat status = {};
  if (options.source.empty() || isStandardInput(options) ||
      stat(options.source.c_str(), &status) != 0) {
    return {wallClockMs(), "the clock"};
  }
  const int64_t file_ms =
      int64_t{status.st_mtim.tv_sec} * 1000 + status.st_mtim.tv_nsec / 1'000'000;
  // The file was last written when the recording ended.
  const double length_seconds =
      static_cast<double>(source.lengthSamples().value_or(0)) / source.sampleRateHz();
  const auto length_ms = static_cast<int64_t>(std::min(length_seconds, 1e9) * 1000.0);
  return {file_ms - length_ms + offset_ms, "the age of its file", true};
}

std::optional<std::filesystem::path> recordingFile(const Options& options) {
  std::filesystem::path path = options.source;
  std::error_code error;
  if (path.extension() == ".sigmf-meta") {
    auto samples = path;
    samples.replace_extension(".sigmf-data");
    if (std::filesystem::is_regular_file(samples, error)) path = samples;
  }
  if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
  return path;
}

}  // namespace pelagrim_host
