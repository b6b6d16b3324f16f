"""Runs the checksum program of several builds and compares what they print.

usage: compare_checksums.py [--] COMMAND [--] COMMAND ...   (commands are separated by --)
"""

import math
import subprocess
import sys

# Results that rest on the runtime's sine and cosine: the largest difference, relative to the largest value of the call.
BOUND = 1e-6


def commands(arguments):
    command = []
    for argument in arguments + ["--"]:
        if argument == "--":
            if command:
                yield command
            command = []
        else:
            command.append(argument)


def read(command):
    text = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    exact, approximate = {}, {}
    for line in text.splitlines():
        kind, name, *rest = line.split()
        if kind == "=":
            exact[name] = rest[0]
        else:
            approximate[name, rest[0]] = [float(value) for value in rest[1:]]
    return exact, approximate


def main():
    builds = {" ".join(command): read(command) for command in commands(sys.argv[1:])}
    reference, *others = builds
    exact, approximate = builds[reference]
    problems = 0
    worst = 0.0
    for build in others:
        for name, checksum in builds[build][0].items():
            if exact.get(name) != checksum:
                problems += 1
                print(f"{name}: {build} differs from {reference}")
        for key, values in builds[build][1].items():
            wanted = approximate[key]
            scale = max((abs(value) for value in wanted if math.isfinite(value)), default=0.0) or 1.0
            error = max((0.0 if a == b or a != a and b != b else abs(a - b) for a, b in zip(values, wanted)),
                        default=0.0) / scale
            worst = max(worst, error)
            if len(values) != len(wanted) or not error <= BOUND:
                problems += 1
                print(f"{key}: {build} differs from {reference} by {error:.3g}")
        problems += builds[build][0].keys() != exact.keys()
    print(f"{len(builds)} builds, {len(exact)} exports with equal bits, largest difference elsewhere {worst:.3g}")
    return 1 if problems or not exact or len(builds) < 2 else 0


if __name__ == "__main__":
    sys.exit(main())
