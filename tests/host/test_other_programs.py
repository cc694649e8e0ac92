"""Other programs at the same file: none loses what it wrote, and none is lost."""

import fcntl
import os
import re
import signal
import subprocess
import threading
import time

import pytest

from mp3_bytes import audio, tag, text_frame, user_frame
from other_user import as_nobody, needs_root
from tagged_file import AUDIO, RECORD, one_line, snapshot

# More in the slow run.
ROUNDS = int(os.environ.get("BRINDLE_ROUNDS", "40"))
ROOMY = tag(text_frame("TIT2", "Old"), padding=3000)
TIGHT = tag(text_frame("TIT2", "Old"))

WORKS = {
    "set_in_place": (ROOMY + AUDIO, ("set", "--title", "New")),
    "set_with_rebuild": (TIGHT + AUDIO, ("set", "--title", "New" * 100)),
    "set_atomic": (ROOMY + AUDIO, ("set", "--atomic", "--title", "New")),
    "strip": (ROOMY + AUDIO + RECORD, ("strip", "--all")),
}


@pytest.fixture(params=WORKS.values(), ids=WORKS.keys())
def work(request):
    return request.param


def fields_of(path):
    content = path.read_bytes()
    return set(re.findall(rb"Field (\d+)\0", content))


@pytest.mark.parametrize("padding", [40_000, 0], ids=["in_place", "rebuilt"])
def test_two_at_once_lose_no_edit(program, tmp_path, padding):
    path = tmp_path / "song.mp3"
    for number in range(ROUNDS):
        path.write_bytes(tag(user_frame("Station", "one"), padding=padding) + AUDIO)
        running = [subprocess.Popen([program, "set", "--field", f"Field {field}={'x' * 300}",
                                     "song.mp3"], cwd=tmp_path, stdout=subprocess.PIPE,
                                    stderr=subprocess.PIPE) for field in range(2)]
        for process in running:
            output = process.communicate(timeout=60)
            assert process.returncode == 0, output
        assert fields_of(path) == {b"0", b"1"}, f"round {number}"
        assert path.read_bytes().count(AUDIO) == 1
        assert os.listdir(tmp_path) == ["song.mp3"]


def test_file_that_is_being_recorded_is_left_alone(brindle, tmp_path, work):
    old, arguments = work
    path = tmp_path / "song.mp3"
    path.write_bytes(old)
    with open(path, "r+b", buffering=0) as recorder:
        recorder.seek(0, os.SEEK_END)
        before = snapshot(path)
        result = brindle(*arguments, "song.mp3")
        assert result.returncode == 1 and result.stdout == b""
        assert one_line(result) == (
            "brindle: song.mp3: Permission denied: open for writing elsewhere")
        assert snapshot(path) == before
        dry = brindle(*arguments, "--dry-run", "song.mp3")
        assert dry.returncode == 1
        recorder.write(b"more")
    assert path.read_bytes() == old + b"more"
    assert os.listdir(tmp_path) == ["song.mp3"]


def test_recorder_that_keeps_its_file_open_loses_nothing(program, tmp_path):
    """It writes frame after frame while the program tries, from before until after."""
    path = tmp_path / "song.mp3"
    frame = AUDIO[:417]
    outcomes = set()
    for number in range(ROUNDS):
        path.write_bytes(TIGHT + AUDIO)
        written = 0
        with open(path, "ab", buffering=0) as recorder:
            process = subprocess.Popen([program, "set", "--title", "New" * 100, "song.mp3"],
                                       cwd=tmp_path, stdout=subprocess.PIPE,
                                       stderr=subprocess.PIPE)
            while process.poll() is None:
                recorder.write(frame)
                written += 1
            recorder.write(frame)
            written += 1
        outcomes.add(process.wait())
        assert path.read_bytes() == TIGHT + AUDIO + frame * written, f"round {number}"
        assert os.listdir(tmp_path) == ["song.mp3"]
    assert outcomes == {1}


