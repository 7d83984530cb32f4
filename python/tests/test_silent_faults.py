"""Faults that once passed without a word: no flow named, a rule's own C++
exception, numbers that lost digits on the way, a material nobody queries,
and races of threads on the module (each in a process of its own, so that a
hang or a crash fails the test instead of the run)."""
import datetime
import os
import re
import subprocess
import sys
import textwrap
import warnings

import numpy as np
import pandas as pd
import pytest

import quorel


@pytest.fixture
def stoerfall():
    library = os.environ.get("QUOREL_STOERFALL_MODULE")
    if not library:
        pytest.skip("QUOREL_STOERFALL_MODULE is not set: run the tests through CTest")
    m = quorel.RuleModule(library, "Stoerfall")
    yield m
    m.close()


def test_without_a_flow_the_first_declared_runs_or_the_checker_is_refused(module, antraege, gemeinden, stoerfall):
    materials = {"Gemeinden": gemeinden}
    default = quorel.check_frame(antraege, module, materials=materials)
    pd.testing.assert_frame_equal(default, quorel.check_frame(antraege, module, flow="Pruefung", materials=materials))
    assert default.attrs["summary"]["problems"] > 0
    assert not quorel.Checker(module, materials=materials).check(antraege.iloc[2].to_dict()).ok
    # A module that declares no flows would run nothing.
    for make in (lambda: quorel.Checker(stoerfall), lambda: quorel.check_frame(pd.DataFrame(), stoerfall)):
        with pytest.raises(ValueError, match=r'module Stoerfall declares no flows.*flow="NAME"$'):
            make()
    assert quorel.Checker(stoerfall, flow="Irgendeiner").check({"Stoerfall.Text": "a"}).problems[0].id == "ST-01"


def test_a_rules_own_exception_fails_its_record_and_the_others_are_checked(stoerfall):
    checker = quorel.Checker(stoerfall, flow="Pruefung")
    frame = pd.DataFrame({"Stoerfall.Anlass": ["stoi", "", "alloc", "int", None],
                          "Stoerfall.Text": ["zwei", "a", "b", "c", "d"]})
    problems = checker.check_frame(frame)
    assert problems["failure"].tolist()[:4] == [
        "exception std::invalid_argument: stoi", np.nan, "exception std::bad_alloc: std::bad_alloc",
        "exception of an unknown type: not derived from std::exception"]
    assert list(problems.index) == [0, 1, 2, 3, 4]
    assert list(problems["id"].iloc[[1, 4]]) == ["ST-01", "ST-01"]
    assert problems.attrs["summary"] == {"records": 5, "checked": 2, "not_checked": 3, "problems": 2, "errors": 2}
    with pytest.raises(quorel.RuleError, match="^exception std::invalid_argument: stoi$"):
        checker.check({"Stoerfall.Anlass": "stoi", "Stoerfall.Text": "zwei"})
    assert checker.check({"Stoerfall.Anlass": "stoi", "Stoerfall.Text": "2"}).problems[0].id == "ST-01"


def test_numbers_reach_the_rules_as_their_text_would(stoerfall):
    text = lambda value: stoerfall.perform_function("Text", {"Stoerfall.Text": value})  # noqa: E731
    for number in (12345678901234567, 2 ** 63 - 1, -2 ** 63, 2 ** 70, np.int64(2 ** 62 + 1)):
        assert text(number) == str(int(number))
    assert (text(0.1), text(-2.5), text(1e20), text(3.0)) == ("0,1", "-2,5", "100000000000000000000", "3")
    zahl = lambda value: stoerfall.perform_function("Zahl", {"Stoerfall.Zahl": value})  # noqa: E731
    assert (zahl(3.0), zahl(np.float64(42)), zahl(-7)) == (3, 42, -7)
    # A fraction in a whole-number field is inconvertible, as its text is.
    checker = quorel.Checker(stoerfall, flow="Pruefung")
    frame = checker.check_frame(pd.DataFrame({"Stoerfall.Zahl": [3.5, 2.999, "3,5", 3.0]}))
    errors = frame["failure"].dropna()
    assert list(errors.index) == [0, 1, 2] and errors.nunique() == 1 and errors.iloc[0].startswith("exception 8")
    assert frame.loc[3, "details"] == "3"


