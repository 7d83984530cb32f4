"""Records and materials from databases: each test on a fresh SQLite file,
and once more on PostgreSQL when tests/sql/with_postgresql.sh runs the tests
(CTest: PythonPackageOnPostgresql). The Antrag example in the database gives
the problems it gives from its CSV files."""
import glob
import os
import shutil
import sqlite3
import subprocess
import urllib.parse
import warnings

import pandas as pd
import pytest

import quorel

if "sqlite" not in quorel._quorel._databases:
    pytest.skip("quorel was built without databases (libsqlite3-dev)", allow_module_level=True)


def literal(value):
    if value is None or (isinstance(value, float) and value != value):
        return "NULL"
    if isinstance(value, int):
        return str(value)
    return "'" + str(value).replace("'", "''") + "'"


class Database:
    """A database of one test; tables are made from rows of Python values
    (None for NULL) by SQL text, the same for both kinds."""

    def __init__(self, backend, tmp_path):
        self.backend = backend
        if backend == "sqlite":
            self.base = "sqlite:" + str(tmp_path / "test.db")
            return
        if "postgresql" not in quorel._quorel._databases:
            pytest.skip("quorel was built without PostgreSQL (libpq-dev)")
        self.base = os.environ.get("QUOREL_TEST_POSTGRESQL")
        if not self.base:
            pytest.skip("no PostgreSQL server: CTest runs these tests on one as PythonPackageOnPostgresql")
        self.psql = shutil.which("psql") or (glob.glob("/usr/lib/postgresql/*/bin/psql") or [None])[0]
        if self.psql is None:
            pytest.skip("psql is missing")

    def url(self, **parameters):
        return self.base + ("&" if "?" in self.base else "?") + urllib.parse.urlencode(parameters, quote_via=urllib.parse.quote)

    def execute(self, script):
        if self.backend == "sqlite":
            with sqlite3.connect(self.base[len("sqlite:"):]) as connection:
                connection.executescript(script)
            return
        subprocess.run([self.psql, "-X", "-q", "-v", "ON_ERROR_STOP=1", self.base], input=script.encode("utf-8"),
                       check=True, env=dict(os.environ, PGCLIENTENCODING="UTF8"))

    def create(self, table, columns, rows, index=None):
        """columns: [(name, SQL type)]; index: the columns to index."""
        names = ", ".join('"%s"' % name for name, _ in columns)
        script = ['DROP TABLE IF EXISTS "%s";' % table,
                  'CREATE TABLE "%s" (%s);' % (table, ", ".join('"%s" %s' % c for c in columns))]
        script += ['INSERT INTO "%s" (%s) VALUES (%s);' % (table, names, ", ".join(literal(v) for v in row))
                   for row in rows]
        if index:
            script.append('CREATE INDEX ON "%s" (%s);' % (table, ", ".join('"%s"' % c for c in index))
                          if self.backend == "postgresql" else
                          'CREATE INDEX "%s_index" ON "%s" (%s);' % (table, table, ", ".join('"%s"' % c for c in index)))
        self.execute("\n".join(script))


@pytest.fixture(params=["sqlite", "postgresql"])
def db(request, tmp_path):
    return Database(request.param, tmp_path)


def iso(date):
    day, month, year = date.split(".")
    return "%s-%s-%s" % (year, month, day)


def store_antraege(db, antraege, table="antraege"):
    """The records in a table: sizes as integers, the application date as a
    date, empty cells as NULL."""
    types = {"Antrag.Kinder#": "INTEGER", "Antrag.Einkommen#": "INTEGER", "Antrag.Antragsdatum": "DATE"}
    columns = [(c, types.get(c, "TEXT")) for c in antraege.columns]
    rows = []
    for record in antraege.itertuples(index=False):
        row = [None if pd.isna(v) else v for v in record]
        for i, (name, kind) in enumerate(columns):
            if row[i] is not None and kind == "INTEGER":
                row[i] = int(row[i])
            if row[i] is not None and kind == "DATE":
                row[i] = iso(row[i])
        rows.append(row)
    db.create(table, columns, rows)


def store_gemeinden(db, gemeinden, table="gemeinden"):
    """The material with its columns named as below the material (plz, ort),
    indexed on the filter column."""
    places = pd.read_csv(gemeinden, sep=";", dtype=str, encoding="cp1252")
    db.create(table, [("plz", "TEXT"), ("ort", "TEXT")], places.values.tolist(), index=["plz"])


