#include "cells.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

#include "quorel/host/column_check.h"
#include "quorel/host/encoding.h"
#include "quorel/host/record_layout.h"
#include "imported.h"

namespace py = pybind11;

namespace quorel {
namespace python {

namespace {

// The longest fixed form of a double has 327 digits.
constexpr std::size_t kNumberText = 400;

// The text of a non-empty str that is its own Windows-1252 form: one whose
// characters all lie below U+0100 (Python keeps it a byte a character)
// outside U+0080..U+009F, where the code page differs from Latin-1, and that
// holds no NUL. Null for any other cell. Most cells are such texts, and they
// need no UTF-8 form made on the way (which Python would keep in the str),
// nor a copy.
std::string_view ownText(PyObject *cell) {
  if (!PyUnicode_Check(cell) || !PyUnicode_IS_COMPACT(cell) || PyUnicode_KIND(cell) != PyUnicode_1BYTE_KIND) {
    return {};
  }
  const auto *text = static_cast<const unsigned char *>(PyUnicode_DATA(cell));
  auto length = static_cast<std::size_t>(PyUnicode_GET_LENGTH(cell));
  if (!PyUnicode_IS_ASCII(cell)) {
    for (std::size_t i = 0; i < length; ++i) {
      if (text[i] >= 0x80 && text[i] < 0xA0) return {};
    }
  }
  if (std::memchr(text, 0, length) != nullptr) return {};
  return std::string_view(reinterpret_cast<const char *>(text), length);
}

// An empty field, beside those that readPlainCell knows (None, the empty
// text, a float NaN of a field column): NaN of another float, and pandas'
// missing values.
bool isMissing(const py::handle &cell) {
  if (PyUnicode_Check(cell.ptr())) return false;
  if (PyFloat_Check(cell.ptr())) return std::isnan(PyFloat_AS_DOUBLE(cell.ptr()));
  static Imported missing("pandas", "isna");
  // pandas.NA, NaT and numpy's not-a-number scalars.
  if (py::isinstance<py::int_>(cell)) return false;
  py::object verdict = missing.get()(cell);
  // A list or an array gets a verdict per element: it is no missing value
  // (nor a field's).
  if (py::hasattr(verdict, "shape") && py::len(verdict.attr("shape")) > 0) return false;
  return verdict.cast<bool>();
}

bool isDate(const py::handle &cell) {
  static Imported date("datetime", "date");
  return py::isinstance(cell, date.get());
}

// A number as the text a table would hold: every digit of a whole number;
// a real number with the fewest digits that give it back, a decimal comma
// and no exponent, so that a fraction in a whole-number field is as
// inconvertible as its text. Written into text, which it ends with a NUL.
template <typename Number, typename... Format>
const char *numberText(Number number, char (&text)[kNumberText], Format... format) {
  char *end = std::to_chars(text, text + sizeof text - 1, number, format...).ptr;
  *end = '\0';
  if (char *point = std::strchr(text, '.')) *point = ',';
  return text;
}

std::string germanDate(const py::handle &cell) { return cell.attr("strftime")("%d.%m.%Y").cast<std::string>(); }

// The size a text gives: a whole number written as std::to_string writes
// it, up to host::kMaxArraySize; -1 for any other text.
std::int64_t sizeOfText(std::string_view text) {
  std::int64_t size = -1;
  auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), size);
  if (fault != std::errc() || end != text.data() + text.size() || std::to_string(size) != text) return -1;
  return size > host::kMaxArraySize ? -1 : size;
}

// The size a cell of a '#' column gives, -1 for none.
std::int64_t sizeOf(const py::handle &cell, const std::string &text) {
  if (PyBool_Check(cell.ptr()) == 0 && PyLong_Check(cell.ptr())) {
    int overflow = 0;
    long long size = PyLong_AsLongLongAndOverflow(cell.ptr(), &overflow);
    return overflow != 0 || size < 0 || size > host::kMaxArraySize ? -1 : size;
  }
  if (PyFloat_Check(cell.ptr())) {
    // Compared before it is cast: a double beyond 64 bits has no integer.
    double size = PyFloat_AS_DOUBLE(cell.ptr());
    bool whole = std::floor(size) == size && size >= 0 && size <= static_cast<double>(host::kMaxArraySize);
    return whole ? static_cast<std::int64_t>(size) : -1;
  }
  if (py::isinstance<py::str>(cell)) return sizeOfText(text);
  return -1;
}

// position: in characters, as Python counts.
[[noreturn]] void refuseCharacter(const std::string &what, std::size_t position) {
  throw CellError{what + ": the character at position " + std::to_string(position) + " is not in Windows-1252"};
}

// The first lone surrogate of the text, the one kind of character without
// a UTF-8 form.
std::size_t firstSurrogate(PyObject *text) {
  Py_ssize_t length = PyUnicode_GET_LENGTH(text);
  Py_ssize_t i = 0;
  while (i < length && !Py_UNICODE_IS_SURROGATE(PyUnicode_READ_CHAR(text, i))) ++i;
  return static_cast<std::size_t>(i);
}

}  // namespace

bool isNumpyScalar(const py::handle &cell) {
  PyObject *object = cell.ptr();
  if (PyLong_Check(object) || PyFloat_Check(object) || PyUnicode_Check(object)) return false;
  return py::hasattr(cell, "item") && py::hasattr(cell, "dtype") &&
         (!py::hasattr(cell, "ndim") || py::int_(cell.attr("ndim")).cast<int>() == 0);
}

