"""`brindle listen --set` writes what is suggested, and nothing else. What is suggested is compared
with other programs in tests/real/test_listen_set.py."""

import csv
import io
import json
import os
import re
import signal
import subprocess

import mutagen.id3
import pytest

from mp3_bytes import audio, frame, tag, text_frame, user_frame
from tagged_file import snapshot

GAIN, PEAK = "REPLAYGAIN_TRACK_GAIN", "REPLAYGAIN_TRACK_PEAK"
ALL = "cue-in,sectone,loudness"
TITLE = text_frame("TIT2", "Song")
TEXTS = "cold=Cold,fade=Fade"


@pytest.fixture
def song(tmp_path, tone):
    """A tone from the second second on, and a tag with room for more."""
    path = tmp_path / "song.mp3"
    path.write_bytes(tag(TITLE, padding=600) + tone)
    return path


def tagged(path, tone, *frames):
    path.write_bytes(tag(TITLE, *frames, padding=600) + tone)


@pytest.fixture
def suggested(brindle, song):
    """Custom fields by their names in the tag, by what the program prints for other programs."""
    facts = json.loads(brindle("listen", "--json", "--quiet", song.name).stdout)
    return {"Cue In": str(facts["suggest"]["cue-in"]),
            "Sec Tone": str(facts["suggest"]["sectone"]),
            GAIN: f"{facts['gain_db']:.2f} dB", PEAK: f"{facts['sample_peak']:.6f}"}


def fields_of(path):
    """All custom fields, as another program reads them."""
    return {text.desc: text.text[0] for text in mutagen.id3.ID3(path).getall("TXXX")}


def fine(result):
    assert (result.returncode, result.stderr) == (0, b""), result
    return result.stdout.decode()


# --- what is written

def test_suggestions_are_set_and_read_back(brindle, song, suggested, tone):
    output = fine(brindle("listen", "--set", ALL, song.name))
    line, summary = output.splitlines()
    assert line.startswith("song.mp3: ID3v2 tag written in place (")
    for label, name in (("Cue in", "Cue In"), ("Secondary tone", "Sec Tone")):
        assert f"; {label}: {suggested[name]}" in line
    for name in (GAIN, PEAK):
        assert f'; Field "{name}": "{suggested[name]}"' in line
    assert summary == "1 file: 1 written, 0 failed"
    assert {name: text for name, text in fields_of(song).items() if name in suggested} == suggested
    assert re.fullmatch(r"-?\d+\.\d\d dB", suggested[GAIN])
    assert re.fullmatch(r"\d\.\d{6}", suggested[PEAK])
    assert song.read_bytes().endswith(tone)
    facts = json.loads(brindle("show", "--json", song.name).stdout)
    assert str(facts["CueInmSStart"]) == suggested["Cue In"]
    assert str(facts["Sectone"]) == suggested["Sec Tone"]
    assert facts["Title"] == "Song"


def test_only_what_is_named_is_set(brindle, song, suggested):
    before = fields_of(song)
    for words, names in (("cue-in", {"Cue In"}), ("sectone", {"Sec Tone"}),
                         ("loudness", {GAIN, PEAK})):
        fine(brindle("listen", "--set", words, song.name))
        before.update({name: suggested[name] for name in names})
        assert {name: text for name, text in fields_of(song).items() if name in suggested} == before


def test_second_run_writes_nothing(brindle, song):
    fine(brindle("listen", "--set", ALL, song.name))
    before = snapshot(song)
    for options, why in (([], "all values are already set"),
                         (["--overwrite"], "the file already has these values")):
        output = fine(brindle("listen", "--set", ALL, *options, song.name))
        assert output == f"song.mp3: nothing written, {why}\n1 file: 0 written, 0 failed\n"
        assert snapshot(song) == before


def test_reference_changes_nothing_that_is_set(brindle, song, suggested):
    fine(brindle("listen", "--set", "loudness", "--reference", "-23", song.name))
    assert fields_of(song)[GAIN] == suggested[GAIN]


def test_ranges_count(brindle, song, suggested):
    """From 1 LU below, sound begins and ends later and earlier than from 40 LU."""
    fine(brindle("listen", "--set", "sectone", "--overlap-range", "1", song.name))
    assert int(fields_of(song)["Sec Tone"]) < int(suggested["Sec Tone"])


def test_quick_sets_points(brindle, song, suggested):
    fine(brindle("listen", "--quick", "--set", "cue-in,sectone", song.name))
    assert fields_of(song)["Cue In"] == suggested["Cue In"]


# --- what is set already

SET_ALREADY = {
    "cue-in": ("cue-in", user_frame("Cue In", "1500")),
    "text that is no point": ("cue-in", user_frame("Cue In", "soon")),
    "cue-in that hosts do not find":
        ("cue-in", frame("TXXX", b"\1" + "\ufeffCue In\0\ufeff1500".encode("utf-16-le"))),
    "secondary tone": ("sectone", user_frame("Sec Tone", "7")),
    "end style": ("end-style", user_frame("End", "0")),
}


