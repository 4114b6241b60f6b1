#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "host/commands/survey_options.h"
#include "host/simulation/simulated_band.h"
#include "host/sources/iq_source.h"
#include "host/sources/recording.h"
#include "host/sources/start_time.h"
#include "survey/settings.h"

namespace pelagrim_host {

/// The simulated band, from the command line and the settings that will be in force: it is the band
/// of the survey unless told otherwise, and a sweep starts on its first slice.
SimulatedBandConfig simulatedBandConfig(const Options& options, const pelagrim::Settings& settings);

/// Opens what the command line names. Throws UsageError if the command line has to say more,
/// SourceError if the source cannot be opened. `remark` gets lines about it for the user, before
/// this returns; `stop` makes everything return that waits for samples, now and later.
std::unique_ptr<IqSource> openSource(const Options& options, const pelagrim::Settings& settings,
                                     const RemarkSink& remark, const StopFunction& stop);

/// When the source's first sample was received: from the command line, else from the source, else
/// from a recording's length and its file's time stamp, else now.
StartTime startTime(const Options& options, const IqSource& source);

/// The regular file that holds a recording's samples, which tells it from others; nothing for a
/// pipe and for other sources.
std::optional<std::filesystem::path> recordingFile(const Options& options);

}  // namespace pelagrim_host
