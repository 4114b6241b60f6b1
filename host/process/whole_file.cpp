#include "host/process/whole_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace pelagrim_host {
namespace {

[[noreturn]] void fail(const std::filesystem::path& path, const std::string& reason) {
  throw std::runtime_error(fmt::format("cannot write {}: {}", path.string(), reason));
}

/// Writes `file_path` for the sake of `path`, which is what the user has named.
void writeTo(const std::filesystem::path& file_path, const std::filesystem::path& path,
             const std::string& text) {
  errno = 0;
  std::ofstream file(file_path, std::ios::binary);
  file << text;
  file.close();
  if (!file) fail(path, errno == 0 ? "write error" : std::strerror(errno));
}

}  // namespace

void writeWhole(const std::filesystem::path& path, const std::string& text) {
  std::error_code error;
  const auto there = std::filesystem::status(path, error);
  if (std::filesystem::exists(there) && !std::filesystem::is_regular_file(there)) {
    writeTo(path, path, text);
    return;
  }
  auto fresh_path = path;
  fresh_path += ".new";
  writeTo(fresh_path, path, text);
  std::filesystem::rename(fresh_path, path, error);
  if (error) fail(path, error.message());
}

bool keepOldFile(const std::filesystem::path& path, const std::string& text) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return false;
  std::ifstream file(path, std::ios::binary);
  const std::string old_text{std::istreambuf_iterator<char>(file),
                             std::istreambuf_iterator<char>()};
  if (file && old_text == text) return false;
  auto kept_path = path;
  kept_path += "~";
  std::filesystem::copy_file(path, kept_path, std::filesystem::copy_options::overwrite_existing,
                             error);
  if (error) fail(kept_path, error.message());
  return true;
}

}  // namespace pelagrim_host
