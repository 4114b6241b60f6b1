/*
 * Preloaded into the program: a disk that accepts only FULL_AFTER_BYTES of survey.csv each time it
 * is written, and that fails to flush if FAIL_FLUSH is set.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>
#include <unistd.h>

static int is_results(int file) {
  char link[64], path[4096];
  snprintf(link, sizeof link, "/proc/self/fd/%d", file);
  const ssize_t length = readlink(link, path, sizeof path - 1);
  if (length < 0) return 0;
  path[length] = '\0';
  const char* const name = strrchr(path, '/');
  return name != NULL && strcmp(name, "/survey.csv") == 0;
}

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
