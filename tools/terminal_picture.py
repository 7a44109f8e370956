#!/usr/bin/env python3
"""Draws what a terminal shows as an SVG picture: terminal_picture.py TITLE < text-with-colours > picture.svg"""

import html
import re
import sys
import unicodedata

CELL_WIDTH, CELL_HEIGHT, MARGIN, BAR = 8.4, 16.3, 16, 30
BACKGROUND, FOREGROUND = "#1d1f21", "#d6d8d6"
PALETTE = ["#1d1f21", "#e06c75", "#7fc36e", "#e5c07b", "#61afef", "#c678dd", "#56b6c2", "#d6d8d6",
           "#70757a", "#ff8a8a", "#98e086", "#f4d88f", "#8cc8ff", "#e0a0f0", "#7fd8e4", "#ffffff"]
ESCAPE = re.compile(r"\x1b\[([\d;]*)m")


def color_256(number: int) -> str:
    if number < 16:
        return PALETTE[number]
    if number >= 232:
        return "#" + f"{8 + 10 * (number - 232):02x}" * 3
    levels = (0, 95, 135, 175, 215, 255)
    number -= 16
    return "#" + "".join(f"{levels[number // divisor % 6]:02x}" for divisor in (36, 6, 1))


def restyle(style: dict, codes: list) -> dict:
    style = dict(style)
    while codes:
        code = codes.pop(0)
        if code == 0:
            style = {}
        elif code == 1:
            style["font-weight"] = "bold"
        elif code == 2:
            style["opacity"] = "0.6"
        elif code == 22:
            style.pop("font-weight", None), style.pop("opacity", None)
        elif 30 <= code <= 37 or 90 <= code <= 97:
            style["fill"] = PALETTE[code - 30 if code < 90 else code - 82]
        elif code == 39:
            style.pop("fill", None)
        elif code == 38 and codes and codes[0] == 5:
            style["fill"] = color_256(codes[1])
            del codes[:2]
        elif code == 38 and codes and codes[0] == 2:
            style["fill"] = "#" + "".join(f"{value:02x}" for value in codes[1:4])
            del codes[:4]
    return style


def width(text: str) -> int:
    return sum(0 if unicodedata.combining(c) else 2 if unicodedata.east_asian_width(c) in "WF" else 1 for c in text)


def main() -> None:
    lines = sys.stdin.read().rstrip("\n").split("\n")
    title = html.escape(sys.argv[1] if len(sys.argv) > 1 else "")
    columns = max(80, *(width(ESCAPE.sub("", line)) for line in lines))
    total_width = columns * CELL_WIDTH + 2 * MARGIN
    total_height = len(lines) * CELL_HEIGHT + 2 * MARGIN + BAR
    print(f'<svg xmlns="http://www.w3.org/2000/svg" width="{total_width:.0f}" height="{total_height:.0f}" '
          f'font-family="DejaVu Sans Mono, Menlo, Consolas, monospace" font-size="14">')
    print(f'<rect width="100%" height="100%" rx="8" fill="{BACKGROUND}"/>')
    for place, color in enumerate(("#ff5f57", "#febc2e", "#28c840")):
        print(f'<circle cx="{MARGIN + 4 + 20 * place}" cy="18" r="6" fill="{color}"/>')
    print(f'<text x="{total_width / 2:.0f}" y="23" fill="#9a9fa3" text-anchor="middle">{title}</text>')
    style: dict = {}
    for row, line in enumerate(lines):
        column, y = 0, BAR + MARGIN + row * CELL_HEIGHT + 13
        for piece in re.split(r"(\x1b\[[\d;]*m)", line):
            codes = ESCAPE.fullmatch(piece)
            if codes:
                style = restyle(style, [int(code or 0) for code in codes.group(1).split(";")])
            elif piece:
                attributes = " ".join(f'{name}="{value}"' for name, value in {"fill": FOREGROUND, **style}.items())
                length = width(piece) * CELL_WIDTH
                if piece.strip():
                    print(f'<text x="{MARGIN + column * CELL_WIDTH:.1f}" y="{y}" {attributes} xml:space="preserve" '
                          f'textLength="{length:.1f}" lengthAdjust="spacingAndGlyphs">{html.escape(piece)}</text>')
                column += width(piece)
    print("</svg>")


if __name__ == "__main__":
    main()
