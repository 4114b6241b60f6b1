#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/export/exported_channel.h"

namespace pelagrim_host {

using ExportedChannels = std::vector<ExportedChannel>;

// Each function gives a whole file in one format. The channels are in order of frequency.

/// bookmarks.csv of gqrx: tags with their colours, an empty line, then bookmarks whose columns are
/// padded with blanks and separated by "; ". Nothing can be quoted, so a semicolon in a name and a
/// comma in a tag become blanks.
std::string gqrxBookmarks(const ExportedChannels& channels);

/// For the frequency manager of SDR++, which adds them to the list that is open there: bookmarks by
/// name, frequencies as floating-point numbers, the mode as a number. Pure ASCII.
std::string sdrppBookmarks(const ExportedChannels& channels);

/// Memories for CHIRP, numbered from 1 and set to receive only (duplex "off") for radios that can
/// do that. FM, and AM from 30 MHz up, are rounded to the nearest multiple of 5 or 6.25 kHz, the
/// steps that radios have; AM below 30 MHz to whole kilohertz; everything else to 10 Hz. Characters
/// that CHIRP lacks become "?".
std::string chirpMemories(const ExportedChannels& channels);

/// Centres in whole hertz, one per line, none twice.
std::string frequencyList(const ExportedChannels& channels);

/// One JSON object per line: the columns of survey.csv, times in ISO 8601 (UTC to the millisecond;
/// null: none), and band, mode and bandwidth.
std::string jsonLines(const ExportedChannels& channels);

/// The same as a table for people and spreadsheets, in MHz and kHz. Text that a spreadsheet would
/// take for a formula gets an apostrophe in front.
std::string readableCsv(const ExportedChannels& channels);

struct ExportFormat {
  std::string_view name;  ///< as in --to
  std::string_view what;
  std::string (*write)(const ExportedChannels& channels);
};

/// All of them.
const std::vector<ExportFormat>& exportFormats();

}  // namespace pelagrim_host
