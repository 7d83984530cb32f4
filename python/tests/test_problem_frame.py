"""The problem frame of many rows against the problems of each row checked
on its own: the same rows, values, types and categories, whatever the
frame keeps once for all rows."""
import io
import json
import os
import subprocess
import sys

import numpy as np
import pandas as pd
import pytest

import quorel


@pytest.fixture(scope="session")
def stoerfall_library():
    library = os.environ.get("QUOREL_STOERFALL_MODULE")
    if not library:
        pytest.skip("QUOREL_STOERFALL_MODULE is not set: run the tests through CTest")
    return library


@pytest.fixture(scope="module")
def records():
    """300 generated applications; the first row and two later ones cannot
    be checked (a character outside Windows-1252, a size that is no number)."""
    generator = os.environ.get("QUOREL_GENERATOR")
    if not generator:
        pytest.skip("QUOREL_GENERATOR is not set")
    text = subprocess.run([sys.executable, generator, "300"], check=True, capture_output=True).stdout
    frame = pd.read_csv(io.BytesIO(text), sep=";", dtype=str, encoding="cp1252", keep_default_na=False,
                        na_values=[""])
    frame.loc[0, "Antrag.Antragsteller.Name"] = "\u0141ukasz"
    frame.loc[7, "Antrag.Kinder#"] = "zwei"
    frame.loc[150, "Antrag.Adresse.Ort"] = "\u4e2d"
    return frame


def rows_of(checker, records):
    """The problem frame's rows, made from checking each record alone."""
    rows = []
    for label, record in records.iterrows():
        try:
            result = checker.check({k: v for k, v in record.items() if not pd.isna(v)})
        except quorel.RecordError as error:
            rows.append((label, None, None, None, None, None, None, "[]", "[]", "[]", str(error)))
            continue
        for p in result.problems:
            rows.append((label, p.id, p.type, p.weight, p.short_text, p.long_text, p.field,
                         json.dumps(p.field_indices), json.dumps(p.accessed_fields, ensure_ascii=False,
                                                                 separators=(",", ":")),
                         json.dumps(p.sections, ensure_ascii=False, separators=(",", ":")), None))
    return rows


def test_frame_holds_each_rows_problems_with_categories_in_order_of_appearance(module, gemeinden, records):
    checker = quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": gemeinden})
    frame = checker.check_frame(records)
    expected = rows_of(checker, records)
    names = ["id", "type", "weight", "text", "details", "field", "field_indices", "accessed", "sections", "failure"]
    got = [(label, *(None if pd.isna(v) else v for v in values))
           for label, values in zip(frame.index, frame[names].astype(object).itertuples(index=False))]
    assert len(got) == len(expected) > 300
    for mine, theirs in zip(got, expected):
        # A failure is reported with the row's own words, which check() raises as they are.
        assert mine[:-1] == theirs[:-1] and (mine[-1] is None) == (theirs[-1] is None)
    assert [label for label, *_, failure in got if failure is not None] == [0, 7, 150]
    assert frame["record"].tolist() == [label + 1 for label in frame.index]
    assert frame["line"].isna().all()
    assert [str(t) for t in frame.dtypes] == ["Int64", "Int64", "category", "Int32", "Int32", "category",
                                              "category", "category", "category", "category", "category",
                                              "category"]
    for name in frame.columns:
        if frame[name].dtype != "category":
            continue
        values = frame[name]
        # Each distinct value once, in order of first appearance, with codes
        # in the integer type pandas chooses for that many.
        assert list(values.cat.categories) == list(dict.fromkeys(values.dropna()))
        assert values.cat.codes.dtype == pd.Categorical(values.astype(object)).codes.dtype
    # The failure rows come first among the list columns' values.
    assert frame["sections"].cat.categories[0] == "[]"
    summary = frame.attrs["summary"]
    assert summary == {"records": 300, "checked": 297, "not_checked": 3, "problems": len(frame) - 3,
                       "errors": int((frame["type"] == 1).sum())}


