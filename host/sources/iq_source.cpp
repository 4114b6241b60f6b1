#include "host/sources/iq_source.h"

#include <algorithm>
#include <vector>

namespace pelagrim_host {

uint64_t IqSource::skip(uint64_t samples) {
  std::vector<std::complex<float>> block(1 << 16);
  uint64_t skipped = 0;
  while (skipped < samples) {
    const auto wanted = std::min<uint64_t>(samples - skipped, block.size());
    const size_t got = read(std::span(block).first(wanted));
    if (got == 0) break;
    skipped += got;
  }
  return skipped;
}

}  // namespace pelagrim_host
