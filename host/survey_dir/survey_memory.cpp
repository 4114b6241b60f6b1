#include "host/survey_dir/survey_memory.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <span>
#include <utility>
#include <vector>

#include "host/process/digest.h"
#include "host/process/whole_file.h"
#include "host/survey_dir/survey_place.h"

namespace pelagrim_host {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<std::pair<SourceKind, const char*>, 4> kKinds = {{
    {SourceKind::kRecording, "recording"},
    {SourceKind::kStandardInput, "standard input"},
    {SourceKind::kReceiver, "receiver"},
    {SourceKind::kSimulation, "simulation"},
}};

std::filesystem::path memoryPath(const std::filesystem::path& survey_dir) {
  return survey_dir / "survey-source.json";
}

const char* kindName(SourceKind kind) {
  return kKinds.at(static_cast<size_t>(kind)).second;
}

SourceKind kindNamed(const std::string& name) {
  const auto* const known = std::find_if(kKinds.begin(), kKinds.end(),
                                         [&](const auto& row) { return row.second == name; });
  if (known == kKinds.end()) throw std::runtime_error("no such kind of source");
  return known->first;
}

}  // namespace

FileIdentity identityOf(const std::filesystem::path& path) {
  constexpr std::streamoff kPieceBytes = 1 << 20;
  errno = 0;
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const std::streamoff bytes = file.tellg();
  Digest digest(Digest::Kind::kSha256);
  std::vector<char> piece(
      static_cast<size_t>(std::min(kPieceBytes, std::max<std::streamoff>(bytes, 0))));
  for (const std::streamoff begin : {std::streamoff{0}, bytes - std::streamoff(piece.size())}) {
    file.seekg(begin);
    file.read(piece.data(), static_cast<std::streamsize>(piece.size()));
    digest.add(std::as_bytes(std::span(piece)));
  }
  if (!file) {
    throw FileError("cannot read " + path.string() + ": " +
                    (errno == 0 ? "read error" : std::strerror(errno)));
  }
  return {static_cast<uint64_t>(bytes), digest.hex()};
}

bool areOfOneSource(const SurveyMemory& one, const SurveyMemory& other) {
  if (one.kind != other.kind || one.identity != other.identity) return false;
  return one.identity || one.source == other.source;
}

std::optional<SurveyMemory> readMemory(const std::filesystem::path& survey_dir) {
  const auto text = readIfThere(memoryPath(survey_dir));
  if (!text) return std::nullopt;
  try {
    const Json json = Json::parse(*text);
    SurveyMemory memory;
    const Json& source = json.at("source");
    memory.kind = kindNamed(source.at("kind"));
    memory.source = source.at("name");
    if (source.contains("sha256")) memory.identity = {source.at("bytes"), source.at("sha256")};
    memory.start_is_guess = source.at("start_is_guess");
    if (source.contains("length_seconds")) memory.length_seconds = source.at("length_seconds");
    const Json& settings = json.at("settings");
    memory.settings = {.start_hz = settings.at("start"),
                       .stop_hz = settings.at("stop"),
                       .threshold_db = settings.at("threshold_db"),
                       .dwell_seconds = settings.at("dwell_seconds"),
                       .raster_hz = settings.at("raster_hz"),
                       .sweep = settings.at("sweep")};
    memory.program = json.at("program");
    return memory;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

void writeMemory(const std::filesystem::path& survey_dir, const SurveyMemory& memory) {
  Json source = {{"kind", kindName(memory.kind)}, {"name", memory.source}};
  if (memory.identity) {
    source["bytes"] = memory.identity->bytes;
    source["sha256"] = memory.identity->sha256;
  }
  source["start_is_guess"] = memory.start_is_guess;
  if (memory.length_seconds) source["length_seconds"] = *memory.length_seconds;
  const pelagrim::Settings& set = memory.settings;
  const Json json = {{"program", memory.program},
                     {"source", source},
                     {"settings",
                      {{"start", set.start_hz},
                       {"stop", set.stop_hz},
                       {"threshold_db", set.threshold_db},
                       {"dwell_seconds", set.dwell_seconds},
                       {"raster_hz", set.raster_hz},
                       {"sweep", set.sweep}}}};
  const std::string text = json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
  const auto path = memoryPath(survey_dir);
  if (readIfThere(path) != text) replaceFile(path, text);
}

void putBackMemory(const std::filesystem::path& survey_dir,
                   const std::optional<SurveyMemory>& memory) {
  if (memory) {
    writeMemory(survey_dir, *memory);
  } else {
    std::filesystem::remove(memoryPath(survey_dir));
  }
}

}  // namespace pelagrim_host
