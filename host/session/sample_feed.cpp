#include "host/session/sample_feed.h"

#include <utility>

namespace pelagrim_host {
namespace {

class DirectFeed final : public SampleFeed {
 public:
  explicit DirectFeed(ChunkReader reader) : reader_(std::move(reader)) {}

  const SampleChunk* front(uint64_t limit) override {
    if (!is_filled_) reader_.fill(chunk_, limit - reader_.nextSample(), [] { return false; });
    is_filled_ = true;
    return &chunk_;
  }
  void release() override { is_filled_ = false; }
  TuneOutcome tune(double hz) noexcept override { return reader_.tune(hz); }
  void end() override {}

 private:
  ChunkReader reader_;
  SampleChunk chunk_;
  bool is_filled_ = false;
};

}  // namespace

std::unique_ptr<SampleFeed> feedOnThisThread(ChunkReader reader) {
  return std::make_unique<DirectFeed>(std::move(reader));
}

}  // namespace pelagrim_host
