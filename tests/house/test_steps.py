#!/usr/bin/env python3
"""The steps of run.sh and test.sh on made-up machines: what is installed, how, and what is said."""
import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

STEPS = Path(__file__).resolve().parents[2] / "cmake" / "steps.sh"
LIST = """# comment
run    alpha    what alpha is for
run    beta     what beta is for
tests  gamma    what gamma is for
"""


class StepsTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.root = Path(self.folder.name)
        (self.root / "cmake").mkdir()
        (self.root / "bin").mkdir()
        shutil.copy(STEPS, self.root / "cmake")
        (self.root / "cmake" / "dependencies.txt").write_text(LIST, encoding="utf-8")
        for name in ("bash", "mkdir", "grep", "tail", "cat", "env"):
            (self.root / "bin" / name).symlink_to(shutil.which(name))
        self.record = self.root / "record"
        self.record.write_text("", encoding="utf-8")

    def tearDown(self):
        self.folder.cleanup()

    def program(self, name, body):
        path = self.root / "bin" / name
        path.write_text("#!/usr/bin/env bash\n" + body, encoding="utf-8")
        path.chmod(0o755)

    def machine(self, installed, user=0, sudo=True, apt="exit 0"):
        """A machine with these packages, this user number, with sudo or not, whose apt-get does this."""
        lines = "".join(f"installed:{name} " for name in installed)
        self.program("dpkg-query", f"printf '%s' '{lines}not-installed:beta '; exit 1")
        self.program("id", f"echo {user}")
        self.program("apt-get", f'echo "apt-get $*" >>"{self.record}"; {apt}')
        if sudo:
            self.program("sudo", f'echo "sudo" >>"{self.record}"; exec "$@"')

    def run_steps(self, script):
        return subprocess.run(
            [str(self.root / "bin" / "bash"), "-c", f'set -euo pipefail; root="{self.root}"; . "$root/cmake/steps.sh"; {script}', "./run.sh"],
            env={"PATH": str(self.root / "bin")}, capture_output=True, text=True, check=False)

    def recorded(self):
        return self.record.read_text(encoding="utf-8").splitlines()

    def test_nothing_is_installed_when_nothing_is_missing(self):
        self.machine(["alpha", "beta", "gamma"])
        done = self.run_steps("install_missing run tests")
        self.assertEqual((done.returncode, done.stdout, done.stderr, self.recorded()), (0, "", "", []))

    def test_only_what_is_missing_is_installed(self):
        self.machine(["alpha"])
        done = self.run_steps("install_missing run")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", "run.sh: installing beta\n"))
        self.assertEqual(self.recorded(), ["apt-get update", "apt-get install -y --no-install-recommends beta"])

    def test_packages_of_the_tests_are_for_the_tests(self):
        self.machine(["alpha", "beta"])
        self.run_steps("install_missing run")
        self.assertEqual(self.recorded(), [])
        self.run_steps("install_missing run tests")
        self.assertEqual(self.recorded()[1], "apt-get install -y --no-install-recommends gamma")

    def test_sudo_only_for_others_than_root(self):
        self.machine(["alpha"], user=1000)
        self.assertEqual(self.run_steps("install_missing run").returncode, 0)
        self.assertEqual(self.recorded()[:2], ["sudo", "apt-get update"])

    def test_no_sudo_there(self):
        self.machine([], user=1000, sudo=False)
        done = self.run_steps("install_missing run")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr, "run.sh: stopped: not root and no sudo; have these packages installed: alpha beta\n")

    def test_an_install_that_fails(self):
        self.machine([], apt='echo "E: no such package"; exit 100')
        done = self.run_steps("install_missing run; echo went on")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        last = done.stderr.splitlines()[-1]
        self.assertEqual(last, "run.sh: stopped: 'apt-get update' failed; all it said is in "
                               f"{self.root}/build/logs/apt-update.log")
        self.assertIn("E: no such package", done.stderr)

    def test_a_machine_without_apt(self):
        done = self.run_steps("install_missing run")
        self.assertEqual(done.returncode, 0)
        self.assertIn("no apt-get here", done.stderr)

    def test_configures_only_when_it_must(self):
        self.program("cmake", f'echo "cmake $*" >>"{self.record}"')
        build = self.root / "build" / "release"
        self.run_steps("configure A=ON")
        self.assertEqual(self.recorded(), [f"cmake -S {self.root} --preset release -DA=ON"])
        build.mkdir(parents=True)
        (build / "build.ninja").write_text("", encoding="utf-8")
        (build / "CMakeCache.txt").write_text("A:BOOL=ON\nB:BOOL=OFF\n", encoding="utf-8")
        self.run_steps("configure A=ON B=OFF")
        self.assertEqual(len(self.recorded()), 1)
        self.run_steps("configure A=ON B=ON")
        self.assertEqual(len(self.recorded()), 2)

    def test_displays(self):
        self.assertEqual(self.run_steps("has_display").returncode, 1)
        self.assertEqual(self.run_steps("DISPLAY=:98765 has_display").returncode, 1)
        self.assertEqual(self.run_steps("DISPLAY=elsewhere:0 has_display").returncode, 0)


    def test_neither_display_nor_server(self):
        done = self.run_steps("has_display || start_display; echo went on")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertEqual(done.stderr, "run.sh: stopped: there is neither a display here nor Xvfb to start one; "
                                      "install the package xvfb\n")


class ListTest(unittest.TestCase):
    """The real list of packages."""

    def test_the_readme_names_every_package(self):
        root = STEPS.parents[1]
        lines = [line.split(None, 2) for line in
                 (root / "cmake" / "dependencies.txt").read_text(encoding="utf-8").splitlines()
                 if line and not line.startswith("#")]
        for fields in lines:
            self.assertEqual(len(fields), 3, fields)
            self.assertIn(fields[0], ("run", "tests", "benchmarks"))
        packages = [fields[1] for fields in lines]
        self.assertEqual(len(packages), len(set(packages)))
        readme = (root / "README.md").read_text(encoding="utf-8")
        missing = [f"| `{package}` | {purpose} |" for _, package, purpose in lines if f"`{package}`" not in readme]
        self.assertEqual(missing, [], "the table of dependencies in README.md lacks these rows")


if __name__ == "__main__":
    unittest.main()
