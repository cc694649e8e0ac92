"""What the program says of streams that real encoders made, against what others say of them."""

import pytest

import encoders
from mpeg_frames import (Stream, constant_duration, variable_bitrate, variable_duration)
from commands import run
from tools import ffprobe, mpg123_samples, mutagen_info


def every(encodings):
    return pytest.mark.parametrize("encoding", encodings, ids=lambda one: one.name)


def milliseconds(frame, count):
    return 1000 * frame.samples * count / frame.frequency


def check_what_does_not_depend_on_bitrate(facts, encoding, path):
    info, probed = mutagen_info(path), ffprobe(path)
    assert facts["MpegVersion"] == str(encoding.version)
    assert facts["MpegVersion"] == {1: "1", 2: "2", 2.5: "25"}[info.version]
    assert facts["Layer"] == str(encoding.layer) == str(info.layer)
    assert probed.codec == {2: "mp2", 3: "mp3"}[encoding.layer]
    assert facts["Frequency"] == encoding.frequency == info.sample_rate == probed.frequency
    assert facts["MonoStereo"] == encoders.MODES[encoding.mode]
    assert facts["MonoStereo"] == ("Stereo", "Joint Stereo", "Mono", "Mono")[info.mode]
    assert (facts["MonoStereo"] == "Mono") == (probed.channels == 1)
    # The audio begins at the first byte, and there is nothing else in the file.
    assert facts["RepairRequired"] is False
    assert facts["TagType"] == -1
    assert facts["ID3TagSizeIncludingHeader"] == 0
    assert facts["v2Frames"] == []


@every(encoders.CONSTANT + encoders.WITH_VBR_HEADER + encoders.WITHOUT_VBR_HEADER)
def test_our_own_walk_counts_the_frames_that_others_decode(encoding, encoded):
    """The witness below is itself checked against two programs."""
    path = encoded(encoding)
    stream = Stream(path)
    assert ffprobe(path).packets == len(stream.decodable)
    assert mpg123_samples(path, encoding.channels) == (
        len(stream.decodable) * stream.frames[0].samples)
    # Why the program is to accept the very first frame: the 100 after it agree with it.
    assert len({frame.agreement for frame in stream.frames[:101]}) == 1


@every(encoders.CONSTANT)
def test_constant_bitrate(encoding, encoded, show):
    path = encoded(encoding)
    facts, stream = show(path), Stream(path)
    check_what_does_not_depend_on_bitrate(facts, encoding, path)
    assert facts["VBR"] is False
    assert facts["BitRate"] == encoding.kbps * 1000  # bit/s
    # All bytes count, and no more.
    assert facts["Duration"] == constant_duration(len(stream.data), encoding.kbps)

    frame = stream.frames[0]
    # lame's frame with its settings holds no sound, so decoders leave it out; its bytes count here.
    settings = milliseconds(frame, len(stream.frames) - len(stream.decodable))
    decoded = 1000 * mpg123_samples(path, encoding.channels) / encoding.frequency
    # A frame is a whole number of bytes. lame pads frames so that the stream is never more than a
    # byte off the exact rate, and its own frame another; twolame pads none, so that each frame is
    # up to a byte short. A byte lasts 8 / kbps ms. The result is a whole number (0.5 ms).
    bytes_off = 2 if encoding.encoder == "lame" else len(stream.frames)
    assert facts["Duration"] - settings == pytest.approx(
        decoded, abs=0.5 + bytes_off * 8 / encoding.kbps)


@every(encoders.WITH_VBR_HEADER)
def test_variable_bitrate_with_a_header(encoding, encoded, show):
    path = encoded(encoding)
    facts, stream = show(path), Stream(path)
    check_what_does_not_depend_on_bitrate(facts, encoding, path)
    count, size = stream.vbr_header()
    assert count == len(stream.decodable)
    assert facts["VBR"] is True
    assert facts["Duration"] == variable_duration(stream.frames[0], count)
    assert facts["BitRate"] == variable_bitrate(stream.frames[0], count, size)

    decoded = 1000 * mpg123_samples(path, encoding.channels) / encoding.frequency
    # Rounded to 0.1 ms and then to 1 ms.
    assert facts["Duration"] == pytest.approx(decoded, abs=0.55)
    check_mean_bitrate(facts, stream, size, count)


def check_mean_bitrate(facts, stream, size, count):
    """Against the mean in kbit/s as everybody else reckons it."""
    frame = stream.frames[0]
    mean = size * 8 / milliseconds(frame, count)
    # A unit is 1,024 bit/s, not 1,000: 2.3 % less. Frames a second are a whole number: between
    # 0.7 % less (38 for 38.28) and 0.8 % more (14 for 13.89). And the result is one (0.5).
    assert mean * 0.9766 * 0.9925 - 0.5 <= facts["BitRate"] <= mean * 0.9766 * 1.0081 + 0.5


