"""Mistakes that must not pass silently, with the module Umfrage: a module
that does not load, a flow it does not know, columns that name no field."""
import os
import subprocess
import sys
import warnings

import pandas as pd
import pytest

import quorel


@pytest.fixture
def umfrage(umfrage_library):
    m = quorel.RuleModule(umfrage_library, "Umfrage")
    yield m
    m.close()


@pytest.fixture
def umfragen(data_dir):
    return pd.read_csv(os.path.join(data_dir, "umfragen.csv"), sep=";", dtype=str, encoding="cp1252")


def test_umfrage_frame_gives_what_the_command_line_tool_gives(umfrage, umfragen, data_dir):
    with warnings.catch_warnings():
        warnings.simplefilter("error")  # every column names a field
        frame = quorel.check_frame(umfragen, umfrage, flow="Pruefung")
    expected = open(os.path.join(data_dir, "umfragen.expected.txt"), encoding="utf-8").read()
    assert list(frame.index) == [1] * 7
    assert list(frame["id"]) == ["UMF-01", "UMF-02", "UMF-03", "UMF-04", "UMF-05", "UMF-06", "UMF-06"]
    for _, row in frame.iterrows():
        assert "line 3: %s %s (weight %d): %s" % ("hint" if row["type"] == 2 else "error", row["id"],
                                                   row["weight"], row["text"]) in expected
    assert list(frame["field"])[-2:] == ["Umfrage.Antworten[0].Note", "Umfrage.Antworten[2].Note"]


def test_load_failures_say_why(umfrage_library, hidden_entry_library):
    bare = os.path.basename(umfrage_library)
    with pytest.raises(quorel.PlausiError) as error:
        quorel.RuleModule(bare, "Umfrage")
    assert (error.value.type, error.value.message) == (1, bare)
    assert bare + ": cannot open shared object file" in error.value.detail
    assert "a library path without '/' is searched only in the system's library paths" in error.value.detail
    assert error.value.detail in str(error.value)

    with pytest.raises(quorel.PlausiError) as error:
        quorel.RuleModule(hidden_entry_library, "Versteckt")
    assert (error.value.type, error.value.message) == (2, "Versteckt")
    for text in ("has no entry point loadPlausiVersteckt", "undefined symbol: loadPlausiVersteckt",
                 "with default visibility", "QUOREL_MODULE(Versteckt, Class)"):
        assert text in error.value.detail
    # Failures of the rules carry no detail.
    with pytest.raises(quorel.PlausiError) as error:
        quorel.RuleModule(umfrage_library, "Umfrage").check_field("Umfrage.Fehlt", {})
    assert error.value.detail is None


def test_a_flow_the_module_does_not_know_is_refused(umfrage):
    with pytest.raises(ValueError, match=r"module Umfrage has no flow Antwort \(its flows: Pruefung, Antworten\)"):
        quorel.Checker(umfrage, flow="Antwort")
    assert quorel.Checker(umfrage, flow="Antworten").check({"Umfrage.Antworten[1].Note": 9}).ok is False
    quorel.Checker(umfrage)  # no flow: the module's own choice
    with pytest.raises(ValueError, match="flow: the character at position 3 is not in Windows-1252"):
        quorel.Checker(umfrage, flow="Ant\udcfcworten")


def test_names_and_texts_of_another_type_are_named(umfrage):
    for call, told in ((lambda: umfrage.perform_function(5, {}), "function name must be a str, not int"),
                       (lambda: umfrage.check_field(None, {}), "field name must be a str, not NoneType"),
                       (lambda: quorel.RuleModule.from_text(5), "text must be a str or bytes, not int"),
                       (lambda: quorel.RuleModule("x.so", 5), "module name must be a str, not int")):
        with pytest.raises(TypeError, match="^%s$" % told):
            call()


def test_columns_that_name_no_field_warn_once_or_fail_when_strict(umfrage, umfragen):
    frame = umfragen.assign(**{"Umfrage.Nmae": "x", "Umfrage.Antworten[3].Note": "9"})
    nmae = "column Umfrage.Nmae names no field: Umfrage has no field Nmae"
    beyond = ("column Umfrage.Antworten[3].Note: index 3 is beyond the size 3 that the module declares for "
              "Umfrage.Antworten")
    checker = quorel.Checker(umfrage, flow="Pruefung")
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        problems = checker.check_frame(frame)
        checker.check_frame(frame)
        checker.check({"Umfrage.Nmae": "x", "Umfrage.Name": "Berger"})
        checker.check({"Umfrage.Naem": "x"})
    assert [(w.category, str(w.message)) for w in caught] == [
        (quorel.ColumnWarning, nmae), (quorel.ColumnWarning, beyond),
        (quorel.ColumnWarning, "column Umfrage.Naem names no field: Umfrage has no field Naem")]
    assert problems.attrs["summary"]["records"] == 3  # the records are still checked

    strict = quorel.Checker(umfrage, flow="Pruefung", strict=True)
    with pytest.raises(quorel.RecordError) as error:
        strict.check_frame(frame)
    assert str(error.value) == nmae + "\n" + beyond
    with pytest.raises(quorel.RecordError, match="Umfrage has no field Nmae"):
        strict.check({"Umfrage.Nmae": "x"})
    with pytest.raises(quorel.RecordError, match="Umfrage has no field Nmae"):
        strict.check({"Umfrage.Nmae": "x"})  # every time, not once
    assert strict.check({"Umfrage.Name": "Berger", "Umfrage.Antworten[2].Note": 7}).ok is False

    # A table none of whose columns is read would have every row checked as
    # empty, whatever strict says; one record may hold keys of its own alone.
    bare = umfragen.rename(columns=lambda c: c.split(".", 1)[1])
    with pytest.warns(quorel.ColumnWarning), pytest.raises(quorel.RecordError, match="none of the columns names a "
                                                             "field that the module reads"):
        checker.check_frame(bare)
    with pytest.raises(quorel.RecordError, match="(?s)^column Name names no field.*\nnone of the columns names a field"):
        strict.check_frame(bare)
    with pytest.warns(quorel.ColumnWarning):
        assert checker.check({"Kennung": "7"}).ok is False
    # So would rows without columns at all.
    with pytest.raises(quorel.RecordError, match="the frame has 3 rows but no columns"):
        checker.check_frame(pd.DataFrame(index=range(3)))
    assert len(checker.check_frame(pd.DataFrame())) == 0


