// The host's small readers and writers: quantities, sample formats.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "host/sources/sample_format.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

TEST(QuantityText, TakesSuffixesAndNothingElse) {
  const std::vector<std::pair<const char*, double>> good = {
      {"145.5M", 145.5e6}, {"250k", 250e3}, {"2.4GHz", 2.4e9}, {"12500", 12500}, {"-3", -3}};
  for (const auto& [text, value] : good) EXPECT_EQ(parseQuantity(text), value) << text;
  for (const char* text :
       {"", "M", "1.5 M", "1M6", "nan", "inf", "1e999", "1e308M", "0x10", "5dB", "1,5"}) {
    EXPECT_FALSE(parseQuantity(text)) << text;
  }
  const std::pair<const char*, double> times[] = {{"2.5", 2.5},  {"10m", 600}, {"1h", 3600},
                                                  {"3min", 180}, {"30s", 30},  {"2d", 172800}};
  for (const auto& [text, seconds] : times) EXPECT_EQ(parseSeconds(text), seconds) << text;
  for (const char* text : {"", "5M", "5k", "-1", "1 h", "nan"}) EXPECT_FALSE(parseSeconds(text));
  EXPECT_EQ(parseDecibels("12dB"), 12.0);
  EXPECT_FALSE(parseDecibels("12k"));
  EXPECT_FALSE(parsePlainNumber("12k"));
  EXPECT_EQ(parseFrequencyRange("430M:0.44G")->high_hz, 440e6);
  for (const char* text : {"144M", "146M:144M", "1M:1M", ":", "1M:2M:3M"}) {
    EXPECT_FALSE(parseFrequencyRange(text)) << text;
  }
}

TEST(QuantityText, AsksBackWhereAUnitWasProbablyForgotten) {
  const std::pair<const char*, const char*> doubtful[] = {
      {"144:146", "144M:146M"}, {"144:146M", "144M:146M"}, {"144M:146", "144M:146M"},
      {"0:0.5", "0:0.5M"},      {"868.3", "868.3M"},       {"999.9", "999.9M"}};
  for (const auto& [text, meant] : doubtful) EXPECT_EQ(frequencyMeant(text), meant) << text;
  for (const char* text : {"144M:146M", "0:1000", "0", "1000", "868.3Hz", "0.5k", "x", "", ":"}) {
    EXPECT_FALSE(frequencyMeant(text)) << text;
  }
  EXPECT_EQ(sampleRateMeant("2.4"), "2.4M");
  EXPECT_EQ(sampleRateMeant("250"), "250k");
  EXPECT_FALSE(sampleRateMeant("1000"));
}

TEST(QuantityText, TakesMomentsInUtc) {
  for (const char* text :
       {"2024-02-29T12:00:01.25Z", "2024-02-29T12:00:01.2509", "1709208001250"}) {
    EXPECT_EQ(parseMoment(text), 1709208001250) << text;
  }
  for (const char* text : {"2023-02-29T12:00:00Z", "2024-02-28", "2024-02-28T24:00:00Z",
                           "2024-02-28T12:00:00+01:00", "2024-02-28T12:00:00.", "noon"}) {
    EXPECT_FALSE(parseMoment(text)) << text;
  }
}

TEST(SampleFormat, ScalesEveryFormatToOne) {
  const auto converted = [](const char* name, std::vector<unsigned char> bytes) {
    const SampleFormat* const format = findSampleFormat(name);
    std::vector<float> out(bytes.size() / format->component_bytes);
    format->convert(reinterpret_cast<const std::byte*>(bytes.data()), out.size(), out.data());
    return out;
  };
  using Floats = std::vector<float>;
  EXPECT_EQ(converted("cu8", {0, 127, 128, 255}),
            (Floats{-0.99609375F, -0.00390625F, 0.00390625F, 0.99609375F}));
  EXPECT_EQ(converted("cs8", {0x80, 0xFF, 0x40}), (Floats{-1.0F, -0.0078125F, 0.5F}));
  EXPECT_EQ(converted("cs16", {0x00, 0x80, 0x00, 0x40}), (Floats{-1.0F, 0.5F}));
  EXPECT_EQ(converted("cf32", {0, 0, 0x20, 0xC0}), (Floats{-2.5F}));
  EXPECT_EQ(converted("cf64", {0, 0, 0, 0, 0, 0, 0x04, 0xC0}), (Floats{-2.5F}));
}

}  // namespace
}  // namespace pelagrim_host
