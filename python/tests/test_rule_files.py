"""Rule files from Python: read from a path or a text, they find what the
C++ modules of the same rules find, and a faulty one names every mistake."""
import os
import pickle
import warnings

import numpy as np
import pandas as pd
import pytest

import quorel


def test_rule_files_find_what_the_cpp_modules_find(rules_dir, data_dir, antraege, antrag_library, umfrage_library,
                                                   gemeinden):
    found = {}
    umfragen = pd.read_csv(os.path.join(data_dir, "umfragen.csv"), sep=";", dtype=str, encoding="cp1252")
    for rule_file, library, name, records, materials in [
            ("antrag.qr", antrag_library, "Antrag", antraege, {"Gemeinden": gemeinden}),
            ("umfrage.qr", umfrage_library, "Umfrage", umfragen, {})]:
        path = os.path.join(rules_dir, rule_file)
        interpreted = quorel.RuleModule(path)
        assert (interpreted.module_name, interpreted.library_path) == (name, path)
        expected = quorel.check_frame(records, quorel.RuleModule(library, name), materials=materials)
        assert len(expected) > 0
        for module in (interpreted, quorel.RuleModule(path, name),
                       quorel.RuleModule.from_text(open(path, encoding="utf-8").read(), name=rule_file)):
            frame = quorel.check_frame(records, module, materials=materials)
            pd.testing.assert_frame_equal(frame, expected)
            assert frame.attrs["summary"] == expected.attrs["summary"]
        found[name] = expected
    # A checker of its own, one record at a time.
    checker = quorel.Checker(quorel.RuleModule(os.path.join(rules_dir, "antrag.qr")), materials={"Gemeinden": gemeinden})
    label = found["Antrag"].index[-1]
    result = checker.check(antraege.loc[label].to_dict())
    assert [p.id for p in result.problems] == list(found["Antrag"].loc[[label], "id"])


FAULTY = """MODUL Kurs
SATZ Kurs
  FELD Titel TEXT
ENDE
REGEL Titel
  WENN GUELTIG(Kurs.Dauer) DANN
  ENDE
ENDE
ABLAUF Pruefung: Titel, Ende
"""


def test_every_mistake_of_a_rule_file_is_named_at_once(tmp_path, rules_dir):
    with pytest.raises(quorel.RuleFileError) as raised:
        quorel.RuleModule.from_text(FAULTY, name="kurs.qr")
    lines = [line for line in str(raised.value).splitlines() if ": error: " in line]
    assert [line.split(": error: ")[0] for line in lines] == ["kurs.qr:6:21", "kurs.qr:9:25"]
    assert "Dauer" in lines[0]
    path = tmp_path / "kurs.qr"
    path.write_text(FAULTY, encoding="utf-8")
    with pytest.raises(quorel.RuleFileError, match="kurs.qr:6:21: error: "):
        quorel.RuleModule(path)
    with pytest.raises(quorel.RuleFileError, match="missing.qr"):
        quorel.RuleModule(str(tmp_path / "missing.qr"))
    with pytest.raises(ValueError, match="declares the module Antrag, not Umfrage"):
        quorel.RuleModule(os.path.join(rules_dir, "antrag.qr"), "Umfrage")
    with pytest.raises(TypeError, match="module's name"):
        quorel.RuleModule("libquorel_antrag_rules.so")
    # A lone surrogate (a text decoded with surrogateescape) is named where it stands.
    with pytest.raises(quorel.RuleFileError, match="kurs.qr:1:8: error: a character that Windows-1252 lacks"):
        quorel.RuleModule.from_text("MODUL K\udcfcrs\n" + FAULTY.split("\n", 1)[1], name="kurs.qr")
    with pytest.raises(ValueError, match="module name: the character at position 1 is not in Windows-1252"):
        quorel.RuleModule(os.path.join(rules_dir, "antrag.qr"), "A\udcfc")


