/*
 * The plug-in interface of the Orvane receiver, version 3: every record that crosses between a host
 * and a plug-in. A host author needs this page and nothing else. It is C11 and C++11 compatible.
 *
 * How a host uses a plug-in
 *   1. dlopen the library, look up WENDLE_PLUGIN_QUERY_SYMBOL and call it with WENDLE_ABI_VERSION.
 *   2. Walk desc->capabilities and pick the tables by their kind.
 *   3. Client: attach(services), once, before any other thread calls in.
 *   4. IQ processor: create(rate, centre); then process for every block of samples, retune whenever
 *      the receiver's centre has changed, poll_text until it returns 0, destroy at the end.
 *   5. Panel: create, columns once, poll_rows as often as the table is redrawn, destroy.
 *   6. dlclose, when no call is running and none will come. The services table and its clock
 *      stay valid until then: every [locks] call but poll_text and poll_rows may read the clock.
 *
 * Threads
 *   [sample-thread]     the thread that delivers samples; one at a time.
 *   [interface-thread]  the thread that draws; one at a time.
 *   [control-thread]    the thread that starts, retunes and stops the receiver; one at a time.
 *   [any-thread]        any of them, at any time, even two at once.
 *   [locks]             the call holds the plug-in's one lock from start to end, so it waits while
 *                       another such call runs. A call that ends a dwell reads the host's clock,
 *                       asks it to tune and writes a file under that lock.
 * One thread may play all three roles. All [locks] calls may overlap freely in time. Around them
 * a host MUST NOT hold any lock that its own tune or now_ms takes, or the two wait for each
 * other forever. No thread may be cancelled inside a call. The threads keep the usual
 * floating-point environment: rounding to nearest, no traps, denormals not flushed to zero.
 *
 * Memory
 *   The plug-in owns the descriptor, the tables and their strings: constant from load to unload.
 *   The host owns its services table and every buffer it passes in. Handles are opaque; nobody
 *   frees them. No call ever throws or longjmps across the boundary in either direction.
 *
 * Layout
 *   x86-64 System V, little-endian, 8-byte pointers. Every size and offset below is asserted.
 *   Strings are NUL-terminated 8-bit text.
 */
#ifndef WENDLE_PLUGIN_H
#define WENDLE_PLUGIN_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define WENDLE_ABI_VERSION 3u
#define WENDLE_PLUGIN_QUERY_SYMBOL "wendle_plugin_query"

/* A panel cell and a column title: at most 31 bytes and a NUL. Longer text is cut, without regard
 * to character boundaries. */
#define WENDLE_CELL_BYTES 32
#define WENDLE_PANEL_CELLS 8

/* What a capability is; the values are single bits, so that a mask can hold a set of them. Values
 * not named here are kinds that this page does not describe; a host skips kinds that it does not
 * know. */
typedef enum WendleCapabilityKind {
  kIqProcessor = 2, /* table: WendleIqApi */
  kPanel = 16,      /* table: WendlePanelApi */
  kHostClient = 32  /* table: WendleHostClientApi */
} WendleCapabilityKind;

/* What the host's tune returns. Any value not named here also means that the radio refused. */
typedef enum WendleTuneResult {
  kTuneAccepted = 0,
  kTuneNotPermitted = -1, /* this plug-in lacks the user's permission to tune */
  kTuneOutOfRange = -2,   /* the frequency lies outside the radio's range */
  kTuneNoRadio = -3,      /* no radio is open */
  kTuneRefused = -4       /* the radio refused; the value that this page suggests for it */
} WendleTuneResult;

/* What a panel row is, so that a host can draw it accordingly. */
typedef enum WendleRowKind {
  kRowPlain = 0,   /* one surveyed channel */
  kRowWarning = 2, /* something needs the user's attention */
  kRowSummary = 4  /* the state of the survey as a whole */
} WendleRowKind;

/* ---- What the host offers ----------------------------------------------------------------------
 *
 * The services table. The host fills it, hands it over with attach and keeps it, and what ctx
 * points to, valid until the plug-in is unloaded or given another table. The plug-in reads ctx,
 * tune and now_ms, anew each time, and no other slot. Either function may be null.
 */