def test_a_number_column_for_a_text_field_warns_once(module, data_dir, gemeinden):
    path = os.path.join(data_dir, "antraege.csv")
    numbers = pd.read_csv(path, sep=";", encoding="cp1252")  # no dtype=str: PLZ 01067 became 1067
    assert numbers["Antrag.Adresse.PLZ"].dtype == "int64"
    checker = quorel.Checker(module, materials={"Gemeinden": gemeinden})
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        checker.check_frame(numbers)
        checker.check_frame(numbers)
    # Not for a size (Antrag.Kinder#) nor for a column without a value.
    assert [str(w.message) for w in caught] == [
        "column Antrag.Adresse.PLZ holds numbers (int64) where the rules read a text, so leading zeros and the "
        "form of the text are lost: read the records with dtype=str"]
    assert caught[0].category is quorel.ColumnWarning


DATES = """
MODUL Daten

SATZ D
  FELD Name TEXT
  FELD Tag DATUM MASKE "JJJJ-MM-TT"
ENDE

MATERIAL Feiertage DATENBESTAND "FEIERTAGE"
  FELD Name TEXT
  FELD Tag DATUM MASKE "JJJJMMTT"
ENDE

ABLAUF Pruefung: A

REGEL A ABSCHNITT "Regel A"
  WENN NICHT PASST(D.Tag; DATUM; "JJJJ-MM-TT") DANN
    MELDE FEHLER "T-1" GEWICHT 1 TEXT "Der Tag passt nicht."
  ENDE
  FUER JEDES tag IN LIES Tag AUS Feiertage WO Name = D.Name
    WENN NICHT PASST(tag; DATUM; "JJJJMMTT") DANN
      MELDE FEHLER "M-1" GEWICHT 1 TEXT "Der Feiertag passt nicht."
    ENDE
  ENDE
ENDE

FUNKTION Tag
  ERGEBNIS D.Tag
ENDE
"""


def test_dates_come_in_the_mask_of_their_field():
    # A date field masked JJJJ-MM-TT reads 31.01.2024 as no date: a Python
    # date is written as a CSV file for the module would carry it.
    module = quorel.RuleModule.from_text(DATES)
    holidays = pd.DataFrame({"Feiertage.Name": ["Neujahr", "Ostern"],
                             "Feiertage.Tag": [datetime.date(2024, 1, 1), pd.Timestamp("2024-03-31")]})
    checker = quorel.Checker(module, materials={"Feiertage": holidays})
    assert checker.check({"D.Name": "Neujahr", "D.Tag": datetime.date(2024, 1, 31)}).ok
    assert checker.check(pd.Series({"D.Name": "Ostern", "D.Tag": pd.Timestamp("2024-01-31 12:00")})).ok
    frame = pd.DataFrame({"D.Name": ["Neujahr", "Ostern", "Pfingsten"],
                          "D.Tag": pd.to_datetime(["2024-01-31", "2024-02-29", None])})
    assert checker.check_frame(frame).empty
    # A text is the rules' to judge, as it stands.
    assert [p.id for p in checker.check({"D.Name": "Neujahr", "D.Tag": "31.01.2024"}).problems] == ["T-1"]
    assert module.perform_function("Tag", {"D.Tag": datetime.date(2024, 2, 29)}) == datetime.date(2024, 2, 29)


def test_materials_are_checked_against_those_the_module_queries(module, gemeinden):
    with pytest.raises(ValueError, match=r'module Antrag queries the material Gemeinden, which is not given: pass '
                                         r'materials=\{"Gemeinden": \.\.\.\}'):
        quorel.Checker(module)
    message = r"material Regionen is given, but module Antrag queries no material of that name \(its materials: Gemeinden\)"
    with pytest.warns(quorel.MaterialWarning, match=message):
        quorel.Checker(module, materials={"Gemeinden": gemeinden, "Regionen": gemeinden})
    with pytest.raises(ValueError, match=message):
        quorel.Checker(module, materials={"Gemeinden": gemeinden, "Regionen": gemeinden}, strict=True)
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        quorel.Checker(module, materials={"Gemeinden": gemeinden}, strict=True)


