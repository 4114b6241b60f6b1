#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace pelagrim_host {

/// A stretch of spectrum, low_hz below high_hz.
struct FrequencyRange {
  double low_hz;
  double high_hz;
};

/// A number with an optional suffix k, M or G (either case) and an optional unit Hz: "145.5M",
/// "250k", "2.4GHz", "12500". The decimal separator is a point whatever the locale. Nothing if the
/// text is anything else or the number is not finite.
std::optional<double> parseQuantity(std::string_view text);

/// A finite number and nothing else: "-1.5".
std::optional<double> parsePlainNumber(std::string_view text);

/// The same with an optional unit dB: "12", "12dB".
std::optional<double> parseDecibels(std::string_view text);

/// A time of 0 or more in seconds: a number with an optional unit s, m (or min), h or d: "2.5",
/// "10m".
std::optional<double> parseSeconds(std::string_view text);

/// Two frequencies with a colon between them, the lower first: "144M:146M".
std::optional<FrequencyRange> parseFrequencyRange(std::string_view text);

/// What was probably meant by a frequency, or a range of them, above 0 and below 1 kHz that has no
/// unit: "144M:146M" for "144:146". Nothing where there is nothing to doubt.
std::optional<std::string> frequencyMeant(std::string_view text);

/// The same for a sample rate: "2.4M" for "2.4", "250k" for "250".
std::optional<std::string> sampleRateMeant(std::string_view text);

/// A moment as Unix time in milliseconds: ISO 8601 in UTC ("2024-11-16T12:34:56.789Z"; the fraction
/// and the Z may be absent), or the milliseconds themselves. The years are 0 to 9999.
std::optional<int64_t> parseMoment(std::string_view text);

/// A moment in UTC to the second, as parseMoment takes it: "2024-11-16T12:34:56Z".
std::string formatMoment(int64_t unix_ms);

/// "145.500 MHz"; six decimals if the frequency is not a whole number of kilohertz.
std::string formatFrequency(double hz);

/// "2.4 MS/s", "250 kS/s".
std::string formatSampleRate(double rate_hz);

/// The shortest ordinary decimal form, for a settings file: "145500000", "12.5".
std::string formatNumber(double value);

}  // namespace pelagrim_host
