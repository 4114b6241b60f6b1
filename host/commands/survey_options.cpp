#include "host/commands/survey_options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <memory>
#include <system_error>

#include "host/commands/argument_checks.h"
#include "host/commands/command_table.h"
#include "host/process/command_errors.h"
#include "host/sources/sample_format.h"

namespace pelagrim_host {
namespace {

/// Help that shows an option as "--name VALUE", without the library's other details.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_option_opts(const CLI::Option* option) const override {
    const std::string value = option->get_type_name();
    return value.empty() ? "" : " " + value;
  }
};

constexpr const char* kRange = "a range such as 144M:146M";

/// Adds an option whose text `parse` turns into a value for `target`; if it cannot, the message
/// says what was `expected`.
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

/// A check that asks back where a number has no unit and `meant_by` says what was probably meant.
CLI::Validator unitCheck(std::optional<std::string> (*meant_by)(std::string_view)) {
  const auto ask = [meant_by](const std::string& text) {
    const auto meant = meant_by(text);
    return meant
               ? fmt::format("'{}' is in hertz; did you mean {}? For hertz write Hz", text, *meant)
               : std::string();
  };
  return CLI::Validator(ask, "");
}

/// Adds the option that asks for a task other than a survey.
void addTask(CLI::App& app, Task task, Task& asked) {
  const OptionCommand& command = commandFor(task);
  app.add_flag_callback(
      command.option, [task, &asked] { asked = std::max(asked, task); }, command.what);
}

std::optional<double> parsePositiveHz(std::string_view text) {
  const auto value = parseQuantity(text);
  return value && *value > 0.0 ? value : std::nullopt;
}

std::optional<double> parseNotNegativeHz(std::string_view text) {
  const auto value = parseQuantity(text);
  return value && *value >= 0.0 ? value : std::nullopt;
}

std::optional<double> parseNotNegativeDecibels(std::string_view text) {
  const auto value = parseDecibels(text);
  return value && *value >= 0.0 ? value : std::nullopt;
}

std::optional<double> parsePositiveSeconds(std::string_view text) {
  const auto seconds = parseSeconds(text);
  return seconds && *seconds > 0.0 ? seconds : std::nullopt;
}

std::optional<int64_t> parseStart(std::string_view text) {
  const auto moment = parseMoment(text);
  return moment && *moment > 0 ? moment : std::nullopt;  // 0 means that the time is unknown
}

/// A whole number from `min` to `max`.
template <typename Number>
std::function<std::optional<Number>(const std::string&)> countBetween(Number min, Number max) {
  return [min, max](const std::string& text) -> std::optional<Number> {
    Number count = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, count);
    if (error != std::errc() || stop != end || count < min || count > max) {
      return std::nullopt;
    }
    return count;
  };
}

void addSourceOptions(CLI::App& app, CommandLine& line) {
  Options& options = line.options;
  constexpr const char* kFrequency = "a frequency such as 145.5M";
  constexpr const char* kTime = "a time in seconds such as 2.5";
  constexpr const char* kCount = "a whole number";
  app.add_option("SOURCE", options.source,
                 "A recording (SigMF, WAV or raw samples), or - for standard input;\n"
                 "without it a simulated band")
      ->type_name("")
      ->check(notEmpty);
  addParsed(app, "--sample-rate", parsePositiveHz, options.sample_rate_hz,
            "a sample rate such as 2.4M", "Samples per second")
      ->type_name("RATE")
      ->check(unitCheck(sampleRateMeant));
  addParsed(app, "--frequency", parseNotNegativeHz, options.frequency_hz, kFrequency,
            "Centre of the recording, or where the receiver starts.\n"
            "If not given, both come from the recording or its name")
      ->type_name("HZ")
      ->check(unitCheck(frequencyMeant));
  app.add_option("--format", options.format,
                 "Treat the file as raw samples in this format, whatever its name:\n" +
                     sampleFormatNames(" "))
      ->type_name("NAME")
      ->check(notEmpty);
  addParsed(app, "--offset", parseSeconds, options.offset_seconds, kTime,
            "Skip the beginning of the recording")
      ->type_name("SECONDS");
  addParsed(app, "--loop", countBetween<uint64_t>(0, UINT64_MAX), options.plays, kCount,
            "Play the recording N times; 0 plays it without end")
      ->type_name("N");
  app.add_flag("--verify", options.verify, "Check a SigMF recording against its checksum first");
  addTask(app, Task::kInfo, line.task);
  addParsed(app, "--start-time", parseStart, options.start_unix_ms,
            "a time such as 2024-11-16T12:00:00Z, or Unix milliseconds",
            "When the first sample was received: UTC, or Unix milliseconds.\n"
            "If not given, from the recording, else from the time stamp of its\n"
            "file, which was last written when the recording ended")
      ->type_name("TIME");
  addParsed(app, "--simulate", parseFrequencyRange, options.simulated_range, kRange,
            "The simulated band, if it is not the band to survey")
      ->type_name("LOW:HIGH")
      ->check(unitCheck(frequencyMeant));
  addParsed(app, "--seed", countBetween<uint64_t>(0, UINT64_MAX), options.seed, kCount,
            "Seed of the simulated band: the same seed gives the same samples")
      ->type_name("N");
  app.add_flag("--irregular", options.irregular,
               "Most stations of the simulated band come and go at random");
  app.add_option("--truth", options.truth,
                 "Write each transmission in the simulated band to FILE at the end,\n"
                 "as JSON lines")
      ->type_name("FILE")
      ->check(notEmpty);
}