@every(encoders.WITHOUT_VBR_HEADER)
def test_variable_bitrate_without_a_header(encoding, encoded, show):
    path = encoded(encoding)
    facts, stream = show(path), Stream(path)
    # What makes the program walk all frames: one of the first 100 after the first differs; and
    # what makes it believe the result: a mean above 20 kbit/s.
    rates = [frame.kbps for frame in stream.frames]
    assert stream.vbr_header() is None
    assert len(set(rates[:101])) > 1
    assert sum(rates) / len(rates) > 20

    check_what_does_not_depend_on_bitrate(facts, encoding, path)
    assert facts["VBR"] is True
    assert facts["Duration"] == variable_duration(stream.frames[0], len(rates))
    assert facts["BitRate"] == variable_bitrate(stream.frames[0], len(rates), len(stream.data))

    decoded = 1000 * mpg123_samples(path, encoding.channels) / encoding.frequency
    # Rounded to 0.1 ms and then to 1 ms.
    assert facts["Duration"] == pytest.approx(decoded, abs=0.55)
    check_mean_bitrate(facts, stream, len(stream.data), len(rates))


# Number of positions that are tried before the search for a first frame ends.
POSITIONS_TRIED = 16385


def steady_start(stream):
    """The first frame from which 100 more keep the mode; twolame decides frame by frame between
    stereo and joint stereo."""
    modes = [frame.mode for frame in stream.frames]
    assert len(set(modes[:101])) > 1, "twolame kept the mode: no witness"
    return next(frame for number, frame in enumerate(stream.frames[:-100])
                if len(set(modes[number:number + 101])) == 1)


def test_frames_that_change_their_mode_are_skipped_until_they_keep_it(music, show, folder):
    path = folder / "joint-music.mp2"
    encoders.encode(encoders.JOINT_LAYER2, music, path)
    stream, facts = Stream(path), show(path)
    start = steady_start(stream)
    assert 0 < start.offset < POSITIONS_TRIED
    assert facts["MonoStereo"] == ("Stereo", "Joint Stereo")[start.mode]
    assert facts["RepairRequired"] is True
    assert facts["BitRate"] == 192000
    assert facts["Duration"] == constant_duration(len(stream.data) - start.offset, 192)


def test_stream_that_keeps_no_mode_near_its_beginning_is_none(encoded, show):
    path = encoded(encoders.JOINT_LAYER2)
    stream, facts = Stream(path), show(path)
    assert steady_start(stream).offset >= POSITIONS_TRIED
    nothing = {"MonoStereo": "", "BitRate": 0, "Frequency": 0, "Layer": "0", "MpegVersion": "0",
               "Duration": 0, "VBR": False, "RepairRequired": False}
    assert {name: facts[name] for name in nothing} == nothing


def test_header_frame_of_another_mode_is_skipped(encoded, show, folder):
    """ffmpeg writes its header frame as plain stereo and not original, whatever the stream is, so
    the frames after do not agree with it and the stream begins one frame later."""
    source = encoded(encoders.constant(1, 44100, "j", 192))
    path = folder / "ffmpeg-header.mp3"
    run("ffmpeg", "-v", "error", "-y", "-i", source, "-c", "copy", "-id3v2_version", 0, path)
    stream, facts = Stream(path), show(path)
    header, first, *_ = stream.frames
    assert stream.vbr_header(b"Info") is not None
    assert header.agreement != first.agreement
    assert facts["MonoStereo"] == "Joint Stereo"
    assert facts["RepairRequired"] is True
    assert facts["BitRate"] == 192000
    assert facts["Duration"] == constant_duration(len(stream.data) - first.offset, 192)
    # Now only frames with sound count, so the decoder agrees to a byte of padding and a rounding.
    assert facts["Duration"] == pytest.approx(
        1000 * mpg123_samples(path, 2) / 44100, abs=0.5 + 8 / 192)


def test_vbr_header_of_another_mode_leaves_the_walk_over_all_frames(encoded, show, folder):
    """The same with a variable stream: its header is not seen, so the frames are averaged."""
    source = encoded(encoders.lame(1, 44100, "j", "-V", "4"))
    path = folder / "ffmpeg-vbr-header.mp3"
    run("ffmpeg", "-v", "error", "-y", "-i", source, "-c", "copy", "-id3v2_version", 0, path)
    stream, facts = Stream(path), show(path)
    header, first, *_ = stream.frames
    assert header.agreement != first.agreement
    sounding = stream.frames[1:]
    assert facts["VBR"] is True
    assert facts["RepairRequired"] is True
    assert facts["Duration"] == variable_duration(first, len(sounding))
    assert facts["BitRate"] == variable_bitrate(
        first, len(sounding), len(stream.data) - first.offset)