def test_a_materials_columns_are_checked_against_its_fields(module, gemeinden, tmp_path):
    # Headers as a spreadsheet has them: every lookup would miss.
    bare = pd.DataFrame({"PLZ": ["10115"], "Ort": ["Berlin"]})
    message = (r"material Gemeinden: no column names a field of the material, so every query on it would find "
               r"nothing \(its columns: PLZ, Ort; the fields are named Gemeinden.<field>\)")
    with pytest.raises(ValueError, match=message):
        quorel.Checker(module, materials={"Gemeinden": bare})
    path = tmp_path / "gemeinden.csv"
    path.write_text("PLZ;Ort\n10115;Berlin\n", encoding="cp1252")
    with pytest.raises(ValueError, match=re.escape(str(path)) + ": " + message):
        quorel.Checker(module, materials={"Gemeinden": str(path)})
    # A stray column beside the fields: a warning, under strict an error.
    extra = pd.read_csv(gemeinden, sep=";", dtype=str, encoding="cp1252").assign(**{"Gemeinden.Kreis": "A"})
    stray = "material Gemeinden: column Gemeinden.Kreis names no field: Gemeinden has no field Kreis"
    with pytest.warns(quorel.MaterialWarning, match=stray):
        quorel.Checker(module, materials={"Gemeinden": extra})
    with pytest.raises(ValueError, match=stray):
        quorel.Checker(module, materials={"Gemeinden": extra}, strict=True)
    # Postcodes read as numbers have lost their leading zeros: lookups of the texts would miss.
    numbers = pd.DataFrame({"Gemeinden.PLZ": [1067, 10115], "Gemeinden.Ort": ["Dresden", "Berlin"]})
    lost = ("material Gemeinden: column Gemeinden.PLZ holds numbers (int64) where the rules read a text, so leading "
            "zeros and the form of the text are lost: read the material with dtype=str")
    with pytest.warns(quorel.MaterialWarning, match=re.escape(lost)):
        quorel.Checker(module, materials={"Gemeinden": numbers})
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        quorel.Checker(module, materials={"Gemeinden": numbers.astype(str)})
    # A column given twice, in a frame as in a file: a record keeps one cell per column.
    twice = pd.concat([extra.drop(columns="Gemeinden.Kreis"), extra[["Gemeinden.Ort"]]], axis=1)
    with pytest.raises(ValueError, match=r"^material Gemeinden: column Gemeinden.Ort appears 2 times in the header "
                                         r"\(columns 2, 3\)"):
        quorel.Checker(module, materials={"Gemeinden": twice})


