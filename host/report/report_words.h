#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/report/report_data.h"

namespace pelagrim_host {

// The words of a report, for the picture and the page; the page's script gets them as data. Words
// in braces are placeholders, filled in by name.

inline constexpr std::string_view kLevelScaleWords = "relative dB over floor";
inline constexpr std::string_view kFrequencyUnitWords = "MHz";
inline constexpr std::string_view kBandPlanWords = "Band plan";
inline constexpr std::string_view kGuessMark = "\u2248";  // before a time that is a guess
inline constexpr std::string_view kLocalTimeWords = "local time";
inline constexpr std::string_view kLeastActiveWords =
    "hits/looks since first heard: 0";  // before the shades
inline constexpr std::string_view kMostActiveWords = "1 or more";

/// How a change is shown.
struct ChangeWords {
  std::string_view name;
  std::string_view symbol;      ///< before the frequency; empty if nothing has changed
  std::string_view mark_style;  ///< class of the mark in picture.css; empty: like any other
};

const ChangeWords& wordsOf(Change change);

/// The same for every change, in their order.
const std::vector<ChangeWords>& changeWords();

/// What the symbols and outlines of changes mean, for the changes that this report shows; empty
/// without a comparison.
std::string changeLegend(const ReportData& report);

/// The heading of a column of the table; `column` is its name in the page's data.
struct ColumnWords {
  std::string_view column;
  std::string_view title;
  std::string_view unit;
};

const std::vector<ColumnWords>& columnWords();

/// All other texts of the page's script, under the names that it uses.
struct ScriptWords {
  std::string_view name;
  std::string_view words;
};

const std::vector<ScriptWords>& scriptWords();

/// "1 channel", "2 channels".
std::string channelCount(size_t count);

/// Without gone channels.
size_t knownChannels(const ReportData& report);

/// How many channels this survey has, and how many of the earlier one are gone: "15 channels", "15
/// channels, 1 gone".
std::string channelsText(const ReportData& report);

/// The band, and channelsText.
std::string titleOf(const ReportData& report);

/// When the channels were seen: text with the placeholders {first}, {last} and {zone}, or why there
/// is no such time.
std::string_view timeSpanWords(const ReportData& report);

}  // namespace pelagrim_host
