// SigMF: metadata, captures, checksums, archives.
#include "host/sources/replayed_source.h"
#include "host/sources/sigmf_meta.h"
#include "tests/sources/recording_fixture.h"

namespace pelagrim_host {
namespace {

TEST(SigmfMeta, RefusesWhatCannotBeSurveyedWithTheReason) {
  const std::string cu8 = "\"core:datatype\":\"cu8\"";
  std::string many = "0";
  for (int i = 0; i < 1'000'001; ++i) many += ",0";
  // Annotations are dropped as they come, however many there are.
  EXPECT_TRUE(parseSigmfMeta("{\"annotations\":[" + many + "]," + metaText(cu8).substr(1)).format);
  const std::vector<std::pair<std::string, const char*>> cases = {
      {metaText("\"core:datatype\":\"ri16_le\""), "real (ri16_le)"},
      {metaText("\"core:datatype\":\"cf32\""), "lacks the byte order"},
      {metaText("\"core:datatype\":\"cs16_le\""), "not a known one"},
      {metaText("\"core:datatype\":\"_le\""), "not a known one"},
      {metaText(cu8 + ",\"core:num_channels\":2"), "2 channels"},
      {metaText(cu8 + ",\"core:metadata_only\":true"), "only metadata"},
      {metaText(cu8 + ",\"core:sha512\":\"12\""), "128 hexadecimal"},
      {metaText(cu8, "{\"core:sample_start\":-1}"), "core:sample_start is not a whole number"},
      {metaText(cu8, "{\"core:frequency\":\"1\"}"), "core:frequency is not a number"},
      {metaText(cu8, "{\"core:sample_start\":9},{\"core:sample_start\":5}"), "order"},
      {metaText(cu8, "{\"core:sample_start\":11}"), "capture 1 reaches past"},
      {metaText(cu8, "{},{\"core:sample_start\":9,\"core:header_bytes\":3}"), "capture 2 reaches"},
      {metaText(cu8 + ",\"core:trailing_bytes\":99", "{\"core:sample_start\":1}"),
       "capture 1 reaches"},
      {"{\"captures\":[]}", "no \"global\""},
      {"{\"global\":", "not JSON (at byte"},
      {std::string(1'000'000, '['), "nested too deeply"},
      {"{\"global\":{},\"captures\":[" + many + "]}", "too many values"}};
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

struct SigmfRecordings : Recordings {
  const std::string cu8 = "\"core:datatype\":\"cu8\"";
};

TEST_F(SigmfRecordings, RetuneWhereSigmfCapturesDo) {
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
  RecordingRequest asked = request("x.sigmf-meta");
  asked.told.start_unix_ms = {5000, "the command line"};
  asked.told.centre_hz = {300.0, "the command line"};
  const auto told = open(asked);  // it outranks the metadata, for every capture
  EXPECT_EQ(told->startUnixMs(), 5000);
  EXPECT_EQ(told->skip(10), 10u);
  EXPECT_EQ(told->centreHz(), 300.0);
  EXPECT_EQ(told->nextUnixMs(), 3604000);
  const auto skipped = open("x.sigmf-data");
  EXPECT_EQ(skipped->skip(12), 12u);
  EXPECT_EQ(skipped->centreHz(), 200.0);
  EXPECT_EQ(skipped->nextUnixMs(), 3600002);
  EXPECT_EQ(readAll(*skipped).size(), 5u);
  ASSERT_EQ(skipped->facts()->segments.size(), 3u);
  EXPECT_EQ(skipped->facts()->segments[1].samples, 5u);
  EXPECT_EQ(skipped->facts()->segments[2].centre_hz, 200.0);
}

TEST_F(SigmfRecordings, LeaveOutWhatIsNoSampleAndCountFromTheirOffset) {
  dir_.write("x_100M.sigmf-meta",
             metaText(cu8 + ",\"core:offset\":50,\"core:trailing_bytes\":3",
                      "{\"core:sample_start\":52,\"core:datetime\":\"2024-01-01 00:00:00\"}"));
  dir_.write("x_100M.sigmf-data", std::string(4, '\0') + std::string(6, '\xFF') + "end");
  std::string remarks;
  const auto source = openRecording(request("x_100M.sigmf-meta"),
                                    [&remarks](const std::string& line) { remarks += line; });
  EXPECT_EQ(remarks, "x_100M.sigmf-meta: the samples before its first capture are dropped");
  EXPECT_EQ(source->startUnixMs(), std::nullopt);  // not written as the format wants it
  EXPECT_EQ(source->lengthSamples(), 3u);
  EXPECT_EQ(source->centreHz(), 100e6);  // from the name, as the metadata have none
  for (const auto sample : readAll(*source)) EXPECT_GT(sample.real(), 0.9F);
  EXPECT_EQ(source->damage(), std::nullopt);
  const auto cut = open("x_100M.sigmf-meta");
  std::filesystem::resize_file(dir_.path() / "x_100M.sigmf-data", 6);
  EXPECT_THROW(readAll(*cut), SourceError);
  dir_.write("x_100M.sigmf-data", std::string(4, '\0') + std::string(6, '\xFF') + "end");
  RecordingRequest asked = request("x_100M.sigmf-data");
  asked.told.format = {"cu8", "the command line"};
  asked.told.rate_hz = {2000.0, "the command line"};
  EXPECT_EQ(open(asked)->lengthSamples(), 6u);  // the file itself, whatever the metadata say
  asked.source = request("x_100M.sigmf-meta").source;
  EXPECT_NE(refusal(asked).find("name its .sigmf-data"), std::string::npos);
}

TEST_F(SigmfRecordings, SayHowShortTheShortestStayAtOneCentreIs) {
  const auto stays = [this](std::initializer_list<std::pair<int, int>> captures) {
    std::string text;
    for (const auto& [first, hz] : captures) {
      text += (text.empty() ? "" : ",") + ("{\"core:sample_start\":" + std::to_string(first)) +
              ",\"core:frequency\":" + std::to_string(hz) + "}";
    }
    dir_.write("x.sigmf-meta", metaText(cu8, text));
    dir_.write("x.sigmf-data", std::string(200, 'x'));
    return open("x.sigmf-meta")->shortestStaySeconds().value_or(0.0);
  };
  EXPECT_EQ(stays({{0, 1}, {50, 2}, {70, 1}, {99, 2}}), 0.020);
  EXPECT_EQ(stays({{0, 1}, {10, 1}, {40, 2}, {99, 2}}), 0.040);  // the last stay does not count
  EXPECT_EQ(stays({{0, 1}, {10, 1}}), 0.0);
}

TEST_F(SigmfRecordings, AreCheckedAgainstTheirChecksumWhenAsked) {
  const std::string sum =
      "a7c976db1723adb41274178dc82e9b777941ab201c69de61d0f2bc6d27a3598f"
      "594FA748E50D88D3C2BF1E2C2E72C3CFEF78C3C6D4AFA90391F7E33ABABCA48E";
  RecordingRequest asked = request("x_100M.sigmf-meta");
  asked.verify = true;
  dir_.write("x_100M.sigmf-meta", metaText(cu8));
  dir_.write("x_100M.sigmf-data", "\1\2\3\4");
  EXPECT_NE(refusal(asked).find("no core:sha512"), std::string::npos);
  dir_.write("x_100M.sigmf-meta", metaText(cu8 + ",\"core:sha512\":\"" + sum + "\""));
  EXPECT_EQ(refusal(asked), "");
  dir_.write("x_100M.sigmf-data", "\1\2\3\5");
  EXPECT_NE(refusal(asked).find("they were changed"), std::string::npos);
  EXPECT_EQ(refusal("x_100M.sigmf-meta"), "");
}

TEST_F(SigmfRecordings, NameOnlySamplesBesideThem) {
  dir_.write("samples.bin", "12345678");
  std::filesystem::create_directory(dir_.path() / "d");
  const std::string beside = (dir_.path() / "samples.bin").string();
  for (const std::string& dataset : {std::string(".."), std::string("../samples.bin"), beside,
                                     std::string("d/../samples.bin"), std::string("samples.bin")}) {
    const bool is_good = dataset == "samples.bin";
    const std::string meta = metaText(cu8 + ",\"core:dataset\":\"" + dataset + "\"");
    for (const char* name : {"x_100M.sigmf-meta", "d/x_100M.sigmf-meta"}) dir_.write(name, meta);
    EXPECT_EQ(refusal("x_100M.sigmf-meta").find("name of a file beside it") != std::string::npos,
              !is_good)
        << dataset;
    EXPECT_NE(refusal("d/x_100M.sigmf-meta"), "") << dataset;
  }
  EXPECT_EQ(readAll(*open("x_100M.sigmf-meta")).size(), 4u);
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

TEST_F(SigmfRecordings, ComeFromArchivesThatHideNothing) {
  const std::string meta = metaText(cu8, "{\"core:frequency\":1}");
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
  dir_.write("UP.sigmf-data", "123456");  // comes first
  EXPECT_EQ(readAll(*open("UP.SIGMF-META")).size(), 3u);
  const std::vector<std::pair<std::string, const char*>> cases = {
      {tarMember("../x.sigmf-meta", meta) + data + end, "leads out of the archive"},
      {tarMember("/x.sigmf-meta", meta) + data + end, "leads out of the archive"},
      {data + data + end, "several recordings"},
      {data + end, "no .sigmf-meta"},
      {tarMember("x.sigmf-meta", meta) + data + end, "differ in name"},
      {tarMember("d/x.sigmf-meta", meta) + end, "only metadata"},
      {std::string(2000, 'x'), "cannot be read as a tar archive"}};
  for (const auto& [bytes, words] : cases) {
    dir_.write("y.sigmf", bytes);
    EXPECT_NE(refusal("y.sigmf").find(words), std::string::npos) << words << refusal("y.sigmf");
  }
}

}  // namespace
}  // namespace pelagrim_host
