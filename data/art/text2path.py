#!/usr/bin/python3
"""Turn a line of lettering into SVG path outlines, so the pictures never depend on the
fonts installed on the machine that builds the game.

Run it by hand when a word in a drawing changes and paste the printed <path> into the SVG
(needs python3-fonttools).

    text2path.py FONT SIZE TEXT [--x X] [--y Y] [--anchor start|middle|end]
                 [--tracking PX] [--stack PX]

X, Y is where the baseline starts (or its middle/end, see --anchor). --tracking adds space
between letters. --stack PX sets the letters one under another instead, each centred on X,
with baselines PX apart starting at Y, and prints one <path> per letter.
"""

import argparse
import sys

from fontTools.pens.svgPathPen import SVGPathPen
from fontTools.pens.transformPen import TransformPen
from fontTools.ttLib import TTFont


def number(value):
    text = f"{value:.2f}".rstrip("0").rstrip(".")
    return "0" if text == "-0" else text


class RoundingPathPen(SVGPathPen):
    """Two decimals are far below a pixel and keep the SVG sources readable."""

    def __init__(self, glyph_set):
        super().__init__(glyph_set, ntos=number)


def letter_outline(font, glyph_set, char, scale, x, y, pen):
    name = font.getBestCmap().get(ord(char))
    if name is None:
        sys.exit(f"text2path: the font has no letter {char!r}")
    glyph = glyph_set[name]
    # Font units grow upwards, SVG pixels downwards.
    glyph.draw(TransformPen(pen, (scale, 0, 0, -scale, x, y)))
    return glyph.width * scale


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("font")
    parser.add_argument("size", type=float)
    parser.add_argument("text")
    parser.add_argument("--x", type=float, default=0.0)
    parser.add_argument("--y", type=float, default=0.0)
    parser.add_argument("--anchor", choices=("start", "middle", "end"), default="start")
    parser.add_argument("--tracking", type=float, default=0.0)
    parser.add_argument("--stack", type=float)
    args = parser.parse_args()

    font = TTFont(args.font)
    glyph_set = font.getGlyphSet()
    cmap = font.getBestCmap()
    scale = args.size / font["head"].unitsPerEm
    pen = RoundingPathPen(glyph_set)

    def advance(char):
        return glyph_set[cmap[ord(char)]].width * scale

    if args.stack:
        # One path per letter, so a gradient in objectBoundingBox units shades every letter
        # alike instead of running once down the whole column.
        for index, char in enumerate(args.text):
            pen = RoundingPathPen(glyph_set)
            left = args.x - advance(char) / 2
            letter_outline(font, glyph_set, char, scale, left, args.y + index * args.stack, pen)
            print(f'<path d="{pen.getCommands()}"/>')
        return

    width = sum(advance(c) for c in args.text) + args.tracking * (len(args.text) - 1)
    x = args.x - {"start": 0, "middle": width / 2, "end": width}[args.anchor]
    for char in args.text:
        x += letter_outline(font, glyph_set, char, scale, x, args.y, pen) + args.tracking
    print(f"<!-- {width:.1f} px wide -->", file=sys.stderr)

    print(f'<path d="{pen.getCommands()}"/>')


if __name__ == "__main__":
    main()
