#!/usr/bin/env python3
"""clang-tidy over the project's sources; scripts/lint.sh calls it.

Files are put together to one, and there are two kinds of jobs:

- The static analyzer looks at a room, the files of a folder: it follows calls from one file into the next, and does not
  look again by itself at a function that it has followed there. It is called by the compiler, with the checks that
  clang-tidy's configuration names, because it then takes the headers of Qt from a precompiled one; clang-tidy would
  walk through all of them.
- All other checks look at a part of the project: most of their time goes into the headers of Qt, which are then read
  once and not once a file.

A name that the unnamed namespaces of several files have in common gets a number there; files that cannot stand together
all the same go into units of their own. All are compiled with the flags of all targets. That each file compiles alone is
seen by the optimised build.

A job that passed is not done again until its files, a header they really include, the configuration or an installed
package changes.
"""

import argparse
import bisect
import collections
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build" / "lint"
CACHE = BUILD / "passed"
FOLDERS = ("src", "sim", "apps", "examples")
PARTS = ("src/", "")  # a file belongs to the first that it begins with
# The analyzer leaves a function after so many states. With three times as many, as it would by itself, it takes twice
# the time and reaches the same blocks (97.2 % both times, told by its checker debug.Stats).
ANALYZER_STATES = 75_000


def output(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False,
                          cwd=ROOT).stdout


def digest(*parts):
    return hashlib.sha256("\0".join(parts).encode()).hexdigest()[:32]


class Sources:
    """The project's files: their digests, the project's headers they include, and the names they keep to themselves;
    each file is read once."""

    INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)
    UNNAMED = re.compile(r"^namespace {$(.*?)^} // namespace$", re.MULTILINE | re.DOTALL)
    TEMPLATE = re.compile(r"<[^<>\n]*>")
    DEFINED = re.compile(r"^(?:(?:struct|class|enum(?: class)?) (\w+)|"
                         r"(?!using namespace|using [\w:]+;)\w[^(=\[{;\n]*?(?<![\w:])(\w+) ?[(=\[{;])", re.MULTILINE)

    def __init__(self):
        self.digests = {}
        self.direct = {}
        self.own = {}

    def digest(self, path):
        self.read(path)
        return self.digests[path]

    def read(self, path):
        if path in self.digests:
            return
        try:
            content = (ROOT / path).read_bytes()
        except OSError:
            content = b""
        self.digests[path] = hashlib.sha256(content).hexdigest()
        text = content.decode()
        self.direct[path] = [found for name in self.INCLUDE.findall(text) if (found := self.find(path, name))]
        self.own[path] = {name for part in self.UNNAMED.findall(text) for name in self.defined(part)} | {"main"}

    def defined(self, text):
        """The names of types, functions and constants that begin in the first column."""
        while (plain := self.TEMPLATE.sub("", text)) != text:
            text = plain
        return {kind or name for kind, name in self.DEFINED.findall(text)} - {"operator"}

    def in_common(self, paths):
        """For each file, what it has in common with one before it."""
        known, common = set(), {}
        for path in paths:
            self.read(path)
            common[path] = self.own[path] & known
            known |= self.own[path]
        return common

    @staticmethod
    def find(path, name):
        """Where a file that another one includes stands, as the build files say."""
        places = (pathlib.Path(path).parent / name, re.sub("^tnv5/", "src/", name), name)
        return next((os.path.normpath(place) for place in places if (ROOT / place).is_file()), None)

    def included(self, paths):
        waiting, found = list(paths), set()
        while waiting:
            path = waiting.pop()
            if path not in found:
                found.add(path)
                self.read(path)
                waiting += self.direct[path]
        return sorted(found)


def flags_of_all():
    """How the compiler is called, for the files of any target."""
    found = {}  # in order
    for entry in json.loads((BUILD / "compile_commands.json").read_text(encoding="utf-8")):
        if pathlib.Path(entry["file"]).is_relative_to(BUILD):
            continue  # made, not written
        words = shlex.split(entry["command"])
        compiler = next(i for i, word in enumerate(words) if word.endswith("clang++"))
        words = iter(words[compiler + 1:words.index("-o")])
        found.update(((word, next(words)) if word == "-isystem" else (word,), None) for word in words)
    return [word for flag in found for word in flag if word not in ("-fPIE", "-fPIC")]


