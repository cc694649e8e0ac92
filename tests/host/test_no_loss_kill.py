"""The program is killed, and refused what it asks for, at each of its system calls in turn.

strace counts the calls of each name: one run is traced to learn them, then each of them is hit in
a run of its own. Afterwards the file under the name is one of the few that it may be, byte for
byte, and all of its audio is there."""

import collections
import concurrent.futures
import dataclasses
import os
import re
import shutil
import subprocess

import pytest

from mp3_bytes import FRAME_LENGTH, audio, id3v1, tag, text_frame

pytestmark = [
    pytest.mark.plain_build,
    pytest.mark.skipif(shutil.which("strace") is None, reason="needs strace"),
]

AUDIO = audio()
RECORD = id3v1(b"Old", b"Old")
ROOM = tag(text_frame("TALB", "Album"), padding=600)
TIGHT = tag(text_frame("TALB", "Album"))
WORKERS = 2


def version2_tag():
    content = b"TT2" + (5).to_bytes(3, "big") + b"\0Song" + bytes(600)
    size = len(content)
    return b"ID3\x02\0\0" + bytes((size >> shift) & 0x7F for shift in (21, 14, 7, 0)) + content


@dataclasses.dataclass
class Work:
    """What is done to which file; `halfway` makes the file between its two steps."""
    name: str
    old: bytes
    arguments: tuple
    halfway: object = None
    status: int = 0
    # Filled by a run that is not killed.
    states: set = dataclasses.field(default_factory=set)
    result: bytes = b""
    calls: list = dataclasses.field(default_factory=list)


def with_record_of(old, new):
    """The first step of a save writes the record, at the end or over the old one."""
    return (old[:-128] if old[-128:-125] == b"TAG" else old) + new[-128:]


def without_record(old, _new):
    return old[:-128]


WORKS = [
    Work("in_place", ROOM + AUDIO + RECORD, ("set", "--title", "Song"), with_record_of),
    Work("grown", AUDIO, ("set", "--title", "Song"), with_record_of),
    Work("grown_tag", TIGHT + AUDIO + RECORD, ("set", "--title", "Song" * 400), with_record_of),
    Work("strip_v1", ROOM + AUDIO + RECORD, ("strip", "--v1")),
    Work("strip_v2", ROOM + AUDIO + RECORD, ("strip", "--v2")),
    Work("strip_all", ROOM + AUDIO + RECORD, ("strip", "--all"), without_record),
]


def command(program, work):
    # What the journal does is another matter: test_journal_kill.py.
    return [program, *work.arguments, "--no-journal", "song.mp3"]


def run(folder, work, words):
    path = folder / "song.mp3"
    path.write_bytes(work.old)
    return subprocess.run(words, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, timeout=60, check=False)


def traced_calls(text):
    """The calls in their order as (name, its count so far, the line)."""
    counts = collections.Counter()
    calls = []
    for line in text.splitlines():
        match = re.match(r"(?:\d+\s+)?(\w+)\(", line)
        if match:
            counts[match[1]] += 1
            calls.append((match[1], counts[match[1]], line))
    return calls


@pytest.fixture(scope="module", params=WORKS, ids=lambda work: work.name)
def work(request, program, tmp_path_factory):
    """With the calls and the result of a run that is not killed."""
    work = request.param
    folder = tmp_path_factory.mktemp(work.name)
    trace = folder / "trace"
    done = run(folder, work, ["strace", "-f", "-o", str(trace), *command(program, work)])
    assert (done.returncode, done.stderr) == (0, b"")
    work.result = (folder / "song.mp3").read_bytes()
    assert work.result != work.old
    work.calls = traced_calls(trace.read_text(errors="replace"))
    work.states = {work.old, work.result}
    if work.halfway:
        work.states.add(work.halfway(work.old, work.result))
        assert len(work.states) == 3 or work.result[-128:] == work.old[-128:]
    assert all(AUDIO in state for state in work.states)
    return work


def first_call_on_the_file(work):
    return next(place for place, call in enumerate(work.calls) if '"song.mp3"' in call[2]
                and call[0] == "openat")


def in_parallel(function, jobs, tmp_path):
    """Each job in a folder of its own; what went wrong, of all of them."""
    def one(number_and_job):
        number, job = number_and_job
        folder = tmp_path / str(number)
        folder.mkdir()
        try:
            return function(folder, job)
        finally:
            shutil.rmtree(folder)

    with concurrent.futures.ThreadPoolExecutor(WORKERS) as pool:
        return [wrong for wrong in pool.map(one, enumerate(jobs)) if wrong]


