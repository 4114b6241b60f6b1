#include "host/sources/recording_kind.h"

#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "host/text/letter_case.h"

namespace pelagrim_host {

RecordingKind recordingKind(const std::filesystem::path& path) {
  constexpr std::array<std::pair<std::string_view, RecordingKind>, 6> kKinds = {{
      {".wav", RecordingKind::kWav},
      {".wave", RecordingKind::kWav},
      {".rf64", RecordingKind::kWav},
      {".sigmf", RecordingKind::kSigmfArchive},
      {".sigmf-meta", RecordingKind::kSigmfMeta},
      {".sigmf-data", RecordingKind::kSigmfData},
  }};
  const std::string extension = lowerCase(path.extension().string());
  for (const auto& [name, kind] : kKinds) {
    if (extension == name) return kind;
  }
  return RecordingKind::kRaw;
}

}  // namespace pelagrim_host
