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
// rules run, modules load, and files and databases are opened and read. The
// library needs a Plausi per thread, so a Checker keeps one host::Checker
// per thread that calls it, and lends spare ones to the threads that check
// the rows of a frame, a file or a database beside the calling one.

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <tuple>
#include <string>
#include <thread>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <quorel/quorel.h>

#include "quorel/host/checker.h"
#include "quorel/host/column_check.h"
#include "quorel/host/csv_parts.h"
#include "quorel/host/csv_row_source.h"
#include "quorel/host/encoding.h"
#include "quorel/host/file_error.h"
#include "quorel/host/load_error.h"
#include "quorel/host/material_check.h"
#include "quorel/host/material_router.h"
#include "quorel/host/problem.h"
#include "quorel/host/record_layout.h"
#include "quorel/host/row_record.h"
#include "quorel/host/sql/sql_source.h"
#include "quorel/host/table_material_access.h"
#include "quorel/lang/rule_set.h"
#include "cells.h"
#include "date_masks.h"
#include "imported.h"
#include "problem_columns.h"
#include "row_slices.h"
#include "signal_watch.h"
#ifdef QUOREL_HOST_SQL
#include "quorel/host/sql/sql_material_access.h"
#include "quorel/host/sql/sql_row_source.h"
#endif

namespace py = pybind11;

namespace quorel {
namespace python {
namespace {

py::object recordErrorType;
py::object plausiErrorType;
py::object columnWarningType;
py::object databaseErrorType;
py::object ruleErrorType;
py::object materialWarningType;
py::object initWarningType;
py::object fileEncodingWarningType;
py::object ruleFileErrorType;

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

// Within a catch block: what the rules threw other than a PlausiException,
// in the words of host::Outcome::failure() (UTF-8; the text is the rule
// code's, taken as it is).
std::string thrownByRules() {
  host::Outcome outcome;
  outcome.failWithCurrentException();
  return outcome.failure();
}

// message: UTF-8.
[[noreturn]] void raiseRuleError(const std::string &message) {
  PyErr_SetString(ruleErrorType.ptr(), message.c_str());
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

// A part of a CSV file as Python holds it: (byte, lines, rows, count,
// file size), see host::CsvPart.
using PartTuple = std::tuple<std::int64_t, std::int64_t, std::int64_t, std::int64_t, std::int64_t>;

// The parts of about block bytes each that a CSV file is cut into;
// ValueError when it cannot be read.
std::vector<PartTuple> csvParts(const std::string &file, std::int64_t block) {
  std::vector<host::CsvPart> parts;
  std::string message;
  bool split;
  {
    py::gil_scoped_release release;
    split = host::splitCsvFile(file, block, &parts, &message);
  }
  if (!split) throw py::value_error(message);
  std::vector<PartTuple> out;
  for (const host::CsvPart &p : parts) out.emplace_back(p.byte, p.lines, p.rows, p.count, p.fileSize);
  return out;
}

py::str decode(const char *text) { return py::str(host::toUtf8(text)); }
py::object decode(const std::optional<std::string> &text) {
  return text ? py::object(decode(text->c_str())) : py::object(py::none());
}

// A name given from Python, a field's or what says (an init parameter's, a
// material's), in Windows-1252; TypeError for one that is no str, and
// ValueError naming a character that Windows-1252 lacks.
std::string columnName(const py::handle &name, const std::string &what = "field name") {
  if (!py::isinstance<py::str>(name)) throw py::type_error(what + "s must be str");
  try {
    return encode(name, what);
  } catch (const CellError &e) {
    throw py::value_error(e.message);
  }
}

// A record from a mapping of hierarchy texts to values, its dates in the
// masks that dates gives; the texts (Windows-1252) into *fields when that
// is given.
std::unique_ptr<SimpleDataRecord> recordOf(const py::handle &mapping, DateMasks *dates,
                                           std::vector<std::string> *fields = nullptr) {
  static Imported mappingType("collections.abc", "Mapping");
  if (!py::isinstance(mapping, mappingType.get())) {
    throw py::type_error("a record must be a mapping of field names to values, not " +
                         py::str(py::type::of(mapping).attr("__name__")).cast<std::string>());
  }
  auto record = std::make_unique<SimpleDataRecord>();
  for (const auto &item : py::reinterpret_borrow<py::object>(mapping).attr("items")()) {
    py::tuple pair = py::reinterpret_borrow<py::tuple>(item);
    Column column(columnName(pair[0]));
    column.dateMask = dates->of(column.name);
    setCell(column, pair[1], record.get());
    if (fields != nullptr) fields->push_back(std::move(column.name));
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
      double number = PyFloat_AsDouble(value.ptr());  // of an int too
      if (number == -1.0 && PyErr_Occurred() != nullptr) {
        PyErr_Clear();
        throw py::value_error("init value " + name + " is beyond the range of a number");
      }
      return std::make_shared<NumberValue>(number);
    }
    if (isNumpyScalar(value)) return initValueOf(name, value.attr("item")());
    if (py::isinstance<py::str>(value)) return std::make_shared<StringValue>(encode(value, name).c_str());
  } catch (const CellError &e) {
    throw py::value_error(e.message);
  }
  throw py::type_error("init value " + name + " must be bool, int, float or str");
}

// One host::Checker per calling thread over shared settings, and spare ones
// for the threads that check the rows of one call beside it. A caller holds
// its checkers while it uses them, so close() on one thread never pulls a
// module from under a run on another: the last holder unloads it.
class CheckerPool {
 public:
  explicit CheckerPool(host::CheckSettings settings) : settings_(std::move(settings)) {}

