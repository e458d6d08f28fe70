#!/usr/bin/env python3
# SPDX-License-Identifier: LGPL-3.0-or-later
"""Builds the four faces of the icon font from the free Font Awesome 5 package.

    build-icon-fonts.py PACKAGE.tgz OUTPUT_FOLDER

The free package has no light face, and its regular face lacks most glyphs. The regular and light
faces are therefore the free regular face with the missing glyphs added from the solid one; light
differs from regular in name and weight only. Family and style names are those that licensees' files
have, so that these can take the place of the built ones. The result is the same, byte for byte, at
each run. The built fonts stay under the SIL Open Font License 1.1 like their source.
"""

import copy
import io
import os
import sys
import tarfile

from fontTools.ttLib import TTFont

PRO_FAMILY = "Font Awesome 5 Pro"
ORIGIN = "Modified version of Font Awesome Free 5.13.1: "
COMMON_CHANGES = "bearings, weight class and naming tables"
ADDED_CHANGES = ", glyphs of the solid face added"
COPYRIGHT = "Copyright (c) Font Awesome"
LICENCE = ("This font is licensed under the SIL Open Font License, Version 1.1. "
           "Modified version; not the original Font Awesome files.")
LICENCE_URL = "https://scripts.sil.org/OFL"

# Name records of the OpenType name table.
COPYRIGHT_ID, FAMILY, STYLE, UNIQUE, FULL, VERSION, POSTSCRIPT = 0, 1, 2, 3, 4, 5, 6
DESCRIPTION, LICENCE_ID, LICENCE_URL_ID = 10, 13, 14
TYPOGRAPHIC_FAMILY, TYPOGRAPHIC_STYLE, COMPATIBLE_FULL, WWS_FAMILY, WWS_STYLE = 16, 17, 18, 21, 22


def read_font(package, name):
    with tarfile.open(package) as archive:
        data = archive.extractfile("package/webfonts/" + name).read()
    return TTFont(io.BytesIO(data), recalcTimestamp=False)


def add_missing_glyphs(font, source):
    """Adds each glyph of source whose code point font has no glyph for."""
    codes = font.getBestCmap()
    missing = {code: name for code, name in source.getBestCmap().items() if code not in codes}
    glyphs, metrics = font["glyf"], font["hmtx"]
    source_glyphs, source_metrics = source["glyf"], source["hmtx"]
    # Tables are read on first use, and must be read before the glyph order changes.
    glyphs.keys(), metrics.metrics, source_metrics.metrics

    order = list(font.getGlyphOrder())
    added = [name for _, name in sorted(missing.items())]
    order += added
    font.setGlyphOrder(order)
    glyphs.glyphOrder = order
    for name in added:
        glyphs.glyphs[name] = copy.deepcopy(source_glyphs.glyphs[name])
        metrics.metrics[name] = source_metrics.metrics[name]
    for table in font["cmap"].tables:
        if table.isUnicode():
            table.cmap.update(missing)


def align_bearings(font):
    """A left side bearing that differs from the outline's left edge would shift the outline."""
    glyphs, metrics = font["glyf"], font["hmtx"]
    for name in font.getGlyphOrder():
        glyph = glyphs[name]
        glyph.recalcBounds(glyphs)
        advance, _ = metrics.metrics[name]
        left = glyph.xMin if glyph.numberOfContours else 0
        metrics.metrics[name] = (advance, left)


def set_names(font, family, style):
    full = family + " " + style
    values = {FAMILY: full, FULL: full, COMPATIBLE_FULL: full,
              STYLE: style, TYPOGRAPHIC_STYLE: style, WWS_STYLE: style,
              TYPOGRAPHIC_FAMILY: family, WWS_FAMILY: family,
              POSTSCRIPT: family.replace(" ", "") + "-" + style,
              UNIQUE: "norvu:" + full + ":5.13.1"}
    for identifier, text in values.items():
        set_everywhere(font, identifier, text)


def set_everywhere(font, identifier, text):
    names = font["name"]
    platforms = {(n.platformID, n.platEncID, n.langID) for n in names.names}
    for platform in sorted(platforms):
        names.setName(text, identifier, *platform)


def finish(font, weight, changes):
    set_everywhere(font, DESCRIPTION, ORIGIN + changes)
    set_everywhere(font, COPYRIGHT_ID, COPYRIGHT)
    set_everywhere(font, LICENCE_ID, LICENCE)
    set_everywhere(font, LICENCE_URL_ID, LICENCE_URL)
    font["OS/2"].usWeightClass = weight
    if "FFTM" in font:
        del font["FFTM"]
    font["OS/2"].recalcAvgCharWidth(font)


def build(package, base, addition, names, weight):
    font = read_font(package, base)
    changes = COMMON_CHANGES
    if addition:
        add_missing_glyphs(font, read_font(package, addition))
        changes += ADDED_CHANGES
    align_bearings(font)
    if names:
        set_names(font, *names)
    finish(font, weight, changes)
    return font


FACES = [
    # file, base, glyphs added from, names, weight
    ("fa-regular-400.ttf", "fa-regular-400.ttf", "fa-solid-900.ttf", (PRO_FAMILY, "Regular"), 400),
    ("fa-solid-900.ttf", "fa-solid-900.ttf", None, (PRO_FAMILY, "Solid"), 900),
    ("fa-light-300.ttf", "fa-regular-400.ttf", "fa-solid-900.ttf", (PRO_FAMILY, "Light"), 300),
    ("fa-brands-400.ttf", "fa-brands-400.ttf", None, None, 400),
]


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    package, folder = sys.argv[1:]
    os.makedirs(folder, exist_ok=True)
    for file, base, addition, names, weight in FACES:
        build(package, base, addition, names, weight).save(os.path.join(folder, file))
    with tarfile.open(package) as archive:
        text = archive.extractfile("package/LICENSE.txt").read()
    with open(os.path.join(folder, "LICENSE.txt"), "wb") as licence:
        licence.write(text)


if __name__ == "__main__":
    main()
