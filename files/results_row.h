#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "survey/channel.h"

namespace pelagrim {

/// How the first line of survey.csv begins in the present format.
inline constexpr std::string_view kFormatMark = "# survey.csv format 2";

/// The two lines that survey.csv begins with: the format and the names of the columns.
inline constexpr std::string_view kResultsHeader =
    "# survey.csv format 2: each centre_hz is the middle of its signal's bins\n"
    "centre_hz,width_hz,min_width_hz,max_width_hz,peak_db,floor_db,hits,looks,"
    "first_unix_ms,last_unix_ms,guess\n";

/// What one row of survey.csv holds.
struct ResultsRow {
  Channel channel;        ///< centre_hz and hits are at least 1, looks at least hits
  std::string_view rest;  ///< what follows the last number in the line: a comma and the guess
};

/// Reads one line, which ends at its NUL byte. Nothing for the column names, and for a row that
/// lacks a number or makes no sense. Values are not limited, and a row that was cut off inside its
/// last number still reads as one. Numbers are read with a decimal point only while a CLocale lives
/// or the thread has the C locale anyway.
std::optional<ResultsRow> parseResultsRow(const char* line);

/// Appends the channel's row, line feed included, to `text`: frequencies and widths in whole hertz,
/// levels in tenths of a decibel, at the end the guess at its kind. A row that odd values make
/// longer than 255 bytes is cut there.
void appendResultsRow(std::string& text, const Channel& channel);

}  // namespace pelagrim
