#include "host/view/source_text.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/text/display_text.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

std::vector<SourceFact> allFacts(const IqSource& source, const StartTime& start) {
  auto facts = source.facts();
  if (facts.empty()) {
    facts = {{"rate", formatSampleRate(source.sampleRateHz()), ""},
             {"centre", formatFrequency(source.centreHz()), ""}};
  }
  if (source.isLive()) return facts;
  const auto is_start = [](const SourceFact& fact) { return fact.what == "start"; };
  const auto known = std::find_if(facts.begin(), facts.end(), is_start);
  if (known == facts.end()) {
    facts.push_back({"start", formatMoment(start.unix_ms), start.origin});
  } else {
    known->value = formatMoment(start.unix_ms);  // of what is played, which may begin later
  }
  return facts;
}

std::string originText(const SourceFact& fact) {
  return fact.origin.empty() ? "" : " from " + fact.origin;
}

}  // namespace

std::string sourceLine(const IqSource& source, const StartTime& start) {
  std::string line = "taken as";
  std::string_view separator;
  for (const SourceFact& fact : allFacts(source, start)) {
    if (fact.what.starts_with("segment")) continue;
    line += fmt::format("{} {} {}{}", separator, fact.what, fact.value, originText(fact));
    separator = ",";
  }
  return line;
}

std::string sourceTable(const IqSource& source, const StartTime& start) {
  std::string table = fmt::format("{:<10}  {}\n", "source", displayText(source.name()));
  for (const SourceFact& fact : allFacts(source, start)) {
    const std::string row =
        fact.origin.empty() ? fact.value : fmt::format("{:<24} {}", fact.value, originText(fact));
    table += fmt::format("{:<10}  {}\n", fact.what, displayText(row));
  }
  return table;
}

}  // namespace pelagrim_host
