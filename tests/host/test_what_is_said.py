"""The program's messages about a change are true of the file on the disk, and readable."""

import os
import subprocess
import unicodedata

import pytest

from mp3_bytes import audio, frame, id3v1, tag, text_frame
from other_user import as_nobody, needs_root
from tagged_file import AUDIO, RECORD, one_line, snapshot

ROOMY = tag(text_frame("TIT2", "Old"), padding=3000)
TIGHT = tag(text_frame("TIT2", "Old"))
REBUILD = ("set", "--title", "New" * 100)

WORKS = {
    "set_in_place": (ROOMY + AUDIO, ("set", "--title", "New")),
    "set_with_rebuild": (TIGHT + AUDIO, REBUILD),
    "set_atomic": (ROOMY + AUDIO, ("set", "--atomic", "--title", "New")),
    "strip": (ROOMY + AUDIO + RECORD, ("strip", "--all")),
}


# --- a dry run fails where the run would

def assert_both_fail(run, path, *arguments):
    before = snapshot(path)
    reasons = []
    for dry_run in ((), ("--dry-run",)):
        result = run(*arguments, *dry_run, "song.mp3")
        assert result.returncode == 1, (dry_run, result.stdout)
        reasons.append(result.stderr.decode().splitlines()[-1])
        assert snapshot(path) == before
    assert reasons[0] == reasons[1]
    return reasons[0]


@needs_root
@pytest.mark.parametrize("old, arguments", WORKS.values(), ids=WORKS.keys())
def test_dry_run_fails_for_a_file_that_may_not_be_written(program, reachable, old, arguments):
    path = reachable / "song.mp3"
    path.write_bytes(old)
    path.chmod(0o444)
    reachable.chmod(0o777)
    reason = assert_both_fail(lambda *a: as_nobody(program, *a, cwd=reachable), path, *arguments)
    assert "ermission denied" in reason


@needs_root
@pytest.mark.parametrize("work", ["set_with_rebuild", "set_atomic", "strip"])
def test_dry_run_fails_for_a_folder_that_may_not_be_written(program, reachable, work):
    old, arguments = WORKS[work]
    path = reachable / "song.mp3"
    path.write_bytes(old)
    path.chmod(0o666)
    reachable.chmod(0o755)
    reason = assert_both_fail(lambda *a: as_nobody(program, *a, cwd=reachable), path, *arguments)
    assert "ermission denied" in reason


def test_dry_run_fails_for_an_empty_file(brindle, tmp_path):
    path = tmp_path / "song.mp3"
    path.write_bytes(b"")
    assert "The file is empty" in assert_both_fail(brindle, path, "set", "--title", "New")


def test_dry_run_fails_for_a_file_that_is_too_long(brindle, tmp_path):
    path = tmp_path / "song.mp3"
    path.write_bytes(ROOMY + AUDIO)
    os.truncate(path, 2_147_483_640)
    before = path.stat()
    for arguments in (("set", "--title", "New"), REBUILD):
        for dry_run in ((), ("--dry-run",)):
            result = brindle(*arguments, *dry_run, "song.mp3")
            assert result.returncode == 1
            # The record alone makes it too long.
            assert one_line(result).endswith(
                "Files of more than 2,147,483,647 bytes cannot be saved")
    assert path.stat().st_mtime_ns == before.st_mtime_ns


# --- a stream that hosts would lose

def test_save_after_which_hosts_find_no_stream_is_refused(brindle, tmp_path):
    """The tag would be more than half of the file: hosts search from the start, and give up."""
    path = tmp_path / "song.mp3"
    short = audio(40)
    path.write_bytes(tag(padding=500) + short)
    before = snapshot(path)
    arguments = ["set"] + [argument for number in range(5) for argument in
                           ("--field", f"Note {number}={'n' * 4900}")]
    for dry_run in ((), ("--dry-run",)):
        result = brindle(*arguments, *dry_run, "song.mp3")
        assert result.returncode == 1
        assert "Hosts would find no stream" in result.stderr.decode()
        assert snapshot(path) == before
    result = brindle(*arguments, "--force", "song.mp3")
    assert result.returncode == 0
    assert path.read_bytes().endswith(short)


def test_strip_after_which_hosts_find_no_stream_is_refused(brindle, tmp_path):
    """What stays in front of the audio begins with something that looks like a frame."""
    path = tmp_path / "song.mp3"
    picture = b"\0image/png\0\3\0" + b"\xff\xfb\x90\x64" + b"\x11" * 30_000
    path.write_bytes(tag(frame("APIC", picture)) [:-1] + audio(200))
    before = snapshot(path)
    shown = brindle("show", "song.mp3").stdout
    assert b"Duration" in shown
    result = brindle("strip", "--v2", "song.mp3")
    assert result.returncode == 1
    assert "Hosts would find no stream" in one_line(result)
    assert snapshot(path) == before
    assert brindle("strip", "--v2", "--force", "song.mp3").returncode == 0
    assert path.read_bytes().endswith(audio(200))


