// The pattern engine beside other regular-expression engines, in one run:
// eight typical format patterns of rule sets through Pattern::matches (as
// HAT_FORMAT calls it), against PCRE2 compiling and matching at every call
// and against RE2 with each pattern compiled once; and a whole-input match
// of 1 MB against [0-9]+, against the PCRE2 interpreter with the pattern
// compiled once. PCRE2 and RE2 take part when they were found at build
// time; the library never links them.
//
// Every engine is a class built once per pattern outside the timed loop, and
// what its matches() does per call is what is measured; one benchmark
// function serves them all. Another way of running the library (a setting
// of the thread made in the constructor, say) is one more engine class and
// one more BENCHMARK_TEMPLATE line.

#include <cstdint>
#include <string>

#include <benchmark/benchmark.h>

#ifdef QUOREL_BENCH_PCRE2
#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>
#endif
#ifdef QUOREL_BENCH_RE2
#include <re2/re2.h>
#endif

#include "quorel/pattern/pattern.h"
#include "side_by_side.h"

namespace {

struct Format {
  const char *what;
  const char *pattern;
  const char *input;
  bool matches;
};

const Format kFormats[] = {
    {"postcode", "[0-9]{5}", "12345", true},
    {"date", "[0-3][0-9]\\.[01][0-9]\\.[0-9]{4}", "24.12.2010", true},
    {"amount", "-?[0-9]{1,3}(\\.[0-9]{3})*(,[0-9]{2})?", "1.234.567,89", true},
    {"IBAN", "[A-Z]{2}[0-9]{2}[A-Z0-9]{12,30}", "DE89370400440532013000", true},
    {"name", "[A-Z\xC4\xD6\xDC][a-z\xE4\xF6\xFC\xDF]+([ \\-][A-Z\xC4\xD6\xDC][a-z\xE4\xF6\xFC\xDF]+)*",
     "M\xFCller-L\xFC" "denscheid", true},
    {"e-mail", "[a-z0-9._%+\\-]+@[a-z0-9\\-]+(\\.[a-z0-9\\-]+)*\\.[a-z]{2,}", "anna.schmidt@example.de", true},
    {"phone", "(\\+49 ?|0)[1-9][0-9]{1,4}[ /\\-]?[0-9]{3,10}", "+49 30/1234567", true},
    {"miss", "[a-z0-9._%+\\-]+@[a-z0-9\\-]+(\\.[a-z0-9\\-]+)*\\.[a-z]{2,}", "anna.schmidt(at)example.de", false},
};
constexpr int kNumFormats = sizeof(kFormats) / sizeof(kFormats[0]);

// The library, as HAT_FORMAT uses it, with the thread's cache of compiled
// patterns at its default capacity.
class QuorelMatches {
 public:
  explicit QuorelMatches(const char *pattern) : pattern_(pattern) {}
  bool usable() const { return true; }
  bool matches(const std::string &input) const { return Pattern::matches(pattern_, input.c_str(), 0); }

 private:
  const char *pattern_;
};

// The same with the cache turned off: every call compiles the pattern.
class QuorelUncached : public QuorelMatches {
 public:
  explicit QuorelUncached(const char *pattern) : QuorelMatches(pattern), saved_(Pattern::getCacheCapacity()) {
    Pattern::setCacheCapacity(0);
  }
  ~QuorelUncached() { Pattern::setCacheCapacity(saved_); }
  QuorelUncached(const QuorelUncached &) = delete;
  QuorelUncached &operator=(const QuorelUncached &) = delete;

 private:
  std::int32_t saved_;
};

#ifdef QUOREL_BENCH_PCRE2
// Anchored at both ends: a match of the whole input, as Pattern::matches
// asks for.
constexpr std::uint32_t kPcre2Whole = PCRE2_ANCHORED | PCRE2_ENDANCHORED;

pcre2_code *compilePcre2(const char *pattern) {
  int error;
  PCRE2_SIZE offset;
  return pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern), PCRE2_ZERO_TERMINATED, kPcre2Whole, &error, &offset,
                       nullptr);
}

bool matchPcre2(const pcre2_code *code, pcre2_match_data *data, const std::string &input) {
  return pcre2_match(code, reinterpret_cast<PCRE2_SPTR>(input.data()), input.size(), 0, 0, data, nullptr) >= 0;
}

