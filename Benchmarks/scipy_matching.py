#!/usr/bin/env python3
"""Times template matching with scipy.fft on what the "matching" cases of ./bench search: float volumes of 96, 100 and
160 voxels along each axis, a template of 21 with a ball as its mask, rows of random rotations; the mask fixed, or turned
with the template.

scipy_matching.py [REPETITIONS [ROWS]]

The formula is the one of Docs/template-matching.md: real transforms in single precision of a fast size, two workers,
what does not depend on the row computed once. With a fixed mask the scores are those of zel to 1e-7; with a turned one
they differ by up to 0.02, for a cause that was not looked for. Needs NumPy and SciPy (Debian: python3-scipy).
Take the figures on the same machine as those of ./bench, one right after the other, while nothing else runs.
"""
import sys
import time

import numpy as np
import scipy.fft
from scipy.ndimage import affine_transform

WORKERS = 2


def rotation(phi, theta, psi):
    """Rz(phi) Rx(theta) Rz(psi) for column vectors (x, y, z)."""

    def about(axis, angle):
        i, j = [k for k in range(3) if k != axis]
        turn = np.eye(3)
        turn[i, i] = turn[j, j] = np.cos(angle)
        turn[j, i], turn[i, j] = np.sin(angle), -np.sin(angle)
        return turn

    return about(2, phi) @ about(0, theta) @ about(2, psi)


def turned(volume, turn, grows):
    """The volume turned about its centre, in its own size or in its bounding box."""
    back = turn.T[::-1, ::-1]  # arrays count z, y, x
    last = np.array(volume.shape) - 1
    size = np.array(volume.shape)
    if grows:
        size = np.rint(np.abs(back.T) @ last).astype(int) + 1
    offset = last / 2 - back @ ((size - 1) / 2)
    return affine_transform(volume, back, offset, output_shape=tuple(size), order=1, cval=0, prefilter=False)


class Matcher:
    def __init__(self, image, box):
        self.image = image
        self.box = np.array(box)
        self.shape = [scipy.fft.next_fast_len(n + b - 1, real=True) for n, b in zip(image.shape, box)]
        self.before = (self.box - 1) // 2
        padded = np.pad(image, [(b, s - n - b) for b, s, n in zip(self.before, self.shape, image.shape)])
        self.spectrum = self.forward(padded)
        self.squared = self.forward(padded * padded)
        self.threshold = np.float32(0.01 * image.std(dtype=np.float64) ** 2)
        self.statistics = None

    def forward(self, volume):
        return scipy.fft.rfftn(volume, self.shape, workers=WORKERS)

    def inverse(self, spectrum):
        return scipy.fft.irfftn(spectrum, self.shape, workers=WORKERS, overwrite_x=True)

    def window(self, volume, start):
        return volume[tuple(slice(s, s + n) for s, n in zip(start, self.image.shape))]

    def local_deviation(self, mask, size, count):
        spectrum = self.forward(mask)
        start = np.array(size) // 2 + self.before
        mean = self.window(self.inverse(self.spectrum * spectrum), start) / count
        square = self.window(self.inverse(self.squared * spectrum), start) / count
        variance = np.maximum(square, 0) - mean * mean
        flat = variance < self.threshold
        variance[flat] = 1
        return np.where(flat, np.float32(0), 1 / np.sqrt(variance))

    def row(self, template, mask, mask_is_new):
        inside = mask > 0
        count = np.float32(np.count_nonzero(inside))
        if mask_is_new or self.statistics is None:
            self.statistics = self.local_deviation(mask, mask.shape, count)
        weighted = (template * mask)[inside]
        deviation = weighted.std(dtype=np.float64)
        standard = mask * (template - weighted.mean(dtype=np.float64)) / (deviation if deviation >= 1e-6 else 1)
        spectrum = self.forward(standard.astype(np.float32))
        np.conj(spectrum, out=spectrum)
        spectrum *= self.spectrum
        start = self.before - (np.array(template.shape) - 1) // 2
        scores = self.window(self.inverse(spectrum), start) * self.statistics
        scores /= count
        return np.clip(scores, -1, 1, out=scores)


def match(image, template, mask, rows, follows):
    """The best score and its row for each voxel."""
    turns = [rotation(*row) for row in rows]
    last = np.array(template.shape) - 1
    boxes = [np.rint(np.abs(turn[::-1, ::-1]) @ last).astype(int) + 1 for turn in turns]
    matcher = Matcher(image, np.max(boxes + [np.array(template.shape)], axis=0))
    score = np.full(image.shape, np.finfo(np.float32).min, np.float32)
    index = np.zeros(image.shape, np.uint16)
    for number, turn in enumerate(turns):
        shown = turned(mask, turn, True) if follows else mask
        scores = matcher.row(turned(template, turn, follows), shown, follows)
        better = scores > score
        np.copyto(score, scores, where=better)
        index[better] = number
    return score, index


def main():
    repetitions = int(sys.argv[1]) if len(sys.argv) > 1 else 3
    counts = [int(sys.argv[2])] if len(sys.argv) > 2 else [8, 64]
    random = np.random.default_rng(1)
    template = random.normal(0, 100, (21, 21, 21)).astype(np.float32)
    mask = (np.sum((np.mgrid[:21, :21, :21] - 10) ** 2, axis=0) <= 100).astype(np.float32)
    print(f"{'case':<36} {'best s':>8} {'a row, ms':>10}")
    for size in (96, 100, 160):
        image = random.normal(0, 100, (size, size, size)).astype(np.float32)
        for count in counts:
            angles = (random.uniform(0, 6.28, count), np.arccos(random.uniform(-1, 1, count)),
                      random.uniform(0, 6.28, count))
            rows = np.stack(angles, axis=1)
            for follows in (False, True):
                seconds = []
                for _ in range(repetitions):
                    start = time.perf_counter()
                    match(image, template, mask, rows, follows)
                    seconds.append(time.perf_counter() - start)
                name = f"matching {size} rows {count} {'turning' if follows else 'fixed'} mask"
                print(f"{name:<36} {min(seconds):>8.2f} {1000 * min(seconds) / count:>10.1f}", flush=True)


if __name__ == "__main__":
    main()
