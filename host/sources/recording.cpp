#include "host/sources/recording.h"

#include <fmt/format.h>

namespace pelagrim_host {

std::optional<int64_t> Recording::startUnixMs() const {
  if (!facts_.start_unix_ms) return std::nullopt;
  return facts_.start_unix_ms->value;
}

void Recording::setLeftOver(uint64_t bytes, std::string_view format) {
  setDamage(fmt::format(
      "the last {} of its bytes do not make a whole {} sample: it was cut short or is of "
      "another format; the samples before were surveyed",
      bytes, format));
}

void Recording::setShrunk() {
  setDamage("it became shorter while it was read; the samples before were surveyed");
}

void Recording::setFacts(RecordingFacts facts) {
  requireKnown(name_, facts);
  facts_ = std::move(facts);
}

}  // namespace pelagrim_host
