// The pattern engine with a fuzzed pattern, input and flags. Catastrophic
// backtracking is the language's own behaviour, so the texts are kept short
// (a pattern of 64 bytes, an input of 16) to keep every execution within
// a fraction of a second: that is the time budget of one input.

#include "fuzz_input.h"
#include "quorel/pattern/pattern.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  if (size == 0) return 0;
  std::int32_t flags = data[0] & 0x1F;
  std::vector<std::string> texts = splitInput(data + 1, size - 1, 2);
  if (texts[0].size() > 64 || texts[1].size() > 16) return 0;
  Pattern::matches(texts[0].c_str(), texts[1].c_str(), flags);
  return 0;
}
