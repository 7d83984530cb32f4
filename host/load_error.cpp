#include "quorel/host/load_error.h"

#include <utility>

namespace quorel {
namespace host {

LoadError::LoadError(const PlausiException &cause, const std::string &library, const std::string &module,
                     const std::string &loaderReason)
    : PlausiException(cause) {
  const std::string entry = "loadPlausi" + module;
  std::string lines;
  auto line = [&lines](const std::string &text) { lines += (lines.empty() ? "" : "\n") + text; };
  switch (cause.getType()) {
    case EXCEPTION_LOAD_LIBRARY:
      line(library.empty() ? "the library's path is empty" : "the library " + library + " does not load");
      break;
    case EXCEPTION_LOAD_ENTRY:
      line("the library " + library + " has no entry point " + entry);
      break;
    default:
      line("the entry point " + entry + " of " + library + " failed");
      break;
  }
  if (!loaderReason.empty()) line("the system's loader says: " + loaderReason);
  if (cause.getType() == EXCEPTION_LOAD_LIBRARY && !library.empty() && library.find('/') == std::string::npos) {
    // dlopen never looks into the current directory for a bare name.
    line("a library path without '/' is searched only in the system's library paths (LD_LIBRARY_PATH, "
         "the cache of ldconfig, /lib, /usr/lib), not in the current directory: write ./" + library +
         " for a file here");
  }
  if (cause.getType() == EXCEPTION_LOAD_ENTRY) {
    line("a module named " + module + " exports extern \"C\" " + entry + " and unloadPlausi" + module +
         " with default visibility (a module built with -fvisibility=hidden must mark them); "
         "QUOREL_MODULE(" + module + ", Class) from <quorel/rules/module_support.h> defines both so. "
         "Check the module name as well");
  }
  detail_ = std::move(lines);
}

}  // namespace host
}  // namespace quorel
