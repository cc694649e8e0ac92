"""`brindle listen` on files of real encoders: sound at known places, files that were cut and spliced.

Points are counted from the first sample that is decoded. An encoder delays the sound: lame by 576
samples and the decoder by 529 more, twolame and the decoder by 481.
"""

import json
import subprocess

import numpy
import pytest

from commands import output_of, run
from mpeg_frames import Stream
from sound import encode, joined, noise, silence, tone

LAME_DELAY = 576 + 529
TWOLAME_DELAY = 481


# --- sound at known places

BIT_RATES = {
    **{frequency: (64, 128, 320) for frequency in (32000, 44100, 48000)},
    **{frequency: (32, 64, 160) for frequency in (16000, 22050, 24000)},
    **{frequency: (16, 32, 64) for frequency in (8000, 11025, 12000)},
}
TONES = [(frequency, channels, kbps, hertz) for frequency, rates in BIT_RATES.items()
         for channels in (1, 2) for kbps in rates for hertz in (440, 1000, 3000)
         # With 8 kbit/s for each channel the noise after a tone is as loud as the tone.
         if channels == 1 or kbps > 16]
BEGIN, LENGTH = 1.2345, 1.6422


def check_tone(facts, frequency, delay, granule):
    """At most a granule early, and never more than 1 ms late."""
    begin = 1000 * (round(frequency * BEGIN) + delay) / frequency
    end = begin + 1000 * round(frequency * LENGTH) / frequency
    early = 1000 * granule / frequency
    assert begin - early <= facts["sound_begin_ms"] <= begin + 1
    assert end - early <= facts["sound_end_ms"] <= end + 1
    assert facts["suggest"]["cue-in"] == facts["sound_begin_ms"]
    assert facts["end"] == "cold"
    assert facts["silences"] == []


def full_scale_tone(frequency, channels, hertz):
    return joined(frequency, silence(frequency, BEGIN, channels),
                  tone(frequency, LENGTH, hertz, channels=channels),
                  silence(frequency, 1, channels))


@pytest.mark.parametrize("frequency,channels,kbps,hertz", TONES)
def test_tone_of_layer_3_is_where_it_is(listen, tmp_path, frequency, channels, kbps, hertz):
    path = encode(full_scale_tone(frequency, channels, hertz), tmp_path / "a.mp3", "--cbr", "-b",
                  str(kbps))
    facts = listen(path)
    check_tone(facts, frequency, LAME_DELAY, 576)
    if b"Info" in path.read_bytes()[:100]:
        # What players count that trim what lame says: the places of the source.
        assert facts["sound_begin_trimmed_ms"] == pytest.approx(1000 * BEGIN, abs=1.6)
    else:
        # At the lowest bit rates no frame has room to say it.
        assert facts["sound_begin_trimmed_ms"] == facts["sound_begin_ms"]
    assert facts["suggest"]["cue-in_trimmed_ms"] == facts["sound_begin_trimmed_ms"]


@pytest.mark.parametrize("frequency,channels,kbps,hertz", [
    one for one in TONES if one[0] >= 16000 and one[2] in (64, 128, 160)
    and (one[0] < 32000 or one[1] == 1 or one[2] >= 128)])
def test_tone_of_layer_2_is_where_it_is(listen, tmp_path, frequency, channels, kbps, hertz):
    path = encode(full_scale_tone(frequency, channels, hertz), tmp_path / "a.mp2", "-b", str(kbps))
    facts = listen(path)
    check_tone(facts, frequency, TWOLAME_DELAY, 384)
    # Nothing in the file tells players to trim.
    assert facts["sound_begin_trimmed_ms"] == facts["sound_begin_ms"]


def test_variable_bit_rate_moves_nothing(listen, tmp_path):
    sound = joined(44100, silence(44100, BEGIN, 2), noise(44100, LENGTH, 0.5, 2),
                   silence(44100, 1, 2))
    for quality in ("0", "4", "9"):
        facts = listen(encode(sound, tmp_path / "a.mp3", "-V", quality))
        begin = 1000 * (round(44100 * BEGIN) + LAME_DELAY) / 44100
        assert begin - 14 <= facts["sound_begin_ms"] <= begin + 1


