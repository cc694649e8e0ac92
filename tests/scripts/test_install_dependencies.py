"""What scripts/install-dependencies does while another program installs packages. Its apt-get is a
stand-in that fails as the real one does when the lock is taken."""

import os
import pathlib
import subprocess
import time

import pytest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "install-dependencies"

UPDATE = """E: Could not get lock /var/lib/apt/lists/lock. It is held by process 7 (apt-get)
E: Unable to lock directory /var/lib/apt/lists/"""
INSTALL = """E: Could not get lock /var/lib/dpkg/lock-frontend. It is held by process 7 (apt-get)
E: Unable to acquire the dpkg frontend lock (/var/lib/dpkg/lock-frontend)"""


@pytest.fixture
def install(tmp_path):
    """Runs the script; the first calls of apt-get for `action` fail and print `message`."""

    def run(action="", message="", failures=0, seconds=600, group="build"):
        (tmp_path / "dpkg-query").write_text("#!/bin/sh\nexit 1\n")
        (tmp_path / "sudo").write_text('#!/bin/sh\nexec "$@"\n')
        (tmp_path / "apt-get").write_text(f"""#!/bin/sh
echo "$@" >>{tmp_path}/calls
for word; do
    case $word in
        {action or 'none'})
            echo x >>{tmp_path}/failures
            if [ $(wc -l <{tmp_path}/failures) -le {failures} ]; then
                echo '{message}' >&2
                exit 100
            fi ;;
    esac
done
""")
        (tmp_path / "install").write_text(f'#!/bin/sh\necho install "$@" >>{tmp_path}/calls\n')
        for name in ("dpkg-query", "sudo", "apt-get", "install"):
            (tmp_path / name).chmod(0o755)
        begin = time.monotonic()
        result = subprocess.run(
            [SCRIPT, group], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, text=True, check=False,
            env={**os.environ, "PATH": f"{tmp_path}:/usr/bin:/bin",
                 "BRINDLE_LOCK_SECONDS": str(seconds)})
        calls = (tmp_path / "calls").read_text().splitlines()
        return result, calls, time.monotonic() - begin

    return run


def test_installs_what_is_missing(install):
    result, calls, _ = install()
    assert result.returncode == 0
    assert len(calls) == 2
    assert calls[0].endswith(" update")
    assert " install " in calls[1] and " ninja-build" in calls[1]
    # It waits for the installer's lock itself.
    assert all("DPkg::Lock::Timeout=600" in call for call in calls)


@pytest.mark.parametrize("action, message", [("update", UPDATE), ("install", INSTALL)])
def test_waits_for_the_lock(install, action, message):
    result, calls, seconds = install(action, message, failures=2)
    assert result.returncode == 0
    assert len([call for call in calls if action in call]) == 3
    assert seconds >= 2
    assert result.stdout.count("waiting") == 1


def test_waits_no_longer_than_it_says(install):
    result, calls, seconds = install("update", UPDATE, failures=1000, seconds=3)
    assert result.returncode == 1
    # The shell counts the beginnings of seconds: three of them may be little more than two apart.
    assert 2 < seconds < 30
    assert "Could not get lock" in result.stdout
    assert result.stdout.endswith("install-dependencies: apt-get update failed\n")
    assert not [call for call in calls if "install" in call]


def test_does_not_wait_for_what_no_waiting_mends(install):
    result, calls, _ = install("install", "E: Unable to locate package nonsense", failures=1000)
    assert result.returncode == 1
    assert len([call for call in calls if "install" in call]) == 1
    assert "Unable to locate package" in result.stdout


def test_ssh_server_for_tests_is_never_started(install):
    result, calls, _ = install(group="deep")
    assert result.returncode == 0
    installed = [index for index, call in enumerate(calls) if " openssh-server" in call]
    # The package starts no server while this file exists, neither when installed nor at boot.
    forbidden = calls.index("install -D -m 644 /dev/null /etc/ssh/sshd_not_to_be_run")
    assert installed == [forbidden + 1]
    assert result.stdout.count("/etc/ssh/sshd_not_to_be_run") == 1


def test_ssh_server_is_left_alone_where_none_is_installed(install):
    _, calls, _ = install(group="test")
    assert not [call for call in calls if "ssh" in call]
