#include "host/commands/command_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <numeric>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "host/commands/commands.h"
#include "host/process/command_errors.h"
#include "host/process/signals.h"
#include "host/process/text_output.h"
#include "host/text/letter_case.h"

namespace pelagrim_host {

const std::vector<WordCommand>& wordCommands() {
  static const std::vector<WordCommand> commands = {
      {"report", "Draws a survey: a page with a picture of the band and a table of its channels.",
       runReport},
      {"history", "Says how long each channel of a survey was on the air, from its record.",
       runHistory},
      {"export", "Writes the channels of a survey for another program.", runExport},
  };
  return commands;
}

const std::vector<OptionCommand>& optionCommands() {
  static const std::vector<OptionCommand> commands = {
      {Task::kSurvey, "",
       "Surveys a stretch of spectrum: finds the signals in it and keeps a list of them.",
       runSurvey},
      {Task::kListDevices, "--list-devices", "List the receivers found, then exit", runListDevices},
      {Task::kListStations, "--list-stations", "List the stations of the simulated band, then exit",
       runListStations},
      {Task::kInfo, "--info", "Say what the source is and how that is known, then exit", runInfo},
      {Task::kPluginInfo, "--plugin-info", "Show the plug-in's description, then exit",
       runPluginInfo},
  };
  return commands;
}

const OptionCommand& commandFor(Task task) {
  return *std::find_if(optionCommands().begin(), optionCommands().end(),
                       [task](const OptionCommand& command) { return command.task == task; });
}

namespace {

/// How many letters have to be put in, left out, changed or swapped with their neighbour.
size_t editDistance(std::string_view left, std::string_view right) {
  std::vector<size_t> before_last;
  std::vector<size_t> last(right.size() + 1);
  std::iota(last.begin(), last.end(), size_t{0});
  for (size_t i = 1; i <= left.size(); ++i) {
    std::vector<size_t> row = {i};
    for (size_t j = 1; j <= right.size(); ++j) {
      const size_t changed = last[j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
      row.push_back(std::min({changed, last[j] + 1, row[j - 1] + 1}));
      const bool is_swapped =
          i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1];
      if (is_swapped) row[j] = std::min(row[j], before_last[j - 2] + 1);
    }
    before_last = std::exchange(last, row);
  }
  return last.back();
}

/// The command or the option in place of one that comes nearest to `word`; empty when none is near.
std::string nearestCommand(const std::string& word) {
  constexpr size_t kMaxDistance = 2;
  std::vector<std::string> names = {"--help", "--version"};
  for (const WordCommand& command : wordCommands()) names.emplace_back(command.name);
  for (const OptionCommand& command : optionCommands()) names.emplace_back(command.option);
  std::string nearest;
  size_t nearest_distance = std::min(kMaxDistance, word.size() / 2) + 1;
  for (const std::string& name : names) {
    const size_t first = std::min(name.find_first_not_of('-'), name.size());
    const size_t distance = editDistance(lowerCase(word), name.substr(first));
    if (distance >= nearest_distance) continue;
    nearest_distance = distance;
    nearest = name;
  }
  return nearest;
}

/// Where the first word is no file but nearly a command, that is what was meant.
void refuseMistypedCommand(const std::string& word) {
  std::error_code error;
  if (word.empty() || word.starts_with('-') || std::filesystem::exists(word, error)) return;
  const std::string meant = nearestCommand(word);
  if (meant.empty()) return;
  throw UsageError(fmt::format(
      "there is neither a command nor a file {}; did you mean pelagrim-survey {}?", word, meant));
}

}  // namespace

void runCommandLine(int argc, const char* const* argv) {
  const std::string_view word = argc > 1 ? argv[1] : "";
  for (const WordCommand& command : wordCommands()) {
    if (word == command.name) return command.run(command, argc - 1, argv + 1);
  }
  refuseMistypedCommand(std::string(word));
  installSignalHandlers();
  const auto asked = parseCommandLine(argc, argv);
  if (const auto* const text = std::get_if<std::string>(&asked)) {
    TextOutput(stdout).write(*text);
  } else {
    const auto& [task, options] = std::get<CommandLine>(asked);
    commandFor(task).run(options);
  }
}

}  // namespace pelagrim_host
