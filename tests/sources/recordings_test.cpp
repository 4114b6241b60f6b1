// Recordings: what is read from names, metadata and headers, what is refused, which samples come.
#include <gtest/gtest.h>
#include <sndfile.h>

#include <cstring>
#include <vector>

#include "host/sources/open_recording.h"
#include "host/sources/recording_name.h"
#include "host/sources/replayed_source.h"
#include "host/sources/sigmf_meta.h"
#include "host/sources/wav_recording.h"
#include "tests/support/temporary_dir.h"

namespace pelagrim_host {
namespace {

using Samples = std::vector<std::complex<float>>;

TEST(RecordingName, ReadsWhatRecordersWrite) {
  struct Case {
    const char* name;
    double rate_hz, centre_hz;  ///< 0: not said
    int64_t start_unix_ms;
    const char* format;
  };
  const std::vector<Case> cases = {
      {"g001_433.92M_250k.cu8", 250e3, 433.92e6, 0, "cu8"},
      {"gqrx_20230401_101112_145500000_2400000_fc.raw", 2.4e6, 145.5e6, 1680343872000, "cf32"},
      {"HDSDR_20180906_204111Z_433920kHz_RF.wav", 0, 433.92e6, 1536266471000, ""},
      {"SDR_405300000Hz_IQ.wav", 0, 405.3e6, 0, ""},
      {"rtlsdr_868.950M_1M6_samples2.cu8", 1.6e6, 868.95e6, 0, "cu8"},
      {"rtlsdr_868.625M_2M4_issue48.CU8", 2.4e6, 868.625e6, 0, "cu8"},
      {"HFDL_test_12k_cf13270_df13270.wav", 12e3, 13.27e6, 0, ""},
      {"433.92MHz_2MHz.cs16", 2e6, 433.92e6, 0, "cs16"},
      {"14-Nov-2015 170401 3.725MHz 000.wav", 0, 3.725e6, 0, ""},
      {"GPS_L1_recording_10ms_4MHz_cf32.iq", 0, 0, 0, "cf32"},  // a rate or a centre
      {"elektromaten.complex16s", 0, 0, 0, "cs8"},
      {"x.complex32s", 0, 0, 0, "cs16"},
      {"x.complex16u", 0, 0, 0, "cu8"},
      {"x.cfile", 0, 0, 0, "cf32"},
      {"modes1.bin", 0, 0, 0, ""},
      {"x_20231399_101112_1.2.3M_99999999999G.raw", 0, 0, 0, ""},
      {"", 0, 0, 0, ""}};
  for (const Case& c : cases) {
    const RecordingName name = parseRecordingName(c.name);
    EXPECT_NEAR(name.rate_hz.value_or(0), c.rate_hz, 1e-3) << c.name;
    EXPECT_NEAR(name.centre_hz.value_or(0), c.centre_hz, 1e-3) << c.name;
    EXPECT_EQ(name.start_unix_ms.value_or(0), c.start_unix_ms) << c.name;
    EXPECT_EQ(name.format == nullptr ? "" : name.format->name, c.format) << c.name;
  }
  for (const auto& [told_centre_hz, rate_hz] : {std::pair(1575.42e6, 4e6), {4.1e6, 0.0}}) {
    EXPECT_EQ(parseRecordingName("x_4MHz_cf32.iq", told_centre_hz).rate_hz.value_or(0), rate_hz);
  }
}

std::string metaText(const std::string& global, const std::string& captures = "{}") {
  return "{\"global\":{\"core:sample_rate\":1000," + global + "},\"captures\":[" + captures + "]}";
}

TEST(SigmfMeta, RefusesWhatCannotBeSurveyedWithTheReason) {
  const std::string cu8 = "\"core:datatype\":\"cu8\"";
  std::string many = "{\"global\":{},\"captures\":[0";
  for (int i = 0; i < 1'000'001; ++i) many += ",0";
  const std::vector<std::pair<std::string, const char*>> cases = {
      {metaText("\"core:datatype\":\"ri16_le\""), "real (ri16_le)"},
      {metaText("\"core:datatype\":\"cf32\""), "lacks the byte order"},
      {metaText("\"core:datatype\":\"cs16_le\""), "none that is known"},
      {metaText("\"core:datatype\":\"_le\""), "none that is known"},
      {metaText(cu8 + ",\"core:num_channels\":2"), "2 channels"},
      {metaText(cu8 + ",\"core:metadata_only\":true"), "metadata alone"},
      {metaText(cu8 + ",\"core:sha512\":\"12\""), "128 hexadecimal"},
      {metaText(cu8, "{\"core:sample_start\":-1}"), "core:sample_start is not a whole number"},
      {metaText(cu8, "{\"core:frequency\":\"1\"}"), "core:frequency is not a number"},
      {metaText(cu8, "{\"core:sample_start\":9},{\"core:sample_start\":5}"), "order"},
      {metaText(cu8, "{\"core:sample_start\":11}"), "capture 1 reaches past"},
      {metaText(cu8, "{},{\"core:sample_start\":9,\"core:header_bytes\":3}"), "capture 2 reaches"},
      {"{\"captures\":[]}", "no \"global\""},
      {"{\"global\":", "not JSON (at byte"},
      {std::string(1'000'000, '['), "nested too deeply"},
      {many + "]}", "too many values"}};
  for (const auto& [text, words] : cases) {
    std::string reason;
    try {
      sigmfSegments(parseSigmfMeta(text), 20);
    } catch (const SigmfError& error) {
      reason = error.what();
    }
    EXPECT_NE(reason.find(words), std::string::npos) << text.substr(0, 200) << " : " << reason;
  }
}

class Recordings : public ::testing::Test {
 protected:
  std::unique_ptr<IqSource> open(const std::string& name, std::optional<double> centre_hz = {},
                                 bool verify = false) {
    RecordingRequest request{.source = (dir_.path() / name).string(), .told = {}, .verify = verify};
    if (centre_hz) request.told.centre_hz = {*centre_hz, "the command line"};
    return openRecording(request, [](const std::string&) {});
  }

