"""What programs that we did not write say of a file."""

import dataclasses
import json

import mutagen.mp3

from commands import output_of


@dataclasses.dataclass(frozen=True)
class Probed:
    codec: str
    frequency: int
    channels: int
    packets: int


def ffprobe(path):
    """Counts the packets: an estimate from the first bitrate would be no witness."""
    answer = json.loads(output_of(
        "ffprobe", "-v", "error", "-select_streams", "a:0", "-count_packets", "-show_entries",
        "stream=codec_name,sample_rate,channels,nb_read_packets", "-of", "json", path))
    stream = answer["streams"][0]
    return Probed(stream["codec_name"], int(stream["sample_rate"]), stream["channels"],
                  int(stream["nb_read_packets"]))


def mpg123_samples(path, channels):
    """How many samples of each channel come out when every frame is decoded and none cut."""
    sound = output_of("mpg123", "-q", "--no-gapless", "-e", "s16", "-s", path)
    return len(sound) // 2 // channels


def mutagen_info(path):
    return mutagen.mp3.MP3(path).info
