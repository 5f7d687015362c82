#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
#
# Images per second of "rendal-cli run" beside the same job written with OpenCV
# (bench_batch.cpp), on photographs of two megapixels: threshold, fill, opening
# by disc 10, components with features, one table of all.
#
#   bench/batch.py [COUNT] [FOLDER]     1000 images, kept in FOLDER if given
#
# Both tables must have the same components. Each run is in a process of its
# own; the images come from the page cache. Peak memory is of the run.
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


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 1000
    with tempfile.TemporaryDirectory() as work:
        folder = sys.argv[2] if len(sys.argv) > 2 else os.path.join(work, "in")
        os.makedirs(folder, exist_ok=True)
        if len(os.listdir(folder)) != count:
            subprocess.run([f"{BIN}/bench_batch", "make", folder, str(count)],
                           check=True, stdout=subprocess.DEVNULL)
        recipe = os.path.join(work, "recipe.json")
        with open(recipe, "w") as file:
            json.dump(RECIPE, file)
        ours, peer = (os.path.join(work, n) for n in ["ours.csv", "peer.csv"])
        files = sorted(os.listdir(folder))
        for name in files:  # into the page cache
            with open(os.path.join(folder, name), "rb") as file:
                file.read()
        print("| threads | images | rendal-cli [1/s] | OpenCV [1/s] | ratio "
              "| peak [MB] | OpenCV's [MB] |\n|---|---|---|---|---|---|---|")
        for threads in [1, 2]:
            for n in sorted({count // 10, count}):
                few = os.path.join(work, f"few{n}-{threads}")
                os.makedirs(few)
                for name in files[:n]:
                    os.symlink(os.path.join(os.path.abspath(folder), name),
                               os.path.join(few, name))
                a, memory = timed([f"{BIN}/rendal-cli", "run", recipe, few,
                                   "--csv", ours, "--quiet", "--threads",
                                   str(threads)])
                b, peers_memory = timed([f"{BIN}/bench_batch", "run", few,
                                         peer, str(threads)])
                if components(ours, True) != components(peer, False):
                    sys.exit("the components differ")
                print(f"| {threads} | {n} | {n / a:.1f} | {n / b:.1f} "
                      f"| {b / a:.1f} | {memory:.0f} | {peers_memory:.0f} |",
                      flush=True)


main()
