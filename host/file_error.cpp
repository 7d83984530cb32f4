#include "quorel/host/file_error.h"

#include <unistd.h>

#include <climits>

namespace quorel {
namespace host {

std::string absolutePath(const std::string &file) {
  char folder[PATH_MAX];
  if ((file.empty() || file[0] != '/') && getcwd(folder, sizeof folder) != nullptr) return std::string(folder) + "/" + file;
  return file;
}

std::string fileError(const std::string &what, const std::string &file, const std::string &reason) {
  if (file.empty()) return "cannot " + what + ": the file's name is empty";
  std::string path = absolutePath(file);
  return "cannot " + what + " " + file + (path != file ? " (" + path + ")" : "") + ": " + reason;
}

}  // namespace host
}  // namespace quorel
