"""The program as another user than the one who runs the tests."""

import os
import shutil
import subprocess
import tempfile

import pytest

NOBODY = 65534

needs_root = pytest.mark.skipif(os.geteuid() != 0 or shutil.which("setpriv") is None,
                                reason="becomes another user through setpriv, as root")


def as_nobody(*command, cwd):
    with tempfile.TemporaryDirectory() as state:
        os.chown(state, NOBODY, NOBODY)
        return subprocess.run(["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}",
                               "--clear-groups", *command], cwd=cwd, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60,
                              check=False, env={**os.environ, "XDG_STATE_HOME": state})
