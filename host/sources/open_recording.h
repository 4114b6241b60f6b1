#pragma once

#include <memory>

#include "host/options.h"
#include "host/sources/iq_source.h"
#include "host/sources/recording.h"

namespace pelagrim_host {

/// Opens the recording that the command line names, as what its name says it is: SigMF, WAV or raw
/// samples; the latter too when a format is given. Rate, centre and start are taken from the
/// command line, else from the recording's metadata, else from its name. Throws UsageError where
/// the command line has to say more, SourceError where the recording cannot be had.
std::unique_ptr<IqSource> openRecording(const Options& options, const RemarkSink& remark);

}  // namespace pelagrim_host