def test_fade_in_begins_where_it_crosses_the_threshold(listen, tmp_path):
    ramp = numpy.linspace(0, 1, 4 * 44100)[:, None]
    sound = joined(44100, silence(44100, 1), ramp * tone(44100, 4, level=0.5),
                   tone(44100, 20, level=0.5))
    facts = listen(encode(sound, tmp_path / "a.mp3", "--cbr", "-b", "128"))
    # 40 LU below are at 0.96 % of the ramp's height.
    assert facts["sound_begin_ms"] == pytest.approx(1000 + 38 + 25, abs=20)


def test_noise_floor_of_a_record_is_no_sound(listen, tmp_path):
    """Hiss at -66 dBFS and rumble of 12 Hz at -50 under music at -10."""
    rate = 44100
    music = joined(rate, silence(rate, 2, 2), noise(rate, 8, 0.5, 2), silence(rate, 2, 2))
    seconds = len(music.samples) / rate
    music.samples += noise(rate, seconds, 0.00087, 2, seed=2) + tone(rate, seconds, 12, 0.0032,
                                                                     channels=2)
    facts = listen(encode(music, tmp_path / "a.mp3", "--cbr", "-b", "192"))
    assert facts["sound_begin_ms"] == pytest.approx(2025, abs=14)
    assert facts["sound_end_ms"] == pytest.approx(10025, abs=14)


def test_pauses_of_speech_are_silences_when_they_are_long(listen, tmp_path):
    speech = tmp_path / "speech.wav"
    run("espeak-ng", "-w", speech, "Good morning. These are the headlines.")
    words = numpy.frombuffer(output_of("sox", speech, "-t", "raw", "-e", "signed", "-b", 16, "-",
                                 "silence", 1, 0, "0.1%", "reverse", "silence", 1, 0, "0.1%",
                                 "reverse"), dtype="<i2")[:, None] / 32768
    rate = 22050
    length = len(words) / rate
    facts = listen(encode(
        joined(rate, silence(rate, 1), words, silence(rate, 1), words, silence(rate, 3), words,
               silence(rate, 2)), tmp_path / "a.mp3", "--cbr", "-b", "64"))
    assert facts["sound_begin_ms"] == pytest.approx(1050, abs=60)
    assert facts["sound_end_ms"] == pytest.approx(1000 * (5 + 3 * length) + 50, abs=120)
    assert facts["silence_count"] == 1
    (pause,) = facts["silences"]
    assert pause["end_ms"] - pause["begin_ms"] == pytest.approx(3000, abs=200)
    assert pause["begin_trimmed_ms"] == pause["begin_ms"] - 50
    assert facts["end"] == "cold"


def test_end_of_a_long_show_is_after_its_last_words(listen, tmp_path):
    rate = 8000
    sound = joined(rate, *[part for _ in range(300) for part in (noise(rate, 9), silence(rate, 1))],
                   silence(rate, 590), noise(rate, 3, 0.03), silence(rate, 7))
    facts = listen(encode(sound, tmp_path / "show.mp3", "--cbr", "-b", "8"))
    assert facts["duration_ms"] > 3_600_000
    assert facts["sound_end_ms"] == pytest.approx(3_593_138, abs=72)
    assert facts["silence_count"] == 1
    assert facts["silences"][0]["end_ms"] == pytest.approx(3_590_138, abs=100)


def test_fade_out_ends_softly(listen, tmp_path):
    rate = 44100
    ramp = numpy.linspace(1, 0, 6 * rate)[:, None]
    sound = joined(rate, noise(rate, 20, 0.5, 2), ramp * noise(rate, 6, 0.5, 2, seed=2),
                   silence(rate, 1, 2))
    facts = listen(encode(sound, tmp_path / "a.mp3", "--cbr", "-b", "128"))
    assert facts["end"] == facts["suggest"]["end-style"] == "fade"
    # -12 LU are at 0.25 of the amplitude.
    assert facts["suggest"]["sectone"] == pytest.approx(25 + 20_000 + 4_490, abs=200)


# --- files that were cut, spliced and damaged

@pytest.fixture(scope="module")
def whole(tmp_path_factory):
    """Twelve seconds of noise after one of silence, in frames that share a reservoir."""
    sound = joined(44100, silence(44100, 1, 2), noise(44100, 12, 0.3, 2), silence(44100, 1, 2))
    path = encode(sound, tmp_path_factory.mktemp("whole") / "a.mp3", "-t", "--cbr", "-b", "128")
    return Stream(path)


