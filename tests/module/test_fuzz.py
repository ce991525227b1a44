"""Every callable of the module called as a hostile caller would: each call ends in a value or in
an exception other than SystemError, and the process survives. The calls run in child processes
(tools/fuzz_calls.py), so that a crash names its call and the run goes on after it.

OSTREL_FUZZ_CALLS (default 10000) and OSTREL_FUZZ_SEED (default "ci") choose a longer or another
run, e.g. OSTREL_FUZZ_CALLS=1000000 OSTREL_FUZZ_SEED=$RANDOM python -m pytest tests/module/test_fuzz.py
"""
import os
import pathlib
import subprocess
import sys

DRIVER = pathlib.Path(__file__).parents[2] / "tools" / "fuzz_calls.py"
CALLS = int(os.environ.get("OSTREL_FUZZ_CALLS", "10000"))
SEED = os.environ.get("OSTREL_FUZZ_SEED", "ci")
BATCH = 5000


def test_hostile_calls_end_in_values_or_exceptions():
    problems, index = [], 0
    while index < CALLS:
        count = min(BATCH, CALLS - index)
        child = subprocess.run([sys.executable, str(DRIVER), SEED, str(index), str(count)],
                               capture_output=True, text=True, timeout=1800)
        lines = child.stdout.splitlines()
        problems += [line for line in lines if line.startswith(("FAIL", "RUNAWAY"))]
        if child.returncode == 0:
            index += count
            continue
        started = [line for line in lines if line.startswith("call ")]
        if not started:
            raise AssertionError(f"the fuzz driver did not start:\n{child.stderr[-3000:]}")
        last = started[-1]
        if child.returncode != 3:  # 3: the watchdog's exit, already reported as RUNAWAY
            problems.append(f"process ended with {child.returncode} in {last}\n{child.stderr[-3000:]}")
        index = int(last.split()[1].rstrip(":")) + 1
    assert not problems, f"seed {SEED!r}:\n" + "\n".join(problems)
