"""A file before and after `brindle set` and `brindle strip`, and how its audio is told apart."""

import hashlib
import os
import re

from mp3_bytes import audio, id3v1

AUDIO = audio()
RECORD = id3v1(b"Old title", b"Old artist", b"Old album", b"1998", b"Old comment", 3, 17)


def audio_hash(content):
    """Of the bytes of the audio, wherever a rebuilt tag has moved them."""
    start = content.index(AUDIO[:4] + bytes(100))
    return hashlib.sha256(content[start:start + len(AUDIO)]).hexdigest()


AUDIO_HASH = hashlib.sha256(AUDIO).hexdigest()


def snapshot(path):
    """Everything that a run which touches nothing must leave as it is."""
    status = os.stat(path)
    return (path.read_bytes(), status.st_mtime_ns, status.st_ino, status.st_mode, status.st_uid,
            status.st_gid)


def one_line(result):
    """The one line on standard error."""
    text = result.stderr.decode("utf-8")
    assert text.endswith("\n") and text.count("\n") == 1, text
    return text[:-1]


def errors_of_dry_run(result):
    """Standard error without the note on the journal, which is there if anything would change."""
    note, rest = re.match(rb"(The journal would have about \d+ bytes\n)?(.*)", result.stderr,
                          re.DOTALL).groups()
    assert (note is not None) == (b"dry run" in result.stdout)
    return rest
