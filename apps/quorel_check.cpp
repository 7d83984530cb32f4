// quorel-check: checks the records of a CSV file or a database table with a
// rule module.
//
//   quorel-check [options] LIBRARY MODULE RECORDS
//
// RECORDS is a CSV file ("-" for the standard input), or a table or query
// of a database (sqlite:FILE?table=T, postgresql://...?table=T,
// ...?query=SELECT...); so is a material, except "-". --output writes the
// problems into a database table instead of the standard output, one
// transaction per batch of records.
//
// The header row of a CSV file (a table's column names) names fields by hierarchy text
// (Antrag.Antragsteller.Name, Antrag.Kinder[1].Vorname); a column whose name
// ends in "#" gives an array size (Antrag.Kinder#); an empty cell is an empty
// field. Cells are separated by ';' or ','. Each record is checked with its
// own PlausiContext.
//
// Mistakes of the user's are named once, before any record is checked. A
// column whose cells would never be read (a misspelt name, an index beyond a
// size the module declares, an element without its array's size column), the
// same in a material's file, and a material given that the module does not
// query are warnings on the standard error stream; with --strict they are
// input errors; so is a file whose start says that it is in another encoding
// than it is read in (UTF-8 read as Windows-1252, or the other way round). A
// column given twice, a header of which no column names a field, a material
// the module queries that is not given or one given twice, a material's file
// of which no column names a field of the material, and a flow the module
// does not run are refused; without --flow
// the module's first declared flow runs. A database column of numbers whose
// field the rules read as text (a postcode stored as INTEGER, its leading
// zeros gone) is a warning whatever --strict says: the data is as it is.
//
// Every record is checked or reported as not checked with its place and the
// reason; the text output ends with the problems per id and the counts. On a
// terminal the standard error stream shows the progress of the run.
//
// Exit status: 0 when every record is ok, 1 when some record has an error
// (a problem of type 1), 2 for usage, load or input errors (a record that
// could not be read or checked is reported with its line and the others are
// still checked).

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fstream>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <quorel/quorel.h>

#include "quorel/host/buffered_writer.h"
#include "quorel/host/checker.h"
#include "quorel/host/column_check.h"
#include "quorel/host/csv_row_source.h"
#include "quorel/host/encoding.h"
#include "quorel/host/file_error.h"
#include "quorel/host/load_error.h"
#include "quorel/host/material_check.h"
#include "quorel/host/material_router.h"
#include "quorel/host/ordered_slices.h"
#include "quorel/host/problem_format.h"
#include "quorel/host/record_layout.h"
#include "quorel/host/row_record.h"
#include "quorel/host/sql/sql_source.h"
#include "quorel/host/table_material_access.h"
#ifdef QUOREL_HOST_SQL
#include "quorel/host/sql/sql_material_access.h"
#include "quorel/host/sql/sql_problem_table.h"
#include "quorel/host/sql/sql_row_source.h"
#endif

