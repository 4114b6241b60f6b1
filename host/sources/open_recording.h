#pragma once

#include <memory>

#include "host/sources/iq_source.h"
#include "host/sources/recording.h"

namespace pelagrim_host {

/// Opens a recording as what its name says it is: SigMF, WAV or raw samples. Rate, centre and start
/// come from the command line, else from the recording's metadata, else from its name. `remark` is
/// called before this returns or not at all. Throws UsageError if the command line has to say more,
/// SourceError if the recording cannot be opened.
std::unique_ptr<IqSource> openRecording(const RecordingRequest& request, const RemarkSink& remark);

}  // namespace pelagrim_host