// PCRE2 compiling, matching and freeing everything at every call.
class Pcre2PerCall {
 public:
  explicit Pcre2PerCall(const char *pattern) : pattern_(pattern) {}
  bool usable() const { return true; }
  bool matches(const std::string &input) const {
    pcre2_code *code = compilePcre2(pattern_);
    if (code == nullptr) return false;
    pcre2_match_data *data = pcre2_match_data_create_from_pattern(code, nullptr);
    bool matched = matchPcre2(code, data, input);
    pcre2_match_data_free(data);
    pcre2_code_free(code);
    return matched;
  }

 private:
  const char *pattern_;
};

// The PCRE2 interpreter (no JIT) on a pattern compiled once.
class Pcre2Once {
 public:
  explicit Pcre2Once(const char *pattern)
      : code_(compilePcre2(pattern)),
        data_(code_ != nullptr ? pcre2_match_data_create_from_pattern(code_, nullptr) : nullptr) {}
  ~Pcre2Once() {
    pcre2_match_data_free(data_);
    pcre2_code_free(code_);
  }
  Pcre2Once(const Pcre2Once &) = delete;
  Pcre2Once &operator=(const Pcre2Once &) = delete;
  bool usable() const { return code_ != nullptr; }
  bool matches(const std::string &input) const { return matchPcre2(code_, data_, input); }

 private:
  pcre2_code *code_;
  pcre2_match_data *data_;
};
#endif

#ifdef QUOREL_BENCH_RE2
// RE2 on a pattern compiled once, over bytes rather than UTF-8, as the
// library's texts are.
class Re2Once {
 public:
  explicit Re2Once(const char *pattern) : expression_(pattern, options()) {}
  bool usable() const { return expression_.ok(); }
  bool matches(const std::string &input) const { return RE2::FullMatch(input, expression_); }

 private:
  static RE2::Options options() {
    RE2::Options options;
    options.set_encoding(RE2::Options::EncodingLatin1);
    options.set_log_errors(false);
    return options;
  }
  RE2 expression_;
};
#endif

// One engine on one pattern and input; the answer is checked once before
// the timing, so that every engine is timed on the same work.
template <typename Engine>
void measure(benchmark::State &state, const char *pattern, const std::string &input, bool expected) {
  Engine engine(pattern);
  if (!engine.usable() || engine.matches(input) != expected) {
    state.SkipWithError("the engine does not give the expected answer");
    return;
  }
  for (auto _ : state) benchmark::DoNotOptimize(engine.matches(input));
}

// The format of the benchmark's argument.
template <typename Engine>
void BM_Format(benchmark::State &state) {
  const Format &format = kFormats[state.range(0)];
  state.SetLabel(format.what);
  measure<Engine>(state, format.pattern, format.input, format.matches);
}

// A whole-input match of 1 MB of digits.
template <typename Engine>
void BM_LongRun(benchmark::State &state) {
  std::string digits(1 << 20, '0');
  for (std::size_t i = 0; i < digits.size(); ++i) digits[i] = static_cast<char>('0' + i * 7 % 10);
  measure<Engine>(state, "[0-9]+", digits, true);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(digits.size()));
}

BENCHMARK_TEMPLATE(BM_Format, QuorelMatches)->DenseRange(0, kNumFormats - 1);
BENCHMARK_TEMPLATE(BM_Format, QuorelUncached)->DenseRange(0, kNumFormats - 1);
BENCHMARK_TEMPLATE(BM_LongRun, QuorelMatches)->Unit(benchmark::kMillisecond);
#ifdef QUOREL_BENCH_PCRE2
BENCHMARK_TEMPLATE(BM_Format, Pcre2PerCall)->DenseRange(0, kNumFormats - 1);
BENCHMARK_TEMPLATE(BM_LongRun, Pcre2Once)->Unit(benchmark::kMillisecond);
#endif
#ifdef QUOREL_BENCH_RE2
BENCHMARK_TEMPLATE(BM_Format, Re2Once)->DenseRange(0, kNumFormats - 1);
#endif

}  // namespace

int main(int argc, char **argv) {
  return quorel::bench::runSideBySide(
      argc, argv,
      {{"formats against PCRE2 compile+match per call", "BM_Format<QuorelMatches>", "BM_Format<Pcre2PerCall>"},
       {"formats without cache against PCRE2 compile+match per call", "BM_Format<QuorelUncached>",
        "BM_Format<Pcre2PerCall>"},
       {"formats against RE2 compiled once", "BM_Format<QuorelMatches>", "BM_Format<Re2Once>"},
       {"1 MB [0-9]+ against the PCRE2 interpreter compiled once", "BM_LongRun<QuorelMatches>",
        "BM_LongRun<Pcre2Once>"}});
}
