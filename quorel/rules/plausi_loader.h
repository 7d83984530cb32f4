// PlausiLoader: finds rule modules in shared libraries.
//
// A module named N exports `extern "C" Plausi *loadPlausiN()` and
// `extern "C" void unloadPlausiN(Plausi *)`. The loader remembers the library
// of each module name (by its hash) so that the unload entry is looked up in
// the same library. Libraries are never unloaded, not even by the destructor:
// objects and code of a module stay valid for the life of the process.

#ifndef QUOREL_RULES_PLAUSI_LOADER_H_
#define QUOREL_RULES_PLAUSI_LOADER_H_

#include <string>

#include "quorel/rules/name_map.h"

namespace quorel {

class Plausi;

class PlausiLoader {
 public:
  PlausiLoader() = default;
  PlausiLoader(const PlausiLoader &) = delete;
  PlausiLoader &operator=(const PlausiLoader &) = delete;

  // Loads the library and calls its load entry. Throws type 1 with the file
  // text when the library does not load, type 2 with the module name when the
  // entry is missing (the library stays loaded and remembered).
  Plausi *loadPlausi(const char *libraryFile, const char *moduleName);

  // Calls the unload entry of the module's library with the Plausi. Throws
  // type 3 with the module name when no such entry is found.
  void unloadPlausi(Plausi *plausi, const char *moduleName);

  // Why the latest loadPlausi or unloadPlausi of this loader failed, in the
  // platform loader's own words (for instance "librules.so: cannot open
  // shared object file: No such file or directory", or the undefined symbol
  // of a missing entry); "" after a call that succeeded or when the platform
  // gave no reason. The exceptions keep their own messages; this is the
  // detail a host may add to them. Valid until the next call on the loader.
  const char *getLastError() const { return lastError_.c_str(); }

 private:
  // Notes the platform's reason for the failure being thrown.
  void noteFailure();

  NameMap<void *> libraries_;
  std::string lastError_;
};

}  // namespace quorel

#endif  // QUOREL_RULES_PLAUSI_LOADER_H_
