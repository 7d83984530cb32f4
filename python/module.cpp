// _quorel: the extension module behind the Python package quorel. It converts
// between Python objects and the library's records, values and problems and
// leaves the work to the host kit. Texts cross as Windows-1252: a str is
// encoded on the way in, a library text decoded on the way out.
//
// Records and materials may also come from database tables (connection
// strings, see quorel/host/sql/sql_source.h), read by the host kit's
// database layer when the module is built with it.
//
// The GIL is held while Python objects are read or made and released while
// rules run and databases are read. The library needs a Plausi per thread,
// so a Checker keeps one host::Checker per thread that calls it.

#include <cmath>
#include <ctime>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <quorel/quorel.h>

#include "quorel/host/checker.h"
#include "quorel/host/column_check.h"
#include "quorel/host/csv_row_source.h"
#include "quorel/host/encoding.h"
#include "quorel/host/load_error.h"
#include "quorel/host/material_router.h"
#include "quorel/host/problem.h"
#include "quorel/host/record_layout.h"
#include "quorel/host/sql/sql_source.h"
#include "quorel/host/table_material_access.h"
#ifdef QUOREL_HOST_SQL
#include "quorel/host/sql/sql_material_access.h"
#include "quorel/host/sql/sql_row_source.h"
#endif

namespace py = pybind11;

