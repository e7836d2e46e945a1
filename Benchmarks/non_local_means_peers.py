#!/usr/bin/env python3
"""Compares `zel non-local-means` with scikit-image's denoise_nl_means (fast_mode) and OpenCV's fastNlMeansDenoising
and, where the contributed modules are there, its adaptive-manifold filter over four principal components of patches:
peak signal-to-noise ratio and time, on phantoms with Gaussian noise.

non_local_means_peers.py [--zel PROGRAM] [--repetitions N] [--linearity | --defaults]

The settings of each are those that were best on phantoms of another seed, smaller ones, with the same noise; patches
have 5 voxels a side throughout. Times are the best of all repetitions, in milliseconds, on two threads where they are
of use; ours is that of the run without reading and writing files. CPU times are those of all threads together, ours
with the start of the program and its files; they are less disturbed where other programs run. --linearity measures only ours, from 256 x 256 to
2048 x 2048. --defaults tells for each pair of sigmas by how many dB it stays behind the best one, over images and
volumes with noise of 10, 20 and 30. Needs NumPy, scikit-image, opencv-contrib-python-headless:

    python3 -m venv build-bench/peers
    build-bench/peers/bin/pip install numpy scikit-image opencv-contrib-python-headless
    build-bench/peers/bin/python Benchmarks/non_local_means_peers.py
"""
import argparse
import json
import os
import pathlib
import subprocess
import tempfile
import time

import cv2
import numpy as np
from skimage.restoration import denoise_nl_means

NOISE = 20
SIDE = 5


def phantom(shape, seed):
    """Balls and boxes in front of a slope, with a striped strip below in 2D; values from 20 to 220."""
    random = np.random.default_rng(seed)
    axes = np.stack(np.meshgrid(*[np.arange(n) / n for n in shape], indexing="ij"))
    values = 60 + 60 * axes[-1]
    for shape_index in range(24):
        offsets = np.abs(axes - random.random(len(shape)).reshape((-1,) + (1,) * len(shape)))
        radius = 0.03 + 0.1 * random.random()
        inside = (offsets**2).sum(0) < radius**2 if shape_index % 2 else offsets.max(0) < radius
        values[inside] = 20 + 200 * random.random()
    if len(shape) == 2:
        stripes = axes[0] > 0.85
        values[stripes] = (120 + 60 * np.sin(2 * np.pi * np.arange(shape[1]) / 16) + 0 * axes[0])[stripes]
    return values


def noisy(clean, dtype, seed, noise=NOISE):
    values = np.clip(clean + np.random.default_rng(seed).normal(0, noise, clean.shape), 0, 255)
    return (values.round() if dtype == np.uint8 else values).astype(dtype)


def ratio(image, clean):
    """Peak signal-to-noise ratio in dB."""
    return 10 * np.log10(255**2 / np.mean((image.astype(float) - clean) ** 2))


def timed(run):
    start, cpu_start = time.perf_counter(), time.process_time()
    result = run()
    return result, time.perf_counter() - start, time.process_time() - cpu_start


class Zel:
    name = "zel non-local-means"
    settings = [dict(spatial=s, range=r) for s in (2, 3, 4, 5, 8, 16) for r in (0.1, 0.15, 0.2, 0.25, 0.3, 0.4)]

    def __init__(self, program):
        self.program = program

    @staticmethod
    def takes(image):
        return True

    def __call__(self, image, setting):
        with tempfile.TemporaryDirectory() as folder:
            source, target = pathlib.Path(folder, "in.npy"), pathlib.Path(folder, "out.npy")
            np.save(source, image)
            command = [self.program, "non-local-means", source, target, "--threads", "2", "--json", "--output-type",
                       "float32", "--spatial-sigma", str(setting["spatial"]), "--range-sigma", str(setting["range"])]
            start = os.times()
            report = json.loads(subprocess.run(command, check=True, capture_output=True, text=True).stdout)
            end = os.times()
            cpu = end.children_user + end.children_system - start.children_user - start.children_system
            return np.load(target), report["seconds"], cpu


class ScikitImage:
    name = "scikit-image, fast_mode"
    settings = [dict(h=h, distance=d) for h in (0.6, 0.8, 1.0, 1.2) for d in (3, 6)]

    @staticmethod
    def takes(image):
        return True

    def __call__(self, image, setting):
        return timed(lambda: denoise_nl_means(image.astype(np.float32), patch_size=SIDE,
                                              patch_distance=setting["distance"], h=setting["h"] * NOISE,
                                              sigma=NOISE, fast_mode=True))