def test_somebody_who_wants_to_write_meanwhile_is_waited_for(program, tmp_path):
    """He waits for the program's word, and gets either the old file whole or no file of ours."""
    path = tmp_path / "song.mp3"
    for number in range(ROUNDS):
        path.write_bytes(TIGHT + AUDIO)
        process = subprocess.Popen([program, "set", "--title", "New" * 100, "song.mp3"],
                                   cwd=tmp_path, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        time.sleep(0.0005 * (number % 20))
        with open(path, "r+b", buffering=0) as writer:
            writer.seek(-1, os.SEEK_END)
            writer.write(b"!")
        process.communicate(timeout=60)
        content = path.read_bytes()
        if process.returncode == 0 and content.endswith(bytes(1)):
            continue  # it opened the file that was replaced in the same instant
        assert AUDIO[:-1] in content, f"round {number}"


def test_lock_is_waited_for(program, tmp_path, work):
    old, arguments = work
    path = tmp_path / "song.mp3"
    path.write_bytes(old)
    with open(path, "rb") as other:
        fcntl.flock(other, fcntl.LOCK_EX)
        process = subprocess.Popen([program, *arguments, "song.mp3"], cwd=tmp_path,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        time.sleep(0.3)
        assert process.poll() is None
        assert path.read_bytes() == old
        fcntl.flock(other, fcntl.LOCK_UN)
        assert process.wait(timeout=30) == 0
    assert path.read_bytes() != old


def test_file_that_was_replaced_while_its_lock_was_waited_for_is_the_new_one(program, tmp_path):
    path = tmp_path / "song.mp3"
    path.write_bytes(ROOMY + AUDIO)
    newer = tag(text_frame("TIT2", "Newer"), padding=2000) + audio(150)
    with open(path, "rb") as other:
        fcntl.flock(other, fcntl.LOCK_EX)
        process = subprocess.Popen([program, "set", "--artist", "Ann", "song.mp3"], cwd=tmp_path,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        time.sleep(0.2)
        (tmp_path / "new").write_bytes(newer)
        os.replace(tmp_path / "new", path)
    assert process.wait(timeout=30) == 0
    content = path.read_bytes()
    assert audio(150) in content and b"Newer" in content and b"Ann" in content


def test_lock_that_is_never_given_back_is_an_error(brindle, tmp_path):
    path = tmp_path / "song.mp3"
    path.write_bytes(ROOMY + AUDIO)
    before = snapshot(path)
    with open(path, "rb") as other:
        fcntl.flock(other, fcntl.LOCK_EX)
        begin = time.monotonic()
        result = brindle("set", "--title", "New", "song.mp3")
        assert 9 < time.monotonic() - begin < 20
    assert result.returncode == 1
    assert one_line(result) == (
        "brindle: song.mp3: Permission denied: another program is changing it")
    assert snapshot(path) == before


def test_waiting_for_a_lock_ends_with_a_signal(program, tmp_path):
    path = tmp_path / "song.mp3"
    path.write_bytes(ROOMY + AUDIO)
    with open(path, "rb") as other:
        fcntl.flock(other, fcntl.LOCK_EX)
        process = subprocess.Popen([program, "set", "--title", "New", "song.mp3"], cwd=tmp_path,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        time.sleep(0.3)
        begin = time.monotonic()
        process.send_signal(signal.SIGINT)
        assert process.wait(timeout=30) == 130
        assert time.monotonic() - begin < 5
    assert path.read_bytes() == ROOMY + AUDIO


def test_readers_do_not_stand_in_the_way(brindle, tmp_path, work):
    old, arguments = work
    path = tmp_path / "song.mp3"
    path.write_bytes(old)
    with open(path, "rb"):
        assert brindle(*arguments, "song.mp3").returncode == 0


def test_one_file_under_two_names_is_locked_once(brindle, tmp_path):
    (tmp_path / "song.mp3").write_bytes(ROOMY + AUDIO)
    os.symlink("song.mp3", tmp_path / "link.mp3")
    result = brindle("set", "--title", "New", "song.mp3", "link.mp3", "song.mp3")
    assert result.returncode == 0, result.stderr


@needs_root
def test_file_of_somebody_else_is_saved_without_a_lease(program, reachable):
    """Only the owner of a file, and root, get one."""
    path = reachable / "song.mp3"
    path.write_bytes(TIGHT + AUDIO)
    path.chmod(0o666)
    reachable.chmod(0o777)
    result = as_nobody(program, "set", "--title", "New" * 100, "song.mp3", cwd=reachable)
    assert result.returncode == 0, result.stderr
    assert b"it belongs to another user now" in result.stdout
    assert AUDIO in path.read_bytes()


def test_file_that_changes_while_it_is_saved_is_left_alone(program, tmp_path):
    """Where the system gives no lease, length and modification time tell. The writer is fast and
    opens the file again each time, so the program meets it in any state."""
    path = tmp_path / "song.mp3"
    path.write_bytes(TIGHT + AUDIO)
    stop = threading.Event()
    appended = []

    def append():
        while not stop.is_set():
            with open(path, "ab", buffering=0) as file:
                file.write(AUDIO[:417])
            appended.append(1)
            time.sleep(0.002)

    writer = threading.Thread(target=append)
    writer.start()
    try:
        for _ in range(10):
            subprocess.run([program, "set", "--title", "New" * 100, "song.mp3"], cwd=tmp_path,
                           capture_output=True, timeout=60, check=False)
    finally:
        stop.set()
        writer.join()
    assert AUDIO in path.read_bytes()


@pytest.mark.parametrize("end", [signal.SIGHUP, signal.SIGQUIT, signal.SIGTERM, signal.SIGINT],
                         ids=lambda end: end.name)
def test_signal_ends_the_batch_and_leaves_no_temporary_file(program, tmp_path, end):
    names = [f"{number}.mp3" for number in range(400)]
    for name in names:
        (tmp_path / name).write_bytes(TIGHT + AUDIO)
    # It stays in the middle: nobody reads its output yet.
    process = subprocess.Popen([program, "set", "--title", "New" * 100, *names], cwd=tmp_path,
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE, pipesize=4096)
    process.stdout.readline()
    process.send_signal(end)
    output, errors = process.communicate(timeout=60)
    assert process.returncode == 128 + end, errors
    assert output.count(b"\n") < len(names)
    assert sorted(os.listdir(tmp_path)) == sorted(names)
    assert all(AUDIO in (tmp_path / name).read_bytes() for name in names)
