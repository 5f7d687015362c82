# SPDX-License-Identifier: MIT
#
# Runs the examples of docs/recipes.md: documented_test.py PROGRAM SOURCE_ROOT
#
# A JSON block below a line "`NAME`:" is written to that file. In a console
# block every line "$ COMMAND" is run by the shell, in one folder with the
# samples; what follows it is what the command must print, numbers to six
# digits.
import os
import re
import shutil
import subprocess
import sys
import tempfile

program, root = sys.argv[1:3]
NUMBER = re.compile(r"-?\d+(?:\.\d+)?(?:e[+-]?\d+)?")


def same(shown, printed):
    if NUMBER.sub("#", shown).split() != NUMBER.sub("#", printed).split():
        return False
    return all(abs(float(a) - float(b)) <= 1e-6 * (1 + abs(float(a)))
               for a, b in zip(NUMBER.findall(shown), NUMBER.findall(printed)))


with open(os.path.join(root, "docs", "recipes.md")) as page:
    text = page.read()
blocks = re.findall(r"(?:^`([^`\n]+)`:\n\n)?```(\w+)\n(.*?)```", text,
                    re.MULTILINE | re.DOTALL)
commands = files = 0
with tempfile.TemporaryDirectory() as folder:
    shutil.copytree(os.path.join(root, "samples"),
                    os.path.join(folder, "samples"))
    path = os.path.dirname(program) + os.pathsep + os.environ["PATH"]
    for name, kind, body in blocks:
        if kind == "json" and name:
            with open(os.path.join(folder, name), "w") as file:
                file.write(body)
            files += 1
        if kind != "console":
            continue
        for part in re.split(r"^\$ ", body, flags=re.MULTILINE)[1:]:
            command, shown = part.split("\n", 1)
            done = subprocess.run(["sh", "-c", command], cwd=folder,
                                  env={**os.environ, "PATH": path},
                                  stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, text=True)
            commands += 1
            if not same(shown, done.stdout):
                sys.exit(f"$ {command}\nprints\n{done.stdout}\n"
                         f"and not\n{shown}")
assert files >= 3 and commands >= 6, (files, commands)
