import os
import pathlib
import subprocess

import pytest

from other_user import as_nobody


def _program():
    path = os.environ.get("BRINDLE_PROGRAM")
    if not path or not os.access(path, os.X_OK):
        pytest.exit("BRINDLE_PROGRAM must name the built program", returncode=3)
    return str(pathlib.Path(path).resolve())


@pytest.fixture(scope="session")
def program():
    return _program()


@pytest.fixture(scope="session", autouse=True)
def shared_state_folder(tmp_path_factory):
    """For what fixtures of modules and sessions run."""
    os.environ["XDG_STATE_HOME"] = str(tmp_path_factory.mktemp("state"))


@pytest.fixture(autouse=True)
def state_folder(tmp_path_factory, monkeypatch):
    """Where the program keeps its journals: none of the user's."""
    folder = tmp_path_factory.mktemp("state")
    monkeypatch.setenv("XDG_STATE_HOME", str(folder))
    return folder


@pytest.fixture
def brindle(program, tmp_path):
    """Runs the program in the test's own folder. Nothing that it does may wait for anybody."""

    def run(*arguments, **options):
        options.setdefault("stdout", subprocess.PIPE)
        options.setdefault("stderr", subprocess.PIPE)
        options.setdefault("stdin", subprocess.DEVNULL)
        options.setdefault("cwd", tmp_path)
        return subprocess.run([program, *arguments], timeout=60, check=False, **options)

    return run


@pytest.fixture
def cache(tmp_path):
    """The name of a database that there is not yet."""
    return tmp_path / "cache.db"


@pytest.fixture
def open_folder(tmp_path_factory):
    """Others may enter it, and all folders above it."""
    folder = tmp_path_factory.mktemp("open")
    for part in (folder, *folder.parents):
        if part.stat().st_uid == os.geteuid() and part != part.parent:
            part.chmod(part.stat().st_mode | 0o011)
    return folder


@pytest.fixture
def reachable(open_folder, program):
    result = as_nobody(program, "--version", cwd=open_folder)
    if result.returncode != 0:
        pytest.skip("another user cannot run the program where it was built")
    return open_folder


@pytest.fixture
def small_disk(tmp_path):
    """It is full after 64 KiB."""
    folder = tmp_path / "disk"
    folder.mkdir()
    mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "none", str(folder)],
                             capture_output=True, check=False)
    if mounted.returncode != 0:
        pytest.skip("NO FULL DISK WAS TRIED: may not mount a file system")
    try:
        yield folder
    finally:
        subprocess.run(["umount", str(folder)], check=True)


@pytest.fixture(scope="session")
def tone(tmp_path_factory):
    """A second of silence, ten of a tone at -20 dBFS, a second of silence."""
    folder = tmp_path_factory.mktemp("tone")
    subprocess.run(["sox", "-R", "-n", "-r", "44100", "-c", "2", "-b", "16", folder / "a.wav",
                    "synth", "10", "sine", "1000", "vol", "0.1", "pad", "1", "1"], check=True)
    # At lower bit rates lame makes it softer.
    subprocess.run(["lame", "--quiet", "--noreplaygain", "-b", "320", folder / "a.wav",
                    folder / "a.mp3"], check=True)
    return (folder / "a.mp3").read_bytes()
