"""Journals: where they are kept, how they go, and those that are not to be trusted."""

import os
import re
import struct
import subprocess
import time

import pytest

from journal_bytes import BEGINNING, entry_for, journal, packed, run_record, sha256
from mp3_bytes import audio, frame, tag, text_frame
from other_user import NOBODY, as_nobody, needs_root

AUDIO = audio()
ROOM = tag(text_frame("TALB", "Album"), padding=600)
OLD = ROOM + AUDIO

# A sanitizer makes the program slow to start, so that fewer cases have to do.
SLOWNESS = 7 if os.environ.get("BRINDLE_SANITIZE") else 1


@pytest.fixture
def song(tmp_path):
    path = tmp_path / "song.mp3"
    path.write_bytes(OLD)
    return path


def journals(state_folder):
    folder = state_folder / "brindle"
    return sorted(folder.iterdir()) if folder.exists() else []


def set_title(brindle, *options, name="song.mp3"):
    return brindle("set", "--title", "New", *options, name)


# --- where they are kept

def test_home_is_the_place_without_the_variable(brindle, song, tmp_path, monkeypatch):
    home = tmp_path / "home"
    home.mkdir()
    monkeypatch.setenv("HOME", str(home))
    for value in (None, "", "relative"):
        if value is None:
            monkeypatch.delenv("XDG_STATE_HOME")
        else:
            monkeypatch.setenv("XDG_STATE_HOME", value)
        song.write_bytes(OLD)
        assert set_title(brindle).returncode == 0
    assert len(journals(home / ".local" / "state")) == 3
    assert not (tmp_path / "relative").exists()


def test_no_journal_keeps_none(brindle, song, state_folder):
    assert set_title(brindle, "--no-journal").returncode == 0
    assert song.read_bytes() != OLD
    assert journals(state_folder) == []


def test_journal_has_another_place(brindle, song, tmp_path, state_folder):
    assert set_title(brindle, "--journal", "run.journal").returncode == 0
    assert journals(state_folder) == []
    assert (tmp_path / "run.journal").stat().st_mode == 0o100600
    # Also the undo of it.
    assert brindle("undo", "--journal", "back.journal", "run.journal").returncode == 0
    assert song.read_bytes() == OLD
    listed = brindle("journal", "back.journal").stdout.decode().splitlines()
    assert re.fullmatch(rf"\S+Z  undo of {tmp_path}/run.journal  1 file", listed[0])
    assert re.fullmatch(rf"{song}: \d+ bytes before, {len(OLD)} after", listed[1])


def is_refused(result, place):
    """Before anything is changed, with a way out."""
    text = result.stderr.decode()
    return (result.returncode == 1 and text.count("\n") == 1
            and text.startswith(f"brindle: no journal can be kept: {place}: ")
            and text.endswith("; nothing was changed; --no-journal does without one\n"))


@pytest.mark.parametrize("kind", ["file", "link", "dangling", "folder"])
def test_journal_is_never_written_over_anything(brindle, song, tmp_path, kind):
    place, target = tmp_path / "run.journal", tmp_path / "target"
    if kind == "file":
        place.write_bytes(b"kept")
    elif kind == "folder":
        place.mkdir()
    else:
        place.symlink_to(target)
        if kind == "link":
            target.write_bytes(b"kept")
    assert is_refused(set_title(brindle, "--journal", "run.journal"), "run.journal")
    assert song.read_bytes() == OLD
    if kind == "file":
        assert place.read_bytes() == b"kept"
    if kind == "link":
        assert target.read_bytes() == b"kept"
    if kind == "dangling":
        assert not target.exists()


@pytest.mark.parametrize("command", [("set", "--title", "New", "song.mp3"),
                                     ("set", "--host-form", "--title", "New", "song.mp3"),
                                     ("strip", "--v2", "song.mp3"), ("apply", "edits.csv")])
