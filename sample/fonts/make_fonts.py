#!/usr/bin/python3
"""Makes the sample product's TrueType fonts.

make_fonts.py OUTDIR [--revision R] [--only FILE] [--family-prefix P]

Each font is a small but complete TrueType file (a box glyph for the basic
Latin letters) with a family name of its own, the "head" fontRevision R
(default 4.0; --revision-raw gives the 32-bit value itself) and an OS/2
fsSelection for its style, so that GDI loads and enumerates it and the font
installer can compare versions. Every file is a family of its own ("Zendra
Lattice Bold" is bold): the installer registers fonts by family name, so two
files must never share one, and GDI keeps at most 31 characters of a name.
"""
import argparse
import os
import sys

from fontTools.fontBuilder import FontBuilder
from fontTools.pens.ttGlyphPen import TTGlyphPen

# File name -> (family, style). Styles: regular, bold, italic, bolditalic.
FONTS = [
    ("qxextra.ttf", "Zendra QX Extra", "regular"),
    ("lattice.ttf", "Zendra Lattice", "regular"),
    ("latticeb.ttf", "Zendra Lattice", "bold"),
    ("latticebi.ttf", "Zendra Lattice", "bolditalic"),
    ("latticei.ttf", "Zendra Lattice", "italic"),
    ("latsym.ttf", "Zendra Lattice Sym", "regular"),
    ("latsymb.ttf", "Zendra Lattice Sym", "bold"),
    ("latsymbi.ttf", "Zendra Lattice Sym", "bolditalic"),
    ("latsymi.ttf", "Zendra Lattice Sym", "italic"),
    ("laextra.ttf", "Zendra Lattice Extra", "regular"),
    ("laextrab.ttf", "Zendra Lattice Extra", "bold"),
    ("lafrak.ttf", "Zendra Lattice Fraktur", "regular"),
    ("lafrakb.ttf", "Zendra Lattice Fraktur", "bold"),
    ("lamat1.ttf", "Zendra Lattice Matrix One", "regular"),
    ("lamat1b.ttf", "Zendra Lattice Matrix One", "bold"),
    ("lamat2.ttf", "Zendra Lattice Matrix Two", "regular"),
    ("lamat2b.ttf", "Zendra Lattice Matrix Two", "bold"),
    ("gh_SimBraille_Nemeth_One.ttf", "Zendra Braille Nemeth", "regular"),
]

# Seconds since 1904 of 2026-01-01: fixed, so that builds are repeatable.
TIMESTAMP = 3849984000

SUBFAMILY = {"regular": "Regular", "bold": "Bold", "italic": "Italic",
             "bolditalic": "Bold Italic"}
# OS/2 fsSelection: bit 0 italic, bit 5 bold, bit 6 regular.
FS_SELECTION = {"regular": 0x40, "bold": 0x20, "italic": 0x01,
                "bolditalic": 0x21}
# head macStyle: bit 0 bold, bit 1 italic.
MAC_STYLE = {"regular": 0, "bold": 1, "italic": 2, "bolditalic": 3}


def box_glyph(width, inset):
    pen = TTGlyphPen(None)
    pen.moveTo((inset, 0))
    pen.lineTo((inset, 700))
    pen.lineTo((width - inset, 700))
    pen.lineTo((width - inset, 0))
    pen.closePath()
    return pen.glyph()


def build(path, family, style, revision):
    letters = [chr(c) for c in range(ord("A"), ord("Z") + 1)] + \
              [chr(c) for c in range(ord("a"), ord("z") + 1)]
    glyph_order = [".notdef", "space"] + letters
    fb = FontBuilder(1000, isTTF=True)
    fb.setupGlyphOrder(glyph_order)
    cmap = {ord(" "): "space"}
    cmap.update({ord(c): c for c in letters})
    fb.setupCharacterMap(cmap)
    pen = TTGlyphPen(None)
    glyphs = {".notdef": box_glyph(500, 50), "space": pen.glyph()}
    weight = 120 if "bold" in style else 60
    glyphs.update({c: box_glyph(600, weight) for c in letters})
    fb.setupGlyf(glyphs)
    fb.setupHorizontalMetrics({g: (600 if g not in (".notdef", "space")
                                   else 500, 0) for g in glyph_order})
    fb.setupHorizontalHeader(ascent=800, descent=-200)
    subfamily = SUBFAMILY[style]
    if style != "regular":
        family = family + " " + subfamily
    full = family
    fb.setupNameTable({
        "familyName": family,
        "styleName": subfamily,
        "uniqueFontIdentifier": "Orvane: %s %s: %s" % (full, revision,
                                                       os.path.basename(path)),
        "fullName": full,
        "psName": full.replace(" ", ""),
        "version": "Version %.5f" % revision,
        "manufacturer": "Orvane",
    })
    fb.setupOS2(sTypoAscender=800, sTypoDescender=-200, usWinAscent=800,
                usWinDescent=200, fsSelection=FS_SELECTION[style],
                usWeightClass=700 if "bold" in style else 400,
                achVendID="ORVN")
    fb.setupPost()
    fb.setupHead(unitsPerEm=1000, fontRevision=revision,
                 macStyle=MAC_STYLE[style], created=TIMESTAMP,
                 modified=TIMESTAMP)
    fb.save(path)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("outdir")
    parser.add_argument("--revision", type=float, default=4.0)
    parser.add_argument("--revision-raw", type=lambda v: int(v, 0),
                        help="the fontRevision as a 32-bit number")
    parser.add_argument("--only", action="append",
                        help="make only this file (may be repeated)")
    parser.add_argument("--family-prefix", default="",
                        help="put this text before every family name")
    args = parser.parse_args()
    revision = args.revision
    if args.revision_raw is not None:
        revision = args.revision_raw / 65536.0
    os.makedirs(args.outdir, exist_ok=True)
    known = {name for name, _, _ in FONTS}
    for name in args.only or []:
        if name not in known:
            sys.exit("make_fonts.py: no font named %s" % name)
    for name, family, style in FONTS:
        full = family if style == "regular" else family + " " + SUBFAMILY[style]
        assert len(args.family_prefix + full) <= 31, full
        if args.only and name not in args.only:
            continue
        build(os.path.join(args.outdir, name), args.family_prefix + family,
              style, revision)


if __name__ == "__main__":
    main()
