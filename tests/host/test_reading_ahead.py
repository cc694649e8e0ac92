"""What the system is told about how a file will be read."""

import re
import subprocess

import pytest

from mp3_bytes import audio, frame, tag

LONG = tag(frame("TIT2", b"\0Title")) + audio(6000)


@pytest.fixture
def advice(program, tmp_path):
    """The advice of a run, and how many reads went before each."""
    (tmp_path / "long.mp3").write_bytes(LONG)

    def run(*arguments):
        trace = tmp_path / "trace"
        subprocess.run(["strace", "-f", "-qq", "-o", trace, "-P", "long.mp3", "-e",
                        "trace=pread64,preadv,fadvise64", program, *arguments, "long.mp3"],
                       cwd=tmp_path, stdout=subprocess.DEVNULL, timeout=60, check=True)
        found, reads = [], 0
        for line in trace.read_text("latin-1").splitlines():
            given = re.search(r"fadvise64\(\d+, 0, 0, POSIX_FADV_(\w+)\) = 0", line)
            if given:
                found.append((given[1], reads))
            reads += "pread" in line
        return found, reads

    return run


@pytest.mark.plain_build
def test_scan_reads_nothing_ahead(advice):
    assert len(LONG) > 2 * 1024 * 1024
    found, reads = advice("scan")
    assert found == [("RANDOM", 0)]
    assert reads > 1


@pytest.mark.plain_build
def test_full_walk_reads_ahead(advice):
    found, reads = advice("check")
    begun = [reads_before for order, reads_before in found if order == "SEQUENTIAL"]
    after = [reads_before for order, reads_before in found if reads_before > begun[0]]
    assert len(begun) == 1
    # The walk alone reads in blocks of 96 KiB.
    assert (after[0] if after else reads) - begun[0] >= len(LONG) // 98_304