def test_folder_that_cannot_be_made_refuses_the_run(brindle, song, tmp_path, monkeypatch, command):
    (tmp_path / "edits.csv").write_text("file,title\nsong.mp3,New\n")
    (tmp_path / "state").write_bytes(b"")
    monkeypatch.setenv("XDG_STATE_HOME", str(tmp_path / "state"))
    assert is_refused(brindle(*command), f"{tmp_path}/state/brindle")
    assert song.read_bytes() == OLD
    monkeypatch.delenv("XDG_STATE_HOME")
    monkeypatch.delenv("HOME")
    assert is_refused(brindle(*command), "the home folder")
    assert song.read_bytes() == OLD
    assert brindle(command[0], "--no-journal", *command[1:]).returncode == 0
    assert song.read_bytes() != OLD


@needs_root
@pytest.mark.plain_build
def test_folder_of_somebody_else_refuses_the_run(program, reachable, song):
    path = reachable / "song.mp3"
    path.write_bytes(OLD)
    os.chown(path, NOBODY, NOBODY)
    result = as_nobody(program, "set", "--title", "New", "--journal", str(reachable / "run"),
                       "song.mp3", cwd=reachable)
    assert is_refused(result, reachable / "run")
    assert path.read_bytes() == OLD


# --- how they go

def test_old_journals_go_by_age(brindle, song, state_folder):
    set_title(brindle)
    brindle("undo")
    first, second = journals(state_folder)
    os.utime(first, (time.time() - 89.9 * 86_400,) * 2)
    os.utime(second, (time.time() - 90.1 * 86_400,) * 2)
    (state_folder / "brindle" / "notes.txt").write_bytes(b"not ours")
    os.utime(state_folder / "brindle" / "notes.txt", (0, 0))
    set_title(brindle)
    left = journals(state_folder)
    assert first in left and second not in left and len(left) == 3
    brindle("undo")
    *_, last, notes = journals(state_folder)
    brindle("undo", "--journal-days", "0")
    # The one that is taken back is in use.
    left = journals(state_folder)
    assert len(left) == 3 and left[0] == last and left[2] == notes


def test_old_journals_go_by_size(brindle, song, state_folder):
    noise = tag(frame("PRIV", b"x\0" + os.urandom(2_000_000)))
    for _ in range(3):
        song.write_bytes(noise + AUDIO)
        assert brindle("strip", "--v2", "song.mp3").returncode == 0
    assert len(journals(state_folder)) == 3
    oldest, *others = journals(state_folder)
    song.write_bytes(noise + AUDIO)
    brindle("strip", "--v2", "--journal-megabytes", "4", "song.mp3")
    left = journals(state_folder)
    assert oldest not in left and others[1] in left


def test_journal_of_a_run_that_goes_on_stays_and_is_not_undone(program, brindle, song,
                                                                state_folder):
    with subprocess.Popen([program, "set", "--title", "New", "-"], cwd=song.parent,
                          stdin=subprocess.PIPE, stdout=subprocess.PIPE) as run:
        run.stdin.write(b"song.mp3\n")
        run.stdin.flush()
        run.stdout.readline()
        (going_on,) = journals(state_folder)
        result = brindle("undo")
        assert (result.returncode, result.stderr) == (
            1, f"brindle: {going_on}: Its run is still going on\n".encode())
        (song.parent / "other.mp3").write_bytes(OLD)
        set_title(brindle, "--journal-days", "0", name="other.mp3")
        assert going_on in journals(state_folder)
        run.stdin.close()
        assert run.wait(timeout=30) == 0


def test_journals_are_listed(brindle, song, state_folder):
    assert brindle("journal").stdout == b""
    set_title(brindle)
    brindle("undo")
    first, second = journals(state_folder)
    (state_folder / "brindle" / "2.journal").write_bytes(b"no journal")
    result = brindle("journal")
    assert result.returncode == 1
    assert result.stderr.decode() == f"brindle: {state_folder}/brindle/2.journal: Not a journal\n"
    lines = result.stdout.decode().splitlines()
    time_text = r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ"
    assert re.fullmatch(rf"{time_text}  set  1 file  {first.stat().st_size} bytes  {first}", lines[0])
    assert re.fullmatch(rf"{time_text}  undo  1 file  {second.stat().st_size} bytes  {second}",
                        lines[1])
    assert brindle("journal", first.name).stdout == brindle("journal", str(first)).stdout
    assert brindle("journal", "a", "b").returncode == 2


