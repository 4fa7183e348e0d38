#!/usr/bin/env python3
"""The licence check must refuse what it is there to refuse: made-up libraries, packages and tables."""
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

import check_licences as licences

HEAD = "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n\n"
COMPILER = os.environ.get("CXX", "c++")


def copyright_file(*licence_of_files):
    """A copyright file of (files, licence) pairs."""
    return HEAD + "\n".join(f"Files: {files}\nCopyright: somebody\nLicense: {licence}\n text\n"
                            for files, licence in licence_of_files)


class Machine:
    """A machine on which the made-up libraries are installed from made-up packages."""

    def __init__(self, copyrights):
        self.copyrights = copyrights

    def owner(self, path):
        name = Path(path).name.split(".")[0]
        return name if name in self.copyrights else licences.Debian().owner(path)

    def copyright(self, package):
        return self.copyrights.get(package) or licences.Debian().copyright(package)


class CopyrightTest(unittest.TestCase):
    def refused(self, text):
        licence, problem = licences.judge_copyright(text)
        self.assertIsNone(licence)
        return problem

    def test_permissive_passes(self):
        self.assertEqual(licences.judge_copyright(copyright_file(("*", "Expat"), ("a.c", "BSD-3-clause"))),
                         ("BSD-3-clause, Expat", None))

    def test_gpl_is_refused_by_name(self):
        self.assertEqual(self.refused(copyright_file(("*", "GPL-3+"))), "GPL-3+ for *")

    def test_gpl_of_one_file_is_refused(self):
        self.assertEqual(self.refused(copyright_file(("*", "Expat"), ("src/x.c src/y.c", "GPL-2"))),
                         "GPL-2 for src/x.c src/y.c")

    def test_agpl_is_refused(self):
        self.refused(copyright_file(("*", "AGPL-3")))

    def test_a_choice_passes(self):
        self.assertEqual(licences.judge_copyright(copyright_file(("*", "LGPL-3 or GPL-2"))), ("LGPL-3 or GPL-2", None))

    def test_both_at_once_are_refused(self):
        self.refused(copyright_file(("*", "Expat and GPL-2")))

    def test_two_names_without_a_word_between_are_refused(self):
        self.refused(copyright_file(("*", "Expat, GPL-2")))

    def test_unknown_names_are_refused(self):
        self.refused(copyright_file(("*", "Our-own-licence")))

    def test_no_name_is_refused(self):
        self.refused(copyright_file(("*", "")))

    def test_packaging_does_not_count(self):
        self.assertEqual(licences.judge_copyright(copyright_file(("*", "Expat"), ("debian/*", "GPL-2+"))),
                         ("Expat", None))

    def test_free_text_is_refused(self):
        self.assertEqual(self.refused("You may do what you like."), "its copyright file is not machine-readable")

    def test_no_files_are_refused(self):
        self.refused(HEAD)


class ProgramCopyrightTest(unittest.TestCase):
    """What a program alone links may be under the GPL, where that goes with LGPL-3 and Apache-2.0."""

    def problem(self, licence):
        return licences.judge_copyright(copyright_file(("*", licence)), by_program=True)[1]

    def test_the_gpl_passes_from_version_2_upwards(self):
        for licence in ("GPL-2+", "GPL-2.0+", "GPL-3", "GPL-3+", "Expat and GPL-3+"):
            self.assertIsNone(self.problem(licence), licence)

    def test_version_2_alone_is_refused(self):
        self.assertEqual(self.problem("GPL-2"), "GPL-2 for *")

    def test_others_are_refused_as_everywhere(self):
        for licence in ("AGPL-3", "Our-own-licence", "GPL-2+ and Our-own-licence", ""):
            self.assertIsNotNone(self.problem(licence), licence)


class TableTest(unittest.TestCase):
    def test_an_entry_decides(self):
        table = licences.read_table("# comment\n\nlibx | MIT | the GPL is for tests\n")
        machine = Machine({"libx": copyright_file(("*", "GPL-2"))})
        self.assertEqual(licences.judge("libx", table, machine), ("MIT", None))

    def test_an_entry_wants_a_reason(self):
        with self.assertRaises(licences.LicenceError):
            licences.read_table("libx | MIT |\n")

    def test_the_table_cannot_allow_the_gpl(self):
        with self.assertRaisesRegex(licences.LicenceError, "libx: a closed program may not load"):
            licences.read_table("libx | GPL-2+ | we like it\n")

    def test_two_entries_are_refused(self):
        with self.assertRaises(licences.LicenceError):
            licences.read_table("libx | MIT | a\nlibx | MIT | b\n")