def test_rule_modules_pickle_as_where_their_rules_come_from(rules_dir, antrag_library):
    path = os.path.join(rules_dir, "antrag.qr")
    text = FAULTY.replace("Kurs.Dauer", "Kurs.Titel").replace(", Ende", "")
    for module in (quorel.RuleModule(path), quorel.RuleModule(antrag_library, "Antrag"),
                   quorel.RuleModule.from_text(text, name="kurs.qr")):
        copy = pickle.loads(pickle.dumps(module))
        assert type(copy) is quorel.RuleModule
        assert (copy.module_name, copy.library_path, repr(copy)) == (module.module_name, module.library_path,
                                                                     repr(module))
    assert quorel.RuleModule.from_text(text.encode("cp1252")).library_path is None


def test_the_newcomers_survey_from_pandas_finds_what_the_command_line_finds(data_dir):
    survey = os.path.join(os.path.dirname(data_dir), "survey")
    frame = pd.read_csv(os.path.join(survey, "betriebe.csv"), sep=";", dtype=str, encoding="cp1252",
                        keep_default_na=False)
    found = quorel.check_frame(frame, quorel.RuleModule(os.path.join(survey, "erhebung.qr")),
                               materials={"Branchen": os.path.join(survey, "branchen.csv")})
    # The command line's expected output: one "line N: KIND ID ..." per problem.
    expected = []
    with open(os.path.join(survey, "betriebe.expected.txt"), encoding="utf-8") as text:
        for line in text:
            if line.startswith("line "):
                expected.append(line.split()[3])
    assert list(found["id"].astype(str)) == expected
    assert found.attrs["summary"]["not_checked"] == 0


GRENZE = """MODUL Grenzen
SATZ R
  FELD Zahl GANZZAHL
ENDE
REGEL Z ABSCHNITT "Regel Z"
WENN R.Zahl > PARAMETER("Grenze") DANN MELDE FEHLER "Z-1" GEWICHT 1 TEXT "zu gro\u00df"
ENDE
"""


def test_an_init_parameter_the_rule_file_never_reads_is_named_once(antrag_library, orte_library):
    module = quorel.RuleModule.from_text(GRENZE, name="grenze.qr")
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        checker = quorel.Checker(module, init={"Grenze": 5})
    assert [p.id for p in checker.check({"R.Zahl": "9"}).problems] == ["Z-1"]
    # numpy's numbers as Python's; a number beyond a double's range is refused.
    for limit, ids in ((np.int64(5), ["Z-1"]), (np.float32(9.5), [])):
        assert [p.id for p in quorel.Checker(module, init={"Grenze": limit}).check({"R.Zahl": "9"}).problems] == ids
    with pytest.raises(ValueError, match="init value Grenze is beyond the range of a number"):
        quorel.Checker(module, init={"Grenze": -10**400})
    with pytest.warns(quorel.InitWarning, match="init parameter Grenz is given, but rule file Grenzen reads no "
                                                r"parameter of that name \(it reads: Grenze\)"):
        quorel.Checker(module, init={"Grenz": 5})
    with pytest.raises(ValueError, match="init parameter Grenz is given"):
        quorel.Checker(module, init={"Grenz": 5}, strict=True)
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        quorel.Checker(module, init={"Grenz": 5}, warn=False)
        # A library module written by hand does not tell which parameters it
        # reads.
        quorel.Checker(quorel.RuleModule(antrag_library, "Antrag"), flow="Pruefung", init={"Grenz": 5},
                       materials={"Gemeinden": pd.DataFrame({"Gemeinden.PLZ": [], "Gemeinden.Ort": []})})
    # One compiled from a rule file does.
    with pytest.warns(quorel.InitWarning, match="init parameter Ortt is given, but module Orte reads no parameter "
                                                r"of that name \(it reads: Ort\)"):
        quorel.Checker(quorel.RuleModule(orte_library, "Orte"), init={"Ortt": "K\u00f6ln"})
