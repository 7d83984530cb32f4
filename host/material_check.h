// checkMaterials: the materials a rule module may query against those a
// host was given, said once before any record is checked. A material the
// module registered but nobody gave would fail every record that asks for it,
// one failure per record; a name given that the module never queries (a typo
// such as Region for Regionen) would be loaded and never read; a name given
// twice would merge two tables, or double every row of one.

#ifndef QUOREL_HOST_MATERIAL_CHECK_H_
#define QUOREL_HOST_MATERIAL_CHECK_H_

#include <functional>
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

// The columns of a material's table against the fields of the material's
// topic, said once before any record is checked, as a record's columns are
// (see ColumnCheck). A column that names no field of the topic is a warning,
// or an error when strict: its cells are never read. A table of which no
// column names a field is an error whatever strict says, since every query
// on it would find nothing (a header of Name where the fields are
// Regionen.Name). A table without columns, and a material the module does
// not query (see checkMaterials), pass. Messages start with "material NAME: " and are
// Windows-1252, as the columns; the caller names the table. The Plausi is
// used on the calling thread alone while the check runs.
MaterialFindings checkMaterialColumns(Plausi *plausi, const std::string &material,
                                      const std::vector<std::string> &columns, bool strict);

// The fields of a material's topic against the database table that holds
// it, said once before any record is checked. Such a table is queried where
// it lies, and a query that reads or filters a field for which the table has
// no column fails on every record that makes it. columnFor tells the
// table's column for a field (SqlMaterialAccess::columnFor). A field
// without one is a warning, or an error when strict; a table with a column
// for none of the fields is an error whatever strict says. A column of
// numbers for a field that the rules read as text (ColumnCheck::readsText)
// is a warning whatever strict says: its values have lost their leading
// zeros in the database. Fields of nested topics count, the elements of
// arrays do not (a table has no columns for them). A material the module
// does not query passes. Messages start with "material NAME: " and are
// Windows-1252; the caller names the table.
struct TableColumn {
  bool found = false;
  std::string name;
  // Its declared type when it holds numbers alone, else empty.
  std::string numberType;
};
MaterialFindings checkMaterialFields(Plausi *plausi, const std::string &material,
                                     const std::function<TableColumn(FieldDescriptor *)> &columnFor, bool strict);

// The topic of the material that the module queries under the name, or null.
Topic *materialTopic(Plausi *plausi, const std::string &material);
// The topic whose fields a table's columns name: that of the material of
// the name, or for an empty name the module's root topic (the records').
Topic *tableTopic(Plausi *plausi, const std::string &material);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_MATERIAL_CHECK_H_
