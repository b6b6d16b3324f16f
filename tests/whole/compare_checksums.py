"""Runs the checksum programs of builds and compares what they print with the checksums on record and with each other.

usage: compare_checksums.py RECORD COMMAND [-- COMMAND]...
"""

import math
import subprocess
import sys

# Results that rest on the runtime's sine and cosine: the largest difference, relative to the largest value of the call.
BOUND = 1e-6


def read(lines):
    """The lines of checksums, and the values of the others by their call."""
    fields = [line.split() for line in lines]
    return ({name: rest[0] for kind, name, *rest in fields if kind == "="},
            {(name, rest[0]): [float(value) for value in rest[1:]] for kind, name, *rest in fields if kind == "~"})


def error(values, wanted):
    if len(values) != len(wanted):
        return math.inf
    scale = max((abs(value) for value in wanted if math.isfinite(value)), default=0.0) or 1.0
    return max((0.0 if a == b or a != a and b != b else abs(a - b) for a, b in zip(values, wanted)), default=0.0) / scale


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        record, _ = read(file)
    commands = " ".join(sys.argv[2:]).split(" -- ")
    outputs = [read(subprocess.run(command.split(), check=True, capture_output=True, text=True).stdout.splitlines())
               for command in commands]
    problems, worst = [], 0.0
    for command, (exact, approximate) in zip(commands, outputs):
        problems += [f"{name}: {command} prints {exact.get(name)}, on record is {record.get(name)}"
                     for name in sorted(record.keys() | exact.keys()) if exact.get(name) != record.get(name)]
        for call, wanted in outputs[0][1].items():
            worst = max(worst, error(approximate.get(call, []), wanted))
    if not worst <= BOUND:
        problems.append("results that rest on sines are too far apart")
    print("\n".join(problems))
    print(f"{len(commands)} builds, {len(record)} exports on record, largest difference elsewhere {worst:.3g}")
    return 1 if problems or not record else 0


if __name__ == "__main__":
    sys.exit(main())