# --- those that are not to be trusted

def undo(brindle, content, tmp_path, *files):
    path = tmp_path / "given.journal"
    path.unlink(missing_ok=True)
    path.write_bytes(content)
    path.chmod(0o600)
    return brindle("undo", "given.journal", *files)


NEW = tag(text_frame("TIT2", "Song"), padding=600)


def test_hand_made_journal_is_taken_back(brindle, tmp_path, song):
    """So those below are refused for what is wrong with them alone."""
    song.write_bytes(NEW + AUDIO)
    assert undo(brindle, journal(entry_for(song, ROOM, NEW)), tmp_path).returncode == 0
    assert song.read_bytes() == OLD
    assert song.stat().st_mtime == 10**9


def named(song, name):
    entry = entry_for(song, ROOM, NEW)
    entry.name = os.fsencode(name)
    return entry


@pytest.mark.parametrize("name", ["song.mp3", "./song.mp3", "{folder}/../{last}/song.mp3",
                                  "{folder}/./song.mp3", "{folder}//song.mp3", "{folder}/link.mp3",
                                  "{folder}/song.txt", "{folder}/way/song.mp3", "", "/",
                                  "{folder}/song.mp3\0", "{folder}", "{folder}/fifo.mp3"])
def test_other_names_are_refused(brindle, tmp_path, song, name):
    song.write_bytes(NEW + AUDIO)
    os.link(song, tmp_path / "song.txt")
    os.mkfifo(tmp_path / "fifo.mp3")
    (tmp_path / "link.mp3").symlink_to("song.txt")
    (tmp_path / "way").symlink_to(".")
    name = name.format(folder=tmp_path, last=tmp_path.name)
    entry = named(song, name)
    # The target that the name had then is another one, or the name is none that a run records.
    if name.endswith("way/song.mp3"):
        entry.target = os.fsencode(name)
    result = undo(brindle, journal(entry), tmp_path)
    assert (result.returncode, result.stderr.count(b"\n")) == (1, 1), result.stdout
    assert song.read_bytes() == NEW + AUDIO


@pytest.mark.parametrize("field", ["kept", "new_front", "new_back"])
@pytest.mark.parametrize("wrong", [(-1, sha256(b"")), (2**62, sha256(b"")), (2**63 - 1, ""),
                                   (0, "x" * 64), (1, sha256(b""))])
def test_wrong_parts_change_nothing(brindle, tmp_path, song, field, wrong):
    song.write_bytes(NEW + AUDIO)
    entry = entry_for(song, ROOM, NEW)
    setattr(entry, field, wrong)
    result = undo(brindle, journal(entry), tmp_path)
    assert result.returncode == 1 and result.stderr
    assert song.read_bytes() == NEW + AUDIO


def test_only_user_attributes_and_access_rights_come_from_a_journal(brindle, tmp_path, song):
    song.write_bytes(NEW + AUDIO)
    entry = entry_for(song, ROOM, NEW)
    entry.mode = 0o106777
    entry.attributes = {b"user.good": b"1", b"security.bad": b"1", b"trusted.bad": b"1",
                        b"system.posix_acl_access": b"1"}
    assert undo(brindle, journal(entry), tmp_path).returncode == 0
    assert song.stat().st_mode == 0o100777
    assert os.listxattr(song) == ["user.good"]


@pytest.mark.parametrize("mode, reason", [(0o620, "Others can write to it"),
                                          (0o602, "Others can write to it"), (0o644, None)])
def test_journal_that_others_may_write_is_refused(brindle, tmp_path, song, mode, reason):
    song.write_bytes(NEW + AUDIO)
    given = tmp_path / "given.journal"
    given.write_bytes(journal(entry_for(song, ROOM, NEW)))
    given.chmod(mode)
    for command in ("undo", "journal"):
        result = brindle(command, "given.journal")
        assert (result.returncode != 0) == (reason is not None)
        if reason:
            assert result.stderr == f"brindle: given.journal: {reason}\n".encode()
    assert (song.read_bytes() == OLD) == (reason is None)


