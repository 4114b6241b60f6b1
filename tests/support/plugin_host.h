#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <array>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/temporary_dir.h"
#include "wendle_plugin.h"

using Samples = std::vector<std::complex<float>>;
using Row = std::vector<std::string>;  // the 7 cells of a panel row

/// Noise of a tenth of full scale with tones on exact bins (0 the centre, negative below). Hann
/// spreads such a tone over three bins, so each is one run and one detection.
inline Samples band(size_t frames, const std::vector<int>& tone_bins) {
  std::mt19937 random(7);
  std::normal_distribution<float> noise(0.0F, 0.1F);
  Samples samples(frames * 1024);
  for (size_t i = 0; i < samples.size(); ++i) {
    samples[i] = {noise(random), noise(random)};
    for (const int bin : tone_bins) {
      const double turns = bin * static_cast<double>(i % 1024) / 1024.0;
      samples[i] += std::complex<float>(std::polar(1.0, 2 * M_PI * turns));
    }
  }
  return samples;
}

/// Descriptors that the process has open.
inline size_t openFiles() {
  return static_cast<size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                                           std::filesystem::directory_iterator()));
}

/// Bytes that the process has allocated and not freed.
inline size_t heapBytes() {
  return mallinfo2().uordblks;
}

/// A host with a scripted clock and scripted tune answers, around a freshly loaded plug-in whose
/// survey directory is new and empty. Checks at every call that nothing is written out of bounds.
class PluginHost {
 public:
  explicit PluginHost(const char* plugin_path = PELAGRIM_PLUGIN_PATH)
      : library_(dlopen(plugin_path, RTLD_NOW | RTLD_LOCAL)) {
    if (library_ == nullptr) throw std::runtime_error(dlerror());
    setenv("ORVANE_SURVEY_DIR", dir.path().c_str(), 1);
    query = reinterpret_cast<WendlePluginQuery>(dlsym(library_, WENDLE_PLUGIN_QUERY_SYMBOL));
    const WendlePluginDesc* desc = query(WENDLE_ABI_VERSION);
    iq = static_cast<const WendleIqApi*>(desc->capabilities[0].table);
    panel = static_cast<const WendlePanelApi*>(desc->capabilities[1].table);
    client = static_cast<const WendleHostClientApi*>(desc->capabilities[2].table);
    services.ctx = this;
    services.now_ms = [](void* ctx) {
      ++static_cast<PluginHost*>(ctx)->clock_readings;
      return static_cast<PluginHost*>(ctx)->now_ms;
    };
    services.tune = [](void* ctx, double hz) {
      static_cast<PluginHost*>(ctx)->tuned_hz.push_back(hz);
      return static_cast<PluginHost*>(ctx)->tune_answer;
    };
    client->attach(&services);
  }
  ~PluginHost() { dlclose(library_); }
  PluginHost(const PluginHost&) = delete;
  PluginHost& operator=(const PluginHost&) = delete;

  void* create(double rate_hz, double centre_hz) { return handle = iq->create(rate_hz, centre_hz); }
  void process(const Samples& samples) {
    iq->process(handle, reinterpret_cast<const float*>(samples.data()), samples.size());
  }
  /// Delivers samples and lets the clock reach `at_ms` by the end of the call.
  void processUntil(int64_t at_ms, const Samples& samples) {
    now_ms = at_ms;
    process(samples.empty() ? Samples(1) : samples);
  }

  /// All waiting message lines.
  std::vector<std::string> lines() const {
    std::vector<std::string> all;
    std::array<char, 256> text;
    while (iq->poll_text(handle, text.data(), text.size()) == 1) all.emplace_back(text.data());
    return all;
  }
  std::string lastLine() const {
    const auto all = lines();
    return all.empty() ? "" : all.back();
  }

  std::vector<WendlePanelRow> rawRows(unsigned max = 64) const {
    std::vector<WendlePanelRow> rows(max + 1);
    std::memset(rows.data(), 0x5A, rows.size() * sizeof rows[0]);
    const WendlePanelRow untouched = rows[max];
    const unsigned count = panel->poll_rows(panel->create(), rows.data(), max);
    EXPECT_LE(count, max);
    for (size_t i = count; i < rows.size(); ++i) {
      EXPECT_EQ(std::memcmp(&rows[i], &untouched, sizeof untouched), 0) << "row " << i;
    }
    rows.resize(count);
    for (const WendlePanelRow& row : rows) {
      EXPECT_EQ(row.reserved, 0);
      for (const auto& cell : row.cells) {
        const size_t length = strnlen(cell, sizeof cell);
        EXPECT_LT(length, sizeof cell);
        for (size_t i = length; i < sizeof cell; ++i) EXPECT_EQ(cell[i], 0);
      }
      EXPECT_EQ(row.cells[7][0], 0);
    }
    return rows;
  }
  std::vector<Row> rows(unsigned max = 64) const {
    std::vector<Row> texts;
    for (const WendlePanelRow& row : rawRows(max)) {
      texts.emplace_back(row.cells, row.cells + 7);
    }
    return texts;
  }

  TemporaryDir dir;
  int64_t now_ms = 1'000'000;
  int clock_readings = 0;
  int tune_answer = 0;
  std::vector<double> tuned_hz;
  WendleHostApi services{};
  WendlePluginQuery query;
  const WendleIqApi* iq;
  const WendlePanelApi* panel;
  const WendleHostClientApi* client;
  void* handle = nullptr;

 private:
  void* library_;
};
