#include "host/process/whole_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <random>
#include <system_error>
#include <utility>

#include "host/process/file_owner.h"

namespace pelagrim_host {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const char* what, const fs::path& path, int reason) {
  throw FileError(fmt::format("cannot {} {}: {}", what, path.string(),
                              std::generic_category().message(reason)));
}

/// An open file. close() reports a failure, the destructor does not.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const { return number_; }
  bool isOpen() const { return number_ >= 0; }
  bool close() { return ::close(std::exchange(number_, -1)) == 0; }

 private:
  int number_;
};

fs::path directoryOf(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

/// A link in the proc file system, where /dev/stdout ends, leads to an open file, not to a name.
bool isOpenFileOfProcess(const fs::path& path) {
  struct statfs system = {};
  return statfs(directoryOf(path).c_str(), &system) == 0 && system.f_type == PROC_SUPER_MAGIC;
}

bool isLink(const fs::path& path, struct stat& found) {
  return lstat(path.c_str(), &found) == 0 && S_ISLNK(found.st_mode);
}

/// Where the links lead, even if nothing is there yet. Somebody else's link, in a directory that
/// all may write to, could lead to a file of this user.
fs::path endOfLinks(const fs::path& path) {
  constexpr int kMaxLinks = 40;  // the system does not follow more
  fs::path end = path;
  std::error_code error;
  struct stat link = {};
  for (int i = 0; isLink(end, link) && !isOpenFileOfProcess(end); ++i) {
    if (i == kMaxLinks) fail("write", path, ELOOP);
    if (!isOwnUser(link.st_uid)) {
      throw FileError(
          fmt::format("{} is a link that belongs to user {}, not to you: it is not "
                      "followed; name another file",
                      end.string(), link.st_uid));
    }
    end = end.parent_path() / fs::read_symlink(end, error);
    if (error) fail("write", path, error.value());
  }
  return end;
}

bool writeAll(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(file, text.data(), text.size());
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) text.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

/// Waits until it is on the disk. Not every file system can tell.
bool flushToDisk(int file) {
  return fsync(file) == 0 || errno == EINVAL || errno == ENOTSUP;
}

void writeInPlace(const fs::path& path, std::string_view text) {
  Descriptor file(open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC));
  if (!file.isOpen() || !writeAll(file.number(), text) || !file.close()) fail("write", path, errno);
}