  static Samples readAll(IqSource& source) {
    Samples all;
    Samples block(7);
    while (const size_t got = source.read(block)) {
      all.insert(all.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(got));
    }
    return all;
  }

  std::string refusal(const std::string& name, bool verify = false) {
    try {
      open(name, {}, verify);
    } catch (const std::exception& failure) {
      return failure.what();
    }
    return "";
  }

  /// `wav`: a whole file of 100 samples of 16 bits, which are `samples`.
  void expectLengthsAreFollowed(const std::string& wav, const Samples& samples) {
    const auto number = [](uint32_t value) {
      return std::string(reinterpret_cast<const char*>(&value), 4);
    };
    constexpr size_t kAllByte = 4;
    constexpr size_t kDataByte = 40;
    struct Case {
      uint32_t all_bytes, data_bytes;
      std::string more;
      const char* damage;
    };
    const Case cases[] = {{UINT32_MAX, UINT32_MAX, "", ""},  // streamed
                          {0x7FFFFFFF, 0x7FFFFFFF - 36, "", ""},
                          {0, 0, "", ""},  // never closed
                          {36, 0, "", ""},
                          {436, 401, "?", "last 1 of its bytes"},
                          {436, 900, "", "promises 900 bytes of samples, 400 are there"},
                          {1, 400, "JUNK", ""}};
    for (const Case& c : cases) {
      std::string file = wav;
      file.replace(kAllByte, 4, number(c.all_bytes)).replace(kDataByte, 4, number(c.data_bytes));
      dir_.write("y_100M.wav", file + c.more);
      const auto source = open("y_100M.wav");
      EXPECT_EQ(readAll(*source), samples) << c.all_bytes << " " << c.data_bytes;
      const std::string damage = source->damage().value_or("");
      EXPECT_NE(damage.find(c.damage), std::string::npos) << damage;
      EXPECT_EQ(damage.empty(), *c.damage == '\0') << damage;
    }
    struct Longer {
      uint32_t data_bytes;
      std::string behind;  ///< the samples that data_bytes promise
      uint64_t samples;
      const char* damage;
    };
    constexpr uint64_t kFiveGigasamples = 5'000'000'000;
    const char* const on =
        "y_100M.wav: it goes on for 19999999600 bytes after the samples that its "
        "header promises, which alone were surveyed";
    const Longer longer[] = {
        {UINT32_MAX, "", kFiveGigasamples, ""},  // lengths that 32 bits cannot hold
        {0x80000000 - 36, "", kFiveGigasamples, ""},
        {400, "", 100, on},
        {400, "LIST" + number(0xFFFF0000), 100, on},
        {400, "LIST" + number(5000) + std::string(5000, 'x') + "id3 " + number(8000), 100, ""}};
    for (const Longer& c : longer) {
      std::string file = wav;
      dir_.write("y_100M.wav", file.replace(kDataByte, 4, number(c.data_bytes)) + c.behind);
      const uint64_t bytes = *c.damage == '\0' && c.samples == 100 ? 13460 : 4 * kFiveGigasamples;
      std::filesystem::resize_file(dir_.path() / "y_100M.wav", 44 + bytes);
      const auto source = open("y_100M.wav");
      EXPECT_EQ(source->skip(2 * kFiveGigasamples), c.samples) << c.data_bytes;
      EXPECT_EQ(readAll(*source).size(), 0u);
      EXPECT_EQ(source->damage().value_or(""), c.damage);
    }
    const std::pair<std::string, const char*> refused[] = {
        {wav.substr(0, 30), "cannot be read as WAV"},
        {std::string(wav).replace(16, 4, number(4)), "cannot be read as WAV"},  // header's size
        {std::string(wav).replace(16, 4, number(1U << 31U)), "cannot be read as WAV"},
        {std::string(wav).replace(22, 2, "\1\0", 2), "1 channel; I/Q takes two"},
        {std::string(wav).replace(24, 4, number(0)),
         "WAV: its header gives a sample rate of 0 Hz"}};
    for (const auto& [bytes, words] : refused) {
      dir_.write("z_100M.wav", bytes);
      EXPECT_NE(refusal("z_100M.wav").find(words), std::string::npos) << refusal("z_100M.wav");
    }
  }

