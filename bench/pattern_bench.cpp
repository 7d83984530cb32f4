// Typical format patterns of rule sets through Pattern::matches (compiled
// anew per call, as HAT_FORMAT does), beside std::regex constructed and
// matched per call, in one run.

#include <regex>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "quorel/pattern/pattern.h"

namespace {

const std::vector<std::pair<std::string, std::string>> kFormats = {
    {"[0-9]{5}", "12345"},                                    // postal code
    {"[0-3][0-9]\\.[01][0-9]\\.[0-9]{4}", "24.12.2010"},      // date
    {"-?[0-9]{1,3}(\\.[0-9]{3})*(,[0-9]{2})?", "1.234.567,89"},  // amount
    {"[A-Z]{2}[0-9]{2}[A-Z0-9]{12,30}", "DE89370400440532013000"},  // identifier
};

void BM_PatternMatches(benchmark::State &state) {
  for (auto _ : state) {
    for (const auto &format : kFormats) {
      benchmark::DoNotOptimize(Pattern::matches(format.first.c_str(), format.second.c_str(), 0));
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kFormats.size()));
}
BENCHMARK(BM_PatternMatches);

void BM_StdRegexMatch(benchmark::State &state) {
  for (auto _ : state) {
    for (const auto &format : kFormats) {
      std::regex expression(format.first);
      benchmark::DoNotOptimize(std::regex_match(format.second, expression));
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kFormats.size()));
}
BENCHMARK(BM_StdRegexMatch);

}  // namespace
