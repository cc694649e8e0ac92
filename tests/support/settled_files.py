"""`--cache` reads a file again whose status changed less than 2 seconds before it was read."""

import time


def wait_until_settled():
    time.sleep(3.1)
