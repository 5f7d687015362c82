#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
#
# Images per second of "rendal-cli run" beside the same job written with OpenCV
# (bench_batch.cpp), on photographs of two megapixels: threshold, fill, opening
# by disc 10, components with features, one table of all.
#
#   bench/batch.py --images 100 300 1000 --threads 1 2 --format bmp
#
# Both tables must have the same components. Each run is in a process of its
# own; the images come from the page cache. Peak memory is of the run. "Reading
# alone" is OpenCV opening and decoding the same files, a bound for both.
import argparse
import collections
import csv
import json
import os
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BIN = os.path.join(ROOT, "build", "native-bench", "bin")
RECIPE = {"version": 1,
          "steps": [{"do": "threshold", "min": 128, "max": 255},
                    {"do": "fill_up"},
                    {"do": "opening", "element": "circle", "radius": 10},
                    {"do": "connection"}]}


def options():
    parser = argparse.ArgumentParser()
    parser.add_argument("--images", type=int, nargs="+", default=[1000],
                        help="numbers of images, one run each")
    parser.add_argument("--threads", type=int, nargs="+", default=[1, 2])
    parser.add_argument("--format", choices=["bmp", "jpg", "png"],
                        default="bmp")
    parser.add_argument("--times", type=int, default=1,
                        help="runs of each, of which the fastest counts")
    parser.add_argument("--folder", help="keeps the photographs here")
    parser.add_argument("--only-make", action="store_true",
                        help="makes the photographs, measures nothing")
    return parser.parse_args()


def make(folder, count, kind):
    """The photographs, from an earlier run if there are enough."""
    os.makedirs(folder, exist_ok=True)
    if len(os.listdir(folder)) < count:
        subprocess.run([f"{BIN}/bench_batch", "make", folder, str(count),
                        kind], check=True, stdout=subprocess.DEVNULL)
    folder = os.path.abspath(folder)
    return [os.path.join(folder, name) for name in sorted(os.listdir(folder))]


def some_of(files, folder):
    """A folder with links to these files, which are in the page cache."""
    os.makedirs(folder)
    for file in files:
        with open(file, "rb") as content:
            content.read()
        os.symlink(file, os.path.join(folder, os.path.basename(file)))
    return folder


def timed(command):
    """Seconds and peak memory [MB] of a process."""
    started = time.monotonic()
    process = subprocess.Popen(command)
    _, status, usage = os.wait4(process.pid, 0)
    if status != 0:
        sys.exit(f"failed: {command}")
    return time.monotonic() - started, usage.ru_maxrss / 1024


def components(path, has_header):
    """Of every image its components' areas and boxes, in no order."""
    found = collections.defaultdict(collections.Counter)
    with open(path, newline="") as file:
        for i, row in enumerate(csv.reader(file)):
            if i == 0 and has_header:
                continue
            found[os.path.basename(row[0])][(row[2], *row[5:9])] += 1
    return found


def fastest(times, command):
    """The shortest of some runs, and the largest peak."""
    runs = [timed(command) for _ in range(times)]
    return min(run[0] for run in runs), max(run[1] for run in runs)


def compared(work, files, threads, times):
    """One row of the table."""
    recipe, ours, peer = (os.path.join(work, name) for name in
                          ["recipe.json", "ours.csv", "peer.csv"])
    with open(recipe, "w") as file:
        json.dump(RECIPE, file)
    n = len(files)
    few = some_of(files, os.path.join(work, f"few{n}-{threads}"))
    a, memory = fastest(times, [f"{BIN}/rendal-cli", "run", recipe, few,
                                "--csv", ours, "--quiet", "--threads",
                                str(threads)])
    b, peers_memory = fastest(times, [f"{BIN}/bench_batch", "run", few, peer,
                                      str(threads)])
    reading, _ = fastest(times, [f"{BIN}/bench_batch", "read", few,
                                 str(threads)])
    found = components(ours, True)
    if found != components(peer, False) or not found:
        sys.exit("the components differ")
    return (f"| {threads} | {n} | {n / a:.1f} | {n / b:.1f} | {b / a:.1f} "
            f"| {n / reading:.1f} | {memory:.0f} | {peers_memory:.0f} |")


def main():
    wanted = options()
    with tempfile.TemporaryDirectory() as work:
        files = make(wanted.folder or os.path.join(work, "in"),
                     max(wanted.images), wanted.format)
        if wanted.only_make:
            return
        print("| threads | images | rendal-cli [1/s] | OpenCV [1/s] | ratio "
              "| reading alone [1/s] | peak [MB] | OpenCV's [MB] |\n"
              "|---|---|---|---|---|---|---|---|")
        for threads in wanted.threads:
            for count in wanted.images:
                print(compared(work, files[:count], threads, wanted.times),
                      flush=True)


main()
