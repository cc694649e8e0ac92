"""What scripts/count-tests makes of the results that ctest, pytest and googletest write."""

import pathlib
import subprocess

import pytest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "count-tests"

GTEST_SKIP = """<testcase name="Small" status="run" result="skipped" classname="Disk">
  <skipped message="a_test.cpp:7&#x0A;needs a disk"/>
  <system-out><![CDATA[a_test.cpp:7: Skipped
needs a
disk
[  SKIPPED ] Disk.Small]]></system-out>
</testcase>"""


def gtest(*cases):
    return f"<testsuites><testsuite name='Suite'>{''.join(cases)}</testsuite></testsuites>"


def case(name, inside="", **attributes):
    written = "".join(f' {key}="{value}"' for key, value in attributes.items())
    return f'<testcase name="{name}"{written}>{inside}</testcase>'


@pytest.fixture
def count(tmp_path):
    """Counts the results of files with these contents, the first ones by name."""

    def counted(*counted_names, **files):
        for name, content in files.items():
            (tmp_path / f"{name.replace('__', '.')}.xml").write_text(content)
        done = subprocess.run([SCRIPT, *(tmp_path / f"{name}.xml" for name in counted_names)],
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True, check=False)
        assert done.returncode == 0, done.stderr
        return done.stdout.splitlines()

    return counted


@pytest.mark.parametrize("one, counts, lines", [
    # googletest
    (case("Fact", classname="Suite", status="run", result="completed"), "1 0 0", []),
    (case("Fact", "<failure message='no'/>", classname="Suite", status="run"), "0 1 0",
     ["F Suite.Fact"]),
    (GTEST_SKIP, "0 0 1", ["S Disk.Small: needs a disk"]),
    (case("Fact", classname="Suite", status="notrun", result="suppressed"), "0 0 1",
     ["S Suite.Fact: disabled"]),
    # pytest
    (case("test_a", classname="host.test_show"), "1 0 0", []),
    (case("test_a", "<failure message='no'>..</failure>", classname="m"), "0 1 0", ["F m.test_a"]),
    (case("test_a", "<error message='no'>..</error>", classname="m"), "0 1 0", ["F m.test_a"]),
    (case("test_a", "<skipped type='pytest.skip' message='needs root'>..</skipped>", classname="m"),
     "0 0 1", ["S m.test_a: needs root"]),
    # ctest
    (case("corpus", classname="corpus", status="run"), "1 0 0", []),
    (case("corpus", "<failure message=''/>", classname="corpus", status="fail"), "0 1 0",
     ["F corpus"]),
    (case("corpus", classname="corpus", status="fail"), "0 1 0", ["F corpus"]),
    (case("corpus", "<skipped message='SKIP_RETURN_CODE=4'/>", classname="corpus",
          status="notrun"), "0 0 1", ["S corpus: SKIP_RETURN_CODE=4"]),
    (case("corpus", classname="corpus", status="disabled"), "0 0 1", ["S corpus: disabled"]),
])
def test_one_case(count, one, counts, lines):
    assert count("run", run=gtest(one)) == [counts, *lines]


def test_runs_are_summed(count):
    failing = case("b", "<failure/>", classname="B")
    assert count("one", "two", one=gtest(case("a"), failing), two=gtest(case("c"), case("d"))) == [
        "3 1 0", "F B.b"]


@pytest.mark.parametrize("tool", ["gtest", "pytest"])
def test_program_counts_by_its_cases(count, tool):
    inner = gtest(case("a"), case("b", "<failure/>"), case("c", "<skipped message='why'/>"))
    run = gtest(case("util_0", "<failure/>", status="fail"), case("corpus", status="run"))
    assert count("ctest", **{"ctest": run, f"util_0__{tool}": inner}) == [
        "2 1 1", "F util_0: b", "S util_0: c: why"]


def test_program_that_ends_early_fails_whatever_its_cases_say(count):
    run = gtest(case("util_0", "<failure message='Timeout'/>", status="fail"))
    assert count("ctest", ctest=run, util_0__gtest=gtest(case("a"))) == ["1 1 0", "F util_0"]


def test_program_without_results_counts_as_itself(count):
    run = gtest(case("util_0", "<failure/>", status="fail"), case("util_1", status="run"))
    assert count("ctest", ctest=run) == ["1 1 0", "F util_0"]


def test_program_that_lost_all_its_cases_is_a_failure(count):
    run = gtest(case("util_0", status="run"), case("mpeg_0", status="run"))
    assert count("ctest", ctest=run, util_0__gtest="<testsuites tests='0'/>",
                 mpeg_0__gtest=gtest(case("a"))) == ["1 1 0", "F util_0: no case ran"]


def test_results_without_a_case_are_a_failure(count):
    assert count("brindle_util_tests", brindle_util_tests="<testsuites tests='0'/>") == [
        "0 1 0", "F brindle_util_tests.xml: no case ran"]


def test_unreadable_results_are_an_error(tmp_path):
    broken = tmp_path / "run.xml"
    broken.write_text("<testsuites><testcase")
    for file in (broken, tmp_path / "missing.xml"):
        done = subprocess.run([SCRIPT, file], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, check=False)
        assert done.returncode != 0
