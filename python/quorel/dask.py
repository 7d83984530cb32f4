"""Distributed checking of Dask DataFrames, CSV files and database tables.

check() maps every partition to its problem frame; CSV files are read by the
workers themselves, a file a partition, and a database source (a connection
string) is split into slices of rows that each worker reads for itself.
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
import threading

import dask
import dask.dataframe as dd
import pandas as pd

import quorel

__all__ = ["check"]

# Checkers of this process by the key of their options, made once.
_checkers = {}
_lock = threading.Lock()


def _checker(key, library_path, module_name, options, names, materials):
    with _lock:
        checker = _checkers.get(key)
        if checker is None:
            module = quorel.RuleModule(library_path, module_name)
            checker = quorel.Checker(module, materials=dict(zip(names, materials)), **options)
            _checkers[key] = checker
        return checker


def _check_partition(part, key, library_path, module_name, options, names, *materials):
    return _checker(key, library_path, module_name, options, names, materials).check_frame(part)


def _check_slice(source, offset, limit, key, library_path, module_name, options, names, *materials):
    return _checker(key, library_path, module_name, options, names, materials)._check_rows(source, offset, limit)


def _meta(index):
    # Each partition has categories of its own.
    return dd.utils.clear_known_categories(quorel._empty_frame(index))


# Rows per slice of a database source when npartitions is not given.
ROWS_PER_PARTITION = 50000


def check(records, library_path, module_name, materials=None, npartitions=None, **options):
    """A Dask DataFrame of the problems of every row of the records, exactly
    as quorel.check_frame gives them.

    records: a Dask DataFrame, checked partition by partition; or a database
    source (a connection string, see quorel.check_frame), whose rows are
    counted here and split into npartitions slices (default: one per
    ROWS_PER_PARTITION rows) that each worker reads for itself, by offset
    and limit in the source's order; labels are row numbers as check_frame
    gives them. The source must be reachable from here and from every worker
    and keep its rows while they are read; a query should order its rows.
    records may also be CSV files: a glob pattern (expanded here), a path or
    a list of paths, each file reachable by every worker at that path. Each
    file is one partition, read by a worker with quorel's own CSV reader
    (as quorel.check_frame reads a CSV path) and labelled by row number from
    0, as dask.dataframe.read_csv(files, blocksize=None) labels its rows.
    materials: {name: CSV path or connection string reachable by every
    worker, pandas DataFrame, or a Future of a scattered DataFrame}; the
    other options are those of quorel.Checker."""
    materials = dict(materials or {})
    names = list(materials)
    values = [materials[n] for n in names]
    # What identifies the materials on a worker: a path or connection string,
    # a scattered DataFrame's key, or the token of a DataFrame shipped in the
    # graph.
    token = dask.base.tokenize(library_path, module_name, sorted(options.items()), names,
                               [getattr(v, "key", v) if not isinstance(v, pd.DataFrame) else dask.base.tokenize(v)
                                for v in values])
    if isinstance(records, str) and quorel._quorel._names_database(records):
        return _check_source(records, npartitions, token, library_path, module_name, options, names, values)
    if isinstance(records, (str, os.PathLike, list, tuple)):
        return _check_files(_files(records), token, library_path, module_name, options, names, values)
    if not isinstance(records, dd.DataFrame):
        raise TypeError("records must be a dask.dataframe.DataFrame, CSV files or a connection string")
    return records.map_partitions(_check_partition, token, library_path, module_name, options, names, *values,
                                  meta=_meta(records._meta.index), align_dataframes=False)


def _files(records):
    """The CSV files that records name, in order."""
    if isinstance(records, (list, tuple)):
        files = [os.fspath(f) for f in records]
    elif isinstance(records, str) and glob.has_magic(records):
        files = sorted(glob.glob(records))
    else:
        files = [os.fspath(records)]
    if not files:
        raise FileNotFoundError("no CSV file matches %s" % records)
    return files


def _shipped(values):
    """The materials as task arguments: a DataFrame goes into the graph
    once, whatever the number of tasks."""
    return [dask.delayed(v, pure=True) if isinstance(v, pd.DataFrame) else v for v in values]


def _check_files(files, token, library_path, module_name, options, names, values):
    check_file = dask.delayed(_check_slice, pure=True)
    values = _shipped(values)
    parts = [check_file(f, 0, -1, token, library_path, module_name, options, names, *values) for f in files]
    return dd.from_delayed(parts, meta=_meta(pd.Index([], dtype="int64")), verify_meta=False)


def _check_source(source, npartitions, token, library_path, module_name, options, names, values):
    rows = quorel._quorel._count_rows(source)
    if npartitions is None:
        npartitions = -(-rows // ROWS_PER_PARTITION)
    npartitions = max(1, min(int(npartitions), rows))
    offsets = [rows * i // npartitions for i in range(npartitions + 1)]
    check_slice = dask.delayed(_check_slice, pure=True)
    values = _shipped(values)
    parts = [check_slice(source, first, end - first, token, library_path, module_name, options, names, *values)
             for first, end in zip(offsets, offsets[1:])]
    # Each slice holds the labels from its offset on; the last label is rows - 1.
    divisions = offsets[:-1] + [rows - 1] if rows else None
    return dd.from_delayed(parts, meta=_meta(pd.Index([], dtype="int64")), divisions=divisions,
                           verify_meta=False)
