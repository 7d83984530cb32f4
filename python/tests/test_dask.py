"""quorel.dask on a local cluster of two worker processes: several CSV
partitions (read by pandas or by the workers themselves), or slices of a
database table, give exactly what check_frame gives."""
import os
import re
import sqlite3
import subprocess
import sys
import warnings

import pandas as pd
import pytest

dd = pytest.importorskip("dask.dataframe", reason="python3-dask is not installed")
distributed = pytest.importorskip("distributed", reason="python3-distributed is not installed")

import quorel  # noqa: E402
import quorel.dask  # noqa: E402

# The expected frames are computed in this process while the cluster's client is active.
pytestmark = pytest.mark.filterwarnings("ignore:Running on a single-machine scheduler:UserWarning")


@pytest.fixture(scope="module")
def generated():
    """1200 generated records as CSV text."""
    generator = os.environ.get("QUOREL_GENERATOR")
    if not generator:
        pytest.skip("QUOREL_GENERATOR is not set")
    return subprocess.run([sys.executable, generator, "1200"], check=True, capture_output=True).stdout


@pytest.fixture(scope="module")
def client():
    with distributed.LocalCluster(n_workers=2, threads_per_worker=2, processes=True, host="127.0.0.1",
                                  dashboard_address=None) as cluster, distributed.Client(cluster) as client:
        yield client


@pytest.fixture(scope="module")
def partitions(generated, tmp_path_factory):
    folder = tmp_path_factory.mktemp("records")
    lines = generated.splitlines(keepends=True)
    for i in range(4):
        with open(folder / ("part%d.csv" % i), "wb") as out:
            out.write(lines[0])
            out.writelines(lines[1 + i * 300:1 + (i + 1) * 300])
    return str(folder / "part*.csv")


def read(pattern):
    return dd.read_csv(pattern, sep=";", dtype=str, encoding="cp1252", blocksize=None)


def expected(ddf, library, gemeinden):
    module = quorel.RuleModule(library, "Antrag")
    return [quorel.check_frame(part, module, flow="Pruefung", materials={"Gemeinden": gemeinden})
            for part in (ddf.get_partition(i).compute(scheduler="sync") for i in range(ddf.npartitions))]


def test_local_cluster_gives_what_check_frame_gives(client, partitions, antrag_library, gemeinden):
    ddf = read(partitions)
    assert ddf.npartitions == 4
    want = expected(ddf, antrag_library, gemeinden)
    places = pd.read_csv(gemeinden, sep=";", dtype=str, encoding="cp1252")
    for materials in ({"Gemeinden": gemeinden}, {"Gemeinden": client.scatter(places, broadcast=True)}):
        # The same from the DataFrame and from the files that the workers read themselves.
        for records in (ddf, partitions):
            result = quorel.dask.check(records, quorel.RuleModule(antrag_library, "Antrag"), flow="Pruefung", materials=materials)
            assert result.npartitions == 4
            parts = client.gather(client.compute(result.to_delayed()))
            for i, (part, want_part) in enumerate(zip(parts, want)):
                if records is partitions:  # files have lines and name themselves, frames neither
                    assert set(part.pop("source")) == {os.path.join(os.path.dirname(partitions), "part%d.csv" % i)}
                pd.testing.assert_frame_equal(part.drop(columns="line"), want_part.drop(columns="line"))
    # All partitions in one frame: categories of their own joined in order.
    whole = quorel.dask.check(partitions, antrag_library, "Antrag", flow="Pruefung",
                              materials={"Gemeinden": gemeinden}).compute()
    pd.testing.assert_frame_equal(whole.drop(columns=["line", "source"]), pd.concat(want).drop(columns="line"),
                                  check_categorical=False)
    assert whole["source"].nunique() == 4
    assert list(whole["id"].cat.categories) == list(dict.fromkeys(pd.concat(want)["id"].astype(object)))