def test_rows_handed_over_in_slices_keep_their_labels(module, gemeinden, records, monkeypatch):
    checker = quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": gemeinden})
    whole = checker.check_frame(records)
    # Slices of 7 rows: the failure row 7 begins the second.
    monkeypatch.setattr(quorel, "_CHUNK_ROWS", 7)
    sliced = checker.check_frame(records.set_axis(records.index * 2))
    pd.testing.assert_frame_equal(sliced, whole.set_axis(whole.index * 2))
    assert sliced.attrs == whole.attrs


def test_a_row_gets_nothing_of_the_rows_before_it(module, gemeinden, records):
    # Rows are checked one after another: cells that are empty, missing or
    # absent after rows that had them, a size that shrinks, and a row that
    # fails midway give what each row gives alone.
    checker = quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": gemeinden})
    rows = records.iloc[1:9].copy()
    rows["Antrag.Antragsteller.Name"] = ["Weber", np.nan, "", "Weber", None, "Weber", np.nan, "Weber"]
    rows["Antrag.Kinder#"] = ["2", "1", np.nan, "zwei", "0", "2", "1", np.nan]
    rows["Antrag.Kinder[0].Vorname"] = ["Ina", np.nan, "Ina", "Ina", np.nan, "", "Ina", np.nan]
    together = checker.check_frame(rows)
    alone = pd.concat([checker.check_frame(rows.loc[[label]]) for label in rows.index])
    pd.testing.assert_frame_equal(together.astype(str).assign(record=""), alone.astype(str).assign(record=""))
    assert together["failure"].notna().sum() == 1


def test_texts_read_where_python_keeps_them_or_copied_check_alike(module, gemeinden, records):
    # A str that Python keeps a byte a character reaches the record from
    # where it lies; a str of a subclass is encoded into a copy first.
    checker = quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": gemeinden})
    rows = records.iloc[1:150].copy()
    rows["Antrag.Adresse.Strasse"] = ["Stra\xdfe %d" % i for i in range(len(rows))]
    copied = rows.apply(lambda column: column.map(lambda v: v if pd.isna(v) else np.str_(v)))
    assert type(copied.iat[0, 0]) is np.str_
    pd.testing.assert_frame_equal(checker.check_frame(copied), checker.check_frame(rows))


def test_a_size_is_a_whole_number_written_plainly(module, gemeinden, records):
    checker = quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": gemeinden})
    # numpy's integers as Python's; numbers beyond 64 bits or beyond any
    # integer are no size, and fail their row alone.
    sizes = ["2", "02", "+2", " 2", "2 ", "-1", "0", "100000", "100001", "2,0", "\xb2", "99999999999999999999", 2, 2.0,
             2.5, True, np.int64(2), np.uint8(2), np.float32(2.0), 10**30, -2**70, 1e300, -np.inf]
    rows = records.iloc[[1] * len(sizes)].reset_index(drop=True)
    rows["Antrag.Kinder#"] = pd.Series(sizes, dtype=object)
    failures = checker.check_frame(rows)["failure"].dropna()
    assert list(failures.index) == [1, 2, 3, 4, 5, 8, 9, 10, 11, 14, 15, 19, 20, 21, 22]
    assert failures[1].endswith("is not a whole number from 0 to 100000: 02")
    assert failures[19].endswith(": " + str(10**30))
    # A nullable integer column holds numpy integers.
    rows["Antrag.Kinder#"] = pd.array([2] * (len(sizes) - 1) + [None], dtype="Int64")
    assert checker.check_frame(rows)["failure"].isna().all()
    ids = lambda size: [p.id for p in checker.check({"Antrag.Kinder#": size}).problems]  # noqa: E731
    assert ids(np.int32(2)) == ids(2) != ids(0)


