"""Scripts as hosts run them. The interpreter ends in silence and with status 0 where a script
breaks off: only the last line tells that it came to its end."""

import re
import shutil

import pytest

from conftest import ROOT, windows_name

SONG = ROOT / "examples" / "morning-jingle.mp3"


def run_script(wine, script, *arguments):
    result = wine("cscript", "//nologo", windows_name(script), *arguments)
    return [line.rstrip() for line in result.stdout.decode("utf-8", "replace").splitlines()]


@pytest.fixture
def song(folder):
    copy = folder / "song.mp3"
    shutil.copyfile(SONG, copy)
    return copy


@pytest.mark.parametrize("name, checks", [("session.vbs", 119), ("session.js", 34)])
def test_whole_session(wine, registered, song, name, checks):
    lines = run_script(wine, ROOT / "tests" / "com" / name, windows_name(song))
    assert lines == [f"session complete: {checks} checks, 0 failed"]


def test_audio_of_the_session_is_untouched(wine, registered, song):
    before = SONG.read_bytes()
    start = before.index(b"\xff\xfb")
    run_script(wine, ROOT / "tests" / "com" / "session.js", windows_name(song))
    # After stripping only the bytes between the tags are left.
    assert song.read_bytes() == before[start:-128]


@pytest.mark.parametrize("name", ["tag_file.vbs", "tag_file.js"])
def test_example_runs_as_it_stands(wine, registered, song, name):
    lines = run_script(wine, ROOT / "examples" / "automation" / name, windows_name(song))
    assert lines[-1] == "Done."
    assert "Good Morning by The Early Shift" in lines
    assert re.search(r"00:05", "\n".join(lines))
    # The example leaves its mark in the file.
    again = run_script(wine, ROOT / "examples" / "automation" / name, windows_name(song))
    assert "Cue in: 250 ms" in again and "Cue in: 120 ms" in lines


def test_script_that_breaks_off_is_noticed(wine, registered, folder):
    script = folder / "broken.vbs"
    script.write_text('WScript.Echo "begun"\nx = 1 / 0\nWScript.Echo "session complete"\n')
    assert "session complete" not in run_script(wine, script)
