#!/usr/bin/env python3
"""Checks from the include lines that the layers of the program are what their folders say.

A folder of src/ includes itself and folders below it; files include each other without a cycle; only
src/platform/ includes headers of the operating system, only src/ui/ those of Qt; the virtual chip
stands on device/ and what is below it.
"""
import re
import sys
from pathlib import Path

LAYERS = ["ui", "shell", "target", "bootrom", "link", "device", "serial", "data", "persist",
          "notice", "platform"]  # top to bottom
SIM_MAY_USE = set(LAYERS[LAYERS.index("device"):])
OS_HEADER = re.compile(r"<(unistd|termios|fcntl|poll|pthread|dlfcn|netdb|signal|csignal|"
                       r"strings|sys/|linux/|asm/|net/|netinet/|arpa/|windows)")
QT_HEADER = re.compile(r"<Q[A-Z]")
INCLUDE = re.compile(r'^\s*#\s*include\s+(?:"([^"]+)"|(<[^>]+>))', re.M)

root = Path(__file__).resolve().parent.parent
faults = []


def includes(path):
    for quoted, angled in INCLUDE.findall(path.read_text(encoding="utf-8")):
        yield quoted or angled


def check_source_file(path):
    name = path.relative_to(root / "src")
    if len(name.parts) < 2:
        return
    folder = name.parts[0]
    for include in includes(path):
        if include.startswith("<"):
            if OS_HEADER.match(include) and folder != "platform":
                faults.append(f"src/{name}: {include} belongs in src/platform/")
            if QT_HEADER.match(include) and folder != "ui":
                faults.append(f"src/{name}: {include} belongs in src/ui/")
            continue
        used = include.split("/")[0]
        if used not in LAYERS:
            faults.append(f"src/{name}: \"{include}\" names no folder of src/")
        elif LAYERS.index(used) < LAYERS.index(folder):
            faults.append(f"src/{name}: {folder}/ is below {used}/ and must not include it")


def check_sim_file(path):
    for include in includes(path):
        used = include.split("/")[0]
        if used in LAYERS and used not in SIM_MAY_USE:
            faults.append(f"{path.relative_to(root)}: the virtual chip must not use {used}/")


def check_cycles():
    headers = {str(p.relative_to(root / "src")): p for p in (root / "src").rglob("*.h")}
    done, path = set(), []

    def visit(name):
        if name in path:
            faults.append("include cycle: " + " -> ".join(path[path.index(name):] + [name]))
            return
        if name in done or name not in headers:
            return
        path.append(name)
        for include in includes(headers[name]):
            visit(include)
        path.pop()
        done.add(name)

    for name in sorted(headers):
        visit(name)


for source in sorted((root / "src").rglob("*.cpp")) + sorted((root / "src").rglob("*.h")):
    check_source_file(source)
for source in sorted((root / "sim").rglob("*.cpp")) + sorted((root / "sim").rglob("*.h")):
    check_sim_file(source)
check_cycles()
for fault in faults:
    print(fault, file=sys.stderr)
sys.exit(1 if faults else 0)
