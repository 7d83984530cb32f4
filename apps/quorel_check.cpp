// quorel-check: checks the records of a CSV file with a rule module.
//
//   quorel-check [options] LIBRARY MODULE RECORDS.csv
//
// The header row of RECORDS.csv names fields by hierarchy text
// (Antrag.Antragsteller.Name, Antrag.Kinder[1].Vorname); a column whose name
// ends in "#" gives an array size (Antrag.Kinder#); an empty cell is an empty
// field. Cells are separated by ';' or ','. Each record is checked with its
// own PlausiContext.
//
// Exit status: 0 when every record is ok, 1 when some record has an error
// (a problem of type 1), 2 for usage, load or input errors (a record that
// could not be read or checked is reported with its line and the others are
// still checked).

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <CLI/CLI.hpp>
#include <quorel/quorel.h>

#include "quorel/host/csv_material_access.h"
#include "quorel/host/csv_reader.h"
#include "quorel/host/problem_printer.h"

namespace {

struct Options {
  std::string library, module, records;
  std::string flow = "Pruefung";
  std::int32_t weightLevel = 1;
  std::vector<std::pair<std::string, std::string>> inits, materials;
  std::string logFile;
  int logLevel = 4;
  bool json = false;
  int jobs = 1;
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
  CLI::App app("Checks the records of a CSV file with a rule module.\n"
               "Exit status: 0 all records ok, 1 some record has an error, 2 usage, load or input error.",
               "quorel-check");
  app.add_option("LIBRARY", options->library, "shared library of the rule module")->required();
  app.add_option("MODULE", options->module, "name of the rule module")->required();
  app.add_option("RECORDS", options->records, "CSV file of the records")->required();
  app.add_option("--flow", options->flow, "flow to run for each record")->capture_default_str();
  app.add_option("--weight-level", options->weightLevel, "problem weight level handed to the rules")
      ->capture_default_str();
  std::vector<std::string> inits, materials;
  app.add_option("--init", inits, "init parameter, a number if it reads as one (repeatable)")
      ->check(kNameValue)
      ->allow_extra_args(false);
  app.add_option("--material", materials, "CSV file of a material, NAME=FILE (repeatable)")
      ->check(kNameValue)
      ->allow_extra_args(false);
  app.add_option("--log", options->logFile, "write the log of the runs to FILE");
  app.add_option("--log-level", options->logLevel, "0 off ... 5 trace, 6 debug")->capture_default_str();
  std::string format = "text";
  app.add_option("--format", format, "readable text or JSON Lines; both UTF-8")
      ->check(CLI::IsMember({"text", "json"}))
      ->capture_default_str();
  app.add_option("--jobs", options->jobs, "check records on N threads, output in input order")
      ->check(CLI::Range(1, 1024))
      ->capture_default_str();
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp &) {
    std::cout << app.help();
    std::exit(0);
  } catch (const CLI::ParseError &e) {
    std::cerr << "quorel-check: " << e.what() << "\n" << app.help();
    return false;
  }
  for (const std::string &init : inits) options->inits.push_back(split(init));
  for (const std::string &material : materials) options->materials.push_back(split(material));
  options->json = format == "json";
  return true;
}

int fail(const std::string &message) {
  std::cerr << "quorel-check: " << message << "\n";
  return 2;
}

// An init parameter: a number when the text reads as a German number.
quorel::Value *initValue(const std::string &text) {
  try {
    quorel::Util::stringToReal(text.c_str(), nullptr);
    return new quorel::NumberValue(text.c_str());
  } catch (const quorel::PlausiException &) {
    return new quorel::StringValue(text.c_str());
  }
}

// One row of the records file as read.
struct Row {
  int line;
  std::vector<std::string> cells;
  std::string error;
};

// What checking one row gave: its printed problems and its counts.
struct Outcome {
  std::string output;
  bool failed = false;
  int problems = 0;
  int errors = 0;
};

// Checks rows with one Plausi of its own; a worker serves one thread.
class Worker {
 public:
  // Each worker has init values of its own: values fill caches when read.
  Worker(const Options &options, const std::vector<std::string> &header, quorel::MaterialAccess *materials,
         quorel::Logger *logger)
      : options_(options), header_(header), materials_(materials), logger_(logger) {
    for (const auto &init : options.inits) inits_.set(init.first.c_str(), initValue(init.second));
  }
  ~Worker() {
    inits_.clear();
    if (plausi_ != nullptr) loader_.unloadPlausi(plausi_, options_.module.c_str());
  }

  // Loads the module; the message of the failure otherwise.
  bool start(std::string *message) {
    try {
      plausi_ = loader_.loadPlausi(options_.library.c_str(), options_.module.c_str());
      return true;
    } catch (const quorel::PlausiException &e) {
      *message = "cannot load module " + options_.module + " (type " + std::to_string(e.getType()) +
                 "): " + quorel::host::toUtf8(e.getMessage());
      return false;
    }
  }

