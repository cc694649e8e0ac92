"""What `brindle listen --set` writes, against programs that we did not write: loudgain and ffmpeg
for the gain, the samples of mpg123 for the peak, mutagen for the tag."""

import json
import re
import shutil
import subprocess

import mutagen.id3
import numpy
import pytest

from commands import output_of
from sound import decoded, encode, joined, noise, silence, tone
from test_loudness import ebur128_of, programme

SUGGESTIONS = "cue-in,sectone,loudness"


@pytest.fixture
def set_suggestions(program):
    def run(path, *options):
        subprocess.run([program, "listen", "--set", SUGGESTIONS, *options, path], check=True,
                       stdin=subprocess.DEVNULL, capture_output=True)

    return run


def fields_of(path):
    return {text.desc: text.text[0] for text in mutagen.id3.ID3(path).getall("TXXX")}


def audio_hash(program, path):
    return output_of(program, "scan", "--hash", "--quiet", path).split()[0]


@pytest.mark.parametrize("number", range(10))
def test_gain_and_peak_are_those_of_other_programs(set_suggestions, program, tmp_path, number):
    sound = programme(number)
    path = encode(sound, tmp_path / "a.mp3", "--cbr", "-b", "320" if number % 2 else "160", "-q", "9")
    samples = decoded(path, sound.channels)
    before = audio_hash(program, path)
    set_suggestions(path)
    fields = fields_of(path)
    gain = float(fields["REPLAYGAIN_TRACK_GAIN"].removesuffix(" dB"))
    loudness, _, _ = ebur128_of(samples, sound.frequency)
    # The filter prints a place less.
    assert gain == pytest.approx(-18 - loudness, abs=0.1)
    peak = float(fields["REPLAYGAIN_TRACK_PEAK"])
    assert peak == pytest.approx(float(numpy.abs(samples).max()), abs=1e-6)
    assert audio_hash(program, path) == before
    # The tag is not taken for sound.
    assert numpy.array_equal(decoded(path, sound.channels), samples)
    if shutil.which("loudgain"):
        row = output_of("loudgain", "-q", "-O", path).decode().splitlines()[-1].split("\t")
        assert gain == pytest.approx(float(row[8].removesuffix(" dB")), abs=0.1)


def test_peak_above_full_scale_is_not_cut(set_suggestions, tmp_path):
    """Decoding makes samples larger than those that were coded."""
    rate = 44100
    sound = joined(rate, numpy.sign(tone(rate, 4, 441, channels=2)) * 0.999)
    path = encode(sound, tmp_path / "a.mp3", "--cbr", "-b", "128", "--scale", "1")
    largest = float(numpy.abs(decoded(path, 2)).max())
    assert largest > 1.05
    set_suggestions(path)
    assert float(fields_of(path)["REPLAYGAIN_TRACK_PEAK"]) == pytest.approx(largest, abs=1e-6)


@pytest.mark.parametrize("suffix,options", [
    (".mp3", ("--cbr", "-b", "128")), (".mp3", ("-V", "4")), (".mp2", ("-b", "192")),
    (".mp3", ("-t", "--cbr", "-b", "128"))], ids=str)
def test_points_are_those_that_were_heard(set_suggestions, listen, program, tmp_path, suffix, options):
    rate = 44100
    ramp = numpy.linspace(1, 0, 3 * rate)[:, None]
    sound = joined(rate, silence(rate, 1.5, 2), noise(rate, 6, 0.3, 2),
                   ramp * noise(rate, 3, 0.3, 2, seed=2), silence(rate, 2, 2))
    path = encode(sound, tmp_path / ("a" + suffix), *options)
    suggest = listen(path)["suggest"]
    set_suggestions(path)
    (facts,) = [json.loads(output_of(program, "show", "--json", path))]
    assert facts["CueInmSStart"] == suggest["cue-in"] == pytest.approx(1525, abs=15)
    assert facts["Sectone"] == suggest["sectone"] > 7500
    # The tag moves no point.
    assert listen(path)["suggest"] == suggest


def test_players_read_the_gain(set_suggestions, tmp_path):
    path = encode(joined(44100, tone(44100, 5, 1000, 0.1, 2)), tmp_path / "a.mp3", "--cbr", "-b", "320")
    set_suggestions(path)
    gain = fields_of(path)["REPLAYGAIN_TRACK_GAIN"].removesuffix(" dB")
    told = subprocess.run(["ffprobe", "-hide_banner", path], check=True, capture_output=True).stderr
    found = re.search(r"replaygain: track gain - ([-\d.]+),", told.decode())
    assert float(found.group(1)) == float(gain)
