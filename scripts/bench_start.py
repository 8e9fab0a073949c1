#!/usr/bin/env python3
"""How long the desktop takes from its start to its first picture, beside an empty window of the toolkit.

Both in turn on a virtual display: from the start of the process to the first pixel in the middle of its window.
Needs Xvfb and a built program (bench included).
    scripts/bench_start.py [ROUNDS]
"""
import ctypes
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
BIN = ROOT / "build/release/bin"
WIDTH, HEIGHT = 1920, 1080
ALL_PLANES = ctypes.c_ulong(-1)
Z_PIXMAP = 2

x11 = ctypes.CDLL("libX11.so.6")
x11.XOpenDisplay.restype = ctypes.c_void_p
x11.XGetImage.restype = ctypes.c_void_p
x11.XGetPixel.restype = ctypes.c_ulong
x11.XDefaultRootWindow.restype = ctypes.c_ulong


class Screen:
    def __init__(self):
        read, write = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", f"{WIDTH}x{HEIGHT}x24"],
            pass_fds=[write], stderr=subprocess.DEVNULL)
        os.close(write)
        self.name = ":" + os.read(read, 16).decode().strip()
        self.display = ctypes.c_void_p(x11.XOpenDisplay(self.name.encode()))
        self.root = ctypes.c_ulong(x11.XDefaultRootWindow(self.display))

    def is_painted(self):
        image = ctypes.c_void_p(x11.XGetImage(self.display, self.root, WIDTH // 2, HEIGHT // 2, 1, 1, ALL_PLANES,
                                              Z_PIXMAP))
        pixel = x11.XGetPixel(image, 0, 0)
        x11.XFree(image)
        return pixel & 0xFFFFFF != 0

    def first_paint(self, command, folder):
        environment = dict(os.environ, DISPLAY=self.name, HOME=folder, XDG_CONFIG_HOME=folder)
        began = time.perf_counter()
        program = subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        while not self.is_painted():
            if program.poll() is not None:
                sys.exit(f"{command[0]} ended before it showed a window")
            time.sleep(0.0005)
        took = time.perf_counter() - began
        program.kill()
        program.wait()
        while self.is_painted():
            time.sleep(0.005)
        return took * 1000


def main():
    rounds = int(sys.argv[1]) if len(sys.argv) > 1 else 30
    screen = Screen()
    with tempfile.TemporaryDirectory() as folder:
        place = pathlib.Path(folder) / "program"
        place.mkdir()
        for name in ["calvorin", "calvorin-desktop.so", "Device", "RamImage"]:
            (shutil.copytree if (BIN / name).is_dir() else shutil.copy2)(BIN / name, place / name)
        # Configured once, as it is after a first start; without a box that would be painted first.
        subprocess.run([place / "calvorin", "-OptionsTargetDeviceVT-B128", "-Exit"], check=True,
                       stderr=subprocess.DEVNULL)
        ours, empty = [], []
        for _ in range(rounds):
            empty.append(screen.first_paint([BIN / "empty_window"], folder))
            ours.append(screen.first_paint([place / "calvorin"], folder))
    screen.server.kill()
    for name, times in [("empty window", empty), ("calvorin", ours)]:
        print(f"{name:14} median {statistics.median(times):6.1f} ms, least {min(times):6.1f} ms")
    print(f"ratio of the medians {statistics.median(ours) / statistics.median(empty):.2f}, of the least "
          f"{min(ours) / min(empty):.2f} (aim 1.3)")


main()
