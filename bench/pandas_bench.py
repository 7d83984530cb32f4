#!/usr/bin/env python3
"""The Antrag rules written in vectorised pandas, beside quorel.

  PYTHONPATH=build/python /usr/bin/python3 bench/pandas_bench.py build [RECORDS] [REPEAT]
  PYTHONPATH=build/python /usr/bin/python3 bench/pandas_bench.py --check-only build [RECORDS]

The 13 rules of examples/rules/antrag_rules.cpp are written here as a data
team would write them in pandas: str methods, to_numeric and to_datetime
with errors="coerce", a merge for the material Gemeinden, boolean masks.
They give one row per problem, indexed by the label of the input row, with
the columns id, type, weight, text, details, field and sections of
quorel.check_frame.

The same rules run once more as a plain Python loop over the CSV rows
(csv.DictReader, datetime), as one writes them without pandas.

First all three are run on the same 100 000 generated applications (fewer
when RECORDS is smaller) and must report exactly the same problems, every
column but accessed (which fields a rule read); the run stops loudly
when they do not. --check-only stops there. Then RECORDS applications
(default 1 000 000) are timed, each the best of REPEAT runs (default 5):
  - pandas read_csv + check, and the check alone on a DataFrame in memory;
  - the plain Python loop;
  - quorel.check_frame on the CSV path and on that DataFrame, with its
    default threads (one per processor) and with jobs=1;
  - quorel-check --jobs 1, text and JSON Lines to /dev/null;
  - on 8 CSV files and a local cluster of two single-threaded workers,
    quorel.dask.check on the files beside the pandas rules over
    dask.dataframe.read_csv(...).map_partitions.
Every check ends with all problems in a DataFrame of this process. The
"ratio" lines give quorel's speed-up over pandas or the loop (above 1:
quorel is faster).

The pandas rules and the loop find what the module finds on any input but
texts that no generated record holds: upper case of letters other than a-z
and umlauts (str.upper maps more), a size or an income beside others that
is not a number (quorel reports such a row as not checked), and in pandas
dates beyond the year 2262, where its timestamps end.
"""
import argparse
import csv
import datetime
import functools
import json
import math
import os
import re
import subprocess
import sys
import tempfile

try:
    import numpy as np
    import pandas as pd
except ImportError as missing:  # CTest reports the check as skipped
    print("SKIPPED: %s lacks %s" % (sys.executable, missing.name))
    sys.exit(77)

import bench_support
import quorel

