"""The package quorel against the example module Antrag: records, materials,
every problem attribute, errors and threads."""
import concurrent.futures
import datetime
import json
import os
import sqlite3
import subprocess
import warnings

import numpy as np
import pandas as pd
import pytest

import quorel


def expected_problems(data_dir):
    """The problems the command line tool gives for the bundled example, by
    record (line 2 is the first record)."""
    lines = open(os.path.join(data_dir, "antraege.expected.jsonl"), encoding="utf-8").read().splitlines()
    return [json.loads(line) for line in lines if '"summary"' not in line]


def test_frame_gives_the_problems_of_the_command_line_tool(module, antraege, gemeinden, data_dir, tmp_path):
    frame = quorel.check_frame(antraege, module, flow="Pruefung", materials={"Gemeinden": gemeinden})
    expected = expected_problems(data_dir)
    # The keys of quorel-check's JSON Lines, with the same values; a frame has no lines.
    assert quorel.PROBLEM_COLUMNS == list(expected[0])
    assert list(frame.columns) == quorel.PROBLEM_COLUMNS
    assert len(frame) == len(expected)
    for (label, row), want in zip(frame.iterrows(), expected):
        assert label == want["record"] - 1
        assert pd.isna(row["line"])
        for name in quorel.PROBLEM_COLUMNS[2:]:
            value = None if pd.isna(row[name]) else row[name]
            assert (json.loads(value) if name in ("field_indices", "accessed", "sections") else value) == want[name]
    assert frame["record"].tolist() == [want["record"] for want in expected]
    from_file = quorel.check_frame(os.path.join(data_dir, "antraege.csv"), module, materials={"Gemeinden": gemeinden})
    assert from_file["line"].tolist() == [want["line"] for want in expected]
    assert frame.attrs["summary"] == {"records": 3, "checked": 3, "not_checked": 0, "problems": len(expected),
                                      "errors": 7}
    # Repeated values are categories in order of first appearance.
    assert [c for c in frame.columns if frame[c].dtype != "category"] == ["record", "line", "type", "weight"]
    assert frame["id"].cat.categories.is_unique and frame["id"].cat.categories[0] == frame["id"].iloc[0]
    trail = expected[0]["sections"]
    assert frame["sections"].astype(str).map(json.loads).explode().iloc[:len(trail)].tolist() == trail
    # The frame goes on as any frame of texts and numbers.
    assert frame.astype(str)["sections"].iloc[0] == json.dumps(trail, ensure_ascii=False, separators=(",", ":"))
    with sqlite3.connect(tmp_path / "problems.db") as connection:
        frame.to_sql("problems", connection, index=False)
        stored = pd.read_sql("SELECT * FROM problems", connection)
    assert stored["accessed"].tolist() == frame["accessed"].astype(str).tolist()
    assert stored["record"].tolist() == frame["record"].tolist()


def test_a_csv_path_gives_what_its_dataframe_gives(module, gemeinden, data_dir, tmp_path):
    checker = quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": gemeinden})
    path = os.path.join(data_dir, "antraege.csv")
    from_path = checker.check_frame(path)
    from_frame = checker.check_frame(pd.read_csv(path, sep=";", dtype=str, encoding="cp1252"))
    # A file has lines, a frame none.
    pd.testing.assert_frame_equal(from_path.drop(columns="line"), from_frame.drop(columns="line"))
    assert from_path.attrs["summary"] == from_frame.attrs["summary"]
    # The file's own faults are error rows, labelled by row number; the other rows are checked.
    broken = checker.check_frame(os.path.join(data_dir, "kaputt.csv"))
    errors = broken[broken["failure"].notna()]
    assert list(errors.index) == [1, 2]
    assert errors["failure"].iloc[0].startswith("the size Antrag.Kinder#")
    assert (errors["record"].tolist(), errors["line"].tolist()) == ([2, 3], [3, 4])
    assert errors[["id", "type", "weight", "text", "field"]].isna().all().all()
    assert errors["sections"].tolist() == ["[]", "[]"]
    assert broken.attrs["summary"] == {"records": 3, "checked": 1, "not_checked": 2, "problems": len(broken) - 2,
                                       "errors": 0}
    with pytest.raises(ValueError, match="missing.csv"):
        checker.check_frame(str(tmp_path / "missing.csv"))
    with pytest.raises(TypeError):
        checker.check_frame(42)


def test_umlauts_round_trip_through_records_and_materials(module, antraege):
    # A material as a DataFrame with umlauts: München is known under 80331.
    places = pd.DataFrame({"Gemeinden.PLZ": ["80331"], "Gemeinden.Ort": ["M\u00fcnchen"]})
    checker = quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": places})
    record = antraege.iloc[0].to_dict()
    record.update({"Antrag.Adresse.PLZ": "80331", "Antrag.Adresse.Ort": "M\u00fcnchen"})
    ids = [p.id for p in checker.check(record).problems]
    assert "ADR-03" not in ids
    record["Antrag.Adresse.Ort"] = "Muenchen"
    problem = [p for p in checker.check(record).problems if p.id == "ADR-03"][0]
    assert problem.long_text == "Die Postleitzahl geh\u00f6rt laut Gemeindeverzeichnis zu einem anderen Ort."
    assert problem.type == 2 and problem.weight == 2 and problem.field == "Antrag.Adresse.Ort"
    assert problem.sections == ["Regel Adresse", "Plausi"]
    assert problem.field_indices == []
    assert problem.accessed_fields == ["Antrag.Adresse.PLZ", "Antrag.Adresse.Ort"]


