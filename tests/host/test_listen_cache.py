"""`listen --cache`: what was measured once is not decoded again, whatever is printed of it."""

import functools
import json
import subprocess

import pytest

from cache_rows import change, facts, rows
from mp3_bytes import audio, tag, text_frame, with_missing_data
from settled_files import wait_until_settled

FORMS = [(), ("--json",), ("--csv",), ("--reference", "-23"), ("--json", "--reference", "-23"),
         ("--csv", "--end-style-texts", "cold=Cold,fade=Fade")]
MEASURING = [(), ("--quick",), ("--sound-range", "30"), ("--overlap-range", "6")]


@pytest.fixture(scope="module")
def music(tmp_path_factory, tone):
    folder = tmp_path_factory.mktemp("heard") / "music"
    folder.mkdir()
    (folder / "silent.mp3").write_bytes(tag(text_frame("TIT2", "Song")) + audio())
    (folder / "tone.mp3").write_bytes(tone)
    run = functools.partial(subprocess.run, cwd=folder, check=True)
    run(["sox", "-R", "-n", "-r", "44100", "-c", "2", "-b", "16", "a.wav", "synth", "10", "sine",
         "1000", "vol", "0.5", "fade", "l", "0", "10", "9"])
    run(["lame", "--quiet", "-b", "128", "a.wav", "fading.mp3"])
    (folder / "a.wav").unlink()
    (folder / "damaged.mp3").write_bytes(with_missing_data(tone))
    (folder / "none.mp3").write_bytes(bytes(5000))
    wait_until_settled()
    return folder


@pytest.fixture
def listen(brindle, music):
    def run(*options):
        return brindle("listen", *options, "music", cwd=music.parent)
    return run


def measured(result):
    return [json.loads(line) for line in result.stdout.splitlines()]


def test_one_record_serves_every_output(listen, cache):
    without = {form: facts(listen(*form)) for form in FORMS}
    assert without[()][0] == 1  # two files fail
    for _ in range(2):
        for form in FORMS:
            assert facts(listen(*form, "--cache", cache)) == without[form], form
    # One set of options, and nothing of the files that fail.
    assert rows(cache, "name") == [
        (b"music/fading.mp3",), (b"music/silent.mp3",), (b"music/tone.mp3",)]
    assert len(rows(cache, "text", "options")) == 1


@pytest.mark.parametrize("form", FORMS, ids=" ".join)
def test_it_is_the_record_that_is_printed(listen, cache, form):
    listen("--cache", cache)
    assert change(cache, "UPDATE files SET output = CAST(replace(output, '\"next_start\":11', "
                         "'\"next_start\":9811') AS BLOB)") == 3
    assert b"9811" in listen(*form, "--cache", cache).stdout


def test_what_measures_otherwise_has_records_of_its_own(listen, cache):
    without = {form: facts(listen("--json", *form)) for form in MEASURING}
    assert len({output for _, output, _ in without.values()}) == len(MEASURING)
    for _ in range(2):
        for form in MEASURING:
            assert facts(listen("--json", *form, "--cache", cache)) == without[form], form


def test_numbers_are_kept_unrounded(listen, cache):
    """So a gain to another reference is rounded once."""
    listen("--cache", cache)
    (loudness,) = [json.loads(record)["loudness"] for name, record in rows(cache, "name, output")
                   if name == b"music/tone.mp3"]
    assert loudness != round(loudness, 6)
    (heard,) = [one for one in measured(listen("--json", "--reference", "-20.005", "--cache", cache))
                if one["file"] == "music/tone.mp3"]
    assert heard["gain_db"] == pytest.approx(-20.005 - loudness, abs=0.00501)


@pytest.mark.parametrize("record", [
    "", "FROM THE CACHE", "null", "{}", "[]", "1", '{"frequency":44100}', "[" * 100_000,
    ("frequency", 0), ("frequency", -1), ("frequency", "44100"), ("silences", 1),
    ("silences", [{"begin": 1}]), ("sound", []), ("loudness", "loud"), ("true_peak", {}),
    ("balance", {"energy": [1], "correlation": 0}), ("delay", None), ("clipped_at", ["1"])], ids=str)
def test_what_is_no_record_is_measured_again(listen, cache, record):
    first = facts(listen("--json", "--cache", cache))
    kept = rows(cache, "output")
    if isinstance(record, tuple):
        record = json.dumps({**json.loads(max(kept, key=lambda row: len(row[0]))[0]),
                             record[0]: record[1]})
    assert change(cache, "UPDATE files SET output = CAST(? AS BLOB)", record) == 3
    assert facts(listen("--json", "--cache", cache)) == first
    assert rows(cache, "output") == kept


def test_new_prints_what_no_run_has_printed(listen, cache):
    first = listen("--json", "--new", "--cache", cache)
    assert [one["file"] for one in measured(first)] == [
        "music/damaged.mp3", "music/fading.mp3", "music/none.mp3", "music/silent.mp3",
        "music/tone.mp3"]
    # Files that fail are always reported.
    again = listen("--json", "--new", "--cache", cache)
    assert [one["file"] for one in measured(again)] == ["music/damaged.mp3", "music/none.mp3"]
    assert again.stderr.endswith(b"\n2 new files, 3 unchanged: 2 failed\n")


def test_changed_file_is_measured_again(brindle, tmp_path, tone):
    (tmp_path / "a.mp3").write_bytes(audio())
    wait_until_settled()
    for _ in range(2):
        assert b"no sound" in brindle("listen", "--cache", "cache", "a.mp3").stdout
    (tmp_path / "a.mp3").write_bytes(tone)
    assert b"-20.1 LUFS" in brindle("listen", "--cache", "cache", "a.mp3").stdout


def test_what_changes_files_takes_no_cache(brindle):
    result = brindle("listen", "--set", "cue-in", "--cache", "cache", "a.mp3")
    assert result.returncode == 2
    assert brindle("listen", "--new", "a.mp3").returncode == 2
