"""The signals in an averaged spectrum, for the Python contenders."""
import numpy as np

THRESHOLD_DB = 12.0


def print_signals(power, seconds, rate_hz, centre_hz):
    """Prints runs of two or more bins that stand out of the median by the threshold.

    power: sums of squared magnitudes, as a transform orders them, the centre first.
    """
    levels = 10.0 * np.log10(np.fft.fftshift(power) + 1e-20)
    floor_db = np.median(levels)
    above = np.concatenate(([0], levels > floor_db + THRESHOLD_DB, [0]))
    edges = np.flatnonzero(np.diff(above))
    bin_hz = rate_hz / power.size
    for first, end in edges.reshape(-1, 2):
        if end - first < 2:
            continue
        centre = centre_hz + ((first + end - 1) / 2 - power.size // 2) * bin_hz
        level_db = levels[first:end].max() - floor_db
        print(f"{seconds:.1f} {centre:.0f} {(end - first) * bin_hz:.0f} {level_db:.1f}", flush=True)