namespace {

struct Options {
  std::string library, module, records, output;
  std::string rules;  // a rule file in place of library and module
  bool checkRulesOnly = false;
  std::optional<std::string> flow;  // the module's default when not given
  std::int32_t weightLevel = 1;
  std::vector<std::pair<std::string, std::string>> inits, materials;
  std::string logFile;
  int logLevel = 4;
  bool json = false;
  int jobs = 1;
  bool strict = false;
  bool replace = false;  // --output-mode replace
  std::string encoding = "windows-1252";
};

// NAME=VALUE with a name.
std::pair<std::string, std::string> split(const std::string &argument) {
  std::size_t equals = argument.find('=');
  return {argument.substr(0, equals), argument.substr(equals + 1)};
}

// A text of the command line as the library reads it: UTF-8, as terminals
// and scripts write it, becomes Windows-1252, and other bytes are taken as
// Windows-1252 already, as those of a rule file are. False, with a message,
// for a character that Windows-1252 lacks.
bool toLibraryText(const std::string &option, std::string *text, std::string *message) {
  std::string converted;
  std::size_t offset;
  if (quorel::host::fromUtf8(*text, &converted, &offset)) {
    *text = converted;
    return true;
  }
  std::size_t beyondAscii;
  if (quorel::host::utf8Fault(*text, &beyondAscii) != std::string::npos) return true;
  *message = option + " " + *text + ": the character at byte " + std::to_string(offset) +
             " is not in Windows-1252, the encoding of the rules' texts";
  return false;
}

const CLI::Validator kNameValue(
    [](std::string &argument) {
      std::size_t equals = argument.find('=');
      return equals == std::string::npos || equals == 0 ? std::string("expected NAME=VALUE") : std::string();
    },
    "NAME=VALUE");

// An empty name would mean no log or table at all, without a word.
const CLI::Validator kNotEmpty(
    [](std::string &argument) {
      return argument.empty() ? std::string("expected a name, not an empty text") : std::string();
    },
    "");

// Parses the command line; false with the usage on the standard error stream
// for a bad one. --help prints the usage and ends the program.
bool parse(int argc, char **argv, Options *options) {
  CLI::App app("Checks the records of a CSV file or database table with a rule module.\n"
               "Exit status: 0 all records ok, 1 some record has an error, 2 usage, load or input error.",
               "quorel-check");
  std::vector<std::string> arguments;
  app.add_option("ARGUMENTS", arguments,
                 "LIBRARY MODULE RECORDS: a shared library, the name of its rule module, the records; or\n"
                 "RULES.qr RECORDS: a rule file and the records. RECORDS is a CSV file (- for the standard\n"
                 "input), or sqlite:FILE?table=T, postgresql://...?table=T (or ?query=SELECT...)");
  std::string checkRules;
  app.add_option("--check-rules", checkRules,
                 "only read and check the rule file RULES.qr: exit status 0 when it holds no mistake, else 2");
  std::string flow;
  CLI::Option *flowOption = app.add_option(
      "--flow", flow, "flow to run for each record (default: the first flow the module declares)");
  app.add_option("--weight-level", options->weightLevel, "problem weight level handed to the rules")
      ->capture_default_str();
  std::vector<std::string> inits, materials;
  app.add_option("--init", inits, "init parameter, a number if it reads as one (repeatable)")
      ->check(kNameValue)
      ->allow_extra_args(false);
  app.add_option("--material", materials,
                 "a material, NAME=FILE.csv or NAME=sqlite:FILE?table=T or NAME=postgresql://...?table=T (repeatable)")
      ->check(kNameValue)
      ->allow_extra_args(false);
  app.add_option("--log", options->logFile, "write the log of the runs to FILE")->check(kNotEmpty);
  app.add_option("--log-level", options->logLevel, "0 off, 1 fatal, 2 error, 3 warn, 4 info, 5 trace, 6 debug")
      ->check(CLI::Range(0, 6))
      ->capture_default_str();
  std::string format = "text";
  app.add_option("--format", format, "readable text or JSON Lines; both UTF-8")
      ->check(CLI::IsMember({"text", "json"}))
      ->capture_default_str();
  app.add_option("--output", options->output,
                 "write the problems into a table, sqlite:FILE?table=T or postgresql://...?table=T")
      ->check(kNotEmpty);
  std::string mode = "append";
  CLI::Option *modeOption = app.add_option("--output-mode", mode,
                 "append: add this run's rows to the table's; replace: the rows of earlier runs go (each row "
                 "carries its run's id and start time)")
      ->check(CLI::IsMember({"append", "replace"}))
      ->capture_default_str();
  app.add_option("--encoding", options->encoding,
                 "encoding of CSV files without a byte-order mark (one with a UTF-8 mark is read as UTF-8)")
      ->check(CLI::IsMember({"windows-1252", "utf-8"}))
      ->capture_default_str();
  app.add_option("--jobs", options->jobs, "check records on N threads, output in input order")
      ->check(CLI::Range(1, 1024))
      ->capture_default_str();
  app.add_flag("--strict", options->strict,
               "a column whose cells would never be read (of the records or a material), a material the module "
               "does not query, a database material's field without a column, an init parameter that a rule file "
               "never reads, or a file that looks like another encoding than it is read in, is an input error, "
               "not a warning");
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp &) {
    std::cout << app.help();
    std::exit(0);
  } catch (const CLI::ParseError &e) {
    std::cerr << "quorel-check: " << quorel::host::withoutPasswords(e.what()) << "\n" << app.help();
    return false;
  }
  std::string usage;
  if (!checkRules.empty()) {
    options->rules = checkRules;
    options->checkRulesOnly = true;
    if (!arguments.empty()) usage = "--check-rules takes no further arguments";
  } else if (!arguments.empty() && quorel::host::isRuleFile(arguments[0])) {
    if (arguments.size() != 2) usage = "a rule file is followed by the records alone: RULES.qr RECORDS";
    options->rules = arguments[0];
    options->records = arguments.back();
  } else if (arguments.size() == 3) {
    options->library = arguments[0];
    options->module = arguments[1];
    options->records = arguments[2];
  } else {
    usage = "expected LIBRARY MODULE RECORDS, or RULES.qr RECORDS";
  }
  if (!usage.empty()) {
    std::cerr << "quorel-check: " << usage << "\n" << app.help();
    return false;
  }
  // As other tools take it: the records come down a pipe. Typed on a
  // terminal they would make a run that waits without a word.
  if (options->records == "-") {
    if (isatty(STDIN_FILENO) != 0) {
      std::cerr << "quorel-check: - reads the records from the standard input, which is a terminal: pipe them in "
                   "(... | quorel-check ... -) or name their file\n";
      return false;
    }
    options->records = "/dev/stdin";
  }
  // Names and values that the rules compare with their own texts.
  for (const std::string &init : inits) {
    options->inits.push_back(split(init));
    if (!toLibraryText("--init", &options->inits.back().first, &usage) ||
        !toLibraryText("--init", &options->inits.back().second, &usage)) {
      break;
    }
  }
  for (const std::string &material : materials) {
    options->materials.push_back(split(material));
    if (!toLibraryText("--material", &options->materials.back().first, &usage)) break;
  }
  if (flowOption->count() > 0 && toLibraryText("--flow", &flow, &usage)) options->flow = flow;
  if (!usage.empty()) {
    std::cerr << "quorel-check: " << usage << "\n";
    return false;
  }
  options->json = format == "json";
  options->replace = mode == "replace";
  if (modeOption->count() > 0 && options->output.empty()) {
    std::cerr << "quorel-check: --output-mode is for a table of problems: add --output\n";
    return false;
  }
  return true;
}