def test_tables_give_the_problems_of_the_csv_files(db, module, antraege, gemeinden):
    store_antraege(db, antraege)
    store_gemeinden(db, gemeinden)
    want = quorel.check_frame(antraege, module, flow="Pruefung", materials={"Gemeinden": gemeinden})
    got = quorel.check_frame(db.url(table="antraege"), module, flow="Pruefung",
                             materials={"Gemeinden": db.url(table="gemeinden")})
    pd.testing.assert_frame_equal(got, want)
    assert got.attrs["summary"] == want.attrs["summary"]
    # A query's rows are labelled by their place in its result.
    query = 'SELECT * FROM antraege WHERE "Antrag.Adresse.Ort" = \'M\u00fcnchen\''
    got = quorel.check_frame(db.url(query=query), module, flow="Pruefung",
                             materials={"Gemeinden": db.url(table="gemeinden")})
    assert set(got.index) == {0}
    assert list(got["id"]) == list(want.loc[1, "id"])


def test_numbers_where_the_rules_read_a_text_warn_once(db, module, antraege, gemeinden):
    # A postcode stored as a number has lost its leading zeros in the
    # database; sizes of numbers are what the rules expect.
    store_antraege(db, antraege)
    db.create("zahlen", [("Antrag.Adresse.PLZ", "INTEGER"), ("Antrag.Kinder#", "INTEGER")], [["01067", 0]])
    checker = quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": gemeinden})
    with warnings.catch_warnings():
        warnings.simplefilter("error", quorel.ColumnWarning)
        checker.check_frame(db.url(table="antraege"))
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        checker.check_frame(db.url(table="zahlen"))
        checker.check_frame(db.url(table="zahlen"))
    assert [str(w.message) for w in caught if w.category is quorel.ColumnWarning] == [
        "column Antrag.Adresse.PLZ holds numbers (%s) where the rules read a text, so leading zeros and the form of "
        "the text are lost: store the values in a column of text, as they were written"
        % ("INTEGER" if db.backend == "sqlite" else "integer")]


def test_umlauts_nulls_and_cells_that_cannot_be_fields(db, module):
    db.create("orte", [("PLZ", "TEXT"), ("Ort", "TEXT")], [["80331", "M\u00fcnchen"], [None, "Nirgends"]])
    checker = quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": db.url(table="orte")})
    record = {"Antrag.Adresse.PLZ": "80331", "Antrag.Adresse.Ort": "M\u00fcnchen"}
    assert "ADR-03" not in [p.id for p in checker.check(record).problems]
    record["Antrag.Adresse.Ort"] = "Muenchen"
    problem = [p for p in checker.check(record).problems if p.id == "ADR-03"][0]
    assert problem.long_text == "Die Postleitzahl geh\u00f6rt laut Gemeindeverzeichnis zu einem anderen Ort."
    # A text outside Windows-1252 and a size that is no number make error
    # rows naming the table and column; NULL leaves a field empty.
    db.create("kaputt", [("Antrag.Antragsteller.Name", "TEXT"), ("Antrag.Kinder#", "TEXT"),
                         ("Antrag.Adresse.Ort", "TEXT")],
              [["\u0141ukasz", "0", "K\u00f6ln"], ["M\u00fcller", "viele", None], [None, None, "Stra\u00dfe"]])
    frame = checker.check_frame(db.url(table="kaputt"))
    errors = frame[frame["failure"].notna()]
    assert list(errors.index) == [0, 1]
    assert "kaputt" in errors["failure"][0] and "Antrag.Antragsteller.Name" in errors["failure"][0]
    assert "viele" in errors["failure"][1]
    assert "PER-01" in list(frame.loc[2, "id"])  # the name is missing
    assert frame.attrs["summary"]["records"] == 3 and frame.attrs["summary"]["not_checked"] == 2


