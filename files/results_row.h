#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "survey/channel.h"

namespace pelagrim {

/// How the first line of survey.csv begins in the present format.
inline constexpr std::string_view kFormatMark = "# survey.csv format 2";

/// The first two lines of survey.csv: the format and the names of the columns.
inline constexpr std::string_view kResultsHeader =
    "# survey.csv format 2: each centre_hz is the middle of its signal's bins\n"
    "centre_hz,width_hz,min_width_hz,max_width_hz,peak_db,floor_db,hits,looks,"
    "first_unix_ms,last_unix_ms,guess\n";

/// What one row of survey.csv holds.
struct ResultsRow {
  Channel channel;         ///< centre_hz and hits are at least 1, looks at least hits
  std::string_view rest;   ///< what follows the last number in the line: a comma and the guess
  uint32_t written_looks;  ///< as the line has them, be they fewer than the hits
};

/// Reads one line, which ends at its NUL byte. Returns nothing for the column names and for
/// a row that lacks a number or makes no sense. Values are not limited, and a row that was cut off
/// inside its last number is still read. The thread must be in the C locale (see CLocale) for a
/// decimal point to be read.
std::optional<ResultsRow> parseResultsRow(const char* line);

/// Appends the channel's row, line feed included, to `text`: frequencies and widths in whole hertz,
/// levels in tenths of a decibel, the guess at its kind at the end. A row longer than 255 bytes,
/// which takes absurd values, is cut there.
void appendResultsRow(std::string& text, const Channel& channel);

}  // namespace pelagrim
