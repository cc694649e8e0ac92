"""The streams that the tests are made with: a table of the options of real encoders."""

import dataclasses

from commands import run

MODES = {"s": "Stereo", "j": "Joint Stereo", "m": "Mono"}
# Six seconds: at 8,000 Hz still 83 frames, at 44,100 Hz more than twice the 100 that are compared.
SECONDS = 6


@dataclasses.dataclass(frozen=True)
class Encoding:
    encoder: str  # lame or twolame
    version: int
    layer: int
    frequency: int
    mode: str  # the letter that both encoders take
    options: tuple
    kbps: int = 0  # of a constant stream

    @property
    def name(self):
        options = "".join(self.options).replace("--", "-").replace(" ", "")
        return f"{self.encoder}{options}-{self.frequency}-{self.mode}"

    @property
    def file_name(self):
        return f"{self.name}.{'mp3' if self.layer == 3 else 'mp2'}"

    @property
    def channels(self):
        return 1 if self.mode == "m" else 2


def lame(version, frequency, mode, *options, kbps=0):
    return Encoding("lame", version, 3, frequency, mode, options, kbps)


def constant(version, frequency, mode, kbps):
    return lame(version, frequency, mode, "--cbr", "-b", str(kbps), kbps=kbps)


def layer2(version, frequency, mode, kbps):
    return Encoding("twolame", version, 2, frequency, mode, ("-b", str(kbps)), kbps)


MPEG1_KBPS = (32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320)
MPEG2_KBPS = (8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160)

CONSTANT = (
    *(constant(1, 44100, "j", kbps) for kbps in MPEG1_KBPS),
    *(constant(1, frequency, mode, 192) for frequency in (32000, 44100, 48000) for mode in "sjm"),
    *(constant(2, 22050, "m", kbps) for kbps in MPEG2_KBPS),
    *(constant(2, frequency, mode, 64) for frequency in (16000, 22050, 24000) for mode in "sj"),
    *(constant(25, frequency, mode, 32) for frequency in (8000, 11025, 12000) for mode in "sjm"),
    # Without the frame in which lame keeps its settings.
    *(lame(1, 44100, mode, "--cbr", "-b", "128", "-t", kbps=128) for mode in "sj"),
    *(layer2(1, frequency, mode, 192 if mode == "s" else 96)
      for frequency in (32000, 44100, 48000) for mode in "sm"),
    *(layer2(2, frequency, mode, 64) for frequency in (16000, 22050, 24000) for mode in "sm"),
)

WITH_VBR_HEADER = (
    *(lame(1, 44100, "j", "-V", str(quality)) for quality in (0, 2, 4, 6, 9)),
    *(lame(1, frequency, mode, "-V", "4") for frequency in (32000, 48000) for mode in "sm"),
    *(lame(2, frequency, mode, "-V", "5") for frequency in (16000, 22050, 24000) for mode in "jm"),
    *(lame(25, frequency, mode, "-V", "5") for frequency in (8000, 11025, 12000) for mode in "jm"),
    *(lame(1, 44100, "j", "--abr", str(kbps)) for kbps in (96, 128, 200)),
)

WITHOUT_VBR_HEADER = (
    *(lame(1, 44100, "j", "-V", str(quality), "-t") for quality in (0, 4, 9)),
    lame(1, 48000, "m", "-V", "4", "-t"),
    lame(2, 22050, "j", "-V", "4", "-t"),
    lame(25, 12000, "j", "-V", "0", "-t"),
    lame(1, 44100, "j", "--abr", "128", "-t"),
    Encoding("twolame", 1, 2, 44100, "s", ("-v", "-V", "5")),
    Encoding("twolame", 1, 2, 48000, "m", ("-v", "-V", "0")),
)

JOINT_LAYER2 = layer2(1, 44100, "j", 192)


def encode(encoding, sound, target):
    """`sound` has the encoding's rate and channels, so no encoder resamples."""
    if encoding.encoder == "lame":
        run("lame", "--quiet", "--noreplaygain", "-q", "7", "-m", encoding.mode, "--resample",
            f"{encoding.frequency / 1000:g}", *encoding.options, sound, target)
    else:
        run("twolame", "--quiet", "-m", encoding.mode, *encoding.options, sound, target)
