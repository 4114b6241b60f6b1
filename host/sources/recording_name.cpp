#include "host/sources/recording_name.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <system_error>
#include <vector>

#include "host/sources/recording_kind.h"
#include "host/text/letter_case.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

// The highest rate and centre that a receiver could have.
constexpr double kMaxRateHz = 61.44e6;
constexpr double kMaxCentreHz = 1e12;

/// What a unit after a number means. kFrequency: a centre, or a rate after a centre.
enum class Meaning { kRate, kFrequency, kFrequencyOrRate };

struct Unit {
  std::string_view text;  ///< in lower case, except for the units without Hz
  double scale;
  Meaning meaning;
};

constexpr std::array kUnits = {
    Unit{"hz", 1.0, Meaning::kFrequency},
    Unit{"khz", 1e3, Meaning::kFrequency},
    Unit{"mhz", 1e6, Meaning::kFrequencyOrRate},
    Unit{"ghz", 1e9, Meaning::kFrequency},
    Unit{"M", 1e6, Meaning::kFrequencyOrRate},
    Unit{"G", 1e9, Meaning::kFrequency},
    Unit{"k", 1e3, Meaning::kRate},
    Unit{"K", 1e3, Meaning::kRate},
    Unit{"sps", 1.0, Meaning::kRate},
    Unit{"ksps", 1e3, Meaning::kRate},
    Unit{"msps", 1e6, Meaning::kRate},
};

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

bool areDigits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

std::vector<std::string_view> wordsOf(std::string_view text) {
  std::vector<std::string_view> words;
  while (!text.empty()) {
    const size_t end = std::min(text.find_first_of("_ "), text.size());
    if (end > 0) words.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return words;
}

/// Digits with at most one point between them, off the front of `text`.
std::optional<double> takeNumber(std::string_view& text) {
  size_t length = 0;
  while (length < text.size() && (isDigit(text[length]) || text[length] == '.')) ++length;
  double value = 0.0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + length, value);
  if (error != std::errc() || stop != text.data() + length) return std::nullopt;
  text.remove_prefix(length);
  return value;
}

/// A rate with its unit in place of the point: 1M6, 2M4, 250k0.
std::optional<double> rateWithUnitAsPoint(std::string_view word) {
  const size_t unit = word.find_first_of("kM");
  if (unit == std::string_view::npos) return std::nullopt;
  const auto whole = word.substr(0, unit);
  const auto fraction = word.substr(unit + 1);
  if (!areDigits(whole) || !areDigits(fraction)) return std::nullopt;
  return parseQuantity(fmt::format("{}.{}{}", whole, fraction, word[unit]));
}

/// The moment given by 20180906 and 204111 or 204111Z.
std::optional<int64_t> momentOf(std::string_view date, std::string_view time) {
  if (time.ends_with('Z')) time.remove_suffix(1);
  if (date.size() != 8 || time.size() != 6 || !areDigits(date) || !areDigits(time)) {
    return std::nullopt;
  }
  return parseMoment(fmt::format("{}-{}-{}T{}:{}:{}", date.substr(0, 4), date.substr(4, 2),
                                 date.substr(6), time.substr(0, 2), time.substr(2, 2),
                                 time.substr(4)));
}

/// Collects what the words say.
class NameReader {
 public:
  NameReader(bool rate_is_elsewhere, std::optional<double> told_centre_hz)
      : rate_is_elsewhere_(rate_is_elsewhere), told_centre_hz_(told_centre_hz) {}

  void read(const std::vector<std::string_view>& words) {
    const bool by_gqrx = words.front() == "gqrx";
    for (size_t i = 0; i < words.size(); ++i) {
      const auto moment =
          i + 1 < words.size() ? momentOf(words[i], words[i + 1]) : std::optional<int64_t>();
      if (moment && !found_.start_unix_ms) {
        found_.start_unix_ms = moment;
        ++i;
      } else if (by_gqrx && areDigits(words[i])) {
        addFrequency(parseQuantity(words[i]).value_or(0.0), false);
      } else if (by_gqrx && words[i] == "fc") {
        found_.format = findSampleFormat("cf32");
      } else {
        readWord(words[i]);
      }
    }
  }

  RecordingName result() const {
    RecordingName name = found_;
    if (frequencies_.empty()) return name;
    const bool unclear = frequencies_.size() == 1 && may_be_rate_ && !name.centre_hz &&
                         !name.rate_hz && !rate_is_elsewhere_ && frequencies_[0] <= kMaxRateHz;
    if (unclear) {
      if (isNoCentre(frequencies_[0])) setRate(name, frequencies_[0]);
      return name;
    }
    if (!name.centre_hz) name.centre_hz = frequencies_[0];
    if (!name.rate_hz && frequencies_.size() > 1) setRate(name, frequencies_[1]);
    return name;
  }

 private:
  /// Whether the user gave the centre and `hz` cannot be a rounding of it.
  bool isNoCentre(double hz) const {
    return told_centre_hz_ && std::abs(hz - *told_centre_hz_) > 0.1 * hz;
  }

  static void setRate(RecordingName& name, double rate_hz) {
    if (!name.rate_hz && rate_hz >= 1.0 && rate_hz <= kMaxRateHz) name.rate_hz = rate_hz;
  }

  void addFrequency(double hz, bool may_be_rate) {
    if (hz <= 0.0 || hz > kMaxCentreHz) return;
    if (frequencies_.empty()) may_be_rate_ = may_be_rate;
    frequencies_.push_back(hz);
  }

  void readWord(std::string_view word) {
    if (const SampleFormat* const format = findSampleFormat(lowerCase(std::string(word)))) {
      found_.format = format;
      return;
    }
    if (const auto rate_hz = rateWithUnitAsPoint(word)) {
      setRate(found_, *rate_hz);
      return;
    }
    const bool in_khz = word.starts_with("cf");
    if (in_khz) word.remove_prefix(2);
    const auto value = takeNumber(word);
    if (!value) return;
    if (in_khz) {
      const double hz = *value * 1e3;
      if (word.empty() && hz > 0.0 && hz <= kMaxCentreHz) found_.centre_hz = hz;
      return;
    }
    const std::string lower = lowerCase(std::string(word));
    for (const Unit& unit : kUnits) {
      if (unit.text != word && (unit.text.size() == 1 || unit.text != lower)) continue;
      const double hz = *value * unit.scale;
      if (unit.meaning == Meaning::kRate) {
        setRate(found_, hz);
      } else {
        addFrequency(hz, unit.meaning == Meaning::kFrequencyOrRate);
      }
    }
  }

  bool rate_is_elsewhere_;
  std::optional<double> told_centre_hz_;
  RecordingName found_;
  std::vector<double> frequencies_;  ///< in the name's order
  bool may_be_rate_ = false;         ///< the first of them
};

}  // namespace

RecordingName parseRecordingName(std::string_view file_name, std::optional<double> told_centre_hz) {
  const size_t point = std::min(file_name.rfind('.'), file_name.size());
  NameReader reader(recordingKind(file_name) == RecordingKind::kWav, told_centre_hz);
  const auto words = wordsOf(file_name.substr(0, point));
  if (!words.empty()) reader.read(words);
  RecordingName name = reader.result();
  if (point == file_name.size()) return name;
  const std::string extension = lowerCase(std::string(file_name.substr(point + 1)));
  if (const auto* const format = formatOfExtension(extension)) name.format = format;
  return name;
}

}  // namespace pelagrim_host
