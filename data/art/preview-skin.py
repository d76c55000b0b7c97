#!/usr/bin/python3
"""Assemble a skin the way the game window shows it, to judge a drawing as a player sees it.

    preview-skin.py SKIN.bmp OUT.png [--layout ROWS] [--solved] [--bonus] [--scale N]

ROWS lists the board row by row, separated by '/', one character per cell: 0 is the big
block, 1 the wide block, 2-5 the tall blocks, 6-9 the small blocks, '.' an empty cell.
--solved shows the congratulation banner alone, as after the last move. --bonus uses the
alternative big and small block pictures. --scale enlarges without smoothing, to check
that lines sit on whole pixels. Needs python3-pil.
"""

import argparse
import sys

from PIL import Image

WINDOW = (408, 405)
BACKGROUND = (0xEF, 0xEF, 0xEF)
BOARD_ORIGIN = (30, 30)
CELL = 60

# (x, y, width, height) in the skin -> where its top-left corner goes in the window.
FRAME_AND_TITLE = [
    ((0, 0, 280, 20), (10, 10)),
    ((0, 20, 20, 300), (10, 30)),
    ((260, 20, 20, 300), (270, 30)),
    ((0, 320, 280, 20), (10, 330)),
    ((280, 0, 90, 340), (310, 10)),
]
BANNER = (0, 340, 370, 40)
BIG, BIG_BONUS = (20, 20, 120, 120), (140, 20, 120, 120)
WIDE = (20, 140, 120, 60)
TALL = [(20, 200, 60, 120), (80, 200, 60, 120), (140, 200, 60, 120), (200, 200, 60, 120)]
SMALL, SMALL_BONUS = (200, 140, 60, 60), (140, 140, 60, 60)


def cut(skin, rect):
    x, y, w, h = rect
    return skin.crop((x, y, x + w, y + h))


def block_picture(number, bonus):
    if number == 0:
        return BIG_BONUS if bonus else BIG
    if number == 1:
        return WIDE
    if 2 <= number <= 5:
        return TALL[number - 2]
    return SMALL_BONUS if bonus else SMALL


def block_size(number):
    """Width and height in cells."""
    return {0: (2, 2), 1: (2, 1)}.get(number, (1, 2) if number <= 5 else (1, 1))


def place_blocks(rows):
    """Top-left cell of every block; refuses a layout whose blocks do not have their shape,
    since a preview of an impossible board would only mislead."""
    if len(rows) != 5 or any(len(line) != 4 for line in rows):
        sys.exit("preview-skin: a layout is 5 rows of 4 cells")
    cells = {}
    for row, line in enumerate(rows):
        for col, char in enumerate(line):
            if char == ".":
                continue
            if not char.isdigit():
                sys.exit(f"preview-skin: unknown block {char!r}")
            cells.setdefault(int(char), []).append((col, row))
    placed = {}
    for number, where in cells.items():
        col, row = min(where, key=lambda cell: (cell[1], cell[0]))
        width, height = block_size(number)
        wanted = sorted((col + dx, row + dy) for dy in range(height) for dx in range(width))
        if sorted(where) != wanted:
            sys.exit(f"preview-skin: block {number} is not {width} wide and {height} high")
        placed[number] = (col, row)
    return placed


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("skin")
    parser.add_argument("out")
    parser.add_argument("--layout", default="2003/2003/4115/4675/8..9")
    parser.add_argument("--solved", action="store_true")
    parser.add_argument("--bonus", action="store_true")
    parser.add_argument("--scale", type=int, default=1)
    args = parser.parse_args()

    skin = Image.open(args.skin).convert("RGB")
    if skin.size != (370, 380):
        sys.exit(f"preview-skin: {args.skin} is {skin.size[0]}x{skin.size[1]}, not 370x380")
    window = Image.new("RGB", WINDOW, BACKGROUND)

    if args.solved:
        banner = cut(skin, BANNER)
        window.paste(banner, ((WINDOW[0] - BANNER[2]) // 2, (WINDOW[1] - BANNER[3]) // 2))
    else:
        for rect, where in FRAME_AND_TITLE:
            window.paste(cut(skin, rect), where)
        for number, (col, row) in place_blocks(args.layout.split("/")).items():
            picture = cut(skin, block_picture(number, args.bonus))
            window.paste(picture, (BOARD_ORIGIN[0] + col * CELL, BOARD_ORIGIN[1] + row * CELL))

    if args.scale > 1:
        window = window.resize((WINDOW[0] * args.scale, WINDOW[1] * args.scale), Image.NEAREST)
    window.save(args.out)


if __name__ == "__main__":
    main()
