#!/usr/bin/env python3
"""How many plausible mistakes the tests find: "scripts/mutants.py [COUNT] [SEED] [FOLDER...]".

All mistakes are compiled into one build of a copy of the sources, below build/mutants, and the
environment variable CALVORIN_MUTANT chooses one of them by its number. COUNT of them (400), drawn
by SEED (1), each have to fail a test: first those of their folder, then the quick ones, the slow
ones last. The table at the end counts the found ones a folder; those that no test found are listed
with their line, to be judged: a mistake that changes nothing is none. The copy is made anew only
when the sources or the seed changed, so that a run after a change of tests begins soon.
"scripts/mutants.py --again NUMBER..." tries the mistakes of these numbers in the copy as it is,
with the tests of now.
With "--own" only the tests of the mistake's own folder are asked: sooner, for a first look.
Not as root: what a mistake does to files it does to the system's as well, /dev/full is one of them.
"""
import concurrent.futures
import hashlib
import json
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutants"
TREE = WORK / "tree"
BIN = WORK / "build" / "bin"
SUITES = ["link", "notice", "persist", "device", "bootrom", "serial", "fuzz", "sim", "data",
          "target", "sweep", "platform", "shell", "ui", "e2e"]
OWN_ONLY = "--own" in sys.argv
SECONDS = {}  # that a suite may take, by its run without a mistake; one that hangs has found it

HEADER = """#pragma once
extern "C" int calvorin_mutant;
#define MUTANT(n) (calvorin_mutant == (n))
"""
SOURCE = """#include <cstdlib>
extern "C" int calvorin_mutant;
int calvorin_mutant = [] {
    const char* const chosen = std::getenv("CALVORIN_MUTANT");
    return chosen != nullptr ? std::atoi(chosen) : 0;
}();
"""

OPERAND = r"[\w.:]+(?:->\w+)*(?:\(\))?"
EDGE = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}
COMPARISON = re.compile(
    rf"(?:(?<=if \()|(?<=&& )|(?<=\|\| )|(?<=return ))({OPERAND}) (<=?|>=?|==|!=) ({OPERAND})"
    r"(?=\)* (?:&&|\|\|)|\)* \{|;)")
IF = re.compile(r"^(\s+(?:\} else )?if \()(.*)(\) \{)$")
CALL = re.compile(r"^(\s{4,})((?:[A-Za-z_]\w*(?:\(\))?(?:\.|->|::))*[A-Za-z_]\w*\(.*\);)$")
ASSIGNMENT = re.compile(r"^(\s{4,})([a-z][\w.\[\]]*(?:->\w+)? [-+|&]?= .*;)$")
RETURN = re.compile(r"^(\s+return )(true|false);$")
STEP = re.compile(r" ([-+]) 1(?=[;,)\]])")


def balanced(text):
    return text.count("(") == text.count(")") and text.count("{") == text.count("}")


def mistakes(line):
    """The changes of a line: what each is, and the new line with "@" for its number."""
    if line.lstrip().startswith(("//", "#", "static ", "constexpr", "const ", "case ", "}")) \
            and not IF.match(line):
        return
    if match := IF.match(line):
        head, condition, tail = match.groups()
        if (";" not in condition and balanced(condition)
                and not re.search(r"[^=!<>]=[^=]", condition)):
            yield "negated", f"{head}MUTANT(@) != static_cast<bool>({condition}){tail}"
            for word, other in (("&&", "||"), ("||", "&&")):
                if condition.count(word) == 1 and other not in condition and "[" not in condition:
                    left, right = condition.split(word)
                    if balanced(left) and balanced(right):
                        yield f"{word} for {other}", (
                            f"{head}MUTANT(@) ? ({left}{other}{right}) : ({condition}){tail}")
    if match := COMPARISON.search(line):
        left, operator, right = match.groups()
        yield f"{operator} is {EDGE[operator]}", (
            f"{line[:match.start()]}(MUTANT(@) ? {left} {EDGE[operator]} {right} : "
            f"{left} {operator} {right}){line[match.end():]}")
    if (match := CALL.match(line)) and balanced(match[2]) and "static_assert" not in line:
        yield "left out", f"{match[1]}if (!MUTANT(@)) {{ {match[2]} }}"
    if (match := ASSIGNMENT.match(line)) and balanced(match[2]):
        yield "not set", f"{match[1]}if (!MUTANT(@)) {{ {match[2]} }}"
    if match := RETURN.match(line):
        yield "the opposite", f"{match[1]}MUTANT(@) != {match[2]};"
    if (match := STEP.search(line)) and "constexpr" not in line:
        yield "off by one", (
            f"{line[:match.start()]} {match[1]} (MUTANT(@) ? 0 : 1){line[match.end():]}")


def is_source(name):
    return re.fullmatch(r"src/.*\.cpp", name)


def listed():
    lines = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT,
                           capture_output=True, text=True, check=True).stdout.splitlines()
    return [name for name in lines if (ROOT / name).exists()]


def copy_others(names):
    """Takes over what has no mistakes, the tests above all; what is gone goes there too."""
    others = {name for name in names if not is_source(name)}
    for name in others:
        target = TREE / name
        target.parent.mkdir(parents=True, exist_ok=True)
        if not target.exists() or target.read_bytes() != (ROOT / name).read_bytes():
            shutil.copy(ROOT / name, target)
    for file in TREE.glob("tests/**/*"):
        if file.is_file() and str(file.relative_to(TREE)) not in others:
            file.unlink()