const std::string kNoDatabases = "built without databases (libsqlite3-dev): ";

// Messages may quote a connection string: its password stays out.
int fail(const std::string &message) {
  std::cerr << "quorel-check: " << quorel::host::withoutPasswords(message) << "\n";
  return 2;
}

// How a user chooses another encoding, for host::encodingAdvice.
constexpr char kChooseEncoding[] = "--encoding ENCODING";

// Lines after the first of a message, indented under it.
std::string indent(std::string lines) {
  for (std::size_t at = lines.find('\n'); at != std::string::npos; at = lines.find('\n', at + 1)) {
    lines.insert(at + 1, "  ");
  }
  return lines;
}

// An init parameter: a number when the text reads as a German number.
std::shared_ptr<quorel::Value> initValue(const std::string &text) {
  try {
    quorel::Util::stringToReal(text.c_str(), nullptr);
    return std::make_shared<quorel::NumberValue>(text.c_str());
  } catch (const quorel::PlausiException &) {
    return std::make_shared<quorel::StringValue>(text.c_str());
  }
}

// Rows are read, checked and written a slice at a time, so memory stays
// flat however long the input is; a slice is short enough that workers
// share the end of the input evenly. Problems go into a database table in
// batches, each in one transaction.
constexpr std::size_t kSlice = 512;
#ifdef QUOREL_HOST_SQL
constexpr std::size_t kBatch = 4096;
#endif

