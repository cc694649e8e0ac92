"""`brindle scan --hash`: one number for equal audio, whatever the tags say."""

import hashlib
import json
import pathlib
import shutil
import subprocess
import sys

import jsonschema
import pytest
from mutagen.id3 import APIC, ID3, TIT2

from manual import page_of
from mp3_bytes import FRAME_LENGTH, audio, audio_with_xing, id3v1, tag, text_frame

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "tests" / "real"))
from mpeg_frames import Stream  # pylint: disable=wrong-import-position

SCHEMA = json.loads((ROOT / "docs" / "brindle.schema.json").read_text())
AUDIO = audio()
TAG = tag(text_frame("TIT2", "Song"), padding=100)
RECORD = id3v1(b"Song")
APE_ITEM = b"\4\0\0\0\0\0\0\0Note\0text"
APE = (APE_ITEM + b"APETAGEX" + (2000).to_bytes(4, "little")
       + (len(APE_ITEM) + 32).to_bytes(4, "little") + (1).to_bytes(4, "little") + bytes(12))


def sha256(content):
    return hashlib.sha256(content).hexdigest()


@pytest.fixture
def hash_of(brindle):
    """What lines, CSV and JSON say, which agree."""

    def get(name):
        facts = json.loads(brindle("scan", "--hash", "--json", name).stdout)
        jsonschema.validate(facts, SCHEMA)
        found = facts["file_facts"]["audio_sha256"]
        table = brindle("scan", "--csv", "--columns", "audio_sha256,Layer", name).stdout.decode()
        assert table.split("\r\n")[1].split(",")[0] == (found or "")
        line = brindle("scan", "--hash", "--quiet", name).stdout.decode()
        assert line[:66] == (found or "-").ljust(64) + "  "
        return found

    return get


@pytest.mark.parametrize("content, frames", [
    pytest.param(AUDIO, AUDIO, id="no tag"),
    pytest.param(TAG + AUDIO + RECORD, AUDIO, id="both tags"),
    pytest.param(TAG + AUDIO + APE + RECORD, AUDIO, id="APEv2 before ID3v1"),
    pytest.param(audio_with_xing(), audio_with_xing(), id="an encoder's header frame"),
    pytest.param(AUDIO + b"junk" * 50 + AUDIO, AUDIO * 2, id="junk between frames"),
    pytest.param(AUDIO[:-17], AUDIO[:-17], id="cut last frame"),
    pytest.param(AUDIO[:-FRAME_LENGTH + 4] + RECORD, AUDIO[:-FRAME_LENGTH + 4],
                 id="cut after its header"),
    pytest.param(TAG + AUDIO[:-FRAME_LENGTH + 3], AUDIO[:-FRAME_LENGTH], id="cut in its header"),
    pytest.param(AUDIO + b"junk" * 50, AUDIO, id="junk after the last frame"),
    pytest.param(AUDIO * 20, AUDIO * 20, id="more than a block"),
])
def test_hash_is_that_of_all_frames(tmp_path, hash_of, content, frames):
    (tmp_path / "a.mp3").write_bytes(content)
    assert hash_of("a.mp3") == sha256(frames)


def test_file_without_audio_has_none(tmp_path, hash_of):
    (tmp_path / "a.mp3").write_bytes(bytes(6000))
    assert hash_of("a.mp3") is None


# Hosts find no stream in a file that is shorter than its encoder's header frame says, so the one
# that is cut has none.
@pytest.mark.parametrize("encoding, cut", [(["-V", "4"], 0), (["-b", "128", "-t"], 9)],
                         ids=["variable", "cut"])
def test_tags_leave_the_hash_as_it_is(tmp_path, brindle, hash_of, encoding, cut):
    path = tmp_path / "a.mp3"
    subprocess.run(["sox", "-n", "-r", "44100", "-c", "2", tmp_path / "a.wav", "synth", "20",
                    "pinknoise"], check=True)
    subprocess.run(["lame", "--quiet", *encoding, "--tt", "Old", tmp_path / "a.wav", path],
                   check=True)
    stream = Stream(path)
    end = stream.end - cut
    wanted = sha256(stream.data[stream.tag_length:end])
    path.write_bytes(stream.data[:end] + RECORD)
    assert hash_of("a.mp3") == wanted
    steps = [("set", "--title", "New", "--v1-comment", "x"),
             ("set", "--field", "Long=" + "x" * 4000),
             ("strip", "--v1"), ("strip", "--v2"), ("set", "--album", "Again")]
    for step in steps:
        assert brindle(*step, "a.mp3").returncode == 0
        assert hash_of("a.mp3") == wanted, step
    frames = ID3(path)
    frames.add(TIT2(encoding=3, text="\u041f"))
    frames.add(APIC(encoding=0, mime="image/jpeg", type=3, data=b"\xff\xfb\x90\x64" * 5_000))
    frames.save(path, v2_version=4, v1=2)
    assert hash_of("a.mp3") == wanted


def test_one_other_bit_is_another_hash(tmp_path, hash_of):
    (tmp_path / "a.mp3").write_bytes(AUDIO[:-1] + b"\1")
    assert hash_of("a.mp3") == sha256(AUDIO[:-1] + b"\1") != sha256(AUDIO)


def test_files_of_equal_audio_are_one_sort_away(tmp_path, program):
    """The manual's own line."""
    line, = (text.strip() for text in page_of("scan").split("\n")
             if text.startswith("\tbrindle scan --hash"))
    library = tmp_path / "music"
    library.mkdir()
    (library / "1.mp3").write_bytes(TAG + AUDIO)
    (library / "2.mp3").write_bytes(audio(130))
    (library / "3.mp3").write_bytes(AUDIO + RECORD)
    (library / "4.mp3").write_bytes(bytes(6000))
    (library / "5.mp3").write_bytes(bytes(6000))
    shutil.copy(program, tmp_path / "brindle")
    done = subprocess.run(
        ["bash", "-c", "set -o pipefail; PATH=.:$PATH; " + line.replace("/music", "music")],
        cwd=tmp_path, capture_output=True, text=True, check=True)
    assert {row.split()[-1] for row in done.stdout.splitlines()} == {"music/1.mp3", "music/3.mp3"}


def test_hash_column_is_before_errors(tmp_path, brindle):
    (tmp_path / "a.mp3").write_bytes(AUDIO)
    header, row, _ = brindle("scan", "--hash", "--csv", "a.mp3").stdout.decode().split("\r\n")
    assert header.endswith(",MpegVersion,audio_sha256,error")
    assert row.endswith("," + sha256(AUDIO) + ",")


def test_columns_and_hash_together(tmp_path, brindle):
    (tmp_path / "a.mp3").write_bytes(AUDIO)
    result = brindle("scan", "--hash", "--columns", "file", "a.mp3")
    assert result.stdout.decode() == f"a.mp3\t{sha256(AUDIO)}\n"