std::string encode(const py::handle &text, const std::string &what) {
  Py_ssize_t size = 0;
  const char *utf8 = PyUnicode_AsUTF8AndSize(text.ptr(), &size);
  if (utf8 == nullptr) {
    // Windows-1252 lacks a lone surrogate as UTF-8 does.
    if (!PyErr_ExceptionMatches(PyExc_UnicodeEncodeError)) throw py::error_already_set();
    PyErr_Clear();
    refuseCharacter(what, firstSurrogate(text.ptr()));
  }
  std::string out;
  std::size_t offset = 0;
  if (!host::fromUtf8(std::string_view(utf8, static_cast<std::size_t>(size)), &out, &offset)) {
    std::size_t position = 0;
    for (std::size_t i = 0; i < offset; ++i) position += (utf8[i] & 0xC0) != 0x80 ? 1 : 0;
    refuseCharacter(what, position);
  }
  return out;
}

Column::Column(std::string text)
    : name(std::move(text)),
      utf8(host::toUtf8(name.c_str())),
      array(host::RecordLayout::arrayOf(name)),
      key(array.empty() ? SimpleDataRecord::keyOf(name.c_str()) : SimpleDataRecord::keyOfSize(array.c_str())) {}

bool readPlainCell(const Column &at, PyObject *cell, Cell *out) {
  std::string_view own = ownText(cell);
  if (!own.empty()) {
    out->kind = at.array.empty() ? Cell::kText : Cell::kSize;
    out->text = own;
    if (out->kind == Cell::kSize) out->integer = sizeOfText(own);
    return true;
  }
  if (cell == Py_None || (PyUnicode_Check(cell) && PyUnicode_GET_LENGTH(cell) == 0)) {
    out->kind = Cell::kEmpty;
    return true;
  }
  // A size from a float is read with the texts it may have.
  if (PyFloat_CheckExact(cell) && at.array.empty()) {
    double real = PyFloat_AS_DOUBLE(cell);
    out->kind = std::isnan(real) ? Cell::kEmpty : Cell::kReal;
    out->real = real;
    return true;
  }
  return false;
}

void readCell(const Column &at, const py::handle &cell, Cell *out) {
  if (readPlainCell(at, cell.ptr(), out)) return;
  out->kind = Cell::kEmpty;
  if (isMissing(cell)) return;
  if (isNumpyScalar(cell)) {
    py::object item = cell.attr("item")();
    readCell(at, item, out);
    // The item goes with this call, and with it the text read from it.
    if (out->kind == Cell::kText || out->kind == Cell::kSize) out->keep(std::string(out->text));
    return;
  }
  if (!at.array.empty()) {
    std::string text = py::str(cell).cast<std::string>();
    out->kind = Cell::kSize;
    out->integer = sizeOf(cell, text);
    out->keep(encode(py::str(text), at.utf8));
    return;
  }
  out->kind = Cell::kText;
  if (PyBool_Check(cell.ptr())) {
    out->text = cell.cast<bool>() ? "WAHR" : "FALSCH";
  } else if (PyLong_Check(cell.ptr())) {
    int overflow = 0;
    out->integer = PyLong_AsLongLongAndOverflow(cell.ptr(), &overflow);
    if (overflow == 0) {
      out->kind = Cell::kInteger;
    } else {
      out->keep(py::str(cell).cast<std::string>());  // beyond 64 bits: its digits
    }
  } else if (py::isinstance<py::float_>(cell)) {
    out->kind = Cell::kReal;
    out->real = cell.cast<double>();
  } else if (py::isinstance<py::str>(cell)) {
    out->keep(encode(cell, at.utf8));
  } else if (isDate(cell)) {
    out->keep(host::dateUnderMask(germanDate(cell), at.dateMask));
  } else {
    throw CellError{at.utf8 + ": a value of type " +
                    py::str(py::type::of(cell).attr("__name__")).cast<std::string>() + " cannot be a field"};
  }
}

bool putCell(const Column &at, const Cell &cell, SimpleDataRecord *record, std::string *error) {
  char number[kNumberText];
  switch (cell.kind) {
    case Cell::kEmpty:
      if (at.empties) record->setValueAt(at.key, static_cast<const char *>(nullptr));
      return true;
    case Cell::kText:
      record->setValueAt(at.key, cell.text);  // its length known: no NUL to look for
      return true;
    case Cell::kInteger:
      record->setValueAt(at.key, numberText(cell.integer, number));
      return true;
    case Cell::kReal:
      record->setValueAt(at.key, numberText(cell.real, number, std::chars_format::fixed));
      return true;
    case Cell::kSize:
      if (!host::RecordLayout::sizeWithin(at.array, cell.integer, std::string(cell.text), error)) {
        *error = host::toUtf8(error->c_str());
        return false;
      }
      record->setValueAt(at.key, cell.integer);
      return true;
  }
  return true;
}

void setCell(const Column &at, const py::handle &cell, SimpleDataRecord *record) {
  Cell read;
  readCell(at, cell, &read);
  std::string error;
  if (!putCell(at, read, record, &error)) throw CellError{error};
}

}  // namespace python
}  // namespace quorel
