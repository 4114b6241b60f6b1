// The boundary as a sequence of calls, decoded from the input: one byte for which call, then its
// arguments. After every call the invariants of the state hold.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "input_file.h"
#include "plugin/state.h"
#include "wendle_plugin.h"

extern "C" const WendlePluginDesc* wendle_plugin_query(uint32_t abi_version) noexcept;

namespace {

class Input {
 public:
  Input(const uint8_t* data, size_t size) : next_(data), end_(data + size) {}
  bool ended() const { return next_ == end_; }
  template <typename T>
  T take() {
    T value{};
    const size_t bytes = std::min(sizeof value, static_cast<size_t>(end_ - next_));
    std::memcpy(&value, next_, bytes);
    next_ += bytes;
    return value;
  }
  /// Usually a sensible value, sometimes any other.
  double takeHz() {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr double kHz[] = {145e6, 144.5e6, 1e6, 48e3, 2.4e6, 1e9, 1.0, 0.0, -1.0, kInfinity};
    const auto choice = take<uint8_t>();
    return choice < std::size(kHz) ? kHz[choice] : take<double>();
  }

 private:
  const uint8_t* next_;
  const uint8_t* end_;
};

struct Host {
  int64_t now_ms = 1'000'000;
  int tune_answer = 0;
};

/// One turn of a cosine in 1024 steps.
std::vector<float> cosineTable() {
  std::vector<float> table(1024);
  for (size_t i = 0; i < table.size(); ++i) {
    table[i] = static_cast<float>(std::cos(2 * M_PI * static_cast<double>(i) / 1024.0));
  }
  return table;
}

void takeSamples(const WendleIqApi& iq, void* handle, Input& input) {
  static const std::vector<float> cosine = cosineTable();
  const size_t count = input.take<uint16_t>() % 2560U;
  const auto bin = input.take<uint8_t>();
  const auto odd = input.take<float>();  // any bits, in one place of the block
  std::vector<float> samples(2 * count);
  for (size_t i = 0; i < count; ++i) {
    samples[2 * i] = cosine[bin * i % 1024];
    samples[2 * i + 1] = cosine[(bin * i + 768) % 1024];
  }
  if (count > 0 && bin % 2 != 0) samples[count / 2] = odd;
  iq.process(handle, samples.data(), count);
}

void poll(const WendleIqApi& iq, const WendlePanelApi& panel, Input& input) {
  void* const handle = panel.create();
  const auto len = input.take<uint8_t>();
  const std::unique_ptr<char[]> text(new char[len]);  // the sanitizer guards its ends
  if (iq.poll_text(handle, text.get(), len) == 1) FUZZ_EXPECT(std::strlen(text.get()) < len);
  const unsigned max = input.take<uint8_t>();
  std::vector<WendlePanelRow> rows(max);
  const unsigned filled = panel.poll_rows(handle, rows.data(), max);
  FUZZ_EXPECT(filled <= max && (filled > 0) == (max > 0));
  for (unsigned i = 0; i < filled; ++i) {
    for (const auto& cell : rows[i].cells) FUZZ_EXPECT(cell[sizeof cell - 1] == 0);
  }
}

void expectInvariants() {
  const pelagrim::State& state = pelagrim::g_state;
  const size_t bins = state.spectrum.power_sum.size();
  FUZZ_EXPECT(bins == 0 || bins == 1024);
  FUZZ_EXPECT(state.spectrum.fft_buf.size() == bins && state.spectrum.window.size() == bins);
  FUZZ_EXPECT(state.spectrum.fill < 1024 && state.log.lines.size() <= 32);
  FUZZ_EXPECT(state.plan.slice_index == 0 || state.plan.slice_index < state.plan.slices.size());
  for (const auto& [slot, channel] : state.survey.channels) {
    FUZZ_EXPECT(channel.hits > 0 && channel.looks > 0);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const ScratchDir dir;
  setenv("ORVANE_SURVEY_DIR", dir.path(), 1);
  unlink(dir.pathOf("survey.csv").c_str());
  std::destroy_at(&pelagrim::g_state);
  std::construct_at(&pelagrim::g_state);

  const WendlePluginDesc* const desc = wendle_plugin_query(WENDLE_ABI_VERSION);
  const auto& iq = *static_cast<const WendleIqApi*>(desc->capabilities[0].table);
  const auto& panel = *static_cast<const WendlePanelApi*>(desc->capabilities[1].table);
  const auto& client = *static_cast<const WendleHostClientApi*>(desc->capabilities[2].table);
  Host host;
  WendleHostApi services{};
  services.ctx = &host;
  services.now_ms = [](void* ctx) { return static_cast<Host*>(ctx)->now_ms; };
  services.tune = [](void* ctx, double) { return static_cast<Host*>(ctx)->tune_answer; };
  client.attach(&services);
  void* const handle = panel.create();

  Input input(data, size);
  for (int calls = 0; !input.ended() && calls < 64; ++calls) {
    switch (input.take<uint8_t>() % 9) {
      case 0: {
        const std::string settings =
            "sweep=" + std::string(input.take<uint8_t>() % 2 == 0 ? "yes" : "no") +
            "\nraster_hz=" + std::to_string(input.take<int16_t>()) +
            "\ndwell_seconds=" + std::to_string(input.take<int8_t>());
        dir.write("survey.cfg", settings.data(), settings.size());
        double rate_hz = input.takeHz();
        // Long plans are slow, and another target covers them.
        if (rate_hz > 0.0 && rate_hz < 10e3) rate_hz += 10e3;
        iq.create(rate_hz, input.takeHz());
        break;
      }
      case 1:
      case 2:
        takeSamples(iq, handle, input);
        break;
      case 3:
        iq.retune(handle, input.takeHz());
        break;
      case 4:
        poll(iq, panel, input);
        break;
      case 5:
        host.now_ms =
            static_cast<int64_t>(static_cast<uint64_t>(host.now_ms) + input.take<uint16_t>());
        break;
      case 6:
        host.now_ms = input.take<int64_t>();
        break;
      case 7:
        host.tune_answer = input.take<int8_t>();
        services.tune = host.tune_answer == 100 ? nullptr : services.tune;
        break;
      case 8:
        iq.destroy(handle);
        break;
    }
    expectInvariants();
  }
  client.attach(nullptr);
  return 0;
}
