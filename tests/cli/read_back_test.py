# SPDX-License-Identifier: MIT
#
# Reads the program's files with other people's readers and compares them with
# each other: read_back_test.py PROGRAM SOURCE_ROOT
import csv
import json
import math
import os
import subprocess
import sys
import tempfile

import numpy
from PIL import Image

program, root = sys.argv[1:3]
sample = os.path.join(root, "samples", "coins.png")


def blob(folder, *options):
    subprocess.run(
        [program, "blob", sample, "--gray", "90", "255", "--fill", "--select",
         "area:200..", "--quiet", *options],
        cwd=folder, check=True)


def mask_of(segmentation):
    """Decodes both forms of run lengths as their format describes them."""
    height, width = segmentation["size"]
    counts = segmentation["counts"]
    if isinstance(counts, str):
        counts = decompressed(counts)
    assert sum(counts) == height * width, "run lengths do not fill the image"
    values = numpy.repeat(numpy.arange(len(counts)) % 2, counts)
    return values.reshape((width, height)).T.astype(bool)


def decompressed(text):
    counts = []
    at = 0
    while at < len(text):
        value = shift = 0
        while True:
            group = ord(text[at]) - 48
            at += 1
            value |= (group & 0x1F) << shift
            shift += 5
            if not group & 0x20:
                if group & 0x10:
                    value -= 1 << shift
                break
        if len(counts) > 2:
            value += counts[-2]
        counts.append(value)
    return counts


with tempfile.TemporaryDirectory() as folder:
    blob(folder, "--csv", "a.csv", "--json", "a.json", "--labels", "l.png",
         "--coco", "u.json", "--overlay", "o.png")
    blob(folder, "--coco", "c.json", "--rle", "compressed")
    os.chdir(folder)

    with open("a.csv", newline="") as file:
        rows = list(csv.DictReader(file))
    with open("a.json") as file:
        document = json.load(file)
    objects = document["images"][0]["objects"]
    assert len(rows) == len(objects) > 15, len(rows)
    for row, found in zip(rows, objects):
        assert row.keys() == found.keys()
        for key in row:
            assert float(row[key]) == found[key], (key, row[key], found[key])

    image = Image.open("l.png")
    with open("l.png", "rb") as file:
        assert file.read(25)[24] == 16, "the picture has no 16 bits"
    labels = numpy.array(image)
    assert labels.max() == len(rows)
    for row in rows:
        ys, xs = numpy.nonzero(labels == int(row["id"]))
        assert len(xs) == int(row["area"])
        assert (xs.min(), xs.max()) == (int(row["x_min"]), int(row["x_max"]))
        assert (ys.min(), ys.max()) == (int(row["y_min"]), int(row["y_max"]))
        x, y = float(row["x"]), float(row["y"])
        assert abs(xs.mean() - x) < 1e-9 and abs(ys.mean() - y) < 1e-9
        farthest = numpy.hypot(xs - x, ys - y).max()
        circularity = len(xs) / (math.pi * farthest ** 2)
        assert abs(circularity - float(row["circularity"])) < 1e-9
        xx, yy = xs.var(), ys.var()
        xy = numpy.mean((xs - x) * (ys - y))
        q = math.sqrt((yy - xx) ** 2 + 4 * xy * xy)
        ra = 0.5 * math.sqrt(8 * (xx + yy + q))
        assert abs(ra - float(row["ra"])) < 1e-6

    # What no object has stays as the photograph, grey.
    overlay = numpy.array(Image.open("o.png").convert("RGB")).astype(int)
    grey = numpy.array(Image.open(sample).convert("L"))
    outside = labels == 0
    assert (overlay[outside] == grey[outside][:, None]).all()
    assert (overlay[labels == 1] == [255, 0, 0]).all()
    assert (overlay[labels == 2] == [255, 0, 255]).all()

    for name in ["u.json", "c.json"]:
        with open(name) as file:
            coco = json.load(file)
        assert len(coco["annotations"]) == len(rows)
        assert coco["images"][0]["height"] == labels.shape[0]
        for row, annotation in zip(rows, coco["annotations"]):
            mask = mask_of(annotation["segmentation"])
            assert (mask == (labels == int(row["id"]))).all()
            assert annotation["area"] == int(row["area"])
            ys, xs = numpy.nonzero(mask)
            box = [xs.min(), ys.min(), numpy.ptp(xs) + 1, numpy.ptp(ys) + 1]
            assert annotation["bbox"] == [int(v) for v in box]
            assert annotation["image_id"] == coco["images"][0]["id"]
    assert isinstance(coco["annotations"][0]["segmentation"]["counts"], str)

    # A disk that is full.
    for option in ["--csv", "--json", "--coco"]:
        full = subprocess.run(
            [program, "blob", sample, "--gray", "90", "255", option,
             "/dev/full"], capture_output=True, text=True)
        assert full.returncode == 1, full
        assert "cannot write /dev/full: No space left" in full.stderr, full
    with open("/dev/full", "w") as device:
        full = subprocess.run([program, "blob", sample, "--gray", "90", "255"],
                              stdout=device, stderr=subprocess.PIPE, text=True)
    assert full.returncode == 1 and "standard output" in full.stderr, full
