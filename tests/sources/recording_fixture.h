#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/sources/open_recording.h"
#include "tests/support/temporary_dir.h"

namespace pelagrim_host {

using Samples = std::vector<std::complex<float>>;

/// Metadata of a SigMF recording at 1000 samples a second.
inline std::string metaText(const std::string& global, const std::string& captures = "{}") {
  return "{\"global\":{\"core:sample_rate\":1000," + global + "},\"captures\":[" + captures + "]}";
}

/// Recordings that a test writes, opened as the program opens them.
class Recordings : public ::testing::Test {
 protected:
  RecordingRequest request(const std::string& name) const {
    return {.source = (dir_.path() / name).string(), .told = {}};
  }

  static std::unique_ptr<IqSource> open(const RecordingRequest& asked) {
    return openRecording(asked, [](const std::string&) {});
  }
  std::unique_ptr<IqSource> open(const std::string& name) const { return open(request(name)); }

  static Samples readAll(IqSource& source) {
    Samples all;
    Samples block(7);
    while (const size_t got = source.read(block)) {
      all.insert(all.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(got));
    }
    return all;
  }

  /// The reason why it cannot be opened; empty if it can.
  static std::string refusal(const RecordingRequest& asked) {
    try {
      open(asked);
    } catch (const std::exception& failure) {
      return failure.what();
    }
    return "";
  }
  std::string refusal(const std::string& name) const { return refusal(request(name)); }

  TemporaryDir dir_;
};

}  // namespace pelagrim_host
