#include "side_by_side.h"

#include <cmath>
#include <cstdio>
#include <map>

#include <benchmark/benchmark.h>

namespace quorel {
namespace bench {

namespace {

// The console reporter, keeping each run's CPU time per iteration by name.
class RecordingReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run> &runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run &run : runs) {
      if (run.error_occurred) continue;
      // With --benchmark_report_aggregates_only the mean of the repetitions
      // is all that arrives; the other aggregates carry no time of one
      // iteration.
      bool mean = run.run_type == Run::RT_Aggregate && run.aggregate_name == "mean";
      if (!mean && (run.run_type != Run::RT_Iteration || run.iterations == 0)) continue;
      Sample &sample = (mean ? means_ : samples_)[run.run_name.str()];
      sample.total += run.GetAdjustedCPUTime();
      ++sample.count;
    }
  }

  // The mean time of each run of the family, keyed by what follows its name:
  // over its repetitions where they were reported, else their reported mean.
  std::map<std::string, double> family(const std::string &name) const {
    std::map<std::string, double> found;
    collect(means_, name, &found);
    collect(samples_, name, &found);
    return found;
  }

 private:
  struct Sample {
    double total = 0.0;
    int count = 0;
  };

  static void collect(const std::map<std::string, Sample> &samples, const std::string &name,
                      std::map<std::string, double> *found) {
    for (const auto &[runName, sample] : samples) {
      if (runName.compare(0, name.size(), name) != 0) continue;
      std::string arguments = runName.substr(name.size());
      if (!arguments.empty() && arguments[0] != '/') continue;  // another family with a longer name
      (*found)[arguments] = sample.total / sample.count;
    }
  }

  std::map<std::string, Sample> samples_, means_;
};

void printRatio(const RecordingReporter &reporter, const Comparison &comparison) {
  std::map<std::string, double> subject = reporter.family(comparison.subject);
  std::map<std::string, double> peer = reporter.family(comparison.peer);
  double logSum = 0.0;
  int pairs = 0;
  for (const auto &[arguments, time] : subject) {
    auto other = peer.find(arguments);
    if (other == peer.end() || other->second <= 0.0 || time <= 0.0) continue;
    logSum += std::log(time / other->second);
    ++pairs;
  }
  if (pairs == 0) {
    std::printf("ratio %s: not measured (%s or %s did not run)\n", comparison.label.c_str(),
                comparison.subject.c_str(), comparison.peer.c_str());
    return;
  }
  std::printf("ratio %s: %.2fx (%s / %s, CPU time%s)\n", comparison.label.c_str(), std::exp(logSum / pairs),
              comparison.subject.c_str(), comparison.peer.c_str(),
              pairs > 1 ? (", geometric mean of " + std::to_string(pairs) + " pairs").c_str() : "");
}

}  // namespace

int runSideBySide(int argc, char **argv, const std::vector<Comparison> &comparisons) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RecordingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  for (const Comparison &comparison : comparisons) printRatio(reporter, comparison);
  return 0;
}

}  // namespace bench
}  // namespace quorel
