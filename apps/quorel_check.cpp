// quorel-check: checks the records of a CSV file or a database table with a
// rule module.
//
//   quorel-check [options] LIBRARY MODULE RECORDS
//
// RECORDS is a CSV file, or a table or query of a database
// (sqlite:FILE?table=T, postgresql://...?table=T, ...?query=SELECT...); so
// is a material. --output writes the problems into a database table instead
// of the standard output, one transaction per batch of records.
//
// The header row of a CSV file (a table's column names) names fields by hierarchy text
// (Antrag.Antragsteller.Name, Antrag.Kinder[1].Vorname); a column whose name
// ends in "#" gives an array size (Antrag.Kinder#); an empty cell is an empty
// field. Cells are separated by ';' or ','. Each record is checked with its
// own PlausiContext.
//
// A column that names no field of the module (a misspelt name, an index
// beyond a size the module declares) is reported once on the standard error
// stream as a warning; with --strict it is an input error. A flow that a
// module declaring its flows does not know is refused.
//
// Exit status: 0 when every record is ok, 1 when some record has an error
// (a problem of type 1), 2 for usage, load or input errors (a record that
// could not be read or checked is reported with its line and the others are
// still checked).

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <quorel/quorel.h>

#include "quorel/host/buffered_writer.h"
#include "quorel/host/checker.h"
#include "quorel/host/csv_row_source.h"
#include "quorel/host/encoding.h"
#include "quorel/host/load_error.h"
#include "quorel/host/material_router.h"
#include "quorel/host/ordered_slices.h"
#include "quorel/host/problem_format.h"
#include "quorel/host/record_layout.h"
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
  std::string flow = "Pruefung";
  std::int32_t weightLevel = 1;
  std::vector<std::pair<std::string, std::string>> inits, materials;
  std::string logFile;
  int logLevel = 4;
  bool json = false;
  int jobs = 1;
  bool strict = false;
};

// NAME=VALUE with a name.
std::pair<std::string, std::string> split(const std::string &argument) {
  std::size_t equals = argument.find('=');
  return {argument.substr(0, equals), argument.substr(equals + 1)};
}

const CLI::Validator kNameValue(
    [](std::string &argument) {
      std::size_t equals = argument.find('=');
      return equals == std::string::npos || equals == 0 ? std::string("expected NAME=VALUE") : std::string();
    },
    "NAME=VALUE");

// Parses the command line; false with the usage on the standard error stream
// for a bad one. --help prints the usage and ends the program.
bool parse(int argc, char **argv, Options *options) {
  CLI::App app("Checks the records of a CSV file or database table with a rule module.\n"
               "Exit status: 0 all records ok, 1 some record has an error, 2 usage, load or input error.",
               "quorel-check");
  std::vector<std::string> arguments;
  app.add_option("ARGUMENTS", arguments,
                 "LIBRARY MODULE RECORDS: a shared library, the name of its rule module, the records; or\n"
                 "RULES.qr RECORDS: a rule file and the records. RECORDS is a CSV file, or\n"
                 "sqlite:FILE?table=T, postgresql://...?table=T (or ?query=SELECT...)");
  std::string checkRules;
  app.add_option("--check-rules", checkRules,
                 "only read and check the rule file RULES.qr: exit status 0 when it holds no mistake, else 2");
  app.add_option("--flow", options->flow, "flow to run for each record (refused when the module declares other flows)")
      ->capture_default_str();
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
  app.add_option("--log", options->logFile, "write the log of the runs to FILE");
  app.add_option("--log-level", options->logLevel, "0 off ... 5 trace, 6 debug")->capture_default_str();
  std::string format = "text";
  app.add_option("--format", format, "readable text or JSON Lines; both UTF-8")
      ->check(CLI::IsMember({"text", "json"}))
      ->capture_default_str();
  app.add_option("--output", options->output,
                 "write the problems into a table, sqlite:FILE?table=T or postgresql://...?table=T");
  app.add_option("--jobs", options->jobs, "check records on N threads, output in input order")
      ->check(CLI::Range(1, 1024))
      ->capture_default_str();
  app.add_flag("--strict", options->strict,
               "a column that names no field of the module is an input error, not a warning");
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp &) {
    std::cout << app.help();
    std::exit(0);
  } catch (const CLI::ParseError &e) {
    std::cerr << "quorel-check: " << e.what() << "\n" << app.help();
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
  for (const std::string &init : inits) options->inits.push_back(split(init));
  for (const std::string &material : materials) options->materials.push_back(split(material));
  options->json = format == "json";
  return true;
}

