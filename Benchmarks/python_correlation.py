#!/usr/bin/env python3
"""Times what Python users have for the work of the "correlation" cases of ./bench: scipy.signal.fftconvolve,
cv2.matchTemplate and skimage.feature.match_template, on float images of random pixels with a template cut from them.

python_correlation.py [REPETITIONS]

SciPy correlates like ours in mode plain; OpenCV gives the plain correlation, and that with the template's mean removed,
of the places where the template lies wholly in the image; scikit-image's is normalised too. Packages that are missing
are left out. Take the figures on the same machine as those of ./bench, one right after the other, while nothing else
runs.
"""
import statistics
import sys
import time

import numpy as np

CASES = [(512, 15), (512, 65), (512, 129)] + [(size, t) for size in (1024, 2048, 4096) for t in (15, 65, 129, 511)]
THREADS = (1, 2)


def scipy_peers():
    import scipy.fft
    from scipy.signal import fftconvolve

    def correlate(image, template, threads):
        with scipy.fft.set_workers(threads):
            return fftconvolve(image, template[::-1, ::-1], mode="same")

    return [("scipy.signal.fftconvolve", THREADS, correlate)]


def opencv_peers():
    import cv2

    def correlate(method):
        def run(image, template, threads):
            cv2.setNumThreads(threads)
            return cv2.matchTemplate(image, template, method)

        return run

    return [("cv2 TM_CCORR", THREADS, correlate(cv2.TM_CCORR)), ("cv2 TM_CCOEFF", THREADS, correlate(cv2.TM_CCOEFF))]


def skimage_peers():
    from skimage.feature import match_template

    return [("skimage match_template", (1,), lambda image, template, _: match_template(image, template))]


def milliseconds(run, repetitions):
    times = []
    for _ in range(repetitions + 1):
        start = time.perf_counter()
        run()
        times.append(1000 * (time.perf_counter() - start))
    return times[1:]  # the first one warms up


def main():
    repetitions = int(sys.argv[1]) if len(sys.argv) > 1 else 5
    peers = []
    for make in (scipy_peers, opencv_peers, skimage_peers):
        try:
            peers += make()
        except ImportError as error:
            print(f"left out: {error}")
    random = np.random.default_rng(1)
    print(f"{'case':<22} {'peer':<26} {'threads':>7} {'median ms':>10} {'(min .. max)':>20}")
    for size, t in CASES:
        image = random.normal(0, 100, (size, size)).astype(np.float32)
        template = image[size // 4 : size // 4 + t, size // 3 : size // 3 + t].copy()
        for name, threads, correlate in peers:
            for count in threads:
                times = milliseconds(lambda: correlate(image, template, count), repetitions)
                spread = f"{min(times):.1f} .. {max(times):.1f}"
                print(
                    f"{f'{size} template {t}':<22} {name:<26} {count:>7} {statistics.median(times):>10.1f} "
                    f"{spread:>20}",
                    flush=True,
                )


if __name__ == "__main__":
    main()