typedef struct WendleHostApi {
  uint64_t host_private_0; /* the host's own; not read */
  void* ctx;               /* the host's context, first argument of every function here */
  uint64_t host_private_1; /* the host's own; not read */
  uint64_t host_private_2; /* the host's own; not read */

  /* Asks the host to move the receiver's centre to hz. Returns 0 when the request is accepted, else
   * why not (WendleTuneResult). Without this function the plug-in never asks.
   * Called from inside process, with the plug-in's lock held: tune MUST NOT call any [locks]
   * function, in particular not retune, nor wait for a thread that may be inside one. An accepting
   * host reports the new centre with retune once process has returned and the receiver has moved;
   * until then the plug-in takes the samples as coming from the old centre.
   * [sample-thread] */
  int (*tune)(void* ctx, double hz);

  /* The host's clock, Unix time in milliseconds, e.g. 1731760000000; 0 means that the time is
   * unknown. Without it dwells never time out, and channels have time 0. It need not be monotonic.
   * Called with the plug-in's lock held: MUST NOT call any [locks] function, nor wait for a thread
   * that may be inside one.
   * [any-thread] */
  int64_t (*now_ms)(void* ctx);
} WendleHostApi;

/* ---- What the plug-in offers -------------------------------------------------------------------
 */

/* The plug-in receives the host's services through this table. */
typedef struct WendleHostClientApi {
  uint32_t struct_size; /* sizeof(WendleHostClientApi), 16 */

  /* Stores the pointer and nothing more; null detaches the host. MUST NOT run while another thread
   * is inside the plug-in. Call it before the IQ processor's create, or the first dwell has no
   * start time and does not end.
   * [control-thread & no other call running] */
  void (*attach)(const WendleHostApi* host);
} WendleHostClientApi;

/* The IQ processor: samples in, message lines out. Functions that take a handle do nothing and
 * return 0 when it is null. */
typedef struct WendleIqApi {
  uint32_t struct_size; /* sizeof(WendleIqApi), 64 */
  uint64_t reserved;    /* zero */
  double rate_hz; /* a sample rate that suits the processor, e.g. 2400000.0; any other works */

  /* Starts the processor afresh for a receiver at sample_rate (samples per second) and centre_hz:
   * reads its files, drops what was gathered, starts to gather. Returns the handle, never null;
   * called again, it restarts on the same handle. Never calls tune.
   * [control-thread] [locks] */
  void* (*create)(double sample_rate, double centre_hz);

  /* Takes n complex samples: iq points to 2 n floats, I then Q, aligned to 4 bytes. Any n will do,
   * 0 included; the samples are used before the call returns. May call now_ms and tune. A null iq
   * makes the call do nothing.
   * [sample-thread] [locks] */
  void (*process)(void* handle, const float* iq, size_t n);

  /* The receiver's centre is now centre_hz, whoever moved it. What the interrupted dwell had
   * gathered is dropped, so the host drops samples that were in flight when the receiver moved and
   * then calls this before it delivers samples from the new centre. MUST NOT be called from inside
   * tune or now_ms.
   * [control-thread or sample-thread] [locks] */
  void (*retune)(void* handle, double centre_hz);

  /* Hands over the oldest waiting message line: at most len - 1 bytes of it and a NUL, no line end.
   * Returns 1 if a line was written, 0 if none waits (buf is then untouched) or if buf is null or
   * len is 0. Only 32 lines can wait and later ones are lost, so poll until 0. 200 bytes hold any
   * line.
   * [interface-thread] [locks] */
  int (*poll_text)(void* handle, char* buf, size_t len);

  /* Evaluates and saves what the dwell in progress has gathered. Frees nothing; the handle stays
   * valid and create may follow.
   * [control-thread] [locks] */
  void (*destroy)(void* handle);
} WendleIqApi;

/* One row of the panel's table. */
typedef struct WendlePanelRow {
  int32_t reserved;                                  /* written as 0 */
  int32_t kind;                                      /* WendleRowKind */
  char cells[WENDLE_PANEL_CELLS][WENDLE_CELL_BYTES]; /* unused cells and bytes past a NUL are 0 */
} WendlePanelRow;

/* The panel: a table that the host shows. It has no separate state: any handle of this plug-in
 * will do, before the IQ processor's create and after its destroy too. */
typedef struct WendlePanelApi {
  uint32_t struct_size; /* sizeof(WendlePanelApi), 48 */
  const char* title;    /* e.g. "Pelagrim" */

  /* Returns the panel's handle, never null.
   * [any-thread] */
  void* (*create)(void);

  /* Writes the column titles, one to a buffer, and returns their number. titles MUST have room for
   * WENDLE_PANEL_CELLS of them and MUST NOT be null; those beyond the result are left as they were.
   * [any-thread] */
  int (*columns)(void* handle, char (*titles)[WENDLE_CELL_BYTES]);

  /* Fills rows[0] to rows[result - 1] with a fresh, complete picture and leaves the rest alone.
   * If max is too small, the most important rows come: summary, warning, busiest channels. A
   * result equal to max may mean that there are more. Returns 0 if handle or rows is null or max
   * is 0.
   * [interface-thread] [locks] */
  unsigned int (*poll_rows)(void* handle, WendlePanelRow* rows, unsigned int max);

  /* The host is done with the panel. Nothing is freed.
   * [any-thread] */
  void (*destroy)(void* handle);
} WendlePanelApi;

