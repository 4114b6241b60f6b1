#pragma once

#include <optional>
#include <span>

namespace pelagrim_host {

/// One visit: how long one listened, and how long something was on the air. Seconds.
struct VisitShare {
  double observed_s;
  double on_s;
};

struct ShareInterval {
  double low;
  double high;
};

/// The 95 % interval for the long-run share of time on the air, from visits in order of time.
///
/// Wilson's formula (1927) with the number of independent looks that visits are worth: what one
/// learns from n visits of variance s² whose autocorrelation time is tau is what
/// p (1 - p) n / (s² tau) yes-or-no looks would teach. tau is the sum over the autocorrelations as
/// long as those of neighbouring lags add up to more than chance (initial positive sequence, Geyer
/// 1992). Student's t with n / tau - 1 degrees of freedom takes the place of the normal quantile,
/// because s² is an estimate. Nothing if visits differ too little to tell.
std::optional<ShareInterval> shareInterval(std::span<const VisitShare> visits);

}  // namespace pelagrim_host
