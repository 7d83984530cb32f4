// The pattern engine with a fuzzed pattern, input and flags. Catastrophic
// backtracking is the language's own behaviour, so every match runs under a
// step limit, which is the time budget of one input (some milliseconds).

#include "fuzz_input.h"
#include "quorel/pattern/pattern.h"

// The limit belongs to the thread that fuzzes, which also calls this.
extern "C" int LLVMFuzzerInitialize(int *, char ***) {
  Pattern::setStepLimit(100000);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  if (size == 0) return 0;
  std::int32_t flags = data[0] & 0x1F;
  std::vector<std::string> texts = splitInput(data + 1, size - 1, 2);
  Pattern::matches(texts[0].c_str(), texts[1].c_str(), flags);
  return 0;
}
