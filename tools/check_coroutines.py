#!/usr/bin/env python3
"""Finds statements with co_await that g++ 12 compiles wrongly.

The compiler destroys some temporaries twice in a statement that awaits: brace-initialised aggregates and lambdas with
captures. Whatever an awaiting statement needs is given a name first. A lambda that captures and is itself a coroutine
dangles once the lambda is gone, so that one is reported too.
"""

import re
import sys
from pathlib import Path

NOISE = re.compile(r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'', re.DOTALL)
AWAIT = re.compile(r"\bco_await\b")
CAPTURING_LAMBDA = re.compile(r"(?<![\w\])])\[[^\[\]]+\]\s*(?:\(|mutable|\{)")
CONTROL = re.compile(r"\b(?:if|while|for|switch)\b[^;{}]*$")


def blank(match: re.Match) -> str:
    """The same number of lines and columns without the words."""
    return re.sub(r"[^\n]", " ", match.group())


def statement(text: str, at: int) -> str:
    """The statement around position `at`, its condition only where it controls a block."""
    start = max(text.rfind(mark, 0, at) for mark in ";{}") + 1
    depth = 0
    for end in range(start, len(text)):
        if text[end] in "([":
            depth += 1
        elif text[end] in ")]":
            depth -= 1
        elif depth <= 0 and (text[end] == ";" or (text[end] == "{" and CONTROL.search(text[start:end]))):
            return text[start:end]
    return text[start:]


def faults(file: Path):
    text = NOISE.sub(blank, file.read_text(encoding="utf-8"))
    for found in AWAIT.finditer(text):
        line = text.count("\n", 0, found.start()) + 1
        words = statement(text, found.start())
        if "{" in words:
            yield f"{file}:{line}: braces in a statement that awaits; name the value before"
        elif CAPTURING_LAMBDA.search(words):
            yield f"{file}:{line}: a capturing lambda in a statement that awaits; name it before"
    for lambda_start in CAPTURING_LAMBDA.finditer(text):
        open_brace = text.find("{", lambda_start.end() - 1)
        if open_brace < 0 or ";" in text[lambda_start.end():open_brace]:
            continue
        depth, end = 0, open_brace
        for end in range(open_brace, len(text)):
            depth += {"{": 1, "}": -1}.get(text[end], 0)
            if depth == 0:
                break
        if re.search(r"\bco_(?:await|return|yield)\b", text[open_brace:end]):
            line = text.count("\n", 0, lambda_start.start()) + 1
            yield f"{file}:{line}: a capturing lambda is a coroutine; make it a function with parameters"


def main() -> int:
    root = Path(__file__).resolve().parent.parent
    places = [Path(name) for name in sys.argv[1:]] or [root / "src", root / "tests"]
    files = [file for place in places for file in ([place] if place.is_file() else sorted(place.rglob("*")))]
    found = [fault for file in files if file.suffix in {".h", ".cpp"} for fault in faults(file)]
    print("\n".join(found) if found else "coroutines: no statement that g++ 12 would break")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