def test_a_csv_file_in_another_encoding_than_it_is_read_in_is_named(module, data_dir, gemeinden, tmp_path):
    def as_utf8(path):
        copy = tmp_path / os.path.basename(path)
        copy.write_bytes(open(path, "rb").read().decode("cp1252").encode("utf-8"))
        return str(copy)

    records = os.path.join(data_dir, "antraege.csv")
    utf8, utf8_gemeinden = as_utf8(records), as_utf8(gemeinden)
    told = re.escape(utf8) + r' looks like UTF-8 \(line 2 holds "Müller"\), but is read as Windows-1252, which ' \
        r'makes that "MÃ¼ller": pass encoding="utf-8"'
    materials = {"Gemeinden": gemeinden}
    with pytest.warns(quorel.FileEncodingWarning, match=told):
        wrong = quorel.check_frame(utf8, module, materials=materials)
    with pytest.raises(ValueError, match=told):
        quorel.check_frame(utf8, module, materials=materials, strict=True)
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        right = quorel.check_frame(utf8, module, materials={"Gemeinden": utf8_gemeinden}, encoding="utf-8")
        assert right.equals(quorel.check_frame(records, module, materials=materials))
    assert len(wrong) == len(right)  # the same rows, their texts aside
    # The other way round, for a material's file as for the records'.
    with pytest.warns(quorel.FileEncodingWarning, match=re.escape(gemeinden) + r' is read as UTF-8, but line 4 is no '
                      r'UTF-8 \(as Windows-1252 it holds "München"\): pass encoding="windows-1252"'):
        with pytest.raises(ValueError, match="gemeinden.csv:4"):
            quorel.Checker(module, materials=materials, encoding="utf-8")
    # A start of ASCII alone cannot tell; the first row beyond ASCII does,
    # found before the rows are checked, for a material's file as for the
    # records'.
    ascii_rows = [line for line in open(records, "rb").read().split(b"\n")[1:] if line and max(line) < 0x80]
    filler = b"\n".join(ascii_rows * (1 + (1 << 20) // len(b"\n".join(ascii_rows))))
    late = tmp_path / "late.csv"
    late.write_bytes(open(records, "rb").read().split(b"\n")[0] + b"\n" + filler + b"\n" +
                     open(utf8, "rb").read().split(b"\n")[1] + b"\n")
    line = late.read_bytes().count(b"\n")
    later = re.escape(str(late)) + r' looks like UTF-8 \(line %d holds "Müller"\), but is read as Windows-1252, ' \
        r'which makes that "MÃ¼ller": pass encoding="utf-8"' % line
    with pytest.warns(quorel.FileEncodingWarning, match=later):
        checked = quorel.check_frame(str(late), module, materials=materials)
    assert len(checked.index.unique()) > 0
    with pytest.raises(ValueError, match=later):
        quorel.check_frame(str(late), module, materials=materials, strict=True)


def run_alone(script, timeout=60):

    """Runs a script in a fresh interpreter; a hang or a crash fails."""
    try:
        done = subprocess.run([sys.executable, "-c", textwrap.dedent(script)], capture_output=True, text=True,
                              timeout=timeout, env=dict(os.environ))
    except subprocess.TimeoutExpired:
        pytest.fail("the script hung:\n" + script)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


def test_eight_threads_make_their_first_checks_at_once(antrag_library, gemeinden):
    # Their first cells are numbers, whose reading imports pandas.
    out = run_alone("""
        import threading, quorel
        checker = quorel.Checker(quorel.RuleModule(%r, "Antrag"), flow="Schnellpruefung",
                                 materials={"Gemeinden": %r})
        start = threading.Barrier(8)
        results = []
        def first():
            start.wait()
            results.append(checker.check({"Antrag.Betrag": 20000, "Antrag.Kinder#": 0}).ok)
        threads = [threading.Thread(target=first) for _ in range(8)]
        for t in threads: t.start()
        for t in threads: t.join()
        print(len(results))
        """ % (antrag_library, gemeinden), timeout=120)
    assert out.split() == ["8"]


def test_close_while_other_threads_run_functions(stoerfall):
    out = run_alone("""
        import threading, quorel
        module = quorel.RuleModule(%r, "Stoerfall")
        going = threading.Barrier(5)
        outcomes = []
        def call():
            going.wait()
            try:
                while True:
                    assert module.perform_function("Text", {"Stoerfall.Text": "x" * 1000}) == "x" * 1000
            except ValueError as e:
                outcomes.append(str(e))
        threads = [threading.Thread(target=call) for _ in range(4)]
        for t in threads: t.start()
        going.wait()
        module.close()
        for t in threads: t.join()
        print(sorted(set(outcomes)), len(outcomes))
        """ % stoerfall.library_path)
    assert out.strip() == "['the rule module is closed'] 4"


def test_loading_a_material_lets_other_threads_run(antrag_library, tmp_path):
    # The material is a pipe: it opens when this thread writes to it, which
    # needs the GIL while the checker's thread waits in the open.
    pipe = tmp_path / "gemeinden.csv"
    os.mkfifo(pipe)
    out = run_alone("""
        import os, threading, quorel
        module = quorel.RuleModule(%r, "Antrag")
        made = []
        loader = threading.Thread(target=lambda: made.append(quorel.Checker(module, materials={"Gemeinden": %r})))
        loader.start()
        writer = os.open(%r, os.O_WRONLY)  # waits for the loader to open it
        os.write(writer, "Gemeinden.PLZ;Gemeinden.Ort\\n80331;M\\u00fcnchen\\n".encode("cp1252"))
        os.close(writer)
        loader.join()
        print(made[0].check({"Antrag.Adresse.PLZ": "80331", "Antrag.Adresse.Ort": "Bonn"}).ok)
        """ % (antrag_library, str(pipe), str(pipe)))
    assert out.split() == ["False"]


def test_connecting_to_a_database_lets_other_threads_run(antrag_library):
    if "postgresql" not in quorel._quorel._databases:
        pytest.skip("quorel was built without PostgreSQL (libpq-dev)")
    # A server that answers only when this thread runs: it hangs up. Were
    # the GIL held while connecting, the client would give up first.
    out = run_alone("""
        import socket, threading, quorel
        server = socket.socket()
        server.bind(("127.0.0.1", 0))
        server.listen(1)
        url = "postgresql://quorel@127.0.0.1:%%d/register?table=gemeinden" %% server.getsockname()[1]
        module = quorel.RuleModule(%r, "Antrag")
        failures = []
        def connect():
            try:
                quorel.Checker(module, materials={"Gemeinden": url})
            except quorel.DatabaseError as e:
                failures.append("server closed the connection" in str(e))
        client = threading.Thread(target=connect)
        client.start()
        connection, _ = server.accept()
        connection.recv(1024)  # the start-up message, sent without the GIL
        connection.close()
        client.join()
        print(failures)
        """ % antrag_library)
    assert out.split() == ["[True]"]
