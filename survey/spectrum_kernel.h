#pragma once

namespace pelagrim {

/// Adds the power spectrum of one frame to `power_sum` (1024 entries, lowest frequency first).
///
/// iq: 1024 complex samples, I then Q, aligned to 4 bytes, not changed; window: 1024 coefficients.
/// The transform is the radix-2 decimation-in-time FFT (Cooley and Tukey, 1965) in 32-bit floats.
/// Its twiddles are a running product that starts again in every block; re^2 + im^2 is summed in
/// doubles. Every processor gives the same result to the bit.
void addFramePower(const float* iq, const float* window, double* power_sum) noexcept;

/// The forms that addFramePower chooses from: vectors of 4 floats on any processor, of 8 with AVX2
/// and FMA, of 16 with AVX-512.
void addFramePower4(const float* iq, const float* window, double* power_sum) noexcept;
void addFramePower8(const float* iq, const float* window, double* power_sum) noexcept;
void addFramePower16(const float* iq, const float* window, double* power_sum) noexcept;

/// Whether the processor and the operating system can run the form.
bool hasAddFramePower8() noexcept;
bool hasAddFramePower16() noexcept;

}  // namespace pelagrim
