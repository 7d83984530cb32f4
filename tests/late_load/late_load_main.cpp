// Loads the library by dlopen after other libraries took up the static TLS
// block, as an interpreter loads one plugin after another. It must load, and
// its thread-local state must work.
//
// Usage: quorel_late_load_test PROBE HOG...; the hogs are tried from the
// largest down, so that the block is filled to within a few bytes.

#include <dlfcn.h>

#include <cstdio>

int main(int argc, char **argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: %s PROBE HOG...\n", argv[0]);
    return 2;
  }
  int taken = 0;
  for (int i = 2; i < argc; ++i) {
    if (dlopen(argv[i], RTLD_NOW | RTLD_LOCAL) != nullptr) ++taken;
  }
  // The smallest hog must have failed, or the block was not full.
  if (taken == argc - 2) std::printf("note: every hog loaded; the static TLS block may not be full\n");
  void *probe = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (probe == nullptr) {
    std::printf("FAILED: %s\n", dlerror());
    return 1;
  }
  auto run = reinterpret_cast<int (*)()>(dlsym(probe, "probeLateLoadedLibrary"));
  if (run == nullptr || run() != 1) {
    std::printf("FAILED: the library loaded but did not answer right\n");
    return 1;
  }
  std::printf("loaded after %d of %d hogs\n", taken, argc - 2);
  return 0;
}
