"""SIGINT in the middle of a run: the current file is finished, the result is printed, status 130."""

import json
import os
import signal
import subprocess
import time

import pytest

from mp3_bytes import audio, id3v1, tag, text_frame
from tagged_file import AUDIO_HASH, audio_hash

AUDIO = audio()
STATUS = {signal.SIGINT: 130, signal.SIGTERM: 143}


@pytest.fixture
def start(program, tmp_path):
    def run(*arguments, **options):
        options.setdefault("stdin", subprocess.DEVNULL)
        # A run whose output is not read yet stays in the middle.
        return subprocess.Popen([program, *arguments], cwd=tmp_path, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, pipesize=4096, **options)
    return run


@pytest.mark.parametrize("number", STATUS, ids=lambda one: one.name)
@pytest.mark.parametrize("command", ["scan", "check"])
def test_run_that_waits_for_names_ends_at_once(tmp_path, start, command, number):
    (tmp_path / "a.mp3").write_bytes(AUDIO)
    with start(command, "--json", "--quiet", "-", stdin=subprocess.PIPE) as run:
        run.stdin.write(b"a.mp3\n")
        run.stdin.flush()
        assert json.loads(run.stdout.readline())["file"] == "a.mp3"
        run.send_signal(number)
        assert run.wait(timeout=30) == STATUS[number]
        assert run.stdout.read() == b""
        # Also a quiet run tells how far it came.
        assert run.stderr.read().startswith(b"Interrupted: 1 file")


def test_scan_prints_whole_lines_in_order_and_the_summary(tmp_path, start):
    for number in range(5_000):
        os.link(tmp_path / "0000.mp3", tmp_path / f"{number:04}.mp3") if number else (
            tmp_path / "0000.mp3").write_bytes(AUDIO)
    with start("scan", "--json", "--jobs", "4", ".") as run:
        first = run.stdout.readline()
        run.send_signal(signal.SIGINT)
        lines = [first, *run.stdout.readlines()]
        assert run.wait(timeout=30) == 130
        note = run.stderr.read().decode()
    names = [json.loads(line)["file"] for line in lines]
    assert names == [f"./{number:04}.mp3" for number in range(len(names))]
    assert 0 < len(names) < 5_000
    assert note.startswith(f"Interrupted: {len(names)} file")


def test_check_in_the_middle(tmp_path, start):
    for number in range(3_000):
        os.link(tmp_path / "0000.mp3", tmp_path / f"{number:04}.mp3") if number else (
            tmp_path / "0000.mp3").write_bytes(AUDIO)
    with start("check", ".") as run:
        first = run.stdout.readline()
        assert first == b"./0000.mp3: ok\n"
        run.send_signal(signal.SIGINT)
        rest = run.stdout.read().decode().splitlines()
        assert run.wait(timeout=30) == 130
    done = len(rest)  # the summary takes the place of the first line
    assert rest[-1] == f"Interrupted: {done} file{'s' if done > 1 else ''}: {done} ok, 0 warn, " \
        "0 bad, 0 failed"
    assert done < 3_000


def test_second_signal_ends_a_reader_that_can_not_write(tmp_path, start):
    """The output is not read, so the answers of the current files are never written."""
    (tmp_path / "a.mp3").write_bytes(AUDIO)
    (tmp_path / "names").write_bytes(b"a.mp3\n" * 5_000)
    with open(tmp_path / "names", "rb") as names, start("scan", "--json", "-", stdin=names) as run:
        assert run.stdout.readline()
        time.sleep(0.2)
        run.send_signal(signal.SIGINT)
        time.sleep(0.2)
        assert run.poll() is None
        run.send_signal(signal.SIGINT)
        assert run.wait(timeout=30) == -signal.SIGINT


# --- commands that write

OLD = tag(text_frame("TIT2", "Old"), padding=600) + AUDIO + id3v1(b"Old")
WRITERS = {
    "set": ("set", "--title", "New"),
    "strip": ("strip", "--all"),
}


@pytest.mark.parametrize("number", STATUS, ids=lambda one: one.name)
@pytest.mark.parametrize("command", WRITERS)
def test_file_at_hand_is_finished_and_the_rest_not_touched(tmp_path, program, start, command,
                                                           number):
    names = [f"{number:04}.mp3" for number in range(3_000)]
    for name in names:
        (tmp_path / name).write_bytes(OLD)
    subprocess.run([program, *WRITERS[command], "0000.mp3"], cwd=tmp_path, check=True,
                   capture_output=True)
    finished = (tmp_path / "0000.mp3").read_bytes()
    assert finished != OLD
    (tmp_path / "0000.mp3").write_bytes(OLD)

    with start(*WRITERS[command], *names) as run:
        lines = [run.stdout.readline()]
        # Again and again: every place of a save may be met.
        for _ in range(20):
            run.send_signal(number)
        lines += run.stdout.readlines()
        assert run.wait(timeout=30) == STATUS[number]
        note = run.stderr.read().decode()
    done = len(lines)
    assert 0 < done < len(names)
    assert note == f"brindle: interrupted after {done} of 3000 files, 0 failed\n"
    assert [line.decode().split(":")[0] for line in lines] == names[:done]
    for index, name in enumerate(names):
        content = (tmp_path / name).read_bytes()
        assert content == (finished if index < done else OLD), name
        assert audio_hash(content) == AUDIO_HASH
    assert sorted(os.listdir(tmp_path)) == names  # no temporary file


def test_background_job_keeps_ignoring_the_signal(tmp_path, start):
    """As a shell starts it: SIGINT at the terminal is not for it."""
    (tmp_path / "a.mp3").write_bytes(AUDIO)
    with start("scan", "--json", "--quiet", "-", stdin=subprocess.PIPE,
               preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_IGN)) as run:
        for _ in range(2):
            run.stdin.write(b"a.mp3\n")
            run.stdin.flush()
            assert run.stdout.readline()
            run.send_signal(signal.SIGINT)
        run.stdin.close()
        assert run.wait(timeout=30) == 0