@needs_root
def test_journal_of_somebody_else_is_refused_also_by_root(brindle, tmp_path, song):
    song.write_bytes(NEW + AUDIO)
    given = tmp_path / "given.journal"
    given.write_bytes(journal(entry_for(song, ROOM, NEW)))
    given.chmod(0o600)
    os.chown(given, NOBODY, NOBODY)
    result = brindle("undo", "given.journal")
    assert (result.returncode, result.stderr) == (
        1, b"brindle: given.journal: It belongs to another user\n")
    assert song.read_bytes() == NEW + AUDIO


@pytest.mark.parametrize("kind, reason", [
    ("link", "It is a symbolic link"), ("fifo", "Not a regular file"),
    ("folder", "Not a regular file"), ("missing", "No such file or directory"),
    ("empty", "Not a journal"), ("song", "Not a journal"),
    ("beginning", "It is empty")])
def test_what_is_no_journal_is_refused(brindle, tmp_path, song, kind, reason):
    song.write_bytes(NEW + AUDIO)
    given = tmp_path / "given.journal"
    good = tmp_path / "good.journal"
    good.write_bytes(journal(entry_for(song, ROOM, NEW)))
    good.chmod(0o600)
    if kind == "link":
        given.symlink_to(good)
    elif kind == "fifo":
        os.mkfifo(given, 0o600)
    elif kind == "folder":
        given.mkdir(0o700)
    elif kind != "missing":
        given.write_bytes({"empty": b"", "song": OLD, "beginning": BEGINNING}[kind])
        given.chmod(0o600)
    result = brindle("undo", "./given.journal")
    assert (result.returncode, result.stderr) == (
        1, f"brindle: ./given.journal: {reason}\n".encode())
    assert song.read_bytes() == NEW + AUDIO


def journal_of_two(tmp_path):
    paths = [tmp_path / "a.mp3", tmp_path / "b.mp3"]
    for path in paths:
        path.write_bytes(NEW + AUDIO)
    return paths, journal(*(entry_for(path, ROOM, NEW) for path in paths))


def test_journal_is_cut_at_many_bytes(brindle, tmp_path):
    """What is whole is taken back, and the rest is not touched."""
    paths, content = journal_of_two(tmp_path)
    ends = [len(journal(entry_for(paths[0], ROOM, NEW))), len(content)]
    restored = set()
    for length in range(0, len(content), 3 * SLOWNESS):
        for path in paths:
            path.write_bytes(NEW + AUDIO)
        result = undo(brindle, content[:length], tmp_path)
        whole = sum(end <= length for end in ends)
        restored.add(whole)
        expected = [OLD] * whole + [NEW + AUDIO] * (2 - whole)
        assert [path.read_bytes() for path in paths] == expected, length
        assert result.returncode in (0, 1)
        assert result.stderr or length in ends
    assert restored == {0, 1}