@pytest.mark.parametrize("name", SET_ALREADY)
def test_what_is_set_is_kept(brindle, song, tone, name):
    word, present = SET_ALREADY[name]
    tagged(song, tone, present)
    before = snapshot(song)
    options = ["--end-style-texts", TEXTS] if word == "end-style" else []
    output = fine(brindle("listen", "--set", word, *options, "--quiet", song.name))
    assert output == "song.mp3: nothing written, all values are already set\n"
    assert snapshot(song) == before
    fine(brindle("listen", "--set", word, *options, "--overwrite", song.name))
    fields = fields_of(song)
    column = {"cue-in": "Cue In", "sectone": "Sec Tone", "end-style": "End"}[word]
    assert re.fullmatch(r"10\d\d|110\d\d|Cold", fields[column])


EMPTY = {
    "zero": user_frame("Cue In", "0"),
    "nothing": user_frame("Cue In", ""),
    "blanks": user_frame("Cue In", "  "),
    "another field": user_frame("CUE IN", "1500"),
    "another program's": user_frame("liq_cue_in", "1.5"),
}


@pytest.mark.parametrize("name", EMPTY)
def test_what_is_empty_is_set(brindle, song, tone, suggested, name):
    tagged(song, tone, EMPTY[name])
    fine(brindle("listen", "--set", "cue-in", song.name))
    assert fields_of(song)["Cue In"] == suggested["Cue In"]


def test_gain_of_another_program_is_kept_or_replaced_whatever_its_letters(brindle, song, tone,
                                                                          suggested):
    others = (user_frame("replaygain_track_gain", "-1.00 dB"),
              user_frame("Replaygain_Track_Peak", "0.5"))
    tagged(song, tone, *others)
    before = snapshot(song)
    output = fine(brindle("listen", "--set", "loudness", "--quiet", song.name))
    assert output == "song.mp3: nothing written, all values are already set\n"
    assert snapshot(song) == before
    fine(brindle("listen", "--set", "loudness", "--overwrite", song.name))
    # Two gains would contradict each other.
    gains = {name: text for name, text in fields_of(song).items() if "gain" in name.lower()
             or "peak" in name.lower()}
    assert gains == {GAIN: suggested[GAIN], PEAK: suggested[PEAK]}


def test_what_is_missing_is_set_beside_what_is_there(brindle, song, tone, suggested):
    tagged(song, tone, user_frame("Cue In", "1500"), user_frame(GAIN, "-1.00 dB"))
    fine(brindle("listen", "--set", ALL, song.name))
    fields = fields_of(song)
    assert {name: fields[name] for name in suggested} == {
        **suggested, "Cue In": "1500", GAIN: "-1.00 dB"}


def test_file_that_has_everything_is_not_decoded(brindle, tmp_path):
    """It could not be."""
    bad = bytearray(audio(1))
    bad[8:10] = b"\xff\x80"
    content = tag(TITLE, user_frame("Cue In", "1500")) + audio(110) + bytes(bad) + audio(5)
    (tmp_path / "a.mp3").write_bytes(content)
    fine(brindle("listen", "--set", "cue-in", "a.mp3"))
    assert brindle("listen", "--set", "sectone", "a.mp3").returncode == 1


# --- end styles

def test_end_style_is_set_in_the_words_of_the_station(brindle, song):
    options = ["--set", "end-style", "--end-style-texts"]
    output = fine(brindle("listen", *options, "fade=Out", "--quiet", song.name))
    assert output == "song.mp3: nothing written, nothing is suggested\n"
    fine(brindle("listen", *options, 'fade=Out,"cold=Cold, at once"', song.name))
    assert json.loads(brindle("show", "--json", song.name).stdout)["Endstyle"] == "Cold, at once"


# --- dry run

def test_dry_run_shows_what_would_be_set_and_touches_nothing(brindle, song, suggested):
    before = snapshot(song)
    result = brindle("listen", "--set", ALL, "--dry-run", song.name)
    assert result.returncode == 0
    assert re.fullmatch(rb"The journal would have about \d+ bytes\n", result.stderr)
    output = result.stdout.decode()
    first, *values, fits, summary = output.splitlines()
    assert first == "song.mp3: dry run, nothing is written"
    assert values == [f"  Cue in: 0 -> {suggested['Cue In']}",
                      f"  Secondary tone: 0 -> {suggested['Sec Tone']}",
                      f'  Field "{GAIN}": null -> "{suggested[GAIN]}"',
                      f'  Field "{PEAK}": null -> "{suggested[PEAK]}"']
    assert fits.startswith("  Fits in place: ")
    assert summary == "1 file: 0 written, 0 failed"
    assert snapshot(song) == before


