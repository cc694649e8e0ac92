#!/usr/bin/python3
"""Scans a library on all machines of a Dask cluster.

    find /music -iname '*.mp[23]' -print0 |
        scan_library.py tcp://studio1:8786 > library.jsonl

The names of files are read from standard input and end with a NUL. Prints to standard output and
standard error what one `brindle scan --json --quiet -0 -` prints for these names, in their order.
Every machine has the library under the same path, and the same version of brindle.

Exit status: 0 no errors, 1 a file failed or the scan could not be completed, 2 wrong usage,
130 interrupted.
"""

import argparse
import collections
import concurrent.futures
import logging
import os
import socket
import subprocess
import sys

import distributed

# One is scanned, the others wait for a worker or for output of earlier names.
BATCHES_PER_THREAD = 4
# Names are shorter on every system; only a list without NULs has more bytes than this in one.
LONGEST_NAME = 1 << 20


def read_batches(descriptor, size):
    """The names as blocks of about `size` bytes, each of whole names."""
    unfinished = b""
    with open(descriptor, "rb", closefd=False) as stream:
        while block := stream.read(size):
            names, end, unfinished = (unfinished + block).rpartition(b"\0")
            if end:
                yield names + end
            if len(unfinished) > LONGEST_NAME:
                raise ValueError("names on standard input must end with a NUL (find -print0)")
    if unfinished:
        yield unfinished


def scan_batch(program, folder, names):
    """Runs on a worker. Returns the exit status, standard output and standard error."""
    machine = socket.gethostname()
    try:
        done = subprocess.run([program, "scan", "--json", "--quiet", "-0", "-"], cwd=folder,
                              input=names, capture_output=True, check=False)
    except OSError as error:
        what = os.fsdecode(error.filename or program)
        raise RuntimeError(f"{machine}: {what}: {error.strerror}") from None
    if done.returncode not in (0, 1, 2):
        # A signal ended it early, perhaps because the machine shuts down.
        raise RuntimeError(f"{machine}: {program} ended with status {done.returncode}")
    return done.returncode, done.stdout, done.stderr


def write_all(descriptor, data):
    view = memoryview(data)
    while view:
        view = view[os.write(descriptor, view):]


def result_of(batch, client, seconds):
    while True:
        try:
            return batch.result(timeout=seconds)
        except distributed.TimeoutError:
            if not client.nthreads():
                raise RuntimeError("all workers of the cluster are gone") from None


def results_in_order(client, arguments):
    """What scan_batch returns for each batch. No more names are read while the window is full."""
    window = collections.deque()
    for names in read_batches(0, arguments.block):
        # Workers may join and leave.
        threads = sum(client.nthreads().values())
        while len(window) >= BATCHES_PER_THREAD * max(threads, 1):
            yield result_of(window.popleft(), client, arguments.wait)
        # The scheduler gives the batch of a worker that is lost to another one; `retries` is for
        # a program that a signal ended.
        window.append(client.submit(scan_batch, arguments.brindle, os.getcwdb(), names,
                                    pure=False, retries=3))
    while window:
        yield result_of(window.popleft(), client, arguments.wait)


def scan(client, arguments):
    """Returns the exit status."""
    status = 0
    for batch_status, output, messages in results_in_order(client, arguments):
        write_all(1, output)
        write_all(2, messages)
        status = max(status, batch_status)
        if status == 2:
            break
    return status


def parsed_arguments():
    parser = argparse.ArgumentParser(
        description="Scan a library on all machines of a Dask cluster.",
        epilog="example: find /music -iname '*.mp[23]' -print0 | "
               "scan_library.py tcp://studio1:8786 > library.jsonl")
    parser.add_argument("scheduler", help="address of the scheduler, such as tcp://studio1:8786")
    parser.add_argument("--brindle", metavar="PROGRAM", default="brindle",
                        help="the program on the workers (default: brindle, found in their PATH)")
    parser.add_argument("--block", metavar="BYTES", type=int, default=100_000,
                        help="names per call of the program, in bytes (default: 100000)")
    parser.add_argument("--wait", metavar="SECONDS", type=float, default=30,
                        help="time to wait for the scheduler and for a worker (default: 30)")
    arguments = parser.parse_args()
    if arguments.block < 1:
        parser.error("--block must be at least 1")
    return arguments


def main():
    arguments = parsed_arguments()
    # Of a lost connection the client logs the traces of all its attempts to restore it.
    logging.disable()
    try:
        with distributed.Client(arguments.scheduler, timeout=arguments.wait) as client:
            client.wait_for_workers(1, timeout=arguments.wait)
            return scan(client, arguments)
    except KeyboardInterrupt:
        return 130
    except concurrent.futures.CancelledError:
        message = "the connection to the scheduler is lost"
    except OSError as error:
        message = error.strerror or error
    except (RuntimeError, ValueError, distributed.KilledWorker) as error:
        message = error
    print(f"scan_library.py: {message}", file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main())
