// Side-by-side runs: a benchmark program that measures the library beside a
// peer (hand-written code, another regular-expression engine) ends by
// printing how many times the peer's CPU time the library took.
//
// A comparison names two benchmark families. A family is a registered name,
// alone ("BM_Rule") or followed by arguments ("BM_Format<Quorel>/3"); runs
// of the two families are paired by those arguments, and the ratio printed
// is the geometric mean over the pairs. A family whose runs are missing (a
// peer not built, a filter that left it out) prints no ratio, only why.

#ifndef QUOREL_BENCH_SIDE_BY_SIDE_H_
#define QUOREL_BENCH_SIDE_BY_SIDE_H_

#include <string>
#include <vector>

namespace quorel {
namespace bench {

struct Comparison {
  std::string label;
  std::string subject;  // the library's family
  std::string peer;     // the family it is measured against
};

// Initializes Google Benchmark from the command line, runs the selected
// benchmarks on the console and then prints one line per comparison.
// Returns the program's exit status.
int runSideBySide(int argc, char **argv, const std::vector<Comparison> &comparisons);

}  // namespace bench
}  // namespace quorel

#endif  // QUOREL_BENCH_SIDE_BY_SIDE_H_
