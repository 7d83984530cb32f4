// LoadError: a rule module that could not be loaded. It is the library's
// PlausiException, type and message unchanged, so a caller that catches
// PlausiException sees exactly what the loader threw; detail() adds what a
// person needs to put it right: the system loader's own reason, the entry
// point that was looked for, and a hint at the usual mistake (a library path
// without '/', an entry point that is not exported).
//
// Thrown by value by Checker; catch it by reference, before PlausiException.

#ifndef QUOREL_HOST_LOAD_ERROR_H_
#define QUOREL_HOST_LOAD_ERROR_H_

#include <string>

#include <quorel/quorel.h>

namespace quorel {
namespace host {

class LoadError : public PlausiException {
 public:
  // cause: what PlausiLoader::loadPlausi threw for library and module;
  // loaderReason: the loader's getLastError() right after it.
  LoadError(const PlausiException &cause, const std::string &library, const std::string &module,
            const std::string &loaderReason);

  // One or more lines, without a line break at the end. File names and the
  // system loader's words are in the system's encoding, not Windows-1252.
  const std::string &detail() const { return detail_; }

 private:
  std::string detail_;
};

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_LOAD_ERROR_H_
