#!/usr/bin/python3
"""The averaged spectrum of a recording as a GNU Radio flow graph, and the signals in it.

    averaged_spectrum_gnuradio.py FILE.cs16 RATE_HZ CENTRE_HZ

Prints a line for each signal at the end of each dwell of 5 s: seconds, centre and width in Hz,
level over the noise in dB.
"""
import sys

import numpy as np
from found_signals import print_signals
from gnuradio import blocks, fft, gr
from gnuradio.fft import window

BINS = 1024
DWELL_SECONDS = 5.0


class SignalPrinter(gr.sync_block):
    """Takes one spectrum for each dwell."""

    def __init__(self, dwell_seconds, rate_hz, centre_hz):
        gr.sync_block.__init__(self, "signals", in_sig=[(np.float32, BINS)], out_sig=None)
        self.dwell_seconds, self.rate_hz, self.centre_hz = dwell_seconds, rate_hz, centre_hz
        self.dwells = 0

    def work(self, input_items, output_items):
        for power in input_items[0]:
            self.dwells += 1
            print_signals(power, self.dwells * self.dwell_seconds, self.rate_hz, self.centre_hz)
        return len(input_items[0])


path, rate_hz, centre_hz = sys.argv[1], float(sys.argv[2]), float(sys.argv[3])
frames_per_dwell = int(DWELL_SECONDS * rate_hz / BINS)
graph = gr.top_block()
printer = SignalPrinter(frames_per_dwell * BINS / rate_hz, rate_hz, centre_hz)  # must stay alive
graph.connect(
    blocks.file_source(gr.sizeof_short, path, False),
    blocks.interleaved_short_to_complex(False, False, 32768.0),
    blocks.stream_to_vector(gr.sizeof_gr_complex, BINS),
    fft.fft_vcc(BINS, True, window.hann(BINS), False, 1),
    blocks.complex_to_mag_squared(BINS),
    blocks.integrate_ff(frames_per_dwell, BINS),
    printer,
)
graph.run()
