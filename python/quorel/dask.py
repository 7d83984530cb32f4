"""Distributed checking of Dask DataFrames.

check() maps every partition to its problem frame. Each worker process
loads the rule module once (its threads get a rule set each behind the
scenes) and loads the materials once: from a path that every worker can
reach, or from a DataFrame scattered once to all workers
(client.scatter(df, broadcast=True)). Works with distributed.Client on any
cluster and with Dask's local schedulers; progress shows through Dask's
own progress bars (dask.diagnostics.ProgressBar, distributed.progress).
"""
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


def _meta(ddf):
    frame = pd.DataFrame({c: pd.Series([], dtype=object) for c in quorel.PROBLEM_COLUMNS})
    for column in ("type", "weight"):
        frame[column] = frame[column].astype("Int64")
    frame.index = ddf._meta.index[:0]
    return frame


def check(ddf, library_path, module_name, materials=None, **options):
    """A Dask DataFrame of the problems of every row of ddf, partition by
    partition, exactly as quorel.check_frame gives them for each partition.
    materials: {name: CSV path reachable by every worker, pandas DataFrame,
    or a Future of a scattered DataFrame}; the other options are those of
    quorel.Checker."""
    if not isinstance(ddf, dd.DataFrame):
        raise TypeError("ddf must be a dask.dataframe.DataFrame")
    materials = dict(materials or {})
    names = list(materials)
    values = [materials[n] for n in names]
    # What identifies the materials on a worker: a path, a scattered
    # DataFrame's key, or the token of a DataFrame shipped in the graph.
    token = dask.base.tokenize(library_path, module_name, sorted(options.items()), names,
                               [getattr(v, "key", v) if not isinstance(v, pd.DataFrame) else dask.base.tokenize(v)
                                for v in values])
    return ddf.map_partitions(_check_partition, token, library_path, module_name, options, names, *values,
                              meta=_meta(ddf), align_dataframes=False)
