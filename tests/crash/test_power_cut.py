"""The power fails while the program saves or strips on a real file system, or after it has ended.

The writes and flushes that reach the block device are recorded. States that a power cut may leave
of them are mounted, so that the file system replays its journal, and the files are compared."""

import collections
import subprocess
from typing import NamedTuple

import pytest

from block_device import block_device, mounted, run
from crash_states import crash_states, split_at_flush_before
from file_systems import FILE_SYSTEMS, make
from mp3_bytes import FRAME_HEADER, FRAME_LENGTH, id3v1, tag, text_frame
from requirements import skip_without_commands
from verdict import wrong_with

# No two frames are the same, so that none can be mistaken for another.
AUDIO = b"".join(FRAME_HEADER + number.to_bytes(2, "big") * ((FRAME_LENGTH - 4) // 2) + b"\0"
                 for number in range(120))
RECORD = id3v1(b"Old title", b"Old artist")
ROOMY = tag(text_frame("TIT2", "Old title"), padding=6000) + AUDIO
TIGHT = tag(text_frame("TIT2", "Old title")) + AUDIO
NEW_TITLE = "New title " * 450  # longer than a page, so that a save in place can be torn


class Work(NamedTuple):
    name: str
    old: bytes
    arguments: tuple
    # Sectors of the old and the new file may be mixed.
    in_place: bool = False

    def __str__(self):
        return self.name


WORKS = [
    Work("set_in_place", ROOMY + RECORD, ("set", "--title", NEW_TITLE), in_place=True),
    Work("set_in_place_with_its_first_record", ROOMY, ("set", "--title", NEW_TITLE),
         in_place=True),
    Work("set_with_rebuild", TIGHT + RECORD, ("set", "--title", NEW_TITLE)),
    Work("set_atomic", ROOMY + RECORD, ("set", "--atomic", "--title", NEW_TITLE)),
    Work("strip_v1", ROOMY + RECORD, ("strip", "--v1")),
    Work("strip_v2", ROOMY + RECORD, ("strip", "--v2")),
    Work("strip_all", ROOMY + RECORD, ("strip", "--all")),
]


def record(file_system, work, command, device, folder):
    """Does the work; the new content of the file. The log gets the marks "start" and "done"."""
    with mounted(device.path, folder, file_system):
        (folder / "song.mp3").write_bytes(work.old)
        run("sync", "--file-system", folder)
        device.mark("start")
        run(*command, *work.arguments, "song.mp3", cwd=folder)
        device.mark("done")
        new = (folder / "song.mp3").read_bytes()
        # Whatever the program has not flushed is written now, and may be lost in part.
        run("sync", "--file-system", folder)
    assert new != work.old and AUDIO in new
    return new


def files_of(file_system, writes, device, folder):
    device.show(writes)
    with mounted(device.path, folder, file_system):
        return {path.name: path.read_bytes() for path in folder.iterdir() if path.is_file()}


def losses(file_system, work, command, count, folder):
    """Number of states before and after the end, and what is wrong with each that is wrong."""
    base, mountpoint = folder / "base", folder / "mounted"
    mountpoint.mkdir()
    make(file_system, base)
    found = []
    with block_device(folder, base) as device:
        new = record(file_system, work, command, device, mountpoint)
        durable, events = split_at_flush_before("start", device.log())
        device.put_into_base(durable)
        states = crash_states(events, count, seed=1, never_torn=file_system.never_torn)
        for state in states:
            try:
                files = files_of(file_system, state.writes(), device, mountpoint)
                wrong = wrong_with(files, work.old, new, AUDIO, work.in_place, state.done)
            except (subprocess.SubprocessError, OSError) as error:
                wrong = str(error)
            if wrong:
                found.append(f"{'after' if state.done else 'before'} the end: {wrong}")
    if not found:
        base.unlink()  # tens of megabytes, of use to those only who look into a failure
    numbers = collections.Counter(state.done for state in states)
    return numbers[False], numbers[True], collections.Counter(found)


@pytest.mark.parametrize("work", WORKS, ids=str)
@pytest.mark.parametrize("file_system", FILE_SYSTEMS, ids=str)
def test_the_file_is_whole(file_system, work, program, require_mountable, tmp_path):
    require_mountable(file_system)
    before, after, found = losses(file_system, work, [program], 200, tmp_path)
    assert not found, f"{before} states before the end, {after} after it: {dict(found)}"
    assert before >= 50 and after >= 50


@pytest.mark.parametrize("work", WORKS[:3], ids=str)
@pytest.mark.parametrize("file_system", FILE_SYSTEMS, ids=str)
def test_a_program_that_does_not_flush_is_caught(file_system, work, program, require_mountable,
                                                 tmp_path):
    skip_without_commands("eatmydata")
    require_mountable(file_system)
    *_, found = losses(file_system, work, ["eatmydata", program], 40, tmp_path)
    losses_found = ("after the end: not the new file", "after the end: audio is lost")
    assert any(loss.startswith(losses_found) for loss in found), found