def test_an_empty_frame_and_a_frame_of_failures(module, gemeinden, records):
    checker = quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": gemeinden})
    empty = checker.check_frame(records.iloc[:0])
    assert list(empty.columns) == quorel.PROBLEM_COLUMNS and len(empty) == 0
    failed = checker.check_frame(records.iloc[[0, 7]])
    assert failed["failure"].notna().all() and failed[["type", "weight"]].isna().all().all()
    assert failed["type"].dtype == "Int32" and failed["id"].cat.categories.empty
    assert np.array_equal(failed.index, [0, 7])


def test_texts_reach_the_rules_in_windows_1252_whatever_form_python_keeps(stoerfall_library):
    module = quorel.RuleModule(stoerfall_library, "Stoerfall")
    text = lambda value: module.perform_function("Text", {"Stoerfall.Text": value})  # noqa: E731
    # Latin-1 beyond ASCII, and the euro sign, which Python keeps two bytes a character.
    for value in ("M\u00fcller", "Stra\u00dfe \u00ff\u00a0", "\u20ac 5", "a"):
        assert text(value) == value
    # Controls U+0080..U+009F, NUL and characters beyond the code page are refused, by position.
    # So is a lone surrogate, which has no UTF-8 form either.
    for value, position in (("x\u0081y", 1), ("\u009f", 0), ("a\x00b", 1), ("\u00e9\x00", 1), ("\u0100", 0),
                            ("ab\udcfc", 2)):
        with pytest.raises(ValueError, match="position %d is not in Windows-1252" % position):
            text(value)
    # A str read as it is gets no UTF-8 form attached for the rest of its life.
    name = "".join(["M\u00fc", "ller"])
    size = sys.getsizeof(name)
    problems = quorel.check_frame(pd.DataFrame({"Stoerfall.Text": [name, "x\u0081y", "\ud800"]}), module,
                                  flow="Pruefung")
    assert sys.getsizeof(name) == size
    assert problems["failure"].notna().tolist() == [False, True, True]


def test_a_run_that_fails_after_its_problems_gives_the_failure_first(stoerfall_library):
    module = quorel.RuleModule(stoerfall_library, "Stoerfall")
    frame = pd.DataFrame({"Stoerfall.Anlass": ["", "danach", "", "alloc"], "Stoerfall.Text": ["a", "b", "c", "d"]})
    problems = quorel.check_frame(frame, module, flow="Pruefung")
    assert list(problems.index) == [0, 1, 1, 2, 3]
    assert problems["failure"].tolist() == [np.nan, "exception std::logic_error: danach", np.nan, np.nan,
                                            "exception std::bad_alloc: std::bad_alloc"]
    assert problems["text"].tolist() == ["a", np.nan, "b", "c", np.nan]
    assert problems["record"].tolist() == [1, 2, 2, 3, 4]
    assert problems.attrs["summary"] == {"records": 4, "checked": 2, "not_checked": 2, "problems": 3, "errors": 3}


def test_a_container_is_no_field_nor_a_missing_value(stoerfall_library):
    module = quorel.RuleModule(stoerfall_library, "Stoerfall")
    checker = quorel.Checker(module, flow="Pruefung")
    # pandas answers isna of a container element by element; numpy scalars are values.
    for value, kind in (([1, 2], "list"), ([], "list"), ((1,), "tuple"), (np.array([1, 2]), "ndarray"),
                        (np.array([5]), "ndarray"), ({1}, "set")):
        with pytest.raises(quorel.RecordError, match="Stoerfall.Text: a value of type %s cannot be a field" % kind):
            checker.check({"Stoerfall.Text": value})
    assert module.perform_function("Text", {"Stoerfall.Text": np.array(5)}) == "5"
    rows = pd.DataFrame({"Stoerfall.Text": pd.Series([[1, 2], "a", np.array([1, 2])], dtype=object)})
    assert checker.check_frame(rows)["failure"].notna().tolist() == [True, False, True]