namespace quorel {
namespace python {
namespace {

// A record or material cell that cannot become a field value: the text names
// the field. check() raises it as RecordError, check_frame makes the row an
// error row.
struct CellError {
  std::string message;
};

py::object recordErrorType;
py::object plausiErrorType;
py::object columnWarningType;
py::object databaseErrorType;

// detail: what a LoadError adds, in the system's encoding.
[[noreturn]] void raisePlausiError(const PlausiException &e, const std::string &detail = std::string()) {
  py::object details = py::none();
  if (!detail.empty()) {
    details = py::reinterpret_steal<py::object>(
        PyUnicode_DecodeFSDefaultAndSize(detail.data(), static_cast<Py_ssize_t>(detail.size())));
    if (!details) throw py::error_already_set();
  }
  py::object error = plausiErrorType(static_cast<int>(e.getType()), host::toUtf8(e.getMessage()), details);
  PyErr_SetObject(plausiErrorType.ptr(), error.ptr());
  throw py::error_already_set();
}

[[noreturn]] void raiseRecordError(const std::string &message) {
  PyErr_SetString(recordErrorType.ptr(), message.c_str());
  throw py::error_already_set();
}

// message: UTF-8.
[[noreturn]] void raiseDatabaseError(const std::string &message) {
  PyErr_SetString(databaseErrorType.ptr(), message.c_str());
  throw py::error_already_set();
}

#ifdef QUOREL_HOST_SQL
// The database source that a connection string names; what (UTF-8) heads
// the message of DatabaseError for a malformed one.
host::SqlSource sourceOf(const std::string &text, const std::string &what) {
  host::SqlSource source;
  std::string message;
  if (!host::SqlSource::parse(text, &source, &message)) raiseDatabaseError(what + message);
  return source;
}
#else
[[noreturn]] host::SqlSource sourceOf(const std::string &text, const std::string &what) {
  raiseDatabaseError(what + "quorel was built without databases (libsqlite3-dev): " + text);
}
#endif

// The number of rows of a database source.
std::int64_t countRows(const std::string &text) {
#ifndef QUOREL_HOST_SQL
  sourceOf(text, "");
#else
  host::SqlSource source = sourceOf(text, "");
  std::int64_t count = 0;
  std::string message;
  bool counted;
  {
    py::gil_scoped_release release;
    counted = host::SqlRowSource::count(source, &count, &message);
  }
  if (!counted) raiseDatabaseError(message);
  return count;
#endif
}

py::str decode(const char *text) { return py::str(host::toUtf8(text)); }
py::object decode(const std::optional<std::string> &text) {
  return text ? py::object(decode(text->c_str())) : py::object(py::none());
}

// Windows-1252 bytes of a str; what names the text in the message otherwise.
std::string encode(const py::handle &text, const std::string &what) {
  Py_ssize_t size = 0;
  const char *utf8 = PyUnicode_AsUTF8AndSize(text.ptr(), &size);
  if (utf8 == nullptr) throw py::error_already_set();
  std::string out;
  std::size_t offset = 0;
  if (!host::fromUtf8(std::string_view(utf8, static_cast<std::size_t>(size)), &out, &offset)) {
    std::size_t position = 0;  // in characters, as Python counts
    for (std::size_t i = 0; i < offset; ++i) position += (utf8[i] & 0xC0) != 0x80 ? 1 : 0;
    throw CellError{what + ": the character at position " + std::to_string(position) + " is not in Windows-1252"};
  }
  return out;
}

// An empty field: None, NaN, pandas' missing values, and the empty text (an
// empty cell, as in a table).
bool isMissing(const py::handle &cell) {
  if (cell.is_none()) return true;
  if (PyUnicode_Check(cell.ptr())) return PyUnicode_GET_LENGTH(cell.ptr()) == 0;
  if (PyFloat_Check(cell.ptr())) return std::isnan(PyFloat_AS_DOUBLE(cell.ptr()));
  static py::object missing = py::module_::import("pandas").attr("isna");
  // pandas.NA, NaT and numpy's not-a-number scalars.
  return !py::isinstance<py::str>(cell) && !py::isinstance<py::int_>(cell) && missing(cell).cast<bool>();
}

bool isDate(const py::handle &cell) {
  static py::object date = py::module_::import("datetime").attr("date");
  return py::isinstance(cell, date);
}

std::string germanDate(const py::handle &cell) { return cell.attr("strftime")("%d.%m.%Y").cast<std::string>(); }

// A column of records, with what every cell of it needs worked out once: the
// field name (Windows-1252), the same for messages (UTF-8), and the array
// whose size it gives, for a '#' column.
struct Column {
  explicit Column(std::string text)
      : name(std::move(text)), utf8(host::toUtf8(name.c_str())), array(host::RecordLayout::arrayOf(name)) {}
  std::string name;
  std::string utf8;
  std::string array;
};

// Sets one cell of a record, as a table cell of that column would.
void setCell(SimpleDataRecord *record, const Column &at, const py::handle &cell) {
  if (isMissing(cell)) return;
  const std::string &column = at.name;
  const std::string &array = at.array;
  const std::string &field = at.utf8;
  if (!array.empty()) {
    std::int64_t size = -1;
    std::string text = py::str(cell).cast<std::string>();
    if (PyBool_Check(cell.ptr()) == 0 && PyLong_Check(cell.ptr())) {
      size = cell.cast<std::int64_t>();
    } else if (PyFloat_Check(cell.ptr()) && std::floor(cell.cast<double>()) == cell.cast<double>()) {
      size = static_cast<std::int64_t>(cell.cast<double>());
    } else if (py::isinstance<py::str>(cell)) {
      try {
        size = std::stoll(text);
        if (std::to_string(size) != text) size = -1;
      } catch (const std::exception &) {
        size = -1;
      }
    }
    std::string error;
    if (size > host::kMaxArraySize) size = -1;
    if (!host::RecordLayout::setSize(array, size, encode(py::str(text), field), record, &error)) {
      throw CellError{host::toUtf8(error.c_str())};
    }
    return;
  }
  if (PyBool_Check(cell.ptr())) {
    record->setValue(column.c_str(), cell.cast<bool>() ? "WAHR" : "FALSCH");
  } else if (py::isinstance<py::int_>(cell)) {
    record->setValue(column.c_str(), cell.cast<std::int64_t>());
  } else if (py::isinstance<py::float_>(cell)) {
    record->setValue(column.c_str(), cell.cast<double>());
  } else if (py::isinstance<py::str>(cell)) {
    record->setValue(column.c_str(), encode(cell, field).c_str());
  } else if (isDate(cell)) {
    record->setValue(column.c_str(), germanDate(cell).c_str());
  } else if (py::hasattr(cell, "item") && py::hasattr(cell, "dtype")) {
    setCell(record, at, cell.attr("item")());  // a numpy scalar
  } else {
    throw CellError{field + ": a value of type " + py::str(py::type::of(cell).attr("__name__")).cast<std::string>() +
                    " cannot be a field"};
  }
}

std::string columnName(const py::handle &name) {
  if (!py::isinstance<py::str>(name)) throw py::type_error("field names must be str");
  try {
    return encode(name, "field name");
  } catch (const CellError &e) {
    throw py::value_error(e.message);
  }
}

// A record from a mapping of hierarchy texts to values; the texts (Windows-1252)
// into *fields when that is given.
std::unique_ptr<SimpleDataRecord> recordOf(const py::handle &mapping, std::vector<std::string> *fields = nullptr) {
  static py::object mappingType = py::module_::import("collections.abc").attr("Mapping");
  if (!py::isinstance(mapping, mappingType)) {
    throw py::type_error("a record must be a mapping of field names to values, not " +
                         py::str(py::type::of(mapping).attr("__name__")).cast<std::string>());
  }
  auto record = std::make_unique<SimpleDataRecord>();
  for (const auto &item : py::reinterpret_borrow<py::object>(mapping).attr("items")()) {
    py::tuple pair = py::reinterpret_borrow<py::tuple>(item);
    std::string field = columnName(pair[0]);
    setCell(record.get(), Column(field), pair[1]);
    if (fields != nullptr) fields->push_back(std::move(field));
  }
  return record;
}

// A library value as a Python value.
py::object toPython(Value *value) {
  if (value->isNil() || !value->isValid()) return py::none();
  if (value->isRange()) {
    py::list items;
    std::unique_ptr<ValueIterator> walk(value->asRange());
    while (walk->hasNext()) items.append(toPython(walk->next()));
    return std::move(items);
  }
  switch (value->getOperatorLevel()) {
    case BOOL_LEVEL: return py::bool_(value->asBool());
    case NUMBER_LEVEL: {
      double number = value->asReal();
      if (std::floor(number) == number && std::fabs(number) < 9.0e15) {
        return py::int_(static_cast<long long>(number));
      }
      return py::float_(number);
    }
    case DATE_LEVEL: {
      const std::tm *date = value->asDate();
      return py::module_::import("datetime").attr("date")(date->tm_year + 1900, date->tm_mon + 1, date->tm_mday);
    }
    default: return decode(value->asString());
  }
}

// An init value from Python; the caller owns it.
std::shared_ptr<Value> initValueOf(const std::string &name, const py::handle &value) {
  try {
    if (PyBool_Check(value.ptr())) return std::make_shared<BoolValue>(value.cast<bool>());
    if (py::isinstance<py::int_>(value) || py::isinstance<py::float_>(value)) {
      return std::make_shared<NumberValue>(value.cast<double>());
    }
    if (py::isinstance<py::str>(value)) return std::make_shared<StringValue>(encode(value, name).c_str());
  } catch (const CellError &e) {
    throw py::value_error(e.message);
  }
  throw py::type_error("init value " + name + " must be bool, int, float or str");
}

// One host::Checker per calling thread over shared settings.
class CheckerPool {
 public:
  explicit CheckerPool(host::CheckSettings settings) : settings_(std::move(settings)) {}

