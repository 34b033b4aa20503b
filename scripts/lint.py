#!/usr/bin/env python3
"""clang-tidy over the project's sources; scripts/lint.sh calls it.

Two kinds of jobs, and together they check what clang-tidy would check file by file:

- The static analyzer looks at each file alone: what it finds depends on which functions it sees together.
- All other checks look at a folder's files put together to one: most of their time goes into the headers of Qt,
  which are then read once a folder and not once a file. Files that cannot stand together (their names clash) are
  checked one by one, which is slower and nothing else.

A job that passed is not done again until its files, a header they really include, the configuration or a tool
changes.
"""

import argparse
import bisect
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

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build" / "lint"
CACHE = BUILD / "passed"
FOLDERS = ("src", "sim", "apps", "examples")
VERSIONED = ("clang-tidy-14", "clang-tidy", "qt6-base-dev", "qt6-serialport-dev", "libcli11-dev", "libstdc++-12-dev")


def output(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False,
                          cwd=ROOT).stdout


def digest(*parts):
    return hashlib.sha256("\0".join(parts).encode()).hexdigest()[:32]


class Contents:
    """Digests of files, each read once."""

    def __init__(self):
        self.known = {}

    def of(self, path):
        if path not in self.known:
            try:
                self.known[path] = hashlib.sha256((ROOT / path).read_bytes()).hexdigest()
            except OSError:
                self.known[path] = "missing"
        return self.known[path]


class Flags:
    """How the compiler is called for a file: as for the file itself, or for another of its folder."""

    def __init__(self):
        self.by_folder = {}
        for entry in json.loads((BUILD / "compile_commands.json").read_text(encoding="utf-8")):
            words = shlex.split(entry["command"])
            compiler = next(i for i, word in enumerate(words) if word.endswith("clang++"))
            words = words[compiler + 1:words.index("-o")]
            folder = os.path.relpath(os.path.dirname(entry["file"]), ROOT)
            self.by_folder.setdefault(folder, words)

    def of(self, folder):
        if folder not in self.by_folder:
            sys.exit(f"lint: no build target compiles {folder}")
        return self.by_folder[folder]


class Job:
    def __init__(self, name, files, checks, folder):
        self.name = name
        self.files = files
        self.checks = checks
        self.folder = folder

    def weight(self):
        """Long jobs go first, so that none is left over at the end."""
        return (len(self.files) > 1, sum((ROOT / file).stat().st_size for file in self.files))


class Lint:
    def __init__(self):
        checks = output("clang-tidy", "--list-checks").split()
        self.analyzer = ",".join("-" + check for check in checks
                                 if "-" in check and not check.startswith("clang-analyzer-"))
        self.others = "-clang-analyzer-*"
        self.flags = Flags()
        self.contents = Contents()
        self.tools = digest(output("dpkg-query", "-W", *VERSIONED), self.contents.of(".clang-tidy"),
                            self.contents.of("scripts/lint.py"))
        self.lock = threading.Lock()
        self.done = 0
        self.total = 0

    def jobs(self, files):
        by_folder = {}
        for file in files:
            by_folder.setdefault(os.path.dirname(file), []).append(file)
        for folder, together in by_folder.items():
            yield Job(folder or ".", together, self.others, folder)
            for file in together:
                yield Job(file, [file], self.analyzer, folder)

    def mark(self, job):
        return CACHE / digest(self.tools, job.name, job.checks)

    def state(self, job, included):
        return digest(*self.flags.of(job.folder), *job.files,
                      *(f"{file} {self.contents.of(file)}" for file in sorted({*job.files, *included})))

    def passed_before(self, job):
        """The mark of a job that passed: what it included then, and the state all of it had."""
        try:
            state, *included = self.mark(job).read_text(encoding="utf-8").splitlines()
        except (OSError, ValueError):
            return False
        return state == self.state(job, included)

    def remember(self, job):
        included = set()
        for file in job.files:
            rule = output("clang++", *self.flags.of(job.folder), "-w", "-MM", "-MT", "x", str(ROOT / file))
            paths = shlex.split(rule.replace("\\\n", " "))[1:]
            included |= {os.path.relpath(os.path.realpath(path), ROOT) for path in paths}
        self.mark(job).write_text("\n".join([self.state(job, included), *sorted(included)]), encoding="utf-8")

    def tidy(self, job, path):
        done = subprocess.run(["clang-tidy", "--quiet", f"--checks={job.checks}", str(path), "--",
                               *self.flags.of(job.folder)],
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False, cwd=ROOT)
        return done.returncode == 0, done.stdout

    def check(self, job):
        """Whether it is clean, and what clang-tidy says otherwise."""
        if len(job.files) == 1:
            return self.tidy(job, ROOT / job.files[0])
        unit = BUILD / "units" / (job.name.replace("/", "_") + ".cpp")
        starts, text = [], ""
        for file in job.files:
            starts.append(text.count("\n") + 1)
            text += (ROOT / file).read_text(encoding="utf-8").rstrip("\n") + "\n"
        unit.write_text(text, encoding="utf-8")
        clean, report = self.tidy(job, unit)
        if "clang-diagnostic-error" in report:
            results = [self.tidy(job, ROOT / file) for file in job.files]
            return all(clean for clean, _ in results), "".join(report for _, report in results)

        def place(match):
            line = int(match[1])
            number = bisect.bisect_right(starts, line) - 1
            return f"{ROOT / job.files[number]}:{line - starts[number] + 1}:"
        return clean, re.sub(re.escape(str(unit)) + r":(\d+):", place, report)

    def run(self, job):
        clean, report = self.check(job)
        if clean:
            self.remember(job)
        with self.lock:
            self.done += 1
            what = "analyzer" if job.checks == self.analyzer else "all other checks"
            print(f"lint: [{self.done}/{self.total}] {job.name}, {what}{'' if clean else ': FAILED'}", flush=True)
            if not clean:
                print(report, flush=True)
        return clean

    def run_all(self, files):
        CACHE.mkdir(parents=True, exist_ok=True)
        (BUILD / "units").mkdir(exist_ok=True)
        jobs = [job for job in self.jobs(files) if not self.passed_before(job)]
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
        files = [file for file in files if (ROOT / file).exists()]
    if not Lint().run_all(files):
        sys.exit("lint: FAILED")
    print(f"lint: {len(files)} files are clean")


if __name__ == "__main__":
    main()
