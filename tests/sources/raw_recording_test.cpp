// Raw samples: the formats, from a file and from a pipe.
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <thread>

#include "tests/sources/recording_fixture.h"

namespace {
std::function<void()> g_after_poll;
}  // namespace

// In the place of the C library's: what the test does comes between the waiting and the reading.
extern "C" int poll(pollfd* files, nfds_t count, int timeout_ms) {
  const timespec timeout = {timeout_ms / 1000, timeout_ms % 1000 * 1'000'000L};
  const int ready = ppoll(files, count, timeout_ms < 0 ? nullptr : &timeout, nullptr);
  if (ready > 0 && g_after_poll) g_after_poll();
  return ready;
}

namespace pelagrim_host {
namespace {

TEST_F(Recordings, ScaleEveryRawFormatToOne) {
  struct Case {
    const char* format;
    std::string bytes;  ///< I, then Q, least significant byte first
    std::complex<float> sample;
  };
  const std::string zeros(6, '\0');
  const Case cases[] = {
      {"cu8", std::string("\xC0\0", 2), {0.50390625F, -0.99609375F}},
      {"cs8", "\x40\x80", {0.5F, -1.0F}},
      {"cu16", std::string("\0\xC0\0\0", 4), {0.5000152587890625F, -0.9999847412109375F}},
      {"cs16", std::string("\0\x40\0\x80", 4), {0.5F, -1.0F}},
      {"cu32", std::string("\0\0\0\xC0\xFF\xFF\xFF\x5F", 8), {0.5F, -0.25F}},
      {"cs32", std::string("\0\0\0\x40\0\0\0\xE0", 8), {0.5F, -0.25F}},
      {"cf32", std::string("\0\0\0\x3F\0\0\x80\xC0", 8), {0.5F, -4.0F}},
      {"cf64", zeros + "\xE0\x3F" + zeros + "\x10\xC0", {0.5F, -4.0F}}};
  for (const Case& c : cases) {
    const std::string name = std::string("x_100M_48k.") + c.format;
    dir_.write(name, c.bytes + c.bytes + "?");
    const auto source = open(name);
    EXPECT_EQ(source->lengthSamples(), 2u) << c.format;
    EXPECT_EQ(readAll(*source), Samples(2, c.sample)) << c.format;
    EXPECT_NE(source->damage().value_or("").find("last 1 of its bytes"), std::string::npos);
    EXPECT_EQ(open(name)->skip(9), 2u) << c.format;
  }
  std::filesystem::create_directory(dir_.path() / "d_100M_48k.cu8");
  EXPECT_NE(refusal("d_100M_48k.cu8").find("is a directory"), std::string::npos);
}

/// A pipe with a name, and a thread that writes to it.
struct PipedRecordings : Recordings {
  PipedRecordings() { EXPECT_EQ(mkfifo(path.c_str(), 0600), 0); }

  std::unique_ptr<IqSource> openAndWrite(std::vector<std::string> pieces) {
    auto source = open(request("x_100M_48k.cu8"));
    writer = std::jthread([this, pieces = std::move(pieces)] {
      const int pipe = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
      for (const std::string& piece : pieces) {
        EXPECT_EQ(write(pipe, piece.data(), piece.size()), static_cast<ssize_t>(piece.size()));
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
      }
      close(pipe);
    });
    return source;
  }

  const std::string path = (dir_.path() / "x_100M_48k.cu8").string();
  std::jthread writer;
};

TEST_F(PipedRecordings, ComeInFullBlocksHoweverTheyArriveAndCanBeSkipped) {
  const auto source = openAndWrite({"\1", std::string(599'999, '\1'), "\xFF", "\xFF\xFF", "\xFF"});
  EXPECT_EQ(source->lengthSamples(), std::nullopt);
  EXPECT_EQ(source->skip(300'000), 300'000u);
  Samples block(2);
  EXPECT_EQ(source->read(block), 2u);
  EXPECT_EQ(block, Samples(2, {0.99609375F, 0.99609375F}));
  EXPECT_EQ(source->read(block), 0u);
}

TEST_F(PipedRecordings, GoOnWhenAnotherReaderTakesWhatHadArrived) {
  const int other = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  const auto source = openAndWrite({"aa", "bb", "cc"});
  ssize_t taken = 0;
  g_after_poll = [other, &taken] {
    char bytes[6];
    if (taken == 0) taken = ::read(other, bytes, sizeof bytes);
  };
  const size_t samples = readAll(*source).size();
  g_after_poll = nullptr;
  close(other);
  EXPECT_GT(taken, 0);
  EXPECT_EQ(2 * samples + static_cast<size_t>(taken), 6u);
}

TEST_F(PipedRecordings, EndWhenAskedToStop) {
  RecordingRequest asked = request("x_100M_48k.cu8");
  asked.stop = [calls = 0]() mutable { return ++calls > 2; };
  const auto source = open(asked);  // nobody writes
  Samples block(2);
  EXPECT_EQ(source->read(block), 0u);
  EXPECT_EQ(source->damage(), std::nullopt);
}

}  // namespace
}  // namespace pelagrim_host
