#!/usr/bin/env python3
"""Runs one end-to-end case: the real debugger under Wine, its output compared with the
case's expectations. Usage: run_case.py CASE [--rebase]   (or VANTOR_REBASE=1).

The case format is described in tests/e2e/README.md."""
import os
import re
import shlex
import shutil
import subprocess
import sys

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
WIN64 = os.environ.get("VANTOR_WIN64_DIR", os.path.join(ROOT, "build", "win64"))
HOLES = {"addr": r"0x[0-9A-F]{16}", "hex": r"[0-9A-Fa-f]+", "num": r"-?[0-9]+", "*": r".*"}
TIMEOUT = 120


class Run:
    def __init__(self, args):
        self.args, self.exit, self.absent, self.sections = args, None, [], []  # sections: [name, lines]


def parse(path):
    setup, runs = [], []
    section = None
    with open(path, encoding="utf-8") as f:
        lines = f.read().split("\n")
    if lines and lines[-1] == "":
        lines.pop()
    for line in lines:
        if line.startswith("run:"):
            runs.append(Run(line[4:].strip()))
            section = None
        elif section is not None and not line.startswith("--- ") and not line.startswith("#"):
            section[1].append(line)
        elif line.startswith("--- "):
            if not runs:
                sys.exit(f"{path}: '{line}' before any run:")
            section = [line[4:].strip(), []]
            runs[-1].sections.append(section)
        elif not line.strip() or line.startswith("#"):
            section = None
            continue
        elif runs and line.startswith("exit:"):
            runs[-1].exit = int(line[5:])
        elif runs and line.startswith("absent:"):
            runs[-1].absent.append(line[7:].strip())
        elif not runs and ":" in line:
            setup.append(line.split(":", 1))
        else:
            sys.exit(f"{path}: cannot read line: {line}")
    # Blank lines between a section and the next run separate them; they are not output.
    for run in runs:
        for section in run.sections:
            while section[1] and section[1][-1] == "":
                section[1].pop()
    return lines, setup, runs


def prepare(case_dir, scratch, setup):
    for directive, rest in setup:
        words = shlex.split(rest)
        if directive == "copy":  # copy: FILE-IN-BUILD/WIN64 [NAME]
            shutil.copy(os.path.join(WIN64, words[0]), os.path.join(scratch, words[-1] if len(words) > 1 else os.path.basename(words[0])))
        elif directive == "bytes":  # bytes: NAME HEX... @OFFSET HEX...
            data, at = bytearray(), 0
            for word in words[1:]:
                if word.startswith("@"):
                    at = int(word[1:], 16)
                    continue
                for i in range(0, len(word), 2):
                    if len(data) <= at:
                        data.extend(b"\0" * (at + 1 - len(data)))
                    data[at] = int(word[i:i + 2], 16)
                    at += 1
            with open(os.path.join(scratch, words[0]), "wb") as f:
                f.write(data)
        elif directive == "source":  # source: FILE... (beside the case file)
            for word in words:
                shutil.copy(os.path.join(case_dir, word), scratch)
        elif directive == "build":  # build: SOURCE.f95 [f95mini options] -> SOURCE.exe unless -o names it
            source = os.path.join(case_dir, words[0])
            shutil.copy(source, scratch)
            out = [] if "-o" in words else ["-o", os.path.splitext(os.path.basename(source))[0] + ".exe"]
            result = subprocess.run([os.path.join(ROOT, "scripts", "f95mini"), *words[1:], os.path.basename(source), *out],
                                    cwd=scratch, capture_output=True, text=True)
            if result.returncode != 0:
                sys.exit(f"f95mini failed on {words[0]}:\n{result.stdout}{result.stderr}")
        else:
            sys.exit(f"unknown directive {directive}:")


def matches(expected, actual):
    pattern = "".join(HOLES[m.group(1)] if m.group(1) else re.escape(m.group(0))
                      for m in re.finditer(r"\{\{(addr|hex|num|\*)\}\}|.", expected, re.S))
    return re.fullmatch(pattern, actual) is not None


