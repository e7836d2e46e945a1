#!/usr/bin/env python3
"""Times scipy.ndimage.gaussian_filter on what the "gaussian" cases of ./bench filter: 256^3 voxels, float and uint16,
kernels of four standard deviations on either side, the border mirrored with the edge voxel repeated.

scipy_gaussian.py [REPETITIONS]

scipy has no use for a second thread here. Needs NumPy and SciPy (Debian: python3-scipy). Take the figures on the same
machine as those of ./bench, one right after the other, while nothing else runs.
"""
import statistics
import sys
import time

import numpy as np
from scipy.ndimage import gaussian_filter


def milliseconds(volume, sigma, repetitions):
    result = np.empty_like(volume)

    def run():
        start = time.perf_counter()
        gaussian_filter(volume, sigma, output=result, mode="reflect", truncate=4.0)
        return 1000 * (time.perf_counter() - start)

    run()  # touches the memory
    return [run() for _ in range(repetitions)]


def main():
    repetitions = int(sys.argv[1]) if len(sys.argv) > 1 else 7
    random = np.random.default_rng(1)
    volumes = {
        "float": random.normal(0, 100, (256, 256, 256)).astype(np.float32),
        "u16": random.integers(0, 65536, (256, 256, 256), dtype=np.uint16),
    }
    print(f"{'case':<24} {'median ms':>10} {'(min .. max)':>20}")
    for sigma in (1, 3):
        for name, volume in volumes.items():
            times = milliseconds(volume, sigma, repetitions)
            spread = f"{min(times):.0f} .. {max(times):.0f}"
            print(f"{f'gaussian {name} sigma {sigma}':<24} {statistics.median(times):>10.0f} {spread:>20}", flush=True)


if __name__ == "__main__":
    main()
