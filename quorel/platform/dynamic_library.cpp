#include "quorel/platform/dynamic_library.h"

#include <dlfcn.h>

namespace quorel {
namespace platform {

void *loadLibrary(const char *file) {
  if (file == nullptr) return nullptr;
  return dlopen(file, RTLD_NOW | RTLD_LOCAL);
}

void *findSymbol(void *handle, const char *symbol) {
  if (handle == nullptr || symbol == nullptr) return nullptr;
  return dlsym(handle, symbol);
}

}  // namespace platform
}  // namespace quorel
