"""`brindle check --listen` on files of real encoders: what is wrong with their sound.

Lame and the decoder delay the sound by 1,105 samples, 25 ms at 44,100 Hz.
"""

import json
import re
import subprocess

import numpy
import pytest

from sound import encode, joined, noise, silence, tone

RATE = 44100
ENCODER_DELAY = 25
LISTEN_CODES = {"decode-error", "channel-missing", "cue-in-in-silence", "silent-start",
                "silence-inside", "silent-end", "clipped", "too-loud", "too-quiet"}


@pytest.fixture
def check(program):
    """The codes of a file that tell of its sound, and their texts."""

    def found(path, *options):
        done = subprocess.run([program, "check", "--listen", "--json", "--quiet", *options, path],
                              stdin=subprocess.DEVNULL, capture_output=True, check=False)
        assert (done.returncode, done.stderr) == (0, b"")
        facts = json.loads(done.stdout)
        return {reason["code"]: reason for reason in facts["reasons"]
                if reason["code"] in LISTEN_CODES}

    return found


def set_fields(program, path, **points):
    options = [part for name, value in points.items()
               for part in (f"--{name.replace('_', '-')}", str(value))]
    subprocess.run([program, "set", *options, path], check=True, capture_output=True,
                   stdin=subprocess.DEVNULL)


def music(seconds, channels=2, level=0.25, seed=1):
    """Noise whose energy falls towards high frequencies, as that of music; the channels differ."""
    white = noise(RATE, seconds, 1, channels, seed)
    return level * numpy.apply_along_axis(
        lambda column: numpy.convolve(column, numpy.exp(-numpy.arange(60) / 12) / 4, "same"), 0,
        white)


def quiet(seconds, channels=2):
    return silence(RATE, seconds, channels)


def both(left, right):
    return numpy.concatenate((left, right), axis=1)


LEFT = music(8, 1)
RIGHT = music(8, 1, seed=2)
# Each channel is what both share, and something of its own that the other has inverted. With as
# much of one as of the other the channels are independent; with twice as much inverted energy they
# correlate by (1 - 2) / (1 + 2).
SIDE = music(8, 1, seed=3)


