// The pattern engine with a fuzzed pattern, input and flags, on the fuzzing
// thread and once more on a thread with a small stack (256 KB), where faults
// of nesting depth show first. Catastrophic backtracking is the language's
// own behaviour, so every match runs under a step limit, which is the time
// budget of one input (some milliseconds). Run with -max_len=65536 so that
// patterns nest deeply. A pattern that has a position automaton must get
// the matcher's answer from it too, where the matcher got one within the
// limit.

#include <pthread.h>

#include <cstdlib>
#include <memory>

#include "fuzz_input.h"
#include "quorel/pattern/pattern.h"
#include "quorel/pattern/position_automaton.h"

namespace {

constexpr std::int64_t kStepLimit = 100000;
constexpr std::size_t kSmallStack = 256 * 1024;

struct Job {
  std::string pattern;
  std::string input;
  std::int32_t flags;
  bool matched;
};

bool run(const Job &job) {
  Pattern::setStepLimit(kStepLimit);
  std::unique_ptr<Pattern> compiled(Pattern::compile(job.pattern.c_str(), job.flags));
  if (compiled != nullptr) {
    if (std::unique_ptr<PositionAutomaton> automaton = PositionAutomaton::build(compiled->getHead())) {
      PatternMatcher *matcher = compiled->getMatcher();
      matcher->setInput(job.input.c_str());
      bool answer = matcher->matches();
      if (!matcher->stopped() && answer != automaton->matches(job.input.c_str())) std::abort();
    }
  }
  return Pattern::matches(job.pattern.c_str(), job.input.c_str(), job.flags);
}

void *runOnSmallStack(void *argument) {
  auto *job = static_cast<Job *>(argument);
  job->matched = run(*job);
  return nullptr;
}

}  // namespace

// The limit belongs to the thread that fuzzes, which also calls this.
extern "C" int LLVMFuzzerInitialize(int *, char ***) {
  Pattern::setStepLimit(kStepLimit);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  if (size == 0) return 0;
  std::vector<std::string> texts = splitInput(data + 1, size - 1, 2);
  Job job{texts[0], texts[1], data[0] & 0x1F, false};
  bool matched = run(job);

  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kSmallStack);
  pthread_t thread;
  if (pthread_create(&thread, &attributes, runOnSmallStack, &job) == 0) pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  // The answers may differ: a match moved to a private stack has spent
  // steps of the step limit on its first try.
  (void)matched;
  return 0;
}