  // Loads the module for the calling thread on first use; raises PlausiError
  // with the loader's detail when it cannot be loaded. Callable with or
  // without the GIL.
  host::Checker *forThisThread() {
    try {
      std::lock_guard<std::mutex> lock(mutex_);
      std::unique_ptr<host::Checker> &checker = checkers_[std::this_thread::get_id()];
      if (checker == nullptr) checker = std::make_unique<host::Checker>(settings_);
      return checker.get();
    } catch (const host::LoadError &e) {
      py::gil_scoped_acquire acquire;
      raisePlausiError(e, e.detail());
    }
  }
  void close() {
    std::lock_guard<std::mutex> lock(mutex_);
    checkers_.clear();
  }
  host::CheckSettings &settings() { return settings_; }

 private:
  host::CheckSettings settings_;
  std::mutex mutex_;
  std::unordered_map<std::thread::id, std::unique_ptr<host::Checker>> checkers_;
};

// quorel.RuleModule: a rule module by library and name.
class RuleModule {
 public:
  RuleModule(std::string library, std::string module) {
    host::CheckSettings settings;
    settings.library = std::move(library);
    settings.module = std::move(module);
    pool_ = std::make_unique<CheckerPool>(std::move(settings));
    checker();  // fails now for a bad path or name
  }