# --- journal

def test_run_can_be_taken_back(brindle, song, suggested):
    before = song.read_bytes()
    fine(brindle("listen", "--set", ALL, song.name))
    assert fields_of(song)["Cue In"] == suggested["Cue In"]
    assert brindle("undo").returncode == 0
    assert song.read_bytes() == before
    fine(brindle("listen", "--set", ALL, "--no-journal", song.name))
    assert song.read_bytes() != before


def test_nothing_is_changed_without_the_journal_that_is_asked_for(brindle, song):
    before = snapshot(song)
    result = brindle("listen", "--set", ALL, "--journal", "no/such/folder", song.name)
    assert (result.returncode, result.stdout) == (1, b"")
    assert b"journal" in result.stderr
    assert snapshot(song) == before


# --- review in a table

def test_table_applied_is_what_set_would_have_set(brindle, tmp_path, tone):
    """Byte for byte; files that failed and files without sound are no error."""
    contents = {"a.mp3": tag(TITLE, padding=600) + tone, "b.mp3": tone,
                "c.mp3": tag(TITLE, user_frame("Cue In", "7"), padding=600) + tone,
                "silent.mp3": tag(TITLE) + audio(), "none.mp3": bytes(5000)}
    for folder in ("set", "apply"):
        (tmp_path / folder).mkdir()
        for name, content in contents.items():
            (tmp_path / folder / name).write_bytes(content)
    options = ["--end-style-texts", TEXTS]
    table = brindle("listen", "--csv", *options, "apply").stdout
    (tmp_path / "edits.csv").write_bytes(table)
    output = fine(brindle("apply", "edits.csv"))
    assert output.splitlines()[-1] == "5 rows: 3 written, 2 unchanged, 0 failed, 0 left out"
    brindle("listen", "--set", ALL + ",end-style", *options, "--overwrite", "--yes", "set")
    for name in contents:
        assert (tmp_path / "apply" / name).read_bytes() == (tmp_path / "set" / name).read_bytes()
    rows = {row["file"]: row for row in csv.DictReader(io.StringIO(table.decode(), newline=""))}
    assert list(rows["apply/a.mp3"]) == ["file", "cue-in", "sectone", "end-style", f"field:{GAIN}",
                                         f"field:{PEAK}", "error"]
    for name in ("a.mp3", "b.mp3", "c.mp3"):
        row, fields = rows[f"apply/{name}"], fields_of(tmp_path / "apply" / name)
        assert [fields["Cue In"], fields["Sec Tone"], fields["End"], fields[GAIN], fields[PEAK]] == [
            row["cue-in"], row["sectone"], "Cold", row[f"field:{GAIN}"], row[f"field:{PEAK}"]]
    # Applied again, it changes nothing.
    assert fine(brindle("apply", "edits.csv")).endswith("5 rows: 0 written, 5 unchanged, "
                                                        "0 failed, 0 left out\n")


# --- what fails

def test_file_that_cannot_be_decoded_is_not_touched(brindle, tmp_path):
    """Its loudness and its points would be those of what is left."""
    bad = bytearray(audio(1))
    bad[8:10] = b"\xff\x80"
    path = tmp_path / "a.mp3"
    path.write_bytes(tag(TITLE) + audio(110) + bytes(bad) + audio(5))
    before = snapshot(path)
    result = brindle("listen", "--set", ALL, "a.mp3")
    assert result.returncode == 1
    assert result.stdout == b"1 file: 0 written, 1 failed\n"
    assert result.stderr.decode() == (
        f"brindle: a.mp3: 1 frame can't be decoded at byte {len(tag(TITLE)) + 110 * 417} (2873 ms): "
        "its side information is not valid; nothing is set\n")
    assert snapshot(path) == before


def test_others_are_set_when_one_fails(brindle, tmp_path, tone):
    for name in ("a.mp3", "c.mp3"):
        (tmp_path / name).write_bytes(tone)
    (tmp_path / "b.mp3").write_bytes(bytes(5000))
    (tmp_path / "gone.mp3").symlink_to("nowhere")
    (tmp_path / "silent.mp3").write_bytes(tag(TITLE) + audio())
    result = brindle("listen", "--set", "cue-in", "--yes", ".")
    assert result.returncode == 1
    lines = result.stdout.decode().splitlines()
    assert [line.split(":")[0] for line in lines] == [
        "./a.mp3", "./c.mp3", "./silent.mp3", "5 files"]
    assert lines[2] == "./silent.mp3: nothing written, nothing is suggested"
    assert lines[3] == "5 files: 2 written, 2 failed"
    assert result.stderr.decode().splitlines() == [
        "brindle: ./b.mp3: no MPEG audio found",
        "brindle: ./gone.mp3: No such file or directory"]


