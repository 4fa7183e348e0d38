#!/usr/bin/env python3
"""Who includes whom: reads the include lines of the product and refuses those that cross a wall.

Usage: check_includes.py FOLDER     the project's root
Prints one line a finding and exits with 1 when there is one.
"""
import re
import sys
from pathlib import Path

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
PRODUCT = ("framework", "Viewer3dModule", "readers", "viewer")
LIBRARIES = ("framework", "Viewer3dModule")

# What a top folder may include of the others.
FOLDERS = {
    "framework": {"framework"},
    "Viewer3dModule": {"framework", "Viewer3dModule"},
    "readers": {"framework", "Viewer3dModule", "readers"},
    "viewer": {"framework", "Viewer3dModule", "viewer"},
}

# The rooms of the module and the rooms that their headers may include. Files that lie in no room (the plug-in
# itself) may include all, and no room may include them.
GROUND = {"shaders", "camera", "fences", "enums"}
ROOMS = {
    "shaders": {"shaders"},
    "camera": {"camera"},
    "fences": {"fences"},
    "enums": {"enums"},
    "drawables": {"drawables"} | GROUND,
    "drawers": {"drawers", "drawables"} | GROUND,
    "scene": {"scene", "drawers", "drawables"} | GROUND,
    "host": {"host", "scene", "drawers", "drawables"} | GROUND,
}
# Rooms that must know each other: what a source, but no header, may include beyond that.
SOURCES = {
    "drawables": {"scene", "drawers"},
    "drawers": {"scene"},
    "scene": {"host"},
}
# The settings, the fence and the items of model elements lie with the host's side, and whoever draws asks them: any
# source, but no header, may.
HOST_SIDE = {f"Viewer3dModule/host/{name}.h"
             for name in ("View3dSettings", "Scene3dViewLightingSettings", "Fence3dItem", "Graphics3dItem")}

# What of the outside world the framework and the module may include: the standard library (no folder, no dot, lower
# case), a few names of the C library, Qt and glm. OpenGL is for the module only.
STANDARD = re.compile(r"^[a-z_0-9]+$|^(dlfcn|unistd|sys/resource|sys/stat)\.h$")
QT = re.compile(r"^Q(t[A-Z][A-Za-z]*/)?")
OPENGL = re.compile(r"OpenGL|^GL/|^EGL/")
# The tessellator of polygons uses nothing of OpenGL but comes in its company; one source of the framework hides it.
TESSELLATOR = ("framework/surf/Tessellator.cpp", "GL/glu.h")


def room_of(path):
    """The room of a file of the module, or None: "Viewer3dModule/scene/Scene3d.h" is in "scene"."""
    parts = path.split("/")
    return parts[1] if len(parts) > 2 else None


def check_own(path, included):
    """What is wrong with a file of the product including another, or None."""
    top, other = path.split("/")[0], included.split("/")[0]
    if other not in FOLDERS[top]:
        return f"{top} may not include {other}"
    if top == "readers" and other == "readers":
        mine, theirs = path.split("/")[1], included.split("/")[1]
        if theirs not in (mine, "common"):
            return "a reader may not include another reader"
    if top == "Viewer3dModule" and other == top:
        mine, theirs = room_of(path), room_of(included)
        if mine is None:
            return None
        if mine not in ROOMS:
            return f"the room {mine} is not known to this check"
        if theirs in ROOMS[mine]:
            return None
        if path.endswith(".cpp") and (theirs in SOURCES.get(mine, ()) or included in HOST_SIDE):
            return None
        if theirs is None:
            return None if included.endswith("_export.h") else f"{mine} may not include the plug-in itself"
        kind = "header" if path.endswith(".h") else "source"
        return f"a {kind} of {mine} may not include {theirs}"
    return None


def check_foreign(path, included):
    """What is wrong with a file of the product including something from outside the project, or None."""
    top = path.split("/")[0]
    if (path, included) == TESSELLATOR:
        return None
    if top == "framework" and OPENGL.search(included):
        return "the framework knows no OpenGL"
    if top in ("framework", "Viewer3dModule"):
        known = STANDARD.match(included) or QT.match(included) or included.startswith("glm/")
        if not known and not (top == "Viewer3dModule" and OPENGL.search(included)):
            return f"{top} stands on the standard library, Qt and glm only"
    return None


def find_cycle(graph):
    """A cycle of the graph as a list of its nodes, or None."""
    done, trail = set(), []

    def visit(node):
        if node in trail:
            return trail[trail.index(node):] + [node]
        if node in done:
            return None
        trail.append(node)
        for following in graph.get(node, ()):
            cycle = visit(following)
            if cycle:
                return cycle
        trail.pop()
        done.add(node)
        return None

    for node in sorted(graph):
        cycle = visit(node)
        if cycle:
            return cycle
    return None


def check_first(root, file, path):
    """What is wrong with the first include line of a source of the shared libraries, as a list. A source that begins
    with its own header shows that this header leans on no other, which nothing else checks."""
    own = path[:-len("cpp")] + "h"
    if path.split("/")[0] not in LIBRARIES or not path.endswith(".cpp") or not (root / own).exists():
        return []
    lines = file.read_text(encoding="utf-8").splitlines()
    first = next((match.group(2) for match in map(INCLUDE.match, lines) if match), None)
    return [] if first == own else [f"{path}: its first include line must be that of {own}"]


def check(root):
    """All findings below the project's root, each one line."""
    findings, headers, files = [], {}, 0
    paths = sorted(path for top in PRODUCT for end in ("h", "cpp") for path in (root / top).rglob(f"*.{end}"))
    for file in paths:
        path = file.relative_to(root).as_posix()
        files += 1
        findings += check_first(root, file, path)
        for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
            match = INCLUDE.match(line)
            if not match:
                continue
            included = match.group(2)
            problem = None
            if match.group(1) == '"':
                if not included.endswith(".moc"):
                    problem = "own headers are included from the root, in angle brackets"
            elif included.split("/")[0] in FOLDERS and "/" in included:
                problem = check_own(path, included)
                if path.endswith(".h"):
                    headers.setdefault(path, []).append(included)
            else:
                problem = check_foreign(path, included)
            if problem:
                findings.append(f"{path}:{number}: {included}: {problem}")
    cycle = find_cycle(headers)
    if cycle:
        findings.append("headers in a cycle: " + " -> ".join(cycle))
    if files == 0:
        findings.append(f"{root}: no source files")
    return findings, files


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    findings, files = check(Path(sys.argv[1]))
    for finding in findings:
        print(finding)
    print(f"{files} files read, {len(findings)} findings")
    sys.exit(1 if findings else 0)


if __name__ == "__main__":
    main()
