#!/usr/bin/env python3
"""Runs clang-tidy over every source that a build folder compiles: tidy.py [BUILD-FOLDER]

Up to eight sources of a folder are analysed as one, since most of the time goes into the headers that
they share; so no two files of a folder may define the same internal name.

A batch that passed before is skipped as long as nothing has changed that the result depends on: the
text of its files and of every header they read, the compile options, .clang-tidy, clang-tidy itself
and this script. Only passes are remembered (below $XDG_CACHE_HOME, or ~/.cache); a batch with a
finding is analysed again each time.
"""
import hashlib
import json
import os
import re
import shlex
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from functools import lru_cache
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
BUILD = Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build/release").resolve()
CACHE = Path(os.environ.get("XDG_CACHE_HOME") or Path.home() / ".cache") / "calvorin-lint"
ASSERTIONS = "scripts/lint/gtest_for_analysis.h"
KEEP_DAYS = 30
PER_BATCH = 8
INCLUDE = re.compile(r'^\s*#\s*include\s+(?:"([^"]+)"|<([^>]+)>)', re.M)
CHATTER = re.compile(r"^(\d+ warnings?( and \d+ errors?)? generated\.|Suppressed .*|Use -header.*|)$")


@lru_cache(maxsize=None)
def includes_of(path):
    return INCLUDE.findall(path.read_text(encoding="utf-8"))


@lru_cache(maxsize=None)
def digest(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def find(name, reader):
    for folder in (reader.parent, ROOT / "src", ROOT, ROOT / "tests"):
        if (folder / name).is_file():
            return (folder / name).resolve()
    raise SystemExit(f'tidy: {reader.relative_to(ROOT)}: "{name}" is not there')


@dataclass
class Batch:
    name: str
    paths: list
    options: list

    def own_files(self):
        """The sources and every header of this tree that they read, whatever the conditions around them."""
        seen, todo = set(), list(self.paths)
        while todo:
            path = todo.pop()
            if path not in seen:
                seen.add(path)
                todo += [find(quoted, path) for quoted, _ in includes_of(path) if quoted]
        return seen


def system_digest(batches):
    """One digest of all headers from outside the tree, with those that they read in turn."""
    names = sorted({angled for batch in batches for path in batch.own_files()
                    for _, angled in includes_of(path) if angled})
    widest = max((batch.options for batch in batches), key=len)
    with tempfile.NamedTemporaryFile("w", suffix=".cpp") as all_headers:
        all_headers.write("".join(f"#include <{name}>\n" for name in names))
        all_headers.flush()
        rule = subprocess.run(["clang++", *widest, "-w", "-M", all_headers.name], cwd=BUILD,
                              capture_output=True, text=True, check=True).stdout
    paths = [Path(p) for p in rule.split(":", 1)[1].replace("\\\n", " ").split()]
    return hashlib.sha256("".join(digest(p) for p in paths if p.name != Path(all_headers.name).name)
                          .encode()).hexdigest()


def load_batches():
    """Sources of one folder and one target, at most PER_BATCH together: they are analysed as one."""
    groups = {}
    for entry in json.loads((BUILD / "compile_commands.json").read_text()):
        path = Path(entry["directory"], entry["file"]).resolve()
        if BUILD in path.parents or ROOT not in path.parents:
            continue  # a file that the build made
        words = shlex.split(entry["command"])
        options = [word for word in words[1:] if re.match(r"-(D|I|std|f|W)", word)]
        for i, word in enumerate(words):
            if word == "-isystem":
                options += [word, words[i + 1]]
        target = words[words.index("-o") + 1].split(".dir/")[0]
        groups.setdefault((target, path.parent, tuple(options)), []).append(path)
    batches = []
    for (_, folder, options), paths in sorted(groups.items()):
        count = -(-len(paths) // PER_BATCH)
        for i in range(count):
            batches.append(Batch(f"{folder.relative_to(ROOT)} {i + 1}/{count}", sorted(paths)[i::count],
                                 list(options)))
    return batches


def keys_of(batches):
    version = subprocess.run(["clang-tidy", "--version"], capture_output=True, text=True, check=True).stdout
    shared = [version, system_digest(batches)]
    shared += [digest(p) for p in (ROOT / ".clang-tidy", ROOT / "bench/.clang-tidy", ROOT / ASSERTIONS,
                                   Path(__file__).resolve())]
    keys = []
    for batch in batches:
        parts = shared + [option.replace(str(ROOT), "") for option in batch.options]
        parts += sorted(str(p.relative_to(ROOT)) + digest(p) for p in batch.own_files())
        keys.append(hashlib.sha256("\n".join(parts).encode()).hexdigest())
    return keys


def analyse(batch, key):
    source = batch.paths[0]
    if len(batch.paths) > 1:
        source = BUILD / "tidy" / (batch.name.replace("/", "_").replace(" ", "_") + ".cpp")
        source.write_text("".join(f'#include "{path}" // NOLINT\n' for path in batch.paths))
    options = list(batch.options)
    if ROOT / "tests" in batch.paths[0].parents:
        options = ["-include", str(ROOT / ASSERTIONS), *options]
    began = time.monotonic()
    run = subprocess.run(["clang-tidy", "--quiet", str(source), "--", *options], capture_output=True,
                         text=True)
    said = [line for line in (run.stdout + run.stderr).splitlines() if not CHATTER.match(line)]
    print(f"tidy: {batch.name:24} {len(batch.paths)} files {time.monotonic() - began:5.0f} s", *said,
          sep="\n", flush=True)
    if run.returncode == 0 and not said:
        (CACHE / key).touch()
        return True
    return False


def main():
    began = time.monotonic()
    CACHE.mkdir(parents=True, exist_ok=True)
    for old in CACHE.iterdir():
        if time.time() - old.stat().st_mtime > KEEP_DAYS * 86400:
            old.unlink(missing_ok=True)
    (BUILD / "tidy").mkdir(exist_ok=True)
    batches = load_batches()
    todo = []
    for batch, key in zip(batches, keys_of(batches)):
        if (CACHE / key).exists():
            (CACHE / key).touch()
        else:
            todo.append((batch, key))
    # The windows' files take longest: first, so that no processor waits for one at the end.
    todo.sort(key=lambda item: ("ui" not in item[0].name, -sum(p.stat().st_size for p in item[0].paths)))
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        passed = list(pool.map(lambda item: analyse(*item), todo))
    print(f"tidy: {len(todo)} of {len(batches)} batches analysed in {time.monotonic() - began:.0f} s, "
          f"{len(batches) - len(todo)} unchanged since they passed, {passed.count(False)} with findings")
    return 1 if False in passed else 0


sys.exit(main())