def test_a_column_name_given_twice_is_refused_at_the_start(umfrage, umfragen, tmp_path):
    frame = pd.concat([umfragen, umfragen[["Umfrage.Name"]]], axis=1)
    repeated = "column Umfrage.Name appears 2 times in the header \\(columns 1, %d\\)" % len(frame.columns)
    with pytest.raises(ValueError, match=repeated):
        quorel.check_frame(frame, umfrage, flow="Pruefung")
    path = tmp_path / "twice.csv"
    frame.to_csv(path, sep=";", index=False, encoding="cp1252")
    with pytest.raises(ValueError, match="rename or drop the others"):
        quorel.check_frame(str(path), umfrage, flow="Pruefung")


def test_a_file_name_that_is_not_utf8_is_refused_with_what_to_do(umfrage, umfrage_library, data_dir, tmp_path):
    # A name that a Windows-1252 system wrote: Python holds its byte 0xFC as a lone surrogate.
    named = os.fsdecode(os.fsencode(str(tmp_path)) + b"/umfragen-\xfc.csv")
    with open(os.path.join(data_dir, "umfragen.csv"), "rb") as source, open(named, "wb") as out:
        out.write(source.read())
    told = "umfragen-\\\\xfc.csv: the name is not in UTF-8 .* rename the file, or link to it under a UTF-8 name"
    for given in (named, os.fsencode(named)):
        with pytest.raises(ValueError, match=told):
            quorel.check_frame(given, umfrage)
        with pytest.raises(ValueError, match=told):
            quorel.Checker(umfrage, materials={"Orte": given})
        with pytest.raises(ValueError, match=told):
            quorel.Checker(umfrage, log=given)
    with pytest.raises(ValueError, match="is not in UTF-8"):
        quorel.RuleModule(os.fsdecode(os.fsencode(umfrage_library) + b"\xfc"), "Umfrage")
    # Under a UTF-8 name, given as str or as bytes, the same file is read.
    linked = tmp_path / "umfragen-ü.csv"
    os.symlink(os.fsencode(named), linked)
    frame = quorel.check_frame(str(linked), umfrage)
    assert frame.equals(quorel.check_frame(os.fsencode(str(linked)), umfrage))
    assert len(frame) == 7


def test_a_file_that_fails_midway_is_named_with_its_line(umfrage_library, tmp_path):
    failing = os.environ.get("QUOREL_FAILING_READ")
    if not failing:
        pytest.skip("QUOREL_FAILING_READ is not set: run the tests through CTest")
    # A disk that fails after 20000 bytes of the file, whose name is UTF-8.
    path = tmp_path / "l\u00e4nge.csv"
    text = "Umfrage.Name;Umfrage.Alter\n" + "".join("Name %d;10\n" % i for i in range(2000))
    path.write_text(text, encoding="cp1252")
    script = ("import sys, quorel\n"
              "module = quorel.RuleModule(sys.argv[1], 'Umfrage')\n"
              "for jobs in (1, 2):\n"
              "    try:\n"
              "        quorel.check_frame(sys.argv[2], module, jobs=jobs)\n"
              "    except ValueError as e:\n"
              "        print(e)\n")
    env = dict(os.environ, LD_PRELOAD=failing, QUOREL_FAIL_READ_FILE=str(path), QUOREL_FAIL_READ_AFTER="20000")
    ran = subprocess.run([sys.executable, "-c", script, umfrage_library, str(path)], env=env, capture_output=True,
                         text=True, encoding="utf-8")
    assert ran.returncode == 0, ran.stderr
    told = "cannot read %s after line %d: Input/output error\n" % (path, text[:20000].count("\n"))
    assert ran.stdout == told * 2


def test_ctrl_c_stops_a_check_of_a_file(umfrage, tmp_path):
    import _thread
    import threading
    import time
    # A pipe that a thread keeps filling: only an interrupt ends the check,
    # or the thread's stop after ten seconds, which the check must not wait for.
    path = tmp_path / "endlos.csv"
    os.mkfifo(path)
    for jobs in (1, 2):
        stop = threading.Event()

        def feed():
            try:
                with open(path, "w", encoding="cp1252") as out:
                    out.write("Umfrage.Name;Umfrage.Alter\n")
                    while not stop.is_set():
                        out.write("Name;10\n" * 1000)
            except BrokenPipeError:
                pass

        feeder = threading.Thread(target=feed)
        feeder.start()
        safety = threading.Timer(10, stop.set)
        safety.start()
        timer = threading.Timer(0.2, _thread.interrupt_main)
        timer.start()
        began = time.monotonic()
        try:
            with pytest.raises(KeyboardInterrupt):
                quorel.check_frame(str(path), umfrage, jobs=jobs)
            assert time.monotonic() - began < 5
        finally:
            timer.cancel()
            safety.cancel()
            stop.set()
            feeder.join()
