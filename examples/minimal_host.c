/*
 * A whole host in a page of C: it loads the plug-in, lends it a clock and a receiver that it may
 * tune, feeds it samples and prints what it says. All it knows of Pelagrim is the boundary header.
 *
 *   cc -I include examples/minimal_host.c -ldl -lm -o minimal_host
 *   ORVANE_SURVEY_DIR=. ./minimal_host build/pelagrim_plugin.so
 *
 * The receiver here is made up: noise, and one carrier at 145.25 MHz.
 */
#include <dlfcn.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "wendle_plugin.h"

#define BLOCK 32768 /* samples handed over at once */

/* What the services below need: the receiver and its clock. */
struct receiver {
  double rate_hz;
  double centre_hz; /* where the samples come from */
  int64_t start_ms; /* Unix time of the first sample */
  uint64_t samples; /* delivered so far; the clock follows them */
  int has_moved;    /* the plug-in has tuned; report the centre after process has returned */
};

static int64_t now_ms(void* ctx) {
  const struct receiver* receiver = ctx;
  return receiver->start_ms + (int64_t)((double)receiver->samples * 1000.0 / receiver->rate_hz);
}

/* Runs inside process, with the plug-in's lock held: it may move the receiver, not call back. */
static int tune(void* ctx, double hz) {
  struct receiver* receiver = ctx;
  receiver->centre_hz = hz;
  receiver->has_moved = 1;
  return kTuneAccepted;
}

static float noise(void) {
  return 0.01f * ((float)rand() / (float)RAND_MAX - 0.5f);
}

static void receive(struct receiver* receiver, float* iq, size_t samples) {
  const double offset_hz = 145250000.0 - receiver->centre_hz;
  const int is_in_reach = fabs(offset_hz) < 0.5 * receiver->rate_hz;
  for (size_t i = 0; i < samples; ++i, ++receiver->samples) {
    const double turns = offset_hz / receiver->rate_hz * (double)receiver->samples;
    const double angle = 6.283185307179586 * (turns - floor(turns));
    iq[2 * i] = noise() + (is_in_reach ? 0.05f * (float)cos(angle) : 0.0f);
    iq[2 * i + 1] = noise() + (is_in_reach ? 0.05f * (float)sin(angle) : 0.0f);
  }
}

static void print_messages(const WendleIqApi* iq, void* survey) {
  char line[200];
  while (iq->poll_text(survey, line, sizeof line)) puts(line);
}

static void print_panel(const WendlePanelApi* panel) {
  WendlePanelRow rows[20];
  void* const handle = panel->create();
  const unsigned int count = panel->poll_rows(handle, rows, 20);
  for (unsigned int row = 0; row < count; ++row) {
    for (int cell = 0; cell < WENDLE_PANEL_CELLS; ++cell) printf("%s  ", rows[row].cells[cell]);
    putchar('\n');
  }
  panel->destroy(handle);
}

/* The table of one kind, or null: a host skips kinds that it does not know. */
static const void* table_of(const WendlePluginDesc* plugin, WendleCapabilityKind kind) {
  for (uint32_t i = 0; i < plugin->capability_count; ++i) {
    if (plugin->capabilities[i].kind == (uint32_t)kind) return plugin->capabilities[i].table;
  }
  return NULL;
}

int main(int argc, char** argv) {
  void* const library = argc == 2 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
  if (library == NULL) {
    fprintf(stderr, "usage: minimal_host PLUGIN.so\n%s\n", argc == 2 ? dlerror() : "");
    return 2;
  }
  WendlePluginQuery query;
  *(void**)&query = dlsym(library, WENDLE_PLUGIN_QUERY_SYMBOL);
  const WendlePluginDesc* const plugin = query != NULL ? query(WENDLE_ABI_VERSION) : NULL;
  const WendleHostClientApi* const client = plugin ? table_of(plugin, kHostClient) : NULL;
  const WendleIqApi* const iq = plugin ? table_of(plugin, kIqProcessor) : NULL;
  const WendlePanelApi* const panel = plugin ? table_of(plugin, kPanel) : NULL;
  if (client == NULL || iq == NULL || panel == NULL) {
    fprintf(stderr, "minimal_host: %s is no plug-in of this interface\n", argv[1]);
    return 1;
  }

  struct receiver receiver = {1000000.0, 144500000.0, 1767225600000, 0, 0};
  const WendleHostApi services = {.ctx = &receiver, .tune = tune, .now_ms = now_ms};
  static float samples[2 * BLOCK];
  client->attach(&services);
  void* const survey = iq->create(receiver.rate_hz, receiver.centre_hz);
  while (receiver.samples < 65000000) { /* three dwells of 20 s, and a bit */
    receive(&receiver, samples, BLOCK);
    iq->process(survey, samples, BLOCK);
    if (receiver.has_moved) iq->retune(survey, receiver.centre_hz);
    receiver.has_moved = 0;
    print_messages(iq, survey);
  }
  iq->destroy(survey); /* evaluates and saves what the last dwell has gathered */
  print_messages(iq, survey);
  print_panel(panel);
  client->attach(NULL);
  dlclose(library);
  return 0;
}
