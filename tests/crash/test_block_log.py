import pytest

from block_log import Flush, Mark, Write, append, decoded, encoded


def test_a_log_is_read_as_it_was_written(tmp_path):
    events = [Write(4096, b"abc"), Flush(), Mark("start"), Write(0, bytes(100_000)), Mark("done")]
    for event in events:
        append(tmp_path / "log", event)
    assert decoded((tmp_path / "log").read_bytes()) == events


def test_a_record_as_it_stands_in_the_log():
    assert encoded(Write(4096, b"abc")) == b"W\x00\x10\0\0\0\0\0\0\x03\0\0\0abc"
    assert encoded(Flush()) == b"F" + bytes(12)
    assert encoded(Mark("done")) == b"M" + bytes(8) + b"\x04\0\0\0done"


@pytest.mark.parametrize("content", [encoded(Write(0, b"abc"))[:-1], encoded(Flush())[:-1],
                                     b"X" + bytes(12)])
def test_a_damaged_log_is_refused(content):
    with pytest.raises(ValueError):
        decoded(content)
