"""The arrows of docs/architecture.md: which folder includes which."""
import pathlib
import re

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)

# Each folder of src and what it may include besides itself and public headers.
BELOW = {
    "util": set(),
    "mpeg": {"util"},
    "id3v1": {"util"},
    "id3v2": {"util", "mpeg", "id3v1"},
    "facade": {"util", "mpeg", "id3v1", "id3v2"},
    "facade/com": {"util", "facade", "facade/com"},
}
# Each room of the program and the rooms that it may include.
ROOMS = {
    "system": set(),
    "output": {"system"},
    "batch": {"output", "system"},
    "listen": {"output", "batch", "system"},
    "bridges": {"listen", "output"},
    "journal": {"batch", "output", "pictures", "system"},
    "report": {"output"},
    "cache": {"batch", "output", "system"},
    "pictures": {"system"},
    "commands": {"batch", "bridges", "cache", "journal", "listen", "output", "pictures", "report",
                 "system"},
}


def includes_of(path):
    return INCLUDE.findall(path.read_text())


def sources(folder):
    return [path for path in sorted((ROOT / folder).glob("*")) if path.suffix in (".h", ".cpp")]


def source_files():
    for part in BELOW:
        for path in sources(f"src/{part}"):
            yield pytest.param(part, path, id=str(path.relative_to(ROOT)))


@pytest.mark.parametrize("part, path", source_files())
def test_source_includes_only_what_lies_below(part, path):
    wrong = []
    for mark, name in includes_of(path):
        folder = str(pathlib.PurePosixPath(name).parent)
        if mark == '"' and folder not in BELOW[part] | {part, "."}:
            wrong.append(name)
        if name == "brindle/cMPEGHeader.h" and not part.startswith("facade"):
            wrong.append(name)
    assert not wrong


def program_files():
    for room in ROOMS:
        for path in sources(f"host/{room}"):
            yield pytest.param(room, path, id=str(path.relative_to(ROOT)))


@pytest.mark.parametrize("room, path", program_files())
def test_room_of_the_program_includes_only_its_neighbours_below(room, path):
    wrong = [name for mark, name in includes_of(path) if mark == '"'
             and "/" in name and name.split("/")[0] not in ROOMS[room] | {room}]
    assert not wrong


def test_folders_are_those_that_stand_here():
    folders = {str(path.relative_to(ROOT / "src")) for path in (ROOT / "src").rglob("*")
               if path.is_dir() and sources(path.relative_to(ROOT))}
    assert folders == set(BELOW)
    rooms = {path.name for path in (ROOT / "host").iterdir()
             if path.is_dir() and sources(path.relative_to(ROOT))}
    assert rooms == set(ROOMS)
