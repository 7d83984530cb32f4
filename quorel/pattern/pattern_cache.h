// PatternCache: the patterns that Pattern::matches compiled on one thread,
// kept for the next call with the same text and flags.
//
// A rule tests record after record with the same few patterns; compiling
// each time costs more than the match. The cache holds up to capacity()
// compiled patterns, dropping the least recently used, and beside each
// pattern of the plain shape of most format checks its PositionAutomaton,
// which answers in one pass where the nodes would recurse; a thread with a
// step limit has its kept patterns run by the matcher, which counts the
// steps. What a caller sees is the same as compiling at every call: a
// pattern that does not compile is never kept, so its report reaches the
// standard error stream at every call; a kept pattern's matcher is reset
// before each match, and the step limit, stack guard and private-stack
// fallback of the matcher apply as to a new one. Each thread has its own
// cache (no lock), which owns its patterns and frees them when the thread
// ends. Matches asked for after that (by the destructors of static and
// thread-local objects) compile at every call.

#ifndef QUOREL_PATTERN_PATTERN_CACHE_H_
#define QUOREL_PATTERN_PATTERN_CACHE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <unordered_map>

class Pattern;
class PositionAutomaton;

class PatternCache {
 public:
  static constexpr std::int32_t kDefaultCapacity = 64;

  // The cache of the calling thread, made at its first call; null once the
  // thread's cache is gone, as the thread ends.
  static PatternCache *forThisThread();
  // Whether the whole input matches the whole pattern, through the calling
  // thread's cache while it has one.
  static bool matchesOnThisThread(const char *pattern, const char *input, std::int32_t flags);

  PatternCache();
  ~PatternCache();
  PatternCache(const PatternCache &) = delete;
  PatternCache &operator=(const PatternCache &) = delete;

  // Whether the whole input matches the whole pattern, as Pattern::matches.
  bool matches(const char *pattern, const char *input, std::int32_t flags);

  // 0 keeps nothing; a negative capacity counts as 0.
  void setCapacity(std::int32_t capacity);
  std::int32_t capacity() const { return capacity_; }
  std::int32_t size() const { return static_cast<std::int32_t>(entries_.size()); }

 private:
  struct Entry {
    std::string text;
    std::int32_t flags;
    std::size_t hash;
    std::unique_ptr<Pattern> pattern;
    std::unique_ptr<PositionAutomaton> automaton;  // null for other shapes

    // Whether this entry is the pattern of that text and those flags.
    bool holds(const char *keyText, std::int32_t keyFlags) const;
    // Whether the whole input matches the kept pattern.
    bool matches(const char *input) const;
  };
  using Entries = std::list<Entry>;

  // Rule code makes its pattern texts the same way record after record, so
  // a text tends to come back at the address it came at before: a slot per
  // hash of the address remembers the entry found there last. It is only a
  // guess, which holds() confirms; one comparison of the text then stands in
  // for hashing it and searching the index.
  static constexpr std::size_t kAddressSlotBits = 6;
  using AddressSlots = std::array<Entries::iterator, std::size_t{1} << kAddressSlotBits>;

  static bool compileAndMatch(const char *pattern, const char *input, std::int32_t flags);
  static std::size_t hashOf(const char *text, std::int32_t flags);
  static std::size_t addressSlotOf(const char *text);
  // Makes entry the most recently used.
  void touch(Entries::iterator entry);
  // The entry of text and flags, now the most recently used, or end().
  Entries::iterator find(const char *text, std::int32_t flags, std::size_t hash);
  void dropLeastRecentlyUsed();

  Entries entries_;  // the most recently used first
  std::unordered_multimap<std::size_t, Entries::iterator> index_;
  AddressSlots byAddress_;  // end() where nothing is remembered
  std::int32_t capacity_ = kDefaultCapacity;
};

#endif  // QUOREL_PATTERN_PATTERN_CACHE_H_
