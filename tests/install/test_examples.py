#!/usr/bin/env python3
"""Builds the examples against an installed package and nothing else, runs them, and looks at the picture.

Environment: V3D_PREFIX the installed tree, V3D_SOURCE the project's folder, V3D_WORK a folder to work in,
V3D_BUILD the project's build folder, CMAKE and CXX the programs to build with.
"""
import os
import shutil
import struct
import subprocess
import unittest
import zlib
from pathlib import Path

PREFIX, SOURCE, WORK, BUILD = (Path(os.environ[name]).resolve()
                               for name in ("V3D_PREFIX", "V3D_SOURCE", "V3D_WORK", "V3D_BUILD"))
WHITE, RED, BLUE = (255, 255, 255), (255, 0, 0), (0, 0, 255)


def run(*command, **options):
    done = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False, **options)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(str(part) for part in command)}: status {done.returncode}\n{done.stdout}")
    return done.stdout


def build(example):
    """Builds a copy of an example that lies outside of the project; gives its build folder."""
    source, folder = WORK / "source" / example, WORK / "build" / example
    shutil.copytree(SOURCE / "examples" / example, source)
    run(os.environ["CMAKE"], "-G", "Ninja", "-S", source, "-B", folder, f"-DCMAKE_PREFIX_PATH={PREFIX}",
        f"-DCMAKE_CXX_COMPILER={os.environ['CXX']}", "-DCMAKE_CXX_FLAGS=" + os.environ.get("V3D_FLAGS", ""),
        "-DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON")
    run(os.environ["CMAKE"], "--build", folder)
    return folder


def read_png(path):
    """The rows of a PNG of 8 bits a channel, not interlaced: [[(r, g, b), ...], ...]."""
    data = path.read_bytes()
    assert data[:8] == b"\x89PNG\r\n\x1a\n", "no PNG"
    position, packed = 8, b""
    while position < len(data):
        length, kind = struct.unpack(">I4s", data[position:position + 8])
        chunk = data[position + 8:position + 8 + length]
        if kind == b"IHDR":
            width, height, bits, colour, _, _, interlaced = struct.unpack(">IIBBBBB", chunk)
            assert bits == 8 and colour in (2, 6) and not interlaced, "not 8-bit RGB"
        elif kind == b"IDAT":
            packed += chunk
        position += length + 12
    size = 3 if colour == 2 else 4
    raw, stride, rows = zlib.decompress(packed), width * size, []
    above = bytearray(stride)
    for y in range(height):
        start = y * (stride + 1)
        kind, line = raw[start], bytearray(raw[start + 1:start + 1 + stride])
        for i in range(stride):
            left = line[i - size] if i >= size else 0
            corner = above[i - size] if i >= size else 0
            nearest = min((left, above[i], corner), key=lambda v, b=left + above[i] - corner: abs(b - v))
            line[i] = (line[i] + (0, left, above[i], (left + above[i]) // 2, nearest)[kind]) & 255
        rows.append([tuple(line[x * size:x * size + 3]) for x in range(width)])
        above = line
    return rows


class ExamplesTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        shutil.rmtree(WORK, ignore_errors=True)
        cls.host = build("host")
        cls.plugin = build("plugin")
        (WORK / "runtime").mkdir(mode=0o700)

    def picture(self, *arguments):
        path = WORK / f"{self.id().rsplit('.', 1)[1]}.png"
        said = run(self.host / "example_host", path, *arguments, cwd=WORK,
                   env={**os.environ, "VIEWER3D_PLUGIN_PATH": "", "XDG_RUNTIME_DIR": str(WORK / "runtime")})
        self.assertEqual(said, "")
        return read_png(path)

    def check_square(self, rows):
        """A square of 100 m, 3 pixels wide, in 400 pixels with 125 m across: its sides are at 40 and 360."""
        self.assertEqual((len(rows), len(rows[0])), (400, 400))
        for x, y in ((40, 100), (360, 100), (100, 40), (100, 360)):
            self.assertEqual(rows[y][x], RED, f"at {x}, {y}")
        for x, y in ((10, 10), (200, 20), (100, 100), (60, 340), (390, 200)):
            self.assertEqual(rows[y][x], WHITE, f"at {x}, {y}")
        red = sum(row.count(RED) for row in rows)
        self.assertTrue(4 * 320 * 2 <= red <= 4 * 324 * 4, f"{red} red pixels")

    def test_the_host_shows_its_line(self):
        rows = self.picture()
        self.check_square(rows)
        self.assertEqual(sum(row.count(BLUE) for row in rows), 0)

    def test_the_host_shows_what_the_plugin_adds(self):
        """A cross of 20 m, that is 64 pixels, in the middle."""
        rows = self.picture(self.plugin)
        self.check_square(rows)
        for x, y in ((200, 200), (170, 200), (230, 200), (200, 170), (200, 230)):
            self.assertEqual(rows[y][x], BLUE, f"at {x}, {y}")
        for x, y in ((160, 200), (240, 200), (185, 185)):
            self.assertEqual(rows[y][x], WHITE, f"at {x}, {y}")

    def test_a_picture_that_cannot_be_written(self):
        done = subprocess.run([str(self.host / "example_host"), str(WORK / "nowhere" / "x.png")], check=False,
                              capture_output=True)
        self.assertEqual(done.returncode, 1)

    def test_nothing_of_the_project_but_the_package_was_used(self):
        for folder in (self.host, self.plugin):
            for name in ("build.ninja", "compile_commands.json"):
                text = (folder / name).read_text(encoding="utf-8")
                for ours in (PREFIX, WORK):
                    text = text.replace(str(ours), "")
                self.assertNotIn(str(SOURCE), text, f"{folder / name}")
        for file in (self.host / "example_host", self.plugin / "libexample_plugin.so"):
            for line in run("ldd", file).splitlines():
                if "Viewer3dModule" in line or "HostFramework" in line:
                    self.assertIn(f"=> {PREFIX}/", line)

    def test_nothing_installed_knows_the_build_folder(self):
        for path in PREFIX.rglob("*.cmake"):
            self.assertNotIn(str(BUILD), path.read_text(encoding="utf-8").replace(str(PREFIX), ""), str(path))
        for path in PREFIX.rglob("*"):
            if path.is_file() and path.read_bytes()[:4] == b"\x7fELF":
                runpath = [line for line in run("readelf", "-d", path).splitlines() if "RUNPATH" in line]
                self.assertEqual(len(runpath), 1, str(path))
                self.assertIn("[$ORIGIN", runpath[0], str(path))


if __name__ == "__main__":
    unittest.main()