def test_database_table_in_slices(client, generated, antrag_library, gemeinden, tmp_path):
    if "sqlite" not in quorel._quorel._databases:
        pytest.skip("quorel was built without databases (libsqlite3-dev)")
    import io
    frame = pd.read_csv(io.BytesIO(generated), sep=";", dtype=str, encoding="cp1252")
    file = tmp_path / "records.db"
    with sqlite3.connect(file) as connection:
        frame.to_sql("antraege", connection, index=False)
        connection.execute("CREATE TABLE leer AS SELECT * FROM antraege WHERE 0")
        connection.execute("CREATE TABLE gemeinden (plz TEXT, ort TEXT)")
        connection.executemany("INSERT INTO gemeinden VALUES (?, ?)",
                               pd.read_csv(gemeinden, sep=";", dtype=str, encoding="cp1252").values.tolist())
    source = "sqlite:%s?table=antraege" % file
    options = dict(flow="Pruefung", materials={"Gemeinden": "sqlite:%s?table=gemeinden" % file})
    want = quorel.check_frame(source, quorel.RuleModule(antrag_library, "Antrag"), **options)
    assert len(want) > 1200
    pd.testing.assert_frame_equal(want, quorel.check_frame(frame, quorel.RuleModule(antrag_library, "Antrag"),
                                                           flow="Pruefung", materials={"Gemeinden": gemeinden}))
    result = quorel.dask.check(source, antrag_library, "Antrag", npartitions=4, **options)
    assert result.divisions == (0, 300, 600, 900, 1199)
    pd.testing.assert_frame_equal(client.compute(result).result(), want)
    # Each slice holds the problems of its own rows.
    first = result.get_partition(1).compute(scheduler="sync")
    assert first.index.min() >= 300 and first.index.max() < 600
    empty = quorel.dask.check("sqlite:%s?table=leer" % file, antrag_library, "Antrag", **options)
    assert empty.npartitions == 1 and len(empty.compute(scheduler="sync")) == 0
    with pytest.raises(quorel.DatabaseError):
        quorel.dask.check("sqlite:%s?table=fehlt" % file, antrag_library, "Antrag", **options)
    with pytest.raises(quorel.DatabaseError, match="order="):
        quorel.dask.check("sqlite:%s?query=SELECT * FROM antraege" % file, antrag_library, "Antrag", **options)


