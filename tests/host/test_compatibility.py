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
    lines = [line for line in DOCUMENT.splitlines() if line.startswith("|")]
    return [line for line in lines if not line.endswith("| test |") and set(line) != set("|-")]


def test_the_named_tests_exist():
    named = set(NAMED_TEST.findall(DOCUMENT))
    assert len(named) > 50
    assert named - existing_tests() == set()


@pytest.mark.parametrize("row", rows(), ids=lambda row: row.strip("| ").split(" |")[0][:60])
def test_each_line_has_a_reason_and_a_test(row):
    *_, reason, tests = [cell.strip() for cell in row.strip("|").split("|")]
    assert len(reason) > 5
    assert re.fullmatch(r"`[\w.]+`(, `[\w.]+`)*", tests)
    assert NAMED_TEST.findall(tests)
