"""The exact length by which `brindle check` judges, against the frames that others decode."""

import json
import re
import subprocess

import pytest

import encoders
from mpeg_frames import Stream
from tools import ffprobe, mpg123_samples

ENCODINGS = (
    encoders.constant(1, 44100, "j", 128),
    encoders.constant(1, 48000, "m", 192),
    encoders.constant(2, 22050, "m", 32),
    encoders.constant(25, 8000, "m", 32),
    encoders.lame(1, 44100, "s", "--cbr", "-b", "128", "-t", kbps=128),
    encoders.lame(1, 44100, "j", "-V", "4"),
    encoders.lame(2, 24000, "j", "-V", "5"),
    encoders.lame(1, 44100, "j", "-V", "4", "-t"),
    encoders.lame(1, 44100, "j", "--abr", "128"),
    encoders.layer2(1, 32000, "s", 192),
    encoders.layer2(2, 16000, "m", 64),
)

# No file is as long as these points, so the check tells where its audio ends.
FAR = 2_000_000_000


@pytest.fixture
def exact_length(program, tmp_path):
    def of(content):
        path = tmp_path / "a.mp3"
        path.write_bytes(content)
        subprocess.run([program, "set", "--outro", str(FAR), path], check=True,
                       capture_output=True)
        done = subprocess.run([program, "check", "--json", path], capture_output=True, check=False)
        (reason,) = [reason for reason in json.loads(done.stdout)["reasons"]
                     if reason["code"] == "outro-beyond-end"]
        return int(re.search(r"ends at (\d+) ms", reason["text"]).group(1))
    return of


def milliseconds(samples, frequency):
    return round(1000 * samples / frequency)


@pytest.mark.parametrize("encoding", ENCODINGS, ids=lambda one: one.name)
def test_length_is_that_of_the_decoded_frames(encoding, encoded, exact_length):
    path = encoded(encoding)
    frame = Stream(path).frames[0]
    exact = exact_length(path.read_bytes())
    assert exact == milliseconds(ffprobe(path).packets * frame.samples, encoding.frequency)
    assert exact == milliseconds(mpg123_samples(path, encoding.channels), encoding.frequency)


# With a header that then promises too many bytes the library sees no stream at all.
WITHOUT_HEADER = tuple(one for one in ENCODINGS if one not in encoders.WITH_VBR_HEADER)


@pytest.mark.parametrize("encoding", WITHOUT_HEADER, ids=lambda one: one.name)
def test_file_that_was_cut_plays_its_whole_frames(encoding, encoded, exact_length, tmp_path):
    """Cut inside the last frame of three quarters of the file."""
    stream = Stream(encoded(encoding))
    kept = len(stream.frames) * 3 // 4
    end = stream.frames[kept].offset
    whole, cut = tmp_path / f"whole-{encoding.file_name}", stream.data[:end + 10]
    whole.write_bytes(stream.data[:end])
    sounding = kept - (len(stream.frames) - len(stream.decodable))
    samples = stream.frames[0].samples * sounding
    assert mpg123_samples(whole, encoding.channels) == samples
    assert exact_length(cut) == milliseconds(samples, encoding.frequency)


@pytest.mark.parametrize("encoding", ENCODINGS, ids=lambda one: one.name)
def test_encoders_keep_their_promise(encoding, encoded, program, tmp_path):
    path = tmp_path / encoding.file_name
    path.write_bytes(encoded(encoding).read_bytes())
    subprocess.run([program, "set", "--title", "Song", "--artist", "Ann", path], check=True,
                   capture_output=True)
    done = subprocess.run([program, "check", "--json", path], capture_output=True, check=False)
    assert json.loads(done.stdout)["reasons"] == []
    assert done.returncode == 0
