#pragma once

#include "host/commands/command_table.h"
#include "host/commands/survey_options.h"

namespace pelagrim_host {

// The commands, one file for each. All throw UsageError and std::runtime_error.

/// Surveys a source until it ends or the user stops it.
void runSurvey(const Options& options);

/// Says what the source is and where each fact comes from. If too little is known for a survey,
/// says what there is and throws UsageError, which names the rest.
void runInfo(const Options& options);

/// Lists the stations of the simulated band.
void runListStations(const Options& options);

/// Lists the live receivers.
void runListDevices(const Options& options);

/// Shows the plug-in's description.
void runPluginInfo(const Options& options);

/// Draws a saved survey.
void runReport(const WordCommand& self, int argc, const char* const* argv);

/// Says what the record of a survey holds, and how long each channel was on the air.
void runHistory(const WordCommand& self, int argc, const char* const* argv);

/// Writes the channels of a saved survey for another program.
void runExport(const WordCommand& self, int argc, const char* const* argv);

}  // namespace pelagrim_host
