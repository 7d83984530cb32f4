"""Plausibility checks of records with rule modules of the quorel library.

>>> module = quorel.RuleModule("libquorel_antrag_rules.so", "Antrag")  # or quorel.RuleModule("antrag.qr")
>>> problems = quorel.check_frame(df, module, materials={"Gemeinden": "gemeinden.csv"})  # flow Pruefung, the first
>>> problems = quorel.check_frame("sqlite:antraege.db?table=antraege", module,
...                               materials={"Gemeinden": "sqlite:register.db?table=gemeinden"})
"""

import operator
import os
import re
import sys
import warnings

from ._errors import (ColumnWarning, DatabaseError, FileEncodingWarning, InitWarning, MaterialWarning, PlausiError,
                      RecordError, RuleError, RuleFileError)
from . import _quorel
from ._quorel import Problem, Result

__all__ = ["Checker", "ColumnWarning", "DatabaseError", "FileEncodingWarning", "InitWarning", "MaterialWarning",
           "PlausiError",
           "Problem", "RecordError", "Result", "RuleError", "RuleFileError", "RuleModule", "check_frame",
           "PROBLEM_COLUMNS"]

# The columns of a problem frame, in order, as quorel-check's JSON Lines and
# problem tables name them; its index holds the label of the input row of
# each problem.
PROBLEM_COLUMNS = ["record", "line", "id", "type", "weight", "text", "details", "field", "field_indices",
                   "accessed", "sections", "failure"]


class RuleModule(_quorel.RuleModule):
    """The rules that check records: a rule file, RuleModule("antrag.qr"),
    or a C++ rule module, RuleModule("libquorel_antrag_rules.so", "Antrag"),
    by the path of its shared library and its name; from_text reads the
    rule file from a text. A rule file with mistakes raises RuleFileError
    naming all of them; a library that cannot be loaded raises PlausiError.
    module_name, given for a rule file, must be the one it declares.

    perform_function(name, record) runs one of the module's functions,
    check_field(name, record) one field's check procedure; close() unloads
    the module once runs on other threads are over. A RuleModule pickles as
    where its rules come from (the path, or the text), so Dask workers read
    the same rules again."""

    def __init__(self, library_path, module_name=None):
        super().__init__(_path(library_path), _name(module_name, "module name"), None, "")
        self._made = True

    @classmethod
    def from_text(cls, text, name="<text>"):
        """The rules of a rule file's text (str, or bytes in UTF-8 or
        Windows-1252); name is the file name its messages show."""
        if not isinstance(text, (str, bytes)):
            raise TypeError("text must be a str or bytes, not %s" % type(text).__name__)
        module = cls.__new__(cls)
        if isinstance(text, str) and _SURROGATES.search(text):
            # No UTF-8 form: the reader names each such character where it stands.
            text = _SURROGATES.sub("\ufffd", text)
        _quorel.RuleModule.__init__(module, None, None, text, str(name))
        module._made = True
        return module

    def perform_function(self, name, record):
        return super().perform_function(_name(name, "function name", optional=False), _record(record))

    def check_field(self, name, record):
        return super().check_field(_name(name, "field name", optional=False), _record(record))

    def __reduce__(self):
        if self._text is not None:
            return _from_text, (self._text, self._text_name)
        return RuleModule, (self.library_path, self.module_name)

    def __repr__(self):
        # A traceback may show one whose making failed: it has no rules to name.
        if not self.__dict__.get("_made"):
            return "<RuleModule, not made>"
        return "<RuleModule %s from %s>" % (self.module_name, self._text_name if self._text is not None
                                            else self.library_path)


def _from_text(text, name):
    return RuleModule.from_text(text, name)


