#!/usr/bin/env python3
"""Checks who includes whom: modules only what they may use, third-party headers only in linux and apps."""

import re
import sys
from pathlib import Path

MAY_USE = {
    "core": set(),
    "platform": {"core"},
    "health": {"core", "platform"},
    "recording": {"core", "platform", "health"},
    "routes": {"core", "platform", "health", "recording"},
    "insights": {"core", "platform", "health"},
    "achievements": {"core", "platform", "health"},
    "companion": {"core", "platform", "health"},
    "engagement": {"core", "platform", "health"},
    "hydration": {"core", "platform", "health", "companion"},
    "linux": {"core", "platform"},
    "apps": None,  # anything
}
MAY_NAME_LIBRARIES = {"linux", "apps"}
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def faults(source: Path):
    for file in sorted(source.rglob("*")):
        if file.suffix not in {".h", ".cpp"}:
            continue
        module = file.relative_to(source).parts[0]
        if module not in MAY_USE:
            yield f"{file}: '{module}' is not a module"
            continue
        allowed = MAY_USE[module]
        for kind, name in INCLUDE.findall(file.read_text(encoding="utf-8")):
            if kind == "<":
                # Headers of the standard library have neither a folder nor an ending.
                if module not in MAY_NAME_LIBRARIES and ("/" in name or "." in name):
                    yield f"{file}: only linux and apps include other people's headers, not <{name}>"
                continue
            used = name.split("/")[0]
            if not (source / name).is_file():
                yield f"{file}: \"{name}\" is not a file of src (paths start at src)"
            elif allowed is not None and used != module and used not in allowed:
                yield f"{file}: {module} does not use {used} (\"{name}\")"


def main() -> int:
    source = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent / "src"
    found = list(faults(source))
    print("\n".join(found) if found else "modules: each uses only what it may")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
