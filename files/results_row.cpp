#include "files/results_row.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "survey/signal_kind.h"
#include "survey/whole_number.h"

namespace pelagrim {

namespace {

constexpr size_t kMaxRowBytes = 255;

/// One row of the file, its fields separated by commas. Numbers are written as printf would in the
/// C locale ("%lld", "%u", "%.1f"), by the standard library's faster conversions.
class RowText {
 public:
  void addHz(double hz) { add(roundToInteger(hz)); }

  void addDb(double db) {
    next_ = std::to_chars(next_, end(), db, std::chars_format::fixed, 1).ptr;
    comma();
  }

  template <typename Integer>
  void add(Integer value) {
    next_ = std::to_chars(next_, end(), value).ptr;
    comma();
  }

  void addLast(std::string_view text) { next_ = std::copy(text.begin(), text.end(), next_); }

  std::string_view text() const {
    return std::string_view(row_, static_cast<size_t>(next_ - row_)).substr(0, kMaxRowBytes);
  }

 private:
  void comma() { *next_++ = ','; }
  char* end() { return row_ + sizeof row_; }

  // Two levels of up to 312 characters, eight integers of up to 20, a short text.
  char row_[1024];
  char* next_ = row_;
};

}  // namespace

std::optional<ResultsRow> parseResultsRow(const char* line) {
  if (*line == 'c') return std::nullopt;  // the column names
  long long centre_hz, width_hz, min_width_hz, max_width_hz, first_unix_ms, last_unix_ms;
  int end = 0;
  Channel row;
  const int fields =
      std::sscanf(line, "%lld,%lld,%lld,%lld,%lf,%lf,%u,%u,%lld,%lld%n", &centre_hz, &width_hz,
                  &min_width_hz, &max_width_hz, &row.peak_db, &row.floor_db, &row.hits, &row.looks,
                  &first_unix_ms, &last_unix_ms, &end);
  if (fields != 10 || centre_hz < 1 || row.hits == 0) return std::nullopt;
  row.centre_hz = static_cast<double>(centre_hz);
  row.width_hz = static_cast<double>(width_hz);
  row.min_width_hz = static_cast<double>(min_width_hz);
  row.max_width_hz = static_cast<double>(max_width_hz);
  row.first_unix_ms = first_unix_ms;
  row.last_unix_ms = last_unix_ms;
  const uint32_t written_looks = row.looks;
  row.looks = std::max(row.looks, row.hits);
  return ResultsRow{row, line + end, written_looks};
}

void appendResultsRow(std::string& text, const Channel& channel) {
  RowText row;
  row.addHz(channel.centre_hz);
  row.addHz(channel.width_hz);
  row.addHz(channel.min_width_hz);
  row.addHz(channel.max_width_hz);
  row.addDb(channel.peak_db);
  row.addDb(channel.floor_db);
  row.add(channel.hits);
  row.add(channel.looks);
  row.add(channel.first_unix_ms);
  row.add(channel.last_unix_ms);
  row.addLast(guessKind(channel.width_hz));
  text.append(row.text()).append("\n");
}

}  // namespace pelagrim