  const std::string &library() const { return pool_->settings().library; }
  const std::string &name() const { return pool_->settings().module; }

  py::object performFunction(const std::string &name, const py::handle &mapping) {
    auto record = recordOfChecked(mapping);
    std::string function = encodeName(name);
    std::unique_ptr<Value> result;
    try {
      py::gil_scoped_release release;
      host::Checker *runner = checker();
      PlausiContext context(record.get());
      runner->configure(&context);
      result.reset(runner->plausi()->performFunction(function.c_str(), &context));
    } catch (const PlausiException &e) {
      raisePlausiError(e);
    }
    return toPython(result.get());
  }

  // The problems that the field's check procedure reports.
  std::vector<host::Problem> checkField(const std::string &name, const py::handle &mapping) {
    auto record = recordOfChecked(mapping);
    std::string field = encodeName(name);
    std::vector<host::Problem> problems;
    try {
      py::gil_scoped_release release;
      host::Checker *runner = checker();
      PlausiContext context(record.get());
      runner->configure(&context);
      runner->plausi()->performFieldCheck(field.c_str(), &context);
      host::collectProblems(context, &problems);
    } catch (const PlausiException &e) {
      raisePlausiError(e);
    }
    return problems;
  }

  void close() {
    if (pool_ != nullptr) pool_->close();
    closed_ = true;
  }

 private:
  host::Checker *checker() {
    if (closed_) throw py::value_error("the rule module is closed");
    return pool_->forThisThread();
  }
  static std::unique_ptr<SimpleDataRecord> recordOfChecked(const py::handle &mapping) {
    try {
      return recordOf(mapping);
    } catch (const CellError &e) {
      throw py::value_error(e.message);
    }
  }
  static std::string encodeName(const std::string &name) { return columnName(py::str(name)); }

  std::unique_ptr<CheckerPool> pool_;
  bool closed_ = false;
};

// The problems of one record, or why it was not checked.
struct Result {
  std::vector<host::Problem> problems;
  bool ok = true;
};

// quorel.Checker's engine: settings, materials and the per-thread checkers.
class Checker {
 public:
  Checker(const RuleModule &module, std::optional<std::string> flow, std::int32_t weightLevel,
          const py::dict &materials, const py::dict &init, std::optional<std::string> log, int logLevel,
          bool strict)
      : strict_(strict) {
    host::CheckSettings settings;
    settings.library = module.library();
    settings.module = module.name();
    if (flow) settings.flow = columnName(py::str(*flow));
    settings.weightLevel = weightLevel;
    for (const auto &item : materials) addMaterial(item.first, item.second);
    settings.materials = &router_;
#ifdef QUOREL_HOST_SQL
    // A database's records of a query live until the run is over.
    if (usesDatabases_) settings.afterRun = [this] { databases_.releaseRecords(); };
#endif
    for (const auto &item : init) {
      std::string name = columnName(item.first);
      settings.inits.emplace_back(name, initValueOf(name, item.second));
    }
    if (log) {
      logger_ = std::make_unique<Logger>(log->c_str(), static_cast<LogLevel>(logLevel));
      settings.logger = logger_.get();
    }
    pool_ = std::make_unique<CheckerPool>(std::move(settings));
    std::string unknownFlow = pool_->forThisThread()->checkFlow();
    if (!unknownFlow.empty()) throw py::value_error(host::toUtf8(unknownFlow.c_str()));
  }

