#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>
#include <tuple>

#include "host/export/csv_field.h"
#include "host/export/export_formats.h"

using namespace pelagrim_host;

namespace {

constexpr const char* kSurvey =
    "145012900,12000,10000,14000,-62.3,-98.1,17,20,1731760000025,1731763600000,NFM?\n"
    "144300400,2400,2000,2900,-70.0,-98.0,4,20,0,0,SSB/CW?\n"
    "3700000,2400,2000,2900,-70.0,-98.0,20,20,1731760000000,1731763600000,SSB/CW?\n"
    "90000000,60000,60000,60000,-70.0,-98.0,1,4,1731760000000,1731763600000,?\n";

SurveyFiles survey(const std::string& band_plan = "144 146 Amateur 2 m\n") {
  SurveyFiles files;
  files.rows = parseSurveyRows(kSurvey);
  files.band_plan = parseLabels(band_plan);
  return files;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

}  // namespace

TEST(Export, NoTextOfATableIsAFormula) {
  for (const char* formula : {"=1", "+1", "-1", "@x", "  =1", "\t=1",
                              "\xEF\xBC\x9D"
                              "1",
                              "\xE2\x80\x8B=1",
                              "\xEF\xBB\xBF\xC2\xA0\xEF\xBC\x8B"
                              "1"}) {
    EXPECT_EQ(noFormula(formula), std::string("'") + formula);
  }
  for (const char* text : {"", "2 m", "a=b",
                           "\xE2\x80\x8B"
                           "2 m",
                           " a"}) {
    EXPECT_EQ(noFormula(text), text);
    EXPECT_EQ(withoutFormulaSigns(text), text);
  }
  EXPECT_EQ(withoutFormulaSigns("\xE2\x80\x8B=\xEF\xBC\x9D"
                                "cmd|x"),
            "cmd|x");
}

TEST(Export, EveryFormatIsWrittenAsItsProgramWritesIt) {
  const auto channels = selectChannels(survey(), {});
  EXPECT_EQ(
      gqrxBookmarks(channels),
      "# Tag name          ;  color\n"
      "Amateur 2 m         ; #c0c0c0\n"
      "Untagged            ; #c0c0c0\n"
      "\n"
      "# Frequency ; Name                     ; Modulation          ;  Bandwidth; Tags\n"
      "     3701400; 3.7000 MHz               ; LSB                 ;       2800; Untagged\n"
      "    90000000; 90.0000 MHz              ; Raw I/Q             ;      60000; Untagged\n"
      "   144299000; Amateur 2 m 144.3004 MHz ; USB                 ;       2800; Amateur 2 m\n"
      "   145012900; Amateur 2 m 145.0129 MHz ; Narrow FM           ;      12500; Amateur 2 m\n");
  const auto bookmarks = nlohmann::json::parse(sdrppBookmarks(channels)).at("bookmarks");
  EXPECT_EQ(bookmarks.at("Amateur 2 m 145.0129 MHz").dump(),
            R"({"bandwidth":12500.0,"frequency":145012900.0,"mode":0})");
  EXPECT_EQ(bookmarks.at("3.7000 MHz").at("mode"), 6);
  const auto memories = linesOf(chirpMemories(channels));
  EXPECT_EQ(memories.at(4),
            "4,Amateur 2 m 145.0129 MHz,145.012500,off,0.000000,,88.5,88.5,023,NN,NFM,6.25,,"
            "\"NFM? 12.0 kHz wide, 17 detections, 20 looks\",,,");
  EXPECT_EQ(linesOf(jsonLines(channels)).at(2),
            R"({"centre_hz":144300400,"width_hz":2400,"min_width_hz":2000,"max_width_hz":2900,)"
            R"("peak_db":-70.0,"floor_db":-98.0,"hits":4,"looks":20,"first_seen":null,)"
            R"("last_seen":null,"times_are_guesses":false,"guess":"SSB/CW?",)"
            R"("band":"Amateur 2 m","mode":"USB",)"
            R"("bandwidth_hz":2800})");
  const auto seen = nlohmann::json::parse(linesOf(jsonLines(channels)).at(3));
  EXPECT_EQ(seen.at("first_seen"), "2024-11-16T12:26:40.025Z");
  SurveyFiles guessed = survey();
  guessed.memory.emplace().start_is_guess = true;
  const auto guesses = selectChannels(guessed, {});
  EXPECT_NE(jsonLines(guesses).find(R"("times_are_guesses":true)"), std::string::npos);
  EXPECT_NE(readableCsv(guesses).find("Z,yes,"), std::string::npos);
  EXPECT_EQ(linesOf(readableCsv(channels)).at(4),
            "145.012900,12.000,NFM?,35.8,17,20,2024-11-16T12:26:40Z,2024-11-16T13:26:40Z,no,"
            "Amateur 2 m");
}

TEST(Export, ChirpTakesRadioStepsOnlyWhereRadiosHaveThem) {
  SurveyFiles files;
  files.rows = parseSurveyRows(
      "1008030,1,1,1,1,1,1,1,1,1,AM?\n118101200,1,1,1,1,1,1,1,1,1,AM?\n"
      "145015000,9000,1,1,1,1,1,1,1,1,NFM?\n433921234,1,1,1,1,1,1,1,1,1,?\n"
      "446018700,20000,1,1,1,1,1,1,1,1,wide NFM?\n");
  const auto memories = linesOf(chirpMemories(selectChannels(files, {})));
  const std::pair<const char*, const char*> tuned[] = {{",1.008000,", ",AM,5.00,"},
                                                       {",118.100000,", ",AM,5.00,"},
                                                       {",145.015000,", ",NFM,5.00,"},
                                                       {",433.921230,", ",Auto,5.00,"},
                                                       {",446.018750,", ",FM,6.25,"}};
  for (size_t at = 0; at < std::size(tuned); ++at) {
    const std::string& memory = memories.at(at + 1);
    EXPECT_NE(memory.find(tuned[at].first), std::string::npos) << memory;
    EXPECT_NE(memory.find(tuned[at].second), std::string::npos) << memory;
  }
}

TEST(Export, AKindIsHeardInItsModeAndAtLeastAsWide) {
  using enum ListeningMode;
  const std::tuple<const char*, double, ListeningMode, double> cases[] = {
      {"carrier?", 300, kCw, 500},  {"SSB/CW?", 2401, kUsb, 2800},     {"AM?", 8000, kAm, 10000},
      {"NFM?", 16010, kNfm, 16100}, {"wide NFM?", 20000, kNfm, 25000}, {"WFM?", 150e3, kWfm, 180e3},
      {"?", 0, kNone, 100}};
  for (const auto& [kind, width_hz, mode, bandwidth_hz] : cases) {
    SurveyedChannel channel;
    channel.centre_hz = 50e6;
    channel.width_hz = width_hz;
    channel.kind = kind;
    EXPECT_EQ(listeningTo(channel).mode, mode) << kind;
    EXPECT_EQ(listeningTo(channel).bandwidth_hz, bandwidth_hz) << kind;
  }
}

TEST(Export, SelectionByActivityHitsAndKind) {
  const std::pair<ExportSelection, std::string> cases[] = {
      {{.min_activity = 0.85}, "3700000\n145012900\n"},
      {{.min_hits = 4}, "3700000\n144300400\n145012900\n"},
      {{.kinds = {"NFM?", "?"}}, "90000000\n145012900\n"},
      {{.min_activity = 0.5, .kinds = {"?"}}, ""}};
  for (const auto& [selection, frequencies] : cases) {
    EXPECT_EQ(frequencyList(selectChannels(survey(), selection)), frequencies);
  }
}

TEST(Export, ActivityIsHitsByLooksAndNoLookIsMadeUp) {
  SurveyFiles files;
  files.rows = parseSurveyRows("1000000,1,1,1,-6,-7,2,3,1,1,?\n2000000,1,1,1,-6,-7,13,9,1,1,?\n");
  const std::pair<double, std::string> cases[] = {
      {0.66, "1000000\n2000000\n"}, {0.67, "2000000\n"}, {1.0, "2000000\n"}};
  for (const auto& [share, frequencies] : cases) {
    EXPECT_EQ(frequencyList(selectChannels(files, {.min_activity = share})), frequencies);
  }
  const auto rows = linesOf(readableCsv(selectChannels(files, {})));
  EXPECT_NE(rows.at(2).find(",13,9,"), std::string::npos) << rows.at(2);
}

TEST(Export, OddNamesBreakNoFormat) {
  auto files = survey("145 146 =a;b,\"c\"\x01\xFF\n144 145  \xC3\xA9;,\n3 4 #\n90 90 @x\n");
  files.rows.channels.push_back(files.rows.channels.front());  // two of one name
  const auto channels = selectChannels(files, {});
  for (const std::string& line : linesOf(gqrxBookmarks(channels))) {
    const auto parts = std::count(line.begin(), line.end(), ';');
    EXPECT_TRUE(line.empty() || parts == 1 || parts == 4) << line;
  }
  EXPECT_EQ(nlohmann::json::parse(sdrppBookmarks(channels)).at("bookmarks").size(), 5U);
  EXPECT_EQ(linesOf(chirpMemories(channels)).at(4).substr(0, 41),
            "4,\"a;b,\"\"c\"\"?? 145.0129 MHz\",145.012500,o");
  const auto table = readableCsv(selectChannels(survey("3 4 +1\n90 90 @x\n144 145 -2\n"), {}));
  for (const char* const harmless : {",'+1\n", ",'@x\n", ",'-2\n"}) {
    EXPECT_NE(table.find(harmless), std::string::npos) << table;
  }
  const auto row = linesOf(readableCsv(channels)).at(4);
  EXPECT_EQ(row.substr(row.find("no,\"") + 3), "\"'=a;b,\"\"c\"\"\xE2\x90\x81\xEF\xBF\xBD\"");
}