def test_a_large_file_is_checked_in_parts(client, generated, antrag_library, gemeinden, tmp_path):
    """Parts of one file give what check_frame gives for the whole file:
    labels, lines (with "\r\n" ends and blank lines among them) and rows that
    are not checked."""
    lines = generated.splitlines()
    text = b"\r\n".join(lines[:500] + [b"", b"kaputt;1"] + lines[500:] + [b""])
    assert b'"' not in text
    file = tmp_path / "antraege.csv"
    file.write_bytes(text)
    options = dict(flow="Pruefung", materials={"Gemeinden": gemeinden})
    want = quorel.check_frame(str(file), quorel.RuleModule(antrag_library, "Antrag"), **options)
    assert "kaputt" not in want["text"].iloc[0] and (want["line"] == 502).any()
    result = quorel.dask.check(str(file), antrag_library, "Antrag", blocksize=len(text) // 7, **options)
    assert result.npartitions == 7
    got = client.compute(result).result()
    assert set(got.pop("source")) == {str(file)}
    pd.testing.assert_frame_equal(got, want, check_categorical=False)
    assert quorel.dask.check(str(file), antrag_library, "Antrag", blocksize=None, **options).npartitions == 1
    # A size as dask.dataframe.read_csv takes it, or as text.
    assert quorel.dask.check(str(file), antrag_library, "Antrag", blocksize="%dB" % (len(text) // 7),
                             **options).npartitions == 7
    # Cells quoted over lines stay whole in one part.
    quoted = tmp_path / "quoted.csv"
    quoted.write_bytes(text.replace(b"kaputt;1", b'"kaputt\r\n;1";"2\r\n3"'))
    want = quorel.check_frame(str(quoted), quorel.RuleModule(antrag_library, "Antrag"), **options)
    result = quorel.dask.check(str(quoted), antrag_library, "Antrag", blocksize=len(text) // 5, **options)
    assert result.npartitions == 5
    got = client.compute(result).result()
    got.pop("source")
    pd.testing.assert_frame_equal(got, want, check_categorical=False)
    # A file changed since it was cut is refused.
    result = quorel.dask.check(str(file), antrag_library, "Antrag", blocksize=len(text) // 2, **options)
    file.write_bytes(text + lines[1] + b"\r\n")
    with pytest.raises(ValueError, match="has changed since it was cut into parts"):
        result.compute(scheduler="sync")


def test_local_scheduler_and_bad_input(partitions, antrag_library, gemeinden):
    ddf = read(partitions)
    result = quorel.dask.check(ddf, antrag_library, "Antrag", flow="Pruefung", materials={"Gemeinden": gemeinden})
    frame = result.compute(scheduler="threads")
    assert len(frame) == sum(len(p) for p in expected(ddf, antrag_library, gemeinden))
    with pytest.raises(TypeError):
        quorel.dask.check(pd.DataFrame(), antrag_library, "Antrag")
    with pytest.raises(FileNotFoundError):
        quorel.dask.check(partitions + ".fehlt*", antrag_library, "Antrag")
    with pytest.raises(ValueError, match="fehlt.csv"):
        quorel.dask.check(["fehlt.csv"], antrag_library, "Antrag",
                          materials={"Gemeinden": gemeinden}).compute(scheduler="sync")
    with pytest.raises(quorel.PlausiError):
        quorel.dask.check(ddf, "/nonexistent.so", "Antrag").compute(scheduler="sync")
    with pytest.raises(ValueError, match="the workers cannot share one log file"):
        quorel.dask.check(ddf, antrag_library, "Antrag", log="run.log")
    for option, value, error in (("blocksize", 0, ValueError), ("blocksize", 1.5, TypeError),
                                 ("npartitions", -1, ValueError), ("npartitions", "2", TypeError)):
        with pytest.raises(error, match="^%s must be a whole number" % option):
            quorel.dask.check(partitions, antrag_library, "Antrag", **{option: value})


def test_warnings_reach_the_client_once(partitions, antrag_library, gemeinden, rules_dir):
    """The workers' warnings are given where check() is called, before
    anything runs, and never again while the partitions are computed."""
    import warnings
    ddf = read(partitions)
    ddf = ddf.assign(**{"Antrag.Unbekannt": "x", "Antrag.Antragsteller.Name": 1})
    materials = {"Gemeinden": gemeinden, "Regionen": gemeinden}
    for module in (os.path.join(rules_dir, "antrag.qr"), quorel.RuleModule.from_text(
            open(os.path.join(rules_dir, "antrag.qr"), encoding="utf-8").read(), name="antrag.qr")):
        for records in (ddf, partitions):
            with warnings.catch_warnings(record=True) as caught:
                warnings.simplefilter("always")
                result = quorel.dask.check(records, module, materials=materials)
            messages = sorted(str(w.message).split(" ")[:2] for w in caught
                              if issubclass(w.category, (quorel.ColumnWarning, quorel.MaterialWarning)))
            if records is ddf:
                assert messages == [["column", "Antrag.Antragsteller.Name"], ["column", "Antrag.Unbekannt"],
                                    ["material", "Regionen"]], messages
            else:
                assert messages == [["material", "Regionen"]], messages
            with warnings.catch_warnings(record=True) as caught:
                warnings.simplefilter("always")
                frame = result.compute(scheduler="sync")
            assert [w for w in caught if issubclass(w.category, (quorel.ColumnWarning, quorel.MaterialWarning))] == []
            assert len(frame) > 0
    # A file's header is read here too.
    lines = open(partitions.replace("*", "0"), "rb").read().splitlines(keepends=True)
    extra = os.path.join(os.path.dirname(partitions), "extra.csv")
    with open(extra, "wb") as out:
        out.writelines(line.rstrip(b"\r\n") + (b";Antrag.Unbekannt\n" if i == 0 else b";x\n")
                       for i, line in enumerate(lines))
    with pytest.warns(quorel.ColumnWarning, match="Antrag.Unbekannt") as caught:
        result = quorel.dask.check([extra], os.path.join(rules_dir, "antrag.qr"), materials={"Gemeinden": gemeinden})
    assert len(caught) == 1
    with warnings.catch_warnings():
        warnings.simplefilter("error", quorel.ColumnWarning)
        assert len(result.compute(scheduler="sync")) > 0
    with pytest.raises(quorel.RecordError, match="Antrag.Unbekannt"), pytest.warns(quorel.ColumnWarning):
        quorel.dask.check(ddf, os.path.join(rules_dir, "antrag.qr"), materials={"Gemeinden": gemeinden}, strict=True)
    with pytest.raises(ValueError, match="Gemeinden"):
        quorel.dask.check(ddf, os.path.join(rules_dir, "antrag.qr"))
    # A material's columns, where the client holds the material.
    table = pd.read_csv(gemeinden, sep=";", dtype=str, encoding="cp1252").assign(**{"Gemeinden.Kreis": "A"})
    with pytest.warns(quorel.MaterialWarning, match="column Gemeinden.Kreis names no field") as caught:
        result = quorel.dask.check(partitions, os.path.join(rules_dir, "antrag.qr"), materials={"Gemeinden": table})
    assert len(caught) == 1
    with warnings.catch_warnings():
        warnings.simplefilter("error", quorel.MaterialWarning)
        assert len(result.compute(scheduler="sync")) > 0
    # So are its postcodes read as numbers, which have lost their leading zeros.
    numbers = table.drop(columns="Gemeinden.Kreis").astype({"Gemeinden.PLZ": int})
    with pytest.warns(quorel.MaterialWarning, match="column Gemeinden.PLZ holds numbers") as caught:
        quorel.dask.check(partitions, os.path.join(rules_dir, "antrag.qr"), materials={"Gemeinden": numbers})
    assert len(caught) == 1
    # A material file at hand is loaded here once to tell its columns and
    # its encoding, here in UTF-8 where Windows-1252 is expected.
    at_hand = os.path.join(os.path.dirname(partitions), "gemeinden_kreis.csv")
    table.to_csv(at_hand, sep=";", index=False, encoding="utf-8")
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        result = quorel.dask.check(partitions, os.path.join(rules_dir, "antrag.qr"), materials={"Gemeinden": at_hand})
    told = sorted(w.category.__name__ for w in caught
                  if issubclass(w.category, (quorel.MaterialWarning, quorel.FileEncodingWarning)))
    assert told == ["FileEncodingWarning", "MaterialWarning"], told
    with warnings.catch_warnings():
        for told_once in (quorel.MaterialWarning, quorel.FileEncodingWarning):
            warnings.simplefilter("error", told_once)
        assert len(result.compute(scheduler="sync")) > 0


def test_a_row_beyond_an_ascii_start_is_named_by_the_client(generated, antrag_library, gemeinden, tmp_path):
    """A file whose first megabyte is ASCII alone and whose later rows are
    UTF-8: the client names the first such row before any part is checked,
    as the workers, which warn of nothing, would have read it."""
    lines = generated.splitlines()
    ascii_rows = [line for line in lines[1:] if max(line) < 0x80]
    utf8_row = next(line for line in lines[1:] if max(line) >= 0x80).decode("cp1252").encode("utf-8")
    rows = ascii_rows * (1 + (1 << 20) // len(b"\n".join(ascii_rows)))
    late = tmp_path / "late.csv"
    late.write_bytes(b"\n".join([lines[0]] + rows + [utf8_row, b""]))
    told = re.escape(str(late)) + r' looks like UTF-8 \(line %d holds "[^"]+"\), but is read as Windows-1252, ' \
        r'which makes that "[^"]+": pass encoding="utf-8"$' % (len(rows) + 2)
    options = dict(flow="Pruefung", materials={"Gemeinden": gemeinden}, blocksize=256 << 10)
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        result = quorel.dask.check(str(late), antrag_library, "Antrag", **options)
    said = [str(w.message) for w in caught if issubclass(w.category, quorel.FileEncodingWarning)]
    assert len(said) == 1 and re.match(told, said[0]), said
    assert result.npartitions > 4
    with warnings.catch_warnings():
        warnings.simplefilter("error", quorel.FileEncodingWarning)
        assert len(result.compute(scheduler="sync")) > 0
    with pytest.raises(ValueError, match=told):
        quorel.dask.check(str(late), antrag_library, "Antrag", strict=True, **options)
