#!/usr/bin/env python3
"""The mutation check must tell what it finds, and must not pass when it could not look: made-up sources and test
programs. And what it is to change must be in the sources."""
import io
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

import mutate_shaders as check
from shader_mutations import MUTATIONS, Mutation

# A test program of which the body says whether it passes, given the text of the source that it finds.
PROGRAM = """#!{python}
import os, sys
text = open(os.path.join(os.environ["V3D_TEST_SHADER_FOLDER"], "Viewer3dModule", "a.glsl")).read()
def passes():
    print("[  PASSED  ] 3 tests."); sys.exit(0)
def fails():
    print("[  FAILED  ] ATest.Sees (1 ms)"); sys.exit(1)
{body}
"""


class MutationCheckTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        self.sources = self.root / "sources"
        self.sources.mkdir()
        (self.sources / "a.glsl").write_text("size = 2;\nsign = -1;\nhalf = 2;\n", encoding="ascii")
        self.add_program("unit_shaders", "fails() if 'nonsense' in text else passes()")
        self.add_program("sees_size", "passes() if 'size = 2' in text else fails()")
        self.add_program("sees_sign", "passes() if 'sign = -1' in text else fails()")

    def add_program(self, name, body):
        path = self.root / name
        path.write_text(PROGRAM.format(python=sys.executable, body=body), encoding="utf-8")
        path.chmod(0o755)

    def run_check(self, old, new, programs="sees_size", source="a.glsl", count=1):
        """The survivors and what was printed."""
        out = io.StringIO()
        mutations = [Mutation("group", f"change {i}", source, old, new, programs.split()) for i in range(count)]
        survivors = check.check(mutations, self.sources, check.Programs(self.root), 2, out)
        return survivors, out.getvalue()

    def assert_error(self, words, *arguments, **named):
        with self.assertRaisesRegex(check.CheckError, words):
            self.run_check(*arguments, **named)

    def test_noticed_change(self):
        survivors, printed = self.run_check("size = 2", "size = 3")
        self.assertEqual(survivors, [])
        self.assertIn("ATest.Sees", printed)

    def test_noticed_by_the_second_program(self):
        self.assertEqual(self.run_check("sign = -1", "sign = 1", "sees_size sees_sign")[0], [])

    def test_surviving_change_is_reported(self):
        survivors, printed = self.run_check("sign = -1", "sign = 1", count=2)
        self.assertEqual(survivors, ["change 0", "change 1"])
        self.assertIn("SURVIVED: sign = -1  ->  sign = 1", printed)

    def test_sources_stay_as_they_are(self):
        before = (self.sources / "a.glsl").read_bytes()
        self.run_check("size = 2", "size = 3")
        self.assertEqual((self.sources / "a.glsl").read_bytes(), before)
        self.assertEqual([path.name for path in self.sources.iterdir()], ["a.glsl"])

    def test_text_that_is_not_there(self):
        self.assert_error("has 0 places", "colour = 2", "colour = 3")

    def test_text_that_is_there_twice(self):
        self.assert_error("has 2 places", "= 2", "= 3")

    def test_change_that_changes_nothing(self):
        self.assert_error("changes nothing", "size = 2", "size = 2")

    def test_source_that_is_not_there(self):
        self.assert_error("no source b.glsl", "size = 2", "size = 3", source="b.glsl")

    def test_program_that_is_not_there(self):
        self.assert_error("sees_nothing is not built", "size = 2", "size = 3", "sees_nothing")

    def test_change_that_does_not_compile(self):
        self.assert_error("no longer a valid shader", "size = 2", "nonsense")

    def test_program_that_fails_without_a_change(self):
        self.add_program("sees_all", "fails()")
        self.assert_error("fails already without a mutation: ATest.Sees", "size = 2", "size = 3", "sees_all")

    def test_program_that_runs_no_test(self):
        self.add_program("empty", "print('[  PASSED  ] 0 tests.')")
        self.assert_error("ran no test", "size = 2", "size = 3", "empty")

    def test_program_that_cannot_start(self):
        self.add_program("no_display", "if 'size = 2' in text: passes()\nprint('no display'); sys.exit(1)")
        self.assert_error("no display", "size = 2", "size = 3", "no_display")

    def test_program_that_crashes_on_a_change(self):
        self.add_program("crashes", "passes() if 'size = 2' in text else os.kill(os.getpid(), 11)")
        survivors, printed = self.run_check("size = 2", "size = 3", "crashes")
        self.assertEqual(survivors, [])
        self.assertIn("crashes (signal 11)", printed)

    def test_program_that_hangs_on_a_change(self):
        self.add_program("hangs", "import time\npasses() if 'size = 2' in text else time.sleep(60)")
        with mock.patch.object(check, "SECONDS_TO_RUN", 1):
            survivors, printed = self.run_check("size = 2", "size = 3", "hangs")
        self.assertEqual(survivors, [])
        self.assertIn("hangs (no end in 1 s)", printed)

    def test_exit_statuses(self):
        script = Path(check.__file__)
        (self.root / "bin").mkdir()
        done = subprocess.run([sys.executable, script, self.root], stderr=subprocess.PIPE, text=True, check=False,
                              env=dict(os.environ, QT_QPA_PLATFORM="offscreen"))
        self.assertEqual(done.returncode, 2)
        self.assertIn("is not built", done.stderr)
        for survivors, status in (([], 0), (["one"], 1)):
            with mock.patch.object(check, "check", return_value=survivors), mock.patch("sys.stdout", io.StringIO()):
                self.assertEqual(check.main([str(self.root)]), status)


class MutationsTest(unittest.TestCase):
    def test_every_text_is_in_its_source_once(self):
        for mutation in MUTATIONS:
            with self.subTest(f"{mutation.source}: {mutation.name}"):
                check.mutate(mutation, check.SOURCES)

    def test_every_source_is_changed(self):
        names = {path.name for path in check.SOURCES.iterdir()}
        for folder in check.FURTHER_FOLDERS:
            names |= {f"../{folder}/{path.name}" for path in (check.SOURCES.parent / folder).iterdir()}
        self.assertEqual({mutation.source for mutation in MUTATIONS}, names)

    def test_every_change_is_another(self):
        texts = [(mutation.source, mutation.old, mutation.new) for mutation in MUTATIONS]
        self.assertEqual(len(set(texts)), len(texts))


if __name__ == "__main__":
    unittest.main()