  // Loads the module for the calling thread on first use; raises PlausiError
  // with the loader's detail when it cannot be loaded, ValueError once the
  // pool is closed. Callable with or without the GIL.
  std::shared_ptr<host::Checker> forThisThread() {
    return guarded([this] {
      std::shared_ptr<host::Checker> &checker = checkers_[std::this_thread::get_id()];
      if (checker == nullptr) checker = std::make_shared<host::Checker>(settings_);
      return checker;
    });
  }

  // The calling thread's checker and count - 1 spare ones, which no other
  // call uses until the lease ends. Raises as forThisThread.
  class Lease {
   public:
    Lease(CheckerPool *pool, std::size_t count) : pool_(pool) {
      checkers_.push_back(pool->forThisThread());
      while (checkers_.size() < count) checkers_.push_back(pool->spare());
    }
    ~Lease() { pool_->giveBack(&checkers_); }
    Lease(const Lease &) = delete;
    Lease &operator=(const Lease &) = delete;

    std::vector<host::Checker *> checkers() const {
      std::vector<host::Checker *> out;
      for (const auto &checker : checkers_) out.push_back(checker.get());
      return out;
    }

   private:
    CheckerPool *pool_;
    std::vector<std::shared_ptr<host::Checker>> checkers_;
  };

  void close() {
    std::unordered_map<std::thread::id, std::shared_ptr<host::Checker>> checkers;
    std::vector<std::shared_ptr<host::Checker>> spares;
    {
      std::lock_guard<std::mutex> lock(mutex_);
      closed_ = true;
      checkers.swap(checkers_);
      spares.swap(spares_);
    }
    // Unloaded here, without the lock, unless another thread still runs one.
  }
  const host::CheckSettings &settings() const { return settings_; }

 private:
  // get() under the lock, unless the pool is closed.
  template <typename Get>
  std::shared_ptr<host::Checker> guarded(Get get) {
    try {
      std::lock_guard<std::mutex> lock(mutex_);
      if (closed_) throw py::value_error("the rule module is closed");
      return get();
    } catch (const host::LoadError &e) {
      py::gil_scoped_acquire acquire;
      raisePlausiError(e, e.detail());
    }
  }
  std::shared_ptr<host::Checker> spare() {
    return guarded([this] {
      if (spares_.empty()) return std::make_shared<host::Checker>(settings_);
      std::shared_ptr<host::Checker> checker = std::move(spares_.back());
      spares_.pop_back();
      return checker;
    });
  }
  // The spares of a lease (all but its first) come back unless the pool
  // was closed meanwhile.
  void giveBack(std::vector<std::shared_ptr<host::Checker>> *leased) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (closed_) return;
    for (std::size_t i = 1; i < leased->size(); ++i) spares_.push_back(std::move((*leased)[i]));
  }

  host::CheckSettings settings_;
  std::mutex mutex_;
  bool closed_ = false;
  std::unordered_map<std::thread::id, std::shared_ptr<host::Checker>> checkers_;
  std::vector<std::shared_ptr<host::Checker>> spares_;
};

// quorel.RuleModule's base: a rule module by library and name, or a rule
// file read from its path or from a text. A rule file with mistakes raises
// RuleFileError holding all of them, one FILE:LINE:COLUMN: error: ... each.
class RuleModule {
 public:
  // text, when given, is the rule file itself (UTF-8 or Windows-1252) and
  // name the file name its messages show; otherwise library names a rule
  // file (".qr") or a shared library with the module name.
  RuleModule(std::optional<std::string> library, std::optional<std::string> module, std::optional<std::string> text,
             std::string name)
      : text_(std::move(text)), textName_(std::move(name)) {
    host::CheckSettings settings;
    if (text_ || (library && host::isRuleFile(*library))) {
      std::string shown = text_ ? textName_ : *library;
      lang::Diagnostics diagnostics;
      {
        py::gil_scoped_release release;
        settings.rules = text_ ? lang::readRuleText(*text_, shown, &diagnostics)
                               : lang::readRuleFile(shown, &diagnostics);
      }
      if (settings.rules == nullptr) raiseRuleFileError(diagnostics.format());
      settings.module = settings.rules->name();
      if (library) settings.library = *library;
      if (module && host::toUtf8(settings.module.c_str()) != *module) {
        throw py::value_error(shown + " declares the module " + host::toUtf8(settings.module.c_str()) + ", not " +
                              *module);
      }
    } else if (!library || !module) {
      throw py::type_error("a rule module needs a rule file (a path ending in .qr), or a library and the module's name");
    } else {
      settings.library = *library;
      settings.module = *module;
    }
    pool_ = std::make_unique<CheckerPool>(std::move(settings));
    py::gil_scoped_release release;
    pool_->forThisThread();  // fails now for a bad path or name
    dates_ = std::make_unique<DateMasks>([this] { return pool_->forThisThread(); });
  }

  // The library or rule file; None for a module read from a text.
  std::optional<std::string> libraryPath() const {
    return text_ ? std::nullopt : std::optional<std::string>(settings().library);
  }
  std::string moduleName() const {
    return settings().rules != nullptr ? host::toUtf8(settings().module.c_str()) : settings().module;
  }
  // The rule file's text as given, bytes; None unless read from a text.
  py::object text() const { return text_ ? py::object(py::bytes(*text_)) : py::object(py::none()); }
  const std::string &textName() const { return textName_; }
  const host::CheckSettings &settings() const { return pool_->settings(); }
  // The calling thread's checker of the module. Raises as CheckerPool does.
  std::shared_ptr<host::Checker> checker() const { return pool_->forThisThread(); }