  Result check(const py::handle &mapping) {
    std::unique_ptr<SimpleDataRecord> record;
    std::vector<std::string> fields;
    try {
      record = recordOf(mapping, &fields);
    } catch (const CellError &e) {
      raiseRecordError(e.message);
    }
    reportColumns(fields);
    host::Outcome outcome;
    {
      py::gil_scoped_release release;
      run(record.get(), &outcome);
    }
    if (outcome.failed) {
      raisePlausiError(PlausiException(static_cast<ExceptionType>(outcome.exceptionType), outcome.message.c_str()));
    }
    return Result{std::move(outcome.problems), outcome.errors == 0};
  }

  // Checks the rows of columns (lists of equal length) and gives the columns
  // of the problem frame: row (position of the input row) and one list per
  // problem attribute, with an error row for a row not checked.
  py::dict checkColumns(const py::list &names, const py::list &columns) {
    std::vector<std::string> fields;
    for (const auto &name : names) fields.push_back(columnName(name));
    reportColumns(fields);
    std::vector<Column> cells(fields.begin(), fields.end());
    std::size_t rows = columns.empty() ? 0 : py::len(columns[0]);
    Frame frame;
    Chunk chunk;
    for (std::size_t first = 0; first < rows; first += kChunk) {
      chunk.clear();
      for (std::size_t row = first; row < std::min(first + kChunk, rows); ++row) {
        auto record = std::make_unique<SimpleDataRecord>();
        try {
          for (std::size_t c = 0; c < cells.size(); ++c) {
            setCell(record.get(), cells[c], py::reinterpret_borrow<py::list>(columns[c])[row]);
          }
          chunk.add(static_cast<std::int64_t>(row), std::move(record), std::string());
        } catch (const CellError &e) {
          chunk.add(static_cast<std::int64_t>(row), nullptr, e.message);
        }
      }
      {
        py::gil_scoped_release release;
        runChunk(&chunk);
      }
      frame.take(chunk);
    }
    return frame.finish();
  }

  // The same for the rows of a database source (a connection string), rows
  // [offset, offset + limit) of it (all from offset when limit < 0); row is
  // the row's number in the source, counted from 0. Raises DatabaseError
  // when the source cannot be read.
  py::dict checkSource(const std::string &text, std::int64_t offset, std::int64_t limit) {
#ifndef QUOREL_HOST_SQL
    static_cast<void>(offset);
    static_cast<void>(limit);
    sourceOf(text, "");
#else
    host::SqlSource source = sourceOf(text, "");
    host::SqlReadOptions options;
    options.offset = offset;
    options.limit = limit;
    std::unique_ptr<host::SqlRowSource> rows;
    std::string message;
    {
      py::gil_scoped_release release;
      rows = host::SqlRowSource::open(source, &message, options);
    }
    if (rows == nullptr) raiseDatabaseError(message);
    reportColumns(rows->columns());
    host::RecordLayout layout(rows->columns());
    Frame frame;
    Chunk chunk;
    host::Row row;
    for (bool more = true; more;) {
      {
        py::gil_scoped_release release;
        chunk.clear();
        while (chunk.size() < kChunk && (more = rows->next(&row)) && !rows->failed()) {
          auto record = std::make_unique<SimpleDataRecord>();
          std::string error = row.error;
          if (error.empty() && layout.fill(row.cells, record.get(), &error)) {
            chunk.add(offset + row.position - 1, std::move(record), std::string());
          } else {
            chunk.add(offset + row.position - 1, nullptr, host::toUtf8(error.c_str()));
          }
        }
        if (!rows->failed()) runChunk(&chunk);
      }
      if (rows->failed()) raiseDatabaseError("cannot read " + rows->name() + ": " + host::toUtf8(row.error.c_str()));
      frame.take(chunk);
    }
    return frame.finish();
#endif
  }

 private:
  // Rows are checked in chunks: the GIL is held while a chunk's records are
  // made and its problems become Python objects, and released while its
  // rules run.
  static constexpr std::size_t kChunk = 2048;