class LinkTest(unittest.TestCase):
    """A reader that links libmadeup_middle, which links libmadeup_codec; the reader alone is shipped."""

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        root = Path(cls.folder.name)
        (root / "shipped").mkdir()
        (root / "empty").mkdir()
        for library, links in (("madeup_codec", []), ("madeup_middle", ["madeup_codec"]),
                               ("shipped/reader_madeup", ["madeup_middle"])):
            path = root / library
            name = path.name
            calls = "".join(f"void {other}(); " for other in links)
            source = calls + f"void {name}() {{ {''.join(other + '(); ' for other in links)} }}"
            target = path.parent / (name + ".so" if links == ["madeup_middle"] else f"lib{name}.so")
            cls.root = root
            cls.compile(source, target, ["-shared", "-fPIC", *[f"-l{other}" for other in links]])
        cls.shipped = root / "shipped"

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    @classmethod
    def compile(cls, source, target, options):
        subprocess.run([COMPILER, "-x", "c++", "-", "-o", str(target), f"-L{cls.root}", f"-Wl,-rpath,{cls.root}",
                        *options], input=source, text=True, check=True)

    @staticmethod
    def table():
        return licences.read_table((Path(__file__).parent / "licences.txt").read_text(encoding="utf-8"))

    def findings(self, codec):
        machine = Machine({"libmadeup_codec": codec, "libmadeup_middle": copyright_file(("*", "Expat"))})
        return licences.check(self.shipped, self.table(), machine)

    def test_a_gpl_library_behind_another_is_refused(self):
        findings, packages, shipped = self.findings(copyright_file(("*", "GPL-3+")))
        self.assertEqual(findings, ["reader_madeup.so -> libmadeup_middle.so -> libmadeup_codec.so: "
                                    "package libmadeup_codec: GPL-3+ for *"])
        self.assertEqual(packages["libmadeup_middle"], "Expat")
        self.assertEqual(len(shipped), 1)

    def test_the_same_library_passes_under_another_licence(self):
        findings, packages, _ = self.findings(copyright_file(("*", "Zlib")))
        self.assertEqual(findings, [])
        self.assertEqual(packages["libmadeup_codec"], "Zlib")

    def test_a_library_of_no_package_is_refused(self):
        findings, _, _ = licences.check(self.shipped, {}, Machine({"libmadeup_middle": copyright_file(("*", "MIT"))}))
        self.assertIn("reader_madeup.so -> libmadeup_middle.so -> libmadeup_codec.so: "
                      f"{self.root}/libmadeup_codec.so belongs to no package", findings)

    def test_a_program_may_link_what_a_reader_may_not(self):
        copyright_files = {"libmadeup_codec": copyright_file(("*", "GPL-2+")),
                           "libmadeup_middle": copyright_file(("*", "Expat"))}
        for option in ("-pie", "-no-pie"):
            folder = self.root / ("program" + option)
            folder.mkdir()
            self.compile("void madeup_codec(); int main() { madeup_codec(); }", folder / "program",
                         ["-fPIE" if option == "-pie" else "-fno-pie", option, "-lmadeup_codec"])
            findings, packages, shipped = licences.check(folder, self.table(), Machine(copyright_files))
            self.assertEqual(findings, [])
            self.assertEqual(packages["libmadeup_codec"], "GPL-2+")
            self.assertEqual(len(shipped), 1)
            # the reader beside it stays refused, whichever of them is read first
            for name in ("a_reader.so", "z_reader.so"):
                self.compile("void madeup_codec(); void reader() { madeup_codec(); }", folder / name,
                             ["-shared", "-fPIC", "-lmadeup_codec"])
            findings, _, _ = licences.check(folder, self.table(), Machine(copyright_files))
            self.assertEqual(findings, ["a_reader.so -> libmadeup_codec.so: package libmadeup_codec: GPL-2+ for *"])

    def test_a_library_that_can_be_started_too_is_no_program(self):
        library = self.root / "startable.so"
        self.compile("extern const char interpreter[] __attribute__((section(\".interp\"))) = "
                     "\"/lib64/ld-linux-x86-64.so.2\"; void entry() {}", library, ["-shared", "-fPIC"])
        self.assertIn("INTERP", licences.read_elf("-l", library))
        self.assertFalse(licences.is_program(library))

    def test_a_library_that_writes_tiff_is_refused_and_a_program_passes(self):
        folder = self.root / "tiff"
        folder.mkdir()
        self.compile("extern \"C\" const char* TIFFGetVersion(); int main() { return *TIFFGetVersion(); }",
                     folder / "program", ["-fPIE", "-pie", "-ltiff"])
        self.assertEqual(licences.check(folder, self.table(), licences.Debian())[0], [])
        self.compile("extern \"C\" const char* TIFFGetVersion(); const char* version() { return TIFFGetVersion(); }",
                     folder / "reader.so", ["-shared", "-fPIC", "-ltiff"])
        self.assertEqual(licences.check(folder, self.table(), licences.Debian())[0],
                         ["reader.so -> libtiff.so.6 -> libjbig.so.0: package libjbig0: GPL-2+ for *"])

    def test_nothing_to_read_is_refused(self):
        findings, _, _ = licences.check(self.root / "empty", {}, Machine({}))
        self.assertEqual(len(findings), 1)


if __name__ == "__main__":
    unittest.main()
