#!/usr/bin/env python3
"""What the shipped files link, and whether that may be.

Usage: check_licences.py FOLDER TABLE     an installed tree; the table of judged packages

Every ELF file below FOLDER is read for the libraries that it needs (DT_NEEDED), and these in turn. A library from
outside FOLDER belongs to a Debian package. That package must be in TABLE, or its machine-readable copyright file must
name nothing but licences that allow linking. Whatever is unknown is refused.

What is allowed depends on who links. A closed host may load our libraries and plug-ins, and with them everything that
they link: nothing of that may be under the GPL. Nobody can load our own programs (the dynamic linker refuses them), and
their sources are under the MIT licence, which the GPL takes in: what only a program links may be under the GPL, too,
in a version that goes with the rest of what it links, LGPL-3 and Apache-2.0, which version 2 alone does not.

Prints each package with its licence, one line a finding, and exits with 1 when there is a finding. Libraries that are
opened while a program runs (OpenGL drivers, Qt's platform plug-ins) belong to the machine and are not read.
"""
import functools
import re
import subprocess
import sys
from pathlib import Path

# Licences that allow it, by the beginning of their short name. The LGPL does since everything here links dynamically.
ALLOWED = re.compile(
    r"^(expat|mit|x11|isc|ntp|hylafax|bsd|zlib|libpng|apache-2|bsl-1|lgpl|mpl|ftl|sgi-b|unicode|public-domain|pd$"
    r"|gcc-exception)",
    re.IGNORECASE)
# What no name may hold, however it begins.
REFUSED = re.compile(r"(?<!l)gpl", re.IGNORECASE)
# What programs may link beyond that.
ALLOWED_IN_PROGRAMS = re.compile(r"^gpl-(2(\.0)?\+|3(\.0)?\+?)$", re.IGNORECASE)


class LicenceError(Exception):
    """The table cannot be used."""


@functools.lru_cache(maxsize=None)
def owner_of_any(names):
    """The package that has a file of one of these names, or None. One question for all names: each reads every list."""
    answer = subprocess.run(["dpkg-query", "-S", *names], capture_output=True, text=True, check=False)
    owners = dict(reversed(line.rsplit(": ", 1)) for line in answer.stdout.splitlines() if ": " in line)
    return next((owners[name].split(":")[0] for name in names if name in owners), None)


class Debian:
    """Packages and their copyright files, as installed on this machine."""

    def owner(self, path):
        """The package that a file belongs to, or None."""
        real = str(Path(path).resolve())
        return owner_of_any((real, re.sub(r"^/usr/", "/", real), str(path)))

    def copyright(self, package):
        """The text of a package's copyright file, or None."""
        path = Path("/usr/share/doc") / package / "copyright"
        return path.read_text(encoding="utf-8", errors="replace") if path.exists() else None


def read_table(text):
    """The judged packages: {package: (licence, reason)}. Each line is "package | licence | reason"."""
    table = {}
    for number, line in enumerate(text.splitlines(), 1):
        line = line.strip()
        if not line or line.startswith("#"):
            continue
        fields = [field.strip() for field in line.split("|")]
        if len(fields) != 3 or not all(fields):
            raise LicenceError(f"line {number}: not \"package | licence | reason\": {line}")
        package, licence, reason = fields
        if not is_allowed(licence):
            raise LicenceError(f"line {number}: {package}: a closed program may not load a library under {licence}")
        if package in table:
            raise LicenceError(f"line {number}: {package} is there twice")
        table[package] = (licence, reason)
    return table


def is_allowed(expression, by_program=False):
    """Whether a licence expression leaves a choice that allows it: of "A or B" one must, of "A and B" both."""
    def allows(name):
        return bool(ALLOWED.match(name) and not REFUSED.search(name)) or (
            by_program and bool(ALLOWED_IN_PROGRAMS.match(name)))

    expression = expression.replace(",", " ")
    return all(any(allows(name.strip()) for name in re.split(r"\s+or\s+", part))
               for part in re.split(r"\s+and\s+", expression))


def paragraphs(text):
    """The paragraphs of a machine-readable copyright file, each {field: value}."""
    for block in re.split(r"\n\s*\n", text):
        fields, name = {}, None
        for line in block.splitlines():
            match = re.match(r"^([A-Za-z-]+):\s*(.*)$", line)
            if match:
                name = match.group(1)
                fields[name] = match.group(2)
            elif name:
                fields[name] += "\n" + line
        yield fields


