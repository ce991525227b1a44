"""Mutation testing: applies each source mutation of tools/mutants.txt to a copy of the
repository, rebuilds incrementally and runs the test suite; a mutant the suite fails on is
killed, one it passes survives. Run by hand, from the repository:

    python tools/mutate.py                  # every mutant
    python tools/mutate.py -k rd_wgs        # those whose file or description holds the word
    python tools/mutate.py -k polygon -k ear_clipping   # those that hold either
    python tools/mutate.py --list           # the mutants, without running them

The copy lives in build/mutants (its own editable install in its own virtual environment,
made at the first run); the working tree is never changed. The fuzz test runs a short
round (OSTREL_FUZZ_CALLS) so that a run of 40 mutants takes minutes per mutant, not more.

tools/mutants.txt holds one mutant per block: a line "== file: description", the lines
to find (exactly once in the file), a line "->", the lines to put in their place, and
a blank line.
"""
import argparse
import os
import pathlib
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
COPY = ROOT / "build" / "mutants"
VENV = COPY / ".venv"
PYTHON = VENV / "bin" / "python"


def read_mutants(path):
    mutants, block = [], []
    for line in path.read_text().splitlines() + [""]:
        if line or (block and "->" not in block):
            block.append(line)
            continue
        if not block:
            continue
        head, body = block[0], block[1:]
        if not head.startswith("== ") or "->" not in body:
            raise SystemExit(f"mutants.txt: malformed block at {head!r}")
        file, _, description = head[3:].partition(": ")
        arrow = body.index("->")
        mutants.append((file, description, "\n".join(body[:arrow]), "\n".join(body[arrow + 1:])))
        block = []
    return mutants


def prepare():
    """The copy, synchronised with the working tree, and its editable install."""
    COPY.mkdir(parents=True, exist_ok=True)
    tracked = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT, capture_output=True,
                             text=True, check=True).stdout.split()
    for name in tracked:
        source, target = ROOT / name, COPY / name
        if source.is_file() and (not target.exists() or target.read_bytes() != source.read_bytes()):
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)  # a new time stamp, so that the build sees the change
    for folder in ("src", "tests", "tools"):  # files the working tree no longer has
        for target in (COPY / folder).rglob("*"):
            if target.is_file() and "__pycache__" not in target.parts and \
                    str(target.relative_to(COPY)) not in tracked:
                target.unlink()
    if not PYTHON.exists():
        subprocess.run([sys.executable, "-m", "venv", str(VENV)], check=True)
        subprocess.run([str(PYTHON), "-m", "pip", "install", "-q", "scikit-build-core", "numpy"], check=True)
        subprocess.run([str(PYTHON), "-m", "pip", "install", "-q", "--no-build-isolation", "-Ceditable.rebuild=true",
                        "-Ceditable.verbose=false", "-Cbuild-dir=build/dev", "-e", ".[test]"], cwd=COPY, check=True)


def suite(timeout):
    """0 when the suite passes, 1 when it fails, 2 when the build fails."""
    build = subprocess.run(["cmake", "--build", str(COPY / "build" / "dev")], capture_output=True, text=True)
    if build.returncode != 0:
        return 2
    env = dict(os.environ, OSTREL_FUZZ_CALLS="2000")
    try:
        run = subprocess.run([str(PYTHON), "-m", "pytest", "-x", "-q", "-p", "no:cacheprovider"], cwd=COPY, env=env,
                             capture_output=True, text=True, timeout=timeout)
    except subprocess.TimeoutExpired:
        return 1
    return 0 if run.returncode == 0 else 1


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("-k", action="append", default=[],
                        help="run only mutants whose file or description holds this word (repeatable: any of them)")
    parser.add_argument("--list", action="store_true", help="list the mutants and stop")
    parser.add_argument("--timeout", type=float, default=600, help="seconds a suite run may take")
    options = parser.parse_args()
    mutants = [m for m in read_mutants(ROOT / "tools" / "mutants.txt")
               if not options.k or any(word in m[0] + m[1] for word in options.k)]
    if options.list:
        for file, description, _, _ in mutants:
            print(f"{file}: {description}")
        return
    prepare()
    if suite(options.timeout) != 0:
        raise SystemExit(f"the suite fails on the unmutated copy: run it in {COPY} to see why")
    killed, survived, invalid = [], [], []
    for file, description, find, replace in mutants:
        path = COPY / file
        original = path.read_text() if path.exists() else ""
        if original.count(find) != 1:
            invalid.append(f"{file}: {description} (the text to find occurs {original.count(find)} times)")
            continue
        started = time.monotonic()
        path.write_text(original.replace(find, replace))
        try:
            outcome = suite(options.timeout)
        finally:
            path.write_text(original)
        line = f"{file}: {description} ({time.monotonic() - started:.0f} s)"
        {0: survived, 1: killed, 2: invalid}[outcome].append(line)
        print(("SURVIVED " if outcome == 0 else "killed   " if outcome == 1 else "invalid  ") + line, flush=True)
    subprocess.run(["cmake", "--build", str(COPY / "build" / "dev")], capture_output=True)
    scored = len(killed) + len(survived)
    print(f"\n{len(killed)} killed, {len(survived)} survived, {len(invalid)} invalid; "
          f"mutation score {len(killed) / scored:.0%}" if scored else "no mutant ran")
    for line in survived:
        print("  survived:", line)
    for line in invalid:
        print("  invalid:", line)


if __name__ == "__main__":
    main()
