// Recordings played several times, starting at an offset.
#include "host/sources/replayed_source.h"

#include "tests/sources/recording_fixture.h"

namespace pelagrim_host {
namespace {

struct ReplayedSources : Recordings {
  ReplayedSource replay(uint64_t plays, double offset_seconds) const {
    return ReplayedSource([this] { return open(name); }, plays, offset_seconds, neverStop);
  }
  const std::string name = "x_20240101_000000_100M_1k.cu8";
};

TEST_F(ReplayedSources, FollowOnWithoutASeamAndKnowWhenTheyBeginAndWhatWasWrong) {
  dir_.write(name, std::string(20, '\0') + std::string(20, '\xFF') + "?");
  auto source = replay(3, 0.005);
  EXPECT_EQ(source.startUnixMs(), 1704067200005);
  Samples block(20);
  EXPECT_EQ(source.read(block), 20u);  // 15 of the first play and 5 of the second
  EXPECT_GT(block[14].real(), 0.9F);
  EXPECT_LT(block[15].real(), -0.9F);
  EXPECT_NE(source.damage().value_or("").find("last 1 of its bytes"), std::string::npos);
  EXPECT_EQ(readAll(source).size(), 25u);
  EXPECT_THROW(replay(1, 0.021), SourceError);
  auto endless = replay(0, 0.0);
  Samples many(1000);
  EXPECT_EQ(endless.read(many), 1000u);
}

}  // namespace
}  // namespace pelagrim_host
