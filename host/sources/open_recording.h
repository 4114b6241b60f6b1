#pragma once

#include <memory>
#include <string>

#include "host/sources/iq_source.h"
#include "host/sources/recording.h"

namespace pelagrim_host {

/// A recording, and what the user says of it.
struct RecordingRequest {
  std::string source;   ///< a file's name; "-" is standard input
  RecordingFacts told;  ///< stands over all else; with a format the file is taken for raw samples
  bool verify = false;  ///< compare a SigMF recording with its checksum first
};

/// Opens a recording as what its name says it is: SigMF, WAV or raw samples. Rate, centre and start
/// are what is told, else what the recording's metadata say, else its name. `remark` is called while
/// it is opened. Throws UsageError where the command line has to say more, SourceError where the
/// recording cannot be had.
std::unique_ptr<IqSource> openRecording(const RecordingRequest& request, const RemarkSink& remark);

}  // namespace pelagrim_host
