"""The source of the manual: a page for each command."""

import pathlib

FOLDER = pathlib.Path(__file__).resolve().parents[2] / "docs" / "manual"


def page_of(command):
    return (FOLDER / f"brindle-{command}.1.scd").read_text(encoding="utf-8")
