// WAV and RF64: samples, what the header says, wrong lengths.
#include "host/sources/wav_recording.h"

#include <sndfile.h>

#include <cstring>

#include "tests/sources/recording_fixture.h"

namespace pelagrim_host {
namespace {

std::string number(uint64_t value, size_t bytes = 4) {
  return std::string(reinterpret_cast<const char*>(&value), bytes);
}

/// The start of a WAV file with 16-bit samples, behind its length.
std::string waveAndFormat(uint64_t rate_hz) {
  return "WAVEfmt " + number(16) + number(1, 2) + number(2, 2) + number(rate_hz) +
         number(4 * rate_hz) + number(4, 2) + number(16, 2);
}

struct WavRecordings : Recordings {
  /// `wav`: a whole file with the 100 16-bit samples `samples`.
  void expectLengthsAreFollowed(const std::string& wav, const Samples& samples) {
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
        "header promises; only those samples were surveyed";
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
};

TEST_F(WavRecordings, AskWhichRateIsRightWhereHeaderAndNameDisagree) {
  const std::string wav = "RIFF" + number(36 + 400) + waveAndFormat(250'000) + "data" +
                          number(400) + std::string(400, 'x');
  for (const char* name : {"x_100M.wav", "x_100M_250k.wav", "x_100M_252k.wav", "x_100M_1M.wav"}) {
    dir_.write(name, wav);
    const bool agrees = name != std::string("x_100M_1M.wav");
    EXPECT_EQ(refusal(name).empty(), agrees) << refusal(name);
  }
  EXPECT_NE(refusal("x_100M_1M.wav")
                .find("its header says 250 kS/s and its name 1 MS/s; say which "
                      "is right with --sample-rate 250000 or 1000000"),
            std::string::npos);
  auto told = request("x_100M_1M.wav");
  told.told.rate_hz = {1e6, "the command line"};
  EXPECT_EQ(open(told)->sampleRateHz(), 1e6);
}

TEST_F(WavRecordings, GiveTheSameFloatsAsRawAndSigmf) {
  std::string bytes;
  for (int i = 0; i < 200; ++i) bytes += static_cast<char>(i * 37);
  std::string big_endian, little_endian;
  std::vector<short> words;
  for (const char c : bytes) {
    const int value = (2 * static_cast<unsigned char>(c) - 255) * 128;
    words.push_back(static_cast<short>(value));
    big_endian += {static_cast<char>(value >> 8), static_cast<char>(value)};
    little_endian += {static_cast<char>(value), static_cast<char>(value >> 8)};
  }
  dir_.write("x_100M_48k.cu8", bytes);
  dir_.write("be_100M.sigmf-meta", metaText("\"core:datatype\":\"ci16_be\""));
  dir_.write("be_100M.sigmf-data", big_endian);
  dir_.write("le_100M.sigmf-meta", metaText("\"core:datatype\":\"ci16_le\""));
  dir_.write("le_100M.sigmf-data", little_endian);
  const Samples raw = readAll(*open("x_100M_48k.cu8"));
  ASSERT_EQ(raw.size(), 100u);
  EXPECT_EQ(readAll(*open("be_100M.sigmf-data")), raw);
  EXPECT_EQ(readAll(*open("le_100M.sigmf-data")), raw);
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

TEST_F(Recordings, ThatShrinkWhileTheyAreReadAreDamaged) {
  const std::string wav = "RIFF" + number(4036) + waveAndFormat(48000) + "data" + number(4000);
  const std::pair<const char*, std::string> kinds[] = {{"x_100M_48k.cs16", ""},
                                                       {"x_100M.wav", wav}};
  for (const auto& [name, header] : kinds) {
    dir_.write(name, header + std::string(4000, 'x'));
    const auto source = open(name);
    Samples half(500);
    EXPECT_EQ(source->read(half), 500u) << name;
    EXPECT_FALSE(source->damage()) << name;
    std::filesystem::resize_file(dir_.path() / name, header.size() + 3000);
    EXPECT_EQ(readAll(*source).size(), 250u) << name;
    EXPECT_NE(source->damage().value_or("").find("it became shorter"), std::string::npos) << name;
  }
}

/// 20:41:11.005 on the 6th of September 2018, no end, 1048576 Hz.
constexpr unsigned char kAuxi[36] = {0xE2, 7, 9, 0, 4, 0, 6, 0, 20, 0, 41, 0, 11, 0, 5, 0, 0,  0,
                                     0,    0, 0, 0, 0, 0, 0, 0, 0,  0, 0,  0, 0,  0, 0, 0, 16, 0};

TEST_F(WavRecordings, KnowWhatTheHeaderSaysWhateverTheNameSays) {
  const std::string auxi(reinterpret_cast<const char*>(kAuxi), sizeof(kAuxi));
  const std::string chunks = waveAndFormat(48000) + "odd " + number(3) +
                             std::string(4, 'x') +  // padded to be even
                             "auxi" + number(36) + auxi + "data" + number(8) + number(0, 8);
  const std::string name = "HDSDR_20200101_000000Z_7M_48200Hz.wav";
  dir_.write(name, "RIFF" + number(chunks.size()) + chunks);
  const auto source = open(name);
  const RecordingFacts facts = *source->facts();
  EXPECT_EQ(source->sampleRateHz(), 48000.0);
  EXPECT_EQ(facts.format->value, "WAV 16 bit");
  EXPECT_EQ(source->centreHz(), 1048576.0);
  EXPECT_EQ(facts.centre_hz->origin, "the auxi chunk");
  EXPECT_EQ(source->startUnixMs(), 1536266471005);
  EXPECT_EQ(facts.start_unix_ms->origin, "the auxi chunk");
  EXPECT_EQ(source->skip(1), 1u);
  EXPECT_EQ(source->skip(9), 1u);
  RecordingRequest asked = request(name);  // the command line outranks both
  asked.told.rate_hz = {1000.0, "the command line"};
  asked.told.centre_hz = {2e6, "the command line"};
  asked.told.start_unix_ms = {5, "the command line"};
  EXPECT_EQ(open(asked)->sampleRateHz(), 1000.0);
  EXPECT_EQ(open(asked)->centreHz(), 2e6);
  EXPECT_EQ(open(asked)->startUnixMs(), 5);
  asked.told.format = {"cs16", "the command line"};  // no WAV then, but samples from the first byte
  EXPECT_EQ(open(asked)->lengthSamples(), (8 + chunks.size()) / 4);
  asked.verify = true;
  EXPECT_NE(refusal(asked).find("only a SigMF recording has a checksum"), std::string::npos);
}

TEST_F(WavRecordings, SayHowMuchIsMissingEvenIfTheLengthNeedsMoreThan32Bits) {
  const std::pair<int, size_t> kinds[] = {{SF_FORMAT_PCM_U8, 2}, {SF_FORMAT_PCM_16, 4},
                                          {SF_FORMAT_PCM_24, 6}, {SF_FORMAT_PCM_32, 8},
                                          {SF_FORMAT_FLOAT, 8},  {SF_FORMAT_DOUBLE, 16}};
  for (const auto& [kind, sample_bytes] : kinds) {
    SF_INFO info = {0, 48000, 2, SF_FORMAT_RF64 | kind, 0, 0};
    const auto path = dir_.path() / "x_100M.wav";
    SNDFILE* const file = sf_open(path.c_str(), SFM_WRITE, &info);
    const std::vector<short> words(200);
    sf_write_short(file, words.data(), static_cast<sf_count_t>(words.size()));
    sf_close(file);
    std::filesystem::resize_file(path, std::filesystem::file_size(path) - 10 * sample_bytes);
    const auto source = open("x_100M.wav");
    EXPECT_EQ(readAll(*source).size(), 90u);
    const std::string words_of_damage = "promises " + std::to_string(100 * sample_bytes) +
                                        " bytes of samples, " + std::to_string(90 * sample_bytes) +
                                        " are there";
    EXPECT_NE(source->damage().value_or("").find(words_of_damage), std::string::npos)
        << words_of_damage << source->damage().value_or("");
  }
}

TEST(WavAuxi, MayEndEarlyAndMakeNoSense) {
  std::vector<std::byte> chunk(36);
  std::memcpy(chunk.data(), kAuxi, sizeof(kAuxi));
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
