#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "survey/settings.h"

namespace pelagrim_host {

/// What tells one recording from another without reading all of it: its length and a checksum of
/// its first and last mebibyte.
struct FileIdentity {
  uint64_t bytes = 0;
  std::string sha256;  ///< in hexadecimal digits

  bool operator==(const FileIdentity&) const = default;
};

/// Throws FileError.
FileIdentity identityOf(const std::filesystem::path& path);

enum class SourceKind { kRecording, kStandardInput, kReceiver, kSimulation };

/// What a survey directory remembers about the last run that surveyed into it, in the file
/// survey-source.json. The plug-in does not know about it.
struct SurveyMemory {
  SourceKind kind = SourceKind::kRecording;
  std::string source;                      ///< as the user knows it
  std::optional<FileIdentity> identity;    ///< of a recording
  pelagrim::Settings settings;             ///< in force in that run
  bool start_is_guess = false;             ///< times were taken from the time stamp of the file
  std::optional<double> length_seconds{};  ///< of a recording, if known
  std::string program;                     ///< its name and version
};

/// Whether both are of the same recording or receiver, or of the simulation.
bool areOfOneSource(const SurveyMemory& one, const SurveyMemory& other);

/// Nothing if there is no such file, or one that makes no sense.
std::optional<SurveyMemory> readMemory(const std::filesystem::path& survey_dir);

/// Does nothing if the file already says so, which a full disk allows. Throws FileError.
void writeMemory(const std::filesystem::path& survey_dir, const SurveyMemory& memory);

/// Makes readMemory return `memory` again. Throws FileError.
void putBackMemory(const std::filesystem::path& survey_dir,
                   const std::optional<SurveyMemory>& memory);

}  // namespace pelagrim_host