class OpenCv:
    name = f"OpenCV {cv2.__version__}, fastNlMeansDenoising"
    settings = [dict(h=h, search=s) for h in (10, 14, 18, 22, 26, 30) for s in (13, 21)]

    @staticmethod
    def takes(image):
        return image.dtype == np.uint8 and image.ndim == 2

    def __call__(self, image, setting):
        return timed(lambda: cv2.fastNlMeansDenoising(image, None, setting["h"], SIDE, setting["search"]))


class OpenCvManifolds:
    name = f"OpenCV {cv2.__version__}, amFilter over patches' components"
    settings = [dict(spatial=s, range=r) for s in (4, 8, 16) for r in (0.1, 0.2, 0.3, 0.5)]

    @staticmethod
    def takes(image):
        return hasattr(cv2, "ximgproc") and image.ndim == 2

    def __call__(self, image, setting):
        return timed(lambda: self.filtered(image.astype(np.float32) / 255, setting))

    @staticmethod
    def filtered(image, setting):
        offsets = np.arange(SIDE) - SIDE // 2
        weights = np.exp(-(offsets[:, None] ** 2 + offsets**2) / (SIDE // 2))
        rows, columns = (np.random.default_rng(1).integers(2, n - 2, 400) for n in image.shape)
        sample = np.stack([(image[y - 2:y + 3, x - 2:x + 3] * weights).ravel() for y, x in zip(rows, columns)])
        directions = np.linalg.svd(sample - sample.mean(0), full_matrices=False)[2][:4]
        joint = cv2.merge([cv2.filter2D(image, -1, (d.reshape(SIDE, SIDE) * weights).astype(np.float32))
                           for d in directions])
        return 255 * cv2.ximgproc.amFilter(joint, image, setting["spatial"], setting["range"])


def linearity(zel, repetitions):
    for side in (256, 512, 1024, 2048):
        image = noisy(phantom((side, side), 5), np.float32, 6)
        for spatial in (4, 16):
            seconds = min(zel(image, dict(spatial=spatial, range=0.2))[1] for _ in range(repetitions))
            print(f"{side} x {side}, spatial sigma {spatial}: {1e9 * seconds / side**2:.0f} ns a voxel", flush=True)


def defaults(zel):
    losses = {}
    for shape in ((256, 256), (48, 48, 48)):
        clean = phantom(shape, 7)
        for noise in (10, 20, 30):
            image = noisy(clean, np.float32, 8, noise)
            ratios = [ratio(zel(image, setting)[0], clean) for setting in zel.settings]
            print(f"{shape}, noise {noise}: best {zel.settings[int(np.argmax(ratios))]}", flush=True)
            for setting, value in zip(zel.settings, ratios):
                losses.setdefault(tuple(setting.values()), []).append(max(ratios) - value)
    for (spatial, range_sigma), behind in losses.items():
        print(f"spatial sigma {spatial}, range sigma {range_sigma}: {np.mean(behind):.2f} dB behind, at most "
              f"{max(behind):.2f}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--zel", default="build/bin/zel")
    parser.add_argument("--repetitions", type=int, default=5)
    parser.add_argument("--linearity", action="store_true")
    parser.add_argument("--defaults", action="store_true")
    options = parser.parse_args()
    cv2.setNumThreads(2)
    zel = Zel(options.zel)
    if options.linearity:
        return linearity(zel, options.repetitions)
    if options.defaults:
        return defaults(zel)
    print(f"{'':<58} {'dB':>6} {'ms':>8} {'CPU ms':>8}  setting")
    for shape, small, dtype in (((1024, 1024), (384, 384), np.uint8), ((1024, 1024), (384, 384), np.float32),
                                ((64, 64, 64), (28, 28, 28), np.float32)):
        clean = phantom(shape, 5)
        image = noisy(clean, dtype, 6)
        case = f"{' x '.join(map(str, shape))} {np.dtype(dtype)}"
        print(f"{case + ', noisy':<58} {ratio(image, clean):6.1f}", flush=True)
        other = phantom(small, 7)
        for contender in (zel, ScikitImage(), OpenCv(), OpenCvManifolds()):
            if not contender.takes(image):
                continue
            other_noisy = noisy(other, dtype, 8)
            best = max(contender.settings, key=lambda setting: ratio(contender(other_noisy, setting)[0], other))
            results = [contender(image, best) for _ in range(1 if len(shape) == 3 else options.repetitions)]
            wall, cpu = (1000 * min(result[i] for result in results) for i in (1, 2))
            print(f"{contender.name:<58} {ratio(results[0][0], clean):6.1f} {wall:8.0f} {cpu:8.0f}  {best}", flush=True)


if __name__ == "__main__":
    main()
