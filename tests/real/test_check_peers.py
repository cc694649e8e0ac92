"""Files of real encoders, damaged by hand: `brindle check` beside mp3val and ffmpeg's checks.

Where one of these two knows a kind of damage, `check` must know it, too; where it says nothing of
a file, `check` may say more only for a reason listed here.
"""

import dataclasses
import json
import shutil
import struct
import subprocess

import pytest

import encoders
from mpeg_frames import frame_at
from commands import ENVIRONMENT

pytestmark = pytest.mark.skipif(shutil.which("mp3val") is None, reason="needs mp3val")

CONSTANT = encoders.lame(1, 44100, "j", "--cbr", "-b", "128", "-t", kbps=128)
VARIABLE = encoders.lame(1, 44100, "j", "-V", "4")
MONO = encoders.lame(1, 44100, "m", "-V", "4", "-p")
PROTECTED = encoders.lame(1, 44100, "j", "--cbr", "-b", "128", "-p", kbps=128)
PROTECTED_VERSION2 = encoders.lame(2, 22050, "j", "--cbr", "-b", "64", "-p", kbps=64)
PROTECTED_VERSION25 = encoders.lame(25, 11025, "m", "--cbr", "-b", "32", "-p", kbps=32)
LAYER2 = encoders.Encoding("twolame", 1, 2, 44100, "s", ("-b", "192", "-p"))
LAYER2_LOW = encoders.Encoding("twolame", 1, 2, 48000, "m", ("-b", "32", "-p"))
LAYER2_VERSION2 = encoders.Encoding("twolame", 2, 2, 22050, "s", ("-b", "64", "-p"))
OTHER_FREQUENCY = encoders.constant(1, 48000, "j", 192)
OTHER_VERSION = encoders.constant(2, 22050, "j", 64)
OTHER_LAYER = encoders.layer2(1, 44100, "s", 192)


def offsets_of(data):
    offsets, position = [], 0
    while found := frame_at(data, position):
        offsets.append(position)
        position += found[1]
    return offsets


# --- what is done to a file's bytes

def as_it_is(data):
    return data


def inserted(junk, frames):
    def damage(data):
        middle = offsets_of(data)[frames]
        return data[:middle] + junk + data[middle:]
    return damage


def header_destroyed(data):
    middle = offsets_of(data)[120]
    return data[:middle] + b"\0\0\0\0" + data[middle + 4:]


def bytes_lost(data):
    """In the middle of a frame, as by a bad sector that was left out."""
    middle = offsets_of(data)[120]
    return data[:middle + 50] + data[middle + 170:]


def after(junk):
    return lambda data: data + junk


def before(junk):
    return lambda data: junk + data


def cut_in_a_frame(data):
    return data[:offsets_of(data)[150] + 100]


def cut_between_frames(frames):
    return lambda data: data[:offsets_of(data)[frames]]


def promised_frames(change):
    """In the encoder's header, after 32 bytes of side information and "Xing" with its flags."""
    def damage(data):
        place = 36 + 8
        (frames,) = struct.unpack_from(">I", data, place)
        return data[:place] + struct.pack(">I", frames + change) + data[place + 4:]
    return damage


def bits_flipped(frames, place):
    """In this number of frames from the tenth on, at this byte after their header."""
    def damage(data):
        damaged = bytearray(data)
        for offset in offsets_of(data)[10:10 + frames]:
            damaged[offset + 4 + place] ^= 0x10
        return bytes(damaged)
    return damage


def in_riff(data):
    return (b"RIFF" + struct.pack("<I", len(data) + 36) + b"WAVEfmt " + struct.pack("<I", 16)
            + struct.pack("<HHIIHH", 0x55, 2, 44100, 16000, 1, 0) + b"data"
            + struct.pack("<I", len(data)) + data)


