"""Saving where a real system says no, or is unusual: no space, no rights, links, names, sizes."""

import os
import subprocess
import time

import pytest

from mp3_bytes import audio, id3v1, tag, text_frame
from other_user import NOBODY, as_nobody, needs_root

AUDIO = audio()
RECORD = id3v1(b"Old")
ROOM = tag(text_frame("TALB", "Album"), padding=600)
def reason(result):
    """The text after the file's name in the one line on standard error."""
    text = result.stderr.decode()
    assert text.count("\n") == 1, text
    assert text.startswith("brindle: song.mp3: "), text
    return text.removeprefix("brindle: song.mp3: ").rstrip("\n")


@pytest.fixture
def small_disk(tmp_path):
    """160 KiB, of which a test fills what it does not want to be free."""
    folder = tmp_path / "disk"
    folder.mkdir()
    mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=160k", "none", str(folder)],
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    if mounted.returncode != 0:
        pytest.skip("NO FULL DISK WAS TRIED: may not mount a file system: "
                    + mounted.stderr.decode())
    try:
        yield folder
    finally:
        subprocess.run(["umount", str(folder)], check=True)


def fill(folder):
    """Until nothing more goes in."""
    with open(folder / "filler", "wb", buffering=0) as filler:
        while True:
            try:
                filler.write(bytes(4096))
            except OSError:
                return


def test_full_disk_keeps_the_old_file_when_it_must_be_rebuilt(brindle, small_disk):
    path = small_disk / "song.mp3"
    path.write_bytes(AUDIO)
    with open(small_disk / "filler", "wb") as filler:
        filler.write(bytes(80 * 1024))
    result = brindle("set", "--title", "Song", "song.mp3", cwd=small_disk)
    assert result.returncode == 1
    assert "Disk full" in reason(result)
    assert path.read_bytes() == AUDIO
    assert sorted(os.listdir(small_disk)) == ["filler", "song.mp3"]


def test_full_disk_keeps_the_old_file_when_it_must_be_stripped(brindle, small_disk):
    path = small_disk / "song.mp3"
    old = ROOM + AUDIO + RECORD
    path.write_bytes(old)
    fill(small_disk)
    for flag in ("--v1", "--v2", "--all"):
        result = brindle("strip", flag, "song.mp3", cwd=small_disk)
        assert result.returncode == 1
        assert reason(result)
        assert path.read_bytes() == old
    assert sorted(os.listdir(small_disk)) == ["filler", "song.mp3"]


def test_full_disk_does_not_matter_in_place(brindle, small_disk):
    path = small_disk / "song.mp3"
    path.write_bytes(ROOM + AUDIO + RECORD)
    fill(small_disk)
    result = brindle("set", "--title", "Song", "song.mp3", cwd=small_disk)
    assert (result.returncode, result.stderr) == (0, b"")
    content = path.read_bytes()
    assert content[len(ROOM):-128] == AUDIO
    assert b"TIT2\0\0\0\x05\0\0\0Song" in content[:len(ROOM)]


def test_full_disk_keeps_a_file_without_room_for_its_record(brindle, small_disk):
    # Whole pages, so that the record needs one of its own.
    old = ROOM + bytes(4096 * 13 - len(ROOM) - len(AUDIO)) + AUDIO
    path = small_disk / "song.mp3"
    path.write_bytes(old)
    fill(small_disk)
    result = brindle("set", "--title", "Song", "song.mp3", cwd=small_disk)
    assert result.returncode == 1
    assert "Disk full" in reason(result)
    assert path.read_bytes() == old


@needs_root
@pytest.mark.plain_build
def test_read_only_file_is_refused_and_untouched(program, reachable):
    path = reachable / "song.mp3"
    old = ROOM + AUDIO + RECORD
    path.write_bytes(old)
    path.chmod(0o444)
    os.chown(reachable, NOBODY, NOBODY)
    for arguments in (("set", "--title", "Song"), ("strip", "--v1"), ("strip", "--v2")):
        result = as_nobody(program, *arguments, "song.mp3", cwd=reachable)
        assert result.returncode == 1
        assert reason(result)
        assert path.read_bytes() == old
    assert os.listdir(reachable) == ["song.mp3"]


