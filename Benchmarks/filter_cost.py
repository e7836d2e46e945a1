#!/usr/bin/env python3
"""Plots what a filter costs against its radius, from its "cost of" cases of ./bench.

./bench 'cost of median'
filter_cost.py median 2048 build-bench/benchmarks.json Docs/median-cost.png
./bench 'cost of erosion'
filter_cost.py erosion 4096 build-bench/benchmarks.json Docs/erosion-cost.png

Needs Matplotlib (Debian: python3-matplotlib).
"""
import json
import re
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt


def read_costs(filter_name, path):
    """Milliseconds of all repetitions, by kind of image or element and radius; the plot shows the best."""
    costs = {}
    with open(path, encoding="utf-8") as file:
        for run in json.load(file)["benchmarks"]:
            name = re.match(rf"cost of {filter_name} (.+) (\d+)/", run["name"])
            if name and run.get("run_type", "iteration") == "iteration":
                costs.setdefault(name[1], {}).setdefault(int(name[2]), []).append(run["real_time"])
    return costs


def main():
    filter_name, side, source, target = sys.argv[1:5]
    figure, axes = plt.subplots(figsize=(7, 4.5))
    for name, by_radius in read_costs(filter_name, source).items():
        radii = sorted(by_radius)
        axes.plot(radii, [min(by_radius[radius]) for radius in radii], "o-", markersize=3, label=name)
    axes.set(xscale="log", yscale="log", xlabel="radius (pixels)", ylabel=f"{side} x {side} pixels, two threads (ms)")
    ticks = [1, 2, 3, 5, 7, 10, 15, 20, 30, 50]
    axes.set_xticks(ticks, [str(tick) for tick in ticks])
    axes.minorticks_off()
    axes.grid(alpha=0.3)
    axes.legend()
    figure.tight_layout()
    figure.savefig(target, dpi=100)


if __name__ == "__main__":
    main()