def test_file_with_a_frame_that_would_be_lost_is_refused(brindle, tmp_path, tone):
    """A frame that the end of the tag cuts."""
    cut = b"PRIV" + (5000).to_bytes(4, "big") + b"\0\0" + b"x" * 20
    path = tmp_path / "a.mp3"
    path.write_bytes(tag(TITLE, cut) + tone)
    before = snapshot(path)
    result = brindle("listen", "--set", "cue-in", "a.mp3")
    assert result.returncode == 1
    assert b"would lose" in result.stderr and b"brindle set --force" in result.stderr
    assert snapshot(path) == before


# --- folders, links, usage

def test_folders_take_consent(brindle, song):
    before = snapshot(song)
    result = brindle("listen", "--set", "cue-in", ".")
    assert (result.returncode, result.stdout) == (2, b"")
    assert b"Changing all files in a folder requires --yes" in result.stderr
    result = brindle("listen", "--set", "cue-in", "-", stdin=None, input=b".\n")
    assert result.returncode == 1
    assert b"--yes" in result.stderr
    assert snapshot(song) == before
    assert brindle("listen", "--set", "cue-in", "--dry-run", ".").returncode == 0
    assert snapshot(song) == before
    fine(brindle("listen", "--set", "cue-in", "--yes", "-", stdin=None, input=b".\n"))
    assert snapshot(song) != before


def test_names_of_one_file_are_set_once(brindle, song, tmp_path):
    for number in range(7):
        (tmp_path / f"link-{number}.mp3").symlink_to("song.mp3")
    output = fine(brindle("listen", "--set", ALL, "--yes", "--jobs", "4", "."))
    lines = output.splitlines()
    assert lines[-1] == "8 files: 1 written, 0 failed"
    assert sum("nothing written, all values are already set" in line for line in lines) == 7
    assert len(mutagen.id3.ID3(song).getall("TXXX")) == len(fields_of(song))


def test_interrupted_run_leaves_files_as_they_were_or_finished(program, tmp_path, tone):
    header_frame = 1044 + (tone[2] >> 1 & 1)  # which promises more bytes
    old = tag(TITLE, padding=600) + tone[header_frame:150_000]
    names = [f"{number:03}.mp3" for number in range(150)]
    for name in names:
        (tmp_path / name).write_bytes(old)
    command = [program, "listen", "--set", "cue-in", "--jobs", "2"]
    subprocess.run([*command, names[0]], cwd=tmp_path, check=True, capture_output=True)
    finished = (tmp_path / names[0]).read_bytes()
    assert finished != old
    (tmp_path / names[0]).write_bytes(old)
    with subprocess.Popen([*command, *names], cwd=tmp_path, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, stdin=subprocess.DEVNULL) as run:
        lines = [run.stdout.readline()]
        for _ in range(5):
            run.send_signal(signal.SIGINT)
        lines += run.stdout.readlines()
        assert run.wait(timeout=60) == 130
        assert run.stderr.read() == b""
    done = len(lines) - 1
    assert 0 < done < len(names)
    assert lines[-1].decode() == (f"Interrupted: {done} file{'s' if done > 1 else ''}: {done} written, "
                                  "0 failed\n")
    for index, name in enumerate(names):
        assert (tmp_path / name).read_bytes() == (finished if index < done else old), name
    assert sorted(os.listdir(tmp_path)) == names


@pytest.mark.parametrize("arguments", [
    ["--set", ""], ["--set", "cue-in,"], ["--set", "title"], ["--set", "cue-in", "--json"],
    ["--set", "cue-in", "--csv"], ["--overwrite"], ["--dry-run"], ["--yes"], ["--no-journal"],
    ["--set", "end-style"], ["--set", "cue-in", "--end-style-texts", TEXTS],
    ["--end-style-texts", TEXTS], ["--csv", "--end-style-texts", "cold"],
    ["--csv", "--end-style-texts", "cold="], ["--csv", "--end-style-texts", "warm=x"],
    ["--csv", "--end-style-texts", "cold=a,cold=b"], ["--csv", "--end-style-texts", "cold=Ω"],
    ["--quick", "--set", "loudness"]], ids=str)
def test_wrong_usage(brindle, song, arguments):
    before = snapshot(song)
    result = brindle("listen", *arguments, song.name)
    assert (result.returncode, result.stdout) == (2, b"")
    assert len(result.stderr.splitlines()) == 2
    assert snapshot(song) == before


def test_file_that_another_program_writes_is_left_alone(brindle, song):
    before = snapshot(song)
    with open(song, "r+b"):
        result = brindle("listen", "--set", "cue-in", song.name)
    assert result.returncode == 1
    assert b"open for writing elsewhere" in result.stderr.lower()
    assert snapshot(song) == before
