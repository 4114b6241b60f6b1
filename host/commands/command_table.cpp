#include "host/commands/command_table.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>
#include <variant>

#include "host/commands/commands.h"
#include "host/process/signals.h"
#include "host/process/text_output.h"

namespace pelagrim_host {

const std::vector<WordCommand>& wordCommands() {
  static const std::vector<WordCommand> commands = {
      {"report", "Draws a survey: a page with a picture of the band and a table of its channels.",
       runReport},
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

void runCommandLine(int argc, const char* const* argv) {
  const std::string_view word = argc > 1 ? argv[1] : "";
  for (const WordCommand& command : wordCommands()) {
    if (word == command.name) return command.run(command, argc - 1, argv + 1);
  }
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