# id: type, weight, short text, long text, section trail (innermost first).
RULES = {
    "ANT-01": (1, 3, "Die Antragsnummer hat nicht die Form AA-123456.",
               "Zwei Gro\xdfbuchstaben, ein Bindestrich und sechs Ziffern.", ("Regel Antragsnummer", "Plausi")),
    "PER-01": (1, 10, "Der Name des Antragstellers fehlt.", "Ohne Namen kann der Antrag nicht bearbeitet werden.",
               ("Regel Name", "Plausi")),
    "PER-02": (1, 8, "Geburtsdatum oder Antragsdatum fehlt oder ist ung\xfcltig.",
               "Beide Daten werden in der Form TT.MM.JJJJ erwartet.", ("Regel Alter", "Plausi")),
    "PER-03": (1, 8, "Der Antragsteller ist noch nicht vollj\xe4hrig.",
               "Antr\xe4ge stellen k\xf6nnen nur Personen ab 18 Jahren.", ("Regel Alter", "Plausi")),
    "PER-04": (1, 4, "Unbekannter Familienstand.", "Erlaubt sind L, V, G und W.", ("Regel Familienstand", "Plausi")),
    "PER-05": (2, 1, "Familienstand geschieden oder verwitwet: Nachweis anfordern.",
               "Bitte Scheidungsurteil oder Sterbeurkunde beif\xfcgen.", ("Regel Familienstand", "Plausi")),
    "ADR-02": (1, 5, "Die Postleitzahl ist nicht f\xfcnfstellig.", "Eine Postleitzahl besteht aus genau f\xfcnf Ziffern.",
               ("Pruefung PLZ", "Regel Adresse", "Plausi")),
    "ADR-03": (2, 2, "Postleitzahl und Ort passen nicht zusammen.",
               "Die Postleitzahl geh\xf6rt laut Gemeindeverzeichnis zu einem anderen Ort.", ("Regel Adresse", "Plausi")),
    "KND-01": (1, 6, "Das Kind ist nicht j\xfcnger als der Antragsteller.",
               "Das Geburtsdatum des Kindes muss nach dem des Antragstellers liegen.", ("Kind", "Regel Kinder", "Plausi")),
    "KND-02": (2, 1, "Der Vorname eines Kindes fehlt.", "F\xfcr jedes Kind wird der Vorname ben\xf6tigt.",
               ("Kind", "Regel Kinder", "Plausi")),
    "BTR-01": (1, 7, "Der Betrag ist kein g\xfcltiger Geldbetrag.", "Erwartet wird ein Betrag wie 1.234,56.",
               ("Regel Betrag", "Plausi")),
    "BTR-02": (1, 7, "Der Betrag liegt nicht zwischen 0 und 10.000 Euro.",
               "H\xf6here Betr\xe4ge m\xfcssen gesondert beantragt werden.", ("Regel Betrag", "Plausi")),
    "EIN-01": (2, 2, "Ein Monatseinkommen liegt \xfcber 5.000 Euro.",
               "Bei hohem Einkommen besteht m\xf6glicherweise kein Anspruch.", ("Regel Einkommen", "Plausi")),
}
COLUMNS = ["id", "type", "weight", "text", "details", "field", "sections"]
FAMILIENSTAND = ["L", "V", "E", "G", "W"]
FORMER = ["G", "W"]  # below "ehemals verheiratet" (E)
# An amount under the mask ######.##: up to six digits, points only between
# groups of three behind a digit other than 0, up to two decimals.
AMOUNT = r"(?:[0-9]{1,6}|(?=[0-9]{0,2}[1-9])[0-9]{1,3}\.[0-9]{3})(?:,[0-9]{1,2})?"
DATE = r"[0-9]{2}\.[0-9]{2}\.[0-9]{4}"
NUMMER = r"[A-Z]{2}-[0-9]{6}"
PLZ = r"[0-9]{5}"
AMOUNT_FORM, DATE_FORM, NUMMER_FORM, PLZ_FORM = (re.compile(form) for form in (AMOUNT, DATE, NUMMER, PLZ))


def read_records(path):
    """A CSV file as quorel reads it: every cell a text, only an empty cell
    missing."""
    return pd.read_csv(path, sep=";", dtype=str, encoding="cp1252", keep_default_na=False, na_values=[""])


def _column(df, name):
    """A column, all missing when the frame has none of that name."""
    return df[name] if name in df.columns else pd.Series(np.nan, index=df.index, dtype=object)


def _size(df, name):
    return pd.to_numeric(_column(df, name), errors="coerce").fillna(0).astype(np.int64)


def _number(texts):
    """German numbers (1.234,56), NaN where a text is none."""
    return pd.to_numeric(texts.str.replace(".", "", regex=False).str.replace(",", ".", regex=False),
                         errors="coerce")


def _date(texts):
    """Dates TT.MM.JJJJ from 1900 on, NaT where a text is none. Parsing under
    a format goes text by text and is slow, so each distinct text is parsed
    once, as to_datetime's own cache does when it judges the texts
    repetitive enough: dates repeat from record to record."""
    codes, distinct = pd.factorize(texts)
    distinct = distinct.to_series()
    # to_datetime alone would take 1.1.2010 too.
    dates = pd.to_datetime(distinct.where(distinct.str.fullmatch(DATE)), format="%d.%m.%Y", errors="coerce")
    dates = dates.where(dates.dt.year >= 1900)
    # A missing text has the code -1, which picks the NaT at the end.
    return pd.Series(np.append(dates.to_numpy(), np.datetime64("NaT"))[codes], index=texts.index)


