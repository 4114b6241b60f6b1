#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace pelagrim_host {

/// A file that cannot be read or written. The line names it and says why.
struct FileError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// All that a file holds. Reads a pipe to its end. Throws FileError.
std::string readWholeFile(const std::filesystem::path& path);

/// Creates a file, and returns once the text is on the disk. False, and nothing is done, where
/// there is something of that name. Throws FileError.
bool createFile(const std::filesystem::path& path, std::string_view text);

/// Replaces what a file holds in one step, or creates it: whatever fails, the file holds either the
/// old text or the new one, and no other file is left behind. Returns once the text is on the disk.
/// The file keeps its mode; a link stays a link, and the file that it leads to is replaced. What is
/// there and is not a regular file, such as a pipe or /dev/stdout, is written to in place. Throws
/// FileError.
void replaceFile(const std::filesystem::path& path, std::string_view text);

/// The same, but first what the file held is kept as NAME~, in the place of an older NAME~. Returns
/// whether there was something to keep: not where there was no file, or one with this very text.
/// Throws FileError, and changes nothing, where NAME~ is something else than a file of this user.
bool replaceFileKeepingOld(const std::filesystem::path& path, std::string_view text);

}  // namespace pelagrim_host
