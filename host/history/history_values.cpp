#include "host/history/history_values.h"

#include <fmt/format.h>

#include <random>

#include "host/process/digest.h"

namespace pelagrim_host {

std::string runName(std::string_view identity, std::string_view settings, std::string_view part) {
  // The lengths keep texts apart that would be the same once joined.
  return sha256Of(fmt::format("{}:{}:{}:{}{}{}", identity.size(), settings.size(), part.size(),
                              identity, settings, part))
      .substr(0, 32);
}

std::string randomRunName() {
  std::random_device random;
  return fmt::format("{:08x}{:08x}{:08x}{:08x}", random(), random(), random(), random());
}

}  // namespace pelagrim_host