def _age(born, on):
    """Whole years from born to on; one born on 29 February comes of age on
    the 28th in other years."""
    day = born.dt.day.mask((born.dt.month == 2) & (born.dt.day == 29), 28)
    before = on.dt.month * 100 + on.dt.day < born.dt.month * 100 + day
    return on.dt.year - born.dt.year - before


class Findings:
    """The problems of a frame as rows, rule by rule: the positions where a
    mask holds, each under a kind (problem id and field)."""

    def __init__(self, index):
        self.index = index
        self.positions = []
        self.kinds = []
        self.codes = []

    def add(self, mask, problem_id, field):
        self.add_rows(np.flatnonzero(np.asarray(mask, dtype=bool)), problem_id, field)

    def add_rows(self, rows, problem_id, field):
        rows = np.asarray(rows, dtype=np.int64)
        self.positions.append(rows)
        self.codes.append(np.full(len(rows), len(self.kinds), dtype=np.int32))
        self.kinds.append((problem_id, field))

    def frame(self):
        """One row per problem, in the order of the records and within a
        record in the order of the rules."""
        positions = np.concatenate(self.positions) if self.positions else np.empty(0, np.int64)
        codes = np.concatenate(self.codes) if self.codes else np.empty(0, np.int32)
        order = np.argsort(positions, kind="stable")
        codes = codes[order]
        per_kind = {name: [] for name in COLUMNS}
        for problem_id, field in self.kinds:
            rule_type, weight, short_text, long_text, sections = RULES[problem_id]
            # Lists are JSON texts in a problem frame, as in a problem table.
            trail = json.dumps(list(sections), ensure_ascii=False, separators=(",", ":"))
            for name, value in zip(COLUMNS, (problem_id, rule_type, weight, short_text, long_text, field, trail)):
                per_kind[name].append(value)
        columns = {}
        for name in COLUMNS:
            if name in ("type", "weight"):
                columns[name] = np.array(per_kind[name], dtype=np.int32)[codes]
            else:
                columns[name] = _categorical(per_kind[name], codes)
        return pd.DataFrame(columns, index=self.index[positions[order]])


def _categorical(per_kind, codes):
    """A Categorical of the value of each row's kind."""
    uniques = list(dict.fromkeys(per_kind))
    at = {value: i for i, value in enumerate(uniques)}
    kind_codes = np.array([at[value] for value in per_kind], dtype=np.int32)
    return pd.Categorical.from_codes(kind_codes[codes], pd.Index(uniques, dtype=object, tupleize_cols=False))


def places(gemeinden):
    """The known pairs of postcode and place in upper case."""
    return pd.DataFrame({"plz": gemeinden["Gemeinden.PLZ"],
                         "ort": gemeinden["Gemeinden.Ort"].str.upper()}).dropna().drop_duplicates()