std::optional<double> parseUpToAMinute(std::string_view text) {
  const auto seconds = parseSeconds(text);
  return seconds && *seconds <= 60.0 ? seconds : std::nullopt;
}

std::optional<double> parsePpm(std::string_view text) {
  const auto value = parsePlainNumber(text);
  return value && std::abs(*value) <= 1000.0 ? value : std::nullopt;
}

/// After the other options of a source, because a receiver excludes some of them.
void addReceiverOptions(CLI::App& app, CommandLine& line) {
  Options& options = line.options;
  auto* const device =
      app.add_option("--device", options.device,
                     "Survey with a live receiver, e.g. driver=rtlsdr (see --list-devices)")
          ->type_name("ARGS")
          ->check(notEmpty);
  for (const char* ruled_out : {"SOURCE", "--format", "--offset", "--loop", "--verify",
                                "--start-time", "--simulate", "--seed", "--irregular", "--truth"}) {
    device->excludes(app.get_option(ruled_out));
  }
  addTask(app, Task::kListDevices, line.task);
  addParsed(app, "--gain", parseGain, options.gain, "a gain such as 32.8, auto or LNA=20,IF=8",
            "In dB, \"auto\", or by stages such as LNA=20,IF=8; if not given,\nthe driver's choice")
      ->type_name("GAIN")
      ->needs(device);
  app.add_option("--antenna", options.antenna, "The antenna socket, by the driver's name for it")
      ->type_name("NAME")
      ->check(notEmpty)
      ->needs(device);
  addParsed(app, "--ppm", parsePpm, options.ppm, "a correction such as -1.5, at most 1000",
            "How far the receiver's crystal runs fast, in millionths")
      ->type_name("PPM")
      ->needs(device);
  addParsed(app, "--bandwidth", parsePositiveHz, options.bandwidth_hz, "a bandwidth such as 2M",
            "Width of the receiver's filter; if not given, the driver's choice")
      ->type_name("HZ")
      ->needs(device);
  addParsed(app, "--lo-offset", parseQuantity, options.lo_offset_hz, "an offset such as 25k",
            "Tune the receiver this far above the centre and shift back digitally,\n"
            "which moves its centre spike; may be negative")
      ->type_name("HZ");
  addParsed(app, "--settle", parseUpToAMinute, options.settle_seconds,
            "a time in seconds such as 0.05, at most 60",
            "How long to drop samples after every tune (usually 0.05)")
      ->type_name("SECONDS")
      ->needs(device);
  addParsed(app, "--stall-timeout", parsePositiveSeconds, options.stall_timeout_seconds,
            "a time in seconds such as 5",
            "How long without samples before the receiver counts as gone (usually 5),\n"
            "or a pipe (usually never)")
      ->type_name("SECONDS");
}

void addSurveyOptions(CLI::App& app, CommandLine& line) {
  Options& options = line.options;
  app.add_option("--dir", options.survey_dir,
                 "Directory of survey.cfg and survey.csv; if not given $ORVANE_SURVEY_DIR,\n"
                 "else with --device ~/.orvane/pelagrim, which the receiver program\n"
                 "uses, too, else one here that is named after the source")
      ->type_name("DIR")
      ->check(notEmpty);
  auto* const fresh = app.add_flag_callback(
      "--fresh", [&options] { options.list_wish = ListWish::kFresh; },
      "Start a new list; the old one is kept as survey-1.csv or the\n"
      "next number. The default for a recording that was surveyed there before");
  app.add_flag_callback(
         "--continue", [&options] { options.list_wish = ListWish::kContinue; },
         "Carry on with the list there, whatever its source. The default for receivers\n"
         "and the simulated band")
      ->excludes(fresh);
  addParsed(app, "--band", parseFrequencyRange, options.band, kRange, "Band to survey")
      ->type_name("LOW:HIGH")
      ->check(unitCheck(frequencyMeant));
  addParsed(app, "--dwell", parsePositiveSeconds, options.dwell_seconds,
            "a time in seconds such as 20", "Time on each slice of the band")
      ->type_name("SECONDS");
  addParsed(app, "--threshold", parseNotNegativeDecibels, options.threshold_db,
            "a level in dB from 0 on, such as 12", "How far above the noise floor a signal must be")
      ->type_name("DB");
  addParsed(app, "--raster", parsePositiveHz, options.raster_hz, "a spacing such as 12.5k",
            "Signals closer together than this are one channel")
      ->type_name("HZ");
  auto* const fixed = app.add_flag_callback(
      "--fixed", [&options] { options.sweep = false; }, "Stay on the tuned slice");
  app.add_flag_callback(
         "--sweep", [&options] { options.sweep = true; }, "Move across the band, slice by slice")
      ->excludes(fixed);
}

