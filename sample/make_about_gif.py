#!/usr/bin/python3
"""Writes About.gif: the sample product's 1x1 picture."""
import sys

# GIF89a, one white pixel: header, screen, colour table, image, LZW data.
GIF = bytes.fromhex(
    "474946383961" "01000100" "800000" "ffffff" "000000"
    "2c" "0000" "0000" "0100" "0100" "00"
    "02" "02" "4401" "00" "3b")

with open(sys.argv[1], "wb") as out:
    out.write(GIF)
