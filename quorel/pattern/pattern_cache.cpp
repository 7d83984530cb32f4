#include "quorel/pattern/pattern_cache.h"

#include <cstring>
#include <functional>
#include <memory>
#include <string_view>

#include "quorel/pattern/pattern.h"
#include "quorel/pattern/position_automaton.h"

namespace {

// Runs a compiled pattern's matcher over input, as a new one would.
bool runMatcher(Pattern *pattern, const char *input) {
  PatternMatcher *matcher = pattern->getMatcher();
  // The caller holds the input for the whole call, so it is lent, not
  // copied. No reset() first: matches() resets the groups and the last-match
  // end itself, which is all that reset() does.
  matcher->lendInput(input);
  bool matched = matcher->matches();
  matcher->lendInput("");  // a kept pattern points at no caller's text
  return matched;
}

}  // namespace

namespace {

// The cache of the calling thread, reached at every match: a plain pointer
// in thread storage is found at once, where the cache itself (with a
// destructor) would cost a call to find. The owner frees it when the thread
// ends, and says so: a thread-local owner is not made twice, and what is
// destroyed after it may still ask for matches.
thread_local PatternCache *currentCache = nullptr;
thread_local bool cacheClosed = false;

struct CacheOwner {
  std::unique_ptr<PatternCache> cache = std::make_unique<PatternCache>();
  CacheOwner() { currentCache = cache.get(); }
  ~CacheOwner() {
    currentCache = nullptr;
    cacheClosed = true;
  }
};

}  // namespace

PatternCache *PatternCache::forThisThread() {
  if (currentCache != nullptr || cacheClosed) return currentCache;
  thread_local CacheOwner owner;
  return owner.cache.get();
}

bool PatternCache::matchesOnThisThread(const char *pattern, const char *input, std::int32_t flags) {
  if (PatternCache *cache = forThisThread()) return cache->matches(pattern, input, flags);
  return compileAndMatch(pattern != nullptr ? pattern : "", input, flags);
}

bool PatternCache::compileAndMatch(const char *pattern, const char *input, std::int32_t flags) {
  std::unique_ptr<Pattern> compiled(Pattern::compile(pattern, flags));
  return compiled != nullptr && runMatcher(compiled.get(), input);
}

PatternCache::PatternCache() { byAddress_.fill(entries_.end()); }

PatternCache::~PatternCache() = default;

bool PatternCache::Entry::holds(const char *keyText, std::int32_t keyFlags) const {
  return flags == keyFlags && std::strcmp(text.c_str(), keyText) == 0;
}

bool PatternCache::Entry::matches(const char *input) const {
  if (automaton != nullptr && Pattern::getStepLimit() == 0) return automaton->matches(input != nullptr ? input : "");
  return runMatcher(pattern.get(), input);
}

std::size_t PatternCache::hashOf(const char *text, std::int32_t flags) {
  std::size_t hash = std::hash<std::string_view>()(std::string_view(text));
  return hash ^ (static_cast<std::size_t>(static_cast<std::uint32_t>(flags)) * 0x9E3779B97F4A7C15u);
}

std::size_t PatternCache::addressSlotOf(const char *text) {
  auto address = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(text));
  return static_cast<std::size_t>((address * 0x9E3779B97F4A7C15u) >> (64 - kAddressSlotBits));
}

void PatternCache::touch(Entries::iterator entry) { entries_.splice(entries_.begin(), entries_, entry); }

PatternCache::Entries::iterator PatternCache::find(const char *text, std::int32_t flags, std::size_t hash) {
  auto candidates = index_.equal_range(hash);
  for (auto it = candidates.first; it != candidates.second; ++it) {
    Entries::iterator entry = it->second;
    if (entry->holds(text, flags)) {
      touch(entry);
      return entry;
    }
  }
  return entries_.end();
}

bool PatternCache::matches(const char *pattern, const char *input, std::int32_t flags) {
  if (pattern == nullptr) pattern = "";
  if (capacity_ == 0) return compileAndMatch(pattern, input, flags);
  // A rule that tests one pattern record after record asks for the most
  // recently used one again: no hashing for that.
  if (!entries_.empty() && entries_.front().holds(pattern, flags)) return entries_.front().matches(input);
  Entries::iterator &guess = byAddress_[addressSlotOf(pattern)];
  if (guess != entries_.end() && guess->holds(pattern, flags)) {
    touch(guess);
    return guess->matches(input);
  }
  std::size_t hash = hashOf(pattern, flags);
  Entries::iterator kept = find(pattern, flags, hash);
  if (kept != entries_.end()) {
    guess = kept;
    return kept->matches(input);
  }
  std::unique_ptr<Pattern> compiled(Pattern::compile(pattern, flags));
  if (compiled == nullptr) return false;  // never kept: the report comes at every call
  std::unique_ptr<PositionAutomaton> automaton = PositionAutomaton::build(compiled->getHead());
  entries_.push_front(Entry{pattern, flags, hash, std::move(compiled), std::move(automaton)});
  index_.emplace(hash, entries_.begin());
  guess = entries_.begin();
  const Entry &added = entries_.front();
  while (size() > capacity_) dropLeastRecentlyUsed();
  return added.matches(input);
}

void PatternCache::setCapacity(std::int32_t capacity) {
  capacity_ = capacity < 0 ? 0 : capacity;
  while (size() > capacity_) dropLeastRecentlyUsed();
}

void PatternCache::dropLeastRecentlyUsed() {
  Entries::iterator last = std::prev(entries_.end());
  auto candidates = index_.equal_range(last->hash);
  for (auto it = candidates.first; it != candidates.second; ++it) {
    if (it->second == last) {
      index_.erase(it);
      break;
    }
  }
  for (Entries::iterator &slot : byAddress_) {
    if (slot == last) slot = entries_.end();
  }
  entries_.erase(last);
}
