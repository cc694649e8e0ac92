"""Names of files from standard input, under hard use."""

import json
import os
import subprocess
import threading

import pytest

from mp3_bytes import audio

AUDIO = audio()


def scanned(output):
    """The names, as the system has them."""
    lines = output.decode("utf-8").split("\n")
    assert lines.pop() == ""
    return [os.fsencode(json.loads(line)["file"]) for line in lines]


@pytest.fixture
def scan(brindle):
    def run(given, *options):
        return brindle("scan", "--json", "--quiet", *options, "-", input=given, stdin=None)
    return run


def make(folder, *names):
    for name in names:
        path = os.fsencode(folder) + b"/" + name
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(AUDIO)


@pytest.mark.parametrize("given, options, names", [
    (b"a.mp3\nb.mp3\n", [], [b"a.mp3", b"b.mp3"]),
    (b"a.mp3\nb.mp3", [], [b"a.mp3", b"b.mp3"]),
    (b"\n\na.mp3\n\n", [], [b"a.mp3"]),
    (b"b.mp3\0a.mp3\0", [], [b"b.mp3", b"a.mp3"]),
    (b"b.mp3\0a.mp3", [], [b"b.mp3", b"a.mp3"]),
    (b"x\ny.mp3\0a.mp3\0", [], [b"x\ny.mp3", b"a.mp3"]),
    (b"x\ny.mp3", ["-0"], [b"x\ny.mp3"]),
    (b"x\ny.mp3", ["--null"], [b"x\ny.mp3"]),
    (b"a.mp3\n", ["--null"], [b"a.mp3\n"]),
    (b"", [], []),
    (b"\0", [], []),
    (b"sub\n./a.mp3\n", [], [b"sub/1.mp3", b"sub/2.mp3", b"./a.mp3"]),
    (b"-a.mp3\n--json\n-\n", [], [b"-a.mp3", b"--json", b"-"]),
    (b"\xff.mp3\n", [], [b"\xff.mp3"]),
    (b" a.mp3 \n", [], [b" a.mp3 "]),
    (b"a.mp3\r\n", [], [b"a.mp3\r"]),
], ids=repr)
def test_names_are_taken_byte_for_byte(tmp_path, scan, given, options, names):
    make(tmp_path, b"a.mp3", b"b.mp3", b"x\ny.mp3", b"sub/2.mp3", b"sub/1.mp3", b"-a.mp3",
         b"\xff.mp3")
    result = scan(given, *options)
    assert scanned(result.stdout) == names
    missing = {b"--json", b"-", b" a.mp3 ", b"a.mp3\r", b"a.mp3\n"}
    assert result.returncode == (1 if missing & set(names) else 0)


def test_standard_input_has_its_place_among_the_paths(tmp_path, brindle):
    make(tmp_path, b"a.mp3", b"b.mp3", b"c.mp3")
    result = brindle("scan", "--json", "c.mp3", "-", "a.mp3", "-", input=b"b.mp3\n", stdin=None)
    assert scanned(result.stdout) == [b"c.mp3", b"b.mp3", b"a.mp3"]


def test_leading_dashes_are_names_after_two_dashes(tmp_path, brindle):
    make(tmp_path, b"-a.mp3", b"--json.mp3")
    result = brindle("scan", "--json", "--", "-a.mp3", "--json.mp3")
    assert scanned(result.stdout) == [b"-a.mp3", b"--json.mp3"]
    assert result.returncode == 0


def test_names_that_cross_the_blocks_of_the_input(tmp_path, scan):
    # 64 KiB at a time: names of 13 and 14 bytes end at every place of a block.
    names = [b"%0*d.mp3" % (8 + number % 2, number) for number in range(20_000)]
    make(tmp_path, *names[::1000])
    result = scan(b"\n".join(names))
    assert scanned(result.stdout) == names


def test_what_is_no_list_of_names_is_not_gathered(scan):
    result = scan(b"x" * 10_000_000)
    assert result.returncode == 1
    (name,) = scanned(result.stdout)
    assert len(name) == 65_536
    assert result.stderr.endswith(b": File name too long\n")


def test_closed_standard_input_is_an_error(brindle):
    result = brindle("scan", "--quiet", "-", preexec_fn=lambda: os.close(0))
    assert result.returncode == 1
    assert result.stderr == b"brindle: standard input: Bad file descriptor\n"


def test_folder_as_standard_input_is_an_error(tmp_path, brindle):
    folder = os.open(tmp_path, os.O_RDONLY)
    try:
        result = brindle("scan", "--quiet", "-", stdin=folder)
    finally:
        os.close(folder)
    assert result.returncode == 1
    assert result.stderr == b"brindle: standard input: Is a directory\n"


