// RecordLayout: how the cells of a table row fill a SimpleDataRecord. Each
// column is named by the hierarchy text of a field (Antrag.Kinder[1].Vorname);
// a name ending in "#" gives the size of the array before it (Antrag.Kinder#);
// an empty cell empties its field. Texts go in as they are (Windows-1252).
// Where the record keeps each column is worked out once, so that filling a
// record costs no hashing of names; and since every column sets or empties
// its field, one record can be filled row after row (see renewedRecord).

#ifndef QUOREL_HOST_RECORD_LAYOUT_H_
#define QUOREL_HOST_RECORD_LAYOUT_H_

#include <cstdint>
#include <string>
#include <vector>

#include <quorel/quorel.h>

#include "quorel/host/row_source.h"

namespace quorel {
namespace host {

// The largest array size a row may give: a size is a promise of elements
// that the rules walk, so a wild one must not keep a run busy for hours.
constexpr std::int32_t kMaxArraySize = 100000;

class RecordLayout {
 public:
  explicit RecordLayout(const std::vector<std::string> &columns);

  // Fills the record from the cells of one row, by position: what the
  // record held under the columns' names before is replaced. A size that is
  // not a whole number from 0 to kMaxArraySize, or a cell holding a NUL byte
  // (which would end the library's text there), makes it false, with a
  // message (Windows-1252) in *error; the record is then incomplete.
  bool fill(const std::vector<std::string> &cells, SimpleDataRecord *record, std::string *error) const;
  // The same for a row as read; a row that could not be read in full makes
  // it false with the row's own error, and fills nothing. The cells of a
  // row that is nulFree are not looked at for NUL bytes again.
  bool fill(const Row &row, SimpleDataRecord *record, std::string *error) const;

  // One message for each distinct column that names nothing the module
  // reads (see ColumnCheck), or whose cells are never read since no column
  // gives the size of their array, in column order; none when all are
  // read. The Plausi is used on the calling thread alone while the check
  // runs.
  std::vector<std::string> checkColumns(Plausi *plausi) const;
  // The number of distinct column names: checkColumns gives as many
  // messages when no column is read.
  std::size_t distinctColumns() const;
  // One message for each column name that the header holds more than once:
  // a record keeps one cell per name, so all but the last would be lost.
  std::vector<std::string> repeatedColumns() const;

  // The array whose size a column gives ("Antrag.Kinder" for
  // "Antrag.Kinder#"), or empty for a field column.
  static std::string arrayOf(const std::string &column);
  // Whether size is within the bounds of an array's size above; false with
  // a message otherwise. text is the size as the input gave it, for the
  // message.
  static bool sizeWithin(const std::string &array, std::int64_t size, const std::string &text, std::string *error);

 private:
  struct Column {
    std::string name;
    std::string array;  // for a size column
    std::int32_t key;   // the record's key of the field or of the size
    // Whether no column before has the key (the same name, or one of the
    // same hash): later ones that are empty leave its value alone.
    bool firstOfKey;
  };

  bool fill(const std::vector<std::string> &cells, bool nulFree, SimpleDataRecord *record, std::string *error) const;

  std::vector<Column> columns_;
};

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_RECORD_LAYOUT_H_