@pytest.fixture(scope="module")
def whole_peak(listen, whole, tmp_path_factory):
    path = tmp_path_factory.mktemp("peak") / "a.mp3"
    path.write_bytes(whole.data)
    return listen(path)["sample_peak"]


def failed(program, path):
    done = subprocess.run([program, "listen", "--json", "--quiet", path], stdin=subprocess.DEVNULL,
                          capture_output=True, check=False)
    assert done.returncode == 1
    facts = json.loads(done.stdout)
    assert done.stderr.decode() == f"brindle: {path}: {facts['error']}\n"
    return facts


def between(stream, first, last):
    return stream.data[stream.frames[first].offset:stream.frames[last].offset]


END = 1000 * (44100 * 13 + LAME_DELAY) / 44100


def test_cut_file_begins_with_silence_and_no_noise(listen, whole, whole_peak, tmp_path):
    path = tmp_path / "cut.mp3"
    path.write_bytes(whole.data[whole.frames[100].offset:])
    facts = listen(path)
    assert 1 <= facts["frames_cut_off"] <= 3
    assert facts["undecoded"] is None
    frame = 1152000 / 44100
    # The noise goes on from the first frame that can be decoded.
    assert facts["sound_begin_ms"] == pytest.approx(facts["frames_cut_off"] * frame, abs=frame)
    assert facts["sound_end_ms"] == pytest.approx(END - 100 * frame, abs=14)
    # What overlaps with what is missing is not cancelled; noise would be at any level.
    assert facts["sample_peak"] < 1.5 * whole_peak


@pytest.mark.parametrize("junk", [b"", b"junk" * 50], ids=["seamless", "gap"])
def test_missing_frames_are_silence_and_move_nothing(program, whole, whole_peak, tmp_path, junk):
    path = tmp_path / "spliced.mp3"
    path.write_bytes(between(whole, 0, 150) + junk + whole.data[whole.frames[190].offset:])
    facts = failed(program, path)
    frame = 1152000 / 44100
    assert 1 <= facts["undecoded"]["frames"] <= 3
    assert facts["undecoded"]["offset"] == whole.frames[150].offset + len(junk)
    assert facts["undecoded"]["ms"] == int(150 * frame)
    assert facts["undecoded"]["reason"] == "its data begins in frames that are missing"
    assert facts["sound_end_ms"] == pytest.approx(END - 40 * frame, abs=14)
    assert facts["sample_peak"] < 1.5 * whole_peak


def test_other_files_are_heard_when_one_fails(program, whole, tmp_path):
    (tmp_path / "a.mp3").write_bytes(between(whole, 0, 150) + whole.data[
        whole.frames[190].offset:])
    (tmp_path / "b.mp3").write_bytes(whole.data)
    (tmp_path / "c.mp3").write_bytes(bytes(5000))
    done = subprocess.run([program, "listen", tmp_path], stdin=subprocess.DEVNULL,
                          capture_output=True, check=False)
    assert done.returncode == 1
    lines = done.stdout.decode().splitlines()
    assert [line.split(": ")[0] for line in lines] == [
        str(tmp_path / "a.mp3"), str(tmp_path / "b.mp3"), "3 files"]
    assert lines[2] == "3 files: 2 failed"
    errors = done.stderr.decode().splitlines()
    assert len(errors) == 2
    assert "can't be decoded" in errors[0]
    assert errors[1] == f"brindle: {tmp_path / 'c.mp3'}: no MPEG audio found"


def test_frames_of_one_channel_do_not_change_the_clock(listen, tmp_path):
    """A jingle of one channel between two of two channels."""
    rate = 44100
    stereo = encode(joined(rate, noise(rate, 4, 0.3, 2)), tmp_path / "a.mp3", "-t", "--cbr", "-b",
                    "128", "--nores")
    mono = encode(joined(rate, noise(rate, 4, 0.3)), tmp_path / "b.mp3", "-t", "--cbr", "-b", "128",
                  "--nores")
    path = tmp_path / "mixed.mp3"
    path.write_bytes(stereo.read_bytes() + mono.read_bytes() + stereo.read_bytes())
    facts = listen(path)
    frames = 2 * len(Stream(stereo).frames) + len(Stream(mono).frames)
    assert facts["duration_ms"] == round(frames * 1152000 / rate)
    assert facts["sound_end_ms"] == pytest.approx(facts["duration_ms"], abs=60)


