"""The Wine that runs the tests."""

import re
import subprocess

from conftest import ROOT


def test_wine_is_made_once_and_tells_its_place_and_size():
    both = [subprocess.Popen([ROOT / "scripts" / "wine", "get"], stdin=subprocess.DEVNULL,
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
            for _ in range(2)]
    for one in both:
        printed = one.communicate(timeout=60)[0]
        assert one.returncode == 0
        assert re.fullmatch(r"Wine: /\S+, [0-9.]+GB\n", printed), printed
