# SPDX-License-Identifier: MIT
#
# The licence texts that the program prints, against those of the packages whose
# files it needs: every shared library that the loader is told of, the headers
# that are compiled in. licences_test.py PROGRAM
import os
import re
import subprocess
import sys

program = sys.argv[1]
COMPILED_IN = ["/usr/include/CLI/CLI.hpp", "/usr/include/eigen3/Eigen/Core",
               "/usr/include/nlohmann/json.hpp"]


def answer(*command):
    return subprocess.run(command, check=True, capture_output=True,
                          timeout=60).stdout.decode()


def needed(binary):
    return re.findall(r"NEEDED.*\[(.*)\]", answer("readelf", "-d", binary))


def linked():
    """Libraries of others that the program or a library of ours names."""
    paths = dict(re.findall(r"(\S+) => (\S+)", answer("ldd", program)))
    names = needed(program)
    ours = [name for name in names if name.startswith("libvexo")]
    assert ours, names
    for name in ours:
        names.remove(name)
        names += needed(paths[name])
    return {paths[name] for name in names if name in paths}


def packages_of(paths):
    """A merged /usr: the database may know a file by its name without."""
    real = [os.path.realpath(path) for path in paths]
    names = [*real, *(path.removeprefix("/usr") for path in real)]
    found = subprocess.run(["dpkg", "-S", *names], capture_output=True,
                           timeout=60).stdout.decode()
    package = {}
    for line in found.splitlines():
        owner, _, name = line.partition(": ")
        package[name.removeprefix("/usr")] = owner.split(":")[0]
    return [package[path.removeprefix("/usr")] for path in real]


printed = answer(program, "--licences")
libraries = linked()
assert any("opencv" in path for path in libraries), libraries
assert any("tbb" in path for path in libraries), libraries
paths = [*sorted(libraries), *COMPILED_IN]
for path, package in zip(paths, packages_of(paths)):
    with open(f"/usr/share/doc/{package}/copyright") as file:
        assert file.read() in printed, f"{path}: no licence of {package}"