def test_result_and_problem_attributes(module, antraege, gemeinden):
    checker = quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": gemeinden})
    result = checker.check(antraege.iloc[2].to_dict())
    assert not result.ok
    # A row of a frame is a record as it stands; a label it repeats is refused.
    assert [p.id for p in checker.check(antraege.iloc[2]).problems] == [p.id for p in result.problems]
    twice = pd.concat([antraege.iloc[2], pd.Series({"Antrag.Antragsnummer": "AB-123456"})])
    with pytest.raises(ValueError, match="the record gives Antrag.Antragsnummer more than once"):
        checker.check(twice)
    with pytest.raises(ValueError, match="more than once"):
        module.perform_function("Nichts", twice)
    first = result.problems[0]
    assert (first.id, first.type, first.weight) == ("ANT-01", 1, 3)
    assert first.short_text == "Die Antragsnummer hat nicht die Form AA-123456."
    assert first.accessed_fields == ["Antrag.Antragsnummer"]
    clean = quorel.Checker(module, flow="Schnellpruefung", materials={"Gemeinden": gemeinden}).check(
        antraege.iloc[0].to_dict())
    assert clean.ok
    # Numbers, truth values and missing values are fields too.
    record = {"Antrag.Betrag": 20000.5, "Antrag.Kinder#": 0, "Antrag.Einkommen#": 1.0,
              "Antrag.Einkommen[0]": None, "Antrag.Antragsteller.Name": float("nan")}
    ids = [p.id for p in checker.check(record).problems]
    assert "BTR-02" in ids and "PER-01" in ids


def test_errors_and_bad_input(module, antrag_library, antraege, gemeinden, tmp_path):
    with pytest.raises(quorel.PlausiError) as error:
        quorel.RuleModule("/nonexistent/librules.so", "Antrag")
    assert error.value.type == 1 and error.value.message == "/nonexistent/librules.so"
    with pytest.raises(quorel.PlausiError) as error:
        quorel.RuleModule(antrag_library, "Fehlt")
    assert error.value.type == 2
    checker = quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": gemeinden})
    with pytest.raises(TypeError):
        checker.check(["not", "a", "mapping"])
    with pytest.raises(quorel.RecordError, match="Antrag.Antragsteller.Name"):
        checker.check({"Antrag.Antragsteller.Name": "\u20bf"})
    with pytest.raises(quorel.RecordError, match="Antrag.Kinder"):
        checker.check({"Antrag.Kinder#": 100001})
    with pytest.raises(ValueError, match="Gemeinden"):
        quorel.Checker(module, materials={"Gemeinden": str(tmp_path / "missing.csv")})
    with pytest.raises(TypeError):
        quorel.Checker(module, materials={"Gemeinden": 42})
    with pytest.raises(ValueError, match="row 0"):
        quorel.Checker(module, materials={"Gemeinden": pd.DataFrame({"Gemeinden.Ort": ["\u4e2d"]})})
    with pytest.raises(quorel.PlausiError):
        module.check_field("Antrag.Adresse.PLZ", {})
    # A row outside Windows-1252 is an error row naming the field; the others are checked.
    frame = antraege.copy()
    frame.loc[1, "Antrag.Antragsteller.Name"] = "\u0141ukasz"
    problems = quorel.check_frame(frame, module, flow="Pruefung", materials={"Gemeinden": gemeinden})
    # Of two faults in a row, the one in the earlier column is reported.
    frame.loc[2, "Antrag.Kinder#"] = "zwei"
    frame.loc[2, "Antrag.Kinder[1].Vorname"] = "\u0141ukasz"
    problems = quorel.check_frame(frame, module, flow="Pruefung", materials={"Gemeinden": gemeinden})
    errors = problems[problems["failure"].notna()]
    assert list(errors.index) == [1, 2]
    assert "Antrag.Antragsteller.Name" in errors["failure"].iloc[0]
    assert "Antrag.Kinder#" in errors["failure"].iloc[1] and "zwei" in errors["failure"].iloc[1]
    assert set(problems.index) == {1, 2}
    assert problems.attrs["summary"]["not_checked"] == 2
    module.close()
    with pytest.raises(ValueError):
        module.perform_function("Alter", {})


