#include "files/text_file.h"

#include <sys/stat.h>

#include <cerrno>
#include <new>

namespace pelagrim {

namespace {

/// The type of the file at the path, links followed; 0 if that is not known.
mode_t typeAt(const std::string& path) {
  struct stat found;
  return stat(path.c_str(), &found) == 0 ? found.st_mode & S_IFMT : 0;
}

}  // namespace

LineReader::LineReader(const std::string& path) {
  const mode_t type = typeAt(path);
  if (type == S_IFIFO) return;
  empty_ = type == S_IFCHR || type == S_IFBLK;
  errno = 0;
  file_.reset(std::fopen(path.c_str(), "rb"));
  if (file_ != nullptr) return;
  if (errno == ENOMEM) throw std::bad_alloc();
  missing_ = errno == ENOENT;
}

const char* LineReader::next() {
  if (file_ == nullptr || empty_) return nullptr;
  errno = 0;
  if (std::fgets(piece_, sizeof piece_, file_.get()) != nullptr) return piece_;
  if (std::ferror(file_.get()) != 0 && errno == ENOMEM) throw std::bad_alloc();
  return nullptr;
}

void writeTextFile(const std::string& path, std::string_view text) {
  if (typeAt(path) == S_IFIFO) return;
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return;
  // Unbuffered, so that the text goes out in one piece.
  std::setvbuf(file, nullptr, _IONBF, 0);
  std::fwrite(text.data(), 1, text.size(), file);
  std::fclose(file);
}

}  // namespace pelagrim
