// ColumnCheck: whether a column of a table (a CSV header, a DataFrame, a
// database query) names something the rule module reads: a field of its
// records, or of one of its materials when the table is that material. A
// record keeps a cell under its column's name and the rules ask for the
// hierarchy text of a field, so a misspelt column, an index beyond a size the
// module declares or the size of an array whose size is fixed is never read:
// its cells would be lost without a word. The check walks the module's root
// topic (Plausi::getRootTopic), or the material's topic, segment by segment,
// as the rules resolve a field.
//
// Looking up a field of an array makes the array's first element, as a run
// would; the Plausi must outlive the check and no other thread may use it
// meanwhile. Not copied.

#ifndef QUOREL_HOST_COLUMN_CHECK_H_
#define QUOREL_HOST_COLUMN_CHECK_H_

#include <cstdint>
#include <string>
#include <vector>

#include <quorel/quorel.h>

namespace quorel {
namespace host {

class ColumnCheck {
 public:
  // Columns of the module's records, below its root topic.
  explicit ColumnCheck(Plausi *plausi);
  // Columns of a material's table, below the material's topic.
  ColumnCheck(Plausi *plausi, Topic *material);

  ColumnCheck(const ColumnCheck &) = delete;
  ColumnCheck &operator=(const ColumnCheck &) = delete;

  // "" when the column names a field of the module, with an index within
  // every declared size (a size declared 0 is the record's and has no
  // bound), or, ending in "#", the size of an array declared with size 0.
  // Otherwise a message (Windows-1252, as the column) that names the column
  // and says why. A module without a root topic (a null material topic) lets
  // every column pass: there is nothing to check against.
  //
  // When sizes is given, it receives the size columns that the column's
  // cells depend on: for each index into an array whose size each record
  // gives, the column of that size ("R.Kinder#" for "R.Kinder[1].Name"),
  // since without one the array has no elements and the cell is never read.
  std::string check(const std::string &column, std::vector<std::string> *sizes = nullptr);

  // Whether the column names a field whose value the record holds as text:
  // a text, date or free field, or a number under a mask. Cells of numbers
  // lose the form of such texts (leading zeros, the mask's separators).
  bool readsText(const std::string &column);
  // The mask under which the record holds the date field that the column
  // names ("TT.MM.JJJJ" for a field without one), or empty for a column of
  // no date field. A date from a typed source (a database's DATE, a
  // Python date) is given in it (see dateUnderMask), as a CSV file for the
  // module would carry it: a date field whose mask is JJJJ-MM-TT would
  // fail every date written TT.MM.JJJJ.
  std::string dateMask(const std::string &column);

 private:
  // The field name within topic, or null.
  FieldDescriptor *lookUp(Topic *topic, const std::string &name);
  // The field that the column names, as a run resolves it, or null.
  FieldDescriptor *fieldOf(const std::string &column);

  Topic *root_;
  const char *owner_;  // whose fields: "module" or "material", for messages
  PlausiContext context_;
  RuntimeContext runtime_;
};

// What a table is told, on top of each column's fault, when it has columns
// and none of them names anything the module reads: each of its records
// would be checked as if it were empty (a header without the topic's name,
// say). It is an error whatever strict says.
std::string noColumnRead();

// ColumnCheck::dateMask of the field itself (null: empty).
std::string dateMaskOf(FieldDescriptor *field);

// A date written TT.MM.JJJJ (as a database's DATE or a Python date comes)
// as the record holds it under a mask from ColumnCheck::dateMask. The text
// itself for an empty mask, or for a text that is no date: the rules judge
// it. Windows-1252, as library texts are.
std::string dateUnderMask(const std::string &text, const std::string &mask);

// What a table is told of a column whose cells are numbers (of type, as the
// table's source names it) where readsText: the rules compare and look up
// texts that have lost their form. remedy says what to do.
std::string numbersForText(const std::string &column, const std::string &type, const std::string &remedy);
// The same for a column of a database table, whose values lost their form
// as the database stored them.
std::string numbersInDatabase(const std::string &column, const std::string &type);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_COLUMN_CHECK_H_
