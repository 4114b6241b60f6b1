#include <fmt/format.h>

#include <cstdio>
#include <string>

#include "host/commands/commands.h"
#include "host/commands/open_source.h"
#include "host/commands/survey_setup.h"
#include "host/process/signals.h"
#include "host/process/text_output.h"
#include "host/text/display_text.h"
#include "host/view/source_text.h"

namespace pelagrim_host {

void runInfo(const Options& options) {
  TextOutput errors(stderr);
  TextOutput output(stdout);
  try {
    const auto source = openSource(
        options, setUpSurvey(options).inForce(),
        [&errors](const std::string& line) {
          errors.write(fmt::format("pelagrim-survey: {}\n", displayText(line)));
        },
        stopRequested);
    output.write(sourceTable(*source, startTime(options, *source)));
  } catch (const UnknownFacts& unknown) {
    output.write(factsTable(options.source, unknown.known));
    throw;  // what is missing, for a survey, too
  }
}

}  // namespace pelagrim_host
