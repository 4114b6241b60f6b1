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
  /// A header that a recorder never completed, with a length of 0 before samples or one that stands
  /// for an unknown one, is read as one whose samples fill the file. Throws SourceError, which calls the file `name`.
  WavFile(const std::filesystem::path& path, const std::string& name);
  ~WavFile();
  WavFile(const WavFile&) = delete;
  WavFile& operator=(const WavFile&) = delete;

  /// Where a file is read that libsndfile does not read by itself.
  struct Position {
    int file;
    sf_count_t byte;
    sf_count_t
        data_length_byte;  ///< where to show the length of the samples as unknown; 0: nowhere
  };

  SNDFILE* sound() const { return sound_.get(); }
  const SF_INFO& info() const { return info_; }

  /// How many bytes of samples the header promises; nothing where a streaming writer could not know.
  std::optional<uint64_t> promisedBytes() const;

  /// How many bytes follow the samples that the header promises and are nothing that may follow them.
  uint64_t bytesAfter() const { return bytes_after_; }

  /// The chunk's bytes, at most 4096; nothing when there is none.
  std::optional<std::string> chunk(const char (&id)[5]) const;

 private:
  /// Whether the library has to be told that the samples go on to the end. Else finds bytes_after_.
  bool lengthIsUnknown();

  Position position_;
  SF_INFO info_ = {};
  uint64_t bytes_after_ = 0;
  std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> sound_;
};

}  // namespace pelagrim_host
