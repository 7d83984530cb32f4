// Preloaded into quorel-check by the tests: read() of the file named by
// QUOREL_FAIL_READ_FILE fails with EIO once QUOREL_FAIL_READ_AFTER bytes of
// it have been read, as a disk or a network file system fails midway.

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

bool isTarget(int fd) {
  const char *target = std::getenv("QUOREL_FAIL_READ_FILE");
  if (target == nullptr) return false;
  char link[64], path[4096];
  std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
  ssize_t length = readlink(link, path, sizeof path - 1);
  if (length < 0) return false;
  path[length] = '\0';
  return std::strcmp(path, target) == 0;
}

}  // namespace

extern "C" ssize_t read(int fd, void *buffer, size_t count) {
  using Read = ssize_t (*)(int, void *, size_t);
  static Read real = reinterpret_cast<Read>(dlsym(RTLD_NEXT, "read"));
  const char *after = std::getenv("QUOREL_FAIL_READ_AFTER");
  if (after != nullptr && isTarget(fd)) {
    off_t at = lseek(fd, 0, SEEK_CUR);
    off_t limit = static_cast<off_t>(std::atoll(after));
    if (at >= limit) {
      errno = EIO;
      return -1;
    }
    if (static_cast<off_t>(count) > limit - at) count = static_cast<size_t>(limit - at);
  }
  return real(fd, buffer, count);
}