void addRunOptions(CLI::App& app, CommandLine& line) {
  Options& options = line.options;
  constexpr uint32_t kMaxBlockSamples = 1 << 24;
  constexpr uint32_t kMaxThreads = 64;
  constexpr size_t kMaxBufferMib = 65536;
  addParsed(app, "--passes", countBetween<uint32_t>(1, UINT32_MAX), options.passes,
            "a whole number from 1 on", "End after N passes over the band")
      ->type_name("N");
  addParsed(app, "--duration", parsePositiveSeconds, options.duration_seconds,
            "a time in seconds such as 60", "End after this much receiver time")
      ->type_name("SECONDS");
  app.add_flag_callback(
      "--no-tune", [&options] { options.may_tune = false; }, "Do not let the plug-in tune");
  app.add_flag("--realtime", options.realtime, "Play no faster than the receiver would")
      ->excludes(app.get_option("--device"));
  addParsed(app, "--block", countBetween<uint32_t>(1, kMaxBlockSamples), options.block_samples,
            "a whole number from 1 to 16777216",
            "Samples to pass to the plug-in at once, at most (usually a\ntwentieth of a second)")
      ->type_name("N");
  addParsed(app, "--threads", countBetween<uint32_t>(1, kMaxThreads), options.threads,
            "a whole number from 1 to 64",
            "1 does everything on one thread, for jobs that fill the processor's\n"
            "cores themselves; else reading and showing have their own")
      ->type_name("N");
  addParsed(app, "--buffer", countBetween<size_t>(1, kMaxBufferMib), options.buffer_mib,
            "a size in MiB from 1 to 65536",
            "Memory for a receiver's samples that wait to be surveyed (usually 256)")
      ->type_name("MIB")
      ->needs(app.get_option("--device"));
  app.add_flag("--history", options.keep_history,
               "Keep a record of every dwell in history.sqlite: spectra, signals, and\n"
               "what was on the air when; see pelagrim-survey history");
  auto* const quiet = app.add_flag("--quiet", options.quiet, "Show only errors and warnings");
  app.add_flag("--json", options.json, "Write one JSON object per line")->excludes(quiet);
}

void addProgramOptions(CLI::App& app, CommandLine& line) {
  Options& options = line.options;
  app.add_option("--plugin", options.plugin,
                 "Plug-in to load; else pelagrim_plugin.so beside the program, or in\n"
                 "../lib/pelagrim where that is root's or the program owner's")
      ->type_name("PATH")
      ->check(notEmpty);
  addTask(app, Task::kPluginInfo, line.task);
  addTask(app, Task::kListStations, line.task);
  app.set_version_flag("--version", "pelagrim-survey " PELAGRIM_VERSION,
                       "Show the version, then exit");
  app.set_help_flag("--help,-h", "Show this text, then exit");
}

}  // namespace

std::variant<CommandLine, std::string> parseCommandLine(int argc, const char* const* argv) {
  CommandLine line;
  CLI::App app(commandFor(Task::kSurvey).what, "pelagrim-survey");
  const auto formatter = std::make_shared<HelpFormatter>();
  formatter->column_width(24);
  app.formatter(formatter);
  app.set_help_flag();  // it would come first, in a separate group
  app.footer(
      "Afterwards: \"pelagrim-survey report\" draws a survey, \"pelagrim-survey export\" writes\n"
      "its channels for other programs; each has its own --help.\n\n"
      "Frequencies and rates take the suffixes k, M and G, and below 1 kHz the unit Hz; times\n"
      "take s, m, h and d. The column Seen is detections / looks since the channel was first\n"
      "heard.\n"
      "--band, --dwell, --threshold, --raster, --fixed and --sweep are written to survey.cfg\n"
      "and stay in force from then on.\n"
      "The first Ctrl-C evaluates and saves the current dwell, a second leaves at once.\n"
      "SIGHUP, or the key r in the live view, also saves, then starts afresh with the current\n"
      "survey.cfg; if sweep has become no, the old band limits stay.\n"
      "Exit status: 0 done, 1 something failed, 2 the command line is wrong,\n"
      "3 another run has the survey directory.");
  app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  const auto inGroup = [&](const char* name, void (*add)(CLI::App&, CommandLine&)) {
    app.option_defaults()->group(name);
    add(app, line);
  };
  inGroup("Source", addSourceOptions);
  inGroup("Receiver", addReceiverOptions);
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
  return line;
}

}  // namespace pelagrim_host
