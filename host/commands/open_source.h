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

/// What the simulated band is, from the command line and the settings that will be in force: it
/// lies where the survey looks unless it is put elsewhere, and a sweep starts on its first slice.
SimulatedBandConfig simulatedBandConfig(const Options& options, const pelagrim::Settings& settings);

/// Opens what the command line names. Throws UsageError where the command line has to say more,
/// SourceError where the source cannot be had. `remark` gets what there is to say of it, before
/// this returns.
std::unique_ptr<IqSource> openSource(const Options& options, const pelagrim::Settings& settings,
                                     const RemarkSink& remark);

/// When the source's first sample is taken to have been received: as the command line says, as the
/// source knows, as long before the age of a recording's file as it lasts, else now.
StartTime startTime(const Options& options, const IqSource& source);

/// The regular file that holds a recording's samples, by which it is told from others; nothing for
/// what is piped and for other sources.
std::optional<std::filesystem::path> recordingFile(const Options& options);

}  // namespace pelagrim_host
