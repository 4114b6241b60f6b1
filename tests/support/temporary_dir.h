#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

/// A directory that is removed with the test.
class TemporaryDir {
 public:
  TemporaryDir() {
    std::string name = (std::filesystem::temp_directory_path() / "pelagrim.XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
    path_ = name;
  }
  ~TemporaryDir() { std::filesystem::remove_all(path_); }
  TemporaryDir(const TemporaryDir&) = delete;
  TemporaryDir& operator=(const TemporaryDir&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::string text() const { return path_.string(); }
  void write(const std::string& name, const std::string& text) const {
    std::ofstream(path_ / name, std::ios::binary) << text;
  }
  std::string read(const std::string& name) const {
    std::ostringstream text;
    text << std::ifstream(path_ / name, std::ios::binary).rdbuf();
    return text.str();
  }
  bool has(const std::string& name) const { return std::filesystem::exists(path_ / name); }

 private:
  std::filesystem::path path_;
};