class Checker:
    """Checks records with a rule module.

    module: a RuleModule. flow: the flow to run; None runs the first flow the
    module declares, and for a module that declares none raises ValueError,
    since nothing would be checked. weight_level: the problem weight level
    handed to the rules, a 32-bit whole number. materials: {name:
    pandas.DataFrame, CSV path or connection string}, columns named by
    hierarchy text; a database material is queried where it lies (see
    check_frame for connection strings; DatabaseError when it cannot be
    opened). A material that the module queries must be given (ValueError); one
    that it never queries gives a MaterialWarning (ValueError with
    strict=True), and so does a material's column that names no field of the
    material; a material none of whose columns names one is a ValueError. A
    database table without a column for one of the material's fields gives a
    MaterialWarning (ValueError with strict=True); one without a column for any
    of them is a ValueError. encoding: how CSV files (records and materials)
    without a byte-order mark are read, "windows-1252" or "utf-8"; one with a
    UTF-8 byte-order mark is UTF-8. A file whose start looks like the other
    encoding gives a FileEncodingWarning (ValueError with strict=True) before
    any row is checked; so does, after a first megabyte of ASCII alone, the
    first row beyond ASCII, which is read ahead for it within the next 256 MB
    (and after the rows are checked beyond them). init: {name: bool, int, float
    or str, or numpy's of these}. A name that a rule file never reads gives an
    InitWarning (ValueError with strict=True); two names that the library keys
    alike (by a hash of the name) raise ValueError. log, log_level: a log file
    of the runs and its level (0 off ... 6 debug); with a log, runs on several
    threads take turns. A log file that cannot be written raises ValueError;
    one that cannot be written on (a full disk) gives a RuntimeWarning once,
    and the checks go on without it. A flow that a module declaring its flows
    does not know raises ValueError. A column or key that names no field of the
    module (or has an index beyond a size the module declares) gives a
    ColumnWarning once; with strict=True it raises RecordError instead. A
    frame, file or table none of whose columns names a field raises RecordError
    whatever strict says. warn=False leaves out ColumnWarning, MaterialWarning,
    InitWarning and FileEncodingWarning, for a front end that gave them already
    (quorel.dask gives them once, on the client).

    jobs: the threads that check the rows of one check_frame call (1 to 1024,
    as quorel-check --jobs), each with a rule set of its own; the problems
    come out in the order of the rows all the same. None takes one per
    processor that the process may use, or one with a log (several would mix
    the lines of their records; a log with jobs > 1 raises ValueError).

    check() may be called from several threads at once: each thread gets a
    rule set of its own, and the GIL is released while the rules run.
    """

    def __init__(self, module, flow=None, weight_level=1, materials=None, init=None, log=None, log_level=4,
                 strict=False, encoding="windows-1252", warn=True, jobs=None):
        if not isinstance(module, RuleModule):
            raise TypeError("module must be a quorel.RuleModule")
        self.module = module
        self._number_columns = set()  # number columns looked at
        self._warn = bool(warn)
        materials = {name: _path(where) if isinstance(where, (str, bytes, os.PathLike)) else where
                     for name, where in dict(materials or {}).items()}
        weight_level = _whole(weight_level, "weight_level", -2**31, 2**31 - 1)
        log_level = _whole(log_level, "log_level", 0, 6)
        self._engine = _quorel.Checker(module, _name(flow, "flow"), weight_level, materials, dict(init or {}),
                                       None if log is None else _path(log), log_level, bool(strict),
                                       str(encoding), self._warn, _jobs(jobs, log))
        for name, where in materials.items():
            if hasattr(where, "dtypes"):  # a DataFrame
                self._warn_number_columns(where, [str(c) for c in where.columns], material=name)

    def check(self, record):
        """Checks one record, a mapping of hierarchy texts to values (a dict,
        or a row of a frame as a pandas Series), and gives a Result. Raises
        RecordError for a value that cannot be a field (and with strict=True
        for a key that names no field), PlausiError when the rules fail with
        the library's exception and RuleError when they throw a C++
        exception of their own."""
        return self._engine.check(_record(record))

    def check_frame(self, records):
        """The problems of every row of a DataFrame, a CSV file or a
        database source; see check_frame."""
        import pandas as pd
        if isinstance(records, (str, bytes, os.PathLike)):
            return self._check_rows(_path(records), 0, -1)
        if not isinstance(records, pd.DataFrame):
            raise TypeError("records must be a pandas DataFrame, a CSV path or a connection string, not %s"
                            % type(records).__name__)
        names = [str(c) for c in records.columns]
        if not names and len(records):
            raise RecordError("the frame has %d rows but no columns, so each row would be checked as if it were "
                              "empty" % len(records))
        self._warn_number_columns(records, names)
        out = self._engine._check_columns(names, _column_chunks(records))
        rows = out["row"]
        return _problem_frame(out, records.index[rows] if len(rows) else records.index[:0])

    def _report_frame(self, records):
        """Gives the warnings (or with strict=True the error) of the columns
        of a frame, rows or none, as checking it would."""
        names = [str(c) for c in records.columns]
        self._warn_number_columns(records, names, by_type=True)
        self._engine._report_columns(names)

    def _warn_number_columns(self, records, names, by_type=False, material=None):
        """A ColumnWarning, once per column, for a column of numbers whose
        field the rules read as text: a frame read without dtype=str has
        made 00340220 the number 340220, and the text is not to be had. A
        column of none but missing values holds no numbers, unless by_type
        says that its type stands for rows read elsewhere. For the frame of
        the material of that name, a MaterialWarning instead: the rules
        look up such a text and miss."""
        import pandas as pd
        if not self._warn:
            return
        seen = self._number_columns if material is None else set()
        numbers = [i for i, c in enumerate(records.columns)
                   if names[i] not in seen and pd.api.types.is_numeric_dtype(records.iloc[:, i])
                   and not pd.api.types.is_bool_dtype(records.iloc[:, i])
                   and (by_type or records.iloc[:, i].notna().any())]
        if not numbers:
            return
        told_all = self._engine._number_warnings([names[i] for i in numbers],
                                                 [str(records.dtypes.iloc[i]) for i in numbers], material)
        for i, told in zip(numbers, told_all):
            seen.add(names[i])
            if told:
                if material is None:
                    warnings.warn(told, ColumnWarning, stacklevel=4)
                else:
                    warnings.warn("material %s: %s" % (material, told), MaterialWarning, stacklevel=3)

    def _check_rows(self, source, offset, limit, part=None):
        """The problems of rows [offset, offset + limit) of a database source
        (to its end when limit < 0), or of a CSV file (whole, or the part of
        it from _csv_parts), labelled by row number."""
        import pandas as pd
        out = self._engine._check_source(source, int(offset), int(limit), part)
        return _problem_frame(out, pd.Index(out["row"], dtype="int64"))