  // A chunk of rows: each row's label, its record or (null) why the row
  // could not become one (UTF-8), and what checking the record gave.
  struct Chunk {
    std::vector<std::int64_t> labels;
    std::vector<std::unique_ptr<SimpleDataRecord>> records;
    std::vector<std::string> errors;
    std::vector<host::Outcome> outcomes;

    std::size_t size() const { return labels.size(); }
    void clear() {
      labels.clear();
      records.clear();
      errors.clear();
    }
    void add(std::int64_t label, std::unique_ptr<SimpleDataRecord> record, std::string error) {
      labels.push_back(label);
      records.push_back(std::move(record));
      errors.push_back(std::move(error));
    }
  };

  // Runs the chunk's records; without the GIL.
  void runChunk(Chunk *chunk) {
    chunk->outcomes.assign(chunk->size(), host::Outcome());
    for (std::size_t r = 0; r < chunk->size(); ++r) {
      if (chunk->records[r] != nullptr) run(chunk->records[r].get(), &chunk->outcomes[r]);
    }
  }

  // The columns of a problem frame as they grow.
  struct Frame {
    py::list row, id, type, weight, shortText, longText, field, fieldIndices, accessed, sections, error;
    std::int64_t records = 0, problems = 0, errors = 0, failed = 0;
    std::unordered_map<std::string, py::object> texts;

    // The rows of a chunk that has run.
    void take(const Chunk &chunk) {
      for (std::size_t r = 0; r < chunk.size(); ++r) {
        std::int64_t label = chunk.labels[r];
        records += 1;
        if (chunk.records[r] == nullptr) {
          fail(label, chunk.errors[r]);
          continue;
        }
        const host::Outcome &outcome = chunk.outcomes[r];
        if (outcome.failed) {
          fail(label, "Ausnahme " + std::to_string(outcome.exceptionType) + ": " +
                          host::toUtf8(outcome.message.c_str()));
        }
        for (const host::Problem &problem : outcome.problems) add(label, problem);
        errors += outcome.errors;
      }
    }
    void add(std::int64_t at, const host::Problem &p) {
      row.append(at);
      id.append(decoded(p.id));
      type.append(static_cast<int>(p.type));
      weight.append(p.weight);
      shortText.append(decoded(p.text));
      longText.append(decoded(p.details));
      field.append(p.field.empty() ? py::object(py::none()) : decoded(p.field));
      fieldIndices.append(py::cast(p.fieldIndices));
      accessed.append(decodedList(p.accessed));
      sections.append(decodedList(p.sections));
      error.append(py::none());
      ++problems;
    }
    void fail(std::int64_t at, const std::string &message) {
      row.append(at);
      for (py::list *column : {&id, &type, &weight, &shortText, &longText, &field}) column->append(py::none());
      fieldIndices.append(py::list());
      accessed.append(py::list());
      sections.append(py::list());
      error.append(py::str(message));
      ++failed;
    }
    // The texts of problems repeat from record to record (ids, texts, field
    // names, sections): each is decoded once, and its Python text shared.
    py::object decoded(const std::string &text) {
      auto known = texts.find(text);
      if (known == texts.end()) known = texts.emplace(text, decode(text.c_str())).first;
      return known->second;
    }
    py::object decoded(const std::optional<std::string> &text) {
      return text ? decoded(*text) : py::object(py::none());
    }
    py::list decodedList(const std::vector<std::string> &list) {
      py::list out(list.size());
      for (std::size_t i = 0; i < list.size(); ++i) out[i] = decoded(list[i]);
      return out;
    }

    py::dict finish() {
      py::dict out;
      out["row"] = row;
      out["id"] = id;
      out["type"] = type;
      out["weight"] = weight;
      out["short_text"] = shortText;
      out["long_text"] = longText;
      out["field"] = field;
      out["field_indices"] = fieldIndices;
      out["accessed_fields"] = accessed;
      out["sections"] = sections;
      out["error"] = error;
      out["summary"] = py::dict(py::arg("records") = records, py::arg("problems") = problems,
                                py::arg("errors") = errors, py::arg("failed") = failed);
      return out;
    }
  };

