"""What a sink plays, sample by sample."""

import functools
import mmap
import os
import wave
from collections import namedtuple

import numpy

from support.waiting import wait_until

RATE = 48000
ANALYSED = 16384  # frames: a third of a second
_HEADER, _RING = 4096, 1 << 22  # bytes, frames; as in listener.cpp
_TURNS = 2 * numpy.pi * numpy.arange(ANALYSED) / ANALYSED
# Blackman-Harris: side lobes are 92 dB down, the main lobe ends four bins (12 Hz) from the tone.
_WINDOW = 0.35875 - 0.48829 * numpy.cos(_TURNS) + 0.14128 * numpy.cos(2 * _TURNS) - 0.01168 * numpy.cos(3 * _TURNS)

# left: samples. position: of the first one, on the graph's clock. complete: no frames were lost.
Recording = namedtuple("Recording", "left position complete")


@functools.cache
def _probe(frequency):
    return 2 / _WINDOW.sum() * _WINDOW * numpy.exp(-2j * numpy.pi * frequency / RATE * numpy.arange(ANALYSED))


def amplitude_of(frequency, samples):
    """The amplitude of a tone among others, from ANALYSED samples."""
    return abs(numpy.dot(samples, _probe(frequency)))


def decibels(ratio):
    return 20 * numpy.log10(max(ratio, 1e-10))


def write_tone(path, frequency, amplitude):
    """Two minutes of a tone, for players of files."""
    second = amplitude * numpy.sin(2 * numpy.pi * frequency / RATE * numpy.arange(RATE))
    with wave.open(str(path), "wb") as file:
        file.setparams((2, 2, RATE, 0, "NONE", ""))
        file.writeframes(numpy.rint(numpy.repeat(second, 2) * 32767).astype("<i2").tobytes() * 120)


def faulty_frames(samples, scale):
    """How many frames of a counter signal of this amplitude were lost, repeated or silent."""
    period = 32768
    places = numpy.flatnonzero(samples)
    counts = numpy.rint(samples[places] / scale * period).astype(int)
    lost = (numpy.diff(counts) - 1 + period // 2) % period - period // 2
    return numpy.maximum(abs(lost), numpy.diff(places) - 1).sum()


class Sink:
    """Keeps a sink running while listening, so that silence is recorded as zeros."""

    def __init__(self, machine, program, name, ends=("FL", "FR")):
        """ends: the two channels that are recorded."""
        listener = f"listener.{name}.{'.'.join(ends)}"
        self.name, self._machine = name, machine
        size = _HEADER + _RING * 8
        memory = os.memfd_create(name)
        os.truncate(memory, size)
        self._process = machine.start(program, listener, f"/dev/fd/{memory}", pass_fds=[memory])
        mapping = mmap.mmap(memory, size, prot=mmap.PROT_READ)
        os.close(memory)
        self._header = numpy.frombuffer(mapping, numpy.uint64, _HEADER // 8)
        self._ring = numpy.frombuffer(mapping, numpy.float32, offset=_HEADER).reshape(-1, 2)
        for end, port in zip(ends, ("left", "right")):
            link = "pw-link", f"{name}:monitor_{end}", f"{listener}:{port}"
            # as soon as both ports exist
            wait_until(lambda: machine.start(*link).wait() == 0, what=" ".join(link))
        wait_until(self.mark, what=f"sound from {name}")

    def close(self):
        self._machine.sinks.pop(self.name)
        self._process.kill()
        self._process.wait()

    def mark(self):
        """The number of frames recorded so far."""
        return int(self._header[0])

    def since(self, mark):
        breaks = [self._header[2 + 2 * (i % 255):4 + 2 * (i % 255)] for i in range(int(self._header[1]))]
        frame, position = next(b for b in reversed(breaks) if b[0] <= mark)
        return Recording(self._frames(mark, self.mark())[:, 0], int(position) + mark - int(frame),
                         breaks[-1][0] <= mark)

    def _frames(self, start, end):
        return self._ring.take(numpy.arange(start, end), axis=0, mode="wrap")

    def amplitude(self, frequency, channel=0):
        """The amplitude of a tone in the last third of a second."""
        mark = self.mark()
        return amplitude_of(frequency, self._frames(max(0, mark - ANALYSED), mark)[:, channel])

    def wait_for_frames(self, count, within=20):
        mark = self.mark()
        wait_until(lambda: self.mark() >= mark + count, within, f"{count} frames at {self.name}")

    def wait_for_tone(self, frequency, amplitude, within=20, tolerance=0.05):
        """Waits until both channels have the tone at this amplitude (0: below -100 dBFS), within a tolerance
        in decibels, for a third of a second after the call."""
        start, levels = self.mark(), []

        def is_heard():
            if self.mark() < start + ANALYSED:
                return False
            levels[:] = [self.amplitude(frequency, channel) for channel in (0, 1)]
            if amplitude == 0:
                return max(levels) < 1e-5
            return all(abs(decibels(level / amplitude)) <= tolerance for level in levels)

        try:
            wait_until(is_heard, within)
        except AssertionError:
            raise AssertionError(f"{frequency} Hz at {self.name}: {amplitude} wanted, {levels} heard "
                                 f"in {within} s") from None

    def wait_for_zeros(self, frames=4800, within=20):
        """Waits until both channels were exactly silent for this many frames after the call."""
        start = self.mark()
        wait_until(lambda: (mark := self.mark()) >= start + frames and not self._frames(mark - frames, mark).any(),
                   within, f"silence at {self.name}")