// A slice of rows under way, and what checking them gave, in their order:
// their problems formatted, or as rows of a table. Apart from its
// neighbours, as each belongs to one thread.
struct alignas(64) Slot {
  std::vector<quorel::host::Row> rows = std::vector<quorel::host::Row>(kSlice);
  std::size_t size = 0;  // rows read into it
  std::string text;
  std::int64_t problems = 0;  // found in its rows
#ifdef QUOREL_HOST_SQL
  quorel::host::SqlProblemTable::Rows tableRows;
#endif
};

#ifdef QUOREL_HOST_SQL
using ProblemTable = quorel::host::SqlProblemTable;
#else
struct ProblemTable;  // never made without databases
#endif

// Checks rows on its own thread, with a checker of its own, and counts what
// it found. Apart from its neighbours, as it counts per record.
class alignas(64) Worker {
 public:
  // Problems are formatted, or gathered as rows of the table when there is
  // one.
  Worker(const quorel::host::CheckSettings &settings, const quorel::host::RecordLayout &layout,
         const quorel::host::ProblemFormat &format, const ProblemTable *table)
      : settings_(settings), layout_(layout), format_(format), table_(table) {}

  // Loads the module; the message of the failure otherwise.
  bool start(std::string *message) {
    try {
      checker_ = std::make_unique<quorel::host::Checker>(settings_);
      return true;
    } catch (const quorel::host::LoadError &e) {
      *message = "cannot load module " + settings_.module + " (type " + std::to_string(e.getType()) +
                 "): " + quorel::host::toUtf8(e.getMessage()) + "\n  " + indent(e.detail());
      return false;
    }
  }

  const quorel::host::Checker &checker() const { return *checker_; }

  // Checks the slot's rows into its text or table rows, and counts().
  void run(Slot *slot) {
    slot->text.clear();
#ifdef QUOREL_HOST_SQL
    slot->tableRows.clear();
#endif
    std::int64_t before = counts_.problems;
    for (std::size_t i = 0; i < slot->size; ++i) check(slot->rows[i], slot);
    slot->problems = counts_.problems - before;
  }

  const quorel::host::Summary &counts() const { return counts_; }

 private:
  void check(const quorel::host::Row &row, Slot *slot) {
    quorel::SimpleDataRecord *record = quorel::host::renewedRecord(&record_);
    if (!layout_.fill(row, record, &error_)) {
      counts_.count(0, 0, false);
      failure(row.place, error_, slot);
      return;
    }
    checker_->check(record, &outcome_);
    if (outcome_.failed) failure(row.place, outcome_.failure(), slot);
#ifdef QUOREL_HOST_SQL
    if (table_ != nullptr) {
      quorel::host::collectProblems(outcome_.problems, &problems_);
      table_->appendRecord(row.place, problems_, &slot->tableRows);
    }
#endif
    if (table_ == nullptr) format_.appendRecord(row.place, outcome_.problems, &slot->text);
    counts_.add(outcome_.problems, outcome_.errors, !outcome_.failed);
  }

  void failure(const quorel::host::Place &place, const std::string &message, Slot *slot) {
#ifdef QUOREL_HOST_SQL
    if (table_ != nullptr) return table_->appendFailure(place, message, &slot->tableRows);
#endif
    format_.appendFailure(place, message, &slot->text);
  }

  const quorel::host::CheckSettings &settings_;
  const quorel::host::RecordLayout &layout_;
  const quorel::host::ProblemFormat &format_;
  const ProblemTable *table_;
  std::unique_ptr<quorel::host::Checker> checker_;
  // Filled row after row.
  std::unique_ptr<quorel::SimpleDataRecord> record_;
  std::string error_;
  quorel::host::Outcome outcome_;
#ifdef QUOREL_HOST_SQL
  std::vector<quorel::host::Problem> problems_;  // copies for a table's rows
#endif
  quorel::host::Summary counts_;
};

