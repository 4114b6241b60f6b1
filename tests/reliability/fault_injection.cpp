#include "tests/reliability/fault_injection.h"

#include <dlfcn.h>
#include <stdio_ext.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace faults {

namespace {

Plan g_plan;
long g_seen = 0;
size_t g_held_back = 0;
thread_local bool g_armed = false;
std::atomic<long> g_live{0};

bool strikes(Call call) {
  if (!g_armed || g_plan.call != call) return false;
  ++g_seen;
  const bool strikes =
      g_plan.first > 0 && g_seen >= g_plan.first && g_seen - g_plan.first < g_plan.count;
  if (strikes) errno = call == Call::kAllocate ? ENOMEM : g_plan.error;
  return strikes;
}

template <typename Function>
Function* real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

void set(const Plan& plan) {
  g_plan = plan;
  g_seen = 0;
}
long callsSeen() {
  return g_seen;
}
long liveBlocks() {
  return g_live;
}
size_t bytesHeldBack() {
  return g_held_back;
}
Armed::Armed() {
  g_armed = true;
}
Armed::~Armed() {
  g_armed = false;
}

}  // namespace faults

using faults::Call;
using faults::strikes;

extern "C" {

std::FILE* fopen(const char* path, const char* mode) {
  static auto* const next = faults::real<std::FILE*(const char*, const char*)>("fopen");
  return strikes(*mode == 'r' ? Call::kOpenToRead : Call::kOpenToWrite) ? nullptr
                                                                        : next(path, mode);
}
char* fgets(char* text, int size, std::FILE* file) {
  static auto* const next = faults::real<char*(char*, int, std::FILE*)>("fgets");
  if (!strikes(Call::kRead)) return next(text, size, file);
  std::fputc(0, file);  // refused by a file open for reading, and so marks it as failed
  errno = faults::g_plan.error;
  return nullptr;
}
size_t fwrite(const void* data, size_t size, size_t count, std::FILE* file) {
  static auto* const next = faults::real<size_t(const void*, size_t, size_t, std::FILE*)>("fwrite");
  const size_t written = next(data, size, strikes(Call::kWrite) ? count / 2 : count, file);
  if (faults::g_armed) faults::g_held_back = std::max(faults::g_held_back, __fpending(file));
  return written;
}
int fclose(std::FILE* file) {
  static auto* const next = faults::real<int(std::FILE*)>("fclose");
  const int result = next(file);
  return strikes(Call::kClose) ? EOF : result;
}

#ifndef PELAGRIM_SANITIZED  // a sanitizer has its own allocator
void* __libc_malloc(size_t bytes);
void* __libc_calloc(size_t count, size_t bytes);
void* __libc_realloc(void* block, size_t bytes);
void __libc_free(void* block);

static void* counted(void* block) {
  if (block != nullptr) ++faults::g_live;
  return block;
}
void* malloc(size_t bytes) {
  return strikes(Call::kAllocate) ? nullptr : counted(__libc_malloc(bytes));
}
void* calloc(size_t count, size_t bytes) {
  return strikes(Call::kAllocate) ? nullptr : counted(__libc_calloc(count, bytes));
}
void* realloc(void* block, size_t bytes) {
  if (strikes(Call::kAllocate)) return nullptr;
  void* const moved = __libc_realloc(block, bytes);
  return block == nullptr ? counted(moved) : moved;
}
void free(void* block) {
  if (block != nullptr) --faults::g_live;
  __libc_free(block);
}
#endif

}  // extern "C"
