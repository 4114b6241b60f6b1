#!/usr/bin/python3
"""The averaged spectrum of a recording with scipy, and the signals in it.

    averaged_spectrum_scipy.py FILE.cs16 RATE_HZ CENTRE_HZ

Prints a line for each signal at the end of each dwell of 5 s: seconds, centre and width in Hz,
level over the noise in dB.
"""
import os
import sys

import numpy as np
from found_signals import print_signals
from scipy import fft, signal

BINS = 1024
FRAMES_PER_READ = 256  # 2 MB of complex numbers: what the processor's cache holds
DWELL_SECONDS = 5.0

path, rate_hz, centre_hz = sys.argv[1], float(sys.argv[2]), float(sys.argv[3])
frames_per_dwell = int(DWELL_SECONDS * rate_hz / BINS)
window = np.repeat(signal.windows.hann(BINS).astype(np.float32), 2)  # for both parts
windowed = np.empty((FRAMES_PER_READ, 2 * BINS), np.float32)
dwells = 0

with open(path, "rb") as file:
    while True:
        power = np.zeros(BINS)
        left = frames_per_dwell
        while left > 0:
            raw = np.fromfile(file, np.int16, 2 * BINS * min(left, FRAMES_PER_READ))
            frames = raw[: raw.size // (2 * BINS) * 2 * BINS].reshape(-1, 2 * BINS)
            if len(frames) == 0:
                sys.exit()
            samples = np.multiply(frames, window, out=windowed[: len(frames)]).view(np.complex64)
            spectra = fft.fft(samples, overwrite_x=True, workers=os.cpu_count())
            parts = spectra.view(np.float32)
            power += np.einsum("ij,ij->j", parts, parts).reshape(BINS, 2).sum(axis=1)
            left -= len(frames)
        dwells += 1
        print_signals(power, dwells * frames_per_dwell * BINS / rate_hz, rate_hz, centre_hz)
