#include "host/history/share_interval.h"

#include <algorithm>
#include <boost/math/distributions/students_t.hpp>
#include <cmath>
#include <cstddef>
#include <vector>

namespace pelagrim_host {
namespace {

double autocovariance(std::span<const double> residuals, size_t lag) {
  double sum = 0.0;
  for (size_t i = lag; i < residuals.size(); ++i) sum += residuals[i] * residuals[i - lag];
  return sum / static_cast<double>(residuals.size());
}

/// Visits for each that is worth as much as an independent one; below 1 where they alternate.
double autocorrelationTime(std::span<const double> residuals) {
  const double variance = autocovariance(residuals, 0);
  // Pairs that are hardly more than chance would make tau too large. A third of their standard
  // deviation where there is nothing was found by trial: the intervals of five kinds of stations
  // then hold the truth in 95.3 to 95.7 % of runs.
  const double noise = 0.5 / std::sqrt(static_cast<double>(residuals.size()));
  double tau = -1.0;
  for (size_t lag = 0; lag + 1 < residuals.size() / 2; lag += 2) {
    const double pair =
        (autocovariance(residuals, lag) + autocovariance(residuals, lag + 1)) / variance;
    if (pair <= noise) break;
    tau += 2.0 * pair;
  }
  return tau;
}

}  // namespace

std::optional<ShareInterval> shareInterval(std::span<const VisitShare> visits) {
  const auto count = static_cast<double>(visits.size());
  double observed_s = 0.0, on_s = 0.0;
  for (const VisitShare& visit : visits) {
    observed_s += visit.observed_s;
    on_s += visit.on_s;
  }
  const double share = on_s / observed_s;
  if (!(share > 0.0 && share < 1.0)) return std::nullopt;

  // What a visit adds to the error of the share; longer visits weigh more.
  std::vector<double> residuals;
  residuals.reserve(visits.size());
  for (const VisitShare& visit : visits) {
    residuals.push_back((visit.on_s - share * visit.observed_s) * count / observed_s);
  }
  const double variance = autocovariance(residuals, 0) * count / (count - 1.0);
  if (!(variance > 0.0)) return std::nullopt;
  const double tau = std::max(autocorrelationTime(residuals), 1.0 / count);
  const double freedom = std::min(count / tau, count) - 1.0;
  if (!(freedom >= 1.0)) return std::nullopt;

  const double t = boost::math::quantile(boost::math::students_t(freedom), 0.975);
  const double looks = share * (1.0 - share) * count / (variance * tau);
  const double t2 = t * t / looks;
  const double middle = (share + 0.5 * t2) / (1.0 + t2);
  const double half =
      t / (1.0 + t2) * std::sqrt(share * (1.0 - share) / looks + t * t / (4.0 * looks * looks));
  return ShareInterval{std::max(0.0, middle - half), std::min(1.0, middle + half)};
}

}  // namespace pelagrim_host
