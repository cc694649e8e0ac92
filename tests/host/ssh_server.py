"""An SSH server on the loopback that lets in the user who runs the tests, and nobody else. It uses
neither the configuration nor the keys of this machine."""

import contextlib
import getpass
import os
import pathlib
import shlex
import shutil
import socket
import subprocess
import time

import pytest

SSHD = shutil.which("sshd", path="/usr/sbin:/usr/local/sbin:/sbin")
# Where sshd confines the process that talks to clients, if it is started by root.
PRIVILEGE_SEPARATION = pathlib.Path("/run/sshd")

SERVER = """
ListenAddress 127.0.0.1
Port {port}
HostKey {folder}/host_key
AuthorizedKeysFile {folder}/key.pub
AllowUsers {user}
AuthenticationMethods publickey
UsePAM no
PidFile none
# The folder for temporary files above the keys is open to all.
StrictModes no
AcceptEnv LOGIN
SetEnv "PATH={path}"
"""

CLIENT = """
Host *
    HostName 127.0.0.1
    Port {port}
    User {user}
    IdentityFile {folder}/key
    IdentitiesOnly yes
    IdentityAgent none
    BatchMode yes
    StrictHostKeyChecking no
    UserKnownHostsFile /dev/null
    LogLevel ERROR
"""


def _free_port():
    with socket.socket() as listener:
        listener.bind(("127.0.0.1", 0))
        return listener.getsockname()[1]


@contextlib.contextmanager
def ssh_server(folder, machines, path):
    """The command `ssh` that logs in under each of these names of machines. There, PATH is `path`,
    and LOGIN is the name of the machine."""
    if SSHD is None or not all(map(shutil.which, ("ssh", "ssh-keygen"))):
        pytest.skip("NO OTHER MACHINE WAS TRIED: needs openssh-server and openssh-client")
    if os.geteuid() == 0:
        try:
            PRIVILEGE_SEPARATION.mkdir(mode=0o755, exist_ok=True)
        except OSError as error:
            pytest.skip(f"NO OTHER MACHINE WAS TRIED: {error}")
    folder.mkdir(mode=0o700)
    for key in ("key", "host_key"):
        subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", folder / key],
                       check=True, stdin=subprocess.DEVNULL)
    values = {"folder": folder, "port": _free_port(), "user": getpass.getuser(), "path": path}
    (folder / "sshd_config").write_text(SERVER.format(**values))
    (folder / "ssh_config").write_text("".join(
        f"Host {machine}\n    SetEnv LOGIN={machine}\n" for machine in machines)
        + CLIENT.format(**values))
    ssh = ["ssh", "-F", str(folder / "ssh_config")]
    with open(folder / "log", "wb") as log:
        server = subprocess.Popen([SSHD, "-D", "-e", "-f", folder / "sshd_config"], stderr=log,
                                  stdin=subprocess.DEVNULL)
    try:
        _wait_for(server, [*ssh, machines[0], "true"], folder / "log")
        yield shlex.join(ssh)
    finally:
        server.terminate()
        server.wait()


def _wait_for(server, login, log):
    deadline = time.monotonic() + 10
    while subprocess.run(login, capture_output=True, check=False, timeout=30,
                         stdin=subprocess.DEVNULL).returncode != 0:
        text = log.read_text(errors="replace")
        if "account is locked" in text:
            pytest.skip("NO OTHER MACHINE WAS TRIED: this user's account is locked")
        assert server.poll() is None and time.monotonic() < deadline, text
        time.sleep(0.05)