def compare(name, expected, actual, failures):
    for i in range(max(len(expected), len(actual))):
        e = expected[i] if i < len(expected) else "<nothing>"
        a = actual[i] if i < len(actual) else "<nothing>"
        if i >= len(expected) or i >= len(actual) or not matches(e, a):
            failures.append(f"{name}, line {i + 1}:\n  expected: {e}\n  actual:   {a}")
            return


def rebased(expected, actual):
    return [e if i < len(expected) and matches(e, a) else a for i, (e, a) in
            enumerate(zip(expected + [None] * len(actual), actual))]


def main():
    # One virtual display for the whole case: every run then finds Wine's desktop warm.
    if not os.environ.get("DISPLAY") and shutil.which("xvfb-run"):
        os.execvp("xvfb-run", ["xvfb-run", "-a", "-s", "-screen 0 1280x1024x24", sys.executable, *sys.argv])
    case = os.path.abspath(sys.argv[1])
    rebase = "--rebase" in sys.argv or os.environ.get("VANTOR_REBASE") == "1"
    name = os.path.splitext(os.path.basename(case))[0]
    scratch = os.path.join(ROOT, "build", "e2e", name)
    shutil.rmtree(scratch, ignore_errors=True)
    os.makedirs(scratch)
    lines, setup, runs = parse(case)
    prepare(os.path.dirname(case), scratch, setup)
    failures = []
    for run in runs:
        command = [os.path.join(ROOT, "scripts", "vantor64"), *shlex.split(run.args)]
        # Output goes to a file, not a pipe: Wine's server inherits the debugger's handles and
        # would hold a pipe open for seconds after the debugger has ended.
        with open(os.path.join(scratch, ".stdout"), "w+b") as out:
            result = subprocess.run(command, cwd=scratch, stdout=out, stderr=subprocess.DEVNULL, timeout=TIMEOUT)
            out.seek(0)
            stdout = out.read().decode("utf-8", "replace").replace("\r\n", "\n").split("\n")
        if stdout and stdout[-1] == "":
            stdout.pop()
        if run.exit is not None and result.returncode != run.exit:
            failures.append(f"run: {run.args}\n  exit status {result.returncode}, expected {run.exit}")
        for gone in run.absent:
            if os.path.exists(os.path.join(scratch, gone)):
                failures.append(f"run: {run.args}\n  {gone} exists")
        for section in run.sections:
            if section[0] == "stdout":
                actual = [l.rstrip() for l in stdout]
            elif section[0].startswith("file "):
                path = os.path.join(scratch, section[0][5:].strip())
                actual = open(path, encoding="utf-8", errors="replace").read().replace("\r\n", "\n").rstrip("\n").split("\n") \
                    if os.path.exists(path) else ["<no such file>"]
            else:
                sys.exit(f"unknown section --- {section[0]}")
            before = len(failures)
            compare(f"run: {run.args}\n{section[0]}", section[1], actual, failures)
            if rebase and len(failures) > before:
                section[1][:] = rebased(section[1], actual)
    if rebase:
        write_rebased(case, lines, runs)
    for failure in failures:
        print(failure)
    return 1 if failures and not rebase else 0


def write_rebased(case, lines, runs):
    out, run_index, section_index, skipping = [], -1, 0, False
    for line in lines:
        if line.startswith("run:"):
            run_index, section_index, skipping = run_index + 1, 0, False
        elif line.startswith("--- ") and run_index >= 0:
            out.append(line)
            out.extend(runs[run_index].sections[section_index][1])
            out.append("")
            section_index, skipping = section_index + 1, True
            continue
        elif skipping and not line.startswith("#"):
            continue
        skipping = False
        out.append(line)
    while out and out[-1] == "":
        out.pop()
    with open(case, "w", encoding="utf-8") as f:
        f.write("\n".join(out) + "\n")


if __name__ == "__main__":
    sys.exit(main())