// The progress of a long run on a terminal, on one line of the standard
// error stream: records done, records per second, problems so far. Redrawn
// at most a few times a second; nothing when the stream is no terminal.
class Progress {
 public:
  explicit Progress(bool shown) : shown_(shown), start_(Clock::now()), drawn_(start_ - kEvery) {}

  void add(std::int64_t records, std::int64_t problems) {
    records_ += records;
    problems_ += problems;
    if (!shown_) return;
    Clock::time_point now = Clock::now();
    if (now - drawn_ < kEvery) return;
    drawn_ = now;
    double seconds = std::chrono::duration<double>(now - start_).count();
    std::cerr << "\r" << records_ << " records, "
              << static_cast<std::int64_t>(seconds > 0.001 ? static_cast<double>(records_) / seconds : 0.0)
              << " records/s, " << problems_ << " problems so far" << std::flush;
    drawnOnce_ = true;
  }

  // Clears the line, so that what follows starts on a clean one.
  void finish() {
    if (drawnOnce_) std::cerr << "\r\033[K" << std::flush;
    drawnOnce_ = false;
  }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds kEvery{250};
  bool shown_;
  bool drawnOnce_ = false;
  Clock::time_point start_, drawn_;
  std::int64_t records_ = 0, problems_ = 0;
};

// Writes the advice on the encoding as a warning; false with it as the
// message when strict. Empty advice says nothing.
bool warned(const std::string &advice, bool strict, std::string *message) {
  if (advice.empty()) return true;
  if (strict) {
    *message = advice;
    return false;
  }
  std::cerr << "quorel-check: warning: " << advice << "\n";
  return true;
}

// The materials of the run: CSV files in memory, database tables queried
// where they lie, each routed by its name.
class Materials {
 public:
  // Loads (or opens) the material; false with a message. The encoding and
  // the columns of a file are checked first (see host::encodingAdvice and
  // checkMaterialColumns): warnings are written here, errors make the
  // message.
  bool add(const std::string &name, const std::string &where, quorel::host::FileEncoding encoding,
           quorel::Plausi *plausi, bool strict, std::string *message) {
    if (!quorel::host::SqlSource::names(where)) {
      auto source = quorel::host::CsvRowSource::open(where, message, encoding);
      if (source == nullptr) return false;
      if (!warned(quorel::host::encodingAdvice(*source, kChooseEncoding), strict, message)) return false;
      if (!said(quorel::host::checkMaterialColumns(plausi, name, source->columns(), strict), where, message)) {
        return false;
      }
      if (!tables_.load(name, source.get(), message)) return false;
      if (!warned(quorel::host::lateEncodingAdvice(*source, kChooseEncoding), strict, message)) return false;
      router_.route(name, &tables_);
      return true;
    }
#ifdef QUOREL_HOST_SQL
    quorel::host::SqlSource source;
    if (!quorel::host::SqlSource::parse(where, &source, message) || !databases_.addMaterial(name, source, message)) {
      return false;
    }
    auto columnFor = [this, &name](quorel::FieldDescriptor *field) { return databases_.columnFor(name, field); };
    std::string table = source.where() + ", table " + (source.table.empty() ? name : source.table);
    if (!said(quorel::host::checkMaterialFields(plausi, name, columnFor, strict), table, message)) {
      return false;
    }
    router_.route(name, &databases_);
    useDatabases_ = true;
    return true;
#else
    *message = kNoDatabases + where;
    return false;
#endif
  }

  quorel::MaterialAccess *access() { return &router_; }
  // What a run's thread does once its run is over: database materials
  // release the records they made.
  std::function<void()> afterRun() {
#ifdef QUOREL_HOST_SQL
    if (useDatabases_) return [this] { databases_.releaseRecords(); };
#endif
    return nullptr;
  }

