"""A Dask scheduler and workers on the loopback, each in a process of its own."""

import contextlib
import itertools
import json
import os
import signal
import subprocess
import time

import pytest

SECONDS = 60


class Cluster:
    def __init__(self, folder, program, client):
        self.folder = folder
        self.client = client
        (folder / "bin").mkdir()
        (folder / "bin" / "brindle").symlink_to(program)
        self.names = (f"worker{number}" for number in itertools.count())
        self.workers = {}
        self.scheduler = None
        self.address = None

    def ensure(self, workers):
        """Starts what is missing. What a worker runs finds the name of the worker in WORKER."""
        file = self.folder / "scheduler.json"
        if self.scheduler is None:
            file.unlink(missing_ok=True)
            self.scheduler = self._start("scheduler", "--port", "0", "--scheduler-file", file)
            wait_for(lambda: file.exists() and file.read_text().endswith("}"))
            self.address = json.loads(file.read_text())["address"]
        while len(self.workers) < workers:
            name = next(self.names)
            self.workers[name] = self._start(
                "worker", self.address, "--nthreads", "1", "--no-nanny", "--memory-limit", "0",
                "--local-directory", self.folder, WORKER=name)
        with self.client(self.address, timeout=SECONDS) as client:
            wait_for(lambda: len(client.nthreads()) == len(self.workers))

    def _start(self, kind, *options, **environment):
        environment["PATH"] = f"{self.folder}/bin:{os.environ['PATH']}"
        # The scheduler tries for this time to get results from a worker that was just killed.
        environment["DASK_DISTRIBUTED__COMM__TIMEOUTS__CONNECT"] = "5s"
        with open(self.folder / "log", "ab") as log:
            return subprocess.Popen(
                ["dask", kind, *options, "--host", "127.0.0.1", "--no-dashboard"], cwd=self.folder,
                env={**os.environ, **environment}, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                start_new_session=True)

    def kill_worker(self, name):
        """With all that it runs, as if its machine were switched off."""
        _kill(self.workers.pop(name))

    def kill_all(self):
        if self.scheduler is not None:
            _kill(self.scheduler)
        self.scheduler = None
        for name in list(self.workers):
            self.kill_worker(name)


def _kill(process):
    with contextlib.suppress(ProcessLookupError):
        os.killpg(process.pid, signal.SIGKILL)
    process.wait()


def wait_for(condition):
    deadline = time.monotonic() + SECONDS
    while not (value := condition()):
        assert time.monotonic() < deadline
        time.sleep(0.02)
    return value


@contextlib.contextmanager
def dask_cluster(folder, program):
    """Where `brindle` in the PATH of the workers is this program."""
    with pytest.MonkeyPatch.context() as environment:
        # The settings of the user who runs the tests are in theirs.
        environment.setenv("HOME", str(folder))
        distributed = pytest.importorskip(
            "distributed", reason="NO CLUSTER WAS STARTED: needs python3-distributed")
        cluster = Cluster(folder, program, distributed.Client)
        try:
            yield cluster
        finally:
            cluster.kill_all()