  py::object performFunction(const std::string &name, const py::handle &mapping) {
    auto record = recordOfChecked(mapping);
    std::string function = encodeName(name);
    std::unique_ptr<Value> result;
    runOn(record.get(), [&](Plausi *plausi, PlausiContext *context) {
      result.reset(plausi->performFunction(function.c_str(), context));
    });
    return toPython(result.get());
  }

  // The problems that the field's check procedure reports.
  std::vector<host::Problem> checkField(const std::string &name, const py::handle &mapping) {
    auto record = recordOfChecked(mapping);
    std::string field = encodeName(name);
    std::vector<host::Problem> problems;
    runOn(record.get(), [&](Plausi *plausi, PlausiContext *context) {
      plausi->performFieldCheck(field.c_str(), context);
      host::HierarchyTexts texts;
      host::collectProblems(host::FoundProblems(*context, &texts), &problems);
    });
    return problems;
  }

  // Unloads the module; a run on another thread finishes first.
  void close() { pool_->close(); }

 private:
  // message: UTF-8.
  [[noreturn]] static void raiseRuleFileError(const std::string &message) {
    PyErr_SetString(ruleFileErrorType.ptr(), message.c_str());
    throw py::error_already_set();
  }

  // Calls work(plausi, context) without the GIL, on a context of the record
  // set up as the module's checks are; raises PlausiError or RuleError for
  // what the rules threw.
  template <typename Work>
  void runOn(SimpleDataRecord *record, Work work) {
    std::string thrown;
    try {
      py::gil_scoped_release release;
      std::shared_ptr<host::Checker> runner = pool_->forThisThread();
      PlausiContext context(record);
      runner->configure(&context);
      try {
        work(runner->plausi(), &context);
      } catch (const PlausiException &) {
        throw;
      } catch (...) {
        thrown = thrownByRules();
      }
    } catch (const PlausiException &e) {
      raisePlausiError(e);
    }
    if (!thrown.empty()) raiseRuleError(thrown);
  }

  std::unique_ptr<SimpleDataRecord> recordOfChecked(const py::handle &mapping) {
    try {
      return recordOf(mapping, dates_.get());
    } catch (const CellError &e) {
      throw py::value_error(e.message);
    }
  }
  static std::string encodeName(const std::string &name) { return columnName(py::str(name)); }

  std::optional<std::string> text_;
  std::string textName_;
  std::unique_ptr<CheckerPool> pool_;
  std::unique_ptr<DateMasks> dates_;  // of the records' fields
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
          bool strict, const std::string &encoding, bool warn, int jobs)
      : strict_(strict), warn_(warn), jobs_(static_cast<std::size_t>(std::max(jobs, 1))) {
    // One log for all threads would mix the lines of their records.
    if (jobs > 1 && log) throw py::value_error("log works with jobs=1 only");
    if (!host::parseEncoding(encoding, &encoding_)) {
      throw py::value_error("encoding " + encoding + " is not one of windows-1252, utf-8");
    }
    host::CheckSettings settings;
    settings.library = module.settings().library;
    settings.module = module.settings().module;
    settings.rules = module.settings().rules;
    if (flow) settings.flow = columnName(py::str(*flow));
    settings.weightLevel = weightLevel;
    for (const auto &item : materials) addMaterial(item.first, item.second, module);
    settings.materials = &router_;
#ifdef QUOREL_HOST_SQL
    // A database's records of a query live until the run is over.
    if (usesDatabases_) settings.afterRun = [this] { databases_.releaseRecords(); };
#endif
    for (const auto &item : init) {
      std::string name = columnName(item.first, "init name");
      settings.inits.emplace_back(name, initValueOf(name, item.second));
    }
    std::string repeated = host::repeatedInit(settings);
    if (!repeated.empty()) throw py::value_error(host::toUtf8(repeated.c_str()));
    if (log) {
      // The stream is ours, not the logger's: a logger's output vanishes
      // without a word when its file cannot be opened or written.
      errno = 0;
      logStream_.open(*log, std::ios::binary | std::ios::trunc);
      if (!logStream_) throw py::value_error(host::fileError("write the log", *log, std::strerror(errno)));
      logName_ = *log;
      logger_ = std::make_unique<Logger>(&logStream_, static_cast<LogLevel>(logLevel));
      settings.logger = logger_.get();
    }
    pool_ = std::make_unique<CheckerPool>(std::move(settings));
    dates_ = std::make_unique<DateMasks>([this] { return pool_->forThisThread(); });
    std::shared_ptr<host::Checker> checker;
    {
      py::gil_scoped_release release;
      checker = pool_->forThisThread();
    }
    std::string unknownFlow = checker->checkFlow("flow=\"NAME\"");
    if (!unknownFlow.empty()) throw py::value_error(host::toUtf8(unknownFlow.c_str()));
    checkInits();
    checkMaterials(checker->plausi(), materials);
  }

