#include "host/text/quantity_text.h"

#include <fmt/format.h>

#include <charconv>
#include <chrono>
#include <cmath>
#include <system_error>

namespace pelagrim_host {
namespace {

/// Takes `count` digits and then the character `end` (none when it is 0) off the front of `text`.
bool takeDigits(std::string_view& text, size_t count, char end, int& value) {
  const size_t length = count + (end == '\0' ? 0 : 1);
  if (text.size() < length || (end != '\0' && text[count] != end)) return false;
  const char* const digits_end = text.data() + count;
  const auto [stop, error] = std::from_chars(text.data(), digits_end, value);
  if (error != std::errc() || stop != digits_end || value < 0) return false;
  text.remove_prefix(length);
  return true;
}

/// The milliseconds of ".789Z", ".5", "Z" or nothing; digits beyond the third are dropped.
std::optional<int> takeFraction(std::string_view text) {
  if (text.ends_with('Z')) text.remove_suffix(1);
  if (text.empty()) return 0;
  if (text.size() < 2 || text[0] != '.') return std::nullopt;
  int milliseconds = 0;
  int weight = 100;
  for (const char digit : text.substr(1)) {
    if (digit < '0' || digit > '9') return std::nullopt;
    milliseconds += weight * (digit - '0');
    weight /= 10;
  }
  return milliseconds;
}

/// Takes a finite number off the front of `text`.
std::optional<double> takeNumber(std::string_view& text) {
  double value = 0.0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || !std::isfinite(value)) return std::nullopt;
  text.remove_prefix(static_cast<size_t>(stop - text.data()));
  return value;
}

/// Nothing if that is too large for a number.
std::optional<double> scaled(double value, double factor) {
  return std::isfinite(value * factor) ? std::optional(value * factor) : std::nullopt;
}

/// Whether it is a frequency so low that a unit was probably forgotten. 0 is as good as any.
bool lacksUnit(std::string_view text) {
  const auto hz = parsePlainNumber(text);
  return hz && *hz > 0.0 && *hz < 1000.0;
}

}  // namespace

std::optional<double> parseQuantity(std::string_view text) {
  const auto value = takeNumber(text);
  if (!value) return std::nullopt;
  if (text.ends_with("Hz")) text.remove_suffix(2);
  if (text.empty()) return value;
  if (text == "k" || text == "K") return scaled(*value, 1e3);
  if (text == "M" || text == "m") return scaled(*value, 1e6);
  if (text == "G" || text == "g") return scaled(*value, 1e9);
  return std::nullopt;
}

std::optional<double> parsePlainNumber(std::string_view text) {
  const auto value = takeNumber(text);
  return text.empty() ? value : std::nullopt;
}

std::optional<double> parseDecibels(std::string_view text) {
  const auto value = takeNumber(text);
  return text.empty() || text == "dB" ? value : std::nullopt;
}

std::optional<double> parseSeconds(std::string_view text) {
  const auto value = takeNumber(text);
  if (!value || *value < 0.0) return std::nullopt;
  if (text.empty() || text == "s") return value;
  if (text == "m" || text == "min") return scaled(*value, 60.0);
  if (text == "h") return scaled(*value, 3600.0);
  if (text == "d") return scaled(*value, 86400.0);
  return std::nullopt;
}

std::optional<FrequencyRange> parseFrequencyRange(std::string_view text) {
  const size_t colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const auto low_hz = parseQuantity(text.substr(0, colon));
  const auto high_hz = parseQuantity(text.substr(colon + 1));
  if (!low_hz || !high_hz || !(*low_hz < *high_hz)) return std::nullopt;
  return FrequencyRange{*low_hz, *high_hz};
}

std::optional<std::string> frequencyMeant(std::string_view text) {
  const size_t colon = text.find(':');
  const bool is_range = colon != std::string_view::npos;
  const std::string_view low = text.substr(0, colon);
  const std::string_view high = is_range ? text.substr(colon + 1) : "";
  if (!lacksUnit(low) && !lacksUnit(high)) return std::nullopt;
  const auto meant = [](std::string_view part) {
    return fmt::format("{}{}", part, lacksUnit(part) ? "M" : "");
  };
  return meant(low) + (is_range ? ":" + meant(high) : "");
}

std::optional<std::string> sampleRateMeant(std::string_view text) {
  constexpr double kMaxInMegahertz = 60.0;  // above it, what was meant are thousands: 96, 192, 250
  if (!lacksUnit(text)) return std::nullopt;
  return fmt::format("{}{}", text, *parsePlainNumber(text) <= kMaxInMegahertz ? "M" : "k");
}

std::optional<int64_t> parseMoment(std::string_view text) {
  constexpr int64_t kFirstMs = -62'167'219'200'000;  // of the year 0
  constexpr int64_t kLastMs = 253'402'300'799'999;   // of the year 9999
  int64_t unix_ms = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, unix_ms);
  if (error == std::errc() && stop == end) {
    return unix_ms >= kFirstMs && unix_ms <= kLastMs ? std::optional(unix_ms) : std::nullopt;
  }

  int year = 0;
  int month = 0;
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  if (!takeDigits(text, 4, '-', year) || !takeDigits(text, 2, '-', month) ||
      !takeDigits(text, 2, 'T', day) || !takeDigits(text, 2, ':', hour) ||
      !takeDigits(text, 2, ':', minute) || !takeDigits(text, 2, '\0', second)) {
    return std::nullopt;
  }
  const auto milliseconds = takeFraction(text);
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  // Second 60 is a leap second; Unix time counts it as the first of the next minute.
  if (!milliseconds || !date.ok() || hour > 23 || minute > 59 || second > 60) return std::nullopt;
  const auto moment = std::chrono::sys_days(date) + std::chrono::hours(hour) +
                      std::chrono::minutes(minute) + std::chrono::seconds(second) +
                      std::chrono::milliseconds(*milliseconds);
  return moment.time_since_epoch().count();
}

std::string formatMoment(int64_t unix_ms) {
  const std::chrono::sys_time<std::chrono::milliseconds> moment{std::chrono::milliseconds(unix_ms)};
  const auto day = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(std::chrono::floor<std::chrono::seconds>(moment - day));
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                     time.hours().count(), time.minutes().count(), time.seconds().count());
}

std::string formatFrequency(double hz) {
  const bool whole_khz = std::fmod(hz, 1000.0) == 0.0;
  return fmt::format("{:.{}f} MHz", hz / 1e6, whole_khz ? 3 : 6);
}

std::string formatSampleRate(double rate_hz) {
  if (rate_hz >= 1e6) return fmt::format("{:.7g} MS/s", rate_hz / 1e6);
  if (rate_hz >= 1e3) return fmt::format("{:.7g} kS/s", rate_hz / 1e3);
  return fmt::format("{:.7g} S/s", rate_hz);
}

std::string formatNumber(double value) {
  return fmt::format("{:.15g}", value);
}

}  // namespace pelagrim_host
