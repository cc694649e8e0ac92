"""Does jobs with mutagen as they come in, a line each, and answers each with a byte.

With arguments: opens the files of these names, for xargs.
"""

import sys

from mutagen import id3
from mutagen.mp3 import MP3


def open_file(path):
    file = MP3(path)
    return (sum(len(str(frame)) for frame in file.tags.values())
            + file.info.length + file.info.bitrate + file.info.sample_rate)


def save(path):
    file = MP3(path)
    other = file.tags["TIT2"].text[0] == "Good morning"
    file.tags["TIT2"].text = ["Good Morning" if other else "Good morning"]
    file.tags.save(path, v1=1, v2_version=3)


def grow(path):
    file = MP3(path)
    name = f"Growth {len(file.tags)}"
    file.tags.add(id3.TXXX(encoding=0, desc=name, text=["x" * 4000]))
    file.tags.save(path, v1=1, v2_version=3)


JOBS = {"open": open_file, "save": save, "grow": grow}

for name in sys.argv[1:]:
    open_file(name)
for line in sys.stdin if len(sys.argv) == 1 else ():
    job, path = line.rstrip("\n").split(" ", 1)
    JOBS[job](path)
    sys.stdout.write(".")
    sys.stdout.flush()
