// Rule files of fuzzed text: reading must report mistakes, never crash,
// hang or leak; a file that reads is also made into a Plausi and written as
// C++, which must not fail either.

#include <cstddef>
#include <cstdint>
#include <string>

#include "quorel/lang/cpp_emitter.h"
#include "quorel/lang/rule_set.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  std::string text(reinterpret_cast<const char *>(data), size);
  quorel::lang::Diagnostics diagnostics;
  std::shared_ptr<const quorel::lang::RuleSet> rules = quorel::lang::readRuleText(text, "fuzz.qr", &diagnostics);
  if (rules == nullptr) {
    // Formatting quotes lines and places carets: it must cope with any place.
    if (diagnostics.empty() || diagnostics.format().empty()) __builtin_trap();
    return 0;
  }
  std::unique_ptr<quorel::Plausi> plausi = rules->createPlausi();
  std::string source = quorel::lang::emitCpp(*rules, "fuzz.qr");
  if (source.empty()) __builtin_trap();
  return 0;
}
