"""Distributed checking of Dask DataFrames, CSV files and database tables.

check() maps every partition to its problem frame; CSV files are read by the
workers themselves, a file or a part of a large file a partition, and a
database source (a connection string) is split into slices of rows that each
worker reads for itself.
Each worker process
loads the rule module once (its threads get a rule set each behind the
scenes) and loads the materials once: from a path that every worker can
reach, or from a DataFrame scattered once to all workers
(client.scatter(df, broadcast=True)). Works with distributed.Client on any
cluster and with Dask's local schedulers; progress shows through Dask's
own progress bars (dask.diagnostics.ProgressBar, distributed.progress).
"""
import glob
import os
import pickle
import threading

import dask
import dask.utils
import dask.dataframe as dd
import numpy as np
import pandas as pd

import quorel

__all__ = ["check"]

# Checkers of this process by the key of their options, made once.
_checkers = {}
_lock = threading.Lock()


def _checker(key, rules, options, names, materials):
    """rules: the rule module pickled, which makes it again from its
    library and name, its rule file's path or its text (bytes, which Dask
    hands on as they are). The warnings of the columns and materials were
    given on the client."""
    with _lock:
        checker = _checkers.get(key)
        if checker is None:
            checker = quorel.Checker(pickle.loads(rules), materials=dict(zip(names, materials)), warn=False, **options)
            _checkers[key] = checker
        return checker


def _check_partition(part, key, rules, options, names, *materials):
    return _checker(key, rules, options, names, materials).check_frame(part)


def _check_slice(source, offset, limit, key, rules, options, names, *materials, part=None):
    return _checker(key, rules, options, names, materials)._check_rows(source, offset, limit, part)


def _check_file(file, part, key, rules, options, names, *materials):
    frame = _check_slice(file, 0, -1, key, rules, options, names, *materials, part=part)
    frame["source"] = pd.Categorical.from_codes(np.zeros(len(frame), np.int8), categories=[file])
    return frame


def _meta(index, source=False):
    # Each partition has categories of its own.
    frame = quorel._empty_frame(index)
    if source:
        frame["source"] = pd.Categorical([])
    return dd.utils.clear_known_categories(frame)


# Rows per slice of a database source when npartitions is not given.
ROWS_PER_PARTITION = 50000

# The size of the parts that a large CSV file is cut into, as
# dask.dataframe.read_csv's blocksize.
BLOCKSIZE = 64 << 20


def check(records, module, module_name=None, materials=None, npartitions=None, blocksize=BLOCKSIZE, **options):
    """A Dask DataFrame of the problems of every row of the records, exactly
    as quorel.check_frame gives them.

    module: a quorel.RuleModule, or what makes one: a rule file's path, or a
    library's path with module_name. Each worker makes it again from its
    library and name, its rule file (at the same path) or its text.

    records: a Dask DataFrame, checked partition by partition; or a database
    source (a connection string, see quorel.check_frame), whose rows are
    counted here and split into npartitions slices (default: one per
    ROWS_PER_PARTITION rows) that each worker reads for itself, by offset
    and limit in the source's order; labels are row numbers as check_frame
    gives them. The source must be reachable from here and from every worker
    and keep its rows while they are read, and must have a stable order: a
    table's primary key (SQLite: a table's rowid) or order=A,B (for a table
    or a query); one without is refused with DatabaseError.
    records may also be CSV files: a glob pattern (expanded here), a path or
    a list of paths, each file reachable here and by every worker at that
    path. A file is read by the workers with quorel's own CSV reader (as
    quorel.check_frame reads a CSV path), its rows labelled by row number
    from 0, as dask.dataframe.read_csv(files, blocksize=None) labels them,
    and each problem names its file in a last column, source. A file larger
    than blocksize bytes (default BLOCKSIZE, 64 MiB; a whole number, or a
    text such as "64MB" as dask.dataframe.read_csv takes) is cut into parts of
    about that size at line ends, a partition each, which this process
    finds in one pass over the file, following its quoted cells over line
    ends as the reader does; the rows keep their labels and lines, and a
    worker refuses a part of a file whose size has changed since. With
    blocksize=None every file is one partition.
    materials: {name: CSV path or connection string reachable by every
    worker, pandas DataFrame, or a Future of a scattered DataFrame}; the
    other options are those of quorel.Checker, but jobs is 1 unless given:
    each partition is checked on one thread of its worker, and log is
    refused (ValueError), since the workers cannot share one file.

    The module, the flow, the materials' names, the columns of the
    materials at hand (DataFrames, and CSV files that this process reaches,
    up to MATERIAL_AT_HAND bytes) and the columns of the records (a Dask
    DataFrame's, or the header of each file or source) are checked here,
    once, and so is the encoding of each file (its start, and after a start
    of ASCII alone its first row beyond ASCII, see quorel.Checker): errors
    are raised and ColumnWarning, MaterialWarning, InitWarning and
    FileEncodingWarning given here before anything is computed, and never
    again by the workers. Any other material is checked where a worker
    loads it: a mistake fails the computation with its message, and a
    warning goes unseen."""
    if npartitions is not None:
        npartitions = quorel._whole(npartitions, "npartitions", 1)
    if isinstance(blocksize, str):
        blocksize = dask.utils.parse_bytes(blocksize)  # "64MB", as dask.dataframe.read_csv takes it
    if blocksize is not None:
        blocksize = quorel._whole(blocksize, "blocksize", 1)
    if "log" in options:
        # Every worker process would write the file anew over the others'.
        raise ValueError("log: the workers cannot share one log file; to log the runs, check the records in one "
                         "process with quorel.check_frame(..., log=FILE)")
    if not isinstance(module, quorel.RuleModule):
        module = quorel.RuleModule(module, module_name)
    rules = pickle.dumps(module)
    # Dask spreads the partitions over the threads of its workers already.
    options.setdefault("jobs", 1)
    materials = dict(materials or {})
    names = list(materials)
    values = [materials[n] for n in names]
    # What identifies the rules and materials on a worker: a path or
    # connection string, a scattered DataFrame's key, or the token of a
    # DataFrame shipped in the graph.
    token = dask.base.tokenize(rules, sorted(options.items()), names,
                               [getattr(v, "key", v) if not isinstance(v, pd.DataFrame) else dask.base.tokenize(v)
                                for v in values])
    database = isinstance(records, str) and quorel._quorel._names_database(records)
    files = None if database or not isinstance(records, (str, os.PathLike, list, tuple)) else _files(records)
    if not database and files is None and not isinstance(records, dd.DataFrame):
        raise TypeError("records must be a dask.dataframe.DataFrame, CSV files or a connection string")
    # The materials' names, and the columns and encodings of those at hand.
    here = quorel.Checker(module, materials={n: _at_hand(v) for n, v in zip(names, values)},
                          **options)
    if database:
        here._engine._report_source_columns(records)
        return _check_source(records, npartitions, token, rules, options, names, values)
    if files is not None:
        for file in files:
            here._engine._report_source_columns(file)
        return _check_files(files, blocksize, token, rules, options, names, values)
    here._report_frame(records._meta)
    return records.map_partitions(_check_partition, token, rules, options, names, *values,
                                  meta=_meta(records._meta.index), align_dataframes=False)


