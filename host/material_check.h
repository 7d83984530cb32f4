// checkMaterials: the materials a rule module may query against those a
// host was given, said once before any record is checked. A material the
// module registered but nobody gave would fail every record that asks for it,
// one failure per record; a name given that the module never queries (a typo
// such as Region for Regionen) would be loaded and never read; a name given
// twice would merge two tables, or double every row of one.

#ifndef QUOREL_HOST_MATERIAL_CHECK_H_
#define QUOREL_HOST_MATERIAL_CHECK_H_

#include <string>
#include <vector>

#include <quorel/quorel.h>

namespace quorel {
namespace host {

struct MaterialFindings {
  std::vector<std::string> errors;
  std::vector<std::string> warnings;
};

// given: the material names as the host was given them, in order, each time
// it was given. howToGive: the front end's words for giving one, in which
// NAME stands for the material's name ("--material NAME=FILE"). A missing
// material and a repeated name are errors; a name the module does not
// register is a warning, or an error when strict. Messages name module and
// materials as they are spelt (ASCII in practice).
MaterialFindings checkMaterials(Plausi *plausi, const std::string &module, const std::vector<std::string> &given,
                                const std::string &howToGive, bool strict);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_MATERIAL_CHECK_H_
