// German number and date texts through their masks, beside the C library's
// strtod on the same numbers written the C way, in one run.

#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "quorel/masks/util.h"
#include "side_by_side.h"

namespace {

const std::vector<std::string> kGerman = {"1.234,56", "0,5", "-17", "1.000.000", "3,14159", "42", "99,99"};
const std::vector<std::string> kPlain = {"1234.56", "0.5", "-17", "1000000", "3.14159", "42", "99.99"};
const std::vector<std::string> kDates = {"01.02.2020", "29.02.2012", "31.12.1999", "15.06.2013"};

void BM_StringToReal(benchmark::State &state) {
  for (auto _ : state) {
    for (const std::string &text : kGerman) benchmark::DoNotOptimize(quorel::Util::stringToReal(text.c_str(), nullptr));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kGerman.size()));
}
BENCHMARK(BM_StringToReal);

void BM_Strtod(benchmark::State &state) {
  for (auto _ : state) {
    for (const std::string &text : kPlain) benchmark::DoNotOptimize(std::strtod(text.c_str(), nullptr));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kPlain.size()));
}
BENCHMARK(BM_Strtod);

void BM_StringToRealWithMask(benchmark::State &state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(quorel::Util::stringToReal("1.234,56", "#######.##"));
  }
}
BENCHMARK(BM_StringToRealWithMask);

void BM_StringToDate(benchmark::State &state) {
  std::tm date{};
  for (auto _ : state) {
    for (const std::string &text : kDates) quorel::Util::stringToDate(&date, text.c_str(), nullptr);
    benchmark::DoNotOptimize(date);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kDates.size()));
}
BENCHMARK(BM_StringToDate);

}  // namespace

int main(int argc, char **argv) {
  return quorel::bench::runSideBySide(argc, argv, {{"German number texts against strtod", "BM_StringToReal", "BM_Strtod"}});
}
