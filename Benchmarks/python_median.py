#!/usr/bin/env python3
"""Times OpenCV's medianBlur and scipy.ndimage.median_filter on what the "median" cases of ./bench filter: random images of
2048 x 2048 pixels, squares of the same radii, on two threads where they have a use for them.

python_median.py [REPETITIONS]

OpenCV has radius 1 and 2 for all types, larger ones for uint8. SciPy is timed once, and up to radius 7: it takes ten
seconds and more. Needs NumPy, OpenCV and SciPy (pip: opencv-python-headless, scipy). Take the figures on the same machine
as those of ./bench, one right after the other, while nothing else runs.
"""
import statistics
import sys
import time

import cv2
import numpy as np
import scipy.ndimage


def milliseconds(run, repetitions):
    def timed():
        start = time.perf_counter()
        run()
        return 1000 * (time.perf_counter() - start)

    if repetitions > 1:
        run()  # touches the memory
    return [timed() for _ in range(repetitions)]


def main():
    repetitions = int(sys.argv[1]) if len(sys.argv) > 1 else 15
    cv2.setNumThreads(2)
    random = np.random.default_rng(1)
    images = {
        "u8": random.integers(0, 256, (2048, 2048), dtype=np.uint8),
        "u16": random.integers(0, 65536, (2048, 2048), dtype=np.uint16),
        "float": random.normal(0, 100, (2048, 2048)).astype(np.float32),
    }
    print(f"{'case':<20} {'OpenCV ' + cv2.__version__ + ' (min .. max)':>36} {'SciPy ' + scipy.__version__:>14}  ms")
    for radius in (1, 2, 3, 7, 15, 30):
        for name, image in images.items():
            size = 2 * radius + 1
            opencv = scipys = "-"
            if radius <= 2 or name == "u8":
                result = np.empty_like(image)
                times = milliseconds(lambda: cv2.medianBlur(image, size, result), repetitions)
                opencv = f"{statistics.median(times):.2f} ({min(times):.2f} .. {max(times):.2f})"
            if radius <= 7:
                scipys = f"{milliseconds(lambda: scipy.ndimage.median_filter(image, size, mode='mirror'), 1)[0]:.0f}"
            print(f"{f'median {name} radius {radius}':<20} {opencv:>36} {scipys:>14}", flush=True)


if __name__ == "__main__":
    main()
