"""The sample of the repository, field by field."""

import pathlib

import pytest

from tools import ffprobe, mpg123_samples

SAMPLE = pathlib.Path(__file__).resolve().parents[2] / "examples" / "morning-jingle.mp3"

LENGTH, TAG, RECORD = 91087, 1935, 128

EXPECTED = {
    "MonoStereo": "Joint Stereo",
    "BitRate": 128000,
    "Speed": 1.5,
    "Volume": 95,
    "Opener": -1,
    "CueInmSStart": 120,
    "CategoryLevel": "3",
    "TagType": 3,
    "VBR": False,
    "Layer": "3",
    "Duration": (LENGTH - TAG - RECORD) * 8 // 128,
    "Frequency": 44100,
    "FrameCount": 13,
    "Title": "Good Morning",
    "NoFade": 0,
    "Composer": "A. Composer",
    "Publisher": "Meadow Lane Music",
    "CopyRight": "2011 Meadow Lane Music",
    "Agency": "Hill & Dale",
    "AccountExec": "J. Miller",
    "URL": "http://www.example.com/early-shift",
    "Copy": "Good morning, every day at six",
    "Artist": "The Early Shift",
    "ArtistUrl": "http://www.example.com/early-shift",
    "Sectone": 5200,
    "Intro": 1500,
    "Category": "Jingle",
    "Album": "Station Jingles",
    "Track": 7,
    "Year": 2011,
    "Comments": "engWeekdays only",
    "Endstyle": "Fade",
    "OutromsStart": 4600,
    "Genre": "1",  # kept as "(17)"
    "artistv1Tag": "The Early Shift",
    "Titlev1Tag": "Good Morning",
    "Yearv1Tag": 2011,
    "Commentv1": "Weekdays only",
    "RepairRequired": False,
    "ID3TagSizeIncludingHeader": TAG,
    "MpegVersion": "1",
}


def test_every_fact(show):
    assert SAMPLE.stat().st_size == LENGTH
    facts = show(SAMPLE)
    assert {name: facts[name] for name in EXPECTED} == EXPECTED
    assert len(facts["v2Tag"]["TXXX"]) == 14
    assert len(facts["v2Tag"]["APIC"]) == 1
    new_keys = ["schema", "tag", "file_facts"]
    assert set(facts) == {*EXPECTED, "file", "v2Frames", "v2Tag", *new_keys}
    assert list(facts)[0] == "file"
    assert list(facts)[-4:] == ["MpegVersion", *new_keys]


def test_what_others_hear(show):
    probed = ffprobe(SAMPLE)
    assert probed.packets >= 120
    samples = mpg123_samples(SAMPLE, 2)
    assert samples == probed.packets * 1152
    # The frame with the encoder's settings counts here and holds no sound; it and the rest are off
    # the exact rate by up to a byte of padding each (1/16 ms), and the result is rounded (0.5 ms).
    settings = 1000 * 1152 / 44100
    assert show(SAMPLE)["Duration"] == pytest.approx(1000 * samples / 44100 + settings, abs=0.63)
