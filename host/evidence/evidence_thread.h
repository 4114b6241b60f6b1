#pragma once

#include <complex>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <variant>
#include <vector>

#include "host/evidence/dwell_observer.h"
#include "host/session/sample_observer.h"

namespace pelagrim_host {

/// What the list and the settings are when a survey begins.
struct EvidenceStart {
  pelagrim::Survey known;  ///< the list, with its raster
  double threshold_db = 0.0;
  std::function<void()> begun{};  ///< called before the first record; on the observing thread
};

/// Observes the dwells of a run on a thread of its own.
///
/// It gets copies of the samples. Where it is too slow, a recording waits; a receiver does not, and
/// the dwell that lacks samples gives no record but a gap.
class EvidenceThread final : public SampleObserver {
 public:
  struct Hooks {
    std::function<EvidenceStart()> start;  ///< asked on the surveyor's thread at each start
    std::function<void(const DwellRecord&)> record;  ///< called on the thread of this object
    /// A dwell was evaluated of which there is no record; likewise.
    std::function<void(int64_t end_unix_ms)> gap;
  };

  /// `may_wait`: for a recording. `resolution_seconds`: of rows. Throws std::system_error if there
  /// can be no thread.
  EvidenceThread(Hooks hooks, bool may_wait, double resolution_seconds);

  /// Waits until everything has been observed.
  ~EvidenceThread() override;

  void started(double rate_hz, double centre_hz) override;
  void samples(std::span<const std::complex<float>> block, int64_t first_unix_ms,
               uint64_t lost_samples) override;
  void dwellEvaluated(int64_t unix_ms) override;
  void retuned(double centre_hz) override;
  void ended() override {}

 private:
  struct Start {
    pelagrim::Slice slice;
    EvidenceStart with;
  };
  struct Samples {
    std::vector<std::complex<float>> block;
    int64_t first_unix_ms;
    uint64_t lost;  ///< before the block, in this dwell
  };
  struct Evaluated {
    int64_t unix_ms;
  };
  struct Retuned {
    double centre_hz;
  };
  struct Dropped {
    uint64_t samples;  ///< that are missing here
  };
  using Event = std::variant<Start, Samples, Evaluated, Retuned, Dropped>;

  void append(Event event);
  void run();
  void observe(Event& event);

  Hooks hooks_;
  const bool may_wait_;

  // Of the surveyor's thread.
  uint64_t lost_before_ = 0;

  std::mutex mutex_;  // for what follows
  std::condition_variable to_observer_;
  std::condition_variable to_surveyor_;
  std::deque<Event> events_;
  size_t waiting_samples_ = 0;
  std::vector<std::vector<std::complex<float>>> free_;  ///< blocks to use again
  bool ending_ = false;

  // Of the thread of this object.
  DwellObserver observer_;
  uint64_t lost_samples_ = 0;  ///< in this dwell

  std::thread thread_;  // last: it uses everything above
};

}  // namespace pelagrim_host
