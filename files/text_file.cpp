#include "files/text_file.h"

#include <cerrno>
#include <new>

namespace pelagrim {

LineReader::LineReader(const std::string& path) {
  errno = 0;
  file_.reset(std::fopen(path.c_str(), "rb"));
  if (file_ != nullptr) return;
  if (errno == ENOMEM) throw std::bad_alloc();
  missing_ = errno == ENOENT;
}

const char* LineReader::next() {
  if (file_ == nullptr) return nullptr;
  errno = 0;
  if (std::fgets(piece_, sizeof piece_, file_.get()) != nullptr) return piece_;
  if (std::ferror(file_.get()) != 0 && errno == ENOMEM) throw std::bad_alloc();
  return nullptr;
}

void writeTextFile(const std::string& path, std::string_view text) {
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return;
  // Unbuffered, so that the text goes out whole and not in pieces of a buffer.
  std::setvbuf(file, nullptr, _IONBF, 0);
  std::fwrite(text.data(), 1, text.size(), file);
  std::fclose(file);
}

}  // namespace pelagrim