def test_functions_init_and_log(module, antraege, gemeinden, tmp_path):
    assert module.perform_function("Nichts", {}) is None
    log = tmp_path / "run.log"
    checker = quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": gemeinden},
                             init={"Stichtag": "01.01.2024", "Grenze": 3, "An": True},
                             log=log, log_level=6)
    checker.check(antraege.iloc[0].to_dict())
    del checker
    assert log.read_text(encoding="cp1252").startswith("START: ")
    # A log that cannot be opened is refused; one that fills the disk warns
    # once, and the checks go on.
    with pytest.raises(ValueError, match="cannot write the log /nonexistent/run.log: No such file or directory"):
        quorel.Checker(module, log="/nonexistent/run.log")
    full = quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": gemeinden}, log="/dev/full", log_level=6)
    with pytest.warns(RuntimeWarning, match="cannot write the log /dev/full: its lines are lost from here on"):
        problems = full.check_frame(antraege)
    assert len(problems) > 0
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        assert full.check_frame(antraege).equals(problems)
    with pytest.raises(TypeError):
        quorel.Checker(module, init={"x": object()})
    # The library knows a parameter by a hash of its name, which these share.
    with pytest.raises(ValueError, match="init parameters Aa and BB are one to the rules"):
        quorel.Checker(module, init={"Aa": 1, "BB": 2})


def test_threads_check_side_by_side(module, gemeinden):
    generator = os.environ.get("QUOREL_GENERATOR")
    if not generator:
        pytest.skip("QUOREL_GENERATOR is not set")
    import io
    import sys
    text = subprocess.run([sys.executable, generator, "400"], check=True, capture_output=True).stdout
    frame = pd.read_csv(io.BytesIO(text), sep=";", dtype=str, encoding="cp1252")
    checker = quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": gemeinden})
    alone = checker.check_frame(frame)
    parts = [frame.iloc[i::4] for i in range(4)]
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        together = pd.concat(list(pool.map(checker.check_frame, parts)))
    key = lambda f: sorted(zip(f.index, f["id"]))  # noqa: E731
    assert key(together) == key(alone)
    assert len(alone) > 400


def test_rows_checked_on_several_threads_come_out_as_on_one(module, gemeinden, tmp_path, monkeypatch):
    generator = os.environ.get("QUOREL_GENERATOR")
    if not generator:
        pytest.skip("QUOREL_GENERATOR is not set")
    import io
    import sys
    text = subprocess.run([sys.executable, generator, "3000"], check=True, capture_output=True).stdout
    frame = pd.read_csv(io.BytesIO(text), sep=";", dtype=str, encoding="cp1252")
    # Rows that cannot be checked, at the ends of slices and between them.
    frame.loc[[0, 255, 256, 1500, 2999], "Antrag.Kinder#"] = "x"
    frame.loc[[511, 2000], "Antrag.Name"] = "\u4e00"
    path = tmp_path / "antraege.csv"
    frame.to_csv(path, sep=";", index=False, encoding="cp1252", errors="replace")  # the file has no such name
    # Chunks smaller than the frame: the threads' kinds carry over from chunk to chunk.
    monkeypatch.setattr(quorel, "_CHUNK_ROWS", 700)
    # Cells of every kind, so that threads read those that take Python (whole
    # numbers, dates, pandas' missing values, numpy scalars, a value that
    # cannot be a field) beside those that they read alone.
    mixed = frame.astype(object)
    mixed.loc[6::11, "Antrag.Kinder#"] = 1  # beside the failing sizes
    mixed.loc[5::13, "Antrag.Betrag"] = 123.5
    mixed.loc[6::17, "Antrag.Antragsdatum"] = datetime.date(2024, 1, 15)
    mixed.loc[8::19, "Antrag.Antragsteller.Vorname"] = pd.NA
    mixed.loc[9::23, "Antrag.Adresse.Ort"] = True
    mixed.loc[10::29, "Antrag.Einkommen[0]"] = np.float64(2500.0)
    mixed.loc[1234, "Antrag.Adresse.Strasse"] = object()
    options = dict(flow="Pruefung", materials={"Gemeinden": gemeinden})
    alone = quorel.Checker(module, jobs=1, **options)
    for source, failures in ((frame, 7), (mixed, 8), (str(path), 5)):
        want = alone.check_frame(source)
        assert want["failure"].notna().sum() == failures and len(want) > 3000
        for jobs in (2, 3):
            checker = quorel.Checker(module, jobs=jobs, **options)
            for _ in range(2):  # the threads' checkers serve the next call too
                got = checker.check_frame(source)
                pd.testing.assert_frame_equal(got, want)
                assert got.attrs["summary"] == want.attrs["summary"]
                for column in got.select_dtypes("category"):
                    assert list(got[column].cat.categories) == list(want[column].cat.categories)
    with pytest.raises(ValueError, match="jobs=1"):
        quorel.Checker(module, log=tmp_path / "run.log", jobs=2)
    # Whole numbers within their ranges, as quorel-check takes them, numpy's too.
    for option, value, error in (("jobs", 0, ValueError), ("jobs", 1025, ValueError), ("jobs", 2.5, TypeError),
                                 ("jobs", True, TypeError), ("weight_level", 2**31, ValueError),
                                 ("weight_level", "3", TypeError), ("log_level", 7, ValueError),
                                 ("flow", 5, TypeError)):
        with pytest.raises(error, match="^%s must be a" % option):
            quorel.Checker(module, **{option: value})
    quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": gemeinden}, jobs=np.int64(2),
                   weight_level=np.int32(-3), log_level=0)
