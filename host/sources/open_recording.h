#pragma once

#include <memory>

#include "host/sources/iq_source.h"
#include "host/sources/recording.h"

namespace pelagrim_host {

/// Opens a recording as what its name says it is: SigMF, WAV or raw samples. Rate, centre and start
/// are what is told, else what the recording's metadata say, else what its name says. `remark` is
/// called before this returns or not at all. Throws UsageError where the command line has to say
/// more, SourceError where the recording cannot be had.
std::unique_ptr<IqSource> openRecording(const RecordingRequest& request, const RemarkSink& remark);

}  // namespace pelagrim_host