def flip_bits(brindle, tmp_path, step):
    paths, content = journal_of_two(tmp_path)
    outcomes = set()
    for bit in range(0, len(content) * 8, step):
        for path in paths:
            path.write_bytes(NEW + AUDIO)
        damaged = bytearray(content)
        damaged[bit // 8] ^= 1 << bit % 8
        result = undo(brindle, bytes(damaged), tmp_path)
        assert (result.returncode, result.stderr.count(b"\n")) == (1, 1), bit
        contents = [path.read_bytes() for path in paths]
        assert all(one in (OLD, NEW + AUDIO) for one in contents), bit
        outcomes.add(contents.count(OLD))
    # Damage in the second entry leaves the first.
    assert outcomes == {0, 1}


def test_damaged_bits_are_told(brindle, tmp_path):
    flip_bits(brindle, tmp_path, 9 * SLOWNESS)


@pytest.mark.deep
def test_many_damaged_bits_are_told(brindle, tmp_path):
    flip_bits(brindle, tmp_path, 3)


def memory_limited(program, cwd, *arguments, megabytes=128):
    return subprocess.run(["prlimit", f"--as={megabytes * 1024 * 1024}", program, *arguments],
                          cwd=cwd, capture_output=True, timeout=60, check=False)


@pytest.mark.plain_build
@pytest.mark.parametrize("kind", ["claims_little", "claims_too_much", "claims_more_than_memory",
                                  "stored_beyond_the_end"])
def test_bombs_take_no_memory(program, tmp_path, song, kind):
    bomb = bytes(300 * 1024 * 1024)
    record = {
        "claims_little": lambda: packed(bomb, length=1000),
        "claims_too_much": lambda: packed(bomb),
        "claims_more_than_memory": lambda: packed(b"x", length=255 * 1024 * 1024),
        "stored_beyond_the_end": lambda: struct.pack("<qq", 2**40, 10) + bytes(80),
    }[kind]()
    given = tmp_path / "given.journal"
    given.write_bytes(BEGINNING + run_record() + record)
    given.chmod(0o600)
    result = memory_limited(program, tmp_path, "undo", "given.journal")
    assert result.returncode == 1
    assert b"it is damaged" in result.stderr
    assert song.read_bytes() == OLD


@pytest.mark.parametrize("record", [b"", bytes(8), b"\xff" * 200, struct.pack("<q", 2**62) * 30])
def test_records_that_are_none_are_damage(brindle, tmp_path, song, record):
    content = BEGINNING + run_record() + packed(record)
    result = undo(brindle, content, tmp_path)
    assert result.returncode == 1
    assert b"it is damaged" in result.stderr
    assert song.read_bytes() == OLD


def test_many_attributes_are_not_believed(brindle, tmp_path, song):
    song.write_bytes(NEW + AUDIO)
    entry = entry_for(song, ROOM, NEW).record()
    # The count of the attributes follows two names, and three numbers.
    place = 2 * (8 + len(str(song))) + 24
    huge = entry[:place] + struct.pack("<q", 60_000) + entry[place + 8:]
    result = undo(brindle, BEGINNING + run_record() + packed(huge), tmp_path)
    assert b"it is damaged" in result.stderr
    assert song.read_bytes() == NEW + AUDIO


# --- a full disk

def fill(path, size):
    path.write_bytes(bytes(size))


def test_full_disk_refuses_the_run_before_it_changes_anything(brindle, song, small_disk,
                                                              monkeypatch):
    monkeypatch.setenv("XDG_STATE_HOME", str(small_disk))
    fill(small_disk / "filler", 64 * 1024)
    result = set_title(brindle)
    assert result.returncode == 1
    assert re.fullmatch(rb"brindle: no journal can be kept: .*: No space left on device; nothing was "
                        rb"changed; --no-journal does without one\n", result.stderr)
    assert song.read_bytes() == OLD
    assert [path for path in small_disk.rglob("*.journal")] == []


def test_disk_that_becomes_full_leaves_the_other_files(brindle, tmp_path, small_disk, monkeypatch):
    monkeypatch.setenv("XDG_STATE_HOME", str(small_disk))
    names = [f"{number:03}.mp3" for number in range(200)]
    noise = {}
    for name in names:
        content = tag(text_frame("TALB", os.urandom(400).hex()), padding=10) + AUDIO
        (tmp_path / name).write_bytes(content)
        noise[name] = content
    result = brindle("set", "--title", "New", *names)
    assert result.returncode == 1
    lines = result.stderr.decode().splitlines()
    assert len(lines) == 1 and "No space left on device; the remaining files were not changed; " in (
        lines[0]), lines
    changed = [name for name in names if (tmp_path / name).read_bytes() != noise[name]]
    assert len(changed) in (64, 128)
    assert changed == names[:len(changed)]
    assert brindle("undo", "--no-journal").returncode == 0
    assert all((tmp_path / name).read_bytes() == noise[name] for name in names)
