// Cells: how Python values become the fields of a record. A str is encoded
// to Windows-1252; an int or float becomes the text a table would hold for
// it (every digit of an int; a float with a decimal comma), so that a number
// reaches the rules as its text from a CSV file would; bool the texts WAHR/FALSCH,
// a datetime.date the text TT.MM.JJJJ; None, NaN, pandas' missing values and
// the empty text leave the field empty. A column whose name ends in "#"
// gives the size of an array, a whole number from 0 to host::kMaxArraySize.
//
// Reading a cell (readCell) needs the GIL; putting what was read into a
// record (putCell) does not, so that rows can be read from Python in one
// go and checked one by one without it.

#ifndef QUOREL_PYTHON_CELLS_H_
#define QUOREL_PYTHON_CELLS_H_

#include <cstdint>
#include <string>
#include <string_view>

#include <pybind11/pybind11.h>

#include <quorel/quorel.h>

namespace quorel {
namespace python {

// A value that cannot become a field: the message (UTF-8) names the field.
struct CellError {
  std::string message;
};

// Windows-1252 bytes of a str; a CellError whose message starts with what
// for a character that the code page lacks (or a NUL).
std::string encode(const pybind11::handle &text, const std::string &what);

// Whether the value is a numpy scalar (numpy.int64(2), an element of a
// pandas Int64 column), whose item() is the Python value it stands for; an
// array is none. Python's own numbers and texts are asked first: they are
// the common values, and each attribute that they lack costs an error.
bool isNumpyScalar(const pybind11::handle &value);

// A column of records, with what every cell of it needs worked out once: the
// field name (Windows-1252), the same for messages (UTF-8), the array whose
// size it gives, for a '#' column, and the record's key of the field or the
// size.
struct Column {
  explicit Column(std::string text);
  std::string name;
  std::string utf8;
  std::string array;
  std::int32_t key;
  // Whether an empty cell empties the field: where one record is filled row
  // after row (see host::renewedRecord), the first column of each key does, and
  // a later column of the key leaves it alone. A fresh record needs none.
  bool empties = false;
  // The mask of the column's date field (see DateMasks), in which a Python
  // date is written; empty: TT.MM.JJJJ.
  std::string dateMask;
};

// A cell as read, ready for a record. Not copied, as its text may lie in
// it.
struct Cell {
  enum Kind { kEmpty, kText, kInteger, kReal, kSize };

  Cell() = default;
  Cell(const Cell &) = delete;
  Cell &operator=(const Cell &) = delete;

  // Sets the text to a copy of made.
  void keep(std::string made) {
    kept = std::move(made);
    text = kept;
  }

  Kind kind = kEmpty;
  // The text of kText, or a size as the input gave it (Windows-1252,
  // without a NUL byte, which readCell refuses): the bytes of the str read
  // where Python keeps them in that form (the str outlives the cell's use),
  // else those kept.
  std::string_view text;
  std::string kept;
  // kInteger, or the size of kSize (-1 for one that is no whole number
  // within the bounds).
  std::int64_t integer = 0;
  double real = 0.0;
};

// Reads a cell of the column into *out, whose text may be the cell's own
// bytes: the cell must outlive the use of *out. A CellError for a value
// that cannot be a field. Needs the GIL.
void readCell(const Column &at, const pybind11::handle &cell, Cell *out);
// readCell for the cells that take no Python call: a str that is its own
// Windows-1252 form, the empty str, None, and a float of a field column;
// false for any other cell. Needs no GIL, so that threads read their rows
// side by side: it reads only what never changes in such an object, which
// the caller keeps alive.
bool readPlainCell(const Column &at, PyObject *cell, Cell *out);
// Puts a cell into the record; false with a message (UTF-8) for a size out
// of bounds.
bool putCell(const Column &at, const Cell &cell, SimpleDataRecord *record, std::string *error);
// Both at once; a CellError for either failure.
void setCell(const Column &at, const pybind11::handle &cell, SimpleDataRecord *record);

}  // namespace python
}  // namespace quorel

#endif  // QUOREL_PYTHON_CELLS_H_
