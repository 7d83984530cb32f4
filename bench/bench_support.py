"""What the Python benchmarks share: generated records on disk, split into
partition files, and the best of several timed runs.

A shared machine disturbs the best of several runs least, so every time
reported is the shortest of its repeats.
"""
import os
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
GEMEINDEN = os.path.join(ROOT, "examples/data/gemeinden.csv")


def write_records(count, path):
    """Writes count generated applications for the Antrag module to path."""
    with open(path, "wb") as out:
        subprocess.run([sys.executable, os.path.join(ROOT, "apps/generate_records.py"), str(count)], stdout=out,
                       check=True)


def split_records(path, folder, parts):
    """Splits the CSV file at path into parts files of about equal rows,
    each with the header, and gives their paths in order."""
    with open(path, "rb") as source:
        header = source.readline()
        lines = source.readlines()
    share = (len(lines) + parts - 1) // parts
    files = []
    for i in range(parts):
        files.append(os.path.join(folder, "part-%03d.csv" % i))
        with open(files[-1], "wb") as out:
            out.write(header)
            out.writelines(lines[i * share:(i + 1) * share])
    return files


def timed(what, records, run, repeat):
    """Runs run() repeat times and prints and gives its best records per
    second."""
    seconds = float("inf")
    for _ in range(repeat):
        start = time.perf_counter()
        run()
        seconds = min(seconds, time.perf_counter() - start)
    print("%-52s %9d records %7.2f s %9.0f records/s" % (what, records, seconds, records / seconds), flush=True)
    return records / seconds
