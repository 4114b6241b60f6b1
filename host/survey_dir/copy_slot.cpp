#include "host/survey_dir/copy_slot.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <string_view>
#include <utility>

#include "host/process/digest.h"
#include "host/process/whole_file.h"

namespace pelagrim_host {
namespace {

// The list begins at a fixed place, after a header of lines that is padded with line feeds.
constexpr size_t kHeadBytes = 512;
constexpr std::string_view kMark = "pelagrim copy of survey.csv, version 1";

/// What the checksum covers before the list itself.
std::string sealedHead(const KeptList& list) {
  return fmt::format("sequence {}\nrun {}\nbytes {}\n", list.sequence,
                     list.run_ended ? "ended" : "goes on", list.results.size());
}

std::string headOf(const KeptList& list) {
  const std::string sealed = sealedHead(list);
  std::string head =
      fmt::format("{}\nsha256 {}\n{}", kMark, sha256Of(sealed + list.results), sealed);
  head.resize(kHeadBytes, '\n');
  return head;
}

/// Takes "name value\n" off the front of `head` and returns the value; nothing if it is not there.
std::optional<std::string_view> takeField(std::string_view& head, std::string_view name) {
  const size_t end = head.find('\n');
  std::string_view line = head.substr(0, end);
  if (end == std::string_view::npos || !line.starts_with(name)) return std::nullopt;
  head.remove_prefix(end + 1);
  line.remove_prefix(name.size());
  if (!line.empty() && line.front() == ' ') line.remove_prefix(1);
  return line;
}

std::optional<uint64_t> wholeNumber(std::optional<std::string_view> text) {
  uint64_t number = 0;
  if (!text) return std::nullopt;
  const char* const end = text->data() + text->size();
  const auto [stop, error] = std::from_chars(text->data(), end, number);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::optional<KeptList> readList(int file) {
  std::string text(kHeadBytes, '\0');
  if (pread(file, text.data(), kHeadBytes, 0) != static_cast<ssize_t>(kHeadBytes)) {
    return std::nullopt;
  }
  std::string_view head = text;
  if (takeField(head, kMark) != "") return std::nullopt;
  const auto sum = takeField(head, "sha256");
  const auto sequence = wholeNumber(takeField(head, "sequence"));
  const auto run = takeField(head, "run");
  const auto bytes = wholeNumber(takeField(head, "bytes"));
  struct stat status = {};
  if (!sum || !sequence || !run || !bytes || fstat(file, &status) != 0 ||
      *bytes > static_cast<uint64_t>(status.st_size)) {
    return std::nullopt;
  }
  KeptList list{*sequence, *run == "ended", std::string(*bytes, '\0')};
  for (size_t got = 0; got < list.results.size();) {
    const ssize_t count = pread(file, list.results.data() + got, list.results.size() - got,
                                static_cast<off_t>(kHeadBytes + got));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return std::nullopt;
    got += static_cast<size_t>(count);
  }
  if (sha256Of(sealedHead(list) + list.results) != *sum) return std::nullopt;
  return list;
}

[[noreturn]] void fail(const std::filesystem::path& path, const char* what) {
  throw FileError(fmt::format("cannot {} {}: {}", what, path.string(), std::strerror(errno)));
}

}  // namespace

CopySlot::CopySlot(std::filesystem::path path)
    : path_(std::move(path)),
      file_(open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0644)) {
  struct stat status = {};
  if (file_ < 0) fail(path_, "open");
  if (fstat(file_, &status) != 0 || !S_ISREG(status.st_mode)) {
    close(file_);
    throw FileError(fmt::format("{} is not a regular file", path_.string()));
  }
}

CopySlot::~CopySlot() {
  close(file_);
}

std::optional<KeptList> CopySlot::read() const {
  return readList(file_);
}

std::optional<KeptList> CopySlot::readFile(const std::filesystem::path& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (file < 0) return std::nullopt;
  auto list = readList(file);
  close(file);
  return list;
}

void CopySlot::reserve(size_t bytes) {
  const int error = posix_fallocate(file_, 0, static_cast<off_t>(kHeadBytes + bytes));
  if (error == 0) return;
  errno = error;
  fail(path_, "reserve room for");
}

void CopySlot::write(const KeptList& list) {
  const std::string text = headOf(list) + list.results;
  for (size_t written = 0; written < text.size();) {
    const ssize_t count =
        pwrite(file_, text.data() + written, text.size() - written, static_cast<off_t>(written));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail(path_, "write");
    written += static_cast<size_t>(count);
  }
  if (fdatasync(file_) != 0) fail(path_, "flush");
}

}  // namespace pelagrim_host