class Precompiled:
    """The headers of others that several files include, compiled once for all of them."""

    INCLUDE = re.compile(r"^#include (<[^>]+>)", re.MULTILINE)
    FILES = 3  # so many must include a header

    def __init__(self, files, flags, tools):
        self.lock = threading.Lock()
        self.flags = flags
        counted = collections.Counter(header for file in files
                                      for header in self.INCLUDE.findall((ROOT / file).read_text(encoding="utf-8")))
        self.text = "".join(f"#include {header}\n" for header in sorted(counted) if counted[header] >= self.FILES)
        self.path = BUILD / "precompiled" / (digest(tools, self.text) + ".h")

    def options(self):
        """What makes the compiler take them from there. A header that cannot be precompiled is read by each file."""
        with self.lock:
            made = self.path.with_suffix(".pch")
            if self.text and not self.path.exists():
                subprocess.run(["clang++", *self.flags, "-x", "c++-header", "-o", str(made), "-"], check=False,
                               input=self.text, stderr=subprocess.DEVNULL, text=True, cwd=ROOT)
                self.path.write_text(self.text, encoding="utf-8")
            return ["-include-pch", str(made)] if made.exists() else []


class Job:
    """Some checks of a file, or of several put together to one."""

    def __init__(self, files, what, checks, tool):
        self.files = files
        self.what = what
        self.checks = checks
        self.tool = tool  # told a path, says whether it is clean and what it says otherwise

    def name(self):
        return self.files[0] if len(self.files) == 1 else f"{len(self.files)} files of {self.folder()}"

    def folder(self):
        folders = {os.path.dirname(file) for file in self.files}
        return os.path.commonpath(folders) or ", ".join(sorted({folder.split("/")[0] for folder in folders}))

    def weight(self):
        """Long jobs go first, so that none is left over at the end."""
        return len(self.files), sum((ROOT / file).stat().st_size for file in self.files)


def grouped(files, key):
    groups = {}
    for file in files:
        groups.setdefault(key(file), []).append(file)
    return list(groups.values())


class Unit:
    """Files put together to one; knows which line is whose."""

    def __init__(self, job, files, in_common):
        self.files = files
        self.path = BUILD / "units" / (digest(job.what, *files) + ".cpp")
        self.starts = []
        text = []
        for number, file in enumerate(files):
            content = (ROOT / file).read_text(encoding="utf-8").splitlines()
            if in_common[file]:
                names = re.compile(rf"(?<![.>:\w])({'|'.join(in_common[file])})\b")
                content = [names.sub(rf"\1_{number}", line) for line in content]
            self.starts.append(len(text) + 1)
            text += content
        self.path.write_text("\n".join(text) + "\n", encoding="utf-8")

    def clashing(self, flags):
        """The files that cannot stand after those before them."""
        errors = subprocess.run(["clang++", *flags, "-w", "-fsyntax-only", "-ferror-limit=0", str(self.path)],
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, cwd=ROOT)
        return {self.place(int(line))[0]
                for line in re.findall(re.escape(str(self.path)) + r":(\d+):\d+: error: ", errors.stdout)}

    def place(self, line):
        """Which file a line comes from, and which line of it it is."""
        number = max(bisect.bisect_right(self.starts, line) - 1, 0)
        return self.files[number], line - self.starts[number] + 1

    def told(self, report):
        """A report about the unit, told of the files it was made of."""
        def place(match):
            file, line = self.place(int(match[1]))
            return f"{ROOT / file}:{line}:"
        return re.sub(re.escape(str(self.path)) + r":(\d+):", place, report)


