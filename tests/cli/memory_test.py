# SPDX-License-Identifier: MIT
#
# An image that does not fit into memory: it is named, the others are worked on.
# memory_test.py PROGRAM SOURCE_ROOT
import json
import os
import resource
import struct
import subprocess
import sys
import tempfile
import zlib

program, root = sys.argv[1:3]
sample = os.path.join(root, "samples", "parts.png")
SIDE = 22000
LIMIT = 450 << 20  # less than SIDE * SIDE


def chunk(kind, data):
    check = zlib.crc32(kind + data)
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", check)


def grey_png(side):
    header = struct.pack(">IIBBBBB", side, side, 8, 0, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
            + chunk(b"IDAT", zlib.compress(bytes(100000))) + chunk(b"IEND", b""))


def run(*arguments):
    return subprocess.run(
        [program, *arguments], capture_output=True, timeout=60,
        preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS,
                                              (LIMIT, LIMIT)))


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    with open("big.png", "wb") as file:
        file.write(grey_png(SIDE))
    with open("recipe.json", "w") as file:
        json.dump({"version": 1,
                   "steps": [{"do": "threshold", "min": 0, "max": 130},
                             {"do": "connection"}],
                   "outputs": {"csv": "a.csv"}}, file)
    done = run("run", "recipe.json", "big.png", sample, "--threads", "1")
    assert done.returncode == 1, done
    assert done.stderr == b"rendal-cli: big.png: out of memory\n", done
    assert done.stdout.endswith(b"parts.png: 10 components\n"), done
    # A picture that finds no room leaves the numbers.
    done = run("blob", sample, "--gray", "0", "130", "--csv", "b.csv",
               "--overlay", "big overlay.png", "--zoom", "20")
    assert done.returncode == 1, done
    assert b"cannot write big overlay.png: out of memory" in done.stderr, done
    with open("b.csv") as file:
        assert len(file.readlines()) == 11
    assert not os.path.exists("big overlay.png")
    done = run("info", "big.png")
    assert done.returncode == 1, done
    assert done.stderr == b"rendal-cli: big.png: out of memory\n", done
