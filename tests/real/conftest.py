"""Real files, made once a session by encoders and taggers that we did not write."""

import json
import os
import pathlib
import subprocess
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).parent))

import encoders  # noqa: E402
from commands import run  # noqa: E402


def pytest_collection_modifyitems(items):
    for item in items:
        item.add_marker(pytest.mark.deep)


@pytest.fixture(scope="session", autouse=True)
def state_folder(tmp_path_factory):
    """Where the program keeps its journals: none of the user's."""
    os.environ["XDG_STATE_HOME"] = str(tmp_path_factory.mktemp("state"))


@pytest.fixture(scope="session")
def folder(tmp_path_factory):
    return tmp_path_factory.mktemp("real")


@pytest.fixture(scope="session")
def music(folder):
    """Two plucked strings, one in each channel."""
    target = folder / "music.wav"
    run("sox", "-R", "-n", "-r", 44100, "-b", 16, target, "synth", encoders.SECONDS,
        "pluck", "C4", "pluck", "E4", "gain", "-n", -9)
    return target


@pytest.fixture(scope="session")
def sound(folder, music):
    """Speech over music, at any rate and with one or two channels."""
    speech, mix = (folder / name for name in ("speech.wav", "mix.wav"))
    run("espeak-ng", "-s", "150", "-w", speech,
        "And now the news, read by somebody who was never here.")
    run("sox", "-R", speech, "-r", 44100, folder / "loud.wav", "gain", "-n", -6, "remix", 1, 1)
    run("sox", "-R", "-m", music, folder / "loud.wav", mix, "trim", 0, encoders.SECONDS)

    def at(frequency, channels):
        target = folder / f"{frequency}-{channels}.wav"
        if not target.exists():
            run("sox", "-R", mix, "-b", 16, "-r", frequency, "-c", channels, target)
        return target

    return at


@pytest.fixture(scope="session")
def encoded(folder, sound):
    """The file of an encoding, without any tag."""

    def file_of(encoding):
        target = folder / encoding.file_name
        if not target.exists():
            encoders.encode(encoding, sound(encoding.frequency, encoding.channels), target)
        return target

    return file_of


@pytest.fixture(scope="session")
def program():
    path = os.environ.get("BRINDLE_PROGRAM")
    if not path:
        pytest.fail("set BRINDLE_PROGRAM to the path of the program")
    return path


@pytest.fixture(scope="session")
def show(program):
    """What the program says of one file."""

    def facts_of(path):
        done = subprocess.run([program, "show", "--json", str(path)], stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        assert done.returncode == 0, done.stderr.decode()
        lines = done.stdout.decode().splitlines()
        assert len(lines) == 1
        facts = json.loads(lines[0])
        assert facts["file"] == str(path)
        return facts

    return facts_of


@pytest.fixture(scope="session")
def listen(program):
    """The program's measurements as JSON; every file must be decoded."""

    def facts_of(path, *options):
        done = subprocess.run([program, "listen", "--json", "--quiet", *options, path],
                              stdin=subprocess.DEVNULL, capture_output=True, check=False)
        assert (done.returncode, done.stderr) == (0, b"")
        return json.loads(done.stdout)

    return facts_of