def judge_copyright(text, by_program=False):
    """(licences, None) of a copyright file that names allowed licences only, else (None, what is wrong)."""
    if not re.search(r"^Format(-Specification)?:", text, re.MULTILINE):
        return None, "its copyright file is not machine-readable"
    licences = set()
    for fields in paragraphs(text):
        files = fields.get("Files", "").split()
        if all(name.startswith("debian/") for name in files):
            continue # no files named, or packaging, which is not in the library
        licence = fields.get("License", "").split("\n")[0].strip()
        if not is_allowed(licence, by_program):
            return None, f"{licence or 'no licence'} for {' '.join(files)[:60]}"
        licences.add(licence)
    if not licences:
        return None, "its copyright file names no files"
    return ", ".join(sorted(licences)), None


def judge(package, table, system, by_program=False):
    """(licence, None) for a package that may be linked, else (None, what is wrong)."""
    if package in table:
        return table[package][0], None
    text = system.copyright(package)
    if text is None:
        return None, "it has no copyright file"
    return judge_copyright(text, by_program)


def is_elf(path):
    with open(path, "rb") as file:
        return file.read(4) == b"\x7fELF"


def read_elf(option, path):
    return subprocess.run(["readelf", option, "-W", str(path)], capture_output=True, text=True, check=True).stdout


def is_program(path):
    """Whether a file can be started only and not loaded. Shared libraries can have an entry point, too: no sign."""
    return bool(re.search(r"^\s*Type:\s+EXEC", read_elf("-h", path), re.MULTILINE)
                or re.search(r"\(FLAGS_1\).*\bPIE\b", read_elf("-d", path)))


def needed(path):
    """The names of the libraries that a file itself needs."""
    return re.findall(r"\(NEEDED\).*\[(.+)\]", read_elf("-d", path))


def resolved(path):
    """Where the dynamic linker finds everything that a file needs in the end: {name: path or None}."""
    answer = subprocess.run(["ldd", str(path)], capture_output=True, text=True, check=False)
    found = {}
    for line in answer.stdout.splitlines():
        match = re.match(r"^\s*(\S+) => (not found|/\S+)", line)
        if match:
            found[match.group(1)] = None if match.group(2) == "not found" else match.group(2)
    return found


def closure(path):
    """Everything that a file needs in the end: {name: (path or None, the chain of names that leads to it)}."""
    paths, found, waiting = resolved(path), {}, [(path, [Path(path).name])]
    while waiting:
        file, chain = waiting.pop(0)
        for name in needed(file):
            if name in found or name.startswith("ld-linux"):
                continue
            found[name] = (paths.get(name), chain + [name])
            if paths.get(name):
                waiting.append((paths[name], chain + [name]))
    return found


def check(folder, table, system):
    """(findings, {package: licence}, shipped files) of an installed tree."""
    folder = Path(folder).resolve()
    shipped = [path for path in sorted(folder.rglob("*")) if path.is_file() and not path.is_symlink() and is_elf(path)]
    findings, packages, read = [], {}, set()
    for file in shipped:
        by_program = is_program(file)
        for path, chain in closure(file).values():
            where = " -> ".join(chain)
            if path is None:
                findings.append(f"{where}: not found")
                continue
            if (path, by_program) in read or folder in Path(path).resolve().parents:
                continue
            read.add((path, by_program))
            package = system.owner(path)
            if package is None:
                findings.append(f"{where}: {path} belongs to no package")
                continue
            licence, problem = judge(package, table, system, by_program)
            if problem:
                findings.append(f"{where}: package {package}: {problem}")
            else:
                packages[package] = licence
    if not shipped:
        findings.append(f"{folder}: no programs or libraries")
    return findings, packages, shipped


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    try:
        table = read_table(Path(sys.argv[2]).read_text(encoding="utf-8"))
    except (OSError, LicenceError) as error:
        sys.exit(f"{sys.argv[2]}: {error}")
    findings, packages, shipped = check(sys.argv[1], table, Debian())
    for package, licence in sorted(packages.items()):
        print(f"{package}: {licence}")
    for finding in findings:
        print(f"REFUSED {finding}")
    print(f"{len(shipped)} files read, {len(packages)} packages may be linked, {len(findings)} findings")
    sys.exit(1 if findings else 0)


if __name__ == "__main__":
    main()
