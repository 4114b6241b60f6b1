#pragma once

#include <filesystem>

namespace pelagrim_host {

/// The kind of a recording's file, from the ending of its name, in either case.
enum class RecordingKind {
  kRaw,  ///< and anything else
  kWav,
  kSigmfArchive,
  kSigmfMeta,
  kSigmfData,
};

RecordingKind recordingKind(const std::filesystem::path& path);

}  // namespace pelagrim_host
