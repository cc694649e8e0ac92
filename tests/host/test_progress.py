"""What a person at a terminal sees: a progress bar and colours, and neither where none belong."""

import fcntl
import os
import pty
import re
import select
import struct
import subprocess
import termios
import time

import pytest

from mp3_bytes import audio, tag, text_frame

AUDIO = audio()
ESCAPE = b"\x1b["
ERASE = b"\r\x1b[K"


class Terminal:
    """A terminal with this number of columns, and the bytes written to it."""

    def __init__(self, columns=100):
        self.master, self.slave = pty.openpty()
        fcntl.ioctl(self.slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        self.seen = b""

    def read_for(self, seconds):
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            if select.select([self.master], [], [], 0.05)[0]:
                self.seen += os.read(self.master, 65536)

    def read_until(self, pattern, seconds=30):
        end = time.monotonic() + seconds
        while not re.search(pattern, self.seen):
            assert time.monotonic() < end, self.seen
            self.read_for(0.05)

    def close(self):
        self.read_for(0.1)
        os.close(self.slave)
        os.close(self.master)


@pytest.fixture
def terminal():
    opened = []

    def new(columns=100):
        opened.append(Terminal(columns))
        return opened[-1]

    yield new
    for one in opened:
        try:
            one.close()
        except OSError:
            pass


def environment(**changes):
    clean = {name: value for name, value in os.environ.items() if name != "NO_COLOR"}
    return {**clean, "TERM": "xterm", **changes}


@pytest.fixture
def waiting_scan(program, tmp_path):
    """A scan that has read three files and waits for more names."""
    for name in ("a.mp3", "b.mp3", "c.mp3"):
        (tmp_path / name).write_bytes(AUDIO)
    runs = []

    def start(screen, *options, env=None):
        run = subprocess.Popen([program, "scan", "--json", *options, "-"], cwd=tmp_path,
                               stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=screen.slave,
                               env=env or environment())
        runs.append(run)
        run.stdin.write(b"a.mp3\nb.mp3\nc.mp3\n")
        run.stdin.flush()
        for _ in range(3):
            assert run.stdout.readline()
        return run

    yield start
    for run in runs:
        run.stdin.close()
        run.stdout.close()
        run.wait(timeout=30)


def test_bar_tells_files_bytes_and_rate(terminal, waiting_scan):
    screen = terminal()
    run = waiting_scan(screen)
    # Three files of 50,040 bytes.
    screen.read_until(rb"3 files  150\.1 kB  [0-9]+ files/s")
    run.stdin.close()
    run.wait(timeout=30)
    screen.read_for(0.2)
    # The bar is erased before the summary is printed.
    assert re.search(rb"\r\x1b\[K3 files, 0:00:09 hours of audio\r\n", screen.seen)


def test_folders_are_counted_for_the_time_that_is_left(program, tmp_path, terminal):
    for number in range(40):
        (tmp_path / f"{number:02}.mp3").write_bytes(AUDIO)
    screen = terminal(120)
    # The output is not read, so the run stops while the bar is checked.
    reader, writer = os.pipe()
    fcntl.fcntl(writer, fcntl.F_SETPIPE_SZ, 4096)
    with subprocess.Popen([program, "scan", "--json", "."], cwd=tmp_path,
                          stdin=subprocess.DEVNULL, stdout=writer, stderr=screen.slave,
                          env=environment()) as run:
        os.close(writer)
        try:
            time.sleep(0.5)
            with os.fdopen(reader, "rb") as answers:
                for _ in range(40):
                    assert answers.readline()
                    time.sleep(0.02)
                screen.read_for(0.5)
                answers.read()
        finally:
            run.wait(timeout=30)
    screen.read_for(0.2)
    assert re.search(rb"\[=*>? *\]\x1b\[0m +[0-9]+ %  [0-9]+ of 40 files  [0-9.]+ [kM]?B  "
                     rb"[0-9]+ files/s  [0-9]+:[0-9]{2} left", screen.seen), screen.seen


def test_bar_fits_a_narrow_terminal(terminal, waiting_scan):
    screen = terminal(20)
    waiting_scan(screen)
    screen.read_until(rb"3 files  150\.1 k")
    for line in re.split(rb"\r\x1b\[K|\r\n", screen.seen):
        assert len(re.sub(rb"\x1b\[[0-9;]*m", b"", line)) < 20


@pytest.mark.parametrize("options, env", [
    (["--quiet"], environment()),
    ([], environment(TERM="dumb")),
], ids=["quiet", "dumb"])
def test_no_bar(terminal, waiting_scan, options, env):
    screen = terminal()
    waiting_scan(screen, *options, env=env)
    screen.read_for(0.5)
    assert screen.seen == b""


def test_no_bar_where_standard_error_is_no_terminal(program, tmp_path, terminal):
    (tmp_path / "a.mp3").write_bytes(AUDIO)
    screen = terminal()
    run = subprocess.run([program, "scan", "a.mp3"], cwd=tmp_path, stdin=subprocess.DEVNULL,
                         stdout=screen.slave, stderr=subprocess.PIPE, env=environment(),
                         timeout=60, check=False)
    screen.read_for(0.2)
    assert (run.returncode, run.stderr) == (0, b"")
    assert ESCAPE not in screen.seen


def both_on_a_terminal(program, folder, screen, *arguments, env=None):
    run = subprocess.run([program, *arguments], cwd=folder, stdin=subprocess.DEVNULL,
                         stdout=screen.slave, stderr=screen.slave, env=env or environment(),
                         timeout=60, check=False)
    screen.read_for(0.2)
    return run


def test_lines_are_not_written_into_the_bar(program, tmp_path, terminal):
    for number in range(2_000):
        os.link(tmp_path / "0000.mp3", tmp_path / f"{number:04}.mp3") if number else (
            tmp_path / "0000.mp3").write_bytes(AUDIO)
    screen = terminal()
    run = subprocess.Popen([program, "scan", "."], cwd=tmp_path, stdin=subprocess.DEVNULL,
                           stdout=screen.slave, stderr=screen.slave, env=environment())
    screen.read_until(rb"Failed    0\r\n")
    assert run.wait(timeout=30) == 0
    # Without the erased text, each remaining line is one complete line.
    lines = [line.split(ERASE)[-1] for line in screen.seen.split(b"\r\n")]
    assert lines[:2_000] == [b"0:03.128   128 kbit/s      none             ./%04d.mp3" % number
                             for number in range(2_000)]


@pytest.fixture
def three_verdicts(tmp_path):
    good = tag(text_frame("TIT2", "Song"), text_frame("TPE1", "Ann"))
    (tmp_path / "bad.mp3").write_bytes(good + bytes(6000))
    (tmp_path / "ok.mp3").write_bytes(good + AUDIO)
    (tmp_path / "warn.mp3").write_bytes(good + b"junk" + AUDIO)
    return tmp_path


def test_verdicts_have_colours_on_a_terminal(program, three_verdicts, terminal):
    screen = terminal()
    both_on_a_terminal(program, three_verdicts, screen, "check", ".")
    for name, colour, word in ((b"bad", b"31", b"bad"), (b"ok", b"32", b"ok"),
                               (b"warn", b"33", b"warn")):
        assert b"./%s.mp3: \x1b[%sm%s\x1b[0m" % (name, colour, word) in screen.seen


@pytest.mark.parametrize("value, colours", [("1", False), ("0", False), ("", True)])
def test_no_color_is_honoured(program, three_verdicts, terminal, value, colours):
    screen = terminal()
    both_on_a_terminal(program, three_verdicts, screen, "check", ".",
                       env=environment(NO_COLOR=value))
    assert (re.search(rb"\x1b\[[0-9]+m", screen.seen) is not None) == colours


def test_bar_without_colours(terminal, waiting_scan):
    screen = terminal()
    waiting_scan(screen, env=environment(NO_COLOR="1"))
    screen.read_until(rb"3 files")
    assert not re.search(rb"\x1b\[[0-9]+m", screen.seen)


def test_pipe_gets_no_colours(program, three_verdicts):
    run = subprocess.run([program, "check", "."], cwd=three_verdicts, stdin=subprocess.DEVNULL,
                         capture_output=True, env=environment(), timeout=60, check=False)
    assert ESCAPE not in run.stdout + run.stderr