const std::string kNoDatabases = "built without databases (libsqlite3-dev): ";

int fail(const std::string &message) {
  std::cerr << "quorel-check: " << message << "\n";
  return 2;
}

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
constexpr std::size_t kBatch = 4096;

// A slice of rows under way, and what checking them gave, in their order:
// their problems formatted, or as rows of a table. Apart from its
// neighbours, as each belongs to one thread.
struct alignas(64) Slot {
  std::vector<quorel::host::Row> rows = std::vector<quorel::host::Row>(kSlice);
  std::size_t size = 0;  // rows read into it
  std::string text;
#ifdef QUOREL_HOST_SQL
  quorel::host::SqlProblemTable::Rows tableRows;
#endif
};

// Checks rows on its own thread, with a checker of its own, and counts what
// it found. Apart from its neighbours, as it counts per record.
class alignas(64) Worker {
 public:
  // Problems are formatted, or gathered as rows of a table when toTable.
  Worker(const quorel::host::CheckSettings &settings, const quorel::host::RecordLayout &layout,
         const quorel::host::ProblemFormat &format, bool toTable)
      : settings_(settings), layout_(layout), format_(format), toTable_(toTable) {}

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
    for (std::size_t i = 0; i < slot->size; ++i) check(slot->rows[i], slot);
  }

  const quorel::host::Summary &counts() const { return counts_; }

 private:
  void check(const quorel::host::Row &row, Slot *slot) {
    ++counts_.records;
    quorel::SimpleDataRecord record;
    std::string error;
    if (!layout_.fill(row, &record, &error)) {
      ++counts_.failed;
      failure(row.position, error, slot);
      return;
    }
    checker_->check(&record, &outcome_);
    if (outcome_.failed) {
      ++counts_.failed;
      failure(row.position, outcome_.failure(), slot);
    }
#ifdef QUOREL_HOST_SQL
    if (toTable_) quorel::host::SqlProblemTable::appendRecord(row.position, outcome_.problems, &slot->tableRows);
#endif
    if (!toTable_) format_.appendRecord(row.position, outcome_.problems, &slot->text);
    counts_.problems += static_cast<std::int64_t>(outcome_.problems.size());
    counts_.errors += outcome_.errors;
  }

  void failure(std::int64_t position, const std::string &message, Slot *slot) {
#ifdef QUOREL_HOST_SQL
    if (toTable_) return quorel::host::SqlProblemTable::appendFailure(position, message, &slot->tableRows);
#endif
    format_.appendFailure(position, message, &slot->text);
  }

  const quorel::host::CheckSettings &settings_;
  const quorel::host::RecordLayout &layout_;
  const quorel::host::ProblemFormat &format_;
  bool toTable_;
  std::unique_ptr<quorel::host::Checker> checker_;
  quorel::host::Outcome outcome_;
  quorel::host::Summary counts_;
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
  quorel::host::TableMaterialAccess tables;
  quorel::host::MaterialRouter materials;
#ifdef QUOREL_HOST_SQL
  quorel::host::SqlMaterialAccess databases;
  bool useDatabases = false;
#endif
  for (const auto &material : options.materials) {
    if (!quorel::host::SqlSource::names(material.second)) {
      auto source = quorel::host::CsvRowSource::open(material.second, &message);
      if (source == nullptr || !tables.load(material.first, source.get(), &message)) return fail(message);
      materials.route(material.first, &tables);
      continue;
    }
#ifdef QUOREL_HOST_SQL
    quorel::host::SqlSource source;
    if (!quorel::host::SqlSource::parse(material.second, &source, &message) ||
        !databases.addMaterial(material.first, source, &message)) {
      return fail(message);
    }
    materials.route(material.first, &databases);
    useDatabases = true;
#else
    return fail(kNoDatabases + material.second);
#endif
  }
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
        (problemTable = quorel::host::SqlProblemTable::open(target, &message)) == nullptr) {
      return fail(message);
    }
  }