def with_burst(samples, level):
    """A fifth of a second of a deep tone after one second, cut at full scale."""
    samples = samples.copy()
    samples[RATE:RATE + RATE // 5] = numpy.clip(tone(RATE, 0.2, 100, level), -1, 1)
    return samples


# The sound, and the codes that tell of it.
SOUNDS = {
    "music": (music(8), []),
    "mono": (music(8, 1), []),
    "tone-of-one-channel": (tone(RATE, 8, level=0.2), []),
    # The delay is silent, too.
    "1.9-s-at-the-beginning": ((quiet(1.9), music(8)), []),
    "2.1-s-at-the-beginning": ((quiet(2.1), music(8)), ["silent-start"]),
    "1.9-s-inside": ((music(4), quiet(1.9), music(4)), []),
    "2.1-s-inside": ((music(4), quiet(2.1), music(4)), ["silence-inside"]),
    "1.9-s-at-the-end": ((music(8), quiet(1.9)), []),
    "2.2-s-at-the-end": ((music(8), quiet(2.2)), ["silent-end"]),
    "hiss-at-the-end": ((music(8), music(3, level=0.00025)), ["silent-end"]),
    # 20 LU below are soft music.
    "soft-passages": ((music(3, level=0.025), music(4), music(3, level=0.025), music(4),
                       music(3, level=0.025)), []),
    "silent": (quiet(8), ["silent-start"]),
    "silent-and-short": (quiet(1.5), []),
    "silence-everywhere": ((quiet(3), music(4), quiet(3), music(4), quiet(3)),
                           ["silent-start", "silence-inside", "silent-end"]),

    "left-channel-alone": (both(LEFT, quiet(8, 1)), ["channel-missing"]),
    "right-channel-alone": (both(quiet(8, 1), LEFT), ["channel-missing"]),
    "left-channel-and-hiss": (both(LEFT, 0.001 * RIGHT), ["channel-missing"]),
    "left-channel-20-dB-louder": (both(LEFT, 0.1 * RIGHT), []),
    "out-of-phase": (both(LEFT, -LEFT), ["channel-missing"]),
    "out-of-phase-and-softer": (both(LEFT, -0.5 * LEFT), ["channel-missing"]),
    "out-of-phase-with-some-reverberation": (both(LEFT + 0.2 * SIDE, 0.2 * RIGHT - LEFT),
                                             ["channel-missing"]),
    "independent-channels": (both(LEFT, RIGHT), []),
    "widened": (both(LEFT + 1.4 * SIDE, LEFT - 1.4 * SIDE), []),
    "the-same-in-both": (both(LEFT, LEFT), []),

    "clipped": (with_burst(music(8, 1), 3), ["clipped"]),
    "peaks-below-full-scale": (with_burst(music(8, 1), 0.8), []),
    # Noise of -10 dBFS on each channel has -7 LUFS; weighting adds some.
    "louder-than-7-LUFS": (noise(RATE, 8, 0.9, 2), ["too-loud"]),
    "tone-of-6-dB-less": (tone(RATE, 8, 997, 0.39, 2), []),  # -8.2 LUFS
    "tone-of-5-dB-less": (tone(RATE, 8, 997, 0.5, 2), ["too-loud"]),  # -6.0 LUFS
    "softer-than-30-LUFS": (tone(RATE, 8, 997, 0.028, 2), ["too-quiet"]),  # -31.1 LUFS
    "louder-than-30-LUFS": (tone(RATE, 8, 997, 0.036, 2), []),  # -28.9 LUFS
}


def file_of(sound, path, *options):
    parts = sound if isinstance(sound, tuple) else (sound,)
    # At lower bit rates lame makes it softer.
    return encode(joined(RATE, *parts), path, *(options or ("--cbr", "-b", "320")))


@pytest.mark.parametrize("name", SOUNDS)
def test_sound_has_its_codes(check, tmp_path, name):
    sound, codes = SOUNDS[name]
    found = check(file_of(sound, tmp_path / "a.mp3"))
    assert list(found) == codes, found
    for code, reason in found.items():
        assert reason["verdict"] == ("note" if code in ("clipped", "too-loud", "too-quiet")
                                     else "warn")


@pytest.mark.parametrize("kbps", ["64", "96", "128", "320"])
@pytest.mark.parametrize("mode", ["j", "s"])
def test_missing_channel_is_found_at_every_bit_rate(check, tmp_path, kbps, mode):
    """Coders leak into the other channel."""
    for name in ("left-channel-alone", "out-of-phase", "independent-channels", "widened"):
        sound, codes = SOUNDS[name]
        path = file_of(sound, tmp_path / "a.mp3", "--cbr", "-b", kbps, "-m", mode)
        assert list(check(path)) == codes, name


def test_every_code_has_a_sound():
    assert {code for _, codes in SOUNDS.values() for code in codes} | {
        "decode-error", "cue-in-in-silence"} == LISTEN_CODES


# --- places and remedies

def time_in(text):
    minutes, seconds, milliseconds = re.fullmatch(r"(\d+):(\d\d)\.(\d{3})", text).groups()
    return 60_000 * int(minutes) + 1000 * int(seconds) + int(milliseconds)


def near(expected):
    return pytest.approx(expected + ENCODER_DELAY, abs=14)


def test_texts_tell_where_and_what_to_do(check, program, tmp_path):
    """What a text says to set takes the reason away."""
    path = file_of((quiet(3), music(4), quiet(3), music(4), quiet(3)), tmp_path / "a.mp3")
    found = check(path)
    until, cue_in = re.fullmatch(r"silent until (\S+): set --cue-in (\d+)",
                                 found["silent-start"]["text"]).groups()
    assert time_in(until) == int(cue_in) == near(3000)
    begin, end = re.fullmatch(
        r"1 silence, at (\S+)-(\S+): cut it out, or set --sectone to where it begins",
        found["silence-inside"]["text"]).groups()
    assert time_in(begin) == pytest.approx(7000 + ENCODER_DELAY, abs=25)
    assert time_in(end) == pytest.approx(10_000 + ENCODER_DELAY, abs=25)
    begin, end, sectone = re.fullmatch(r"silent from (\S+) to (\S+): set --sectone (\d+)",
                                       found["silent-end"]["text"]).groups()
    assert time_in(begin) == near(14_000)
    assert time_in(end) == pytest.approx(17_000, abs=80)
    assert int(sectone) == pytest.approx(14_000, abs=60)
    set_fields(program, path, cue_in=cue_in, sectone=sectone)
    assert list(check(path)) == ["silence-inside"]
    set_fields(program, path, sectone=7100)
    assert list(check(path)) == []


def test_silences_are_limited_by_options(check, tmp_path):
    path = file_of((quiet(1), music(3), quiet(1), music(3), quiet(1)), tmp_path / "a.mp3")
    assert list(check(path)) == []
    for code in ("silent-start", "silence-inside", "silent-end"):
        assert list(check(path, f"--{code}", "0.9")) == [code]
        assert list(check(path, f"--{code}", "1.2")) == []
    everywhere = file_of(SOUNDS["silence-everywhere"][0], tmp_path / "a.mp3")
    assert list(check(everywhere, "--silent-start", "4", "--silence-inside", "4",
                      "--silent-end", "4")) == []
    assert list(check(everywhere, "--ignore", "silent-end", "--ignore", "silent-start")) == [
        "silence-inside"]


def test_level_of_sound_is_an_option(check, tmp_path):
    """The hiss is 60 dB below the music."""
    path = file_of(SOUNDS["hiss-at-the-end"][0], tmp_path / "a.mp3")
    assert list(check(path)) == ["silent-end"]
    assert list(check(path, "--sound-range", "70")) == []


def test_many_silences_are_counted(check, tmp_path):
    parts = [part for number in range(7) for part in (music(1, seed=number), quiet(1))]
    path = file_of((*parts, music(1)), tmp_path / "a.mp3")
    text = check(path, "--silence-inside", "0.9")["silence-inside"]["text"]
    assert text.startswith("7 silences, at 0:01.0")
    assert text.count("-0:") == 5
    assert text.endswith(", ...: cut it out, or set --sectone to where it begins")


def test_loudness_is_limited_by_options(check, tmp_path):
    path = file_of(tone(RATE, 8, 997, 0.2, 2), tmp_path / "a.mp3")
    remedy = ": brindle listen --set loudness writes the gain that players apply"
    found = check(path, "--too-loud", "-14.5")
    assert found["too-loud"]["text"] == "-14.0 LUFS, above -14.5 LUFS" + remedy
    assert list(found) == ["too-loud"]
    found = check(path, "--too-quiet", "-13.5")
    assert found["too-quiet"]["text"] == "-14.0 LUFS, below -13.5 LUFS" + remedy
    assert list(check(path, "--too-loud", "-13.5", "--too-quiet", "-14.5")) == []


def test_clipped_runs_have_their_places(check, tmp_path):
    path = file_of(with_burst(music(3, 1), 3), tmp_path / "a.mp3")
    count, places = re.fullmatch(r"(\d+) runs of samples at full scale, at (.*), \.\.\.: use a "
                                 "source with a lower level", check(path)["clipped"]["text"]).groups()
    # Two in each period of ten milliseconds, and where coding adds ripple, more.
    assert int(count) >= 20
    times = [time_in(place) for place in places.split(", ")]
    assert len(times) == 5
    assert times == sorted(times)
    assert times[0] == pytest.approx(1000 + ENCODER_DELAY, abs=4)
    assert times[4] <= 1000 + ENCODER_DELAY + 40


CUE_IN = {
    # Sound from 3,025 to 7,025 and from 10,025 to 14,025 ms.
    "at-the-sound": (3025, None),
    "0.4-s-before-the-sound": (2625, None),
    "1-s-before-the-sound": (2025, 3000),
    "in-the-sound": (5000, None),
    "in-the-silence-inside": (8000, 10_000),
    "0.4-s-before-the-second-sound": (9625, None),
    "in-the-second-sound": (12_000, None),
    "after-the-last-sound": (15_000, 3000),
}


@pytest.mark.parametrize("name", CUE_IN)
def test_cue_in_in_silence_is_told(check, program, tmp_path, name):
    cue_in, remedy = CUE_IN[name]
    path = file_of((quiet(3), music(4), quiet(3), music(4), quiet(1)), tmp_path / "a.mp3")
    set_fields(program, path, cue_in=cue_in)
    found = check(path)
    inside = [] if cue_in > 7025 else ["silence-inside"]
    if remedy is None:
        assert list(found) == inside
        return
    assert list(found) == ["cue-in-in-silence", *inside]
    text = found["cue-in-in-silence"]["text"]
    at, point = re.fullmatch(r"cue-in at (\S+), .*: set --cue-in (\d+)", text).groups()
    assert time_in(at) == cue_in
    assert int(point) == near(remedy)
    set_fields(program, path, cue_in=point)
    assert "cue-in-in-silence" not in check(path)


def test_file_without_what_was_asked_is_not_decoded(program, tmp_path):
    path = file_of(SOUNDS["silence-everywhere"][0], tmp_path / "a.mp3")
    done = subprocess.run([program, "check", "--json", "--quiet", path], stdin=subprocess.DEVNULL,
                          capture_output=True, check=True)
    codes = {reason["code"] for reason in json.loads(done.stdout)["reasons"]}
    assert not codes & LISTEN_CODES


def test_cue_point_of_a_player_that_trims_agrees(program, tmp_path):
    """Their points count from the first sample that the encoder was given."""
    path = file_of((quiet(1.5), music(4)), tmp_path / "a.mp3")

    def codes(*options):
        subprocess.run([program, "set", *options, path], check=True, capture_output=True)
        done = subprocess.run([program, "check", "--json", "--quiet", path], check=True,
                              capture_output=True, stdin=subprocess.DEVNULL)
        return [reason["code"] for reason in json.loads(done.stdout)["reasons"]
                if reason["code"] == "points-disagree"]

    for seconds, disagree in (("1.525", False), ("1.5", False), ("1.49", False), ("1.51", False),
                              ("1.512", True), ("1.536", True), ("1.489", True)):
        assert codes("--cue-in", "1525", "--field", f"liq_cue_in={seconds}") == (
            ["points-disagree"] if disagree else []), seconds
    # A point inside of the delay is at the beginning for such a player.
    assert codes("--cue-in", "12", "--field", "liq_cue_in=0.00") == []
    assert codes("--cue-in", "40", "--field", "liq_cue_in=0.00") == ["points-disagree"]
