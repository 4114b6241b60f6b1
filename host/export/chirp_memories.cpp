#include <fmt/format.h>

#include <cmath>
#include <string_view>

#include "host/export/csv_field.h"
#include "host/export/export_formats.h"
#include "host/text/counted_text.h"

namespace pelagrim_host {
namespace {

constexpr ModeNames<std::string_view> kModes = {
    .none = "Auto", .cw = "CW", .usb = "USB", .lsb = "LSB", .am = "AM", .nfm = "FM", .wfm = "WFM"};

std::string_view modeOf(const Listening& listening) {
  constexpr double kNarrowHz = 15000.0;
  const bool is_narrow =
      listening.mode == ListeningMode::kNfm && listening.bandwidth_hz <= kNarrowHz;
  return is_narrow ? "NFM" : kModes[listening.mode];
}

struct Tuned {
  double hz;
  double step_khz;
};

double nearestMultiple(double hz, double step_hz) {
  return step_hz * std::round(hz / step_hz);
}

Tuned nearestTuned(const Listening& listening) {
  constexpr double kFineHz = 10.0;
  constexpr double kBroadcastHz = 1000.0;  // 9 and 10 kHz apart, and 5 on short wave
  constexpr double kStepsFromHz = 30e6;
  constexpr double kStepHz = 5000.0;
  constexpr double kOtherStepHz = 6250.0;
  const double hz = listening.dial_hz;
  const bool is_am = listening.mode == ListeningMode::kAm;
  if (is_am && hz < kStepsFromHz) return {nearestMultiple(hz, kBroadcastHz), 5.0};
  const bool has_steps =
      is_am || listening.mode == ListeningMode::kNfm || listening.mode == ListeningMode::kWfm;
  if (!has_steps) return {nearestMultiple(hz, kFineHz), 5.0};
  const double at_5 = nearestMultiple(hz, kStepHz);
  const double at_6 = nearestMultiple(hz, kOtherStepHz);
  if (std::abs(at_6 - hz) < std::abs(at_5 - hz)) return {at_6, 6.25};
  return {at_5, 5.0};
}

/// ASCII, which every radio and every version of CHIRP accepts.
std::string plainText(std::string_view text) {
  std::string plain;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x80) plain += character;
    if (byte >= 0xC0) plain += '?';  // one for each character of several bytes
  }
  return plain;
}

}  // namespace

std::string chirpMemories(const ExportedChannels& channels) {
  std::string text =
      "Location,Name,Frequency,Duplex,Offset,Tone,rToneFreq,cToneFreq,DtcsCode,DtcsPolarity,Mode,"
      "TStep,Skip,Comment,URCALL,RPT1CALL,RPT2CALL\n";
  int location = 0;
  for (const ExportedChannel& channel : channels) {
    const Tuned tuned = nearestTuned(channel.listening);
    const auto comment = fmt::format(
        "{} {:.{}f} kHz wide, {}, {}", channel.seen.kind, channel.seen.width_hz / 1e3,
        channel.seen.width_hz < 1e3 ? 3 : 1, countedText(channel.seen.hits, "detection"),
        countedText(channel.seen.looks, "look"));
    text +=
        fmt::format("{},{},{:.6f},off,0.000000,,88.5,88.5,023,NN,{},{:.2f},,{},,,\n", ++location,
                    csvField(plainText(withoutFormulaSigns(channel.name))), tuned.hz / 1e6,
                    modeOf(channel.listening), tuned.step_khz, csvField(comment));
  }
  return text;
}

}  // namespace pelagrim_host