  Result check(const py::handle &mapping) {
    std::unique_ptr<SimpleDataRecord> record;
    std::vector<std::string> fields;
    try {
      record = recordOf(mapping, dates_.get(), &fields);
    } catch (const CellError &e) {
      raiseRecordError(e.message);
    }
    reportColumns(fields, false);
    host::Outcome outcome;
    Result result;
    {
      py::gil_scoped_release release;
      run(record.get(), &outcome, [&result](const host::Outcome &done) {
        host::collectProblems(done.problems, &result.problems);
        result.ok = done.errors == 0;
      });
    }
    reportLog(false);
    if (outcome.failed && !outcome.cppType.empty()) raiseRuleError(host::toUtf8(outcome.failure().c_str()));
    if (outcome.failed) {
      raisePlausiError(PlausiException(static_cast<ExceptionType>(outcome.exceptionType), outcome.message.c_str()));
    }
    return result;
  }

  // Checks the rows of a frame and gives the columns of the problem frame
  // (see ProblemColumns), labelled by the position of the input row. chunks
  // gives the rows in slices, each a list of columns, one per name: lists
  // of cells of equal length. Each slice of rows is read and checked on
  // one thread, most cells without the GIL (see CellSlice::read); each row
  // becomes a record and is checked without it.
  py::dict checkColumns(const py::list &names, const py::iterable &chunks) {
    std::vector<std::string> fields;
    for (const auto &name : names) fields.push_back(columnName(name));
    refuseRepeatedColumns(fields);
    reportColumns(fields, true);
    std::vector<Column> at(fields.begin(), fields.end());
    dates_->mark(&at);
    std::unordered_set<std::int32_t> keys;
    for (Column &column : at) column.empties = keys.insert(column.key).second;
    ProblemColumns frame;
    std::unique_ptr<CheckerPool::Lease> lease;
    {
      py::gil_scoped_release release;
      lease = std::make_unique<CheckerPool::Lease>(pool_.get(), jobs_);
    }
    RowSlices slices(lease->checkers(), logMutex(), &frame);
    std::vector<CellSlice> slots(slices.slots());
    for (CellSlice &slice : slots) slice.resize(at.size());
    std::int64_t first = 0;
    for (const py::handle &item : chunks) {
      py::object chunk = py::reinterpret_borrow<py::object>(item);  // holds the cells until they are put
      if (!PyList_Check(chunk.ptr()) || py::len(chunk) != at.size()) {
        throw py::value_error("each chunk must be a list of one column per name");
      }
      std::vector<PyObject *> lists;
      std::size_t rows = at.empty() ? 0 : py::len(py::reinterpret_borrow<py::list>(chunk)[0]);
      for (const auto &column : py::reinterpret_borrow<py::list>(chunk)) {
        if (!PyList_Check(column.ptr()) || py::len(column) != rows) {
          throw py::value_error("columns must be lists of equal length");
        }
        lists.push_back(column.ptr());
      }
      py::gil_scoped_release release;
      std::size_t next = 0;  // the chunk's first row not yet read
      auto fill = [&](std::size_t s) {
        CellSlice &slice = slots[s];
        slice.first = next;
        slice.size = std::min(kFrameSlice, rows - next);
        next += slice.size;
        return next < rows;
      };
      // The chunk holds the lists and they their cells until every slice is
      // done: the cells are read where the rows are checked.
      auto work = [&](std::size_t s, RowSlices::Rows *rows) {
        CellSlice &slice = slots[s];
        slice.read(at, lists);
        for (std::size_t r = 0; r < slice.size; ++r) {
          SimpleDataRecord *record = rows->record();
          // The cells before an unread one go in first, as their failures come first.
          std::size_t c = 0;
          while (c < slice.unread[r] && putCell(at[c], slice.cell(r, c), record, rows->error())) ++c;
          const std::int64_t label = first + static_cast<std::int64_t>(slice.first + r);
          // A frame has no lines: its rows are numbered from 1.
          const host::Place place{label + 1, 0};
          if (c == at.size()) {
            rows->check(label, place);
          } else {
            rows->fail(label, place, c < slice.unread[r] ? *rows->error() : slice.reasons[r]);
          }
        }
      };
      slices.run(fill, work, (rows + kFrameSlice - 1) / kFrameSlice);
      first += static_cast<std::int64_t>(rows);
    }
    reportLog(true);
    return frame.finish();
  }

  // Reports the columns (names of a frame) as checking their rows would.
  void reportColumnNames(const py::list &names) {
    std::vector<std::string> columns;
    for (const auto &name : names) columns.push_back(columnName(name));
    refuseRepeatedColumns(columns);
    reportColumns(columns, true);
  }

  // Reports the columns of a CSV file or a database source as checking it
  // would, reading no more than its header.
  void reportSourceColumns(const std::string &text) {
    std::unique_ptr<host::RowSource> rows = openSource(text, 0, 0);
    reportEncoding(*rows);
    refuseRepeatedColumns(rows->columns());
    reportColumns(rows->columns(), true);
    reportNumberColumns(*rows);
  }

