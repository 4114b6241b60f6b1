// Replacing a file: what is kept, what is refused, and that failures leave nothing behind.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <set>
#include <string>

#include "host/process/whole_file.h"
#include "tests/support/temporary_dir.h"

namespace pelagrim_host {
namespace {

namespace fs = std::filesystem;

std::set<std::string> namesIn(const fs::path& directory) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(directory)) names.insert(entry.path().filename());
  return names;
}

/// While it lives, files cannot grow past 4 KiB, as on a full disk.
class FullDisk {
 public:
  FullDisk() : handler_(signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &limit_);
    const rlimit small = {4096, limit_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &limit_);
    signal(SIGXFSZ, handler_);
  }

 private:
  void (*handler_)(int);
  rlimit limit_ = {};
};

TEST(WholeFile, ReplacesWhatALinkLeadsToAndKeepsMode) {
  const TemporaryDir dir;
  dir.write("file", "old");
  dir.write("file.new", "mine");
  dir.write("file~", "mine, too");
  fs::permissions(dir.path() / "file", fs::perms(0604));
  fs::create_directory(dir.path() / "sub");
  fs::create_symlink("../file", dir.path() / "sub/link");
  fs::create_symlink("sub/link", dir.path() / "link");
  fs::create_symlink("fresh", dir.path() / "dangling");
  fs::create_symlink("loop", dir.path() / "loop");
  replaceFile(dir.path() / "link", "new");
  replaceFile(dir.path() / "dangling", "first");
  EXPECT_THROW(replaceFile(dir.path() / "loop", "x"), FileError);
  EXPECT_THROW(replaceFile(dir.path() / "sub", "x"), FileError);
  EXPECT_EQ(readWholeFile(dir.path() / "link"), "new");
  EXPECT_EQ(fs::status(dir.path() / "file").permissions(), fs::perms(0604));
  EXPECT_EQ(dir.read("fresh"), "first");
  const mode_t mask = umask(0);
  umask(mask);
  EXPECT_EQ(fs::status(dir.path() / "fresh").permissions(), fs::perms(0666 & ~mask));
  EXPECT_TRUE(fs::is_symlink(dir.path() / "link") && fs::is_symlink(dir.path() / "sub/link"));
  EXPECT_EQ(dir.read("file.new") + dir.read("file~"), "minemine, too");
  EXPECT_EQ(namesIn(dir.path()), (std::set<std::string>{"dangling", "file", "file.new", "file~",
                                                        "fresh", "link", "loop", "sub"}));
  EXPECT_EQ(namesIn(dir.path() / "sub"), std::set<std::string>{"link"});
}

TEST(WholeFile, AFailureLeavesTheOldTextAndNothingElse) {
  const TemporaryDir dir;
  dir.write("file", "old");
  {
    const FullDisk full;
    EXPECT_THROW(replaceFile(dir.path() / "file", std::string(5000, 'x')), FileError);
    EXPECT_THROW(replaceFileKeepingOld(dir.path() / "other", std::string(5000, 'x')), FileError);
  }
  EXPECT_FALSE(createFile(dir.path() / "file", "new"));
  EXPECT_THROW(createFile(dir.path() / std::string(300, 'x'), "new"), FileError);
  EXPECT_EQ(dir.read("file"), "old");
  EXPECT_EQ(namesIn(dir.path()), std::set<std::string>{"file"});
  EXPECT_THROW(replaceFile("/dev/full", "x"), FileError);
  EXPECT_THROW(readWholeFile(dir.path()), FileError);
  EXPECT_THROW(readWholeFile(dir.path() / "gone"), FileError);
  EXPECT_THROW(readWholeFile("/dev/zero"), FileError);
  dir.write("huge", "");
  std::filesystem::resize_file(dir.path() / "huge", kMaxWholeFileBytes + 1);
  EXPECT_THROW(readWholeFile(dir.path() / "huge"), FileError);
}

TEST(WholeFile, WritesToWhatIsNoFileInPlace) {
  const TemporaryDir dir;
  const auto pipe = dir.path() / "pipe";
  mkfifo(pipe.c_str(), 0600);
  const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
  replaceFile(pipe, "one");
  EXPECT_FALSE(replaceFileKeepingOld(pipe, "two"));
  char text[10] = {};
  EXPECT_EQ(read(reader, text, sizeof text), 6);
  EXPECT_STREQ(text, "onetwo");
  close(reader);

  dir.write("open", "old");
  const int file = open((dir.path() / "open").c_str(), O_RDONLY);
  replaceFile("/proc/self/fd/" + std::to_string(file), "new");
  EXPECT_EQ(pread(file, text, sizeof text, 0), 3) << "the open file itself was written";
  close(file);
  EXPECT_EQ(namesIn(dir.path()), (std::set<std::string>{"open", "pipe"}));
}

TEST(WholeFile, KeepsOneOlderStateUnlessItsNameIsTaken) {
  const TemporaryDir dir;
  const auto path = dir.path() / "file";
  EXPECT_FALSE(replaceFileKeepingOld(path, "1"));
  EXPECT_FALSE(replaceFileKeepingOld(path, "1"));
  EXPECT_FALSE(dir.has("file~"));
  EXPECT_TRUE(replaceFileKeepingOld(path, "2"));
  fs::permissions(path, fs::perms(0600));
  EXPECT_TRUE(replaceFileKeepingOld(path, "3"));
  EXPECT_EQ(dir.read("file~"), "2");
  EXPECT_EQ(fs::status(dir.path() / "file~").permissions(), fs::perms(0600));

  dir.write("precious", "mine");
  void (*const taken[])(const fs::path&) = {
      [](const fs::path& kept) { fs::create_symlink("precious", kept); },
      [](const fs::path& kept) { fs::create_directory(kept); },
      [](const fs::path& kept) { mkfifo(kept.c_str(), 0600); }};
  for (const auto& take : taken) {
    fs::remove(dir.path() / "file~");
    take(dir.path() / "file~");
    EXPECT_THROW(replaceFileKeepingOld(path, "4"), FileError);
    EXPECT_EQ(dir.read("file") + dir.read("precious"), "3mine");
    EXPECT_FALSE(fs::is_regular_file(fs::symlink_status(dir.path() / "file~")));
  }
}

}  // namespace
}  // namespace pelagrim_host
