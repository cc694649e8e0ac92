"""Walks the frames of an MPEG audio stream, from the public tables and formulas alone.

Not a copy of the program's way: no sync search, no run of agreeing frames, no digits. It knows
where the audio begins and follows the headers to the end.
"""

import dataclasses
import struct
from decimal import ROUND_HALF_EVEN, Decimal

BITRATES = {
    (1, 2): (32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384),
    (1, 3): (32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320),
    (2, 2): (8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160),
    (2, 3): (8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160),
}
FREQUENCIES = (44100, 48000, 32000)
ID3V1_LENGTH = 128


@dataclasses.dataclass(frozen=True)
class Frame:
    offset: int
    version: int  # 1, 2 or 25
    layer: int
    kbps: int
    frequency: int
    mode: int
    copyright: int
    original: int
    emphasis: int

    @property
    def samples(self):
        return 576 if self.layer == 3 and self.version != 1 else 1152

    @property
    def agreement(self):
        """What all frames of one stream have in common."""
        return (self.version, self.layer, self.frequency, self.mode, self.copyright,
                self.original, self.emphasis)


def frame_at(data, offset):
    """The frame and its length, or None if there is no header of Layer II or III."""
    if offset + 4 > len(data):
        return None
    (word,) = struct.unpack_from(">I", data, offset)
    version = {0: 25, 2: 2, 3: 1}.get(word >> 19 & 3)
    layer = {1: 3, 2: 2}.get(word >> 17 & 3)
    rate, frequency = word >> 12 & 15, word >> 10 & 3
    if word >> 21 != 0x7FF or None in (version, layer) or rate in (0, 15) or frequency == 3:
        return None
    kbps = BITRATES[1 if version == 1 else 2, layer][rate - 1]
    hertz = FREQUENCIES[frequency] // {1: 1, 2: 2, 25: 4}[version]
    frame = Frame(offset, version, layer, kbps, hertz, word >> 6 & 3, word >> 3 & 1,
                  word >> 2 & 1, word & 3)
    return frame, frame.samples * kbps * 1000 // 8 // hertz + (word >> 9 & 1)


def tag_length(data):
    """Header and contents of the ID3v2 tag at the beginning; 0 without one."""
    if data[:3] != b"ID3":
        return 0
    size = 0
    for byte in data[6:10]:
        size = size * 128 + byte
    return size + 10


class Stream:
    """The frames of a file whose audio begins right after its tag."""

    def __init__(self, path):
        self.data = path.read_bytes()
        self.tag_length = tag_length(self.data)
        self.has_id3v1 = self.data[-ID3V1_LENGTH:].startswith(b"TAG")
        self.end = len(self.data) - (ID3V1_LENGTH if self.has_id3v1 else 0)
        self.frames = []
        offset = self.tag_length
        while (found := frame_at(self.data, offset)) is not None and offset < self.end:
            frame, length = found
            self.frames.append(frame)
            offset += length
        assert offset == self.end, f"{path}: no frame at {offset} of {self.end}"

    @property
    def first_frame(self):
        begin = self.frames[0].offset
        return self.data[begin:self.frames[1].offset]

    def vbr_header(self, letters=b"Xing"):
        """Frames and bytes of the header that an encoder has put into the first frame."""
        for place in (36, 21, 13):
            if self.first_frame[place:place + 4] == letters:
                flags, frames, size = struct.unpack_from(">III", self.first_frame, place + 4)
                assert flags & 3 == 3
                return frames, size
        return None

    @property
    def decodable(self):
        """The frames without the one that holds a header instead of sound."""
        with_header = self.vbr_header() or self.vbr_header(b"Info")
        return self.frames[1:] if with_header else self.frames


def rounded(value, places=0):
    """To this number of decimal places, halves to even."""
    return value.quantize(Decimal(1).scaleb(-places), ROUND_HALF_EVEN)


def constant_duration(audio_bytes, kbps):
    """Milliseconds of a stream of one bitrate: all its bytes count, also those of a first frame
    that holds no sound."""
    return int(rounded(rounded(Decimal(audio_bytes) * 8 / kbps, 4)))


def variable_duration(frame, count):
    """Milliseconds of this number of frames."""
    return int(rounded(rounded(Decimal(frame.samples * count) / frame.frequency, 4) * 1000))


def variable_bitrate(frame, count, audio_bytes):
    """The mean in units of 1024 bit/s, from a whole number of frames a second."""
    frames_per_second = rounded(Decimal(frame.frequency) / frame.samples)
    bytes_per_frame = rounded(Decimal(audio_bytes) / count, 4)
    return int(rounded(rounded(bytes_per_frame * frames_per_second * 8, 4) / 1024))
