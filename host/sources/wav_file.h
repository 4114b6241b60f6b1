#pragma once

#include <sndfile.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "host/sources/wav_chunks.h"

namespace pelagrim_host {

/// A WAV or RF64 file, opened by libsndfile. Used by one thread.
class WavFile {
 public:
  /// If a recorder never completed the header, so that its length is 0 or one that means unknown,
  /// the samples fill the file. Throws SourceError, which calls the file `name`.
  WavFile(const std::filesystem::path& path, const std::string& name);
  ~WavFile();
  WavFile(const WavFile&) = delete;
  WavFile& operator=(const WavFile&) = delete;

  /// The state of reading the file for libsndfile.
  struct Position {
    int file;
    sf_count_t byte;
    /// Where to show the length of the samples as unknown; 0: nowhere.
    sf_count_t data_length_byte;
  };

  SNDFILE* sound() const { return sound_.get(); }
  const SF_INFO& info() const { return info_; }
  const WavChunks& chunks() const { return chunks_; }

  /// How many bytes follow the samples that the header promises and are not chunks.
  uint64_t bytesAfter() const { return bytes_after_; }

 private:
  /// Whether the library must be told that the samples go on to the end. If not, finds
  /// bytes_after_.
  bool lengthIsUnknown();

  Position position_;
  WavChunks chunks_;
  SF_INFO info_ = {};
  uint64_t bytes_after_ = 0;
  std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> sound_;
};

}  // namespace pelagrim_host