  // The same for the rows of a CSV file or a database source (a connection
  // string), rows [offset, offset + limit) of a database (all from offset
  // when limit < 0; a file is read whole, or the part of it that part
  // names), labelled by the row's number in the source from 0. Raises
  // ValueError for a file and DatabaseError for a database that cannot be
  // read.
  py::dict checkSource(const std::string &text, std::int64_t offset, std::int64_t limit,
                       const std::optional<PartTuple> &part) {
    host::CsvPart cut;
    if (part) std::tie(cut.byte, cut.lines, cut.rows, cut.count, cut.fileSize) = *part;
    if (!host::SqlSource::names(text)) offset = cut.rows;
    std::unique_ptr<host::RowSource> rows = openSource(text, offset, limit, cut);
    reportEncoding(*rows);
    refuseRepeatedColumns(rows->columns());
    reportColumns(rows->columns(), true);
    reportNumberColumns(*rows);
#ifdef QUOREL_HOST_SQL
    if (auto *table = dynamic_cast<host::SqlRowSource *>(rows.get())) {
      table->giveDatesAsFieldsHoldThem(pool_->forThisThread()->plausi());
    }
#endif
    host::RecordLayout layout(rows->columns());
    ProblemColumns frame;
    // A slice of the source's rows, the first labelled first.
    struct Slice {
      std::vector<host::Row> rows = std::vector<host::Row>(kSourceSlice);
      std::size_t size = 0;
      std::int64_t first = 0;
    };
    bool failed = false;
    std::string reason;  // why the source could not be read on
    SignalWatch signals;
    {
      py::gil_scoped_release release;
      CheckerPool::Lease lease(pool_.get(), jobs_);
      RowSlices slices(lease.checkers(), logMutex(), &frame);
      std::vector<Slice> slots(slices.slots());
      std::int64_t next = offset;  // a slice of a database counts on from its offset
      auto fill = [&](std::size_t s) {
        signals.check();
        Slice &slice = slots[s];
        slice.first = next;
        for (slice.size = 0; slice.size < kSourceSlice; ++slice.size) {
          host::Row &row = slice.rows[slice.size];
          if (!rows->next(&row)) return false;
          if (rows->failed()) {
            failed = true;
            reason = row.error;
            return false;
          }
        }
        next += static_cast<std::int64_t>(kSourceSlice);
        return true;
      };
      auto work = [&](std::size_t s, RowSlices::Rows *at) {
        const Slice &slice = slots[s];
        for (std::size_t r = 0; r < slice.size; ++r) {
          const std::int64_t label = slice.first + static_cast<std::int64_t>(r);
          const host::Place place{label + 1, slice.rows[r].place.line};
          if (layout.fill(slice.rows[r], at->record(), at->error())) {
            at->check(label, place);
          } else {
            at->fail(label, place, host::toUtf8(at->error()->c_str()));
          }
        }
      };
      slices.run(fill, work);
    }
    if (failed) {
      // A file's reason names the file and the line already.
      std::string message = host::toUtf8(reason.c_str());
      if (host::SqlSource::names(text)) raiseDatabaseError("cannot read " + rows->name() + ": " + message);
      throw py::value_error(message);
    }
    reportEncoding(*rows, true);
    reportLog(true);
    return frame.finish();
  }

  // For each column of numbers (of the dtype in types), the text of its
  // warning when it names a field whose value the record holds as text
  // (ColumnCheck::readsText), else "". The fields are the records', or
  // those of the material of that name.
  std::vector<std::string> numberWarnings(const py::list &names, const py::list &types, const py::object &material) {
    std::string table = material.is_none() ? std::string() : columnName(material, "material name");
    std::string remedy = std::string("read the ") + (table.empty() ? "records" : "material") + " with dtype=str";
    std::shared_ptr<host::Checker> checker = pool_->forThisThread();
    host::ColumnCheck check(checker->plausi(), host::tableTopic(checker->plausi(), table));
    std::vector<std::string> out;
    for (std::size_t i = 0; i < names.size(); ++i) {
      std::string column = columnName(names[i]);
      out.push_back(check.readsText(column)
                        ? host::toUtf8(host::numbersForText(column, columnName(types[i]), remedy).c_str())
                        : std::string());
    }
    return out;
  }

 private:
  // Rows of a CSV file or a database checked as one slice.
  static constexpr std::size_t kSourceSlice = 512;
  // Rows of a frame read from Python and checked as one slice: their cells
  // are kept in between, in every slot.
  static constexpr std::size_t kFrameSlice = 256;

  // The cells of a slice of a frame's rows, read from the lists of a chunk.
  struct CellSlice {
    void resize(std::size_t columns) {
      width = columns;
      cells = std::vector<Cell>(kFrameSlice * width);
      unread.resize(kFrameSlice);
      reasons.resize(kFrameSlice);
    }
    const Cell &cell(std::size_t row, std::size_t column) const { return cells[row * width + column]; }

    // Reads rows [first, first + size) of the lists, one per column, which
    // nobody changes meanwhile. Column by column: the cells of a column were
    // made one after another and mostly lie side by side. Most cells are
    // read without the GIL (readPlainCell), so that threads read their
    // slices side by side; the others after them, with the GIL taken once,
    // in the same order. A row's cells after an unread one stay unread.
    void read(const std::vector<Column> &at, const std::vector<PyObject *> &lists) {
      std::fill(unread.begin(), unread.begin() + static_cast<std::ptrdiff_t>(size), width);
      auto item = [&](std::size_t c, std::size_t r) {
        return PyList_GET_ITEM(lists[c], static_cast<Py_ssize_t>(first + r));
      };
      others.clear();
      for (std::size_t c = 0; c < width; ++c) {
        for (std::size_t r = 0; r < size; ++r) {
          if (!readPlainCell(at[c], item(c, r), &cells[r * width + c])) others.emplace_back(c, r);
        }
      }
      if (others.empty()) return;
      py::gil_scoped_acquire gil;
      for (auto [c, r] : others) {
        if (unread[r] < c) continue;
        try {
          readCell(at[c], item(c, r), &cells[r * width + c]);
        } catch (const CellError &e) {
          reasons[r] = e.message;
          unread[r] = c;
        }
      }
    }