_SURROGATES = re.compile("[\ud800-\udfff]")


def _first_surrogate(text):
    """The position of the text's first lone surrogate, or -1."""
    found = _SURROGATES.search(text)
    return found.start() if found else -1


def _record(record):
    """A pandas Series (a row of a frame, df.iloc[i]) as the mapping that a
    record is; a label it gives twice raises ValueError, since a record
    keeps one value per field. Anything else as it is."""
    pd = sys.modules.get("pandas")
    if pd is None or not isinstance(record, pd.Series):
        return record
    repeated = record.index[record.index.duplicated()].unique()
    if len(repeated):
        raise ValueError("the record gives %s more than once; it keeps one value per field"
                         % ", ".join(str(label) for label in repeated))
    return dict(record.items())


def _name(name, what, optional=True):
    """A name as the library takes it (None passes where it is optional): a
    lone surrogate, which has no UTF-8 form, raises ValueError as a
    character that Windows-1252 lacks does."""
    if name is None and optional:
        return None
    if not isinstance(name, str):
        raise TypeError("%s must be a str, not %s" % (what, type(name).__name__))
    position = _first_surrogate(name)
    if position >= 0:
        raise ValueError("%s: the character at position %d is not in Windows-1252" % (what, position))
    return name


def _path(path):
    """A path (or a connection string) as the library takes it: a str that
    UTF-8 can hold. A name that the file system keeps in another encoding,
    whose bytes Python holds as lone surrogates, raises ValueError saying
    what to do, rather than failing inside."""
    path = os.fspath(path)
    if isinstance(path, bytes):
        path = os.fsdecode(path)
    try:
        path.encode("utf-8")
    except UnicodeEncodeError:
        shown = os.fsencode(path).decode("utf-8", "backslashreplace")
        raise ValueError("%s: the name is not in UTF-8 (the file system holds it in another encoding), and "
                         "quorel takes UTF-8 names only: rename the file, or link to it under a UTF-8 name"
                         % shown) from None
    return path


def _jobs(jobs, log):
    """The threads that check rows, as Checker takes jobs."""
    if jobs is None:
        if log is not None:
            return 1
        try:
            return len(os.sched_getaffinity(0))
        except AttributeError:  # not on Linux
            return os.cpu_count() or 1
    return _whole(jobs, "jobs", 1, _MAX_JOBS)


# The most threads a check may take, as quorel-check --jobs takes.
_MAX_JOBS = 1024


