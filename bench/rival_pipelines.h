#pragma once

#include <memory>

namespace pelagrim {

/// The same frame pipeline (window, 1024-point FFT, |X|^2 into double sums, centre first) around
/// other libraries' transforms. Not bit-identical to ours: each has its own twiddles.
class FramePipeline {
 public:
  FramePipeline() = default;
  FramePipeline(const FramePipeline&) = delete;
  FramePipeline& operator=(const FramePipeline&) = delete;
  virtual ~FramePipeline() = default;
  virtual void addFrame(const float* iq, const float* window, double* power_sum) = 0;
};

/// FFTW 3 in single precision: FFTW_MEASURE, aligned buffers, the glue in plain loops.
std::unique_ptr<FramePipeline> makeFftwPipeline();

/// The same transform between loops written by hand for AVX2.
std::unique_ptr<FramePipeline> makeTunedFftwPipeline();

std::unique_ptr<FramePipeline> makeKissFftPipeline();
std::unique_ptr<FramePipeline> makeLiquidPipeline();

}  // namespace pelagrim
