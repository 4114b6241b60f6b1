#include "host/sources/open_recording.h"

#include <fmt/format.h>

#include "host/process/command_errors.h"
#include "host/sources/raw_recording.h"
#include "host/sources/recording_kind.h"
#include "host/sources/sigmf_recording.h"
#include "host/sources/wav_recording.h"

namespace pelagrim_host {

std::unique_ptr<IqSource> openRecording(const RecordingRequest& request, const RemarkSink& remark) {
  const RecordingKind kind = recordingKind(request.source);
  const bool has_format = request.told.format.has_value();
  if (has_format && (kind == RecordingKind::kSigmfArchive || kind == RecordingKind::kSigmfMeta)) {
    throw UsageError(
        fmt::format("--format: {} is not a file of samples; to read a recording's samples whatever "
                    "its metadata say, name its .sigmf-data",
                    request.source));
  }
  const bool is_raw = has_format || kind == RecordingKind::kRaw;
  if (request.verify && (is_raw || kind == RecordingKind::kWav)) {
    throw UsageError("--verify: only a SigMF recording has a checksum");
  }
  if (is_raw) return std::make_unique<RawRecording>(request);
  if (kind == RecordingKind::kWav) return std::make_unique<WavRecording>(request);
  return std::make_unique<SigmfRecording>(request, remark);
}

}  // namespace pelagrim_host