def check(df, known_places):
    """The problems of the flow Pruefung for every row of df (columns named
    by hierarchy text, cells texts, missing where empty), with the material
    Gemeinden as places() gives it."""
    found = Findings(df.index)

    nummer = _column(df, "Antrag.Antragsnummer")
    found.add(nummer.notna() & ~nummer.str.fullmatch(NUMMER, na=False), "ANT-01",
              "Antrag.Antragsnummer")

    name = _column(df, "Antrag.Antragsteller.Name")
    found.add(name.isna() | (name.str.len() < 2), "PER-01", "Antrag.Antragsteller.Name")

    born = _date(_column(df, "Antrag.Antragsteller.Geburtsdatum"))
    applied = _date(_column(df, "Antrag.Antragsdatum"))
    unknown = born.isna() | applied.isna()
    found.add(unknown, "PER-02", "Antrag.Antragsteller.Geburtsdatum")
    found.add(~unknown & (_age(born, applied) < 18), "PER-03", "Antrag.Antragsteller.Geburtsdatum")

    stand = _column(df, "Antrag.Antragsteller.Familienstand")
    found.add(~stand.isin(FAMILIENSTAND), "PER-04", "Antrag.Antragsteller.Familienstand")
    found.add(stand.isin(FORMER), "PER-05", "Antrag.Antragsteller.Familienstand")

    plz = _column(df, "Antrag.Adresse.PLZ")
    ort = _column(df, "Antrag.Adresse.Ort")
    found.add(plz.notna() & ~plz.str.fullmatch(PLZ, na=False), "ADR-02", "Antrag.Adresse.PLZ")
    asked = pd.DataFrame({"plz": plz, "ort": ort.str.upper()})
    matched = asked.merge(known_places, how="left", on=["plz", "ort"], indicator=True)["_merge"]
    found.add(plz.notna() & ort.notna() & (matched.to_numpy() == "left_only"), "ADR-03", "Antrag.Adresse.Ort")

    kinder = _size(df, "Antrag.Kinder#")
    for i in range(int(kinder.max()) if len(df) else 0):
        child = "Antrag.Kinder[%d]." % i
        present = kinder > i
        geboren = _date(_column(df, child + "Geburtsdatum"))
        found.add(present & geboren.notna() & born.notna() & (geboren <= born), "KND-01", child + "Geburtsdatum")
        found.add(present & _column(df, child + "Vorname").isna(), "KND-02", child + "Vorname")

    betrag = _column(df, "Antrag.Betrag")
    conform = betrag.isna() | betrag.str.fullmatch(AMOUNT, na=False)
    found.add(~conform, "BTR-01", "Antrag.Betrag")
    amount = _number(betrag)
    found.add(conform & betrag.notna() & ~((amount > 0) & (amount <= 10000)), "BTR-02", "Antrag.Betrag")

    einkommen = _size(df, "Antrag.Einkommen#")
    count = int(einkommen.max()) if len(df) else 0
    if count > 0:
        incomes = pd.DataFrame({i: _number(_column(df, "Antrag.Einkommen[%d]" % i)) for i in range(count)})
        highest = incomes.where(np.arange(count) < einkommen.to_numpy()[:, None]).max(axis=1)
        found.add(np.floor(highest + 0.5) > 5000, "EIN-01", "Antrag.Einkommen")

    return found.frame()


def check_file(path, gemeinden_path):
    """read_csv and check: what a data team runs on a file."""
    return check(read_records(path), places(read_records(gemeinden_path)))


def _date_of(text):
    """A date TT.MM.JJJJ from 1900 on, or None."""
    if DATE_FORM.fullmatch(text) is None:
        return None
    try:
        date = datetime.date(int(text[6:10]), int(text[3:5]), int(text[0:2]))
    except ValueError:
        return None
    return date if date.year >= 1900 else None


def _number_of(text):
    """A German number (1.234,56), or None."""
    try:
        return float(text.replace(".", "").replace(",", "."))
    except ValueError:
        return None


def _text(row, name):
    """A cell of a csv.DictReader row, "" for a column that is not there."""
    return row.get(name) or ""


def _size_of(text):
    try:
        return int(text)
    except ValueError:
        return 0


