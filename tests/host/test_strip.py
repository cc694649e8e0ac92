"""`brindle strip`: tags go, audio stays."""

import os

import pytest

from mp3_bytes import tag, text_frame
from tagged_file import AUDIO, RECORD, errors_of_dry_run, one_line, snapshot

TAG = tag(text_frame("TIT2", "Old"), padding=100)  # 10 + 14 + 100 bytes
OLD_TIME = 1_000_000_000_123_456_789

STRIPS = {
    # tag, record, option: what is left, what is said
    (True, True, "--v1"): (TAG + AUDIO, "stripped ID3v1 record (128 bytes)"),
    (True, True, "--v2"): (AUDIO + RECORD, "stripped ID3v2 tag (124 bytes)"),
    (True, True, "--all"): (AUDIO, "stripped ID3v1 record and ID3v2 tag (252 bytes)"),
    (True, False, "--v1"): (TAG + AUDIO, "no tag"),
    (True, False, "--v2"): (AUDIO, "stripped ID3v2 tag (124 bytes)"),
    (True, False, "--all"): (AUDIO, "stripped ID3v2 tag (124 bytes)"),
    (False, True, "--v1"): (AUDIO, "stripped ID3v1 record (128 bytes)"),
    (False, True, "--v2"): (AUDIO + RECORD, "no tag"),
    (False, True, "--all"): (AUDIO, "stripped ID3v1 record (128 bytes)"),
    (False, False, "--v1"): (AUDIO, "no tag"),
    (False, False, "--v2"): (AUDIO, "no tag"),
    (False, False, "--all"): (AUDIO, "no tag"),
}


def content(has_tag, has_record):
    return (TAG if has_tag else b"") + AUDIO + (RECORD if has_record else b"")


@pytest.fixture
def song(tmp_path):
    path = tmp_path / "song.mp3"
    path.write_bytes(content(True, True))
    return path


@pytest.mark.parametrize("case", STRIPS, ids=str)
def test_strip_leaves_the_audio_byte_for_byte(tmp_path, brindle, case):
    has_tag, has_record, option = case
    left, said = STRIPS[case]
    path = tmp_path / "a.mp3"
    path.write_bytes(content(has_tag, has_record))
    result = brindle("strip", option, "a.mp3")
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.decode() == f"a.mp3: {said}\n"
    assert path.read_bytes() == left
    assert os.listdir(tmp_path) == ["a.mp3"]


@pytest.mark.parametrize("case", STRIPS, ids=str)
def test_dry_run_touches_nothing(tmp_path, brindle, case):
    has_tag, has_record, option = case
    _, said = STRIPS[case]
    path = tmp_path / "a.mp3"
    path.write_bytes(content(has_tag, has_record))
    before = snapshot(path)
    result = brindle("strip", "--dry-run", "--preserve", option, "a.mp3")
    assert (result.returncode, errors_of_dry_run(result)) == (0, b"")
    expected = said.replace("stripped", "dry run, would strip").split(" (")[0]
    assert result.stdout.decode() == f"a.mp3: {expected}\n"
    assert snapshot(path) == before


def test_nothing_to_strip_rewrites_nothing(tmp_path, brindle):
    path = tmp_path / "a.mp3"
    path.write_bytes(AUDIO)
    before = snapshot(path)
    assert brindle("strip", "--all", "a.mp3").returncode == 0
    assert snapshot(path) == before


def test_record_in_small_letters_goes_too(tmp_path, brindle):
    path = tmp_path / "a.mp3"
    path.write_bytes(AUDIO + b"tag" + RECORD[3:])
    result = brindle("strip", "--v1", "a.mp3")
    assert result.stdout == b"a.mp3: stripped ID3v1 record (128 bytes)\n"
    assert path.read_bytes() == AUDIO


@pytest.mark.parametrize("option", ["--v2", "--all"])
def test_tag_that_cannot_be_stripped_is_an_error_and_stays(tmp_path, brindle, option):
    # It claims more than the file holds, and there is no audio that could tell where it ends.
    path = tmp_path / "a.mp3"
    path.write_bytes(b"ID3\3\0\0\0\1\0\0" + bytes(6000) + RECORD)
    before = snapshot(path)
    result = brindle("strip", option, "a.mp3")
    assert (result.returncode, result.stdout) == (1, b"")
    assert one_line(result) == (
            "brindle: a.mp3: The tag claims more bytes than the file holds, and no audio tells "
            "where it ends")
    assert snapshot(path) == before


@pytest.mark.parametrize("option", ["--v1", "--v2", "--all"])
def test_preserve_keeps_time_mode_and_owner(song, brindle, option):
    song.chmod(0o604)
    root = os.geteuid() == 0
    if root:
        os.chown(song, 12345, 23456)
    os.utime(song, ns=(OLD_TIME, OLD_TIME))
    assert brindle("strip", "--preserve", option, "song.mp3").returncode == 0
    status = song.stat()
    assert status.st_mtime_ns == OLD_TIME
    assert status.st_mode & 0o7777 == 0o604
    if root:
        assert (status.st_uid, status.st_gid) == (12345, 23456)


def test_file_that_fails_does_not_stop_the_others(song, brindle):
    result = brindle("strip", "--all", "missing.mp3", "song.mp3")
    assert result.returncode == 1
    assert one_line(result) == "brindle: missing.mp3: No such file or directory"
    assert song.read_bytes() == AUDIO


@pytest.mark.parametrize("options", [
    [], ["--dry-run"], ["--v1", "--v2"], ["--all", "--v1"], ["--v3"], ["--v1=false"],
], ids=str)
def test_wrong_usage_touches_no_file(song, brindle, options):
    before = snapshot(song)
    result = brindle("strip", "song.mp3", *options)
    assert (result.returncode, result.stdout) == (2, b"")
    assert snapshot(song) == before


def test_without_a_file_is_wrong_usage(brindle):
    assert brindle("strip", "--v1").returncode == 2


def test_help_ends_with_an_example(brindle):
    result = brindle("strip", "--help")
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.decode().splitlines()[-2:] == [
        "Example:", "  brindle strip --v1 jingle.mp3 spot.mp3"]
