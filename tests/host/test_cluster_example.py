"""examples/cluster/scan_library.py: several machines print what one `brindle scan` prints."""

import os
import pathlib
import re
import select
import signal
import subprocess

import pytest

from dask_cluster import dask_cluster, wait_for
from mp3_bytes import audio, id3v1
from test_readme import pipelines, run_in_shell

pytestmark = [pytest.mark.deep, pytest.mark.filterwarnings("ignore:make_current is deprecated")]

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "examples" / "cluster" / "scan_library.py"
SECONDS = 60


@pytest.fixture(scope="module")
def shared_cluster(tmp_path_factory, program):
    with dask_cluster(tmp_path_factory.mktemp("cluster"), program) as cluster:
        yield cluster


@pytest.fixture
def cluster(shared_cluster):
    """A scheduler and three workers."""
    shared_cluster.ensure(workers=3)
    return shared_cluster


@pytest.fixture
def library(tmp_path):
    """Names of files in the folder `music`, with and without its path, separated by NULs."""
    folder = os.fsencode(tmp_path) + b"/music"
    os.mkdir(folder)
    names = [b"\xff\xfe.mp3", b"line\nfeed.mp3", b" .mp3", b"caf\xc3\xa9.MP3", b"'\"$(x)`.mp3"]
    names += [b"%03d.mp3" % number for number in range(200)]
    for name in names:
        with open(folder + b"/" + name, "wb") as file:
            file.write(audio() + id3v1(title=name[:30]))
    os.mkdir(folder + b"/album.mp3")
    os.link(folder + b"/000.mp3", folder + b"/album.mp3/b.mp3")
    os.link(folder + b"/001.mp3", folder + b"/album.mp3/a.mp2")
    absent = [b"absent\xff.mp3", b"-.mp3", b"absent\n.mp3"]
    names[60:60] = [*absent, b"album.mp3", b"", b"000.mp3"]
    names += [folder + b"/" + name for name in reversed(names) if name]
    return b"\0".join(names)


@pytest.fixture
def stand_in(tmp_path, program):
    """A program on the workers that runs `brindle` after these lines."""

    def made(lines):
        path = tmp_path / "stand-in"
        path.write_text(f'#!/bin/sh\ncd {tmp_path}\n{lines}\ncd "$OLDPWD"\nexec {program} "$@"\n')
        path.chmod(0o755)
        return path

    return made


@pytest.fixture
def started(tmp_path):
    """Starts the script; its output goes to the files `out` and `err`."""
    processes = []

    def start(address, names, *options):
        (tmp_path / "names").write_bytes(names)
        with (open(tmp_path / "names", "rb") as stdin, open(tmp_path / "out", "wb") as out,
              open(tmp_path / "err", "wb") as err):
            processes.append(subprocess.Popen(
                [SCRIPT, address, *options], cwd=tmp_path / "music", stdin=stdin, stdout=out,
                stderr=err))
        return processes[-1]

    yield start
    for process in processes:
        process.kill()
        process.wait()


@pytest.fixture
def result_of(tmp_path):
    """The script's exit status, standard output and standard error."""

    def ended(process):
        status = process.wait(timeout=SECONDS)
        return status, (tmp_path / "out").read_bytes(), (tmp_path / "err").read_bytes()

    return ended


@pytest.fixture
def of_one_program(program, tmp_path, library):
    """What one program prints about the library."""
    done = subprocess.run([program, "scan", "--json", "--quiet", "-0", "-"], input=library,
                          cwd=tmp_path / "music", capture_output=True, check=False,
                          timeout=SECONDS)
    # In two forms: 206 files, 3 that are absent, and a folder with 2.
    assert done.stdout.count(b"\n") == 2 * (206 + 3 + 2)
    assert done.stderr.count(b"No such file") == 6
    return done.returncode, done.stdout, done.stderr


def test_worker_is_killed_while_it_scans(cluster, library, stand_in, started, result_of,
                                         of_one_program, tmp_path):
    victim = next(iter(cluster.workers))
    brindle = stand_in(f"""
echo $WORKER >>calls
if [ $WORKER = {victim} ] && [ $(grep -cx $WORKER calls) -eq 2 ]; then
    touch killed-here
    exec sleep {SECONDS}
fi""")
    scan = started(cluster.address, library, "--brindle", brindle, "--block", "500")
    workers = set(cluster.workers)
    wait_for((tmp_path / "killed-here").exists)
    assert scan.poll() is None
    cluster.kill_worker(victim)
    assert result_of(scan) == of_one_program
    calls = (tmp_path / "calls").read_text().split()
    assert set(calls) == workers
    assert calls.count(victim) == 2


def test_signal_ends_the_program_on_a_worker(cluster, library, stand_in, started, result_of,
                                             of_one_program):
    brindle = stand_in("mkdir first 2>/dev/null && kill -TERM $$")
    scan = started(cluster.address, library, "--brindle", brindle, "--block", "2000")
    assert result_of(scan) == of_one_program


