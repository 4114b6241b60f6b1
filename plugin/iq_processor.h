#pragma once

#include <cstddef>

namespace pelagrim {

// The entry points of the IQ processor, as WendleIqApi describes them. All take the lock of State.

void* iq_create(double sample_rate_hz, double centre_hz) noexcept;
void iq_process(void* handle, const float* iq, size_t n) noexcept;
void iq_retune(void* handle, double centre_hz) noexcept;
int iq_poll_text(void* handle, char* buf, size_t len) noexcept;
void iq_destroy(void* handle) noexcept;

}  // namespace pelagrim
