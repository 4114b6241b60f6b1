#pragma once

#include <sndfile.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace pelagrim_host {

/// A WAV or RF64 file, opened by libsndfile. One thread uses it.
class WavFile {
 public:
  /// A header that a recorder never completed, with a length of 0 before samples, is read as one
  /// whose samples fill the file. Throws SourceError, which calls the file `name`.
  WavFile(const std::filesystem::path& path, const std::string& name);
  ~WavFile();
  WavFile(const WavFile&) = delete;
  WavFile& operator=(const WavFile&) = delete;

  /// Where a file is read that libsndfile does not read by itself.
  struct Position {
    int file;
    sf_count_t byte;
  };

  SNDFILE* sound() const { return sound_.get(); }
  const SF_INFO& info() const { return info_; }

  /// How many bytes of samples the header promises; nothing where a streaming writer could not know.
  std::optional<uint64_t> promisedBytes() const;

  /// The chunk's bytes, at most 4096; nothing when there is none.
  std::optional<std::string> chunk(const char (&id)[5]) const;

 private:
  Position position_;
  SF_INFO info_ = {};
  std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> sound_;
};

}  // namespace pelagrim_host