@dataclasses.dataclass(frozen=True)
class Case:
    encoding: encoders.Encoding
    damage: object
    codes: tuple
    mp3val: str = ""  # a part of its warning; none where it has none
    ffmpeg: str = ""
    follower: encoders.Encoding = None  # its file follows
    exception: str = ""                 # why `check` does not say what mp3val does


JUNK = b"\x11" * 120
RESYNCHRONISED = "MPEG stream error, resynchronized successfully"
AT_BEGINNING = "Garbage at the beginning of the file"
AT_END = "Garbage at the end of the file"
TRUNCATED = "It seems that file is truncated"
FRAMES = "Wrong number of MPEG frames"
TOO_FEW = "Too few MPEG frames"
RIFF = "This is a RIFF file"
DIFFERENT = "Different MPEG versions or layers in one file"
HEADER = "Header missing"
CRC = "CRC mismatch"

# Of 231 frames hosts want the first hundred to follow each other; 20 of 231 are more than 1 %.
CASES = {
    **{f"{name}-as-it-is": Case(encoding, as_it_is, ()) for name, encoding in {
        "constant": CONSTANT, "variable": VARIABLE, "mono": MONO, "protected": PROTECTED,
        "version-2": PROTECTED_VERSION2, "version-2.5": PROTECTED_VERSION25, "layer-2": LAYER2,
        "layer-2-80-a-channel": encoders.Encoding("twolame", 1, 2, 44100, "s", ("-b", "160", "-p")),
        "layer-2-low": LAYER2_LOW, "layer-2-version-2": LAYER2_VERSION2}.items()},

    "junk-inserted": Case(CONSTANT, inserted(JUNK, 120), ("junk-between-frames",), RESYNCHRONISED,
                          HEADER),
    "junk-inserted-early": Case(CONSTANT, inserted(JUNK, 60),
                                ("not-playable-by-hosts", "junk-between-frames"), RESYNCHRONISED,
                                HEADER),
    "junk-inserted-in-layer-2": Case(LAYER2, inserted(JUNK, 120), ("junk-between-frames",),
                                     RESYNCHRONISED, HEADER),
    "junk-inserted-in-variable": Case(VARIABLE, inserted(JUNK, 120), ("junk-between-frames",),
                                      RESYNCHRONISED, HEADER),
    "header-destroyed": Case(CONSTANT, header_destroyed, ("junk-between-frames",), RESYNCHRONISED,
                             HEADER),
    # One frame of 231 and its bytes are less than the encoder counted.
    "header-destroyed-in-variable": Case(VARIABLE, header_destroyed,
                                         ("junk-between-frames", "header-mismatch"),
                                         RESYNCHRONISED, HEADER),
    "header-destroyed-in-layer-2": Case(LAYER2, header_destroyed, ("junk-between-frames",),
                                        RESYNCHRONISED, HEADER),
    "bytes-lost": Case(CONSTANT, bytes_lost, ("junk-between-frames",), RESYNCHRONISED, HEADER),
    "bytes-lost-in-layer-2": Case(LAYER2, bytes_lost, ("junk-between-frames",), RESYNCHRONISED,
                                  HEADER),
    # The file is now shorter than the encoder's header says.
    "bytes-lost-in-variable": Case(VARIABLE, bytes_lost,
                                   ("not-playable-by-hosts", "junk-between-frames"),
                                   RESYNCHRONISED, HEADER),

    "junk-at-the-end": Case(CONSTANT, after(JUNK), ("junk-after-audio",), AT_END, HEADER),
    "junk-at-the-end-of-variable": Case(VARIABLE, after(JUNK), ("junk-after-audio",), AT_END,
                                        HEADER),
    "junk-at-the-end-of-layer-2": Case(LAYER2, after(JUNK), ("junk-after-audio",), AT_END, HEADER),
    "junk-at-the-beginning": Case(CONSTANT, before(JUNK), ("junk-before-audio",), AT_BEGINNING),
    "junk-at-the-beginning-of-variable": Case(VARIABLE, before(JUNK), ("junk-before-audio",),
                                              AT_BEGINNING),
    "junk-at-the-beginning-of-layer-2": Case(LAYER2, before(JUNK), ("junk-before-audio",),
                                             AT_BEGINNING),
    "riff": Case(CONSTANT, in_riff, ("junk-before-audio", "wrapped"), RIFF),
    "variable-in-riff": Case(VARIABLE, in_riff, ("junk-before-audio", "wrapped"), RIFF),
    "layer-2-in-riff": Case(LAYER2, in_riff, ("junk-before-audio", "wrapped"), RIFF),

    "cut-in-a-frame": Case(CONSTANT, cut_in_a_frame, ("cut-last-frame",), TRUNCATED),
    "layer-2-cut-in-a-frame": Case(LAYER2, cut_in_a_frame, ("cut-last-frame",), TRUNCATED),
    "variable-cut-in-a-frame": Case(
        VARIABLE, cut_in_a_frame, ("not-playable-by-hosts", "audio-missing", "cut-last-frame"),
        TRUNCATED),
    "protected-cut-in-a-frame": Case(PROTECTED, cut_in_a_frame, ("audio-missing", "cut-last-frame"),
                                     TRUNCATED),
    # Nothing tells what there was.
    "cut-between-frames": Case(CONSTANT, cut_between_frames(150), ()),
    "layer-2-cut-between-frames": Case(LAYER2, cut_between_frames(150), ()),
    "variable-cut-between-frames": Case(VARIABLE, cut_between_frames(150),
                                        ("not-playable-by-hosts", "audio-missing"), FRAMES),
    "protected-cut-between-frames": Case(PROTECTED, cut_between_frames(150), ("audio-missing",),
                                         FRAMES),
    "cut-to-six-frames": Case(CONSTANT, cut_between_frames(6), ("not-playable-by-hosts",), TOO_FEW),
    "layer-2-cut-to-six-frames": Case(LAYER2, cut_between_frames(6), ("not-playable-by-hosts",),
                                      TOO_FEW),
    "variable-cut-to-six-frames": Case(VARIABLE, cut_between_frames(6),
                                       ("not-playable-by-hosts", "audio-missing"), TOO_FEW),

    "two-frames-fewer-promised": Case(VARIABLE, promised_frames(-2), ("header-mismatch",), FRAMES),
    "one-frame-fewer-promised": Case(
        VARIABLE, promised_frames(-1), (), FRAMES,
        exception="one more or less is no damage: some encoders count their own frame"),
    # mp3val counts the header's frame, lame does not.
    "one-frame-more-promised": Case(VARIABLE, promised_frames(1), ()),
    "two-frames-more-promised": Case(VARIABLE, promised_frames(2), ("audio-missing",), FRAMES),
    "50-frames-more-promised": Case(VARIABLE, promised_frames(50), ("dead-air", "audio-missing"),
                                    FRAMES),

    **{f"checksum-of-{frames}-{name}": Case(encoding, bits_flipped(frames, 4), ("frame-crc",),
                                            known, CRC)
       for frames in (1, 20) for name, encoding, known in (
           ("mono", MONO, f"Wrong CRC in {frames} frames"),
           ("protected", PROTECTED, f"Wrong CRC in {frames} frames"),
           ("version-2", PROTECTED_VERSION2, f"Wrong CRC in {frames} frames"),
           ("version-2.5", PROTECTED_VERSION25, f"Wrong CRC in {frames} frames"),
           # mp3val leaves Layer II alone.
           ("layer-2", LAYER2, ""), ("layer-2-low", LAYER2_LOW, ""),
           ("layer-2-version-2", LAYER2_VERSION2, ""))},
    "sound-damaged-in-protected": Case(PROTECTED, bits_flipped(20, 60), ()),
    "sound-damaged": Case(CONSTANT, bits_flipped(20, 60), ()),

    # At 192 kbit/s 6 s are taken for 9 at the 128 of the first frame; at 64 for 3.
    "other-frequency-follows": Case(CONSTANT, as_it_is, ("dead-air", "changing-format"),
                                    follower=OTHER_FREQUENCY),
    "other-version-follows": Case(CONSTANT, as_it_is, ("end-cut-off", "changing-format"), DIFFERENT,
                                  follower=OTHER_VERSION),
    "other-layer-follows": Case(CONSTANT, as_it_is, ("dead-air", "changing-format"), DIFFERENT,
                                follower=OTHER_LAYER),
}