    std::size_t width = 0;
    std::size_t first = 0;  // within the chunk
    std::size_t size = 0;
    std::vector<Cell> cells;  // by row, then column
    // For each row, the column whose cell could not be read (width when all
    // could) and why.
    std::vector<std::size_t> unread;
    std::vector<std::string> reasons;
    std::vector<std::pair<std::size_t, std::size_t>> others;  // (column, row) of the cells that need the GIL
  };

  // A log that cannot be written (the disk is full, say) warns once, after
  // the call whose lines it lost; the checks go on without it. A single
  // record's check leaves the log unflushed: its failure shows once the
  // stream's buffer cannot be written.
  void reportLog(bool flush) {
    if (!logStream_.is_open() || logLost_) return;
    if (flush) logStream_.flush();
    if (logStream_) return;
    logLost_ = true;
    std::string text = host::fileError("write the log", logName_, "its lines are lost from here on");
    if (warn_ && PyErr_WarnEx(PyExc_RuntimeWarning, text.c_str(), 2) != 0) throw py::error_already_set();
  }

  // What a run's log needs held, if there is a log.
  std::mutex *logMutex() { return logger_ != nullptr ? &logMutex_ : nullptr; }

  // Opens a part of a CSV file (the whole file by default) or rows
  // [offset, offset + limit) of a database source; raises ValueError for a
  // file and DatabaseError for a database that cannot be opened. A whole
  // file is looked at beyond its start for its encoding where that is told
  // (see host::CsvRowSource::open); a Dask worker, which tells nothing,
  // reads on at once.
  std::unique_ptr<host::RowSource> openSource(const std::string &text, std::int64_t offset, std::int64_t limit,
                                              const host::CsvPart &part = host::CsvPart()) {
    if (host::SqlSource::names(text)) return openDatabase(text, offset, limit);
    std::unique_ptr<host::RowSource> rows;
    std::string message;
    {
      py::gil_scoped_release release;
      if (part.whole() && (warn_ || strict_)) {
        rows = host::CsvRowSource::open(text, &message, encoding_);
      } else {
        rows = host::CsvRowSource::open(text, part, &message, encoding_);
      }
    }
    if (rows == nullptr) throw py::value_error(message);
    return rows;
  }

  // Opens rows [offset, offset + limit) of a database source; raises
  // DatabaseError when it cannot be read.
  static std::unique_ptr<host::RowSource> openDatabase(const std::string &text, std::int64_t offset,
                                                       std::int64_t limit) {
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
    return rows;
#endif
  }

  // What the start of a CSV file says against the encoding it is read in
  // (see host::doubtEncoding), or with late what the rows read since said
  // where the start did not: a FileEncodingWarning, or ValueError when
  // strict.
  void reportEncoding(const host::RowSource &rows, bool late = false) const {
    const char *how = "encoding=\"ENCODING\"";
    std::string advice = late ? host::lateEncodingAdvice(rows, how) : host::encodingAdvice(rows, how);
    if (advice.empty()) return;
    if (strict_) throw py::value_error(advice);
    if (warn_ && PyErr_WarnEx(fileEncodingWarningType.ptr(), advice.c_str(), 2) != 0) throw py::error_already_set();
  }

  // ValueError for a name that more than one column holds, as quorel-check
  // refuses such a header: a record keeps one cell per column.
  static void refuseRepeatedColumns(const std::vector<std::string> &columns, const std::string &shown = "") {
    std::string errors;
    for (const std::string &message : host::RecordLayout(columns).repeatedColumns()) {
      errors += (errors.empty() ? "" : "\n") + shown + host::toUtf8(message.c_str()) + "; rename or drop the others";
    }
    if (!errors.empty()) throw py::value_error(errors);
  }

  // Reports the columns that name nothing the module reads: each with a
  // ColumnWarning the first time this checker meets it, or all of them with
  // RecordError when strict. A table (not the keys of one record) none of
  // whose columns is read raises RecordError whatever strict says. The GIL
  // guards the verdicts.
  void reportColumns(const std::vector<std::string> &columns, bool table) {
    std::unique_ptr<host::ColumnCheck> check;  // made for the first column not met before
    std::string faults;
    bool anyRead = false;
    for (const std::string &column : columns) {
      auto verdict = verdicts_.find(column);
      if (verdict == verdicts_.end()) {
        if (check == nullptr) check = std::make_unique<host::ColumnCheck>(pool_->forThisThread()->plausi());
        verdict = verdicts_.emplace(column, host::toUtf8(check->check(column).c_str())).first;
        if (!strict_ && warn_ && !verdict->second.empty() &&
            PyErr_WarnEx(columnWarningType.ptr(), verdict->second.c_str(), 2) != 0) {
          throw py::error_already_set();  // warnings turned into errors
        }
      }
      anyRead = anyRead || verdict->second.empty();
      if (strict_ && !verdict->second.empty()) faults += (faults.empty() ? "" : "\n") + verdict->second;
    }
    // A single record may hold keys of its own alone; a table may not.
    if (table && !columns.empty() && !anyRead) faults += (faults.empty() ? "" : "\n") + host::noColumnRead();
    if (!faults.empty()) raiseRecordError(faults);
  }

