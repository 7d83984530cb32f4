#!/usr/bin/env python3
"""Records per second of the Python front ends beside quorel-check.

  PYTHONPATH=build/python /usr/bin/python3 bench/python_bench.py build [RECORDS] [PARTITIONS]

Generates RECORDS applications (default 1 000 000) for the Antrag module in
PARTITIONS CSV files, then times, on the same records:
  - quorel-check --jobs 2 against quorel.dask.check on a local cluster of two
    worker processes, one thread each;
  - quorel-check --jobs 1 against quorel.check_frame on the first 100 000.
"""
import glob
import os
import subprocess
import sys
import tempfile
import time

import dask.dataframe as dd
import pandas as pd
from distributed import Client, LocalCluster

import quorel
import quorel.dask


def timed(what, records, run):
    start = time.perf_counter()
    run()
    seconds = time.perf_counter() - start
    print("%-40s %9d records %7.2f s %9.0f records/s" % (what, records, seconds, records / seconds), flush=True)
    return records / seconds


def main():
    build = sys.argv[1]
    records = int(sys.argv[2]) if len(sys.argv) > 2 else 1000000
    partitions = int(sys.argv[3]) if len(sys.argv) > 3 else 8
    root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    library = os.path.join(build, "examples/rules/libquorel_antrag_rules.so")
    check = os.path.join(build, "apps/quorel-check")
    gemeinden = os.path.join(root, "examples/data/gemeinden.csv")
    with tempfile.TemporaryDirectory() as folder:
        whole = os.path.join(folder, "all.csv")
        with open(whole, "wb") as out:
            subprocess.run([sys.executable, os.path.join(root, "apps/generate_records.py"), str(records)],
                           stdout=out, check=True)
        with open(whole, "rb") as source:
            header = source.readline()
            lines = source.readlines()
        share = (len(lines) + partitions - 1) // partitions
        for i in range(partitions):
            with open(os.path.join(folder, "part-%03d.csv" % i), "wb") as out:
                out.write(header)
                out.writelines(lines[i * share:(i + 1) * share])
        first = os.path.join(folder, "first.csv")
        with open(first, "wb") as out:
            out.write(header)
            out.writelines(lines[:100000])

        def native(jobs, path):
            return lambda: subprocess.run([check, "--jobs", str(jobs), "--material", "Gemeinden=" + gemeinden,
                                           library, "Antrag", path], stdout=subprocess.DEVNULL)

        native2 = timed("quorel-check --jobs 2", records, native(2, whole))
        with LocalCluster(n_workers=2, threads_per_worker=1, host="127.0.0.1", processes=True) as cluster, \
                Client(cluster):
            ddf = dd.read_csv(sorted(glob.glob(os.path.join(folder, "part-*.csv"))), sep=";", dtype=str,
                              encoding="cp1252", blocksize=None)
            on_dask = timed("quorel.dask.check, 2 workers", records,
                            lambda: quorel.dask.check(ddf, library, "Antrag", flow="Pruefung",
                                                      materials={"Gemeinden": gemeinden}).compute())
        print("dask / quorel-check --jobs 2: %.0f%%" % (100 * on_dask / native2))

        small = min(records, 100000)
        native1 = timed("quorel-check --jobs 1", small, native(1, first))
        frame = pd.read_csv(first, sep=";", dtype=str, encoding="cp1252")
        module = quorel.RuleModule(library, "Antrag")
        framed = timed("quorel.check_frame", small,
                       lambda: quorel.check_frame(frame, module, flow="Pruefung", materials={"Gemeinden": gemeinden}))
        print("per record: check_frame %.1f us, quorel-check --jobs 1 %.1f us" % (1e6 / framed, 1e6 / native1))


if __name__ == "__main__":
    main()