class Lint:
    def __init__(self, files):
        self.files = files
        self.sources = Sources()
        self.flags = flags_of_all()
        self.tools = digest(output("dpkg-query", "-W"), self.sources.digest(".clang-tidy"),
                            self.sources.digest("scripts/lint.py"), *self.flags)
        self.precompiled = Precompiled(files, self.flags, self.tools)
        self.lock = threading.Lock()
        self.done = 0
        self.total = 0

    def jobs(self):
        analyzer = "clang-analyzer-"
        checks = ",".join(check[len(analyzer):] for check in output("clang-tidy", "--list-checks").split()
                          if check.startswith(analyzer))
        for part in grouped(self.files, lambda file: next(part for part in PARTS if file.startswith(part))):
            yield Job(part, "all other checks", f"-{analyzer}*", self.tidy)
        for room in grouped(self.files, os.path.dirname):
            yield Job(room, "analyzer", checks, self.analyze)

    def mark(self, job):
        """The file that says that a job passed with the files as they are."""
        return CACHE / digest(self.tools, job.checks, *job.files,
                              *(f"{path} {self.sources.digest(path)}" for path in self.sources.included(job.files)))

    @staticmethod
    def called(*command, complaints):
        """Whether a tool is content, and what it says."""
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=complaints, text=True, check=False, cwd=ROOT)
        return done.returncode == 0, done.stdout

    def tidy(self, job, path):
        return self.called("clang-tidy", "--quiet", f"--checks={job.checks}", str(path), "--",
                           *self.flags, complaints=subprocess.DEVNULL)

    def analyze(self, job, path):
        return self.called("clang++", *self.flags, *self.precompiled.options(), "--analyze",
                           "--analyzer-no-default-checks", "-Xclang", f"-analyzer-checker={job.checks}",
                           "-Xclang", "-analyzer-config", "-Xclang", f"max-nodes={ANALYZER_STATES}",
                           "-Xclang", "-analyzer-output=text", "-Xclang", "-analyzer-werror", str(path),
                           complaints=subprocess.STDOUT)

    def check(self, job, files):
        """Whether these files of a job are clean, and what its tool says otherwise."""
        if len(files) == 1:
            return job.tool(job, ROOT / files[0])
        unit = Unit(job, files, self.sources.in_common(files))
        clean, report = job.tool(job, unit.path)
        clashing = set() if clean else unit.clashing([*self.flags, *self.precompiled.options()])
        if not clashing:
            return clean, unit.told(report)
        rest = [file for file in files if file not in clashing]
        apart = [file for file in files if file in clashing]
        parts = [rest, apart] if rest else [[file] for file in files]
        results = [self.check(job, part) for part in parts]
        return all(clean for clean, _ in results), "".join(report for _, report in results)

    def run(self, job):
        began = time.monotonic()
        clean, report = self.check(job, job.files)
        if clean:
            self.mark(job).touch()
        with self.lock:
            self.done += 1
            print(f"lint: [{self.done}/{self.total}] {job.name()}, {job.what}, {time.monotonic() - began:.0f} s"
                  + ("" if clean else f": FAILED\n{report}"), flush=True)
        return clean

    def run_all(self):
        CACHE.mkdir(parents=True, exist_ok=True)
        (BUILD / "units").mkdir(exist_ok=True)
        (BUILD / "precompiled").mkdir(exist_ok=True)
        jobs = [job for job in self.jobs() if not self.mark(job).exists()]
        jobs.sort(key=Job.weight, reverse=True)
        self.total = len(jobs)
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            return all(list(pool.map(self.run, jobs)))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("files", nargs="*", help="sources (without any, all)")
    files = [os.path.relpath(os.path.abspath(file), ROOT) for file in parser.parse_args().files]
    if not files:
        files = output("git", "ls-files", "--cached", "--others", "--exclude-standard",
                       *(f"{folder}/*.cpp" for folder in FOLDERS)).split()
        # What only another system compiles is checked by its compiler's warnings (scripts/test-windows.sh).
        files = [file for file in files if (ROOT / file).exists() and not file.endswith("_windows.cpp")]
    if not Lint(files).run_all():
        sys.exit("lint: FAILED")
    print(f"lint: {len(files)} files are clean")


if __name__ == "__main__":
    main()