def check_rows(path, gemeinden_path):
    """The same rules as a plain Python loop over the rows of a CSV file
    (csv.DictReader, datetime, a set of the known places), ending in the
    frame that check() gives."""
    with open(gemeinden_path, encoding="cp1252", newline="") as source:
        known = {(row["Gemeinden.PLZ"], row["Gemeinden.Ort"].upper())
                 for row in csv.DictReader(source, delimiter=";") if row["Gemeinden.PLZ"] and row["Gemeinden.Ort"]}
    found = {}  # (id, field): row numbers

    def report(number, problem_id, field):
        found.setdefault((problem_id, field), []).append(number)

    number = -1
    with open(path, encoding="cp1252", newline="") as source:
        for number, row in enumerate(csv.DictReader(source, delimiter=";")):
            text = functools.partial(_text, row)
            nummer = text("Antrag.Antragsnummer")
            if nummer and NUMMER_FORM.fullmatch(nummer) is None:
                report(number, "ANT-01", "Antrag.Antragsnummer")
            if len(text("Antrag.Antragsteller.Name")) < 2:
                report(number, "PER-01", "Antrag.Antragsteller.Name")
            born = _date_of(text("Antrag.Antragsteller.Geburtsdatum"))
            applied = _date_of(text("Antrag.Antragsdatum"))
            if born is None or applied is None:
                report(number, "PER-02", "Antrag.Antragsteller.Geburtsdatum")
            else:
                day = 28 if (born.month, born.day) == (2, 29) else born.day
                if applied.year - born.year - ((applied.month, applied.day) < (born.month, day)) < 18:
                    report(number, "PER-03", "Antrag.Antragsteller.Geburtsdatum")
            stand = text("Antrag.Antragsteller.Familienstand")
            if stand not in FAMILIENSTAND:
                report(number, "PER-04", "Antrag.Antragsteller.Familienstand")
            elif stand in FORMER:
                report(number, "PER-05", "Antrag.Antragsteller.Familienstand")
            plz, ort = text("Antrag.Adresse.PLZ"), text("Antrag.Adresse.Ort")
            if plz and PLZ_FORM.fullmatch(plz) is None:
                report(number, "ADR-02", "Antrag.Adresse.PLZ")
            if plz and ort and (plz, ort.upper()) not in known:
                report(number, "ADR-03", "Antrag.Adresse.Ort")
            for i in range(_size_of(text("Antrag.Kinder#"))):
                child = "Antrag.Kinder[%d]." % i
                geboren = _date_of(text(child + "Geburtsdatum"))
                if geboren is not None and born is not None and geboren <= born:
                    report(number, "KND-01", child + "Geburtsdatum")
                if not text(child + "Vorname"):
                    report(number, "KND-02", child + "Vorname")
            betrag = text("Antrag.Betrag")
            if betrag and AMOUNT_FORM.fullmatch(betrag) is None:
                report(number, "BTR-01", "Antrag.Betrag")
            elif betrag and not 0 < _number_of(betrag) <= 10000:
                report(number, "BTR-02", "Antrag.Betrag")
            incomes = [_number_of(text("Antrag.Einkommen[%d]" % i)) for i in range(_size_of(text("Antrag.Einkommen#")))]
            incomes = [income for income in incomes if income is not None]
            if incomes and math.floor(max(incomes) + 0.5) > 5000:
                report(number, "EIN-01", "Antrag.Einkommen")
    findings = Findings(pd.RangeIndex(number + 1))
    for (problem_id, field), rows in found.items():
        findings.add_rows(rows, problem_id, field)
    return findings.frame()


def _rows(frame, columns):
    """The problems of a frame as a sorted list of plain tuples."""
    values = [frame.index.to_list()] + [frame[name].astype(object).to_list() for name in columns]
    # quorel's frame holds the trail of sections as a JSON array.
    values = [[tuple(json.loads(v)) if isinstance(v, str) and v.startswith("[") else v for v in column]
              for column in values]
    return sorted(zip(*values))


def check_identical(module, path, records):
    """Stops the run unless pandas, the plain loop and quorel find exactly
    the same problems in the file."""
    expected = quorel.check_frame(path, module, flow="Pruefung", materials={"Gemeinden": bench_support.GEMEINDEN})
    failed = expected["failure"].notna()
    if failed.any():
        sys.exit("quorel could not check %d rows, first: %s" % (failed.sum(), expected["failure"][failed].iloc[0]))
    theirs = _rows(expected, COLUMNS)
    for what, check_path in (("pandas", check_file), ("the plain loop", check_rows)):
        ours = _rows(check_path(path, bench_support.GEMEINDEN), COLUMNS)
        if ours != theirs:
            only_ours = sorted(set(ours) - set(theirs))
            only_theirs = sorted(set(theirs) - set(ours))
            sys.exit("%s and quorel differ on %d records: %d problems only in %s (first %s), %d only in quorel "
                     "(first %s)" % (what, records, len(only_ours), what, only_ours[:1], len(only_theirs),
                                     only_theirs[:1]))
    print("pandas, a plain loop and quorel find the same %d problems in %d records" % (len(theirs), records),
          flush=True)


def ratio(what, quorel_rate, pandas_rate):
    print("ratio %s: %.1fx" % (what, quorel_rate / pandas_rate), flush=True)


