"""A journaled run, and an undo, are killed at each of their system calls in turn, and refused what
they ask for. Afterwards an undo brings every file back, byte for byte.

Calls are counted for each thread and name, as strace counts them: what a thread that only reads asks
for can hide the same call of the one that writes, but no call that writes is hidden."""

import os
import re
import shutil
import subprocess

import pytest

from mp3_bytes import audio, id3v1, tag, text_frame
from test_no_loss_kill import in_parallel

pytestmark = [
    pytest.mark.deep,
    pytest.mark.plain_build,
    pytest.mark.skipif(shutil.which("strace") is None, reason="needs strace"),
]

AUDIO = audio()
RECORD = id3v1(b"Old", b"Old")
ROOM = tag(text_frame("TALB", "Album"), padding=600)
FILES = {
    "in_place.mp3": ROOM + AUDIO,
    "over.mp3": ROOM + AUDIO + RECORD,
    "rebuilt.mp3": AUDIO,
}
RUNS = {
    "set": ("set", "--title", "New", *FILES),
    "apply": ("apply", "edits.csv"),
    "strip": ("strip", "--all", "in_place.mp3", "over.mp3"),
    "host_form": ("set", "--host-form", "--title", "New", *FILES),
}
# What can make a difference to files or journals. Every other call is one after one of these.
WRITING = {"write", "pwrite64", "fsync", "fdatasync", "rename", "renameat2", "unlink", "ftruncate",
           "copy_file_range", "mkdir", "openat", "close", "fchmod", "utimensat", "flock", "chmod"}


def make_files(folder):
    for name, content in FILES.items():
        (folder / name).write_bytes(content)
    rows = "".join(f"{name},New\n" for name in FILES)
    (folder / "edits.csv").write_text("file,title\n" + rows)


def contents(folder):
    return {name: (folder / name).read_bytes() for name in FILES}


def run(folder, *words):
    return subprocess.run(words, cwd=folder, stdin=subprocess.DEVNULL, capture_output=True,
                          timeout=60, check=False,
                          env={**os.environ, "XDG_STATE_HOME": str(folder / "state")})


def calls_of(trace):
    """Each (name, count in its thread) from the first look at a file on."""
    counts, calls, has_begun = {}, [], False
    for line in trace.splitlines():
        match = re.match(r"(\d+)\s+(\w+)\(", line)
        if not match:
            continue
        counts[match.groups()] = counts.get(match.groups(), 0) + 1
        has_begun = has_begun or ".mp3" in line or "edits.csv" in line
        call = (match[2], counts[match.groups()])
        if has_begun and call not in calls and match[2] not in ("exit_group", "exit"):
            calls.append(call)
    return calls


def traced(folder, *words):
    trace = folder / "trace"
    done = run(folder, "strace", "-f", "-o", str(trace), *words)
    assert done.returncode == 0, done.stderr
    text = trace.read_text(errors="replace")
    trace.unlink()
    return calls_of(text)


@pytest.fixture(params=RUNS)
def words(request, program):
    return (program, *RUNS[request.param])


def undo_words(program, folder, *options):
    """Of the first journal."""
    journals = sorted((folder / "state" / "brindle").iterdir())
    return (program, "undo", *options, str(journals[0]))


def inject(folder, what, call, *words):
    name, count = call
    return run(folder, "strace", "-f", "-o", "/dev/null", "-e",
               f"inject={name}:{what}:when={count}", *words)


def what_is_not_back(folder, program):
    """After an undo of all that a run has done."""
    if list((folder / "state").glob("brindle/*.journal")):
        run(folder, *undo_words(program, folder))
    wrong = [name for name in FILES if (folder / name).read_bytes() != FILES[name]]
    return f"not as before: {wrong}" if wrong else None


def test_killed_run_is_taken_back(words, program, tmp_path):
    (tmp_path / "first").mkdir()
    make_files(tmp_path / "first")
    jobs = traced(tmp_path / "first", *words)
    assert sum(name in WRITING for name, _ in jobs) > 15
    killed = []

    def kill(folder, call):
        make_files(folder)
        done = inject(folder, "signal=KILL", call, *words)
        killed.append(done.returncode in (-9, 137))
        wrong = what_is_not_back(folder, program)
        return wrong and f"{call}: {wrong}"

    assert in_parallel(kill, jobs, tmp_path) == []
    assert sum(killed) > 0.8 * len(jobs)


def test_killed_undo_goes_on(words, program, tmp_path):
    (tmp_path / "first").mkdir()
    make_files(tmp_path / "first")
    assert run(tmp_path / "first", *words).returncode == 0
    changed = contents(tmp_path / "first")
    jobs = traced(tmp_path / "first", *undo_words(program, tmp_path / "first"))
    assert contents(tmp_path / "first") == FILES
    killed = []

    def kill(folder, call):
        make_files(folder)
        assert run(folder, *words).returncode == 0
        assert contents(folder) == changed
        done = inject(folder, "signal=KILL", call, *undo_words(program, folder))
        killed.append(done.returncode in (-9, 137))
        wrong = what_is_not_back(folder, program)
        return wrong and f"{call}: {wrong}"

    assert in_parallel(kill, jobs, tmp_path) == []
    assert sum(killed) > 0.8 * len(jobs)


@pytest.mark.parametrize("error", ["ENOSPC", "EIO"])
def test_refused_run_is_taken_back(words, error, program, tmp_path):
    (tmp_path / "first").mkdir()
    make_files(tmp_path / "first")
    jobs = [call for call in traced(tmp_path / "first", *words) if call[0] in WRITING]
    changed = contents(tmp_path / "first")

    def refuse(folder, call):
        make_files(folder)
        done = inject(folder, f"error={error}", call, *words)
        if done.returncode == 0 and contents(folder) != changed:
            return f"{call}: status 0 and not done"
        wrong = what_is_not_back(folder, program)
        return wrong and f"{call}: {wrong}; {done.stderr.decode()}"

    assert in_parallel(refuse, jobs, tmp_path) == []


@pytest.mark.parametrize("error", ["ENOSPC", "EIO"])
def test_refused_undo_goes_on(words, error, program, tmp_path):
    (tmp_path / "first").mkdir()
    make_files(tmp_path / "first")
    run(tmp_path / "first", *words)
    jobs = [call for call in traced(tmp_path / "first", *undo_words(program, tmp_path / "first"))
            if call[0] in WRITING]

    def refuse(folder, call):
        make_files(folder)
        assert run(folder, *words).returncode == 0
        done = inject(folder, f"error={error}", call, *undo_words(program, folder))
        if done.returncode == 0 and contents(folder) != FILES:
            return f"{call}: status 0 and not done"
        wrong = what_is_not_back(folder, program)
        return wrong and f"{call}: {wrong}; {done.stderr.decode()}"

    assert in_parallel(refuse, jobs, tmp_path) == []


def test_entries_are_on_the_device_before_their_files_are_opened_for_writing(program, tmp_path):
    make_files(tmp_path)
    trace = tmp_path / "trace"
    run(tmp_path, "strace", "-f", "-o", str(trace), program, *RUNS["set"])
    lines = trace.read_text(errors="replace").splitlines()
    flushes = [i for i, line in enumerate(lines) if "fdatasync(" in line]
    changes = [i for i, line in enumerate(lines)
               if ("O_RDWR" in line and ".mp3" in line) or "rename(" in line]
    # One of the journal, before everything; then one of each file in place.
    assert flushes[0] < min(changes)
    assert len(flushes) == 3 and len(changes) == 3
