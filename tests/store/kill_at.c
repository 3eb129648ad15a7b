/* Preloaded into a store writer by kill_every_write.sh: counts the writes,
 * syncs, truncations and journal removals made on the store's files
 * (every path containing "Polygon.db") and kills the process with SIGKILL
 * just before the TARVO_KILL_AT-th of them, so that a test can stop a
 * writer at every single step of its commits. With TARVO_KILL_AT unset or
 * 0 nothing is killed and the count is written at exit to the file named
 * by TARVO_KILL_COUNT_FILE. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>
#include <unistd.h>

static long operations;

static int isStorePath(const char* path) {
  return path != NULL && strstr(path, "Polygon.db") != NULL;
}

static int isStoreFd(int fd) {
  char link[64], target[PATH_MAX];
  snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
  const ssize_t n = readlink(link, target, sizeof target - 1);
  if (n < 0) return 0;
  target[n] = '\0';
  return isStorePath(target);
}

static void step(void) {
  const char* at = getenv("TARVO_KILL_AT");
  if (++operations == (at != NULL ? atol(at) : 0)) raise(SIGKILL);
}

__attribute__((destructor)) static void reportCount(void) {
  const char* file = getenv("TARVO_KILL_COUNT_FILE");
  FILE* out = file != NULL ? fopen(file, "w") : NULL;
  if (out == NULL) return;
  fprintf(out, "%ld\n", operations);
  fclose(out);
}

#define REAL(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

ssize_t pwrite64(int fd, const void* buf, size_t n, off64_t offset) {
  if (isStoreFd(fd)) step();
  return REAL(pwrite64)(fd, buf, n, offset);
}
ssize_t pwrite(int fd, const void* buf, size_t n, off_t offset) {
  if (isStoreFd(fd)) step();
  return REAL(pwrite)(fd, buf, n, offset);
}
ssize_t write(int fd, const void* buf, size_t n) {
  if (isStoreFd(fd)) step();
  return REAL(write)(fd, buf, n);
}
int fsync(int fd) {
  if (isStoreFd(fd)) step();
  return REAL(fsync)(fd);
}
int fdatasync(int fd) {
  if (isStoreFd(fd)) step();
  return REAL(fdatasync)(fd);
}
int ftruncate(int fd, off_t length) {
  if (isStoreFd(fd)) step();
  return REAL(ftruncate)(fd, length);
}
int ftruncate64(int fd, off64_t length) {
  if (isStoreFd(fd)) step();
  return REAL(ftruncate64)(fd, length);
}
int unlink(const char* path) {
  if (isStorePath(path)) step();
  return REAL(unlink)(path);
}
