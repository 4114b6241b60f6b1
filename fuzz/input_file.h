#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>

/// Ends the run as a finding if the condition does not hold.
#define FUZZ_EXPECT(condition)                                \
  do {                                                        \
    if (!(condition)) {                                       \
      std::fprintf(stderr, "%s does not hold\n", #condition); \
      std::abort();                                           \
    }                                                         \
  } while (false)

/// A directory in memory, for this process only and removed with it.
class ScratchDir {
 public:
  ScratchDir() {
    if (mkdtemp(path_) == nullptr) std::abort();
  }
  ~ScratchDir() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;

  const char* path() const { return path_; }
  std::string pathOf(const char* name) const { return std::string(path_) + "/" + name; }
  void write(const char* name, const void* data, size_t size) const {
    std::FILE* const file = std::fopen(pathOf(name).c_str(), "wb");
    FUZZ_EXPECT(file != nullptr && std::fwrite(data, 1, size, file) == size);
    std::fclose(file);
  }
  std::string read(const char* name) const {
    std::ostringstream text;
    text << std::ifstream(pathOf(name), std::ios::binary).rdbuf();
    return text.str();
  }

 private:
  char path_[32] = "/dev/shm/pelagrim-fuzz.XXXXXX";
};
