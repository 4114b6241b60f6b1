#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/sources/recording_facts.h"
#include "host/sources/sample_format.h"
#include "wendle_plugin.h"

namespace pelagrim_host {

/// Where a survey's samples come from: a recording, a simulated band, a live receiver.
///
/// Used by one thread. Failures are thrown as SourceError, with a line that names the file or
/// device and says what to do.
class IqSource {
 public:
  virtual ~IqSource() = default;
  IqSource() = default;
  IqSource(const IqSource&) = delete;
  IqSource& operator=(const IqSource&) = delete;

  /// Its name for the user: a file name, a device, "simulated band".
  virtual std::string name() const = 0;

  /// Samples per second, positive and the same for the source's whole life.
  virtual double sampleRateHz() const = 0;

  /// The centre frequency of the samples that the next read delivers. It changes with an accepted
  /// tune, or between two reads if a recording says so; never within the samples of one read.
  virtual double centreHz() const = 0;

  /// Unix time in milliseconds of the first sample, if it is known.
  virtual std::optional<int64_t> startUnixMs() const { return std::nullopt; }

  /// Unix time in milliseconds of the first sample of the next read, if a recording gives it: there
  /// may be gaps.
  virtual std::optional<int64_t> nextUnixMs() const { return std::nullopt; }

  /// The shortest time in seconds that a recording stays at one centre before it moves on; nothing
  /// if it never moves. The last stay does not count, because nothing cuts its dwell off.
  virtual std::optional<double> shortestStaySeconds() const { return std::nullopt; }

  /// How many samples there are in all, if that is known before the end.
  virtual std::optional<uint64_t> lengthSamples() const { return std::nullopt; }

  /// What is known about a recording, and from where; null for any other source, whose rate and
  /// centre need no explanation.
  virtual std::optional<RecordingFacts> facts() const { return std::nullopt; }

  /// True for a receiver, whose samples arrive in real time: the host then goes by the system's
  /// clock. False: the host's clock follows the samples.
  virtual bool isLive() const { return false; }

  /// True if tune can succeed for some frequency other than the present centre.
  virtual bool canTune() const { return false; }

  /// How often the receiver has dropped samples because they were not read in time.
  virtual uint64_t overflows() const { return 0; }

  /// Fills the front of `block` with the next samples, full scale about 1.0, and returns how many:
  /// 0 at the end, else at least 1.
  virtual size_t read(std::span<std::complex<float>> block) = 0;

  /// How the samples of readNative lie in memory, the same for the source's whole life.
  virtual SampleLayout layout() const { return {}; }

  /// Does what read does, but leaves the samples as the file or device has them. `bytes` has room
  /// for a whole number of samples and is aligned for complex floats.
  virtual size_t readNative(std::span<std::byte> bytes);

  /// Skips the next `samples` samples as if they had been read, and returns how many there were:
  /// fewer at the end.
  virtual uint64_t skip(uint64_t samples);

  /// What was wrong with the data read so far, in one line, such as a file that was cut short. All
  /// samples that were there have been delivered.
  virtual std::optional<std::string> damage() const { return std::nullopt; }

  /// Moves the centre to `hz`. Accepted: samples still in flight from the old centre are dropped,
  /// by settle or else by the next read, which delivers samples from the new one. Refused, by its
  /// answer or by a SourceError that says why: the source goes on at centreHz, as a rule unchanged.
  virtual WendleTuneResult tune(double hz) {
    (void)hz;
    return kTuneNoRadio;  // a recording plays what was received, wherever that was
  }

  /// Drops the samples that were in flight at an accepted tune and waits for those from the new
  /// centre. For callers that want to wait before the new centre is reported.
  virtual void settle() {}

 protected:
  /// What read does, for sources that have samples of their own layout. `native`: room to use.
  size_t readConverted(std::span<std::complex<float>> block, std::vector<std::byte>& native);
};

/// A source that cannot be opened or that fails while it is read.
struct SourceError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace pelagrim_host