 private:
  // Writes the warnings of a check at start-up; false with the errors as the
  // message when there are any. where names the table (UTF-8).
  static bool said(const quorel::host::MaterialFindings &findings, const std::string &where, std::string *message) {
    for (const std::string &warning : findings.warnings) {
      std::cerr << "quorel-check: warning: " << where << ": " << quorel::host::toUtf8(warning.c_str()) << "\n";
    }
    if (findings.errors.empty()) return true;
    message->clear();
    for (const std::string &error : findings.errors) {
      *message += (message->empty() ? "" : "\nquorel-check: ") + where + ": " + quorel::host::toUtf8(error.c_str());
    }
    return false;
  }

  quorel::host::TableMaterialAccess tables_;
  quorel::host::MaterialRouter router_;
#ifdef QUOREL_HOST_SQL
  quorel::host::SqlMaterialAccess databases_;
  bool useDatabases_ = false;
#endif
};

}  // namespace

int main(int argc, char **argv) {
  Options options;
  if (!parse(argc, argv, &options)) return 2;
  std::string message;
  std::shared_ptr<const quorel::lang::RuleSet> rules;
  if (!options.rules.empty()) {
    // Every mistake of the file, before any record is read.
    rules = quorel::host::readRules(options.rules, &message);
    if (rules == nullptr) {
      std::cerr << message;
      return 2;
    }
    if (options.checkRulesOnly) return 0;
  }
  Materials materials;
  std::unique_ptr<quorel::host::RowSource> records;
  if (!options.output.empty() && !quorel::host::SqlSource::names(options.output)) {
    return fail("--output takes a table, sqlite:FILE?table=T or postgresql://...?table=T: " + options.output);
  }
#ifndef QUOREL_HOST_SQL
  for (const std::string *target : {&options.records, &options.output}) {
    if (quorel::host::SqlSource::names(*target)) return fail(kNoDatabases + *target);
  }
#endif
#ifdef QUOREL_HOST_SQL
  quorel::host::SqlSource recordTable;
  if (quorel::host::SqlSource::names(options.records)) {
    if (!quorel::host::SqlSource::parse(options.records, &recordTable, &message) ||
        (records = quorel::host::SqlRowSource::open(recordTable, &message)) == nullptr) {
      return fail(message);
    }
  }
  std::unique_ptr<quorel::host::SqlProblemTable> problemTable;
  if (!options.output.empty()) {
    quorel::host::SqlSource target;
    if (!quorel::host::SqlSource::parse(options.output, &target, &message) ||
        (problemTable = quorel::host::SqlProblemTable::open(target, options.replace, &message)) == nullptr ||
        (records != nullptr && !problemTable->readableAlongside(recordTable, &message))) {
      return fail(message);
    }
  }
#endif
  quorel::host::FileEncoding encoding = quorel::host::FileEncoding::kWindows1252;
  quorel::host::parseEncoding(options.encoding, &encoding);  // one of the names --encoding takes
  if (records == nullptr) records = quorel::host::CsvRowSource::open(options.records, &message, encoding);
  if (records == nullptr) return fail(message);

  // The stream is ours, not the logger's: a logger's output vanishes without
  // a word when its file cannot be opened or written.
  std::ofstream logStream;
  std::unique_ptr<quorel::Logger> logger;
  if (!options.logFile.empty()) {
    // One log for all threads would mix their lines.
    if (options.jobs > 1) return fail("--log works with --jobs 1 only");
    errno = 0;
    logStream.open(options.logFile, std::ios::binary | std::ios::trunc);
    if (!logStream) return fail(quorel::host::fileError("write the log", options.logFile, std::strerror(errno)));
    logger = std::make_unique<quorel::Logger>(&logStream, static_cast<quorel::LogLevel>(options.logLevel));
  }
  quorel::host::CheckSettings settings;
  settings.library = options.library;
  settings.module = rules != nullptr ? rules->name() : options.module;
  settings.rules = rules;
  settings.flow = options.flow;
  settings.weightLevel = options.weightLevel;
  settings.materials = materials.access();
  settings.logger = logger.get();
  for (const auto &init : options.inits) settings.inits.emplace_back(init.first, initValue(init.second));
  std::string repeatedInit = quorel::host::repeatedInit(settings);
  if (!repeatedInit.empty()) return fail(quorel::host::toUtf8(repeatedInit.c_str()));

  if (!warned(quorel::host::encodingAdvice(*records, kChooseEncoding), options.strict, &message)) {
    return fail(message);
  }
  quorel::host::RecordLayout layout(records->columns());
  // A record keeps one cell per name: the others would be lost.
  std::vector<std::string> repeated = layout.repeatedColumns();
  for (const std::string &column : repeated) {
    std::cerr << "quorel-check: " << records->name() << ": " << quorel::host::toUtf8(column.c_str()) << "\n";
  }
  if (!repeated.empty()) return 2;
  auto format = quorel::host::ProblemFormat::create(options.json ? "json" : "text");
  std::vector<std::unique_ptr<Worker>> workers;
  for (int i = 0; i < options.jobs; ++i) {
#ifdef QUOREL_HOST_SQL
    const ProblemTable *table = problemTable.get();
#else
    const ProblemTable *table = nullptr;
#endif
    workers.push_back(std::make_unique<Worker>(settings, layout, *format, table));
    if (!workers.back()->start(&message)) return fail(message);
  }
  message = workers[0]->checker().checkFlow("--flow NAME");
  if (!message.empty()) return fail(quorel::host::toUtf8(message.c_str()));
  std::vector<std::string> unread = quorel::host::unreadInits(settings);
  for (const std::string &init : unread) {
    std::cerr << "quorel-check: " << (options.strict ? "" : "warning: ") << quorel::host::toUtf8(init.c_str()) << "\n";
  }
  if (!unread.empty() && options.strict) return 2;
  std::vector<std::string> given;
  for (const auto &material : options.materials) given.push_back(material.first);
  quorel::host::MaterialFindings findings = quorel::host::checkMaterials(
      workers[0]->checker().plausi(), settings.module, given, "--material NAME=FILE", options.strict);
  for (const std::string &warning : findings.warnings) {
    std::cerr << "quorel-check: warning: " << quorel::host::toUtf8(warning.c_str()) << "\n";
  }
  for (const std::string &error : findings.errors) {
    std::cerr << "quorel-check: " << quorel::host::toUtf8(error.c_str()) << "\n";
  }
  if (!findings.errors.empty()) return 2;
  for (const auto &material : options.materials) {
    if (!materials.add(material.first, material.second, encoding, workers[0]->checker().plausi(), options.strict,
                       &message)) {
      return fail(message);
    }
  }
  // Set only now that the materials are known.
  settings.afterRun = materials.afterRun();
  // Cells of a column that names no field would be lost without a word.
  std::vector<std::string> columnFaults = layout.checkColumns(workers[0]->checker().plausi());
  for (const std::string &fault : columnFaults) {
    std::cerr << "quorel-check: " << (options.strict ? "" : "warning: ") << quorel::host::toUtf8(fault.c_str())
              << "\n";
  }
  if (!columnFaults.empty() && columnFaults.size() == layout.distinctColumns()) {
    return fail(records->name() + ": " + quorel::host::noColumnRead());
  }
  if (options.strict && !columnFaults.empty()) return 2;
#ifdef QUOREL_HOST_SQL
  if (auto *table = dynamic_cast<quorel::host::SqlRowSource *>(records.get())) {
    for (const std::string &warning : quorel::host::numberColumnsForTexts(*table, workers[0]->checker().plausi())) {
      std::cerr << "quorel-check: warning: " << quorel::host::toUtf8(warning.c_str()) << "\n";
    }
    table->giveDatesAsFieldsHoldThem(workers[0]->checker().plausi());
  }
#endif

  quorel::host::BufferedWriter out(STDOUT_FILENO);
  // Problems on the same terminal would break into the progress line.
  bool toTable = !options.output.empty();
  Progress progress(isatty(STDERR_FILENO) != 0 && (toTable || isatty(STDOUT_FILENO) == 0));
  constexpr std::size_t kSlotsPerWorker = quorel::host::OrderedSlices::kSlotsPerThread;
  std::vector<Slot> slots(kSlotsPerWorker * workers.size());
#ifdef QUOREL_HOST_SQL
  std::vector<quorel::host::SqlProblemTable::Rows> pending;
  std::size_t pendingRecords = 0;
  quorel::host::Place lastPending, lastCommitted;
  auto writeTable = [&] {
    std::vector<const quorel::host::SqlProblemTable::Rows *> parts;
    for (const auto &part : pending) parts.push_back(&part);
    bool written = problemTable->write(parts, &message);
    pending.clear();
    pendingRecords = 0;
    if (written) lastCommitted = lastPending;
    return written;
  };
  // A run that fails midway says what of it the table holds.
  auto failTable = [&] {
    progress.finish();
    std::string committed =
        lastCommitted.record == 0
            ? "none of its problems are"
            : "the problems of records 1 to " + std::to_string(lastCommitted.record) +
                  (lastCommitted.line > 0 ? " (to line " + std::to_string(lastCommitted.line) + ")" : "") + " are";
    return fail(message + "\n  run " + problemTable->run() + ": " + committed + " in " + problemTable->where() +
                ", those of later records are not");
  };
#endif
  quorel::host::OrderedSlices::Steps steps;
  steps.fill = [&](std::size_t s) {
    Slot &slot = slots[s];
    for (slot.size = 0; slot.size < kSlice && records->next(&slot.rows[slot.size]);) ++slot.size;
    return slot.size == kSlice;
  };
  steps.work = [&](std::size_t worker, std::size_t s) { workers[worker]->run(&slots[s]); };
  steps.handOn = [&](std::size_t s) {
    Slot &slot = slots[s];
#ifdef QUOREL_HOST_SQL
    if (problemTable != nullptr) {
      pending.push_back(std::move(slot.tableRows));
      pendingRecords += slot.size;
      if (slot.size > 0) lastPending = slot.rows[slot.size - 1].place;
      if (pendingRecords >= kBatch && !writeTable()) return false;
    }
#endif
    out.write(slot.text);
    progress.add(static_cast<std::int64_t>(slot.size), slot.problems);
    return true;
  };
  bool ran = quorel::host::OrderedSlices::run(workers.size(), kSlotsPerWorker, steps);
#ifdef QUOREL_HOST_SQL
  if (problemTable != nullptr && (!ran || !writeTable())) return failTable();
#endif
  if (!ran) return fail(message);
  progress.finish();
  // The failure is the last record's row too; said here, it is not missed.
  if (records->failed()) {
    std::cerr << "quorel-check: " << records->name() << " could not be read to its end; the last record reported says why\n";
  }
  // Known only now for a pipe, which could not be looked at ahead (see
  // CsvRowSource::open).
  std::string lateAdvice = quorel::host::lateEncodingAdvice(*records, kChooseEncoding);
  if (!lateAdvice.empty()) std::cerr << "quorel-check: " << (options.strict ? "" : "warning: ") << lateAdvice << "\n";
  quorel::host::Summary summary;
  for (const auto &worker : workers) summary.merge(worker->counts());
  std::string last;
  format->appendSummary(summary, &last);
  out.write(last);
  workers.clear();
  logger.reset();
  if (!out.flush()) return fail("cannot write the output");
  if (logStream.is_open() && !logStream.flush()) {
    // The problems are all out; the log stops short (the disk is full, say).
    return fail(quorel::host::fileError("write the log", options.logFile, "it stops short of the run's end"));
  }
  if (summary.notChecked > 0 || (options.strict && !lateAdvice.empty())) return 2;
  return summary.errors > 0 ? 1 : 0;
}
