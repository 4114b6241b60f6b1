#include "host/sources/iq_source.h"

#include <algorithm>
#include <vector>

namespace pelagrim_host {

size_t IqSource::readNative(std::span<std::byte> bytes) {
  return read({reinterpret_cast<std::complex<float>*>(bytes.data()),
               bytes.size() / sizeof(std::complex<float>)});
}

size_t IqSource::readConverted(std::span<std::complex<float>> block,
                               std::vector<std::byte>& native) {
  native.resize(block.size() * layout().sampleBytes());
  const size_t samples = readNative(native);
  layout().toFloats(native.data(), samples, block.data());
  return samples;
}

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
