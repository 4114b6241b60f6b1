#include "host/whole_file.h"

#include <fmt/format.h>

#include <fstream>
#include <stdexcept>
#include <system_error>

namespace pelagrim_host {
namespace {

void writeTo(const std::filesystem::path& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) throw std::runtime_error(fmt::format("cannot write {}", path.string()));
}

}  // namespace

void writeWhole(const std::filesystem::path& path, const std::string& text) {
  std::error_code error;
  const auto there = std::filesystem::status(path, error);
  if (std::filesystem::exists(there) && !std::filesystem::is_regular_file(there)) {
    writeTo(path, text);
    return;
  }
  auto fresh_path = path;
  fresh_path += ".new";
  writeTo(fresh_path, text);
  std::filesystem::rename(fresh_path, path, error);
  if (error) {
    throw std::runtime_error(fmt::format("cannot write {}: {}", path.string(), error.message()));
  }
}

}  // namespace pelagrim_host