# --- messages about the new file

@needs_root
def test_rights_and_attributes_go_along(brindle, tmp_path):
    path = tmp_path / "song.mp3"
    path.write_bytes(TIGHT + AUDIO)
    os.chown(path, 1234, 5678)
    path.chmod(0o640)
    os.setxattr(path, "user.note", b"checked")
    result = brindle(*REBUILD, "song.mp3")
    assert result.returncode == 0
    status = path.stat()
    assert (status.st_uid, status.st_gid, status.st_mode & 0o7777) == (1234, 5678, 0o640)
    assert os.getxattr(path, "user.note") == b"checked"
    assert b"belongs" not in result.stdout and b"not kept" not in result.stdout


@needs_root
def test_rights_that_cannot_be_kept_are_told_and_never_wider(program, reachable):
    path = reachable / "song.mp3"
    path.write_bytes(TIGHT + AUDIO)
    os.chown(path, 1234, 5678)
    path.chmod(0o662)
    reachable.chmod(0o777)
    result = as_nobody(program, *REBUILD, "song.mp3", cwd=reachable)
    assert result.returncode == 1  # others may write it, but not read
    path.chmod(0o666)
    result = as_nobody(program, *REBUILD, "song.mp3", cwd=reachable)
    assert result.returncode == 0, result.stderr
    assert b"; it belongs to another user now\n" in result.stdout
    assert path.stat().st_mode & 0o7777 == 0o666


def test_other_names_of_a_rebuilt_file_are_told(brindle, tmp_path):
    path = tmp_path / "song.mp3"
    path.write_bytes(TIGHT + AUDIO)
    os.link(path, tmp_path / "other.mp3")
    result = brindle(*REBUILD, "song.mp3")
    assert b"; its other names keep the old content\n" in result.stdout
    assert (tmp_path / "other.mp3").read_bytes() == TIGHT + AUDIO
    result = brindle("set", "--artist", "Ann", "song.mp3")
    assert b"other names" not in result.stdout


def test_modification_time_is_kept_on_demand(brindle, tmp_path):
    for old, arguments in WORKS.values():
        path = tmp_path / "song.mp3"
        path.write_bytes(old)
        os.utime(path, ns=(1, 1_234_567_890_123_456_789))
        assert brindle(*arguments, "--preserve", "song.mp3").returncode == 0
        assert path.stat().st_mtime_ns == 1_234_567_890_123_456_789


def test_record_that_a_short_file_does_not_get_is_told(brindle, tmp_path):
    path = tmp_path / "song.mp3"
    path.write_bytes(bytes(100))
    result = brindle("set", "--v1-title", "New", "song.mp3")
    assert result.returncode == 0
    assert b"no ID3v1 record (the file is too short for one)" in result.stdout


def test_tag_that_hosts_will_not_find_is_told(brindle, tmp_path):
    path = tmp_path / "song.mp3"
    path.write_bytes(audio(3))
    result = brindle("set", "--title", "New", "song.mp3")
    assert path.stat().st_size < 4098
    assert b"hosts will not find the tag" in result.stdout
    result = brindle("set", "--title", "New", "--field", "Note=" + "n" * 4000, "song.mp3")
    assert path.stat().st_size >= 4098
    assert b"hosts will not find the tag" not in result.stdout


def test_holes_of_a_sparse_file_stay_holes(brindle, tmp_path):
    path = tmp_path / "song.mp3"
    long_audio = audio(3000)
    path.write_bytes(TIGHT + long_audio)
    os.truncate(path, 2_100_000_000)
    with open(path, "r+b") as file:
        file.seek(1_000_000_000)
        file.write(long_audio)
    allocated = path.stat().st_blocks
    for arguments in (REBUILD, ("set", "--atomic", "--title", "New"), ("strip", "--all")):
        assert brindle(*arguments, "song.mp3").returncode == 0
        assert path.stat().st_blocks <= 1.1 * allocated
    with open(path, "rb") as file:
        assert file.read(len(long_audio)) == long_audio
        file.seek(1_000_000_000 - len(TIGHT))
        assert file.read(len(long_audio)) == long_audio
    assert path.stat().st_size == 2_100_000_000 - len(TIGHT)


# --- out of memory for one file

@pytest.mark.plain_build
def test_file_that_takes_too_much_memory_does_not_stop_the_others(program, tmp_path):
    big = tmp_path / "big.mp3"
    fields = b"".join(frame("TXXX", b"\0Field %d\0" % number + b"x" * 4900)
                      for number in range(40_000))
    big.write_bytes(tag(fields) + audio(2000) * 250)
    (tmp_path / "song.mp3").write_bytes(ROOMY + AUDIO)
    result = subprocess.run(
        ["bash", "-c", 'ulimit -v 300000; exec "$@"', "limited", program, "set",
         "--title", "New", "big.mp3", "song.mp3"], cwd=tmp_path, capture_output=True, timeout=60,
        check=False)
    assert result.returncode == 1, result.stdout
    assert b"big.mp3: Out of memory" in result.stderr
    assert b"song.mp3: ID3v2 tag written" in result.stdout


