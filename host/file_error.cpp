#include "quorel/host/file_error.h"

#include <unistd.h>

#include <climits>

namespace quorel {
namespace host {

std::string fileError(const std::string &what, const std::string &file, const std::string &reason) {
  std::string full = file;
  char folder[PATH_MAX];
  if ((file.empty() || file[0] != '/') && getcwd(folder, sizeof folder) != nullptr) full = std::string(folder) + "/" + file;
  return "cannot " + what + " " + file + " (" + full + "): " + reason;
}

}  // namespace host
}  // namespace quorel