  // A ColumnWarning, once per column and checker, for each column of a
  // database source that holds numbers alone where the rules read a text
  // (see host::numberColumnsForTexts).
  void reportNumberColumns(const host::RowSource &rows) {
#ifdef QUOREL_HOST_SQL
    auto *table = dynamic_cast<const host::SqlRowSource *>(&rows);
    if (table == nullptr || !warn_) return;
    for (const std::string &warning : host::numberColumnsForTexts(*table, pool_->forThisThread()->plausi())) {
      if (numberColumnsTold_.insert(warning).second &&
          PyErr_WarnEx(columnWarningType.ptr(), host::toUtf8(warning.c_str()).c_str(), 2) != 0) {
        throw py::error_already_set();  // warnings turned into errors
      }
    }
#else
    static_cast<void>(rows);
#endif
  }

  // The init params given against those a rule file reads: ValueError when
  // strict, else an InitWarning for each it never reads.
  void checkInits() {
    std::string message;
    for (const std::string &unread : host::unreadInits(pool_->settings())) {
      std::string text = host::toUtf8(unread.c_str());
      if (strict_) {
        message += (message.empty() ? "" : "\n") + text;
      } else if (warn_ && PyErr_WarnEx(initWarningType.ptr(), text.c_str(), 2) != 0) {
        throw py::error_already_set();
      }
    }
    if (!message.empty()) throw py::value_error(message);
  }

  // The materials given against those the module queries: ValueError for
  // one missing (or, when strict, one it never queries), MaterialWarning for
  // one it never queries. Then the columns of each table given against its
  // material's fields (see checkMaterialColumns), said the same way.
  void checkMaterials(Plausi *plausi, const py::dict &materials) {
    std::vector<std::string> given;
    for (const auto &item : materials) given.push_back(columnName(item.first, "material name"));
    host::MaterialFindings found =
        host::checkMaterials(plausi, pool_->settings().module, given, "materials={\"NAME\": ...}", strict_);
    // The messages in UTF-8, each after the file it is about, if any.
    std::vector<std::string> errors, warnings;
    auto take = [&errors, &warnings](const host::MaterialFindings &findings, const std::string &file) {
      for (const std::string &error : findings.errors) errors.push_back(file + host::toUtf8(error.c_str()));
      for (const std::string &warning : findings.warnings) warnings.push_back(file + host::toUtf8(warning.c_str()));
    };
    take(found, "");
    // A table's columns only once the materials themselves are right.
    if (errors.empty()) {
      for (const TableColumns &table : tableColumns_) {
        take(host::checkMaterialColumns(plausi, table.material, table.columns, strict_), table.file);
      }
#ifdef QUOREL_HOST_SQL
      for (const DatabaseTable &table : databaseTables_) {
        auto columnFor = [this, &table](FieldDescriptor *field) { return databases_.columnFor(table.material, field); };
        take(host::checkMaterialFields(plausi, table.material, columnFor, strict_), table.where);
      }
#endif
    }
    std::string message;
    for (const std::string &error : errors) message += (message.empty() ? "" : "\n") + error;
    if (!message.empty()) throw py::value_error(message);
    if (!warn_) return;
    for (const std::string &warning : warnings) {
      if (PyErr_WarnEx(materialWarningType.ptr(), warning.c_str(), 2) != 0) throw py::error_already_set();
    }
  }

  // Runs without the GIL and hands the outcome to use(outcome) while the
  // checker that holds its problems is still this thread's: close() on
  // another thread may let it go as soon as it is back. A log is written by
  // one thread at a time.
  template <typename Use>
  void run(SimpleDataRecord *record, host::Outcome *outcome, Use use) {
    std::shared_ptr<host::Checker> checker = pool_->forThisThread();
    std::unique_lock<std::mutex> lock(logMutex_, std::defer_lock);
    if (logger_ != nullptr) lock.lock();
    checker->check(record, outcome);
    use(*outcome);
  }

  // A material from a DataFrame, a CSV file or a database table.
  void addMaterial(const py::handle &key, const py::handle &material, const RuleModule &module) {
    std::string name = columnName(key, "material name");
    std::string shown = "material " + host::toUtf8(name.c_str()) + ": ";
    static Imported frameType("pandas", "DataFrame");
    static Imported pathType("os", "PathLike");
    if (py::isinstance<py::str>(material) && host::SqlSource::names(material.cast<std::string>())) {
      host::SqlSource source = sourceOf(material.cast<std::string>(), shown);
#ifdef QUOREL_HOST_SQL
      std::string message;
      bool added;
      {
        py::gil_scoped_release release;  // connects
        added = databases_.addMaterial(name, source, &message);
      }
      if (!added) raiseDatabaseError(message);  // names the material
      databaseTables_.push_back(
          {name, source.where() + ", table " + (source.table.empty() ? name : source.table) + ": "});
      router_.route(name, &databases_);
      usesDatabases_ = true;
#endif
      return;
    }
    router_.route(name, &tables_);
    if (py::isinstance<py::str>(material) || py::isinstance(material, pathType.get())) {
      std::string file = py::str(py::module_::import("os").attr("fspath")(material)).cast<std::string>();
      std::string message;
      std::unique_ptr<host::CsvRowSource> source;
      {
        py::gil_scoped_release release;
        source = host::CsvRowSource::open(file, &message, encoding_);
      }
      if (source == nullptr) throw py::value_error(shown + message);
      reportEncoding(*source);
      tableColumns_.push_back({name, file + ": ", source->columns()});
      bool loaded;
      {
        py::gil_scoped_release release;
        loaded = tables_.load(name, source.get(), &message);
      }
      if (!loaded) throw py::value_error(shown + message);
      reportEncoding(*source, true);
      return;
    }
    if (!py::isinstance(material, frameType.get())) {
      throw py::type_error(shown + "must be a DataFrame, a CSV path or a connection string");
    }
    TableColumns table{name, "", {}};
    for (const auto &column : material.attr("columns")) table.columns.push_back(columnName(column));
    refuseRepeatedColumns(table.columns, shown);
    std::vector<Column> fields(table.columns.begin(), table.columns.end());
    DateMasks([&module] { return module.checker(); }, name).mark(&fields);
    py::list columns;
    for (const auto &column : material.attr("columns")) {
      columns.append(material.attr("__getitem__")(column).attr("tolist")());
    }
    tableColumns_.push_back(std::move(table));
    std::size_t rows = py::len(material);
    std::vector<std::unique_ptr<SimpleDataRecord>> records;
    for (std::size_t r = 0; r < rows; ++r) {
      auto record = std::make_unique<SimpleDataRecord>();
      for (std::size_t c = 0; c < fields.size(); ++c) {
        try {
          setCell(fields[c], py::reinterpret_borrow<py::list>(columns[c])[r], record.get());
        } catch (const CellError &e) {
          throw py::value_error(shown + "row " + std::to_string(r) + ": " + e.message);
        }
      }
      records.push_back(std::move(record));
    }
    tables_.add(name, std::move(records));
  }