def measure(build, library, module, whole, folder, records, repeat):
    import dask.dataframe as dd
    import quorel.dask
    from distributed import Client, LocalCluster

    gemeinden = bench_support.GEMEINDEN
    options = dict(flow="Pruefung", materials={"Gemeinden": gemeinden})
    df = read_records(whole)
    known = places(read_records(gemeinden))

    def timed(what, run):
        return bench_support.timed(what, records, run, repeat)

    def native(*arguments):
        command = [os.path.join(build, "apps/quorel-check"), "--jobs", "1", "--material", "Gemeinden=" + gemeinden,
                   *arguments, library, "Antrag", whole]
        return lambda: subprocess.run(command, stdout=subprocess.DEVNULL)

    pandas_file = timed("pandas: read_csv + check", lambda: check_file(whole, gemeinden))
    pandas_alone = timed("pandas: check of a DataFrame", lambda: check(df, known))
    loop = timed("a plain Python loop over the CSV rows", lambda: check_rows(whole, gemeinden))
    on_path = timed("quorel.check_frame(CSV path)", lambda: quorel.check_frame(whole, module, **options))
    on_frame = timed("quorel.check_frame(DataFrame)", lambda: quorel.check_frame(df, module, **options))
    on_path_1 = timed("quorel.check_frame(CSV path), jobs=1",
                      lambda: quorel.check_frame(whole, module, jobs=1, **options))
    on_frame_1 = timed("quorel.check_frame(DataFrame), jobs=1",
                       lambda: quorel.check_frame(df, module, jobs=1, **options))
    text = timed("quorel-check --jobs 1, text to /dev/null", native())
    json = timed("quorel-check --jobs 1 --format json to /dev/null", native("--format", "json"))
    del df

    files = bench_support.split_records(whole, folder, 8)
    with LocalCluster(n_workers=2, threads_per_worker=1, host="127.0.0.1", processes=True) as cluster, \
            Client(cluster) as client:
        client.run(lambda: __import__("quorel"))  # the workers import the package once, untimed
        parts = dd.read_csv(files, sep=";", dtype=str, encoding="cp1252", keep_default_na=False, na_values=[""],
                            blocksize=None)
        rules = functools.partial(check, known_places=known)
        on_files = timed("quorel.dask.check, 8 files, 2 workers", lambda: quorel.dask.check(files, library, "Antrag",
                                                                                            **options).compute())
        pandas_dask = timed("pandas over dd.read_csv, 2 workers",
                            lambda: parts.map_partitions(rules, meta=rules(parts._meta)).compute())

    ratio("check_frame(CSV path) / pandas read_csv + check", on_path, pandas_file)
    ratio("check_frame(DataFrame) / pandas check alone", on_frame, pandas_alone)
    ratio("check_frame(CSV path), jobs=1 / pandas read_csv + check", on_path_1, pandas_file)
    ratio("check_frame(DataFrame), jobs=1 / pandas check alone", on_frame_1, pandas_alone)
    ratio("check_frame(CSV path) / a plain Python loop", on_path, loop)
    ratio("quorel-check --jobs 1 text / pandas read_csv + check", text, pandas_file)
    ratio("quorel-check --jobs 1 json / pandas read_csv + check", json, pandas_file)
    ratio("quorel.dask.check on files / pandas over dd.read_csv, 2 workers", on_files, pandas_dask)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("build", help="the build folder")
    parser.add_argument("records", nargs="?", type=int, default=1000000)
    parser.add_argument("repeat", nargs="?", type=int, default=5)
    parser.add_argument("--check-only", action="store_true", help="only compare pandas and quorel, no timing")
    arguments = parser.parse_args()

    library = os.path.join(arguments.build, "examples/rules/libquorel_antrag_rules.so")
    module = quorel.RuleModule(library, "Antrag")
    with tempfile.TemporaryDirectory() as folder:
        whole = os.path.join(folder, "all.csv")
        compared = min(arguments.records, 100000)
        bench_support.write_records(compared, whole)
        check_identical(module, whole, compared)
        if arguments.check_only:
            return
        if arguments.records != compared:
            bench_support.write_records(arguments.records, whole)
        measure(arguments.build, library, module, whole, folder, arguments.records, arguments.repeat)


if __name__ == "__main__":
    main()
