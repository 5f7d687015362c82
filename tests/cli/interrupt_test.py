# SPDX-License-Identifier: MIT
#
# Ctrl-C in a long run: interrupt_test.py PROGRAM SOURCE_ROOT
import csv
import json
import os
import signal
import subprocess
import sys
import tempfile
import time

program, root = sys.argv[1:3]
images = [os.path.join(root, "samples", name)
          for name in ["parts.png", "coins.png"]]
recipe = {"version": 1,
          "steps": [{"do": "threshold", "min": 0, "max": 130},
                    {"do": "connection"}],
          "outputs": {"csv": "a.csv", "json": "a.json"}}

with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    with open("recipe.json", "w") as file:
        json.dump(recipe, file)
    # Some minutes of work.
    run = subprocess.Popen(
        [program, "run", "recipe.json", *images * 20000, "--out", "out"],
        stdout=subprocess.PIPE, stderr=subprocess.PIPE,
        # A buffer would keep lines from communicate().
        bufsize=0)
    assert run.stdout.readline().endswith(b"\n")
    run.send_signal(signal.SIGINT)
    started = time.monotonic()
    rest, error = run.communicate(timeout=60)
    assert run.returncode == 130, (run.returncode, error)
    assert time.monotonic() - started < 10
    assert error == b"", error
    assert sorted(os.listdir("out")) == ["a.csv", "a.json"], os.listdir("out")

    with open("out/a.json") as file:
        done = json.load(file)["images"]
    assert 0 < len(done) < 40000
    assert [one["image"] for one in done] == (images * 20000)[:len(done)]
    assert 1 + rest.count(b"\n") == len(done)
    with open("out/a.csv", newline="") as file:
        rows = list(csv.DictReader(file))
    assert len(rows) == sum(len(one["objects"]) for one in done) > 0

    # As a shell starts it in the background of a script: nothing ends it.
    run = subprocess.Popen(
        [program, "run", "recipe.json", *images * 50, "--out", "out"],
        stdout=subprocess.PIPE, stderr=subprocess.PIPE, bufsize=0,
        preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_IGN))
    assert run.stdout.readline().endswith(b"\n")
    run.send_signal(signal.SIGINT)
    run.communicate(timeout=60)
    assert run.returncode == 0, run.returncode
    with open("out/a.json") as file:
        assert len(json.load(file)["images"]) == 100
