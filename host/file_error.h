// fileError: the message for a file that cannot be opened, read or written,
// with the system's reason and the full path that was looked at (a relative
// name is looked for under the current folder, which a user may not have in
// mind): "cannot open data.csv (/home/a/data.csv): No such file or
// directory". A full path is given once.

#ifndef QUOREL_HOST_FILE_ERROR_H_
#define QUOREL_HOST_FILE_ERROR_H_

#include <string>

namespace quorel {
namespace host {

// what: "open", "read", "write"; reason: the system's words for the error.
std::string fileError(const std::string &what, const std::string &file, const std::string &reason);

// The file as the system looks for it: a relative name under the current
// folder.
std::string absolutePath(const std::string &file);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_FILE_ERROR_H_