# What a warning of mp3val is to `check`: one of these codes. Of what it says besides, "No supported
# tags", "Non-layer-III frame" and "VBR detected, but no VBR header is present" tell of no damage.
CODES_OF_MP3VAL = {
    RESYNCHRONISED: {"junk-between-frames"},
    AT_BEGINNING: {"junk-before-audio"},
    AT_END: {"junk-after-audio"},
    TRUNCATED: {"cut-last-frame"},
    FRAMES: {"audio-missing", "header-mismatch"},
    "Wrong number of MPEG data bytes": {"audio-missing", "header-mismatch"},
    TOO_FEW: {"not-playable-by-hosts"},
    RIFF: {"wrapped"},
    DIFFERENT: {"changing-format"},
    "Wrong CRC": {"frame-crc"},
}
NO_DAMAGE = ("No supported tags", "Non-layer-III frame", "VBR detected, but no VBR header")
CODES_OF_FFMPEG = {
    CRC: {"frame-crc"},
    HEADER: {"junk-between-frames", "junk-after-audio", "junk-before-audio"},
}


class Tools:
    """What each program says of one file."""

    def __init__(self, program, path):
        self.program, self.path = program, path

    def _run(self, *command):
        return subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL,
                              capture_output=True, env=ENVIRONMENT, check=False)

    def codes(self):
        done = self._run(self.program, "check", "--json", "--quiet", "--ignore", "no-title",
                         "--ignore", "no-artist", self.path)
        return tuple(reason["code"] for reason in json.loads(done.stdout)["reasons"])

    def mp3val(self):
        done = self._run("mp3val", self.path)
        lines = (done.stdout + done.stderr).decode(errors="replace").splitlines()
        warnings = [line.split(": ", 2)[2] for line in lines if line.startswith("WARNING: ")]
        return [text for text in warnings if not text.startswith(NO_DAMAGE)]

    def ffmpeg(self):
        done = self._run("ffmpeg", "-v", "error", "-err_detect", "crccheck", "-i", self.path,
                         "-f", "null", "-")
        return done.stderr.decode(errors="replace")


@pytest.mark.parametrize("name", CASES)
def test_check_knows_what_others_know(encoded, program, tmp_path, name):
    case = CASES[name]
    source = encoded(case.encoding)
    content = case.damage(source.read_bytes())
    if case.follower:
        content += encoded(case.follower).read_bytes()
    path = tmp_path / f"a{source.suffix}"
    path.write_bytes(content)
    tools = Tools(program, path)
    codes, warnings, errors = tools.codes(), tools.mp3val(), tools.ffmpeg()
    assert codes == case.codes
    # The peers say what this table says of them, so that their agreement means something.
    assert (case.mp3val in " ".join(warnings)) if case.mp3val else warnings == []
    assert [known for known in CODES_OF_FFMPEG if known in errors] == (
        [case.ffmpeg] if case.ffmpeg else [])
    for text in warnings if not case.exception else []:
        (known,) = [known for known in CODES_OF_MP3VAL if text.startswith(known)]
        assert CODES_OF_MP3VAL[known] & set(codes), text
    if case.ffmpeg:
        assert CODES_OF_FFMPEG[case.ffmpeg] & set(codes)


def test_table_is_large_enough():
    assert len(CASES) >= 60
