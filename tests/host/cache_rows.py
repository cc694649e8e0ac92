"""The database of `--cache`, seen and changed by another program."""

import contextlib
import sqlite3


def facts(result):
    """What a run with the cache and one without it have in common."""
    return result.returncode, result.stdout, result.stderr


@contextlib.contextmanager
def opened(path):
    connection = sqlite3.connect(path, isolation_level=None)
    connection.text_factory = bytes
    try:
        yield connection
    finally:
        connection.close()


def rows(path, columns, table="files"):
    with opened(path) as database:
        return sorted(database.execute(f"SELECT {columns} FROM {table}"))


def change(path, sql, *values):
    with opened(path) as database:
        return database.execute(sql, values).rowcount


def is_whole(path):
    with opened(path) as database:
        return database.execute("PRAGMA integrity_check").fetchall() == [(b"ok",)]
