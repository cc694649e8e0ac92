"""Sounds made of numbers, files of real encoders made of them, and what another decoder makes of
those."""

import dataclasses

import numpy

from commands import output_of, run

FULL_SCALE = 32767


@dataclasses.dataclass
class Sound:
    """Samples between -1 and 1, a column for each channel."""
    frequency: int
    samples: numpy.ndarray

    @property
    def channels(self):
        return self.samples.shape[1]


def silence(frequency, seconds, channels=1):
    return numpy.zeros((round(frequency * seconds), channels))


def tone(frequency, seconds, hertz=1000, level=1.0, channels=1):
    time = numpy.arange(round(frequency * seconds)) / frequency
    return numpy.repeat(level * numpy.sin(2 * numpy.pi * hertz * time)[:, None], channels, axis=1)


def noise(frequency, seconds, level=0.1, channels=1, seed=1):
    return level * numpy.random.default_rng(seed).uniform(
        -1, 1, (round(frequency * seconds), channels))


def joined(frequency, *parts):
    return Sound(frequency, numpy.concatenate(parts))


def encode(sound, target, *options):
    """With twolame when the name ends in .mp2, else with lame; neither resamples."""
    wave = target.with_suffix(".wav")
    raw = target.with_suffix(".raw")
    (sound.samples * FULL_SCALE).round().astype("<i2").tofile(raw)
    run("sox", "-t", "raw", "-r", sound.frequency, "-e", "signed", "-b", 16, "-c", sound.channels,
        raw, wave)
    raw.unlink()
    if target.suffix == ".mp2":
        run("twolame", "--quiet", "-m", "m" if sound.channels == 1 else "s", *options, wave, target)
    else:
        run("lame", "--quiet", "--noreplaygain", "--resample", f"{sound.frequency / 1000:g}", "-m",
            "m" if sound.channels == 1 else "j", *options, wave, target)
    wave.unlink()
    return target


def decoded(path, channels):
    """All samples as mpg123 decodes them, with nothing left out but the encoder's header frame."""
    samples = output_of("mpg123", "-q", "--no-gapless", "-e", "f32", "-s", path)
    return numpy.frombuffer(samples, dtype="<f4").reshape(-1, channels)