@needs_root
@pytest.mark.plain_build
def test_read_only_folder_lets_a_tag_be_written_in_place_only(program, reachable):
    path = reachable / "song.mp3"
    path.write_bytes(ROOM + AUDIO + RECORD)
    os.chown(path, NOBODY, NOBODY)
    reachable.chmod(0o555)
    result = as_nobody(program, "set", "--title", "Song", "song.mp3", cwd=reachable)
    assert (result.returncode, result.stderr) == (0, b"")
    saved = path.read_bytes()
    assert saved[len(ROOM):-128] == AUDIO and saved[:len(ROOM)] != ROOM
    for arguments in (("set", "--title", "Song" * 400, "--separate"), ("strip", "--all")):
        result = as_nobody(program, *arguments, "song.mp3", cwd=reachable)
        assert result.returncode == 1
        assert reason(result)
        assert path.read_bytes() == saved
    assert os.listdir(reachable) == ["song.mp3"]


def test_file_held_open_by_another_process_goes_on_for_it(brindle, tmp_path):
    path = tmp_path / "song.mp3"
    path.write_bytes(AUDIO)
    reader = subprocess.Popen(["sh", "-c", "read line; cat <&3"], stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE, pass_fds=(),
                              preexec_fn=lambda: os.dup2(os.open(path, os.O_RDONLY), 3),
                              close_fds=False)
    try:
        assert brindle("set", "--title", "Song", "song.mp3").returncode == 0
        seen, _ = reader.communicate(b"\n", timeout=30)
    finally:
        reader.kill()
    # The other process has the old file; the name has the new.
    assert seen == AUDIO
    assert path.read_bytes()[2048:-128] == AUDIO


def test_symbolic_link_stays_a_link(brindle, tmp_path):
    elsewhere = tmp_path / "elsewhere"
    elsewhere.mkdir()
    (elsewhere / "target.mp3").write_bytes(AUDIO)
    (tmp_path / "between.mp3").symlink_to("elsewhere/target.mp3")
    (tmp_path / "song.mp3").symlink_to("between.mp3")
    for arguments in (("set", "--title", "Song"), ("strip", "--all")):
        assert brindle(*arguments, "song.mp3").returncode == 0
        assert os.readlink(tmp_path / "song.mp3") == "between.mp3"
        assert os.readlink(tmp_path / "between.mp3") == "elsewhere/target.mp3"
        assert os.listdir(elsewhere) == ["target.mp3"]
        assert AUDIO in (elsewhere / "target.mp3").read_bytes()
    assert (elsewhere / "target.mp3").read_bytes() == AUDIO


@pytest.mark.parametrize("name", ["Süße Grüße — 音楽.mp3", "a b\tc'\"$*?.mp3", "-.mp3"])
def test_any_name_can_be_saved(brindle, tmp_path, name):
    path = tmp_path / name
    path.write_bytes(AUDIO)
    assert brindle("set", "--title", "Song", "--", name).returncode == 0
    assert path.read_bytes()[2048:-128] == AUDIO
    assert brindle("strip", "--all", "--", name).returncode == 0
    assert path.read_bytes() == AUDIO
    assert os.listdir(tmp_path) == [name]


def test_file_above_two_gigabytes_is_refused_at_once(brindle, tmp_path):
    path = tmp_path / "song.mp3"
    path.write_bytes(ROOM + AUDIO)
    os.truncate(path, 2_200_000_000)
    before = path.stat()
    begin = time.monotonic()
    result = brindle("set", "--title", "Song", "song.mp3")
    assert result.returncode == 1
    assert "more than 2,147,483,647 bytes" in reason(result)
    assert brindle("strip", "--v2", "song.mp3").returncode == 1
    assert time.monotonic() - begin < 20
    after = path.stat()
    assert (after.st_mtime_ns, after.st_ino, after.st_size, after.st_blocks) == (
        before.st_mtime_ns, before.st_ino, before.st_size, before.st_blocks)
    with open(path, "rb") as file:
        assert file.read(len(ROOM) + len(AUDIO)) == ROOM + AUDIO
    assert os.listdir(tmp_path) == ["song.mp3"]
