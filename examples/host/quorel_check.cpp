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

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <quorel/quorel.h>

#include "csv_material_access.h"
#include "csv_reader.h"
#include "problem_printer.h"

namespace {

const char kUsage[] =
    "usage: quorel-check [options] LIBRARY MODULE RECORDS.csv\n"
    "  --flow NAME            flow to run for each record (default: Pruefung)\n"
    "  --weight-level N       problem weight level handed to the rules (default 1)\n"
    "  --init NAME=VALUE      init parameter, a number if it reads as one (repeatable)\n"
    "  --material NAME=FILE   CSV file of a material (repeatable)\n"
    "  --log FILE             write the log of the runs to FILE\n"
    "  --log-level N          0 off ... 5 trace, 6 debug (default 4 with --log)\n"
    "  --format text|json     readable text (default) or JSON Lines; both UTF-8\n"
    "Exit status: 0 all records ok, 1 some record has an error, 2 usage, load or input error.\n";

struct Options {
  std::string library, module, records;
  std::string flow = "Pruefung";
  std::int32_t weightLevel = 1;
  std::vector<std::pair<std::string, std::string>> inits, materials;
  std::string logFile;
  int logLevel = 4;
  bool json = false;
};

bool split(const char *argument, std::pair<std::string, std::string> *pair) {
  const char *equals = std::strchr(argument, '=');
  if (equals == nullptr || equals == argument) return false;
  *pair = {std::string(argument, equals), std::string(equals + 1)};
  return true;
}

bool parse(int argc, char **argv, Options *options) {
  std::vector<std::string> positional;
  for (int i = 1; i < argc; ++i) {
    std::string option = argv[i];
    bool hasValue = i + 1 < argc;
    std::pair<std::string, std::string> pair;
    if (option == "--help") {
      std::cout << kUsage;
      std::exit(0);
    } else if (option == "--flow" && hasValue) {
      options->flow = argv[++i];
    } else if (option == "--weight-level" && hasValue) {
      options->weightLevel = static_cast<std::int32_t>(std::atoi(argv[++i]));
    } else if (option == "--init" && hasValue && split(argv[++i], &pair)) {
      options->inits.push_back(pair);
    } else if (option == "--material" && hasValue && split(argv[++i], &pair)) {
      options->materials.push_back(pair);
    } else if (option == "--log" && hasValue) {
      options->logFile = argv[++i];
    } else if (option == "--log-level" && hasValue) {
      options->logLevel = std::atoi(argv[++i]);
    } else if (option == "--format" && hasValue) {
      std::string format = argv[++i];
      if (format != "text" && format != "json") return false;
      options->json = format == "json";
    } else if (option.rfind("--", 0) == 0) {
      return false;
    } else {
      positional.push_back(option);
    }
  }
  if (positional.size() != 3) return false;
  options->library = positional[0];
  options->module = positional[1];
  options->records = positional[2];
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

}  // namespace

int main(int argc, char **argv) {
  Options options;
  if (!parse(argc, argv, &options)) {
    std::cerr << kUsage;
    return 2;
  }
  quorel_check::CsvMaterialAccess materials;
  for (const auto &material : options.materials) {
    std::string message;
    if (!materials.load(material.first, material.second, &message)) return fail(message);
  }
  std::ifstream input(options.records, std::ios::binary);
  if (!input) return fail("cannot read " + options.records);

  quorel::PlausiLoader loader;
  quorel::Plausi *plausi = nullptr;
  try {
    plausi = loader.loadPlausi(options.library.c_str(), options.module.c_str());
  } catch (const quorel::PlausiException &e) {
    return fail("cannot load module " + options.module + " (type " + std::to_string(e.getType()) +
                "): " + quorel_check::toUtf8(e.getMessage()));
  }
  std::unique_ptr<quorel::Logger> logger;
  if (!options.logFile.empty()) {
    logger = std::make_unique<quorel::Logger>(options.logFile.c_str(), static_cast<quorel::LogLevel>(options.logLevel));
  }
  quorel::InitParams inits;
  for (const auto &init : options.inits) inits.set(init.first.c_str(), initValue(init.second));

  quorel_check::ProblemPrinter printer(std::cout, options.json);
  quorel_check::CsvReader reader(input);
  std::vector<std::string> header, row;
  int records = 0, failed = 0, problems = 0, errors = 0;
  if (!reader.next(&header)) {
    loader.unloadPlausi(plausi, options.module.c_str());
    return fail(options.records + " has no header row");
  }
  while (reader.next(&row)) {
    if (row.size() == 1 && row[0].empty()) continue;  // a blank line
    ++records;
    if (!reader.error().empty() || row.size() != header.size()) {
      ++failed;
      printer.printFailure(reader.line(), reader.error().empty() ? "Anzahl der Spalten passt nicht zur Kopfzeile"
                                                                  : reader.error());
      continue;
    }
    quorel::SimpleDataRecord record;
    quorel_check::fillRecord(header, row, &record);
    quorel::PlausiContext context(&record);
    context.setFlow(options.flow.c_str());
    context.setProblemWeightLevel(options.weightLevel);
    context.setMaterialAccess(&materials);
    if (logger) context.setLogger(logger.get());
    for (const auto &init : options.inits) context.setInitParam(init.first.c_str(), inits.get(init.first.c_str()));
    try {
      plausi->perform(&context);
    } catch (const quorel::PlausiException &e) {
      ++failed;
      printer.printFailure(reader.line(), "Ausnahme " + std::to_string(e.getType()) + ": " + e.getMessage());
    }
    printer.printRecord(reader.line(), context);
    problems += context.getNumOfProblems();
    errors += context.getNumOfProblems(quorel::PROBLEM_ERROR);
  }
  printer.printSummary(records, failed, problems, errors);
  logger.reset();
  inits.clear();
  loader.unloadPlausi(plausi, options.module.c_str());
  if (failed > 0) return 2;
  return errors > 0 ? 1 : 0;
}
