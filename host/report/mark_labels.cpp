#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <tuple>

#include "host/report/report_words.h"
#include "host/report/whole_band.h"

namespace pelagrim_host {
namespace {

struct LabelBox {
  size_t channel;
  double x;
  double y;
  double half_width;
};

class LabelPlaces {
 public:
  explicit LabelPlaces(const WholeBand& band)
      : band_(band), at_(band.measures()), behind_(band.skyline(WholeBand::MarkWidth::kNarrow)) {}

  /// Where a label of this length goes over the mark of a channel.
  LabelBox boxOf(size_t index, size_t characters) const {
    const ReportData& report = band_.report();
    const double half = 0.5 * static_cast<double>(characters) * at_.character_width + 2.0;
    const double x = band_.xOf(report.channels[index].channel.centre_hz);
    return {index, std::clamp(x, at_.left + half, band_.width() - half),
            report.layout.marks[index].top - at_.label_gap, half};
  }

  /// Whether another mark is behind it.
  bool isHidden(const LabelBox& box) const {
    const auto first = behind_.begin() + static_cast<ptrdiff_t>(box.x - box.half_width);
    const auto columns = static_cast<ptrdiff_t>(2.0 * box.half_width);
    return *std::min_element(first, first + columns) < box.y;
  }

  /// Takes the place unless the label of another channel is in the way.
  bool take(const LabelBox& box) {
    const bool is_free = std::none_of(taken_.begin(), taken_.end(), [&](const LabelBox& other) {
      return other.channel != box.channel &&
             std::abs(other.x - box.x) < other.half_width + box.half_width &&
             std::abs(other.y - box.y) < at_.label_height;
    });
    if (is_free) taken_.push_back(box);
    return is_free;
  }

 private:
  const WholeBand& band_;
  const PictureMeasures& at_;
  std::vector<double> behind_;
  std::vector<LabelBox> taken_;
};

std::vector<size_t> inOrderOfInterest(const std::vector<ReportedChannel>& channels) {
  std::vector<size_t> order(channels.size());
  std::iota(order.begin(), order.end(), size_t{0});
  const auto rank = [&channels](size_t index) {
    const ReportedChannel& one = channels[index];
    return std::tuple(one.change == Change::kNone, -one.channel.activity(),
                      -overFloorDb(one.channel));
  };
  std::stable_sort(order.begin(), order.end(),
                   [&](size_t left, size_t right) { return rank(left) < rank(right); });
  return order;
}

}  // namespace

std::vector<MarkLabel> markLabels(const WholeBand& band) {
  const std::vector<ReportedChannel>& channels = band.report().channels;
  const std::vector<size_t> order = inOrderOfInterest(channels);
  const bool is_crowded = band.isCrowded();
  LabelPlaces places(band);
  std::map<size_t, LabelBox> reserved;
  for (const size_t index : order) {
    if (channels[index].change == Change::kNone) continue;
    const LabelBox box = places.boxOf(index, 1);
    if (is_crowded && places.isHidden(box)) continue;
    if (places.take(box)) reserved.emplace(index, box);
  }
  std::vector<MarkLabel> labels;
  for (const size_t index : order) {
    const auto& [channel, change, old_hits, old_looks] = channels[index];
    const std::string symbol(wordsOf(change).symbol);
    const std::string frequency = fmt::format("{:.4f}", channel.centre_hz / 1e6);
    // A symbol is as wide as two digits.
    const LabelBox box = places.boxOf(index, frequency.size() + (symbol.empty() ? 0 : 2));
    if (!places.isHidden(box) && places.take(box)) {
      labels.push_back({box.x, box.y, symbol + frequency});
    } else if (const auto own = reserved.find(index); own != reserved.end()) {
      labels.push_back({own->second.x, own->second.y, symbol});
    }
  }
  return labels;
}

}  // namespace pelagrim_host
