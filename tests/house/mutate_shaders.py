#!/usr/bin/env python3
"""mutate_shaders.py BUILD [--only WORD] [--jobs N]: do the tests of the shaders notice when a source is wrong?

BUILD is a build folder with the test programs in BUILD/bin. One at a time, each mutation of shader_mutations.py changes
one constant, sign or name in a copy of the shader sources; the test programs that cover it, run on that copy, must
fail. The tree stays as it is and nothing is rebuilt: the programs take the copy's sources before their own where the
environment names it. The unmutated copy comes first and must pass, and every mutated one must still compile, so that
nothing counts as noticed for another reason than that a test noticed.

Prints a line a mutation and ends with 0 when all are noticed, 1 when one survives, 2 when the check itself fails.
Needs a display; with none: xvfb-run -a tests/house/mutate_shaders.py build/release
"""
import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from shader_mutations import MUTATIONS

SOURCES = Path(__file__).resolve().parents[2] / "Viewer3dModule" / "resources" / "Viewer3dModule"
COMPILES = ("unit_shaders", ["--gtest_filter=*KhronosCompilerAcceptsEveryStageUnderEveryDefine"])
FURTHER_FOLDERS = ["Viewer3dFences", "Viewer3dLight"]  # beside the sources, which include them
SECONDS_TO_RUN = 120


class CheckError(Exception):
    """The check cannot be made: says nothing about the tests."""


def mutate(mutation, sources):
    """The text of the mutation's source with the mutation in it."""
    path = sources / mutation.source
    if not path.is_file():
        raise CheckError(f"{mutation.name}: there is no source {mutation.source}")
    text = path.read_text(encoding="ascii")
    times = text.count(mutation.old)
    if times != 1:
        raise CheckError(f"{mutation.name}: {mutation.source} has {times} places, not one, with: {mutation.old}")
    if mutation.old == mutation.new:
        raise CheckError(f"{mutation.name} changes nothing")
    return text.replace(mutation.old, mutation.new)


def copy_of(sources, folder):
    """Copies the sources to where the search path "shader" finds them below the folder."""
    for path in [sources, *(sources.parent / name for name in FURTHER_FOLDERS)]:
        if path.is_dir():
            shutil.copytree(path, folder / ("Viewer3dModule" if path == sources else path.name))


class Programs:
    """Test programs of a build, on altered sources."""

    def __init__(self, folder):
        self.folder = folder

    def run(self, name, folder, options=()):
        """Runs one; returns whether it passed and, if not, what noticed: a test, or how the program ended."""
        path = self.folder / name
        if not path.is_file():
            raise CheckError(f"{path} is not built")
        environment = dict(os.environ, V3D_TEST_SHADER_FOLDER=str(folder))
        environment.setdefault("QT_QPA_PLATFORM", "xcb")
        try:
            done = subprocess.run([path, "--gtest_fail_fast", *options], env=environment, stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, text=True, errors="replace", check=False,
                                  timeout=SECONDS_TO_RUN)
        except subprocess.TimeoutExpired:
            return False, f"{name} (no end in {SECONDS_TO_RUN} s)"
        if done.returncode == 0:
            if not re.search(r"^\[  PASSED  \] [1-9]\d* test", done.stdout, re.MULTILINE):
                raise CheckError(f"{name} ran no test:\n{done.stdout[-2000:]}")
            return True, None
        failed = re.search(r"^\[  FAILED  \] ([\w./]+)", done.stdout, re.MULTILINE)
        if failed:
            return False, failed.group(1)
        if done.returncode < 0:
            return False, f"{name} (signal {-done.returncode})"
        raise CheckError(f"{name} ended with {done.returncode}:\n{done.stdout[-2000:]}")

    def check_unmutated(self, mutations, sources):
        with tempfile.TemporaryDirectory() as name:
            copy_of(sources, Path(name))
            for program in sorted({program for mutation in mutations for program in mutation.programs}):
                passed, noticed = self.run(program, name)
                if not passed:
                    raise CheckError(f"{program} fails already without a mutation: {noticed}")

    def who_notices(self, mutation, sources):
        """The first that notices the mutation, None when it survives."""
        text = mutate(mutation, sources)
        with tempfile.TemporaryDirectory() as name:
            copy_of(sources, Path(name))
            (Path(name) / "Viewer3dModule" / mutation.source).write_text(text, encoding="ascii")
            if not self.run(COMPILES[0], name, COMPILES[1])[0]:
                raise CheckError(f"{mutation.name} is no longer a valid shader")
            for program in mutation.programs:
                passed, noticed = self.run(program, name)
                if not passed:
                    return noticed
        return None


def check(mutations, sources, programs, jobs=1, out=sys.stdout):
    """Checks all of them; returns the names of those that survive."""
    for mutation in mutations:
        mutate(mutation, sources)
    programs.check_unmutated(mutations, sources)
    print("the unmutated copy passes", file=out, flush=True)

    survivors = []
    widths = [max(len(str(field)) for field in column)
              for column in zip(*((m.group, m.name, m.source) for m in mutations))]
    pool = ThreadPoolExecutor(jobs)
    try:
        found = pool.map(lambda mutation: programs.who_notices(mutation, sources), mutations)
        for mutation, noticed in zip(mutations, found):
            fields = (mutation.group, mutation.name, mutation.source)
            columns = "  ".join(field.ljust(width) for field, width in zip(fields, widths))
            print(f"{columns}  {noticed or 'SURVIVED: ' + mutation.old + '  ->  ' + mutation.new}",
                  file=out, flush=True)
            if noticed is None:
                survivors.append(mutation.name)
    finally:
        pool.shutdown(cancel_futures=True)
    return survivors


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=Path, help="build folder with the test programs in bin/")
    parser.add_argument("--only", default="", help="only mutations with this word in their group, name or source")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 1, help="so many at a time")
    options = parser.parse_args(arguments)
    mutations = [m for m in MUTATIONS if options.only in f"{m.group} {m.name} {m.source}"]
    if not mutations:
        parser.error(f"no mutation has the word {options.only}")
    started = time.monotonic()
    try:
        survivors = check(mutations, SOURCES, Programs(options.build / "bin"), options.jobs)
    except CheckError as error:
        print(f"the check failed: {error}", file=sys.stderr)
        return 2
    print(f"{len(mutations)} mutations, {len(mutations) - len(survivors)} noticed, {len(survivors)} survived; "
          f"{time.monotonic() - started:.0f} s")
    return 1 if survivors else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
