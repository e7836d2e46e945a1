#!/usr/bin/env python3
"""Looks for the best settings of `zel non-local-means` and its peers, on phantoms with Gaussian noise, and tells peak
signal-to-noise ratio and processor time with them on larger phantoms of another seed.

build-bench/peers/bin/python3 Benchmarks/Python/non_local_means_settings.py [--zel PROGRAM] [--repetitions N] [--defaults]

Times are those of all threads together, the best of all repetitions; ours has the start of the program and its files in
it. --defaults tells for each pair of our sigmas by how many dB it stays behind the best one, over images and volumes
with noise of 10, 20 and 30.
"""
import argparse
import os
import pathlib
import subprocess
import tempfile

import numpy as np

from non_local_means import NOISE, by_manifolds, by_opencv, by_skimage, methods

SETTINGS = {
    by_skimage: [dict(h=h * NOISE, distance=d) for h in (0.6, 0.8, 1.0, 1.2) for d in (3, 6)],
    by_opencv: [dict(h=h, search=s) for h in (10, 14, 18, 22, 26, 30) for s in (13, 21)],
    by_manifolds: [dict(spatial=s, range=r) for s in (4, 8, 16) for r in (0.1, 0.2, 0.3, 0.5)],
}
OUR_SETTINGS = [dict(spatial=s, range=r) for s in (2, 3, 4, 5, 8, 16) for r in (0.1, 0.15, 0.2, 0.25, 0.3, 0.4)]


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


def zel(program):
    """Our filter as a function like those of the peers."""

    def denoise(image, spatial, range):
        with tempfile.TemporaryDirectory() as folder:
            source, target = pathlib.Path(folder, "in.npy"), pathlib.Path(folder, "out.npy")
            np.save(source, image)
            subprocess.run([program, "non-local-means", source, target, "--threads", "2", "--quiet", "--output-type",
                            "float32", "--spatial-sigma", str(spatial), "--range-sigma", str(range)], check=True)
            return np.load(target)

    return denoise


def processor_seconds():
    return sum(os.times()[:4])  # with those of programs that have ended


def report(name, denoise, settings, image, clean, small_image, small, repetitions):
    best = max(settings, key=lambda setting: ratio(denoise(small_image, **setting), small))
    seconds = []
    for _ in range(repetitions):
        start = processor_seconds()
        result = denoise(image, **best)
        seconds.append(processor_seconds() - start)
    print(f"{name:<58} {ratio(result, clean):6.1f} {1000 * min(seconds):8.0f}  {best}", flush=True)


def defaults(denoise):
    losses = {}
    for shape in ((256, 256), (48, 48, 48)):
        clean = phantom(shape, 7)
        for noise in (10, 20, 30):
            image = noisy(clean, np.float32, 8, noise)
            ratios = [ratio(denoise(image, **setting), clean) for setting in OUR_SETTINGS]
            print(f"{shape}, noise {noise}: best {OUR_SETTINGS[int(np.argmax(ratios))]}", flush=True)
            for setting, value in zip(OUR_SETTINGS, ratios):
                losses.setdefault(tuple(setting.values()), []).append(max(ratios) - value)
    for (spatial, range_sigma), behind in losses.items():
        print(f"spatial sigma {spatial}, range sigma {range_sigma}: {np.mean(behind):.2f} dB behind, at most "
              f"{max(behind):.2f}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--zel", default="build/bin/zel")
    parser.add_argument("--repetitions", type=int, default=5)
    parser.add_argument("--defaults", action="store_true")
    options = parser.parse_args()
    if options.defaults:
        return defaults(zel(options.zel))
    print(f"{'':<58} {'dB':>6} {'CPU ms':>8}  setting")
    for shape, small_shape, dtype in (((1024, 1024), (384, 384), np.uint8), ((1024, 1024), (384, 384), np.float32),
                                      ((64, 64, 64), (28, 28, 28), np.float32)):
        clean, small = phantom(shape, 5), phantom(small_shape, 7)
        image, small_image = noisy(clean, dtype, 6), noisy(small, dtype, 8)
        case = f"{' x '.join(map(str, shape))} {np.dtype(dtype)}"
        print(f"{case + ', noisy':<58} {ratio(image, clean):6.1f}", flush=True)
        contenders = [("zel non-local-means", zel(options.zel), OUR_SETTINGS)]
        contenders += [(name, denoise, SETTINGS[denoise]) for name, denoise, _ in methods(image)]
        for name, denoise, settings in contenders:
            report(name, denoise, settings, image, clean, small_image, small,
                   1 if len(shape) == 3 else options.repetitions)


if __name__ == "__main__":
    main()
