#!/usr/bin/env python3
"""The texts of the program against tests/data/texts.txt, which holds each of them once: a text that
is altered, added or lost shows as a difference to be looked at.

  texts.py --check      exit code 1 and the differences where there are any
  texts.py --write      takes the texts of the program into the table
  texts.py --untested   which texts of failures no test expects; no proof that the others are right,
                        but a text that no test knows has never been seen to be produced
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
TABLE = ROOT / "tests" / "data" / "texts.txt"

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)|(?P<directive>^[ \t]*\#[ \t]*(?:include|pragma)[^\n]*)"""
    r"""|R"\((?P<raw>.*?)\)"|(?P<text>"(?:\\.|[^"\\\n])*")|(?P<character>'(?:\\.|[^'\\\n])+')"""
    r"""|(?P<end>[;{}])|(?P<other>\w+|[^\s])""",
    re.S | re.M | re.X)
# A statement that reports a failure names one of these.
FAILS = re.compile(r"ERROR_Out|ERROR_WithReason|Failure|[rR]eason|report|refuse|[fF]ail|Fault|Doubt"
                   r"|bootC|bootAwait|bootSilence|bootExchange|lose|error|wrong|leaveOut")
# What stands in a failure text for a value.
VALUE = re.compile(r"%[-+ #0]*\d*(?:\.\d+)?(?:ll|l|z|h)?[a-zA-Z]")


def literals(path):
    """The texts of a source, adjacent ones joined, each with the words of its statement."""
    statement, texts, found, joined = [], [], [], False
    for match in TOKEN.finditer(path.read_text()):
        kind = match.lastgroup
        if kind in ("comment", "directive"):
            continue
        if kind in ("text", "raw"):
            text = match["text"][1:-1] if kind == "text" else match["raw"].replace("\n", "\\n")
            if joined:
                texts[-1] += text
            else:
                texts.append(text)
            joined = True
            continue
        joined = False
        statement.append(match.group())
        if kind == "end":
            found += [(text, " ".join(statement)) for text in texts]
            statement, texts = [], []
    return found


def program_texts():
    texts = {}
    for folder in ("src", "sim"):
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix in (".cpp", ".h"):
                for text, statement in literals(path):
                    if re.search(r"[A-Za-z]{2}", re.sub(r"\\.", "", text)):
                        fails = folder == "src" and " " in text and FAILS.search(statement)
                        texts[text] = texts.get(text, False) or bool(fails)
    return texts


def check():
    known = set(TABLE.read_text().splitlines())
    texts = set(program_texts())
    for text in sorted(texts - known):
        print(f"not in the table: {text}")
    for text in sorted(known - texts):
        print(f"not in the program: {text}")
    return 1 if texts != known else 0


def untested():
    expected = "\n".join(text.encode().decode("unicode_escape", "replace")
                         for path in sorted((ROOT / "tests").rglob("*.[ch]*"))
                         for text, _ in literals(path))
    missing = []
    for text in sorted(text for text, fails in program_texts().items() if fails):
        plain = text.encode().decode("unicode_escape", "replace")
        parts = [re.escape(part) for part in VALUE.split(plain.replace("%%", "%"))]
        if not re.search(".*".join(parts), expected, re.S if "\n" in plain else 0):
            missing.append(text)
    for text in missing:
        print(f"no test expects: {text}")
    print(f"{len(missing)} failure texts that no test expects")
    return 0


def main():
    if sys.argv[1:] == ["--write"]:
        TABLE.write_text("".join(f"{text}\n" for text in sorted(program_texts())))
        return 0
    if sys.argv[1:] == ["--untested"]:
        return untested()
    if sys.argv[1:] == ["--check"]:
        return check()
    print(__doc__)
    return 2


sys.exit(main())
