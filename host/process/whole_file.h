#pragma once

#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace pelagrim_host {

/// A file that cannot be read or written. The message names it and says why.
struct FileError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Longer files are refused: many times the longest survey, and a small computer can hold it.
constexpr size_t kMaxWholeFileBytes = 400'000'000;

/// The whole content of a file. Reads a pipe to its end. Throws FileError, also for a device, which
/// may have no end, and beyond kMaxWholeFileBytes.
std::string readWholeFile(const std::filesystem::path& path);

/// Creates a file, and returns once the text is on the disk. Returns false and does nothing if the
/// name is taken. Throws FileError.
bool createFile(const std::filesystem::path& path, std::string_view text);

/// Replaces what a file holds in one step, or creates it. Whatever fails, the file holds either the
/// old text or the new one, and no other file is left behind. Returns once the text is on the disk.
/// The file keeps its mode; a link stays a link, and the file that it leads to is replaced, unless
/// the link is somebody else's. Anything but a regular file, such as a pipe or /dev/stdout, is
/// written to in place. Throws FileError.
void replaceFile(const std::filesystem::path& path, std::string_view text);

/// The same, but keeps the old text as NAME~ first, replacing an older NAME~. Returns whether there
/// was anything to keep: there is not if there was no file or it held this very text. Throws
/// FileError, and changes nothing, if NAME~ is anything but a file of this user.
bool replaceFileKeepingOld(const std::filesystem::path& path, std::string_view text);

}  // namespace pelagrim_host
