"""The binary interface of the shared library, compared with the one that programs were built against.

What a program can use may grow; nothing of it may change or go without another SOVERSION, by which
a program finds the library that it was built against. The description in libbrindle.abi is renewed by

    BRINDLE_UPDATE_ABI=1 python3 -m pytest tests/packages/test_abi.py
"""

import gzip
import os
import pathlib
import re
import subprocess

import pytest
from conftest import ROOT, built, run

BASELINE = pathlib.Path(__file__).with_name("libbrindle.abi.gz")
# Of the C++ standard library: the library does not promise which of its templates it instantiates.
NOT_OURS = """\
[suppress_function]
symbol_name_regexp = ^_ZN?K?S
[suppress_variable]
symbol_name_regexp = ^_ZT[ISV]?N?K?S
"""
ABI_CHANGED = 4


def soname_of(description):
    return re.search(r"soname='([^']+)'", description).group(1)


@pytest.fixture(scope="module")
def described(tmp_path_factory):
    """The interface of today's library."""
    build = built("abi", "-DBUILD_SHARED_LIBS=ON", "-DBRINDLE_BUILD_PROGRAM=OFF",
                  "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -g -DNDEBUG")
    description = tmp_path_factory.mktemp("abi") / "today.abi"
    run("abidw", "--headers-dir", ROOT / "include", "--drop-private-types",
        "--drop-undefined-syms", "--no-corpus-path", "--no-comp-dir-path", "--no-show-locs",
        "--out-file", description, build / "libbrindle.so")
    if os.environ.get("BRINDLE_UPDATE_ABI"):
        BASELINE.write_bytes(gzip.compress(description.read_bytes(), mtime=0))
    return description


def changes_between(old, new, folder):
    """What a program that was built against the old one would meet."""
    suppressions = folder / "suppressions"
    suppressions.write_text(NOT_OURS)
    result = subprocess.run(["abidiff", "--no-added-syms", "--suppressions", suppressions, old, new],
                            stdin=subprocess.DEVNULL, text=True, check=False,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    assert result.returncode & ~12 == 0, result.stdout
    return result.stdout if result.returncode & ABI_CHANGED else ""


def test_programs_that_were_built_before_still_run(described, tmp_path):
    baseline = tmp_path / "baseline.abi"
    baseline.write_bytes(gzip.decompress(BASELINE.read_bytes()))
    assert soname_of(baseline.read_text()) == soname_of(described.read_text()), \
        "another SOVERSION requires another baseline"
    assert changes_between(baseline, described, tmp_path) == ""


@pytest.mark.parametrize("old,new,expected", [
    ("_ZN7brindle11cMPEGHeader5TitleE", "_ZN7brindle11cMPEGHeader5NamedE", "Removed"),
], ids=["a member of another name"])
def test_a_member_that_goes_is_noticed(described, tmp_path, old, new, expected):
    text = described.read_text()
    assert old in text
    changed = tmp_path / "changed.abi"
    changed.write_text(text.replace(old, new))
    assert expected in changes_between(described, changed, tmp_path)


def test_a_class_that_grows_is_noticed(described, tmp_path):
    text = described.read_text()
    size = re.search(r"<class-decl name='cMPEGHeader' size-in-bits='(\d+)'", text)
    changed = tmp_path / "changed.abi"
    changed.write_text(text.replace(size.group(0), size.group(0).replace(
        size.group(1), str(int(size.group(1)) + 64))))
    assert "size changed" in changes_between(described, changed, tmp_path)