  TemporaryDir dir_;
};

TEST_F(Recordings, GiveTheSameFloatsAsRawWavAndSigmf) {
  std::string bytes;
  for (int i = 0; i < 200; ++i) bytes += static_cast<char>(i * 37);
  std::string big_endian;
  std::vector<short> words;
  for (const char c : bytes) {
    const int value = (2 * static_cast<unsigned char>(c) - 255) * 128;
    words.push_back(static_cast<short>(value));
    big_endian += {static_cast<char>(value >> 8), static_cast<char>(value)};
  }
  dir_.write("x_100M_48k.cu8", bytes);
  dir_.write("x_100M.sigmf-meta", metaText("\"core:datatype\":\"ci16_be\""));
  dir_.write("x_100M.sigmf-data", big_endian);
  const Samples raw = readAll(*open("x_100M_48k.cu8"));
  ASSERT_EQ(raw.size(), 100u);
  EXPECT_EQ(readAll(*open("x_100M.sigmf-data")), raw);
  const int kinds[] = {SF_FORMAT_WAV | SF_FORMAT_PCM_U8, SF_FORMAT_WAV | SF_FORMAT_PCM_16,
                       SF_FORMAT_WAV | SF_FORMAT_PCM_24, SF_FORMAT_RF64 | SF_FORMAT_PCM_32,
                       SF_FORMAT_WAV | SF_FORMAT_FLOAT};
  for (const int kind : kinds) {
    SF_INFO info = {0, 48000, 2, kind, 0, 0};
    SNDFILE* const file = sf_open((dir_.path() / "x_100M.wav").c_str(), SFM_WRITE, &info);
    sf_command(file, SFC_SET_SCALE_INT_FLOAT_WRITE, nullptr, SF_TRUE);
    if ((kind & SF_FORMAT_SUBMASK) == SF_FORMAT_PCM_U8) {
      sf_write_raw(file, bytes.data(), static_cast<sf_count_t>(bytes.size()));
    } else {
      sf_write_short(file, words.data(), static_cast<sf_count_t>(words.size()));
    }
    sf_close(file);
    const auto wav = open("x_100M.wav");
    EXPECT_EQ(wav->sampleRateHz(), 48000.0);
    EXPECT_EQ(readAll(*wav), raw) << std::hex << kind;
    if (kind != (SF_FORMAT_WAV | SF_FORMAT_PCM_16)) continue;
    expectLengthsAreFollowed(dir_.read("x_100M.wav"), raw);
  }
}

TEST_F(Recordings, RetuneWhereSigmfCapturesDo) {
  dir_.write("x.sigmf-meta",
             metaText("\"core:datatype\":\"cu8\"",
                      "{\"core:frequency\":100,\"core:datetime\":\"1970-01-01T00:00:01Z\"},"
                      "{\"core:sample_start\":10,\"core:frequency\":200,\"core:header_bytes\":4,"
                      "\"core:datetime\":\"1970-01-01T01:00:00Z\"},"
                      "{\"core:sample_start\":15}"));
  dir_.write("x.sigmf-data", std::string(20, '\0') + "HEAD" + std::string(14, '\xFF') + "?");
  const auto source = open("x.sigmf-meta");
  EXPECT_EQ(source->startUnixMs(), 1000);
  const auto centresOf = [](IqSource& played) {
    std::string centres;
    Samples block(8);
    for (;;) {
      const double centre_hz = played.centreHz();
      const size_t got = played.read(block);
      if (got == 0) break;
      for (const auto& sample : std::span(block).first(got)) {
        EXPECT_EQ(sample.real() > 0, centre_hz == 200.0);
      }
      centres += std::to_string(static_cast<int>(centre_hz)) + "x" + std::to_string(got) + " ";
    }
    EXPECT_EQ(played.centreHz(), 200.0);  // a retune at the end would drop the last dwell
    return centres;
  };
  EXPECT_EQ(centresOf(*source), "100x8 100x2 200x5 200x2 ");
  ReplayedSource replayed([this] { return open("x.sigmf-meta"); }, 2, 0.012, neverStop);
  EXPECT_EQ(replayed.startUnixMs(), 3600002);
  EXPECT_EQ(centresOf(replayed), "200x8 200x2 ");
  EXPECT_NE(source->damage().value_or("").find("last 1 of its bytes"), std::string::npos);
  EXPECT_EQ(open("x.sigmf-meta", 300.0)->centreHz(), 300.0);  // the command line stands over it
  const auto skipped = open("x.sigmf-data");
  EXPECT_EQ(skipped->skip(12), 12u);
  EXPECT_EQ(skipped->centreHz(), 200.0);
  EXPECT_EQ(skipped->nextUnixMs(), 3600002);
  EXPECT_EQ(readAll(*skipped).size(), 5u);
  EXPECT_NE(refusal("x.sigmf-meta", true).find("no core:sha512"), std::string::npos);
}

/// A file as tar stores it.
std::string tarMember(const std::string& name, const std::string& text) {
  std::string header(512, '\0');
  std::snprintf(header.data(), 100, "%s", name.c_str());
  std::snprintf(&header[124], 12, "%011o", static_cast<unsigned>(text.size()));
  header[156] = '0';
  header.replace(148, 8, "        ");
  unsigned sum = 0;
  for (const char c : header) sum += static_cast<unsigned char>(c);
  std::snprintf(&header[148], 8, "%06o", sum);
  std::string padded = header + text;
  padded.resize((padded.size() + 511) / 512 * 512);
  return padded;
}

TEST_F(Recordings, ComeFromArchivesThatHideNothing) {
  const std::string meta = metaText("\"core:datatype\":\"cu8\"", "{\"core:frequency\":1}");
  const std::string end(1024, '\0');
  const std::string data = tarMember("d/x.sigmf-data", "\1\2\3\4");
  dir_.write("x.sigmf", data + tarMember("d/x.sigmf-meta", meta) + end);
  EXPECT_EQ(readAll(*open("x.sigmf")).size(), 2u);
  dir_.write("UP.SIGMF", dir_.read("x.sigmf"));
  EXPECT_EQ(readAll(*open("UP.SIGMF")).size(), 2u);
  dir_.write("UP.SIGMF-META", meta);
  dir_.write("UP.SIGMF-DATA", "1234");
  EXPECT_EQ(readAll(*open("UP.SIGMF-META")).size(), 2u);
  EXPECT_EQ(readAll(*open("UP.SIGMF-DATA")).size(), 2u);
  const std::vector<std::pair<std::string, const char*>> cases = {
      {tarMember("../x.sigmf-meta", meta) + data + end, "leads out of the archive"},
      {tarMember("/x.sigmf-meta", meta) + data + end, "leads out of the archive"},
      {data + data + end, "several recordings"},
      {data + end, "no .sigmf-meta"},
      {tarMember("x.sigmf-meta", meta) + data + end, "differ in name"},
      {tarMember("d/x.sigmf-meta", meta) + end, "metadata alone"},
      {std::string(2000, 'x'), "cannot be read as a tar archive"}};
  for (const auto& [bytes, words] : cases) {
    dir_.write("y.sigmf", bytes);
    EXPECT_NE(refusal("y.sigmf").find(words), std::string::npos) << words << refusal("y.sigmf");
  }
}

TEST(WavAuxi, MayEndEarlyAndMakeNoSense) {
  std::vector<std::byte> chunk(36);
  const unsigned char start[] = {0xE2, 7, 9, 0, 4, 0, 6, 0, 20, 0, 41, 0, 11, 0, 5, 0};
  std::memcpy(chunk.data(), start, sizeof(start));
  chunk[34] = std::byte{0x10};
  EXPECT_EQ(parseAuxi(chunk).centre_hz, 1048576.0);
  EXPECT_EQ(parseAuxi(std::span(chunk).first(20)).start_unix_ms, 1536266471005);
  EXPECT_FALSE(parseAuxi(std::span(chunk).first(35)).centre_hz);
  std::fill_n(chunk.begin(), 16, std::byte{0});  // no time
  EXPECT_EQ(parseAuxi(chunk).centre_hz, 1048576.0);
  EXPECT_FALSE(parseAuxi(chunk).start_unix_ms);
  const char16_t text[] = u"<?xml version=\"1.0\"?>";
  EXPECT_FALSE(parseAuxi(std::as_bytes(std::span(text))).centre_hz);
}

}  // namespace
}  // namespace pelagrim_host
