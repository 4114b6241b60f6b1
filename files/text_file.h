#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace pelagrim {

/// A text file read in line pieces of at most 511 bytes, line feed included: the rest of a longer
/// line comes as a further piece. A piece ends at a NUL byte.
class LineReader {
 public:
  static constexpr size_t kMaxPiece = 511;

  /// Opens the file. One that cannot be opened reads as empty; only want of memory is thrown, as
  /// std::bad_alloc, for then nothing is known about the file. A device reads as empty, for it may
  /// never end; a pipe is not even opened, for that waits until somebody writes.
  explicit LineReader(const std::string& path);

  bool isOpen() const { return file_ != nullptr; }

  /// True when there is no such file, which is not the same as one that cannot be opened.
  bool isMissing() const { return missing_; }

  /// The next piece, valid until the next call; null at the end. Throws std::bad_alloc as above.
  const char* next();

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, Close> file_;
  bool missing_ = false;
  bool empty_ = false;
  char piece_[kMaxPiece + 1];
};

/// Creates the file, or empties it in place, and writes the text. Failures are passed over. Nothing
/// is written to a pipe: that would wait until somebody reads, or end the process when nobody does.
void writeTextFile(const std::string& path, std::string_view text);

}  // namespace pelagrim
