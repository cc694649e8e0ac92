"""Loudness as `brindle listen` measures it, against a meter that we did not write."""

import math
import re
import subprocess

import numpy
import pytest

from commands import ENVIRONMENT
from sound import FULL_SCALE, decoded, encode, joined, noise, silence, tone


def programme(number):
    """One of 50 of 40 seconds: tones and noise whose levels wander, with one channel or two. They
    wander slowly: ffmpeg takes the value before the one that Tech 3342 takes for a percentile, of
    371 here."""
    rng = numpy.random.default_rng(number)
    rate = int(rng.choice([32000, 44100, 44100, 48000]))
    channels = 1 if number % 7 == 6 else 2
    seconds, points = 40, 12
    sound = joined(rate, silence(rate, seconds, channels))
    time = numpy.arange(len(sound.samples)) / rate
    for _ in range(3):
        if rng.integers(0, 2):
            part = pink_noise(rate, seconds, channels, seed=int(rng.integers(1e6)))
        else:
            part = tone(rate, seconds, rng.uniform(60, 9000), channels=channels)
        level = numpy.interp(time, numpy.linspace(0, seconds, points), rng.uniform(-26, -10, points))
        sound.samples += part * 10 ** (level / 20)[:, None] * rng.uniform(0.3, 1, (1, channels))
    sound.samples *= rng.uniform(0.3, 0.99) / numpy.abs(sound.samples).max()
    return sound


def pink_noise(frequency, seconds, channels, seed):
    """Noise as music spreads its energy: 3 dB less from octave to octave."""
    spectrum = numpy.fft.rfft(noise(frequency, seconds, 1, channels, seed), axis=0)
    spectrum[1:] /= numpy.sqrt(numpy.arange(1, len(spectrum)))[:, None]
    spectrum[:5] = 0
    shaped = numpy.fft.irfft(spectrum, axis=0)
    return shaped / numpy.abs(shaped).max()


def ebur128_of(samples, frequency):
    """Integrated loudness, range and true peak by ffmpeg's filter."""
    done = subprocess.run(
        ["ffmpeg", "-nostdin", "-v", "error", "-f", "f32le", "-ar", str(frequency), "-ac",
         str(samples.shape[1]), "-i", "-", "-af",
         "ebur128=peak=true:metadata=1:framelog=verbose,ametadata=print:file=-", "-f", "null", "-"],
        input=samples.tobytes(), capture_output=True, check=True, env=ENVIRONMENT)
    loudness, loudness_range, peak = (
        float(re.findall(rf"^lavfi.r128.{name}=(.*)$", done.stdout.decode(), re.MULTILINE)[-1])
        for name in ("I", "LRA", "true_peak"))
    return loudness, loudness_range, 20 * math.log10(peak)


@pytest.mark.parametrize("number", range(50))
def test_loudness_is_that_of_another_meter(listen, tmp_path, number):
    sound = programme(number)
    path = encode(sound, tmp_path / "a.mp3", "--cbr", "-b", "320", "-q", "9")
    facts = listen(path)
    samples = decoded(path, sound.channels)
    loudness, loudness_range, peak = ebur128_of(samples, sound.frequency)
    assert facts["loudness_lufs"] == pytest.approx(loudness, abs=0.1)
    assert facts["range_lu"] == pytest.approx(loudness_range, abs=0.2)
    assert facts["true_peak_dbtp"] == pytest.approx(peak, abs=0.2)
    assert facts["sample_peak"] == pytest.approx(float(numpy.abs(samples).max()), abs=1e-6)
    assert facts["gain_db"] == pytest.approx(-18 - facts["loudness_lufs"], abs=0.011)
    assert facts["reference"] == "whole"


def test_clipped_runs_are_those_of_the_decoded_samples(listen, tmp_path):
    sound = joined(44100, 2 * tone(44100, 3, 100, channels=2))
    sound.samples = numpy.clip(sound.samples, -1, 1)
    path = encode(sound, tmp_path / "a.mp3", "--cbr", "-b", "320")
    runs = 0
    for channel in decoded(path, 2).T:
        full = numpy.abs(channel) >= FULL_SCALE / 32768
        edges = numpy.flatnonzero(numpy.diff(numpy.concatenate(([False], full, [False])).astype(int)))
        runs += int((edges[1::2] - edges[::2] >= 8).sum())
    assert runs > 0
    assert listen(path)["clipped"] == runs