#endif
  if (records == nullptr) records = quorel::host::CsvRowSource::open(options.records, &message);
  if (records == nullptr) return fail(message);

  std::unique_ptr<quorel::Logger> logger;
  if (!options.logFile.empty()) {
    // One log for all threads would mix their lines.
    if (options.jobs > 1) return fail("--log works with --jobs 1 only");
    logger = std::make_unique<quorel::Logger>(options.logFile.c_str(), static_cast<quorel::LogLevel>(options.logLevel));
  }
  quorel::host::CheckSettings settings;
  settings.library = options.library;
  settings.module = rules != nullptr ? rules->name() : options.module;
  settings.rules = rules;
  settings.flow = options.flow;
  settings.weightLevel = options.weightLevel;
  settings.materials = &materials;
  settings.logger = logger.get();
  for (const auto &init : options.inits) settings.inits.emplace_back(init.first, initValue(init.second));
#ifdef QUOREL_HOST_SQL
  if (useDatabases) settings.afterRun = [&databases] { databases.releaseRecords(); };
#endif

  quorel::host::RecordLayout layout(records->columns());
  auto format = quorel::host::ProblemFormat::create(options.json ? "json" : "text");
  std::vector<std::unique_ptr<Worker>> workers;
  for (int i = 0; i < options.jobs; ++i) {
    workers.push_back(std::make_unique<Worker>(settings, layout, *format, !options.output.empty()));
    if (!workers.back()->start(&message)) return fail(message);
  }
  message = workers[0]->checker().checkFlow();
  if (!message.empty()) return fail(quorel::host::toUtf8(message.c_str()));
  // Cells of a column that names no field would be lost without a word.
  std::vector<std::string> columnFaults = layout.checkColumns(workers[0]->checker().plausi());
  for (const std::string &fault : columnFaults) {
    std::cerr << "quorel-check: " << (options.strict ? "" : "warning: ") << quorel::host::toUtf8(fault.c_str())
              << "\n";
  }
  if (options.strict && !columnFaults.empty()) return 2;

  quorel::host::BufferedWriter out(STDOUT_FILENO);
  bool progress = options.jobs > 1 && isatty(STDERR_FILENO);
  std::int64_t checked = 0;
  // A few slices per worker are under way, so that none waits for a slot
  // while a slower slice is still due to be written.
  constexpr std::size_t kSlotsPerWorker = 4;
  std::vector<Slot> slots(kSlotsPerWorker * workers.size());
#ifdef QUOREL_HOST_SQL
  std::vector<quorel::host::SqlProblemTable::Rows> pending;
  std::size_t pendingRecords = 0;
  auto writeTable = [&] {
    std::vector<const quorel::host::SqlProblemTable::Rows *> parts;
    for (const auto &part : pending) parts.push_back(&part);
    bool written = problemTable->write(parts, &message);
    pending.clear();
    pendingRecords = 0;
    return written;
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
      if (pendingRecords >= kBatch && !writeTable()) return false;
    }
#endif
    out.write(slot.text);
    checked += static_cast<std::int64_t>(slot.size);
    if (progress && checked % kBatch == 0) std::cerr << "\r" << checked << " records checked" << std::flush;
    return true;
  };
  if (!quorel::host::OrderedSlices::run(workers.size(), kSlotsPerWorker, steps)) return fail(message);
#ifdef QUOREL_HOST_SQL
  if (problemTable != nullptr && !writeTable()) return fail(message);
#endif
  if (progress) std::cerr << "\r" << checked << " records checked\n";
  quorel::host::Summary summary;
  for (const auto &worker : workers) {
    summary.records += worker->counts().records;
    summary.failed += worker->counts().failed;
    summary.problems += worker->counts().problems;
    summary.errors += worker->counts().errors;
  }
  std::string last;
  format->appendSummary(summary, &last);
  out.write(last);
  workers.clear();
  logger.reset();
  if (!out.flush()) return fail("cannot write the output");
  if (summary.failed > 0) return 2;
  return summary.errors > 0 ? 1 : 0;
}
