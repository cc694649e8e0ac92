"""What looks at a file asks for its status once, opens it once, and leaves its memory to the next."""

import os
import re
import subprocess

import pytest

from mp3_bytes import audio, frame, id3v1, tag

TAGGED = (tag(*(frame(f"T{letter}00", b"\0text") for letter in "ABCDEFGHIJKLMNOPQRST"),
              frame("TIT2", b"\0Title"), frame("APIC", b"\0image/png\0\3\0" + bytes(30_000)))
          + audio(300) + id3v1(title=b"Title"))
FILES = {"tagged.mp3": TAGGED, "plain.mp3": audio(300), "silent.mp3": bytes(20_000)}
COMMANDS = ["scan", "scan --json", "scan --csv", "scan --hash", "check", "check --json",
            "check --listen", "listen", "report -o page.html", "show", "show --json"]


@pytest.fixture
def calls(program, tmp_path):
    """The calls of a run that name or read the file: statuses, openings, reads."""
    def run(command, name, given):
        folder = tmp_path / "music"
        folder.mkdir()
        (folder / name).write_bytes(FILES[name])
        path = {"name": f"music/{name}", "folder": "music", "input": "-"}[given]
        trace = tmp_path / "trace"
        subprocess.run(["strace", "-f", "-y", "-qq", "-o", trace, "-e",
                        "trace=openat,newfstatat,stat,statx,pread64,preadv", program,
                        *command.split(), path],
                       cwd=tmp_path, input=f"music/{name}\n".encode(), capture_output=True,
                       timeout=60, check=False)
        lines = [line for line in trace.read_text("latin-1").splitlines() if name in line]
        return {kind: sum(bool(re.search(pattern, line)) for line in lines)
                for kind, pattern in (("statuses", rf'stat\w*\(AT_FDCWD[^"]*"music/{name}"'),
                                      ("openings", r"openat\(AT_FDCWD"),
                                      ("reads", r"pread"))}

    return run


@pytest.mark.plain_build  # strace
@pytest.mark.parametrize("given", ["name", "folder", "input"])
@pytest.mark.parametrize("name", FILES)
@pytest.mark.parametrize("command", COMMANDS)
def test_file_is_opened_once(calls, command, name, given):
    found = calls(command, name, given)
    assert found["openings"] == 1
    assert found["statuses"] == 1


@pytest.mark.plain_build  # strace
def test_cache_asks_before_and_after_the_reading(calls):
    found = calls("scan --cache cache.db", "tagged.mp3", "folder")
    assert found["openings"] == 1
    assert found["statuses"] == 2


@pytest.mark.plain_build  # strace
def test_texts_of_a_tag_are_read_together(calls):
    """Two dozen texts and a picture between them and the audio."""
    assert calls("scan --json", "tagged.mp3", "name")["reads"] <= 12


@pytest.mark.plain_build  # a sanitizer has its own heap
def test_memory_of_a_file_serves_the_next(program, tmp_path):
    """Memory that goes back to the kernel after each file comes again page by page."""
    (tmp_path / "a.mp3").write_bytes(
        tag(frame("APIC", b"\0image/png\0\3\0" + bytes(60_000))) + audio(1_000))

    def faults(files):
        process = subprocess.Popen([program, "check", "--quiet", "--jobs", "1", *["a.mp3"] * files],
                                   cwd=tmp_path, stdout=subprocess.DEVNULL)
        _, status, used = os.wait4(process.pid, 0)
        assert status == 0
        return used.ru_minflt

    assert faults(220) - faults(20) < 200 * 16


@pytest.mark.plain_build  # a sanitizer waits for its own locks
def test_thread_that_ends_a_file_goes_on_with_the_next(program, tmp_path):
    """Also where the run has come down to fewer jobs than it has threads."""
    files = 20_000
    (tmp_path / "a.mp3").write_bytes(audio(100))
    (tmp_path / "names").write_bytes(b"a.mp3\n" * files)

    def waits():
        with open(tmp_path / "names", "rb") as names:
            process = subprocess.Popen([program, "scan", "--quiet", "-"], cwd=tmp_path,
                                       stdin=names, stdout=subprocess.DEVNULL)
            _, status, used = os.wait4(process.pid, 0)
        assert status == 0
        return used.ru_nvcsw

    # Other programs make threads wait for each other now and then.
    assert min(waits() for _ in range(5)) < files / 8
