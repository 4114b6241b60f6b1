#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/evidence/dwell_record.h"
#include "host/evidence/row_spectra.h"
#include "survey/slice.h"

namespace pelagrim_host {

/// How far the mean power of `frames` frames in `bins` neighbouring bins, at least 2, must be above
/// the noise power there to count as a signal, as a factor: noise alone does that in one row in a
/// million. Powers of noise are exponential and independent from frame to frame; from bin to bin
/// the Hann window makes them depend on each other (Harris, 1978), so m bins count for fewer. The
/// mean of many is taken as a gamma variable of the same mean and variance.
double onAirThreshold(size_t bins, uint32_t frames);

/// How many frames make a row: about `resolution_seconds`, but as many as it takes for a signal two
/// bins wide to be noticed from 6 dB above the noise on.
uint32_t rowFrames(double sample_rate_hz, double resolution_seconds);

/// An interval of frequency to be watched.
struct FrequencyInterval {
  double low_hz;
  double high_hz;
};

/// Says for each interval that lies in the slice in which rows it was on the air: where its power
/// was above the noise of its neighbourhood by the threshold for its width. That noise is the
/// median power of the nearest bins on both sides which are in none of the intervals, and follows
/// the gain of the receiver from row to row. Intervals narrower than two bins are widened. Nothing
/// if there is no complete row or no free bin.
std::vector<WatchedPlace> watchPlaces(const RowSpectra& spectra, const pelagrim::Slice& slice,
                                      std::span<const FrequencyInterval> intervals);

}  // namespace pelagrim_host