def what_is_wrong(folder, work, leftovers_allowed):
    """None when the file is one that it may be."""
    path = folder / "song.mp3"
    if not path.is_file():
        return "the name is missing"
    content = path.read_bytes()
    if content not in work.states:
        return f"an unknown file of {len(content)} bytes"
    others = set(os.listdir(folder)) - {"song.mp3"}
    if others and not (leftovers_allowed and all(name.startswith(".brindle-") for name in others)):
        return f"left behind: {others}"
    return None


def test_killed_at_every_system_call(work, program, tmp_path):
    # How a program is loaded is the same for all of them.
    first = 0 if work.name == "grown" else first_call_on_the_file(work)
    jobs = [call for call in work.calls[first:] if call[0] != "exit_group"]
    assert len(jobs) > 20
    killed = []

    def kill(folder, job):
        name, count, line = job
        done = run(folder, work, ["strace", "-f", "-o", "/dev/null", "-e",
                                  f"inject={name}:signal=KILL:when={count}",
                                  *command(program, work)])
        killed.append(done.returncode == -9 or done.returncode == 137)
        wrong = what_is_wrong(folder, work, leftovers_allowed=True)
        return wrong and f"{line}: {wrong}"

    assert in_parallel(kill, jobs, tmp_path) == []
    # Only the loader's calls differ from run to run.
    assert sum(killed) > 0.9 * len(jobs)


ERRORS = ["ENOSPC", "EIO", "EACCES"]
WRITING = {"openat", "pwrite64", "write", "fsync", "rename", "copy_file_range", "ftruncate",
           "close", "pread64"}


def is_output(call):
    return call[0] == "write" or " close(1)" in call[2]


def is_harmless(call, work):
    """Flushing the folder: the new file is in place and flushed."""
    renames = [i for i, other in enumerate(work.calls) if other[0] == "rename"]
    return ((call[0] == "openat" and "O_DIRECTORY" in call[2])
            or work.calls.index(call) in [i + 2 for i in renames])


@pytest.mark.parametrize("error", ERRORS)
def test_refused_every_system_call(work, error, program, tmp_path):
    first = first_call_on_the_file(work)
    jobs = [call for call in work.calls[first:] if call[0] in WRITING]

    def refuse(folder, job):
        name, count, line = job
        done = run(folder, work, ["strace", "-f", "-o", "/dev/null", "-e",
                                  f"inject={name}:error={error}:when={count}",
                                  *command(program, work)])
        wrong = what_is_wrong(folder, work, leftovers_allowed=False)
        if wrong:
            return f"{line}: {wrong}"
        content = (folder / "song.mp3").read_bytes()
        if done.returncode == 0:
            return None if content == work.result else f"{line}: status 0 and not saved"
        if done.returncode != 1:
            return f"{line}: status {done.returncode}"
        if is_harmless(job, work):
            return f"{line}: status 1 for nothing"
        # One line that names the file and a reason.
        text = done.stderr.decode()
        if not is_output(job) and not re.fullmatch(r"brindle: song\.mp3: .+\n", text):
            return f"{line}: says {text!r}"
        return None

    assert in_parallel(refuse, jobs, tmp_path) == []


@pytest.mark.parametrize("error", ERRORS)
def test_refusals_of_what_the_save_needs_are_told(work, error, program, tmp_path):
    """Writes, flushes and renames of the file and of its successor must not fail in silence."""
    jobs = [call for call in work.calls
            if call[0] in ("pwrite64", "copy_file_range", "rename", "ftruncate")
            or (call[0] == "fsync" and not is_harmless(call, work))]
    assert jobs

    def refuse(folder, job):
        name, count, line = job
        done = run(folder, work, ["strace", "-f", "-o", "/dev/null", "-e",
                                  f"inject={name}:error={error}:when={count}",
                                  *command(program, work)])
        if done.returncode != 1 or b"song.mp3" not in done.stderr:
            return f"{line}: status {done.returncode}, {done.stderr!r}"
        return None

    assert in_parallel(refuse, jobs, tmp_path) == []


def test_version_2_is_never_without_its_title(program, tmp_path):
    """It is converted in one step: there is either the old tag or the new one."""
    work = Work("version2", version2_tag() + AUDIO, ("set", "--album", "Album", "--force"))
    trace = tmp_path / "trace"
    done = run(tmp_path, work, ["strace", "-f", "-o", str(trace), *command(program, work)])
    assert done.returncode == 0
    work.calls = traced_calls(trace.read_text(errors="replace"))
    jobs = work.calls[first_call_on_the_file(work):]

    def kill(folder, job):
        name, count, line = job
        run(folder, work, ["strace", "-f", "-o", "/dev/null", "-e",
                           f"inject={name}:signal=KILL:when={count}", *command(program, work)])
        content = (folder / "song.mp3").read_bytes()
        if AUDIO not in content or b"\0Song" not in content[:FRAME_LENGTH]:
            return f"{line}: lost"
        return None

    assert in_parallel(kill, jobs, tmp_path) == []
