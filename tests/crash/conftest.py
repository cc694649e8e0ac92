import os
import pathlib
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).parent))
sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "host"))

import requirements  # noqa: E402


@pytest.fixture(scope="session", autouse=True)
def state_folder(tmp_path_factory):
    """Where the program keeps its journals: neither the user's, nor on the device of a test."""
    os.environ["XDG_STATE_HOME"] = str(tmp_path_factory.mktemp("state"))


@pytest.fixture(scope="session")
def program():
    path = os.environ.get("BRINDLE_PROGRAM")
    if not path or not os.access(path, os.X_OK):
        pytest.exit("BRINDLE_PROGRAM must name the built program", returncode=3)
    return str(pathlib.Path(path).resolve())


@pytest.fixture(scope="session")
def devices(tmp_path_factory):
    """The test needs block devices of our own."""
    requirements.skip_without_devices(tmp_path_factory.mktemp("device"))


@pytest.fixture(scope="session")
def require_mountable(devices, tmp_path_factory):
    """Skips the test that calls it with a file system that cannot be mounted here."""
    reasons = {}

    def require(file_system):
        if file_system not in reasons:
            reasons[file_system] = requirements.reason_against(
                file_system, tmp_path_factory.mktemp(file_system.name))
        if reasons[file_system]:
            pytest.skip(f"needs {reasons[file_system]}")

    return require
