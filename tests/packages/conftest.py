import os
import pathlib
import subprocess

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]

# How fast it is does not matter here, but how long it compiles does; without optimisation the C
# library would check no lengths.
PACKAGED = ["-DBUILD_SHARED_LIBS=ON", "-DCMAKE_INSTALL_PREFIX=/usr",
            "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG"]


def run(*command, **options):
    """Runs a command that has to succeed; gives what it printed."""
    result = subprocess.run([*map(str, command)], stdin=subprocess.DEVNULL, text=True,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
                            **options)
    assert result.returncode == 0, result.stdout
    return result.stdout


def built(name, *options):
    """A build of the project in build/<name>, for installing and packing."""
    build = ROOT / "build" / name
    run("cmake", "--preset", "release", "-B", build, *options, cwd=ROOT)
    run("cmake", "--build", build)
    return build


@pytest.fixture(scope="session")
def static_build():
    return built("release")


@pytest.fixture(scope="session")
def shared_build():
    # Manual pages have a date; pages from an earlier build may have another.
    os.environ["SOURCE_DATE_EPOCH"] = "1750000000"
    for page in (ROOT / "build" / "shared" / "host").glob("*.1"):
        page.unlink()
    return built("shared", *PACKAGED)


@pytest.fixture
def song(tmp_path):
    path = tmp_path / "song.mp3"
    path.write_bytes((ROOT / "examples" / "morning-jingle.mp3").read_bytes())
    return path


@pytest.fixture
def environment():
    """Of a user who has nothing of the project but what a test installs."""
    return {"PATH": "/usr/bin:/bin", "HOME": os.environ.get("HOME", "/"), "LC_ALL": "C.UTF-8"}
