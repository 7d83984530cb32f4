#!/usr/bin/env python3
"""Records per second of the Python front ends beside quorel-check.

  PYTHONPATH=build/python /usr/bin/python3 bench/python_bench.py build [RECORDS] [PARTITIONS]

Generates RECORDS applications (default 1 000 000) for the Antrag module in
PARTITIONS CSV files, then times, on the same records:
  - quorel-check --jobs 2 against quorel.dask.check on a local cluster of two
    worker processes, one thread each: on the CSV files, which the workers
    read themselves, and on a Dask DataFrame from dask.dataframe.read_csv;
  - quorel-check --jobs 1 against quorel.check_frame with jobs=1 on the
    first 100 000, as a CSV path and as a DataFrame from pandas.read_csv.
Each check ends with all problems in a DataFrame of this process; each time
is the best of REPEAT runs.
"""
import os
import subprocess
import sys
import tempfile

import dask.dataframe as dd
import pandas as pd
from distributed import Client, LocalCluster

import bench_support
import quorel
import quorel.dask


# Each measurement is the best of this many runs.
REPEAT = 3


def timed(what, records, run):
    return bench_support.timed(what, records, run, REPEAT)


def main():
    build = sys.argv[1]
    records = int(sys.argv[2]) if len(sys.argv) > 2 else 1000000
    partitions = int(sys.argv[3]) if len(sys.argv) > 3 else 8
    library = os.path.join(build, "examples/rules/libquorel_antrag_rules.so")
    check = os.path.join(build, "apps/quorel-check")
    gemeinden = bench_support.GEMEINDEN
    with tempfile.TemporaryDirectory() as folder:
        whole = os.path.join(folder, "all.csv")
        bench_support.write_records(records, whole)
        files = bench_support.split_records(whole, folder, partitions)
        first = os.path.join(folder, "first.csv")
        bench_support.write_records(min(records, 100000), first)

        def native(jobs, path):
            return lambda: subprocess.run([check, "--jobs", str(jobs), "--material", "Gemeinden=" + gemeinden,
                                           library, "Antrag", path], stdout=subprocess.DEVNULL)

        options = dict(flow="Pruefung", materials={"Gemeinden": gemeinden})
        native2 = timed("quorel-check --jobs 2", records, native(2, whole))
        with LocalCluster(n_workers=2, threads_per_worker=1, host="127.0.0.1", processes=True) as cluster, \
                Client(cluster) as client:
            client.run(lambda: __import__("quorel"))  # the workers import the package once, untimed
            on_files = timed("quorel.dask.check, CSV files, 2 workers", records,
                             lambda: quorel.dask.check(files, library, "Antrag", **options).compute())
            ddf = dd.read_csv(files, sep=";", dtype=str, encoding="cp1252", blocksize=None)
            on_frames = timed("quorel.dask.check, read_csv, 2 workers", records,
                              lambda: quorel.dask.check(ddf, library, "Antrag", **options).compute())
        print("dask on CSV files / quorel-check --jobs 2: %.0f%%" % (100 * on_files / native2))
        print("dask on read_csv / quorel-check --jobs 2: %.0f%%" % (100 * on_frames / native2))

        small = min(records, 100000)
        native1 = timed("quorel-check --jobs 1", small, native(1, first))
        module = quorel.RuleModule(library, "Antrag")
        one = dict(options, jobs=1)  # one thread, as quorel-check --jobs 1
        on_path = timed("quorel.check_frame, CSV path", small, lambda: quorel.check_frame(first, module, **one))
        framed = timed("quorel.check_frame, pandas.read_csv", small,
                       lambda: quorel.check_frame(pd.read_csv(first, sep=";", dtype=str, encoding="cp1252"), module,
                                                  **one))
        print("per record: check_frame %.1f us on a CSV path, %.1f us on a DataFrame; quorel-check --jobs 1 %.1f us"
              % (1e6 / on_path, 1e6 / framed, 1e6 / native1))


if __name__ == "__main__":
    main()
