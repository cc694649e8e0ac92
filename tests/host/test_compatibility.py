"""Each odd behaviour that docs/compatibility.md lists has a reason, and a test that exists."""

import pathlib
import re

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENT = (ROOT / "docs" / "compatibility.md").read_text()

CPP_TEST = re.compile(r"^(?:TEST|TEST_F|TEST_P|RC_GTEST_PROP)\(\s*(\w+),\s*(\w+)", re.MULTILINE)
NAMED_TEST = re.compile(r"`([A-Z]\w+\.\w{12,}|test_\w+)`")


def existing_tests():
    names = set()
    for path in (ROOT / "tests").rglob("*_test.cpp"):
        names |= {f"{suite}.{name}" for suite, name in CPP_TEST.findall(path.read_text())}
    for path in (ROOT / "tests").rglob("test_*.py"):
        names |= set(re.findall(r"^def (test_\w+)", path.read_text(), re.MULTILINE))
    return names


def rows():
    """The rows of all tables, each by the names of its columns."""
    columns = None
    for line in DOCUMENT.splitlines():
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if not line.startswith("|"):
            columns = None
        elif columns is None:
            columns = cells
        elif set(line) != set("|-"):
            yield dict(zip(columns, cells, strict=True))


def test_the_named_tests_exist():
    named = set(NAMED_TEST.findall(DOCUMENT))
    assert len(named) > 50
    assert named - existing_tests() == set()


@pytest.mark.parametrize("row", rows(), ids=lambda row: next(iter(row.values()))[:60])
def test_each_line_has_a_test_and_a_reason_unless_it_compares(row):
    assert "SaveAllInfo" in str(row.keys()) or len(row["reason"]) > 5
    assert re.fullmatch(r"`[\w.]+`(, `[\w.]+`)*", row["test"])
    assert NAMED_TEST.findall(row["test"])
