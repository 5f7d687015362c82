# SPDX-License-Identifier: MIT
#
# What becomes of the results when the world outside fails: streams that are
# closed or that nobody reads, folders that may not be read or written, a disk
# that is full. streams_test.py PROGRAM SOURCE_ROOT
import csv
import json
import os
import pty
import re
import shutil
import subprocess
import sys
import tempfile

program, root = sys.argv[1:3]
sample = os.path.join(root, "samples", "parts.png")
COUNT = {"version": 1,
         "steps": [{"do": "threshold", "min": 0, "max": 130},
                   {"do": "connection"}],
         "outputs": {"csv": "a.csv", "labels": "{name}.png"}}
# Root may read and write everything; without these rights it is like others.
RIGHTS = "-dac_override,-dac_read_search"
WITHOUT_RIGHTS = ["setpriv", "--bounding-set", RIGHTS, "--inh-caps", RIGHTS]


def run(*arguments, before=(), **how):
    how = {"capture_output": True, **how}
    if "stdout" in how or "stderr" in how:
        how.pop("capture_output")
    return subprocess.run([*before, program, *arguments], timeout=60, **how)


def rows(path):
    with open(path, newline="") as file:
        return list(csv.DictReader(file))


def closed_streams():
    for streams in [(1,), (2,), (0, 1, 2)]:
        def close():
            for stream in streams:
                os.close(stream)
        done = run("blob", sample, "--gray", "0", "130", "--csv", "a.csv",
                   "--json", "a.json", stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL, preexec_fn=close)
        assert done.returncode == (1 if 1 in streams else 0), done
        # Nothing that was printed is in the files.
        assert len(rows("a.csv")) == 10
        with open("a.json") as file:
            assert len(json.load(file)["images"][0]["objects"]) == 10


def nobody_reads():
    process = subprocess.Popen(
        [program, "run", "recipe.json", *[sample] * 200, "--out", "out"],
        stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    process.stdout.close()
    error = process.stderr.read()
    assert process.wait(60) == 1, process.returncode
    assert error == b"rendal-cli: cannot write to the standard output\n", error
    assert len(rows("out/a.csv")) == 2000
    shutil.rmtree("out")


def help_to_a_full_disk():
    for arguments in ["--help"], ["--version"], ["info", sample]:
        with open("/dev/full", "w") as full:
            done = run(*arguments, stdout=full, stderr=subprocess.PIPE)
        assert done.returncode == 1, (arguments, done)


def progress_on_a_terminal():
    terminal, stream = pty.openpty()
    done = run("run", "recipe.json", *[sample] * 400, "--out", "out",
               stdout=subprocess.DEVNULL, stderr=stream)
    os.close(stream)
    text = os.read(terminal, 100000).decode()
    assert done.returncode == 0, text
    assert re.search(r"\r\d+/400 images, \d+\.\d/s, \d+ s left", text), text
    # The line is gone in the end.
    assert text.endswith("\r" + 60 * " " + "\r"), text
    shutil.rmtree("out")


def full_disk():
    """A file system of 64 KB; what does not fit leaves nothing behind."""
    os.mkdir("small")
    mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k",
                              "rendal", "small"], capture_output=True)
    if mounted.returncode != 0:
        print("no right to mount: a full disk was tried by /dev/full alone")
        return
    try:
        done = run("run", "recipe.json", *[sample] * 300, "--out", "small",
                   "--quiet")
        assert done.returncode == 1, done
        assert b"No space left on device" in done.stderr, done.stderr
        names = os.listdir("small")
        assert "a.csv" not in names, names
        assert not [name for name in names if name.endswith(".tmp")], names
        assert all(name.startswith("parts") for name in names), names
        for name in names:
            assert os.path.getsize("small/" + name) > 0, name
    finally:
        subprocess.run(["umount", "small"], check=True)


def folders_of_others():
    user = {"before": WITHOUT_RIGHTS} if os.geteuid() == 0 else {}
    for name, mode in [("secret", 0o300), ("locked", 0o555)]:
        os.mkdir(name)
        shutil.copy(sample, name)
        os.chmod(name, mode)
    done = run("run", "recipe.json", "secret", "--out", "/tmp", **user)
    assert done.returncode == 2, done
    assert b"cannot read the folder secret: Permission" in done.stderr, done
    done = run("run", "recipe.json", sample, "--out", "locked", **user)
    assert done.returncode == 1, done
    assert b"Permission denied" in done.stderr, done
    assert os.listdir("locked") == ["parts.png"]
    os.chmod("locked/parts.png", 0)
    done = run("info", "locked/parts.png", **user)
    assert b"parts.png: it cannot be read" in done.stderr, done


with tempfile.TemporaryDirectory() as folder:
    os.chmod(folder, 0o755)
    os.chdir(folder)
    with open("recipe.json", "w") as file:
        json.dump(COUNT, file)
    for test in [closed_streams, nobody_reads, help_to_a_full_disk,
                 progress_on_a_terminal, full_disk, folders_of_others]:
        test()