def test_sources_that_cannot_be_read_raise(db, module, antraege, gemeinden, tmp_path):
    store_antraege(db, antraege)
    bad = [db.url(table="fehlt"), db.url(query="SELEKT 1"), db.url(table="antraege", order="fehlt")]
    if db.backend == "sqlite":
        bad += ["sqlite:", "sqlite:/nonexistent/x.db?table=t", "sqlite:x.db?tabelle=t"]
    else:
        bad += ["postgresql://127.0.0.1:1/quorel?table=antraege&connect_timeout=5",
                # The server ends the connection while the rows stream in.
                db.url(query='SELECT \'AB-\' || n AS "Antrag.Antragsnummer" FROM generate_series(1, 5000) AS n '
                             "WHERE n < 4000 OR pg_terminate_backend(pg_backend_pid())")]
    for source in bad:
        with pytest.raises(quorel.DatabaseError) as error:
            quorel.check_frame(source, module, flow="Pruefung", materials={"Gemeinden": gemeinden})
        assert isinstance(error.value, ValueError)
        assert str(error.value)
    with pytest.raises(quorel.DatabaseError, match="Gemeinden.*fehlt"):
        quorel.Checker(module, materials={"Gemeinden": db.url(table="fehlt")})
    with pytest.raises(TypeError):
        quorel.check_frame(42, module, materials={"Gemeinden": gemeinden})
    # A material without the column that a rule filters on fails the run:
    # PlausiError from check, an error row from check_frame.
    db.create("ohne_ort", [("plz", "TEXT")], [["80331"]])
    checker = quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": db.url(table="ohne_ort")})
    record = {"Antrag.Adresse.PLZ": "80331", "Antrag.Adresse.Ort": "M\u00fcnchen"}
    with pytest.raises(quorel.PlausiError) as error:
        checker.check(record)
    assert error.value.type == 6 and "ohne_ort" in error.value.message
    frame = checker.check_frame(pd.DataFrame([record]))
    assert frame["failure"].iloc[0].startswith("exception 6")


def test_a_tables_missing_columns_are_named_before_any_record(db, module):
    db.create("nur_plz", [("plz", "TEXT")], [["80331"]])
    with pytest.warns(quorel.MaterialWarning, match="table nur_plz: material Gemeinden: the table has no column "
                                                    "for the field Gemeinden.Ort"):
        quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": db.url(table="nur_plz")})
    with pytest.raises(ValueError, match="no column for the field Gemeinden.Ort"):
        quorel.Checker(module, flow="Pruefung", strict=True, materials={"Gemeinden": db.url(table="nur_plz")})
    db.create("fremd", [("a", "TEXT")], [["x"]])
    with pytest.raises(ValueError, match=r"a column for none of the fields \(Gemeinden.Ort, Gemeinden.PLZ\)"):
        quorel.Checker(module, flow="Pruefung", materials={"Gemeinden": db.url(table="fremd")})


def test_slices_only_in_a_stable_order(db, module, antraege, gemeinden):
    """Slices (as quorel.dask reads them) of a source without a stable order
    could lose and double rows: they are refused, and order= gives one."""
    store_antraege(db, antraege)
    keyless = "antraege"
    if db.backend == "sqlite":  # a table keeps its rows in rowid order; a view has none
        db.execute('CREATE VIEW keyless AS SELECT * FROM antraege;')
        keyless = "keyless"
    checker = quorel.Checker(module, materials={"Gemeinden": gemeinden})
    query = "SELECT * FROM antraege"
    assert len(checker.check_frame(db.url(table=keyless))) > 0  # read whole, in one statement
    for source in (db.url(table=keyless), db.url(query=query)):
        with pytest.raises(quorel.DatabaseError, match="order=A,B"):
            checker._check_rows(source, 1, 2)
    want = quorel.check_frame(antraege.sort_values("Antrag.Antragsnummer").reset_index(drop=True), module,
                              materials={"Gemeinden": gemeinden})
    for source in (db.url(table=keyless, order="Antrag.Antragsnummer"),
                   db.url(query=query, order="Antrag.Antragsnummer")):
        ordered = checker.check_frame(source)
        slices = pd.concat([checker._check_rows(source, offset, 1) for offset in range(len(antraege))])
        pd.testing.assert_frame_equal(slices.astype(str), ordered.astype(str))
        pd.testing.assert_frame_equal(ordered.drop(columns="line").astype(str), want.drop(columns="line").astype(str))


ZAHL_RULES = """MODUL Zahl
SATZ Zahl
  FELD Wert TEXT
ENDE
ABLAUF Pruefung: Wert
REGEL Wert
  WENN GUELTIG(Zahl.Wert) DANN
    MELDE HINWEIS "Z-01" GEWICHT 1 TEXT Zahl.Wert
  ENDE
ENDE
"""


def test_postgresql_numeric_keeps_every_digit(db):
    if db.backend == "sqlite":
        pytest.skip("SQLite has no decimal type: its NUMERIC columns hold whole numbers and doubles")
    db.create("zahlen", [("Zahl.Wert", "NUMERIC")], [["12345678901234567.89"], ["0.10"], ["-7"], [None]])
    module = quorel.RuleModule.from_text(ZAHL_RULES, name="zahl.qr")
    frame = quorel.check_frame(db.url(table="zahlen"), module)
    assert list(frame["text"]) == ["12345678901234567,89", "0,10", "-7"]
