#include "plugin/iq_processor.h"

#include <mutex>

#include "plugin/attempt.h"
#include "plugin/dwell.h"
#include "plugin/host_services.h"
#include "plugin/state.h"
#include "plugin/survey_start.h"

namespace pelagrim {

void* iq_create(double sample_rate_hz, double centre_hz) noexcept {
  attempt([&] {
    const std::lock_guard lock(g_state.mutex);
    startSurvey(g_state, {.sample_rate_hz = sample_rate_hz, .centre_hz = centre_hz});
  });
  return &g_state;
}

void iq_process(void* handle, const float* iq, size_t n) noexcept {
  if (handle == nullptr || iq == nullptr) return;
  attempt([&] {
    const std::lock_guard lock(g_state.mutex);
    g_state.spectrum.take(iq, n);
    endDwellWhenDue(g_state);
  });
}

void iq_retune(void* handle, double centre_hz) noexcept {
  if (handle == nullptr) return;
  attempt([&] {
    const std::lock_guard lock(g_state.mutex);
    g_state.spectrum.restart();
    g_state.slice.centre_hz = centre_hz;
    g_state.dwell_start_ms = hostNowMs();
  });
}

int iq_poll_text(void* handle, char* buf, size_t len) noexcept {
  if (handle == nullptr || buf == nullptr || len == 0) return 0;
  bool taken = false;
  attempt([&] {
    const std::lock_guard lock(g_state.mutex);
    taken = g_state.log.takeLine(buf, len);
  });
  return taken ? 1 : 0;
}

void iq_destroy(void* handle) noexcept {
  if (handle == nullptr) return;
  attempt([&] {
    const std::lock_guard lock(g_state.mutex);
    finishDwell(g_state);
  });
}

}  // namespace pelagrim
