"""Which files scripts/tidy reads again, with a stand-in for clang-tidy that notes what it is given."""

import json
import os
import pathlib
import shutil
import subprocess

import pytest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "tidy"


class Tree:
    """A project of two files and one header, its build, and a cache that is shared with others."""

    def __init__(self, folder, shared):
        self.root = folder
        self.shared = shared
        (folder / "scripts").mkdir(parents=True)
        shutil.copy(SCRIPT, folder / "scripts" / "tidy")
        (folder / "src" / "util").mkdir(parents=True)
        (folder / ".clang-tidy").write_text("Checks: '*'\n")
        (folder / "src" / "util" / "a.h").write_text("int a();\n")
        (folder / "src" / "a.cpp").write_text('#include "util/a.h"\n')
        (folder / "src" / "b.cpp").write_text("int b;\n")
        build = folder / "build" / "tidy"
        build.mkdir(parents=True)
        self.commands = build / "compile_commands.json"
        self.compile_with("")

    def compile_with(self, option):
        self.commands.write_text(json.dumps([
            {"directory": str(self.commands.parent), "file": str(self.root / "src" / name),
             "command": f"clang++ {option} -I{self.root}/src -c {self.root}/src/{name}"}
            for name in ("a.cpp", "b.cpp")]))

    def read(self, *options, status=0):
        """The files that are read, by name."""
        noted = self.shared / "noted"
        noted.unlink(missing_ok=True)
        done = subprocess.run(
            [self.root / "scripts" / "tidy", "build/tidy", *options, "src"], cwd=self.root,
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
            check=False, env={**os.environ, "PATH": f"{self.shared}:/usr/bin:/bin",
                              "XDG_CACHE_HOME": str(self.shared / "cache")})
        assert done.returncode == status, done.stdout
        return sorted(noted.read_text().split()) if noted.exists() else []


@pytest.fixture
def tree(tmp_path):
    tool = tmp_path / "clang-tidy-14"
    # A file with "fault" in it is not clean.
    tool.write_text(f"""#!/bin/sh
for file; do :; done
[ "$file" = --version ] && {{ echo 14; exit; }}
basename "$file" >>{tmp_path}/noted
! grep -q fault "$file"
""")
    tool.chmod(0o755)
    return Tree(tmp_path / "tree", tmp_path)


def test_clean_files_are_read_once(tree):
    assert tree.read() == ["a.cpp", "b.cpp"]
    assert tree.read() == []


def test_clone_in_another_folder_finds_what_is_clean(tree, tmp_path):
    tree.read()
    other = Tree(tmp_path / "other" / "clone", tmp_path)
    assert other.read() == []
    (other.root / "src" / "b.cpp").write_text("int c;\n")
    assert other.read() == ["b.cpp"]


def test_changed_header_is_read_with_those_who_include_it(tree):
    tree.read()
    (tree.root / "src" / "util" / "a.h").write_text("long a();\n")
    assert tree.read() == ["a.cpp"]


def test_generated_header_counts(tree):
    generated = tree.commands.parent / "src" / "made.h"
    generated.parent.mkdir()
    generated.write_text("int made;\n")
    (tree.root / "src" / "b.cpp").write_text('#include "made.h"\n')
    tree.read()
    generated.write_text("long made;\n")
    assert tree.read() == ["b.cpp"]


@pytest.mark.parametrize("change", ["options", "configuration", "checks"])
def test_all_is_read_when_what_is_asked_changes(tree, change):
    tree.read()
    if change == "options":
        tree.compile_with("-DX")
    elif change == "configuration":
        (tree.root / ".clang-tidy").write_text("Checks: '-*'\n")
    assert tree.read(*(["--checks=-x"] if change == "checks" else [])) == ["a.cpp", "b.cpp"]


def test_file_with_a_fault_is_read_until_it_is_clean(tree):
    (tree.root / "src" / "b.cpp").write_text("// fault\n")
    assert tree.read(status=1) == ["a.cpp", "b.cpp"]
    assert tree.read(status=1) == ["b.cpp"]
    (tree.root / "src" / "b.cpp").write_text("int b;\n")
    assert tree.read() == ["b.cpp"]
    assert tree.read() == []


def test_what_nobody_needed_for_months_is_forgotten(tree):
    tree.read()
    cache = tree.shared / "cache" / "brindle-tidy"
    kept, old = sorted(cache.iterdir())
    os.utime(old, (1, 1))
    (tree.root / "src" / "a.cpp").write_text("int x;\n")
    (tree.root / "src" / "b.cpp").write_text("int y;\n")
    tree.read()
    assert not old.exists()
    assert kept.exists()
