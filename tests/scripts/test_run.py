"""./run on a project of one line, which stands in for the real one and builds in a second."""

import os
import shutil
import subprocess
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[2]

PROJECT = """cmake_minimum_required(VERSION 3.22)
project(Brindle LANGUAGES CXX)
option(BRINDLE_BUILD_PROGRAM "" ON)
if(BRINDLE_BUILD_PROGRAM)
    add_executable(brindle_program main.cpp)
    set_target_properties(brindle_program PROPERTIES OUTPUT_NAME brindle
        RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/host)
endif()
"""
MAIN = """#include <cstdio>
int main(int count, char** arguments) {
    std::puts(count > 1 ? arguments[1] : "nothing");
}
"""


@pytest.fixture
def tree(tmp_path):
    root = tmp_path / "tree"
    (root / "scripts").mkdir(parents=True)
    shutil.copy(ROOT / "run", root)
    shutil.copy(ROOT / "CMakePresets.json", root)
    installer = root / "scripts" / "install-dependencies"
    installer.write_text("#!/bin/sh\n")
    installer.chmod(0o755)
    (root / "CMakeLists.txt").write_text(PROJECT)
    (root / "main.cpp").write_text(MAIN)
    return root


def configure(tree, *options):
    subprocess.run(["cmake", "-S", tree, "-B", tree / "build" / "release", *options], check=True,
                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)


def check(tree):
    result = subprocess.run([tree / "run", "genres"], stdin=subprocess.DEVNULL, text=True,
                            capture_output=True, check=False)
    assert result.returncode == 0, result.stderr
    assert result.stdout == "genres\n"
    return result.stderr


def test_first_run_configures_and_builds_and_the_second_does_neither(tree):
    assert check(tree) == "Configuring ...\nBuilding brindle ...\n"
    assert check(tree) == ""


@pytest.mark.parametrize("options", [
    ["-G", "Unix Makefiles"],
    ["-G", "Ninja", "-DBRINDLE_BUILD_PROGRAM=OFF"],
    ["-G", "Ninja", f"-DCMAKE_TOOLCHAIN_FILE={os.devnull}"],
], ids=["make", "without_the_program", "for_another_system"])
def test_folder_that_was_configured_otherwise_is_configured_anew(tree, options):
    configure(tree, *options)
    assert check(tree).startswith("Configuring")


def test_debug_build_is_left_as_it_is(tree):
    configure(tree, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug")
    assert check(tree) == "Building brindle ...\n"


def test_configuration_that_failed_half_way_is_begun_anew(tree):
    configure(tree, "-G", "Ninja")
    (tree / "build" / "release" / "build.ninja").unlink()
    assert check(tree).startswith("Configuring")


def test_tree_that_was_moved_builds_where_it_is(tree):
    check(tree)
    moved = tree.rename(tree.parent / "moved")
    assert check(moved).startswith("Configuring")
