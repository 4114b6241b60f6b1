#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <vector>

namespace pelagrim_host {

/// Samples that were read in one go, as the source has them, with all that is known of them. They
/// come from one centre and follow each other without a gap.
struct SampleChunk {
  std::vector<std::byte> bytes;         ///< room for a chunk in the source's layout
  size_t samples = 0;                   ///< how many there are; 0: this is the end of the source
  uint64_t first_sample = 0;            ///< counted from the first that was read
  double centre_hz = 0.0;               ///< that they come from
  std::optional<int64_t> unix_ms{};     ///< of the first sample, if a recording says so
  int64_t begun_steady_ms = 0;          ///< when the first one was received
  int64_t received_steady_ms = 0;       ///< when all of them were
  uint64_t overflows = 0;               ///< of the receiver, since the first chunk
  uint32_t tunes = 0;                   ///< accepted before they were received
  std::exception_ptr failure{};         ///< at the end: why the source ended, if it failed
  std::optional<std::string> damage{};  ///< at the end: what was wrong with a recording
};

}  // namespace pelagrim_host
