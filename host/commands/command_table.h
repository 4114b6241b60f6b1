#pragma once

#include <string_view>
#include <vector>

#include "host/commands/survey_options.h"

namespace pelagrim_host {

/// A command that is the first word of the command line, such as "report", and reads the rest
/// itself. `argv` begins with that word.
struct WordCommand {
  const char* name;
  const char* what;  ///< one line for the help text
  void (*run)(const WordCommand& self, int argc, const char* const* argv);
};

/// What is done without such a word: a survey, or what an option such as --info asks for instead.
struct OptionCommand {
  Task task;
  const char* option;  ///< empty for the survey itself
  const char* what;    ///< one line for the help text
  void (*run)(const Options& options);
};

/// All commands of the program.
const std::vector<WordCommand>& wordCommands();
const std::vector<OptionCommand>& optionCommands();

const OptionCommand& commandFor(Task task);

/// Runs what the command line asks for. Throws UsageError if the command line is wrong, another
/// std::exception if the command fails.
void runCommandLine(int argc, const char* const* argv);

}  // namespace pelagrim_host
