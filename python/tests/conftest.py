"""Fixtures of the package's tests: the example rule modules and data that
CTest names in the environment."""
import os

import pandas as pd
import pytest


def _path(variable):
    value = os.environ.get(variable)
    if not value:
        pytest.skip("%s is not set: run the tests through CTest" % variable, allow_module_level=True)
    return value


@pytest.fixture(scope="session")
def antrag_library():
    return _path("QUOREL_ANTRAG_MODULE")


@pytest.fixture(scope="session")
def umfrage_library():
    return _path("QUOREL_UMFRAGE_MODULE")


@pytest.fixture(scope="session")
def hidden_entry_library():
    """A module built with hidden visibility that does not export its entry
    points (module name Versteckt)."""
    return _path("QUOREL_HIDDEN_ENTRY_MODULE")


@pytest.fixture(scope="session")
def orte_library():
    """apps/tests/orte.qr compiled (module name Orte): it reads the init
    parameter Ort, and says so."""
    return _path("QUOREL_ORTE_MODULE")


@pytest.fixture(scope="session")
def data_dir():
    return _path("QUOREL_DATA")


@pytest.fixture(scope="session")
def gemeinden(data_dir):
    return os.path.join(data_dir, "gemeinden.csv")


@pytest.fixture(scope="session")
def antraege(data_dir):
    return pd.read_csv(os.path.join(data_dir, "antraege.csv"), sep=";", dtype=str, encoding="cp1252")


@pytest.fixture
def module(antrag_library):
    import quorel
    m = quorel.RuleModule(antrag_library, "Antrag")
    yield m
    m.close()


@pytest.fixture(scope="session")
def rules_dir(data_dir):
    """The bundled rule files."""
    return os.path.join(os.path.dirname(data_dir), "rules")
