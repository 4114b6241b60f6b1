#pragma once

#include <string>

#include "host/sources/iq_source.h"
#include "host/sources/recording_facts.h"
#include "host/sources/start_time.h"

namespace pelagrim_host {

/// What a source was taken for, in one line: "taken as format cu8 from the file name, rate ...".
std::string sourceLine(const IqSource& source, const StartTime& start);

/// The same as a table, one fact per line.
std::string sourceTable(const IqSource& source, const StartTime& start);

/// The same for a recording that cannot be opened yet, with the facts that are known.
std::string factsTable(const std::string& name, const RecordingFacts& facts);

}  // namespace pelagrim_host