/// A file with an unused name, complete and on the disk. Deleted again unless it is moved.
class NewFile {
 public:
  /// Made in the directory of `path`. `like`: the file whose mode and owner it gets; if none, the
  /// usual ones.
  NewFile(const fs::path& path, std::string_view text, const struct stat* like) {
    constexpr int kMaxTries = 100;
    constexpr mode_t kOwnerOnly = 0600;  // until it gets the mode of the old file
    constexpr mode_t kUsual = 0666;      // less the umask
    std::random_device random;
    int number = -1;
    for (int i = 0; i < kMaxTries && number < 0; ++i) {
      path_ = directoryOf(path) / fmt::format(".pelagrim-{:08x}.new", random());
      number = open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                    like == nullptr ? kUsual : kOwnerOnly);
      if (number < 0 && errno != EEXIST) break;
    }
    if (number < 0) fail("write", path, errno);
    Descriptor file(number);
    if (!(writeAll(number, text) && takeAfter(number, like) && flushToDisk(number) &&
          file.close())) {
      const int reason = errno;
      unlink(path_.c_str());
      fail("write", path, reason);
    }
  }
  ~NewFile() {
    if (!path_.empty()) unlink(path_.c_str());
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  /// Moves it to `path`, which must be in the same directory, and replaces what is there.
  void moveTo(const fs::path& path) {
    if (rename(path_.c_str(), path.c_str()) != 0) fail("replace", path, errno);
    path_.clear();
    const Descriptor directory(open(directoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // A directory that may be searched but not read cannot be flushed; the file is there anyway.
    if (directory.isOpen() && !flushToDisk(directory.number())) fail("write", path, errno);
  }

  /// Moves it to `path`, in the same directory, if nothing has that name.
  bool moveToNew(const fs::path& path) {
    if (renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) != 0) {
      if (errno == EEXIST) return false;
      fail("write", path, errno);
    }
    path_.clear();
    return true;
  }

 private:
  static bool takeAfter(int file, const struct stat* like) {
    if (like == nullptr) return true;
    // Only root can give a file to another user; anyone can set the mode.
    [[maybe_unused]] const int kept = fchown(file, like->st_uid, like->st_gid);
    return fchmod(file, like->st_mode & 0777) == 0;
  }

  fs::path path_;
};

/// A file that is about to be replaced.
struct Target {
  fs::path path;                   ///< all links followed
  std::optional<struct stat> old;  ///< none: nothing is there
  bool isFile() const { return !old || (S_ISREG(old->st_mode) && !isOpenFileOfProcess(path)); }
};

Target targetOf(const fs::path& path) {
  Target target{endOfLinks(path), std::nullopt};
  struct stat found = {};
  if (stat(target.path.c_str(), &found) == 0) {
    target.old = found;
  } else if (errno != ENOENT) {
    fail("write", path, errno);
  }
  return target;
}

void replace(const Target& target, std::string_view text) {
  NewFile(target.path, text, target.old ? &*target.old : nullptr).moveTo(target.path);
}

/// Writes the old text to `path`, the backup.
void keep(const fs::path& path, std::string_view text, const struct stat& like) {
  struct stat found = {};
  const bool is_there = lstat(path.c_str(), &found) == 0;
  const bool is_ours = found.st_uid == geteuid() || found.st_uid == like.st_uid;
  if (is_there && !(S_ISREG(found.st_mode) && is_ours)) {
    throw FileError(
        fmt::format("cannot keep the old file as {}: something else has that name; move it away",
                    path.string()));
  }
  NewFile(path, text, &like).moveTo(path);
}

}  // namespace

std::string readWholeFile(const fs::path& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.isOpen()) fail("read", path, errno);
  struct stat found = {};
  if (fstat(file.number(), &found) != 0) fail("read", path, errno);
  if (S_ISCHR(found.st_mode) || S_ISBLK(found.st_mode)) {
    throw FileError(fmt::format("{} is a device, not a file", path.string()));
  }
  const auto requireShort = [&path](size_t bytes) {
    if (bytes <= kMaxWholeFileBytes) return;
    throw FileError(fmt::format("{} holds more than {} MB, too much to be read whole",
                                path.string(), kMaxWholeFileBytes / 1'000'000));
  };
  requireShort(S_ISREG(found.st_mode) ? static_cast<size_t>(found.st_size) : 0);
  std::string text;
  char piece[1 << 16];
  for (;;) {
    const ssize_t count = ::read(file.number(), piece, sizeof piece);
    if (count == 0) return text;
    if (count < 0 && errno == EISDIR) {
      throw FileError(fmt::format("{} is a directory, not a file", path.string()));
    }
    if (count < 0 && errno != EINTR) fail("read", path, errno);
    if (count > 0) text.append(piece, static_cast<size_t>(count));
    requireShort(text.size());
  }
}

bool createFile(const fs::path& path, std::string_view text) {
  NewFile file(path, text, nullptr);
  return file.moveToNew(path);
}

void replaceFile(const fs::path& path, std::string_view text) {
  const Target target = targetOf(path);
  if (target.isFile()) {
    replace(target, text);
  } else {
    writeInPlace(path, text);
  }
}

bool replaceFileKeepingOld(const fs::path& path, std::string_view text) {
  const Target target = targetOf(path);
  if (!target.isFile()) {
    writeInPlace(path, text);
    return false;
  }
  const std::string old_text = target.old ? readWholeFile(target.path) : "";
  const bool is_kept = target.old && old_text != text;
  if (is_kept) keep(path.string() + "~", old_text, *target.old);
  if (!target.old || is_kept) replace(target, text);
  return is_kept;
}

}  // namespace pelagrim_host
