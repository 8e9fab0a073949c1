#!/usr/bin/env python3
"""Checks from the include lines that the layers of the program are what their folders say.

A folder of src/ includes itself and folders below it; files include each other without a cycle. From
outside a folder may include what the table allows it and nothing else: the C++ library but for its
clocks and threads everywhere, those and the headers of the operating system in src/platform/ (all
waiting has one home there) and beside the virtual clock, Qt in src/ui/. The virtual chip stands on
device/ and what is below it.
"""
import re
import sys
from pathlib import Path

LAYERS = ["ui", "shell", "target", "bootrom", "link", "device", "serial", "data", "persist",
          "notice", "platform"]  # top to bottom
SIM_MAY_USE = set(LAYERS[LAYERS.index("device"):])
LIBRARY = set("""algorithm array atomic bit cctype cerrno charconv cmath compare cstdarg cstddef cstdint
    cstdio cstdlib cstring deque exception filesystem functional iterator limits map memory mutex new numeric
    optional set span string string_view system_error tuple type_traits unordered_map utility variant
    vector""".split())
WAITING = {"chrono", "condition_variable", "csignal", "ctime", "thread"}
SYSTEM = set("""arpa/inet.h asm/termbits.h dlfcn.h fcntl.h grp.h linux/serial.h netdb.h netinet/in.h netinet/tcp.h
    poll.h pthread.h sys/eventfd.h sys/file.h sys/ioctl.h sys/mman.h sys/prctl.h sys/signalfd.h
    sys/socket.h sys/stat.h sys/uio.h unistd.h""".split())
ALLOWED = {  # the deepest folder that is named counts
    "src": LIBRARY,
    "src/platform/event_queue.cpp": LIBRARY | {"thread"},
    "src/platform/linux": LIBRARY | WAITING | SYSTEM,
    "src/shell/result.cpp": LIBRARY | {"nlohmann/json.hpp"},
    "src/ui": LIBRARY,  # and Qt
    "sim": LIBRARY | {"random"},
    "sim/virtual_clock.cpp": LIBRARY | WAITING | {"random"},
    "sim/linux": LIBRARY | WAITING | SYSTEM,
}
INCLUDE = re.compile(r'^\s*#\s*include\s+(?:"([^"]+)"|(<[^>]+>))', re.M)

root = Path(__file__).resolve().parent.parent
faults = []


def includes(path):
    for quoted, angled in INCLUDE.findall(path.read_text(encoding="utf-8")):
        yield quoted or angled


def check_outside(path):
    name = path.relative_to(root).as_posix()
    place = max((key for key in ALLOWED if name.startswith(key)), key=len)
    for include in includes(path):
        if include.startswith("<"):
            header = include[1:-1]
            qt = place == "src/ui" and re.match(r"Q[A-Z]\w*$", header)
            if header not in ALLOWED[place] and not qt:
                faults.append(f"{name}: {include} is not allowed in {place}")


def check_source_file(path):
    name = path.relative_to(root / "src")
    if len(name.parts) < 2:
        return
    folder = name.parts[0]
    for include in includes(path):
        if include.startswith("<"):
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


for top, check in (("src", check_source_file), ("sim", check_sim_file)):
    for source in sorted((root / top).rglob("*.cpp")) + sorted((root / top).rglob("*.h")):
        check(source)
        check_outside(source)
check_cycles()
for fault in faults:
    print(fault, file=sys.stderr)
sys.exit(1 if faults else 0)
