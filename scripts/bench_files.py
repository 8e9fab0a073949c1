#!/usr/bin/env python3
"""Times what users wait for without a chip: a start, a small and a large conversion, beside cp and
objcopy on the same bytes. Every round runs all of them in turn, so that other load meets all alike;
`chrt -r 10` in front keeps most of it away. What is printed are the medians, the best and the ratios
of the medians.

Usage: scripts/bench_files.py [calvorin executable] [rounds]
"""
import os
import pathlib
import shutil
import statistics
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent


def run(*command):
    quiet = [(os.POSIX_SPAWN_OPEN, stream, "/dev/null", os.O_WRONLY, 0) for stream in (1, 2)]
    begin = time.perf_counter()
    process = os.posix_spawnp(command[0], command, os.environ, file_actions=quiet)
    status = os.waitpid(process, 0)[1]
    seconds = time.perf_counter() - begin
    if status != 0:
        sys.exit(f"bench_files: failed: {' '.join(command)}")
    return seconds * 1000


def table(title, rows, rounds):
    """Rows are (name, output, whether it is there before, command); the first is the program."""
    times = {name: [] for name, *_ in rows}
    for number in range(rounds + 1):  # the first one warms up
        for name, output, stays, command in rows:
            if output and not stays:
                pathlib.Path(output).unlink(missing_ok=True)
            took = run(*command)
            if number > 0:
                times[name].append(took)
    print(title)
    ours = statistics.median(times[rows[0][0]])
    for name, *_ in rows:
        middle = statistics.median(times[name])
        print(f"  {name:34} {middle:8.2f} ms (best {min(times[name]):7.2f}), "
              f"the program takes {ours / middle:5.2f} times that")


def intel_hex(path, data):
    with open(path, "w", newline="") as file:
        for at in range(0, len(data), 32):
            if at % 0x10000 == 0:
                write_record(file, bytes([2, 0, 0, 4, at >> 24, at >> 16 & 255]))
            write_record(file, bytes([32, at >> 8 & 255, at & 255, 0]) + data[at:at + 32])
        write_record(file, bytes([0, 0, 0, 1]))


def write_record(file, record):
    file.write(f":{record.hex().upper()}{-sum(record) & 255:02X}\r\n")


def main():
    program = pathlib.Path(sys.argv[1] if len(sys.argv) > 1
                           else ROOT / "build/release/bin/calvorin").resolve()
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 15
    with tempfile.TemporaryDirectory() as folder:
        shutil.copy(program, folder)
        for name in ("Device", "RamImage"):
            shutil.copytree(program.parent / name, pathlib.Path(folder, name))
        os.chdir(folder)
        intel_hex("large.hex", os.urandom(16 << 20))
        intel_hex("small.hex", os.urandom(4096))

        def ours(source, output, stays):
            return (f"calvorin {source}", output, stays,
                    ("./calvorin", source, f"-FileSaveAs{output}", "-Exit"))

        def copies(stays):
            return [("cp", "copy", stays, ("cp", "large.hex", "copy")),
                    ("cp, and sync of the copy", "kept", stays,
                     ("sh", "-c", "cp large.hex kept && sync kept"))]

        def objcopy(source):
            return ("objcopy", "peer.mot", True,
                    ("objcopy", "-I", "ihex", "-O", "srec", source, "peer.mot"))

        table("16 MiB to a new file",
              [ours("large.hex", "new.mot", False), *copies(False), objcopy("large.hex")], rounds)
        table("16 MiB over an old file", [ours("large.hex", "old.mot", True), *copies(True)], rounds)
        table("4 KiB", [ours("small.hex", "small.mot", True), objcopy("small.hex")], 10 * rounds)
        run("./calvorin", "--isolated", "-Exit")
        pathlib.Path("Calvorin.tpu").unlink(missing_ok=True)
        table("nothing but -Exit", [("calvorin -Exit", None, True, ("./calvorin", "-Exit")),
                                    ("true", None, True, ("true",))], 10 * rounds)


main()