  // Reports the columns that name nothing the module reads: each with a
  // ColumnWarning the first time this checker meets it, or all of them with
  // RecordError when strict. The GIL guards the verdicts.
  void reportColumns(const std::vector<std::string> &columns) {
    std::unique_ptr<host::ColumnCheck> check;  // made for the first column not met before
    std::string faults;
    for (const std::string &column : columns) {
      auto verdict = verdicts_.find(column);
      if (verdict == verdicts_.end()) {
        if (check == nullptr) check = std::make_unique<host::ColumnCheck>(pool_->forThisThread()->plausi());
        verdict = verdicts_.emplace(column, host::toUtf8(check->check(column).c_str())).first;
        if (!strict_ && !verdict->second.empty() &&
            PyErr_WarnEx(columnWarningType.ptr(), verdict->second.c_str(), 2) != 0) {
          throw py::error_already_set();  // warnings turned into errors
        }
      }
      if (strict_ && !verdict->second.empty()) faults += (faults.empty() ? "" : "\n") + verdict->second;
    }
    if (!faults.empty()) raiseRecordError(faults);
  }

  // Runs without the GIL; a log is written by one thread at a time.
  void run(SimpleDataRecord *record, host::Outcome *outcome) {
    host::Checker *checker = pool_->forThisThread();
    if (logger_ == nullptr) return checker->check(record, outcome);
    std::lock_guard<std::mutex> lock(logMutex_);
    checker->check(record, outcome);
  }

  // A material from a DataFrame, a CSV file or a database table.
  void addMaterial(const py::handle &key, const py::handle &material) {
    std::string name = columnName(key);
    std::string shown = "material " + host::toUtf8(name.c_str()) + ": ";
    static py::object frameType = py::module_::import("pandas").attr("DataFrame");
    static py::object pathType = py::module_::import("os").attr("PathLike");
    if (py::isinstance<py::str>(material) && host::SqlSource::names(material.cast<std::string>())) {
      host::SqlSource source = sourceOf(material.cast<std::string>(), shown);
#ifdef QUOREL_HOST_SQL
      std::string message;
      if (!databases_.addMaterial(name, source, &message)) raiseDatabaseError(message);  // names the material
      router_.route(name, &databases_);
      usesDatabases_ = true;
#endif
      return;
    }
    router_.route(name, &tables_);
    if (py::isinstance<py::str>(material) || py::isinstance(material, pathType)) {
      std::string file = py::str(py::module_::import("os").attr("fspath")(material)).cast<std::string>();
      std::string message;
      auto source = host::CsvRowSource::open(file, &message);
      if (source == nullptr || !tables_.load(name, source.get(), &message)) {
        throw py::value_error(shown + message);
      }
      return;
    }
    if (!py::isinstance(material, frameType)) {
      throw py::type_error(shown + "must be a DataFrame, a CSV path or a connection string");
    }
    std::vector<Column> fields;
    py::list columns;
    for (const auto &column : material.attr("columns")) {
      fields.emplace_back(columnName(column));
      columns.append(material.attr("__getitem__")(column).attr("tolist")());
    }
    std::size_t rows = py::len(material);
    std::vector<std::unique_ptr<SimpleDataRecord>> records;
    for (std::size_t r = 0; r < rows; ++r) {
      auto record = std::make_unique<SimpleDataRecord>();
      for (std::size_t c = 0; c < fields.size(); ++c) {
        try {
          setCell(record.get(), fields[c], py::reinterpret_borrow<py::list>(columns[c])[r]);
        } catch (const CellError &e) {
          throw py::value_error(shown + "row " + std::to_string(r) + ": " + e.message);
        }
      }
      records.push_back(std::move(record));
    }
    tables_.add(name, std::move(records));
  }

  bool strict_;
  // Why each column met so far names nothing the module reads ("" when it
  // names a field), as a warning's text.
  std::unordered_map<std::string, std::string> verdicts_;
  host::TableMaterialAccess tables_;
#ifdef QUOREL_HOST_SQL
  host::SqlMaterialAccess databases_;
  bool usesDatabases_ = false;
#endif
  host::MaterialRouter router_;
  std::unique_ptr<Logger> logger_;
  std::mutex logMutex_;
  std::unique_ptr<CheckerPool> pool_;
};

}  // namespace
}  // namespace python
}  // namespace quorel

