"""Reads the measuring sink's log (see MeasuringSink.cpp): when audio first arrived after a moment, and how
many frames were rendered in total after it."""


def _lines(path):
    try:
        with open(path) as log:
            for line in log:
                fields = line.split()
                if len(fields) == 3:
                    yield fields[0], int(fields[1]) / 1e9, int(fields[2])
    except OSError:
        return


def first_audio_after(path, since):
    """Seconds (CLOCK_MONOTONIC, as Python's time.monotonic) of the first buffer at or after `since`."""
    for kind, when, _ in _lines(path):
        if kind == "first" and when >= since:
            return when
    return None


def frames_after(path, since):
    """(frames rendered, pipeline starts that rendered audio, silence between them in seconds) after
    `since`: the frames of every "end" line, the starts counted by their "first" lines."""
    frames = 0
    starts = 0
    silence = 0.0
    last_end = None
    for kind, when, count in _lines(path):
        if when < since:
            continue
        if kind == "first":
            starts += 1
            if last_end is not None:
                silence += when - last_end
        elif kind == "end":
            frames += count
            last_end = when
    return frames, starts, silence
