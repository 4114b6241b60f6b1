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

ssize_t write(int file, const void* bytes, size_t count) {
  static ssize_t (*real)(int, const void*, size_t);
  if (real == NULL) *(void**)&real = dlsym(RTLD_NEXT, "write");
  const char* const limit = getenv("FULL_AFTER_BYTES");
  if (limit == NULL || !is_results(file)) return real(file, bytes, count);
  const off_t room = atol(limit) - lseek(file, 0, SEEK_CUR);
  if (room <= 0) {
    errno = ENOSPC;
    return -1;
  }
  return real(file, bytes, count < (size_t)room ? count : (size_t)room);
}

int fdatasync(int file) {
  static int (*real)(int);
  if (real == NULL) *(void**)&real = dlsym(RTLD_NEXT, "fdatasync");
  if (getenv("FAIL_FLUSH") == NULL) return real(file);
  errno = EIO;
  return -1;
}
