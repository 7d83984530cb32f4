// quorel-compile: writes a rule file as the C++ source of a rule module.
//
//   quorel-compile RULES.qr -o module.cpp
//
// Every mistake of the rule file is reported (FILE:LINE:COLUMN: error: ...)
// and nothing is written; exit status 0 when the module was written, 2 for
// a mistake in the file or on the command line. --builtins prints the
// reference of the built-in functions instead.

#include <fstream>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

#include "quorel/lang/builtins.h"
#include "quorel/lang/cpp_emitter.h"
#include "quorel/lang/encoding.h"
#include "quorel/lang/rule_set.h"

int main(int argc, char **argv) {
  CLI::App app("Writes a rule file as the C++ source of a rule module.\n"
               "Exit status: 0 written, 2 a mistake in the rule file or the command line, or the output cannot "
               "be written.",
               "quorel-compile");
  std::string rules, output;
  bool builtins = false;
  app.add_option("RULES", rules, "the rule file (.qr)");
  app.add_option("-o,--output", output, "the C++ file to write");
  app.add_flag("--builtins", builtins, "print the reference of the built-in functions (Markdown) and end");
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp &) {
    std::cout << app.help();
    return 0;
  } catch (const CLI::ParseError &e) {
    std::cerr << "quorel-compile: " << e.what() << "\n" << app.help();
    return 2;
  }
  if (builtins) {
    std::cout << quorel::lang::builtinReference() << std::flush;
    if (!std::cout) {
      std::cerr << "quorel-compile: cannot write the reference\n";
      return 2;
    }
    return 0;
  }
  if (rules.empty() || output.empty()) {
    std::cerr << "quorel-compile: expected RULES.qr -o FILE.cpp\n" << app.help();
    return 2;
  }
  quorel::lang::Diagnostics diagnostics;
  std::shared_ptr<const quorel::lang::RuleSet> ruleSet = quorel::lang::readRuleFile(rules, &diagnostics);
  if (ruleSet == nullptr) {
    std::cerr << diagnostics.format();
    return 2;
  }
  // The module's name becomes its entry points, loadPlausi<NAME>.
  const std::string &name = ruleSet->name();
  for (std::size_t i = 0; i < name.size(); ++i) {
    char c = name[i];
    bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || (i > 0 && c >= '0' && c <= '9');
    if (!letter) {
      diagnostics.error(ruleSet->module().pos, "a compiled module's name is part of its entry point loadPlausi" +
                                                   quorel::lang::windows1252ToUtf8(name) +
                                                   ": write it with A-Z, a-z, 0-9 and _ alone");
      std::cerr << diagnostics.format();
      return 2;
    }
  }
  std::string source = quorel::lang::emitCpp(*ruleSet, rules.substr(rules.find_last_of('/') + 1));
  std::ofstream out(output, std::ios::binary);
  out << source;
  out.close();
  if (!out) {
    std::cerr << "quorel-compile: cannot write " << output << "\n";
    return 2;
  }
  return 0;
}
