"""`brindle time` and `brindle genres`."""

import pytest

# The fraction is the first two digits of the milliseconds that remain.
TIMES = [
    (["62345"], "01:02"),
    (["62345", "--style", "none"], "01:02"),
    (["62345", "--style", "fraction"], ".34"),
    (["--style=all", "62345"], "01:02.34"),
    (["0", "--style", "all"], "00:00.00"),
    (["59999", "--style", "all"], "00:59.99"),
    (["1005", "--style", "all"], "00:01.05"),
    (["1050", "--style", "all"], "00:01.50"),
    (["6000000"], "100:00"),
    (["2147483647", "--style", "all"], "35791:23.64"),
    (["-61000"], "-01:-01"),
    (["--", "-61000"], "-01:-01"),
]


@pytest.mark.parametrize("arguments, printed", TIMES, ids=lambda value: str(value))
def test_time_is_printed_in_its_style(brindle, arguments, printed):
    result = brindle("time", *arguments)
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.decode() == printed + "\n"


@pytest.mark.parametrize("arguments", [
    [], ["x"], ["1.5"], ["2147483648"], ["1", "2"], ["1", "--style", "long"],
    ["1", "--style", "2"], ["1", "--style"], [""],
], ids=str)
def test_wrong_time_is_wrong_usage(brindle, arguments):
    result = brindle("time", *arguments)
    assert (result.returncode, result.stdout) == (2, b"")


def test_genres_are_numbers_and_names(brindle):
    result = brindle("genres")
    assert (result.returncode, result.stderr) == (0, b"")
    lines = result.stdout.decode().splitlines()
    # 0 to 147 without 123.
    assert [int(line.split(" ", 1)[0]) for line in lines] == [*range(123), *range(124, 148)]
    for line in ("0 Blues", "17 Rock", "8 Jazz", "122 Drum Solo", "124 Euro - House",
                 "147 Synth Pop"):
        assert line in lines


def test_genres_take_no_operand(brindle):
    assert brindle("genres", "17").returncode == 2


@pytest.mark.parametrize("command, example", [
    ("time", "brindle time 62345 --style all"), ("genres", "brindle genres | grep -i jazz")])
def test_help_ends_with_an_example(brindle, command, example):
    result = brindle(command, "--help")
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.decode().splitlines()[-2:] == ["Example:", "  " + example]
