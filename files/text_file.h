#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace pelagrim {

/// A text file read line by line, in pieces of at most 511 bytes, line feed included: the rest of a
/// longer line comes as another piece. A piece ends at a NUL byte.
class LineReader {
 public:
  static constexpr size_t kMaxPiece = 511;

  /// Opens the file. One that cannot be opened reads as empty, but std::bad_alloc is thrown if
  /// memory runs out, because then nothing is known about the file. A device reads as empty,
  /// because it may never end. A pipe is not even opened: that would wait for a writer.
  explicit LineReader(const std::string& path);

  bool isOpen() const { return file_ != nullptr; }

  /// True if there is no such file; false if it exists but cannot be opened.
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

/// Creates the file, or empties it in place, and writes the text. Failures are ignored. Nothing
/// is written to a pipe: that would wait for a reader, or end the process if there is none.
void writeTextFile(const std::string& path, std::string_view text);

}  // namespace pelagrim
