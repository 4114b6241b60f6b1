#include "host/options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <functional>

#include "host/sample_format.h"

namespace pelagrim_host {
namespace {

/// Adds an option whose text `parse` turns into a value for `target`, or does not; `expected` says
/// what it takes then.
template <typename Parse, typename Target>
CLI::Option* addParsed(CLI::App& app, const std::string& name, Parse parse, Target& target,
                       const std::string& expected, const std::string& help) {
  const auto take = [=, &target](const std::string& text) {
    const auto value = parse(text);
    if (!value) throw CLI::ValidationError(name, fmt::format("'{}' is not {}", text, expected));
    target = *value;
  };
  return app.add_option_function<std::string>(name, take, help);
}

std::optional<double> parsePositive(std::string_view text) {
  const auto value = parseQuantity(text);
  return value && *value > 0.0 ? value : std::nullopt;
}

std::optional<double> parseNotNegative(std::string_view text) {
  const auto value = parseQuantity(text);
  return value && *value >= 0.0 ? value : std::nullopt;
}

std::optional<int64_t> parseStart(std::string_view text) {
  const auto moment = parseMoment(text);
  return moment && *moment > 0 ? moment : std::nullopt;  // 0 means that there is no time
}

void addSourceOptions(CLI::App& app, Options& options) {
  constexpr const char* kFrequency = "a frequency such as 145.5M";
  constexpr const char* kTime = "a time in seconds such as 2.5";
  app.add_option("SOURCE", options.source,
                 "A raw recording (.cu8 .cs8 .cs16 .cf32 .cf64), or - for standard input; "
                 "without it a simulated band")
      ->type_name("");
  addParsed(app, "--sample-rate", parsePositive, options.sample_rate_hz,
            "a sample rate such as 2.4M", "Samples per second")
      ->type_name("RATE");
  addParsed(app, "--frequency", parseNotNegative, options.frequency_hz, kFrequency,
            "Centre frequency of the recording, or where the simulated receiver starts")
      ->type_name("HZ");
  app.add_option("--format", options.format,
                 "Format of raw samples, when the name does not say: " + sampleFormatNames())
      ->type_name("NAME");
  addParsed(app, "--offset", parseNotNegative, options.offset_seconds, kTime,
            "Skip the beginning of the recording")
      ->type_name("SECONDS");
  app.add_option("--loop", options.plays, "Play the recording N times; 0 plays it without end")
      ->type_name("N");
  addParsed(app, "--start-time", parseStart, options.start_unix_ms,
            "a time such as 2024-11-16T12:00:00Z, or Unix milliseconds",
            "When the first sample was received, UTC or Unix milliseconds; else what the "
            "recording says, else the age of its file")
      ->type_name("TIME");
  addParsed(app, "--simulate", parseFrequencyRange, options.simulated_range,
            "a range such as 144M:146M",
            "The simulated band, where it is not the band surveyed")
      ->type_name("LOW:HIGH");
  app.add_option("--seed", options.seed, "Seed of the simulated band; the same one, the same band")
      ->type_name("N");
}

void addSurveyOptions(CLI::App& app, Options& options) {
  app.add_option("--dir", options.survey_dir,
                 "Survey directory, which holds survey.cfg and survey.csv; else "
                 "$ORVANE_SURVEY_DIR, else one named after the source")
      ->type_name("DIR");
  addParsed(app, "--band", parseFrequencyRange, options.band, "a range such as 144M:146M",
            "Band to survey")
      ->type_name("LOW:HIGH");
  addParsed(app, "--dwell", parsePositive, options.dwell_seconds, "a time in seconds such as 20",
            "Time on each slice of the band")
      ->type_name("SECONDS");
  addParsed(app, "--threshold", parseQuantity, options.threshold_db, "a level in dB such as 12",
            "How far above the noise floor a signal has to stand")
      ->type_name("DB");
  addParsed(app, "--raster", parsePositive, options.raster_hz, "a spacing such as 12.5k",
            "Signals closer together than this are one channel")
      ->type_name("HZ");
  auto* const fixed = app.add_flag_callback(
      "--fixed", [&options] { options.sweep = false; }, "Stay on the tuned slice");
  app.add_flag_callback(
         "--sweep", [&options] { options.sweep = true; }, "Move across the band, slice by slice")
      ->excludes(fixed);
}

void addRunOptions(CLI::App& app, Options& options) {
  app.add_option("--passes", options.passes, "End after N passes over the band")
      ->type_name("N")
      ->check(CLI::PositiveNumber);
  addParsed(app, "--duration", parsePositive, options.duration_seconds,
            "a time in seconds such as 60", "End after so much receiver time")
      ->type_name("SECONDS");
  app.add_flag_callback(
      "--no-tune", [&options] { options.may_tune = false; }, "Do not let the plug-in tune");
  app.add_flag("--realtime", options.realtime, "Play no faster than the receiver would");
  app.add_option("--block", options.block_samples,
                 "Samples handed over at once (default: a twentieth of a second, 65536 at most)")
      ->type_name("N")
      ->check(CLI::Range(size_t{1}, size_t{1} << 24));
  app.add_flag("--quiet", options.quiet, "Say nothing but errors and warnings");
}

void addProgramOptions(CLI::App& app, Options& options) {
  app.add_option("--plugin", options.plugin,
                 "Plug-in to load (default: pelagrim_plugin.so, beside the program or in "
                 "lib/pelagrim)")
      ->type_name("PATH");
  app.add_flag("--plugin-info", options.show_plugin_info, "Say what the plug-in is and end");
  app.add_flag("--list-stations", options.list_stations,
               "List the stations of the simulated band and end");
}

}  // namespace

std::variant<Options, std::string> parseOptions(int argc, const char* const* argv) {
  Options options;
  CLI::App app("Surveys a stretch of spectrum: finds the signals in it and keeps a list of them.",
               "pelagrim-survey");
  app.get_formatter()->column_width(28);
  app.set_version_flag("--version", "pelagrim-survey " PELAGRIM_VERSION);
  app.set_help_flag("--help,-h", "Print this text");
  app.footer(
      "Frequencies and rates take the suffixes k, M and G. What --band, --dwell, --threshold,\n"
      "--raster, --fixed and --sweep say is written to survey.cfg and holds from then on.\n"
      "The first Ctrl-C evaluates and saves the dwell in progress, a second leaves at once.\n"
      "Exit status: 0 done, 1 something failed, 2 the command line is wrong.");
  app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  const auto inGroup = [&](const char* name, void (*add)(CLI::App&, Options&)) {
    app.option_defaults()->group(name);
    add(app, options);
  };
  inGroup("Source", addSourceOptions);
  inGroup("Survey", addSurveyOptions);
  inGroup("Run", addRunOptions);
  inGroup("Program", addProgramOptions);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return app.help();
  } catch (const CLI::CallForVersion&) {
    return app.version() + "\n";
  } catch (const CLI::ParseError& error) {
    throw UsageError(fmt::format("{}; see pelagrim-survey --help", error.what()));
  }
  return options;
}

}  // namespace pelagrim_host
