"""`brindle listen`: how it prints, how it fails, and files that no encoder makes. What it measures is
tested with real encoders (tests/real/test_listen.py)."""

import csv
import io
import json
import pathlib
import re
import subprocess
import tarfile

import pytest

from manual import page_of
from mp3_bytes import audio, tag, text_frame

ROOT = pathlib.Path(__file__).resolve().parents[2]

# 120 frames of side information and data of NULs play 3,134.69 ms of silence.
SILENT = tag(text_frame("TIT2", "Song")) + audio()
KEYS = ["file", "duration_ms", "loudness_lufs", "reference", "gain_db", "range_lu",
        "true_peak_dbtp", "sample_peak", "sound_begin_ms", "sound_begin_trimmed_ms",
        "sound_end_ms", "sound_end_trimmed_ms", "silences", "silence_count", "clipped",
        "clipped_at_ms", "end", "suggest", "undecoded", "frames_cut_off"]


def facts_of(result):
    (line,) = result.stdout.decode().splitlines()
    return json.loads(line)


# --- what is printed

def test_line_tells_what_is_heard(tmp_path, brindle, tone):
    (tmp_path / "a.mp3").write_bytes(tone)
    result = brindle("listen", "a.mp3")
    assert result.returncode == 0
    line, summary = result.stdout.decode().splitlines()
    assert summary == "1 file: 0 failed"
    # lame and the decoder delay by 1,105 samples, 25.06 ms. Of a tone at -20 dBFS there are 97 windows
    # of 400 ms, and six that hold three between them: 0.13 LU less.
    found = re.fullmatch(
        r"a.mp3: -20.1 LUFS, gain \+2.1 dB, range \d.\d LU, peak -(19.9|20.0|20.1) dBTP, "
        r"sound (\d+)-(\d+) ms, next at (\d+) ms, cold", line)
    assert found, line
    assert 1011 <= int(found.group(2)) <= 1026
    assert 11011 <= int(found.group(3)) <= 11026
    assert 11005 <= int(found.group(4)) <= 11026


def test_silent_file_has_no_loudness_and_no_sound(tmp_path, brindle):
    (tmp_path / "a.mp3").write_bytes(SILENT)
    result = brindle("listen", "--quiet", "a.mp3")
    assert (result.returncode, result.stdout) == (0, b"a.mp3: no loudness, no sound\n")
    facts = facts_of(brindle("listen", "--json", "a.mp3"))
    assert list(facts) == KEYS
    assert facts == {
        "file": "a.mp3", "duration_ms": 3135, "loudness_lufs": None, "reference": "whole",
        "gain_db": None, "range_lu": None, "true_peak_dbtp": None, "sample_peak": 0.0,
        "sound_begin_ms": None, "sound_begin_trimmed_ms": None, "sound_end_ms": None,
        "sound_end_trimmed_ms": None, "silences": [], "silence_count": 0, "clipped": 0,
        "clipped_at_ms": [], "end": None,
        "suggest": {"cue-in": None, "cue-in_trimmed_ms": None, "sectone": None,
                    "sectone_trimmed_ms": None, "end-style": None},
        "undecoded": None, "frames_cut_off": 0}


def test_manual_has_every_key(tmp_path, brindle, tone):
    (tmp_path / "a.mp3").write_bytes(tone)
    facts = facts_of(brindle("listen", "--json", "a.mp3"))
    assert list(facts) == KEYS
    table = page_of("listen").split("[[ *Key*\n")[1].replace("\\", "")
    told = re.findall(r"^\|  (.*)$", table, re.MULTILINE)
    names = [name for row in told for name in row.split(", ")]
    assert names == [key for key in KEYS if not key.endswith("_trimmed_ms")] + ["error"]


def test_reference_changes_gains_alone(tmp_path, brindle, tone):
    (tmp_path / "a.mp3").write_bytes(tone)
    first = facts_of(brindle("listen", "--json", "a.mp3"))
    second = facts_of(brindle("listen", "--json", "--reference", "-23", "a.mp3"))
    assert first.pop("gain_db") - second.pop("gain_db") == pytest.approx(5)
    assert first == second


def test_ranges_move_points(tmp_path, brindle, tone):
    (tmp_path / "a.mp3").write_bytes(tone)
    for option in ("--sound-range", "--overlap-range"):
        assert brindle("listen", option, "0.5", "a.mp3").returncode == 2
        assert brindle("listen", option, "81", "a.mp3").returncode == 2
        assert brindle("listen", option, "6", "a.mp3").returncode == 0
    assert brindle("listen", "--reference", "1", "a.mp3").returncode == 2
    assert brindle("listen", "--json", "--csv", "a.mp3").returncode == 2