  Outcome check(const Row &row) {
    Outcome outcome;
    std::ostringstream out;
    quorel::host::ProblemPrinter printer(out, options_.json);
    quorel::SimpleDataRecord record;
    std::string error = row.error;
    if (error.empty() && row.cells.size() != header_.size()) error = "Anzahl der Spalten passt nicht zur Kopfzeile";
    if (!error.empty() || !quorel::host::fillRecord(header_, row.cells, &record, &error)) {
      outcome.failed = true;
      printer.printFailure(row.line, error);
      outcome.output = out.str();
      return outcome;
    }
    quorel::PlausiContext context(&record);
    context.setFlow(options_.flow.c_str());
    context.setProblemWeightLevel(options_.weightLevel);
    context.setMaterialAccess(materials_);
    if (logger_ != nullptr) context.setLogger(logger_);
    for (const auto &init : options_.inits) context.setInitParam(init.first.c_str(), inits_.get(init.first.c_str()));
    try {
      plausi_->perform(&context);
    } catch (const quorel::PlausiException &e) {
      outcome.failed = true;
      printer.printFailure(row.line, "Ausnahme " + std::to_string(e.getType()) + ": " + e.getMessage());
    }
    printer.printRecord(row.line, context);
    outcome.problems = context.getNumOfProblems();
    outcome.errors = context.getNumOfProblems(quorel::PROBLEM_ERROR);
    outcome.output = out.str();
    return outcome;
  }

 private:
  const Options &options_;
  const std::vector<std::string> &header_;
  quorel::MaterialAccess *materials_;
  quorel::Logger *logger_;
  quorel::InitParams inits_;
  quorel::PlausiLoader loader_;
  quorel::Plausi *plausi_ = nullptr;
};

// Rows are read and checked in batches, so memory stays flat however long
// the file is.
constexpr std::size_t kBatch = 4096;

}  // namespace

int main(int argc, char **argv) {
  Options options;
  if (!parse(argc, argv, &options)) return 2;
  quorel::host::CsvMaterialAccess materials;
  for (const auto &material : options.materials) {
    std::string message;
    if (!materials.load(material.first, material.second, &message)) return fail(message);
  }
  std::ifstream input(options.records, std::ios::binary);
  if (!input) return fail("cannot read " + options.records);

  std::unique_ptr<quorel::Logger> logger;
  if (!options.logFile.empty()) {
    // One log for all threads would mix their lines.
    if (options.jobs > 1) return fail("--log works with --jobs 1 only");
    logger = std::make_unique<quorel::Logger>(options.logFile.c_str(), static_cast<quorel::LogLevel>(options.logLevel));
  }
  quorel::host::CsvReader reader(input);
  std::vector<std::string> header;
  if (!reader.next(&header)) return fail(options.records + " has no header row");
  std::vector<std::unique_ptr<Worker>> workers;
  for (int i = 0; i < options.jobs; ++i) {
    workers.push_back(std::make_unique<Worker>(options, header, &materials, logger.get()));
    std::string message;
    if (!workers.back()->start(&message)) return fail(message);
  }

  quorel::host::ProblemPrinter printer(std::cout, options.json);
  bool progress = options.jobs > 1 && isatty(STDERR_FILENO);
  int records = 0, failed = 0, problems = 0, errors = 0;
  std::vector<Row> batch;
  std::vector<Outcome> outcomes;
  bool more = true;
  while (more) {
    batch.clear();
    Row row;
    while (batch.size() < kBatch && (more = reader.next(&row.cells))) {
      if (row.cells.size() == 1 && row.cells[0].empty()) continue;  // a blank line
      row.line = reader.line();
      row.error = reader.error();
      batch.push_back(row);
    }
    outcomes.assign(batch.size(), Outcome());
    std::vector<std::thread> threads;
    for (std::size_t w = 1; w < workers.size(); ++w) {
      threads.emplace_back([&, w] {
        for (std::size_t i = w; i < batch.size(); i += workers.size()) outcomes[i] = workers[w]->check(batch[i]);
      });
    }
    for (std::size_t i = 0; i < batch.size(); i += workers.size()) outcomes[i] = workers[0]->check(batch[i]);
    for (std::thread &thread : threads) thread.join();
    for (const Outcome &outcome : outcomes) {
      std::cout << outcome.output;
      ++records;
      failed += outcome.failed ? 1 : 0;
      problems += outcome.problems;
      errors += outcome.errors;
    }
    if (progress) std::cerr << "\r" << records << " records checked" << std::flush;
  }
  if (progress) std::cerr << "\n";
  printer.printSummary(records, failed, problems, errors);
  workers.clear();
  logger.reset();
  if (failed > 0) return 2;
  return errors > 0 ? 1 : 0;
}
