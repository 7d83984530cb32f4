// Number, text and date masks with a fuzzed value and a fuzzed mask: every
// input must end in a result or a PlausiException, never a crash.

#include <ctime>

#include "fuzz_input.h"
#include "quorel/masks/util.h"
#include "quorel/rules/plausi_exception.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  std::vector<std::string> texts = splitInput(data, size, 2);
  const char *value = texts[0].c_str();
  const char *mask = texts[1].empty() ? nullptr : texts[1].c_str();
  try { quorel::Util::stringToInteger(value, mask); } catch (const quorel::PlausiException &) {}
  try { quorel::Util::stringToReal(value, mask); } catch (const quorel::PlausiException &) {}
  try { quorel::Util::stringToString(value, mask); } catch (const quorel::PlausiException &) {}
  try {
    std::tm date{};
    quorel::Util::stringToDate(&date, value, mask);
    char text[quorel::Util::kDateTextSize];
    quorel::Util::dateToString(text, &date, mask);
  } catch (const quorel::PlausiException &) {
  }
  return 0;
}
