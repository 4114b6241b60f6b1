#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <variant>

#include "host/commands/export_command.h"
#include "host/commands/report_command.h"
#include "host/commands/survey_command.h"
#include "host/commands/survey_options.h"
#include "host/process/signals.h"
#include "host/process/text_output.h"
#include "host/process/usage_error.h"
#include "host/text/display_text.h"

int main(int argc, char** argv) {
  enum ExitStatus { kDone = 0, kFailed = 1, kWrongUsage = 2 };
  using namespace pelagrim_host;
  const auto complain = [](const std::exception& failure) {
    // Names of files may hold anything; it stays one line, and steers no terminal.
    TextOutput(stderr).write(fmt::format("pelagrim-survey: {}\n", displayText(failure.what())));
  };
  try {
    if (argc > 1 && std::string_view(argv[1]) == "report") {
      runReport(argc - 1, argv + 1);
    } else if (argc > 1 && std::string_view(argv[1]) == "export") {
      runExport(argc - 1, argv + 1);
    } else {
      installSignalHandlers();
      const auto command = parseOptions(argc, argv);
      if (const auto* const text = std::get_if<std::string>(&command)) {
        TextOutput(stdout).write(*text);
      } else {
        runCommand(std::get<Options>(command));
      }
    }
    requireOutput();
    return kDone;
  } catch (const UsageError& failure) {
    complain(failure);
    return kWrongUsage;
  } catch (const std::exception& failure) {
    complain(failure);
    return kFailed;
  }
}
