#pragma once

#include <filesystem>

namespace pelagrim_host {

/// What a recording's file is, by the ending of its name, in small letters or capitals.
enum class RecordingKind {
  kRaw,  ///< also whatever is none of the others
  kWav,
  kSigmfArchive,
  kSigmfMeta,
  kSigmfData,
};

RecordingKind recordingKind(const std::filesystem::path& path);

}  // namespace pelagrim_host
