#include "plugin/host_services.h"

namespace pelagrim {

namespace {

const WendleHostApi* g_host = nullptr;

}  // namespace

void hc_attach(const WendleHostApi* host) noexcept {
  g_host = host;
}

int64_t hostNowMs() {
  return g_host != nullptr && g_host->now_ms != nullptr ? g_host->now_ms(g_host->ctx) : 0;
}

bool hostTunes() {
  return g_host != nullptr && g_host->tune != nullptr;
}

int hostTune(double centre_hz) {
  return g_host->tune(g_host->ctx, centre_hz);
}

}  // namespace pelagrim
