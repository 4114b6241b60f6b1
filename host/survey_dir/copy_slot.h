#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace pelagrim_host {

/// A list of channels that was complete: the bytes of survey.csv, and what was known of the run.
struct KeptList {
  uint64_t sequence = 0;   ///< counts up from copy to copy
  bool run_ended = false;  ///< the run ended in order, and survey.csv held just these bytes
  std::string results;
};

/// A file for one such list, with a checksum over all of it and its room on the disk reserved
/// beforehand: writing a list that fits needs no further room, so a full disk does not take it.
/// Not synchronised.
class CopySlot {
 public:
  /// Opens the file, or creates it. Throws FileError.
  explicit CopySlot(std::filesystem::path path);
  ~CopySlot();
  CopySlot(const CopySlot&) = delete;
  CopySlot& operator=(const CopySlot&) = delete;

  /// Nothing where there is no list, or one that was not written to its end.
  std::optional<KeptList> read() const;

  /// The same of a file that is only to be read.
  static std::optional<KeptList> readFile(const std::filesystem::path& path);

  /// Sees that lists of up to `bytes` fit. Throws FileError where the disk has no such room.
  void reserve(size_t bytes);

  /// Writes the list over the old one and returns when it is on the disk. Throws FileError; what
  /// the slot then holds is not known.
  void write(const KeptList& list);

 private:
  std::filesystem::path path_;
  int file_;
};

}  // namespace pelagrim_host
