"""quorel.dask on a local cluster of two worker processes: several CSV
partitions give exactly what check_frame gives."""
import os
import subprocess
import sys

import pandas as pd
import pytest

dd = pytest.importorskip("dask.dataframe", reason="python3-dask is not installed")
distributed = pytest.importorskip("distributed", reason="python3-distributed is not installed")

import quorel  # noqa: E402
import quorel.dask  # noqa: E402


@pytest.fixture(scope="module")
def partitions(tmp_path_factory):
    generator = os.environ.get("QUOREL_GENERATOR")
    if not generator:
        pytest.skip("QUOREL_GENERATOR is not set")
    folder = tmp_path_factory.mktemp("records")
    text = subprocess.run([sys.executable, generator, "1200"], check=True, capture_output=True).stdout
    lines = text.splitlines(keepends=True)
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


def test_local_cluster_gives_what_check_frame_gives(partitions, antrag_library, gemeinden):
    ddf = read(partitions)
    assert ddf.npartitions == 4
    want = expected(ddf, antrag_library, gemeinden)
    with distributed.LocalCluster(n_workers=2, threads_per_worker=2, processes=True, host="127.0.0.1",
                                  dashboard_address=None) as cluster, distributed.Client(cluster) as client:
        places = pd.read_csv(gemeinden, sep=";", dtype=str, encoding="cp1252")
        for materials in ({"Gemeinden": gemeinden}, {"Gemeinden": client.scatter(places, broadcast=True)}):
            result = quorel.dask.check(ddf, antrag_library, "Antrag", flow="Pruefung", materials=materials)
            got = client.compute(result.to_delayed()).__iter__()
            for part, want_part in zip(client.gather(list(got)), want):
                pd.testing.assert_frame_equal(part, want_part, check_like=False)


def test_local_scheduler_and_bad_input(partitions, antrag_library, gemeinden):
    ddf = read(partitions)
    result = quorel.dask.check(ddf, antrag_library, "Antrag", flow="Pruefung", materials={"Gemeinden": gemeinden})
    frame = result.compute(scheduler="threads")
    assert len(frame) == sum(len(p) for p in expected(ddf, antrag_library, gemeinden))
    with pytest.raises(TypeError):
        quorel.dask.check(pd.DataFrame(), antrag_library, "Antrag")
    with pytest.raises(quorel.PlausiError):
        quorel.dask.check(ddf, "/nonexistent.so", "Antrag").compute(scheduler="sync")
