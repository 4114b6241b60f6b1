/*
 * Preloaded into the program: a disk that accepts only FULL_AFTER_BYTES of survey.csv each time it
 * is written, that fails to flush if FAIL_FLUSH is set, and that takes SLOW_CLOSE_MS to close any
 * file of the survey directory.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>
#include <time.h>
#include <unistd.h>

enum { kMaxPath = 4096 };

static int path_of(int file, char* path) {
  char link[64];
  snprintf(link, sizeof link, "/proc/self/fd/%d", file);
  const ssize_t length = readlink(link, path, kMaxPath - 1);
  if (length < 0) return 0;
  path[length] = '\0';
  return 1;
}

static int is_results(int file) {
  char path[kMaxPath];
  if (!path_of(file, path)) return 0;
  const char* const name = strrchr(path, '/');
  return name != NULL && strcmp(name, "/survey.csv") == 0;
}

/* The build hides all names else, and then nothing here would be called. */
#define EXPORTED __attribute__((visibility("default")))

/* The plug-in writes its whole text with one call. */
EXPORTED size_t fwrite(const void* bytes, size_t size, size_t count, FILE* stream) {
  static size_t (*real)(const void*, size_t, size_t, FILE*);
  if (real == NULL) *(void**)&real = dlsym(RTLD_NEXT, "fwrite");
  const char* const limit = getenv("FULL_AFTER_BYTES");
  if (limit == NULL || !is_results(fileno(stream))) return real(bytes, size, count, stream);
  const size_t room = (size_t)atol(limit);
  if (size * count <= room) return real(bytes, size, count, stream);
  const size_t written = real(bytes, 1, room, stream);
  errno = ENOSPC;
  return written / size;
}

EXPORTED int fdatasync(int file) {
  static int (*real)(int);
  if (real == NULL) *(void**)&real = dlsym(RTLD_NEXT, "fdatasync");
  if (getenv("FAIL_FLUSH") == NULL) return real(file);
  errno = EIO;
  return -1;
}

static void wait_for_close(int file) {
  const char* const wait_ms = getenv("SLOW_CLOSE_MS");
  const char* const survey_dir = getenv("ORVANE_SURVEY_DIR");
  char path[kMaxPath];
  if (wait_ms == NULL || survey_dir == NULL || !path_of(file, path)) return;
  const size_t length = strlen(survey_dir);
  if (strncmp(path, survey_dir, length) != 0 || path[length] != '/') return;
  const long ms = atol(wait_ms);
  const struct timespec wait = {ms / 1000, ms % 1000 * 1000000};
  nanosleep(&wait, NULL);
}

EXPORTED int close(int file) {
  static int (*real)(int);
  if (real == NULL) *(void**)&real = dlsym(RTLD_NEXT, "close");
  wait_for_close(file);
  return real(file);
}

EXPORTED int fclose(FILE* file) {
  static int (*real)(FILE*);
  if (real == NULL) *(void**)&real = dlsym(RTLD_NEXT, "fclose");
  wait_for_close(fileno(file));
  return real(file);
}
