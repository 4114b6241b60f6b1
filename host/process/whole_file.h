#pragma once

#include <filesystem>
#include <string>

namespace pelagrim_host {

/// Replaces a file in one step, so that a full disk does not take away the last one. What is there
/// and is no file, as a pipe, is written to. Throws std::runtime_error with the file's name.
void writeWhole(const std::filesystem::path& path, const std::string& text);

/// Keeps what a file holds as NAME~ before `text` replaces it. False where there is nothing to
/// keep: no file, or it holds that very text. Throws as above.
bool keepOldFile(const std::filesystem::path& path, const std::string& text);

}  // namespace pelagrim_host