def test_answers_do_not_wait_for_the_end_of_the_input(program, tmp_path):
    make(tmp_path, b"a.mp3", b"b.mp3")
    with subprocess.Popen([program, "scan", "--json", "--quiet", "-"], cwd=tmp_path,
                          stdin=subprocess.PIPE, stdout=subprocess.PIPE) as run:
        for name in (b"a.mp3", b"b.mp3", b"a.mp3"):
            run.stdin.write(name + b"\n")
            run.stdin.flush()
            assert json.loads(run.stdout.readline())["file"] == name.decode()
        run.stdin.close()
        assert run.wait(timeout=60) == 0


def peak_memory(pid):
    with open(f"/proc/{pid}/status", encoding="ascii") as status:
        for line in status:
            if line.startswith("VmHWM:"):
                return int(line.split()[1]) * 1024
    raise AssertionError("no VmHWM")


def test_hundred_thousand_names_in_order_and_little_memory(program, tmp_path):
    """The names are those of a few files: what matters is that no answer is lost, none overtakes another,
    and none is kept once it is written."""
    make(tmp_path, *(b"%d.mp3" % number for number in range(10)))
    count = 100_000
    given = [b"./%d.mp3" % (number % 10) if number % 10_000 else b"gone/%d.mp3" % number
             for number in range(count)]
    with subprocess.Popen([program, "scan", "--json", "--quiet", "--jobs", "4", "-"], cwd=tmp_path,
                          stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE) as run:
        def feed():
            run.stdin.write(b"\0".join(given) + b"\0")
            run.stdin.flush()

        errors = []
        threads = [threading.Thread(target=feed),
                   threading.Thread(target=lambda: errors.append(run.stderr.read()))]
        for thread in threads:
            thread.start()
        found = []
        for _ in range(count):
            found.append(json.loads(run.stdout.readline())["file"].encode())
        peak = peak_memory(run.pid)
        run.stdin.close()
        assert run.stdout.read() == b""
        assert run.wait(timeout=60) == 1
        for thread in threads:
            thread.join()
    assert found == given
    assert errors[0].count(b"\n") == 10
    # All lines together have more than 80 MB.
    if not os.environ.get("BRINDLE_SANITIZE"):
        assert peak < 40_000_000


def test_reader_that_stops_ends_the_run(program, tmp_path):
    make(tmp_path, b"a.mp3")
    (tmp_path / "names").write_bytes(b"a.mp3\n" * 50_000)
    with open(tmp_path / "names", "rb") as given, subprocess.Popen(
            [program, "scan", "--json", "-"], cwd=tmp_path, stdin=given, stdout=subprocess.PIPE,
            stderr=subprocess.PIPE) as run:
        assert run.stdout.readline().startswith(b'{"file":"a.mp3"')
        run.stdout.close()
        assert run.wait(timeout=60) == 1
        assert run.stderr.read() == b""


def test_full_disk_is_told(tmp_path, brindle):
    make(tmp_path, b"a.mp3")
    with open("/dev/full", "wb") as full:
        result = brindle("scan", "--json", "--jobs", "4", ".", stdout=full)
    assert result.returncode == 1
    assert result.stderr == b"brindle: standard output: No space left on device\n"


def test_folder_that_changes_while_it_is_walked(program, tmp_path):
    """Files come and go, folders are moved: whatever stays is found, in order, and the run ends."""
    staying = [b"%03d/stay.mp3" % number for number in range(200)]
    make(tmp_path, *staying, *(b"%03d/gone.mp3" % number for number in range(200)))
    ended = threading.Event()

    def change():
        number = 0
        while not ended.is_set():
            folder = tmp_path / f"{number % 200:03}"
            (folder / "gone.mp3").unlink(missing_ok=True)
            (folder / "new").mkdir(exist_ok=True)
            (folder / "new" / "x.mp3").write_bytes(AUDIO[:100])
            os.rename(folder / "new" / "x.mp3", folder / "gone.mp3")
            (folder / "new").rmdir()
            number += 1

    changing = threading.Thread(target=change)
    changing.start()
    try:
        for _ in range(5):
            result = subprocess.run([program, "scan", "--json", "--quiet", "."], cwd=tmp_path,
                                    capture_output=True, timeout=60, check=False)
            assert result.returncode in (0, 1)
            found = scanned(result.stdout)
            # The name of a folder that vanished is at the folder's place.
            assert [name for name in found if name.endswith(b"stay.mp3")] == [
                b"./" + name for name in staying]
            for line in result.stderr.splitlines():
                assert line.endswith((b": No such file or directory", b": Not a directory"))
    finally:
        ended.set()
        changing.join()
