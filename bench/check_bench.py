#!/usr/bin/env python3
"""Records per second of quorel-check on one and on two threads.

  python3 bench/check_bench.py build [RECORDS] [REPEAT]

Generates RECORDS applications (default 1 000 000) for the Antrag module and
checks them with text output to /dev/null:
  - --jobs 1 and --jobs 2, in turns, REPEAT times each (default 5); the best
    time of each and their ratio;
  - as the machine's own ceiling for that ratio, two --jobs 1 processes at
    once on the two halves of the records, against --jobs 1 on all;
  - the peak memory of --jobs 1 on all records and on a tenth of them.
A shared machine disturbs the best of several runs least.
"""
import os
import subprocess
import sys
import tempfile
import time

import bench_support


class Checker:
    def __init__(self, build):
        self.command = [os.path.join(build, "apps/quorel-check"), "--material", "Gemeinden=" + bench_support.GEMEINDEN,
                        os.path.join(build, "examples/rules/libquorel_antrag_rules.so"), "Antrag"]

    def start(self, jobs, records):
        with open(os.devnull, "wb") as null:
            return subprocess.Popen(self.command + ["--jobs", str(jobs), records], stdout=null)

    def run(self, *runs):
        """Runs (jobs, records) pairs at once: the wall time and each one's peak memory in KB."""
        begin = time.perf_counter()
        processes = [self.start(jobs, records) for jobs, records in runs]
        peaks = []
        for process in processes:
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            # 1: some record has an error, as the generated ones do.
            if process.returncode not in (0, 1):
                sys.exit("quorel-check failed with status %d" % process.returncode)
            peaks.append(usage.ru_maxrss)
        return time.perf_counter() - begin, peaks


def main():
    build = sys.argv[1]
    records = int(sys.argv[2]) if len(sys.argv) > 2 else 1000000
    repeat = int(sys.argv[3]) if len(sys.argv) > 3 else 5
    checker = Checker(build)
    with tempfile.TemporaryDirectory() as folder:
        whole = os.path.join(folder, "all.csv")
        tenth = os.path.join(folder, "tenth.csv")
        halves = [os.path.join(folder, "half-%d.csv" % i) for i in range(2)]
        bench_support.write_records(records, whole)
        bench_support.write_records(records // 10, tenth)
        # Line by line: a child's peak memory counts this process's at the
        # fork, which must stay small.
        with open(whole, "rb") as source, open(halves[0], "wb") as first, open(halves[1], "wb") as second:
            header = source.readline()
            first.write(header)
            second.write(header)
            for number, line in enumerate(source):
                (first if number < records // 2 else second).write(line)

        best = {"jobs 1": float("inf"), "jobs 2": float("inf"), "halves": float("inf")}
        for _ in range(repeat):
            best["jobs 1"] = min(best["jobs 1"], checker.run((1, whole))[0])
            best["jobs 2"] = min(best["jobs 2"], checker.run((2, whole))[0])
            best["halves"] = min(best["halves"], checker.run((1, halves[0]), (1, halves[1]))[0])
        for what, seconds in best.items():
            print("%-8s %9d records %7.2f s %9.0f records/s" % (what, records, seconds, records / seconds))
        print("jobs 2 / jobs 1: %.2fx; two processes on the halves / jobs 1 (the machine's ceiling): %.2fx"
              % (best["jobs 1"] / best["jobs 2"], best["jobs 1"] / best["halves"]))
        peak_all = checker.run((1, whole))[1][0]
        peak_tenth = checker.run((1, tenth))[1][0]
        print("peak memory: %d KB for %d records, %d KB for %d (%+.1f%%)"
              % (peak_all, records, peak_tenth, records // 10, 100.0 * (peak_all - peak_tenth) / peak_tenth))


if __name__ == "__main__":
    main()
