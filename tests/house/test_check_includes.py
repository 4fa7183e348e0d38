#!/usr/bin/env python3
"""The include check must find what it is there to find: made-up trees, each with one line that crosses a wall."""
import tempfile
import unittest
from pathlib import Path

import check_includes as includes


class IncludesTest(unittest.TestCase):
    def check(self, **files):
        """The findings of a tree of files, "__" in a name for "/" and a last "_h" or "_cpp" for the ending."""
        with tempfile.TemporaryDirectory() as folder:
            for name, lines in files.items():
                stem, ending = name.replace("__", "/").rsplit("_", 1)
                path = Path(folder) / f"{stem}.{ending}"
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text("\n".join(f"#include {line}" for line in lines), encoding="utf-8")
            return includes.check(Path(folder))[0]

    def assert_found(self, problem, findings):
        self.assertEqual(len(findings), 1, findings)
        self.assertIn(problem, findings[0])

    def test_what_is_allowed(self):
        self.assertEqual(self.check(
            framework__ksp__A_h=["<vector>", "<QtCore/QString>", "<QString>", "<glm/glm.hpp>", "<framework/ksp/B.h>"],
            Viewer3dModule__host__A_h=["<Viewer3dModule/scene/A.h>", "<framework/ksp/A.h>"],
            Viewer3dModule__drawables__A_cpp=["<Viewer3dModule/scene/A.h>", "<QtGui/QOpenGLContext>", '"A.moc"'],
            Viewer3dModule__drawers__A_cpp=["<Viewer3dModule/host/View3dSettings.h>"],
            Viewer3dModule__Plugin_cpp=["<Viewer3dModule/host/A.h>"],
            readers__obj__A_cpp=["<tiny_obj_loader.h>", "<Viewer3dModule/scene/A.h>", "<readers/common/A.h>"],
            viewer__main_cpp=["<Viewer3dModule/scene/A.h>", "<viewer/cli/A.h>"]), [])

    def test_framework_includes_module(self):
        self.assert_found("framework may not include Viewer3dModule",
                          self.check(framework__ksp__A_h=["<Viewer3dModule/scene/A.h>"]))

    def test_framework_includes_opengl(self):
        self.assert_found("knows no OpenGL", self.check(framework__ksp__A_cpp=["<QtGui/QOpenGLContext>"]))

    def test_the_tessellator_has_one_place(self):
        self.assertEqual(self.check(framework__surf__Tessellator_cpp=["<GL/glu.h>"]), [])
        self.assert_found("knows no OpenGL", self.check(framework__surf__Tessellator_h=["<GL/glu.h>"]))
        self.assert_found("knows no OpenGL", self.check(framework__surf__Tessellator_cpp=["<GL/gl.h>"]))

    def test_module_includes_viewer(self):
        self.assert_found("Viewer3dModule may not include viewer",
                          self.check(Viewer3dModule__scene__A_cpp=["<viewer/cli/A.h>"]))

    def test_module_includes_another_library(self):
        self.assert_found("stands on", self.check(Viewer3dModule__scene__A_cpp=["<assimp/scene.h>"]))

    def test_viewer_includes_reader(self):
        self.assert_found("viewer may not include readers", self.check(viewer__main_cpp=["<readers/obj/A.h>"]))

    def test_reader_includes_reader(self):
        self.assert_found("another reader", self.check(readers__obj__A_cpp=["<readers/ply/A.h>"]))

    def test_a_room_looks_up(self):
        self.assert_found("a header of drawables may not include scene",
                          self.check(Viewer3dModule__drawables__A_h=["<Viewer3dModule/scene/A.h>"]))

    def test_a_source_on_the_ground_looks_up(self):
        self.assert_found("a source of shaders may not include drawers",
                          self.check(Viewer3dModule__shaders__A_cpp=["<Viewer3dModule/drawers/A.h>"]))

    def test_a_header_includes_the_settings(self):
        self.assert_found("a header of drawers may not include host",
                          self.check(Viewer3dModule__drawers__A_h=["<Viewer3dModule/host/View3dSettings.h>"]))

    def test_a_room_includes_the_plugin(self):
        self.assert_found("may not include the plug-in",
                          self.check(Viewer3dModule__host__A_cpp=["<Viewer3dModule/Viewer3dModule.h>"]))

    def test_an_unknown_room(self):
        self.assert_found("not known", self.check(Viewer3dModule__attic__A_cpp=["<Viewer3dModule/scene/A.h>"]))

    def test_quotes(self):
        self.assert_found("angle brackets", self.check(viewer__main_cpp=['"A.h"']))

    def test_the_own_header_first(self):
        own, other = "<framework/ksp/A.h>", "<framework/ksp/B.h>"
        self.assertEqual(self.check(framework__ksp__A_h=[], framework__ksp__A_cpp=[own, other]), [])
        self.assertEqual(self.check(framework__ksp__A_cpp=[other]), [])
        self.assertEqual(self.check(viewer__cli__A_h=[], viewer__cli__A_cpp=["<viewer/cli/B.h>"]), [])
        self.assert_found("its first include line must be that of framework/ksp/A.h",
                          self.check(framework__ksp__A_h=[], framework__ksp__A_cpp=[other, own]))
        self.assert_found("its first include line", self.check(framework__ksp__A_h=[], framework__ksp__A_cpp=[]))

    def test_a_header_cycle(self):
        self.assert_found("cycle", self.check(viewer__a_h=["<viewer/b.h>"], viewer__b_h=["<viewer/c.h>"],
                                              viewer__c_h=["<viewer/a.h>"]))

    def test_an_empty_tree(self):
        self.assert_found("no source files", self.check(docs__a_h=[]))


if __name__ == "__main__":
    unittest.main()
