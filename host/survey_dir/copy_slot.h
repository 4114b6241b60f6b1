#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace pelagrim_host {

/// A complete list of channels: the bytes of survey.csv, and what was known about the run.
struct KeptList {
  uint64_t sequence = 0;   ///< goes up by one with every copy
  bool run_ended = false;  ///< the run ended in order, and survey.csv held exactly these bytes
  std::string results;
};

/// A file for one such list, with a checksum over all of it. Its room on the disk is reserved
/// beforehand: writing a list that fits needs no more, so a full disk does no harm. Not
/// synchronised.
class CopySlot {
 public:
  /// Opens the file, or creates it. Throws FileError.
  explicit CopySlot(std::filesystem::path path);
  ~CopySlot();
  CopySlot(const CopySlot&) = delete;
  CopySlot& operator=(const CopySlot&) = delete;

  /// Nothing if there is no list, or one that was not written to the end.
  std::optional<KeptList> read() const;

  /// The same for a file that is only read.
  static std::optional<KeptList> readFile(const std::filesystem::path& path);

  /// Makes room for lists of up to `bytes`. Throws FileError if the disk does not have it.
  void reserve(size_t bytes);

  /// Writes the list over the old one and returns once it is on the disk. Throws FileError; it is
  /// then not known what the slot holds.
  void write(const KeptList& list);

 private:
  std::filesystem::path path_;
  int file_;
};

}  // namespace pelagrim_host
