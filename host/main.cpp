#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <stdexcept>

#include "host/commands/command_table.h"
#include "host/process/command_errors.h"
#include "host/process/text_output.h"
#include "host/text/display_text.h"

namespace {

/// A program may be started without some of its standard streams. The next file to be opened would
/// then take such a number, and messages would be written into it. What cannot be read or written
/// is put there instead, so that a failure is told as before.
void occupyStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) >= 0) continue;
    // The lowest free number is this one.
    [[maybe_unused]] const int opened =
        open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

}  // namespace

int main(int argc, char** argv) {
  enum ExitStatus { kDone = 0, kFailed = 1, kWrongUsage = 2, kTryAgain = 3 };
  using namespace pelagrim_host;
  const auto complain = [](const std::exception& failure) {
    // File names may hold anything; the message stays one line and cannot steer the terminal.
    TextOutput(stderr).write(fmt::format("pelagrim-survey: {}\n", displayText(failure.what())));
  };
  occupyStandardStreams();
  try {
    runCommandLine(argc, argv);
    requireOutput();
    return kDone;
  } catch (const UsageError& failure) {
    complain(failure);
    return kWrongUsage;
  } catch (const TryAgainLater& failure) {
    complain(failure);
    return kTryAgain;
  } catch (const std::exception& failure) {
    complain(failure);
    return kFailed;
  } catch (...) {  // drivers of receivers may throw anything
    complain(std::runtime_error("failed without a reason given"));
    return kFailed;
  }
}
