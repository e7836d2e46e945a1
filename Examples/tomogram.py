#!/usr/bin/env python3
"""Particles found in a tomogram by template matching, from the first file to the table of what was found.

tomogram.py ZEL FOLDER

Generates a tomogram (96 x 96 x 48 voxels, particles in random places and orientations, the missing wedge of a tilt series
to 60 degrees, noise), lets the program ZEL match it and list the peaks, compares found with planted, and draws the slice
through most particles, its scores and the peaks. All files go to FOLDER. Needs NumPy.
"""
import pathlib
import subprocess
import sys

import numpy as np

SIZE = (48, 96, 96)  # z, y, x
LENGTH = 21  # of the template
PARTICLES = 24
NOISE = 0.25  # standard deviation; the particle's densest voxel is 1.6
THRESHOLDS = (0.3, 0.35, 0.4, 0.45, 0.5)
SHOWN = 0.45  # threshold of the picture

# A bent rod with a head: places in voxels from the centre (x, y, z), radii and weights of its balls.
BALLS = [((0, 0, 0), 3.0, 1.0), ((0, 0, 6), 3.0, 1.0), ((0, 5, -4), 2.5, 1.0), ((4, 2, 7), 2.0, 1.5)]


def rotation(phi, theta, psi):
    """Rz(phi) Rx(theta) Rz(psi), as the table's rows mean it."""
    c, s = np.cos, np.sin

    def about_z(a):
        return np.array([[c(a), -s(a), 0], [s(a), c(a), 0], [0, 0, 1]])

    about_x = np.array([[1, 0, 0], [0, c(theta), -s(theta)], [0, s(theta), c(theta)]])
    return about_z(phi) @ about_x @ about_z(psi)


def particle(shape, centre, turn):
    """The particle's density, its centre at a voxel (x, y, z)."""
    z, y, x = np.indices(shape, dtype=np.float32)
    density = np.zeros(shape, np.float32)
    for place, radius, weight in BALLS:
        at = np.array(centre) + turn @ np.array(place, float)
        square = (x - at[0]) ** 2 + (y - at[1]) ** 2 + (z - at[2]) ** 2
        density += weight * np.exp(-square / radius**2, dtype=np.float32)
    return density


def missing_wedge(volume, tilt):
    """What a tilt series about y reaches of the frequencies."""
    kz, _, kx = np.meshgrid(*(np.fft.fftfreq(n) for n in volume.shape), indexing="ij")
    seen = np.abs(kz) <= np.abs(kx) * np.tan(np.radians(tilt)) + 1e-12
    return np.fft.ifftn(np.fft.fftn(volume) * seen).real


def plant(random):
    """Centres (x, y, z) at least 16 voxels apart, and angles."""
    centres = []
    while len(centres) < PARTICLES:
        centre = random.integers(11, [n - 11 for n in SIZE[::-1]])
        if all(np.linalg.norm(centre - other) >= 16 for other in centres):
            centres.append(centre)
    angles = np.stack([random.uniform(0, 2 * np.pi, PARTICLES), np.arccos(random.uniform(-1, 1, PARTICLES)),
                       random.uniform(0, 2 * np.pi, PARTICLES)], axis=1)
    return np.array(centres), angles


def degrees_between(a, b):
    return np.degrees(np.arccos(np.clip((np.trace(a.T @ b) - 1) / 2, -1, 1)))


def table(peaks, centres, angles):
    """Recall, precision and errors at each threshold; a peak is right within 4 voxels of a particle of its own."""
    lines = ["| threshold | peaks | right | recall | precision | median error, voxels | median error, degrees |",
             "|---|---|---|---|---|---|---|"]
    for threshold in THRESHOLDS:
        chosen = [peak for peak in peaks if peak["score"] >= threshold]
        found, shifts, turns = set(), [], []
        for peak in chosen:
            distances = np.linalg.norm(centres - [peak["x"], peak["y"], peak["z"]], axis=1)
            nearest = int(np.argmin(distances))
            if distances[nearest] > 4 or nearest in found:
                continue
            found.add(nearest)
            shifts.append(distances[nearest])
            turns.append(degrees_between(rotation(*angles[nearest]), rotation(peak["phi"], peak["theta"], peak["psi"])))
        if found:
            lines.append(f"| {threshold} | {len(chosen)} | {len(found)} | {len(found) / PARTICLES:.2f} | "
                         f"{len(found) / len(chosen):.2f} | {np.median(shifts):.1f} | {np.median(turns):.0f} |")
    return "\n".join(lines)


def grey(plane, low, high):
    """Four times as large."""
    levels = np.clip((plane - low) / (high - low) * 255, 0, 255).astype(np.uint8)
    return levels.repeat(4, axis=0).repeat(4, axis=1)


def picture(tomogram, score, peaks, centres):
    """A slice, its scores, and the slice with rings around peaks and dots on particles within 6 voxels of it."""
    z = int(np.argmax([np.sum(np.abs(centres[:, 2] - z) <= 6) for z in range(SIZE[0])]))
    image = grey(tomogram[z], *np.percentile(tomogram, [1, 99.8]))
    marked = image // 2
    rows, columns = np.indices(marked.shape)
    for x, y, _ in (c for c in centres if abs(c[2] - z) <= 6):
        marked[np.hypot(columns - 4 * x - 2, rows - 4 * y - 2) < 5] = 255
    for peak in peaks:
        if peak["score"] >= SHOWN and abs(peak["z"] - z) <= 6:
            radius = np.hypot(columns - 4 * peak["x"] - 2, rows - 4 * peak["y"] - 2)
            marked[np.abs(radius - 30) < 1.5] = 255
    gap = np.full((image.shape[0], 8), 255, np.uint8)
    return np.hstack([image, gap, grey(score[z], 0, 0.8), gap, marked])


def main():
    zel, folder = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)

    def run(command):
        print("zel " + command, flush=True)
        subprocess.run([zel, *command.split()], cwd=folder, check=True)

    random = np.random.default_rng(7)
    centres, angles = plant(random)
    tomogram = random.normal(0, NOISE, SIZE)
    for centre, row in zip(centres, angles):
        tomogram += particle(SIZE, centre, rotation(*row))
    tomogram = missing_wedge(tomogram, 60).astype(np.float32)
    template = particle([LENGTH] * 3, [LENGTH // 2] * 3, np.eye(3))
    ball = np.sum((np.indices([LENGTH] * 3) - LENGTH // 2) ** 2, axis=0) <= (LENGTH // 2) ** 2
    for name, array in ("tomogram", tomogram), ("particle", template), ("mask", ball.astype(np.uint8)):
        np.save(folder / f"{name}.npy", array)

    run("rotations rows.csv --step 30")
    run("frequency-filter particle.npy filter.npy --table rows.csv --missing-wedge 60")
    run("template-matching tomogram.npy particle.npy score.npy row.npy --table rows.csv --mask mask.npy"
        " --frequency-filter filter.npy")
    run("peaks score.npy row.npy peaks.csv --table rows.csv --distance 10 --threshold 0.3")

    peaks = np.atleast_1d(np.genfromtxt(folder / "peaks.csv", delimiter=",", names=True))
    print(f"{PARTICLES} particles were planted\n" + table(peaks, centres, angles))
    np.save(folder / "picture.npy", picture(tomogram, np.load(folder / "score.npy"), peaks, centres))
    run("convert picture.npy picture.png")


if __name__ == "__main__":
    main()
