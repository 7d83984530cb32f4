#include "quorel/platform/dynamic_library.h"

#include <dlfcn.h>

namespace quorel {
namespace platform {

// Each call clears the error state first, so that a reason read after it
// is this call's and not an older one's.
void *loadLibrary(const char *file) {
  dlerror();
  // dlopen gives the program itself for an empty name, as for null.
  if (file == nullptr || *file == '\0') return nullptr;
  return dlopen(file, RTLD_NOW | RTLD_LOCAL);
}

void *findSymbol(void *handle, const char *symbol) {
  dlerror();
  if (handle == nullptr || symbol == nullptr) return nullptr;
  return dlsym(handle, symbol);
}

std::string takeLastError() {
  const char *reason = dlerror();
  return reason != nullptr ? reason : "";
}

}  // namespace platform
}  // namespace quorel
