"""Runs with `--cache` are killed, and refused what they ask the system for. The database stays whole,
and the next run prints everything."""

import os
import random
import re
import shutil
import subprocess

import pytest

from cache_rows import is_whole, rows
from mp3_bytes import audio, tag, text_frame

AUDIO = audio()
NEEDS_STRACE = pytest.mark.skipif(shutil.which("strace") is None, reason="needs strace")
# What changes the database or its journal. Every other call is one after one of these.
WRITING = ("openat", "write", "pwrite64", "fdatasync", "fsync", "ftruncate", "unlink", "close",
           "fchown", "rename")


def fill(folder, count):
    folder.mkdir()
    for number in range(count):
        (folder / f"{number:04}.mp3").write_bytes(
            tag(text_frame("TIT2", f"Song {number}")) + AUDIO[:4170])


@pytest.fixture
def music(tmp_path):
    fill(tmp_path / "music", 30)
    return tmp_path


def cached(program):
    return [program, "scan", "--json", "--cache", "cache.db", "music"]


def is_recovered(program, folder, without):
    """Another program finds it whole, and so does the next run."""
    if (folder / "cache.db").exists() and not is_whole(folder / "cache.db"):
        return False
    result = subprocess.run(cached(program), cwd=folder, capture_output=True, timeout=60, check=False)
    return result.returncode == 0 and result.stdout == without and is_whole(folder / "cache.db")


def output_without(program, folder):
    return subprocess.run([program, "scan", "--json", "music"], cwd=folder, capture_output=True,
                          timeout=60, check=True).stdout


def calls_of(program, folder):
    trace = folder / "trace"
    subprocess.run(["strace", "-f", "-qq", "-o", trace, "-e", f"trace={','.join(WRITING)}",
                    *cached(program)], cwd=folder, capture_output=True, timeout=60, check=True)
    counts = {}
    for thread, call in re.findall(r"^(\d+) +(\w+)\(", trace.read_text("latin-1"), re.MULTILINE):
        counts[call, thread] = counts.get((call, thread), 0) + 1
    most = {}
    for (call, _), count in counts.items():
        most[call] = max(most.get(call, 0), count)
    return most


@NEEDS_STRACE
@pytest.mark.plain_build
@pytest.mark.parametrize("existing", [False, True], ids=["new", "existing"])
@pytest.mark.parametrize("injected", [
    "signal=SIGKILL",
    pytest.param("error=EIO", marks=pytest.mark.deep),
    pytest.param("error=ENOSPC", marks=pytest.mark.deep)])
def test_every_call_that_writes(program, music, injected, existing):
    cache = music / "cache.db"
    without = output_without(program, music)
    if existing:
        subprocess.run([*cached(program)[:-1], "music/0000.mp3"], cwd=music, capture_output=True,
                       timeout=60, check=True)
        before = cache.read_bytes()

    def begin():
        for path in music.glob("cache.db*"):
            path.unlink()
        if existing:
            cache.write_bytes(before)
            cache.chmod(0o600)

    begin()
    calls = calls_of(program, music)
    assert calls["pwrite64"] > 5 and calls["fdatasync"] + calls.get("fsync", 0) >= 2
    tried = 0
    for call, count in calls.items():
        # Most of these are the library's; the first and the last few are the cache's.
        numbers = range(1, count + 1) if count < 40 else [*range(1, 20), *range(count - 20, count + 1)]
        if call == "write":
            continue
        for number in numbers:
            begin()
            result = subprocess.run(
                ["strace", "-f", "-qq", "-o", "/dev/null", "-e", f"trace={call}", "-e",
                 f"inject={call}:{injected}:when={number}", *cached(program)], cwd=music,
                capture_output=True, timeout=60, check=False)
            if "error" in injected:
                # Loaded libraries and the music need their files, too.
                assert result.returncode in (0, 1, 127), (call, number)
            assert is_recovered(program, music, without), (call, number)
            tried += 1
    assert tried > 30


def kill_at_random(program, folder, times):
    """After a random part of its output: a clock would tell less, as runs with a cache are faster."""
    without = output_without(program, folder)
    cache = folder / "cache.db"
    chance = random.Random(19)
    stored = 0
    killed = 0
    for attempt in range(times):
        if attempt % 5 == 0:
            for path in folder.glob("cache.db*"):
                path.unlink()
            stored = 0
        with subprocess.Popen(cached(program), cwd=folder, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL) as run:
            run.stdout.read(chance.randrange(len(without)))
            run.kill()
            killed += run.wait() != 0
        if cache.exists() and cache.stat().st_size > 0:
            assert is_whole(cache), attempt
            # Nothing that was stored is lost. Killed while it made the tables, it has none.
            has_tables = rows(cache, "name", "sqlite_master WHERE name = 'files'")
            now = len(rows(cache, "name")) if has_tables else 0
            assert now >= stored, attempt
            stored = now
    # Once the rest of the output fits into the pipe, a run may have ended.
    assert killed > times * 3 / 4
    assert is_recovered(program, folder, without)


def test_at_random_moments(program, tmp_path):
    fill(tmp_path / "music", 1500)
    kill_at_random(program, tmp_path, 25)


@pytest.mark.deep
def test_at_many_random_moments(program, tmp_path):
    fill(tmp_path / "music", 3000)
    kill_at_random(program, tmp_path, 400)
