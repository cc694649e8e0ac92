"""Programs that we did not write, and what they print."""

import json
import os
import subprocess

# Some of them take their arguments, or write texts, by the locale.
ENVIRONMENT = {**os.environ, "LC_ALL": "C.UTF-8"}


def output_of(*command, stderr=subprocess.PIPE):
    """What a command that has to succeed prints."""
    return subprocess.run([str(part) for part in command], check=True, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=stderr, env=ENVIRONMENT).stdout


def run(*command):
    output_of(*command)


def json_lines(output):
    """One value for each line of the program's --json."""
    lines = output.decode("utf-8").split("\n")
    assert lines.pop() == "", "the last line ends, too"
    return [json.loads(line) for line in lines]
