"""Waiting for what a desktop does in its own time."""

import time

PATIENCE = 60  # seconds; much more than anything takes on a machine that is not overloaded


class NotInTime(AssertionError):
    """What was waited for did not come about."""


def until(condition, what, seconds=PATIENCE):
    """The first true answer of condition(), which is asked again and again.

    Fails with `what` after `seconds`. An error of the last question is told, those before are not: a window
    may go while it is read.
    """
    end = time.monotonic() + seconds
    pause = 0.01
    while True:
        trouble = None
        try:
            answer = condition()
            if answer:
                return answer
        except Exception as error:  # whatever a bus or a child process comes up with
            trouble = error
        if time.monotonic() > end:
            raise NotInTime(f"not within {seconds} s: {what}") from trouble
        time.sleep(pause)
        pause = min(pause * 1.5, 0.2)