/* One entry of the capability list. A host reads no further into a table than table_size. */
typedef struct WendleCapability {
  uint32_t kind;       /* a WendleCapabilityKind value */
  uint32_t table_size; /* equal to the table's own struct_size */
  const void* table;   /* WendleIqApi, WendlePanelApi or WendleHostClientApi, as kind says */
} WendleCapability;

/* What the plug-in is. */
typedef struct WendlePluginDesc {
  uint32_t struct_size;      /* sizeof(WendlePluginDesc), 56 */
  uint32_t abi_version;      /* WENDLE_ABI_VERSION */
  const char* plugin_name;   /* e.g. "Pelagrim" */
  const char* version;       /* e.g. "0.1.1" */
  const char* author;        /* e.g. "Orvane project" */
  const char* license;       /* e.g. "MIT" */
  uint32_t capability_mask;  /* the kinds of all entries of the list, or-ed */
  uint32_t capability_count; /* entries in the list */
  const WendleCapability* capabilities;
} WendlePluginDesc;

/* The type of the one exported function. Returns the descriptor, the same one every time, or null
 * when the plug-in does not speak the version asked for; there is no negotiation.
 * [any-thread] */
typedef const WendlePluginDesc* (*WendlePluginQuery)(uint32_t abi_version);

#ifdef __cplusplus
} /* extern "C" */
#define WENDLE_ASSERT(condition) static_assert(condition, #condition)
#else
#define WENDLE_ASSERT(condition) _Static_assert(condition, #condition)
#endif

#define WENDLE_AT(record, field, offset) WENDLE_ASSERT(offsetof(record, field) == (offset))

WENDLE_ASSERT(sizeof(void*) == 8 && sizeof(size_t) == 8 && sizeof(double) == 8);
WENDLE_ASSERT(sizeof(int) == 4 && sizeof(float) == 4);

WENDLE_ASSERT(sizeof(WendlePluginDesc) == 56);
WENDLE_AT(WendlePluginDesc, struct_size, 0);
WENDLE_AT(WendlePluginDesc, abi_version, 4);
WENDLE_AT(WendlePluginDesc, plugin_name, 8);
WENDLE_AT(WendlePluginDesc, version, 16);
WENDLE_AT(WendlePluginDesc, author, 24);
WENDLE_AT(WendlePluginDesc, license, 32);
WENDLE_AT(WendlePluginDesc, capability_mask, 40);
WENDLE_AT(WendlePluginDesc, capability_count, 44);
WENDLE_AT(WendlePluginDesc, capabilities, 48);

WENDLE_ASSERT(sizeof(WendleCapability) == 16);
WENDLE_AT(WendleCapability, kind, 0);
WENDLE_AT(WendleCapability, table_size, 4);
WENDLE_AT(WendleCapability, table, 8);

WENDLE_ASSERT(sizeof(WendleIqApi) == 64);
WENDLE_AT(WendleIqApi, struct_size, 0);
WENDLE_AT(WendleIqApi, reserved, 8);
WENDLE_AT(WendleIqApi, rate_hz, 16);
WENDLE_AT(WendleIqApi, create, 24);
WENDLE_AT(WendleIqApi, process, 32);
WENDLE_AT(WendleIqApi, retune, 40);
WENDLE_AT(WendleIqApi, poll_text, 48);
WENDLE_AT(WendleIqApi, destroy, 56);

WENDLE_ASSERT(sizeof(WendlePanelApi) == 48);
WENDLE_AT(WendlePanelApi, struct_size, 0);
WENDLE_AT(WendlePanelApi, title, 8);
WENDLE_AT(WendlePanelApi, create, 16);
WENDLE_AT(WendlePanelApi, columns, 24);
WENDLE_AT(WendlePanelApi, poll_rows, 32);
WENDLE_AT(WendlePanelApi, destroy, 40);

WENDLE_ASSERT(sizeof(WendleHostClientApi) == 16);
WENDLE_AT(WendleHostClientApi, struct_size, 0);
WENDLE_AT(WendleHostClientApi, attach, 8);

WENDLE_ASSERT(sizeof(WendleHostApi) == 48);
WENDLE_AT(WendleHostApi, ctx, 8);
WENDLE_AT(WendleHostApi, tune, 32);
WENDLE_AT(WendleHostApi, now_ms, 40);

WENDLE_ASSERT(sizeof(WendlePanelRow) == 264);
WENDLE_AT(WendlePanelRow, reserved, 0);
WENDLE_AT(WendlePanelRow, kind, 4);
WENDLE_AT(WendlePanelRow, cells, 8);

#undef WENDLE_AT
#undef WENDLE_ASSERT

#endif /* WENDLE_PLUGIN_H */
