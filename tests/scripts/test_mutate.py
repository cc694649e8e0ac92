"""scripts/mutate on a library of two functions, one of which no test calls."""

import shutil
import subprocess
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[2]

PROJECT = """cmake_minimum_required(VERSION 3.22)
project(Fake LANGUAGES CXX)
option(BRINDLE_BUILD_TESTS "" OFF)
option(BRINDLE_BUILD_PROGRAM "" OFF)
add_library(fake STATIC src/fake.cpp)
add_executable(brindle_fake_tests tests/fake/test.cpp)
set_target_properties(brindle_fake_tests PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests/fake)
target_link_libraries(brindle_fake_tests PRIVATE fake)
add_custom_target(brindle_unit_tests DEPENDS brindle_fake_tests)
"""
# Exactly four tokens are changed: < 10 in the first function, * 2 in the second.
LIBRARY = """// a + b, "1 < 2" and 3 stay
#include <cstddef> // 1 + 2
const char* text() { return "1 < 2 && true"; }
const char* raw() { return R"(1 < 2)"; }
char letter() { return '1'; }
bool is_small(int number) { return number < 10; }
int twice(int number) { return number * 2; }
"""
TEST = """bool is_small(int number);
int main() {
    return is_small(9) && !is_small(10) ? 0 : 1;
}
"""


@pytest.fixture
def tree(tmp_path):
    files = {"CMakeLists.txt": PROJECT, "src/fake.cpp": LIBRARY, "tests/fake/test.cpp": TEST,
             "tests/slow_cases.txt": "Slow.*\n", ".gitignore": "/build/\n"}
    for name, text in files.items():
        path = tmp_path / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
    (tmp_path / "scripts").mkdir()
    shutil.copy(ROOT / "scripts" / "mutate", tmp_path / "scripts")
    git = ["git", "-C", tmp_path, "-c", "user.name=A", "-c", "user.email=a@example.com"]
    for command in (["init", "-q"], ["add", "."], ["commit", "-q", "-m", "All"]):
        subprocess.run([*git, *command], check=True, stdin=subprocess.DEVNULL)
    return tmp_path


def mutate(tree, *options):
    return subprocess.run([tree / "scripts" / "mutate", *options], stdin=subprocess.DEVNULL,
                          text=True, capture_output=True, check=False)


def test_changes_that_a_test_meets_are_noticed_and_others_survive(tree):
    result = mutate(tree, "--seed", "1", "--count", "100")
    assert result.returncode == 0, result.stderr
    *lines, last = result.stdout.splitlines()
    assert sorted(lines) == [
        "noticed   src/fake.cpp:6: 10 -> 11  (brindle_fake_tests)",
        "noticed   src/fake.cpp:6: < -> <=  (brindle_fake_tests)",
        "survived  src/fake.cpp:7: * -> /",
        "survived  src/fake.cpp:7: 2 -> 3",
    ]
    assert last == "2 of 4 changes noticed, seed 1"
    assert (tree / "src" / "fake.cpp").read_text() == LIBRARY
    assert (tree / "build" / "mutants" / "tree" / "src" / "fake.cpp").read_text() == LIBRARY


def test_seed_and_commit_decide_what_is_drawn(tree):
    first = mutate(tree, "--count", "2").stdout
    assert mutate(tree, "--count", "2").stdout == first
    assert len(first.splitlines()) == 3
    drawn = {mutate(tree, "--seed", str(seed), "--count", "1").stdout.splitlines()[0]
             for seed in range(3)}
    assert len(drawn) > 1


def test_a_run_goes_on_where_another_ended(tree):
    def changes(*options):
        return mutate(tree, "--seed", "1", *options).stdout.splitlines()[:-1]

    assert changes("--count", "2") + changes("--skip", "2") == changes("--count", "4")


def test_a_program_that_does_not_end_notices(tree):
    (tree / "src" / "fake.cpp").write_text("""bool is_small(int number) {
    volatile bool goes_on = false;
    while (goes_on) {
    }
    return number < 10;
}
""")
    lines = mutate(tree, "--seed", "1").stdout.splitlines()
    assert "noticed   src/fake.cpp:2: false -> true  (brindle_fake_tests does not end)" in lines


def test_too_few_noticed_changes_fail(tree):
    assert mutate(tree, "--seed", "1", "--count", "100", "--fail-under", "50").returncode == 0
    assert mutate(tree, "--seed", "1", "--count", "100", "--fail-under", "51").returncode == 1


def test_tests_that_fail_without_a_change_are_told(tree):
    (tree / "tests" / "fake" / "test.cpp").write_text("int main() { return 1; }\n")
    result = mutate(tree)
    assert result.returncode == 1
    assert result.stderr == "without any change: brindle_fake_tests\n"
