// A plug-in that asks to tune after every second block and records what its host does.
// FAKE_PLUGIN_PANEL ("sweeping" or "fixed") gives it a panel of 1000 channels that counts dwells:
// one per tune request, and one per destroy in between. FAKE_PLUGIN_FAULT breaks its descriptor.
// Both are
// read at every query. With FAKE_PLUGIN_ASKS_TWICE it asks to tune twice in one call.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "wendle_plugin.h"

namespace {

std::string g_calls;
const WendleHostApi* g_host = nullptr;
bool g_in_process = false;
int g_blocks = 0;
int g_dwells = 0;
int g_messages = 0;

void note(const std::string& call) {
  g_calls += (g_in_process ? "(inside) " : "") + call + "\n";
}

void* create(double, double centre_hz) {
  note("create " + std::to_string(static_cast<long>(centre_hz)));
  g_dwells = 0;
  return &g_calls;
}
void process(void*, const float* iq, size_t n) {
  note("process " + std::to_string(n) + " from " + std::to_string(static_cast<long>(iq[0])) +
       " at " + std::to_string(g_host->now_ms(g_host->ctx)));
  g_in_process = true;
  if (++g_blocks % 2 == 0) {
    ++g_dwells;
    const int times = std::getenv("FAKE_PLUGIN_ASKS_TWICE") != nullptr ? 2 : 1;
    for (int i = 0; i < times; ++i) {
      const int answer = g_host->tune(g_host->ctx, 100.0 * g_blocks + i);
      g_calls += "tune " + std::to_string(answer) + "\n";
    }
  }
  g_in_process = false;
}
void retune(void*, double hz) {
  note("retune " + std::to_string(static_cast<long>(hz)));
}
int pollText(void*, char* line, size_t size) {
  if (g_messages == 0) return 0;
  std::snprintf(line, size, "message %d", g_messages--);
  return 1;
}
void destroy(void*) {
  note("destroy");
  g_dwells += g_blocks % 2;
  g_messages = 2;
}
void* createPanel() {
  return &g_dwells;
}
int columns(void*, char (*titles)[WENDLE_CELL_BYTES]) {
  std::strcpy(titles[0], "Frequency");
  return 5;
}
unsigned int pollRows(void*, WendlePanelRow* rows, unsigned int max) {
  const unsigned int count = std::min(max, 1001U);
  for (unsigned int i = 0; i < count; ++i) {
    rows[i] = {0, i == 0 ? kRowSummary : kRowPlain, {}};
    std::snprintf(rows[i].cells[0], WENDLE_CELL_BYTES, "%u\n", i);
  }
  if (count == 0) return 0;
  std::strcpy(rows[0].cells[1], std::getenv("FAKE_PLUGIN_PANEL"));
  std::strcpy(rows[0].cells[2], "3");
  std::snprintf(rows[0].cells[4], WENDLE_CELL_BYTES, "%d", g_dwells);
  return count;
}
void destroyPanel(void*) {}
void attach(const WendleHostApi* host) {
  g_host = host;
  note(host != nullptr ? "attach" : "detach");
}

}  // namespace

extern "C" __attribute__((visibility("default"))) const char* fake_plugin_calls() {
  return g_calls.c_str();
}

extern "C" __attribute__((visibility("default"))) const WendlePluginDesc* wendle_plugin_query(
    uint32_t) {
  static WendleIqApi iq;
  static WendleHostClientApi client;
  static WendlePanelApi panel;
  static WendleCapability list[4];
  static WendlePluginDesc desc;
  iq = {64, 0, 1.0, create, process, retune, pollText, destroy};
  client = {16, attach};
  panel = {48, "Fake", createPanel, columns, pollRows, destroyPanel};
  list[0] = {kIqProcessor, 64, &iq};
  list[1] = {kHostClient, 16, &client};
  list[2] = {1u << 20, 8, nullptr};  // a kind that no host knows
  desc = {56, 3, "Fake", nullptr, "", "", kIqProcessor | kHostClient | 1u << 20, 3, list};
  if (std::getenv("FAKE_PLUGIN_PANEL") != nullptr) {
    list[3] = {kPanel, 48, &panel};
    desc.capability_count = 4;
    desc.capability_mask |= kPanel;
  }
  const char* const fault = std::getenv("FAKE_PLUGIN_FAULT");
  const std::string name = fault == nullptr ? "" : fault;
  if (name == "other version") return nullptr;
  if (name == "short descriptor") desc.struct_size = 48;
  if (name == "mask") desc.capability_mask = kIqProcessor;
  if (name == "short table") list[1].table_size = client.struct_size = 8;
  if (name == "sizes differ") list[0].table_size = 72;
  if (name == "null table") list[0].table = nullptr;
  if (name == "null function") iq.retune = nullptr;
  if (name == "no processor") desc.capability_count = 0, desc.capability_mask = 0;
  return &desc;
}
