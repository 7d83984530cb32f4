// PatternMatcher: the state of one match of a Pattern: the input and the
// group arrays that the nodes write and read.
//
// The five arrays are addressed by group index on both sides of 0:
// capturing groups from 0 up, non-capturing groups from -1 down. Indexes
// outside read as "never set" and are never written. Made by Pattern::compile
// and owned by its Pattern.
//
// The matcher also keeps the stack guard of a match. A run that would need
// more stack than the thread has left (less a safety margin) is tried once
// more on a private stack reserved at 1 KB per input byte and per node of
// the pattern, at most 1 GB of
// address space, committed only as used; a run that needs even more is
// refused as a failure to match. So is a match that visits more nodes than
// the step limit of the thread (Pattern::setStepLimit) allows.

#ifndef QUOREL_PATTERN_PATTERN_MATCHER_H_
#define QUOREL_PATTERN_PATTERN_MATCHER_H_

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

class Pattern;

class PatternMatcher {
 public:
  // The only mode bit: the whole input must match.
  static constexpr std::int32_t MatchWhole = 1;

  PatternMatcher(Pattern *pattern, const char *input);

  PatternMatcher(const PatternMatcher &) = delete;
  PatternMatcher &operator=(const PatternMatcher &) = delete;

  // Whether the whole input matches the whole pattern.
  bool matches();
  void reset();
  void resetGroups();
  // The text to match, copied.
  void setInput(const char *input) {
    copy_ = input != nullptr ? input : "";
    lend(copy_.c_str());
  }
  // The text to match, not copied: it must stay put until the next
  // setInput() or lendInput(). For Pattern::matches, whose caller holds the
  // text for the whole call; a cached matcher then keeps no copy of it.
  void lendInput(const char *input) {
    copy_.clear();
    lend(input != nullptr ? input : "");
  }

  std::int32_t getMode() const { return mode_; }
  std::int32_t getLastMatchEnd() const { return lastMatchEnd_; }
  std::int32_t inputLength() const { return length_; }

  // Group arrays by index; an index outside gives -1 and takes no write.
  std::int32_t start(std::int32_t gi) const { return read(starts_, gi); }
  std::int32_t end(std::int32_t gi) const { return read(ends_, gi); }
  std::int32_t loopCount(std::int32_t gi) const { return read(loopCounts_, gi); }
  std::int32_t loopPosition(std::int32_t gi) const { return read(loopPositions_, gi); }
  std::int32_t loopSavedCount(std::int32_t gi) const { return read(loopSavedCounts_, gi); }
  void setStart(std::int32_t gi, std::int32_t v) { write(&starts_, gi, v); }
  void setEnd(std::int32_t gi, std::int32_t v) { write(&ends_, gi, v); }
  void setLoopCount(std::int32_t gi, std::int32_t v) { write(&loopCounts_, gi, v); }
  void setLoopPosition(std::int32_t gi, std::int32_t v) { write(&loopPositions_, gi, v); }
  void setLoopSavedCount(std::int32_t gi, std::int32_t v) { write(&loopSavedCounts_, gi, v); }

  // Whether a further level of matching, whose caller's frame is at frame,
  // fits on the stack and within the step limit; once it does not, the match
  // is refused and stopped() is true.
  bool mayGoOn(const void *frame);
  // Counts steps node visits made in one go; false, and stopped() true, once
  // they pass the step limit.
  bool spendSteps(std::int64_t steps);
  bool stopped() const { return stackExhausted_ || outOfSteps_; }

 private:
  static constexpr std::size_t kPrivateStackPerStep = 1024;
  static constexpr std::size_t kMaxPrivateStack = std::size_t{1} << 30;

  // One run of the head, with frames allowed down to stackLimit.
  bool runFrom(std::uintptr_t stackLimit);
  std::int32_t read(const std::vector<std::int32_t> &array, std::int32_t gi) const;
  void write(std::vector<std::int32_t> *array, std::int32_t gi, std::int32_t value);

  Pattern *pattern_;
  void lend(const char *input) {
    input_ = input;
    length_ = static_cast<std::int32_t>(std::strlen(input));
  }

  std::string copy_;          // the input when it was copied
  const char *input_ = "";    // the text matched: copy_ or a lent text
  std::int32_t length_ = 0;
  std::vector<std::int32_t> starts_;
  std::vector<std::int32_t> ends_;
  std::vector<std::int32_t> loopCounts_;
  std::vector<std::int32_t> loopPositions_;
  std::vector<std::int32_t> loopSavedCounts_;
  std::int32_t lastMatchEnd_ = 0;
  std::int32_t groupCount_;
  std::int32_t nonCapturingCount_;
  std::int32_t mode_ = 0;
  std::uintptr_t stackLimit_ = 0;
  bool stackExhausted_ = false;
  std::int64_t stepLimit_ = 0;  // 0: none
  std::int64_t steps_ = 0;
  bool outOfSteps_ = false;
};

#endif  // QUOREL_PATTERN_PATTERN_MATCHER_H_