def _whole(value, what, low, high=None):
    """A whole number from low to high (no bound when None), as an option
    takes it: an int or a numpy integer (TypeError for another kind, a float
    or a bool too), ValueError beyond the range."""
    try:
        if isinstance(value, bool):
            raise TypeError
        number = operator.index(value)
    except TypeError:
        raise TypeError("%s must be a whole number, not %s" % (what, type(value).__name__)) from None
    if high is None and number < low:
        raise ValueError("%s must be a whole number of at least %d, not %d" % (what, low, number))
    if high is not None and not low <= number <= high:
        raise ValueError("%s must be a whole number from %d to %d, not %d" % (what, low, high, number))
    return number


# Rows of a DataFrame handed to the checker at a time: their cells become
# Python objects (Series.tolist) a slice at a time, never all at once.
_CHUNK_ROWS = 16384


def _column_chunks(records):
    """The cells of a DataFrame's rows in slices, each a list of columns."""
    for first in range(0, len(records), _CHUNK_ROWS):
        part = records.iloc[first:first + _CHUNK_ROWS]
        yield [part[c].tolist() for c in part.columns]


# Columns of whole numbers, Int64 and Int32; the values of all others repeat
# from problem to problem: Categoricals of texts (a list as a JSON array).
_NUMBER_COLUMNS = {"record": "int64", "line": "int64", "type": "int32", "weight": "int32"}


def _empty_frame(index):
    """A problem frame without rows, with the index type of index."""
    import numpy as np
    out = {name: (np.empty(0, _NUMBER_COLUMNS[name]), np.empty(0, bool)) if name in _NUMBER_COLUMNS
           else (np.empty(0, np.int8), []) for name in PROBLEM_COLUMNS}
    out["summary"] = {"records": 0, "checked": 0, "not_checked": 0, "problems": 0, "errors": 0}
    return _problem_frame(out, index[:0])


def _problem_frame(out, index):
    import pandas as pd
    columns = {}
    for name in PROBLEM_COLUMNS:  # a dict in column order: pandas takes it as it is
        if name in _NUMBER_COLUMNS:
            values, missing = out[name]
            columns[name] = pd.arrays.IntegerArray(values, missing)
        else:
            codes, categories = out[name]
            categories = pd.Index(categories, dtype=object)
            columns[name] = pd.Categorical.from_codes(codes, categories=categories)
    frame = pd.DataFrame(columns, index=index, copy=False)
    frame.attrs["summary"] = out["summary"]
    return frame


def check_frame(records, module, **options):
    """Checks every row of the records (columns named by hierarchy text) and
    gives a DataFrame of problems, one row per problem, indexed by the label
    of the input row, with the columns PROBLEM_COLUMNS, named and meant as
    in quorel-check's JSON Lines and problem tables. record (the row's
    number in its source, from 1) and line (of a CSV file; missing
    elsewhere) are Int64, type and weight Int32; the others are
    Categoricals of texts, since their values repeat from problem to
    problem, with field_indices, accessed and sections as JSON arrays
    (frame["sections"].astype(str).map(json.loads).explode() gives one row
    per entry).

    records is a pandas DataFrame; or the path of a CSV file, read as
    quorel-check reads it (";" or "," between cells, Windows-1252, an empty
    cell an empty field) and labelled by row number from 0 (ValueError when
    it cannot be opened); or a database source, a connection string:
    sqlite:FILE?table=T or postgresql://user@host/db?table=T, or ?query=SELECT
    ... instead of table= (parameters percent-encoded; order=A,B orders the
    rows of a table or query, else a table's primary key does). The rows of a database are
    labelled by their number from 0 in that order. A source that cannot be
    read (a malformed string, a missing database, table or column, a lost
    connection) raises DatabaseError.

    A row that could not be checked (a text outside Windows-1252, a bad
    array size, a cell that cannot be a field, an exception of the rules,
    the library's or a C++ exception of their own, a material that cannot be
    queried) gives a row whose "failure" says why; the other rows are still
    checked. A CSV file that fails while it is read raises ValueError naming
    the file and the line reached. The counts are in
    frame.attrs["summary"]: records (read), checked, not_checked (records =
    checked + not_checked), problems, errors (problems of type 1). options
    are those of Checker; a column that
    names no field warns (ColumnWarning), or with strict=True raises
    RecordError before any row is checked."""
    return Checker(module, **options).check_frame(records)