def plant(seed, names):
    """Copies the sources with a mistake in each line that offers one; what stands where."""
    random.seed(seed)
    shutil.rmtree(TREE, ignore_errors=True)
    planted = {}
    for name in filter(is_source, names):
        target = TREE / name
        target.parent.mkdir(parents=True, exist_ok=True)
        lines = (ROOT / name).read_text().split("\n")
        before = ""
        constant = False
        for i, line in enumerate(lines):
            code = line.split("//")[0].rstrip()
            constant = (not code.endswith(";") if line.startswith("constexpr")
                        else constant and not line.startswith("}"))
            # The first line of a statement, or all of it.
            begins = re.search(r"[;{}:]$|^$|//", before)
            before = line
            if begins and not constant and (found := list(mistakes(line))):
                what, changed = random.choice(found)
                number = len(planted) + 1
                lines[i] = changed.replace("MUTANT(@)", f"MUTANT({number})")
                planted[number] = (name, i + 1, what, line.strip())
        target.write_text("\n".join(lines))
    (TREE / "src" / "mutant.h").write_text(HEADER)
    (TREE / "src" / "platform" / "mutant.cpp").write_text(SOURCE)
    return planted


def planted_copy(seed):
    """The copy with its mistakes, made anew only if it is not of these sources and this seed."""
    names = listed()
    state = hashlib.sha256(str(seed).encode() + pathlib.Path(__file__).read_bytes())
    for name in sorted(filter(is_source, names)):
        state.update(name.encode() + (ROOT / name).read_bytes())
    record = WORK / "planted.json"
    kept = json.loads(record.read_text()) if record.exists() else {}
    if kept.get("state") != state.hexdigest():
        kept = {"state": state.hexdigest(), "planted": plant(seed, names)}
        record.write_text(json.dumps(kept))
    return kept_copy()


def kept_copy():
    """The copy with the mistakes it has and the tests of now; what stands where, by its number."""
    copy_others(listed())
    kept = json.loads((WORK / "planted.json").read_text())
    return {int(number): what for number, what in kept["planted"].items()}


def build():
    subprocess.run(["cmake", "-S", TREE, "-B", WORK / "build", "-G", "Ninja",
                    "-DCMAKE_BUILD_TYPE=Debug", "-DCALVORIN_BENCH=OFF", "-DCALVORIN_WERROR=OFF",
                    f"-DCMAKE_CXX_FLAGS=-O1 -w -include {TREE}/src/mutant.h"],
                   check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", WORK / "build"], check=True)


def suites_of(folder):
    own = [folder] if folder in SUITES else []
    if OWN_ONLY:
        return own
    return own + [suite for suite in SUITES if suite not in own and (suite != "ui" or folder == "ui")]


def passes(suite, number):
    environment = dict(os.environ, CALVORIN_MUTANT=str(number), QT_QPA_PLATFORM="offscreen")
    command = [BIN / f"test_{suite}"] + ([] if suite == "sweep" else
                                         ["--gtest_brief=1", "--gtest_fail_fast"])
    try:
        return subprocess.run(command, env=environment, timeout=SECONDS.get(suite), check=False,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode == 0
    except subprocess.TimeoutExpired:
        return False


def finder(number, folder):
    return next((suite for suite in suites_of(folder) if not passes(suite, number)), None)


def report(planted, drawn, found):
    folders = sorted({planted[number][0].split("/")[1] for number in drawn})
    print(f"{'folder':<12} {'mistakes':>8} {'found':>6}")
    for folder in folders + ["all"]:
        here = [n for n in drawn if folder == "all" or planted[n][0].split("/")[1] == folder]
        hits = sum(found[n] is not None for n in here)
        print(f"{folder:<12} {len(here):>8} {hits:>6} {100 * hits / len(here):6.1f} %")
    for number in drawn:
        if found[number] is None:
            name, line, what, text = planted[number]
            print(f"{number}: {name}:{line}: {what}: {text}")


def drawn_by(count, seed, folders):
    planted = planted_copy(seed)
    possible = [n for n in planted if not folders or planted[n][0].split("/")[1] in folders]
    random.seed(seed)
    return planted, sorted(random.sample(possible, min(count, len(possible))))


def main():
    words = [word for word in sys.argv[1:] if word != "--own"]
    if words[:1] == ["--again"]:
        planted, drawn = kept_copy(), sorted(map(int, words[1:]))
    else:
        count = int(words[0]) if words else 400
        seed = int(words[1]) if len(words) > 1 else 1
        planted, drawn = drawn_by(count, seed, words[2:])
    build()
    needed = {suite for n in drawn for suite in suites_of(planted[n][0].split("/")[1])}
    for suite in sorted(needed):
        began = time.monotonic()
        good = passes(suite, 0)
        SECONDS[suite] = 60 + 4 * (time.monotonic() - began)
        if not good:
            sys.exit(f"test_{suite} fails without a mistake")
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        where = pool.map(lambda n: finder(n, planted[n][0].split("/")[1]), drawn)
        report(planted, drawn, dict(zip(drawn, where)))


main()