# --- text that people read

INVISIBLE = [chr(code_point) for code_point in range(0x110000)
             if unicodedata.category(chr(code_point)) in ("Cc", "Cf", "Zl", "Zp")
             and code_point not in (0, ord("/"))]


def shown_name(brindle, name):
    result = brindle("show", b"none-" + name + b".mp3")
    line = result.stderr.decode("utf-8")
    assert line.endswith(".mp3: No such file or directory\n")
    return line.removeprefix("brindle: none-").removesuffix(".mp3: No such file or directory\n")


def test_every_invisible_character_is_shown(brindle):
    for begin in range(0, len(INVISIBLE), 20):
        part = INVISIBLE[begin:begin + 20]
        shown = shown_name(brindle, "x".join(part).encode("utf-8"))
        for character in part:
            assert character not in shown, f"U+{ord(character):04X}"
        assert shown.count("\\") == len(part)


def test_every_other_character_stays(brindle):
    text = "Süße Grüße — Łódź 東京 🎵 שלום ไทย e\u0301 |\\ \u00a0"
    assert shown_name(brindle, text.encode()) == text


@pytest.mark.parametrize("name, shown", [
    (b"a\nb", "a\\nb"), (b"a\rb", "a\\rb"), (b"a\tb", "a\\tb"), (b"a\x1b[31m", "a\\x1B[31m"),
    (b"\x7f", "\\x7F"), ("\u0085".encode(), "\\u0085"), ("\u202egnp.exe".encode(), "\\u202Egnp.exe"),
    ("\U000e0041".encode(), "\\U000E0041"), (b"caf\xe9", "caf\\xE9"), (b"\xc3(", "\\xC3("),
    (b"\xc0\xaf", "\\xC0\\xAF"), (b"\xed\xa0\x80", "\\xED\\xA0\\x80"), (b"\xf5\x80", "\\xF5\\x80"),
    (b"\xf4\x90\x80\x80", "\\xF4\\x90\\x80\\x80"), (b"\xe2\x82", "\\xE2\\x82"),
    ("\U0010ffff".encode(), "\U0010ffff")])
def test_name_is_shown_on_one_line_and_as_text(brindle, name, shown):
    assert shown_name(brindle, name) == shown


def test_output_about_any_name_is_text(brindle, tmp_path):
    name = b"caf\xe9\x1b.mp3"
    with open(os.path.join(os.fsencode(tmp_path), name), "wb") as file:
        file.write(ROOMY + AUDIO)
    for command in (("show",), ("scan",), ("check",), ("set", "--title", "New"),
                    ("strip", "--all")):
        result = brindle(*command, name)
        assert b"caf\\xE9\\x1B.mp3" in result.stdout
        assert result.stdout.decode("utf-8").replace("\n", "").isprintable()


# --- errors of usage

USAGE_ERRORS = [("time", "abc"), ("time",), ("set", "--year", "x", "f.mp3"), ("frob",),
                ("scan", "--jobs", "x", "."), ("show",), ("genres", "x"), ("set", "f.mp3"),
                ("strip", "f.mp3"), ("set", "--cue-in", "99999999999", "f.mp3")]


@pytest.mark.parametrize("arguments", USAGE_ERRORS, ids=" ".join)
def test_usage_errors_read_alike(brindle, arguments):
    result = brindle(*arguments)
    assert (result.returncode, result.stdout) == (2, b"")
    what, where = result.stderr.decode().splitlines()
    assert what.startswith("brindle: ") and "convert" not in what
    assert where.startswith("brindle: see 'brindle") and where.endswith("--help'")


def test_number_that_is_none_is_named(brindle):
    assert brindle("time", "abc").stderr.decode().splitlines()[0] == (
        "brindle: MS: 'abc' is not a whole number of 32 bits")


def test_reason_names_the_file_once(brindle, tmp_path):
    (tmp_path / "song.mp3").write_bytes(b"")
    for arguments in (("set", "--title", "New"), ("set", "--title", "New", "--dry-run")):
        line = brindle(*arguments, "song.mp3").stderr.decode().splitlines()[-1]
        assert line == "brindle: song.mp3: The file is empty"


def test_record_at_the_very_start_is_no_file_of_audio(brindle, tmp_path):
    (tmp_path / "song.mp3").write_bytes(id3v1(b"Title"))
    result = brindle("strip", "--v1", "song.mp3")
    assert result.returncode == 0
    assert (tmp_path / "song.mp3").read_bytes() == b""
