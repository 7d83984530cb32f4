#include "quorel/rules/plausi_loader.h"

#include <string>

#include "quorel/platform/dynamic_library.h"
#include "quorel/rules/plausi_exception.h"

namespace quorel {

namespace {

using LoadEntry = Plausi *(*)();
using UnloadEntry = void (*)(Plausi *);

std::string entryName(const char *prefix, const char *moduleName) {
  return std::string(prefix) + (moduleName != nullptr ? moduleName : "");
}

}  // namespace

Plausi *PlausiLoader::loadPlausi(const char *libraryFile, const char *moduleName) {
  lastError_.clear();
  std::string symbol = entryName("loadPlausi", moduleName);
  void *library = platform::loadLibrary(libraryFile);
  if (library == nullptr) {
    noteFailure();
    throw PlausiException(EXCEPTION_LOAD_LIBRARY, libraryFile);
  }
  libraries_.put(moduleName, library);
  void *entry = platform::findSymbol(library, symbol.c_str());
  if (entry == nullptr) {
    noteFailure();
    throw PlausiException(EXCEPTION_LOAD_ENTRY, moduleName);
  }
  return reinterpret_cast<LoadEntry>(entry)();
}

void PlausiLoader::unloadPlausi(Plausi *plausi, const char *moduleName) {
  lastError_.clear();
  std::string symbol = entryName("unloadPlausi", moduleName);
  void **library = libraries_.find(moduleName);
  void *entry = platform::findSymbol(library != nullptr ? *library : nullptr, symbol.c_str());
  if (entry == nullptr) {
    noteFailure();
    throw PlausiException(EXCEPTION_UNLOAD_ENTRY, moduleName);
  }
  reinterpret_cast<UnloadEntry>(entry)(plausi);
}

void PlausiLoader::noteFailure() { lastError_ = platform::takeLastError(); }

}  // namespace quorel
