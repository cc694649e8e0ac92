"""A device or a share that fails: what could not be read is never printed as what is there."""

import itertools
import json
import subprocess

import pytest

from mp3_bytes import audio, frame, id3v1, tag, text_frame

REASON = b"brindle: a.mp3: The device could not be read or written\n"
# Longer than what is read at once.
SONG = tag(text_frame("TIT2", "Song"), frame("APIC", b"\0image/png\0\3\0" + bytes(30_000))) + audio(
    600) + id3v1(b"Song")
COMMANDS = [("scan", "--quiet"), ("scan", "--quiet", "--json"), ("scan", "--quiet", "--csv"),
            ("scan", "--quiet", "--hash"), ("scan", "--quiet", "--columns", "file,Title"),
            ("check", "--quiet"), ("check", "--quiet", "--json"), ("show",), ("show", "--json"),
            ("listen", "--quiet"), ("listen", "--quiet", "--json"),
            ("report", "--quiet", "-o", "-"), ("set", "--title", "New", "--dry-run"),
            ("strip", "--all", "--dry-run"), ("normalize", "--strip-foreign", "--dry-run")]


@pytest.fixture
def run(program, tmp_path):
    (tmp_path / "a.mp3").write_bytes(SONG)
    (tmp_path / "b.mp3").write_bytes(SONG)

    def run(command, number):
        """Every read of a.mp3 from that one on fails; whether one did, and the result."""
        trace = tmp_path / "trace"
        result = subprocess.run(
            ["strace", "-qq", "-f", "-P", "a.mp3", "-o", trace, "-e", "trace=pread64,preadv",
             "-e", f"inject=pread64,preadv:error=EIO:when={number}+", program, *command, "a.mp3",
             "b.mp3"], cwd=tmp_path, capture_output=True, check=False, timeout=60)
        return "INJECTED" in trace.read_text("latin-1"), result

    return run


@pytest.mark.plain_build  # strace
@pytest.mark.parametrize("command", COMMANDS, ids=" ".join)
def test_file_that_cannot_be_read_fails_and_the_next_is_done(run, brindle, command):
    of_both = brindle(*command, "a.mp3", "b.mp3")
    assert of_both.returncode == 0, of_both.stderr
    for number in itertools.count(1):
        has_failed, result = run(command, number)
        if not has_failed:
            break
        assert result.returncode == 1, number
        assert REASON in result.stderr, number
        assert b"b.mp3" in result.stdout, number
        if "--json" in command:
            first, second = map(json.loads, result.stdout.splitlines())
            assert (first["file"], first["error"]) == (
                "a.mp3", "The device could not be read or written")
            assert set(first) == {"file", "error"}
            assert second == json.loads(of_both.stdout.splitlines()[1])
    # The tag and the first frames are two reads, at least.
    assert number > 3
    assert (result.returncode, result.stdout) == (0, of_both.stdout)