# --- quick

def song(number):
    """One of 50 songs of two and a half minutes: sections within 4 dB, the first softer; two in five
    fade, in 3 to 8 seconds."""
    rng = numpy.random.default_rng(1000 + number)
    rate, level = 16000, rng.uniform(-16, -8)
    parts = [silence(rate, rng.uniform(0, 2))]
    for section in range(14):
        softer = rng.uniform(0, 4) + (rng.uniform(2, 6) if section == 0 else 0)
        parts.append(noise(rate, rng.uniform(9, 11), 10 ** ((level - softer) / 20),
                           seed=int(rng.integers(1e6))))
    if number % 5 < 2:
        seconds = rng.uniform(3, 8)
        ramp = numpy.linspace(1, 0, round(rate * seconds))[:, None]
        parts.append(ramp * noise(rate, seconds, numpy.abs(parts[-1]).max(), seed=number))
    parts.append(silence(rate, rng.uniform(0, 3)))
    return joined(rate, *parts)


def test_quick_finds_the_same_points(listen, tmp_path):
    close = 0
    for number in range(50):
        path = encode(song(number), tmp_path / "a.mp3", "--cbr", "-b", "32", "-q", "9")
        full, quick = listen(path), listen(path, "--quick")
        assert quick["reference"] == "partial"
        assert (quick["range_lu"], quick["true_peak_dbtp"]) == (None, None)
        assert quick["duration_ms"] == full["duration_ms"]
        close += all(one is not None and abs(one - other) <= 100 for one, other in (
            (quick["sound_begin_ms"], full["sound_begin_ms"]),
            (quick["sound_end_ms"], full["sound_end_ms"]),
            (quick["suggest"]["sectone"], full["suggest"]["sectone"])))
    assert close >= 48


def test_quick_takes_the_loudness_that_the_tag_tells(listen, program, tmp_path):
    path = encode(song(1), tmp_path / "a.mp3", "--cbr", "-b", "32", "-q", "9")
    full = listen(path)
    subprocess.run([program, "set", "--field", f"REPLAYGAIN_TRACK_GAIN={full['gain_db']:.2f} dB",
                    path], check=True, capture_output=True)
    quick = listen(path, "--quick")
    assert quick["reference"] == "replaygain"
    assert quick["loudness_lufs"] == pytest.approx(full["loudness_lufs"], abs=0.011)
    for name in ("sound_begin_ms", "sound_end_ms", "end", "suggest"):
        assert quick[name] == full[name]
    assert listen(path)["reference"] == "whole"


def test_quick_hears_a_short_file_whole(listen, tmp_path):
    path = encode(joined(44100, silence(44100, 1), noise(44100, 20), silence(44100, 1)),
                  tmp_path / "a.mp3", "--cbr", "-b", "64")
    full, quick = listen(path), listen(path, "--quick")
    assert quick["reference"] == "whole"
    for name in ("loudness_lufs", "sound_begin_ms", "sound_end_ms", "suggest", "sample_peak"):
        assert quick[name] == full[name]


# --- memory

@pytest.mark.plain_build
def test_memory_does_not_grow_with_the_file(program, tmp_path):
    """More than three hours, after which the curve of levels has become coarser once."""
    rate = 8000
    path = encode(joined(rate, noise(rate, 60)), tmp_path / "a.mp3", "-t", "--cbr", "-b", "8",
                  "--nores")
    minute = path.read_bytes()
    long = tmp_path / "long.mp3"
    long.write_bytes(minute * 200)

    def peak_of(file):
        code = ("import resource, subprocess, sys; subprocess.run(sys.argv[1:], check=True, "
                "stdout=subprocess.DEVNULL); "
                "print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)")
        return int(output_of("/usr/bin/python3", "-c", code, program, "listen", "--quiet", "--quick",
                       file)), int(output_of("/usr/bin/python3", "-c", code, program, "listen",
                                              "--quiet", file))

    short_quick, short_full = peak_of(path)
    long_quick, long_full = peak_of(long)
    # KiB: levels and what the meter keeps of each 100 ms, 40 bytes; the last minute of frames.
    assert long_full - short_full < 16_000
    assert long_quick - short_quick < 10_000