def test_csv_has_the_points_to_set(tmp_path, brindle, tone):
    (tmp_path / "a,b.mp3").write_bytes(tone)
    (tmp_path / "silent.mp3").write_bytes(SILENT)
    (tmp_path / "none.mp3").write_bytes(bytes(5000))
    result = brindle("listen", "--csv", ".")
    assert result.stdout.endswith(b"\r\n")
    rows = list(csv.DictReader(io.StringIO(result.stdout.decode(), newline="")))
    assert list(rows[0]) == ["file", "cue-in", "sectone", "field:REPLAYGAIN_TRACK_GAIN",
                             "field:REPLAYGAIN_TRACK_PEAK", "error"]
    facts = facts_of(brindle("listen", "--json", "--quiet", "a,b.mp3"))
    assert list(rows[0].values()) == ["./a,b.mp3", str(facts["suggest"]["cue-in"]),
                                      str(facts["suggest"]["sectone"]),
                                      f"{facts['gain_db']:.2f} dB", f"{facts['sample_peak']:.6f}", ""]
    assert list(rows[1].values()) == ["./none.mp3", "", "", "", "", "no MPEG audio found"]
    assert list(rows[2].values()) == ["./silent.mp3", "", "", "", "", ""]
    assert result.stderr == b"brindle: ./none.mp3: no MPEG audio found\n3 files: 1 failed\n"


# --- what fails

def test_failures_are_told_and_do_not_stop_the_others(tmp_path, brindle):
    (tmp_path / "good.mp3").write_bytes(SILENT)
    (tmp_path / "none.mp3").write_bytes(bytes(5000))
    (tmp_path / "gone.mp3").symlink_to("nowhere")
    result = brindle("listen", "--json", ".")
    assert result.returncode == 1
    facts = [json.loads(line) for line in result.stdout.decode().splitlines()]
    assert [one["file"] for one in facts] == ["./gone.mp3", "./good.mp3", "./none.mp3"]
    assert [one.get("error") for one in facts] == [
        "No such file or directory", None, "no MPEG audio found"]
    assert result.stderr.decode().splitlines() == [
        "brindle: ./gone.mp3: No such file or directory",
        "brindle: ./none.mp3: no MPEG audio found", "3 files: 2 failed"]


def test_frames_that_cannot_be_decoded_are_counted_and_the_first_is_named(tmp_path, brindle):
    """big_values of the first granule, 9 bits from bit 32 of the side information on, above 288."""
    frame = bytearray(audio(1))
    frame[8:10] = b"\xff\x80"
    content = audio(110) + bytes(frame) + audio(5) + bytes(frame) + audio(5)
    (tmp_path / "a.mp3").write_bytes(content)
    result = brindle("listen", "--json", "--quiet", "a.mp3")
    assert result.returncode == 1
    facts = facts_of(result)
    reason = "its side information is not valid"
    assert facts["undecoded"] == {"frames": 2, "offset": 110 * 417, "ms": 2873, "reason": reason}
    assert facts["duration_ms"] == 3187  # 122 frames: 3,186.94
    assert facts["error"] == ("2 frames can't be decoded, the first at byte 45870 (2873 ms): "
                              + reason)
    assert result.stderr.decode() == f"brindle: a.mp3: {facts['error']}\n"
    plain = brindle("listen", "--quiet", "a.mp3")
    assert plain.stdout == b"a.mp3: no loudness, no sound\n"
    (tmp_path / "a.mp3").write_bytes(audio(110) + bytes(frame) + audio(5))
    assert brindle("listen", "--quiet", "a.mp3").stderr.decode() == (
        f"brindle: a.mp3: 1 frame can't be decoded at byte 45870 (2873 ms): {reason}\n")


# --- files that no encoder makes

def test_every_kept_input_of_the_fuzzers_is_heard_or_told(tmp_path, program):
    """One line for each file, one for each that failed, and nothing else."""
    count = 0
    for archive in sorted((ROOT / "fuzz" / "corpus").glob("*.tar.xz")):
        with tarfile.open(archive) as inputs:
            for member in inputs:
                if member.isfile():
                    (tmp_path / f"{count:05}.mp3").write_bytes(inputs.extractfile(member).read())
                    count += 1
    assert count > 4000
    for options in (["--json"], ["--json", "--quick"]):
        result = subprocess.run([program, "listen", "--quiet", *options, "."], cwd=tmp_path,
                                stdin=subprocess.DEVNULL, capture_output=True, timeout=600,
                                check=False)
        assert result.returncode == 1
        facts = [json.loads(line) for line in result.stdout.decode().splitlines()]
        assert [one["file"] for one in facts] == [f"./{place:05}.mp3" for place in range(count)]
        failed = [one for one in facts if "error" in one]
        assert result.stderr.decode().splitlines() == [
            f"brindle: {one['file']}: {one['error']}" for one in failed]
        heard = [one for one in facts if "duration_ms" in one]
        assert 100 < len(heard) < count
        for one in heard:
            assert one["sound_end_ms"] is None or one["sound_end_ms"] <= one["duration_ms"] + 1