def test_readme_line_prints_what_one_program_prints(cluster, library, program, tmp_path):
    (tmp_path / "examples").symlink_to(SCRIPT.parents[1])
    (command,) = [one for one in pipelines() if "scan_library" in one]
    run_in_shell(command.replace("tcp://studio1:8786", cluster.address), tmp_path)
    run_in_shell("find /music -iname '*.mp[23]' -print0 | "
                 f"{program} scan --json --quiet -0 - > one", tmp_path)
    printed = (tmp_path / "library.jsonl").read_bytes()
    assert printed == (tmp_path / "one").read_bytes()
    # The folder with 2 files has such a name, too.
    assert printed.count(b"\n") == 205 + 2 + 2


def test_few_names_are_read_ahead(cluster, stand_in, tmp_path):
    brindle = stand_in("mkdir first 2>/dev/null && while [ ! -e open ]; do sleep 0.05; done")
    block = 20_000
    scan = subprocess.Popen([SCRIPT, cluster.address, "--brindle", brindle, "--block", str(block)],
                            cwd=tmp_path, stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                            stderr=subprocess.PIPE)
    pipe = scan.stdin.fileno()
    os.set_blocking(pipe, False)
    written = 0

    def write_until_full(seconds):
        nonlocal written
        while written < 4_000_000 and select.select([], [pipe], [], seconds)[1]:
            written += os.write(pipe, b"absent.mp3\0" * 300)
        return written

    try:
        # 12 batches are in the window, and one waits to enter it. Of the first three those before
        # the one that hangs are done. The rest is in the pipe and in a buffer.
        wait_for(lambda: write_until_full(seconds=0) >= 13 * block)
        assert write_until_full(seconds=2) <= 15 * block + (64 + 8) * 1024
        assert (tmp_path / "first").exists()
        scan.send_signal(signal.SIGINT)
        assert scan.wait(timeout=SECONDS) == 130
        assert b"Traceback" not in scan.stderr.read()
    finally:
        (tmp_path / "open").touch()
        scan.kill()
        scan.communicate()


FAILURES = {
    "no program": ("", ["--brindle", "/nowhere/brindle"], 1,
                   b"scan_library.py: .*: /nowhere/brindle: No such file or directory\n"),
    "signal at each attempt": ("kill -TERM $$", [], 1,
                               b"scan_library.py: .*/stand-in ended with status -15\n"),
    "wrong usage": ("echo unknown option >&2; exit 2", ["--block", "2000"], 2,
                    b"unknown option\n"),
}


@pytest.mark.parametrize("lines, options, status, message", FAILURES.values(), ids=FAILURES)
def test_failure_of_the_program_ends_the_scan(cluster, library, stand_in, started, result_of, lines,
                                              options, status, message):
    scan = started(cluster.address, library, "--brindle", stand_in(lines), *options)
    ended, output, messages = result_of(scan)
    assert (ended, output) == (status, b"")
    assert re.fullmatch(message, messages)


def test_names_without_nul_are_refused(cluster, library, started, result_of):
    scan = started(cluster.address, b"/music/a.mp3\n" * 200_000)
    assert result_of(scan) == (1, b"", b"scan_library.py: names on standard input must end with a "
                                       b"NUL (find -print0)\n")


def test_full_disk_is_reported(cluster):
    with open("/dev/full", "wb") as full:
        done = subprocess.run([SCRIPT, cluster.address], input=b"a.mp3\0", stdout=full,
                              stderr=subprocess.PIPE, check=False, timeout=SECONDS)
    assert (done.returncode, done.stderr) == (1, b"scan_library.py: No space left on device\n")


LOSSES = {
    "workers": b"scan_library.py: all workers of the cluster are gone\n",
    "scheduler": b"scan_library.py: the connection to the scheduler is lost\n",
}


@pytest.mark.parametrize("lost", LOSSES)
def test_loss_of_the_cluster_ends_the_scan(shared_cluster, library, stand_in, started, result_of,
                                           tmp_path, lost):
    cluster = shared_cluster
    cluster.ensure(workers=1)
    brindle = stand_in(f"touch begun; exec sleep {SECONDS}")
    scan = started(cluster.address, library, "--brindle", brindle, "--wait", "3")
    wait_for((tmp_path / "begun").exists)
    if lost == "scheduler":
        cluster.kill_all()
    else:
        for name in list(cluster.workers):
            cluster.kill_worker(name)
    assert result_of(scan) == (1, b"", LOSSES[lost])


def test_scheduler_that_does_not_answer(shared_cluster, library, started, result_of):
    # Port 1 is reserved, and no server uses it.
    status, output, messages = result_of(started("tcp://127.0.0.1:1", library, "--wait", "1"))
    assert (status, output) == (1, b"")
    assert re.fullmatch(b"scan_library.py: .*127.0.0.1:1.*\n", messages)