  bool strict_;
  bool warn_;  // ColumnWarning and MaterialWarning are given
  std::size_t jobs_;  // threads that check the rows of one call
  // How CSV files without a byte-order mark are read.
  host::FileEncoding encoding_ = host::FileEncoding::kWindows1252;
  // Why each column met so far names nothing the module reads ("" when it
  // names a field), as a warning's text.
  std::unordered_map<std::string, std::string> verdicts_;
  std::unique_ptr<DateMasks> dates_;  // of the records' fields
  // The warnings of database columns of numbers given so far.
  std::set<std::string> numberColumnsTold_;
  // The columns of each material given as a table, for checkMaterials.
  struct TableColumns {
    std::string material;
    std::string file;  // "FILE: " to go before its messages, or "" for a DataFrame
    std::vector<std::string> columns;
  };
  std::vector<TableColumns> tableColumns_;
  host::TableMaterialAccess tables_;
#ifdef QUOREL_HOST_SQL
  host::SqlMaterialAccess databases_;
  bool usesDatabases_ = false;
  // Each material given as a database table, for checkMaterials.
  struct DatabaseTable {
    std::string material;
    std::string where;  // "DATABASE, table TABLE: " to go before its messages
  };
  std::vector<DatabaseTable> databaseTables_;
#endif
  host::MaterialRouter router_;
  // Declared before the logger, which writes its last line to it.
  std::ofstream logStream_;
  std::string logName_;
  bool logLost_ = false;
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
  ruleErrorType = errors.attr("RuleError");
  materialWarningType = errors.attr("MaterialWarning");
  initWarningType = errors.attr("InitWarning");
  fileEncodingWarningType = errors.attr("FileEncodingWarning");
  ruleFileErrorType = errors.attr("RuleFileError");

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
      .def(py::init<std::optional<std::string>, std::optional<std::string>, std::optional<std::string>, std::string>(),
           py::arg("library_path"), py::arg("module_name"), py::arg("text"), py::arg("name"))
      .def_property_readonly("library_path", &RuleModule::libraryPath)
      .def_property_readonly("module_name", &RuleModule::moduleName)
      .def_property_readonly("_text", &RuleModule::text)
      .def_property_readonly("_text_name", &RuleModule::textName)
      .def("perform_function", &RuleModule::performFunction, py::arg("name"), py::arg("record"))
      .def("check_field", &RuleModule::checkField, py::arg("name"), py::arg("record"))
      .def("close", &RuleModule::close);

  py::class_<Checker>(m, "Checker")
      .def(py::init<const RuleModule &, std::optional<std::string>, std::int32_t, const py::dict &, const py::dict &,
                    std::optional<std::string>, int, bool, const std::string &, bool, int>(),
           py::arg("module"), py::arg("flow"), py::arg("weight_level"), py::arg("materials"), py::arg("init"),
           py::arg("log"), py::arg("log_level"), py::arg("strict"), py::arg("encoding"), py::arg("warn"),
           py::arg("jobs"))
      .def("check", &Checker::check, py::arg("record"))
      .def("_check_columns", &Checker::checkColumns, py::arg("names"), py::arg("chunks"))
      .def("_number_warnings", &Checker::numberWarnings, py::arg("names"), py::arg("types"),
           py::arg("material") = py::none())
      .def("_report_columns", &Checker::reportColumnNames, py::arg("names"))
      .def("_report_source_columns", &Checker::reportSourceColumns, py::arg("source"))
      .def("_check_source", &Checker::checkSource, py::arg("source"), py::arg("offset"), py::arg("limit"),
           py::arg("part") = py::none());
  m.def("_count_rows", &countRows, py::arg("source"));
  m.def("_csv_parts", &csvParts, py::arg("file"), py::arg("block"));
  // Whether a text is a connection string rather than a file's path.
  m.def("_names_database", &quorel::host::SqlSource::names, py::arg("text"));
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