# The largest material file that the client loads to check it as the
# workers will load it.
MATERIAL_AT_HAND = 64 << 20
# The rows of a material DataFrame that the client checks it by.
MATERIAL_ROWS_AT_HAND = 1000


def _at_hand(material):
    """What the client checks a material by: a DataFrame's columns and first
    rows (a column of numbers where the rules read a text warns); a CSV
    file that the client reaches and that is small enough to load once more,
    itself, so that its columns and encoding are told as check_frame tells
    them; else nothing but its name. A file or database that the workers
    alone reach, or a large file, is checked where a worker loads it: a
    mistake fails the computation with its message, but a warning goes
    unseen."""
    if isinstance(material, pd.DataFrame):
        # Rows enough to show a column of numbers where the rules read a text.
        return material.head(MATERIAL_ROWS_AT_HAND)
    if isinstance(material, (str, os.PathLike)) and not quorel._quorel._names_database(os.fspath(material)):
        path = os.fspath(material)
        if os.path.isfile(path) and os.path.getsize(path) <= MATERIAL_AT_HAND:
            return path
    return pd.DataFrame()


def _files(records):
    """The CSV files that records name, in order."""
    if isinstance(records, (list, tuple)):
        files = [quorel._path(f) for f in records]
    elif isinstance(records, str) and glob.has_magic(records):
        files = [quorel._path(f) for f in sorted(glob.glob(records))]
    else:
        files = [quorel._path(records)]
    if not files:
        raise FileNotFoundError("no CSV file matches %s" % records)
    return files


def _shipped(values):
    """The materials as task arguments: a DataFrame goes into the graph
    once, whatever the number of tasks."""
    return [dask.delayed(v, pure=True) if isinstance(v, pd.DataFrame) else v for v in values]


def _check_files(files, blocksize, token, rules, options, names, values):
    check_file = dask.delayed(_check_file, pure=True)
    values = _shipped(values)
    parts = [check_file(f, part, token, rules, options, names, *values)
             for f in files
             for part in (quorel._quorel._csv_parts(f, blocksize) if blocksize else [None])]
    return dd.from_delayed(parts, meta=_meta(pd.Index([], dtype="int64"), source=True), verify_meta=False)


def _check_source(source, npartitions, token, rules, options, names, values):
    rows = quorel._quorel._count_rows(source)
    if npartitions is None:
        npartitions = -(-rows // ROWS_PER_PARTITION)
    npartitions = max(1, min(npartitions, rows))
    offsets = [rows * i // npartitions for i in range(npartitions + 1)]
    check_slice = dask.delayed(_check_slice, pure=True)
    values = _shipped(values)
    parts = [check_slice(source, first, end - first, token, rules, options, names, *values)
             for first, end in zip(offsets, offsets[1:])]
    # Each slice holds the labels from its offset on; the last label is rows - 1.
    divisions = offsets[:-1] + [rows - 1] if rows else None
    return dd.from_delayed(parts, meta=_meta(pd.Index([], dtype="int64")), divisions=divisions,
                           verify_meta=False)