PYBIND11_MODULE(_quorel, m) {
  using namespace quorel::python;
  m.doc() = "Rule modules of the quorel library, for the package quorel.";
  py::module_ errors = py::module_::import("quorel._errors");
  plausiErrorType = errors.attr("PlausiError");
  recordErrorType = errors.attr("RecordError");
  columnWarningType = errors.attr("ColumnWarning");
  databaseErrorType = errors.attr("DatabaseError");

  py::class_<quorel::host::Problem>(m, "Problem", "One finding of a run.")
      .def_property_readonly("id", [](const quorel::host::Problem &p) { return decode(p.id); })
      .def_property_readonly("type", [](const quorel::host::Problem &p) { return static_cast<int>(p.type); })
      .def_readonly("weight", &quorel::host::Problem::weight)
      .def_property_readonly("short_text", [](const quorel::host::Problem &p) { return decode(p.text); })
      .def_property_readonly("long_text", [](const quorel::host::Problem &p) { return decode(p.details); })
      .def_property_readonly("field",
                             [](const quorel::host::Problem &p) {
                               return p.field.empty() ? py::object(py::none()) : py::object(decode(p.field.c_str()));
                             })
      .def_readonly("field_indices", &quorel::host::Problem::fieldIndices)
      .def_property_readonly("accessed_fields",
                             [](const quorel::host::Problem &p) {
                               py::list out;
                               for (const auto &f : p.accessed) out.append(decode(f.c_str()));
                               return out;
                             })
      .def_property_readonly("sections",
                             [](const quorel::host::Problem &p) {
                               py::list out;
                               for (const auto &s : p.sections) out.append(decode(s.c_str()));
                               return out;
                             })
      .def("__repr__", [](const quorel::host::Problem &p) {
        return "<Problem " + quorel::host::toUtf8(p.id ? p.id->c_str() : "") + " type " +
               std::to_string(static_cast<int>(p.type)) + ">";
      });

  py::class_<Result>(m, "Result", "The problems of one record.")
      .def_readonly("ok", &Result::ok)
      .def_readonly("problems", &Result::problems)
      .def("__repr__", [](const Result &r) {
        return "<Result ok=" + std::string(r.ok ? "True" : "False") + " problems=" +
               std::to_string(r.problems.size()) + ">";
      });

  py::class_<RuleModule>(m, "RuleModule")
      .def(py::init<std::string, std::string>(), py::arg("library_path"), py::arg("module_name"))
      .def_property_readonly("library_path", &RuleModule::library)
      .def_property_readonly("module_name", &RuleModule::name)
      .def("perform_function", &RuleModule::performFunction, py::arg("name"), py::arg("record"))
      .def("check_field", &RuleModule::checkField, py::arg("name"), py::arg("record"))
      .def("close", &RuleModule::close);

  py::class_<Checker>(m, "Checker")
      .def(py::init<const RuleModule &, std::optional<std::string>, std::int32_t, const py::dict &, const py::dict &,
                    std::optional<std::string>, int, bool>(),
           py::arg("module"), py::arg("flow"), py::arg("weight_level"), py::arg("materials"), py::arg("init"),
           py::arg("log"), py::arg("log_level"), py::arg("strict"))
      .def("check", &Checker::check, py::arg("record"))
      .def("_check_columns", &Checker::checkColumns, py::arg("names"), py::arg("columns"))
      .def("_check_source", &Checker::checkSource, py::arg("source"), py::arg("offset"), py::arg("limit"));
  m.def("_count_rows", &countRows, py::arg("source"));
  // The kinds of database this build reads.
  py::list databases;
#ifdef QUOREL_HOST_SQL
  databases.append("sqlite");
#endif
#ifdef QUOREL_HOST_SQL_POSTGRESQL
  databases.append("postgresql");
#endif
  m.attr("_databases") = py::tuple(databases);
}
