#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/export/exported_channel.h"

namespace pelagrim_host {

using ExportedChannels = std::vector<ExportedChannel>;

// Every format as a whole file. The channels are in order of frequency.

/// bookmarks.csv of gqrx: tags with their colours, an empty line, then bookmarks whose columns are
/// filled up with blanks and parted by "; ". Neither can be quoted, so a semicolon in a name, and a
/// comma in a tag, becomes a blank.
std::string gqrxBookmarks(const ExportedChannels& channels);

/// What the frequency manager of SDR++ imports, and adds to the list that is open there: bookmarks
/// by name, frequencies as floating-point numbers, the mode as a number. In pure ASCII.
std::string sdrppBookmarks(const ExportedChannels& channels);

/// Memories for CHIRP, numbered from 1, set to receive only ("off" for the duplex) where the radio
/// knows that. FM, and AM from 30 MHz on, go to the nearest multiple of 5 or 6.25 kHz, the steps
/// that radios have, AM below to whole kilohertz, everything else to whole tens of hertz.
/// Characters that CHIRP does not have become "?".
std::string chirpMemories(const ExportedChannels& channels);

/// Centres in whole hertz, one to a line, none twice.
std::string frequencyList(const ExportedChannels& channels);

/// One JSON object to a line: the columns of survey.csv, times in ISO 8601 (UTC to the
/// millisecond; null: none), and band, mode and bandwidth.
std::string jsonLines(const ExportedChannels& channels);

/// The same as a table for people and spreadsheets, in MHz and kHz. A text that a spreadsheet would
/// take for a formula gets an apostrophe before it.
std::string readableCsv(const ExportedChannels& channels);

struct ExportFormat {
  std::string_view name;  ///< as in --to
  std::string_view what;
  std::string (*write)(const ExportedChannels& channels);
};

/// All of them.
const std::vector<ExportFormat>& exportFormats();

}  // namespace pelagrim_host
