#!/usr/bin/env python3
"""appearance.py fonts SOURCE TARGET: joins Noto Sans with the fonts of other scripts, into fonts that Wine can draw.
appearance.py settings FILE [--dpi N] [--high-contrast]: the desktop's settings for a Wine prefix, for regedit.

Wine takes letters that a font lacks from the fonts which the registry links to it, but letters that have to be ordered or
joined, as in Hebrew, Arabic and Devanagari, only from the font itself. Characters beyond the first 65,536 it does not
draw at all. The setting of the high contrast is what Wine lacks of it: its colours, without the theme that hides them.
"""
import argparse
import os
import struct

FAMILY = "Noto Sans"
JOINED = ["NotoSans", "NotoSansHebrew", "NotoSansArabic", "NotoSansDevanagari"]
LINKED = ["NotoSansCJK-{weight}.ttc,Noto Sans CJK JP", "NotoSansSymbols2-Regular.ttf,Noto Sans Symbols2",
          "NotoSansSymbols-Regular.ttf,Noto Sans Symbols"]
FONTS = ["Caption", "Icon", "Menu", "Message", "SmCaption", "Status"]
HEIGHT = -12  # 9 points

BLACK, WHITE, CYAN, GREEN, YELLOW, GREY, SILVER = (
    "0 0 0", "255 255 255", "26 235 255", "63 242 63", "255 255 0", "128 128 128", "192 192 192")
HIGH_CONTRAST = {
    "ActiveBorder": WHITE, "ActiveTitle": BLACK, "AppWorkSpace": BLACK, "Background": BLACK, "ButtonAlternateFace": SILVER,
    "ButtonDkShadow": WHITE, "ButtonFace": BLACK, "ButtonHilight": SILVER, "ButtonLight": WHITE, "ButtonShadow": GREY,
    "ButtonText": WHITE, "GradientActiveTitle": BLACK, "GradientInactiveTitle": BLACK, "GrayText": GREEN,
    "Hilight": CYAN, "HilightText": BLACK, "HotTrackingColor": YELLOW, "InactiveBorder": WHITE, "InactiveTitle": BLACK,
    "InactiveTitleText": WHITE, "InfoText": WHITE, "InfoWindow": BLACK, "Menu": BLACK, "MenuBar": BLACK,
    "MenuHilight": CYAN, "MenuText": WHITE, "Scrollbar": BLACK, "TitleText": WHITE, "Window": BLACK,
    "WindowFrame": WHITE, "WindowText": WHITE,
}


def join(source, target):
    from fontTools import merge
    from fontTools.ttLib import TTFont

    for weight in ("Regular", "Bold"):
        paths = [os.path.join(source, f"{name}-{weight}.ttf") for name in JOINED]
        joined, first = merge.Merger().merge(paths), TTFont(paths[0])
        # Lines as high as those of the first font, not of the highest.
        for table, names in (("hhea", ("ascent", "descent", "lineGap")),
                             ("OS/2", ("usWinAscent", "usWinDescent", "sTypoAscender", "sTypoDescender", "sTypoLineGap"))):
            for name in names:
                setattr(joined[table], name, getattr(first[table], name))
        joined["OS/2"].recalcUnicodeRanges(joined)
        if weight == "Regular":  # Wine looks up the system's font by its full name, and would draw bold letters from it
            for record in joined["name"].names:
                if record.nameID == 4:
                    record.string = FAMILY
        joined.save(os.path.join(target, os.path.basename(paths[0])))


def hexadecimal(kind, data):
    return f"hex{kind}:" + ",".join(f"{byte:02x}" for byte in data)


def logical_font():
    return struct.pack("<5l8B64s", HEIGHT, 0, 0, 0, 400, 0, 0, 0, 1, 0, 0, 0, 0, FAMILY.encode("utf-16-le"))


def links(weight):
    names = [name.format(weight=weight) for name in LINKED]
    return hexadecimal("(7)", ("\0".join(names) + "\0\0").encode("utf-16-le"))


def settings(dpi, high_contrast):
    desktop = "HKEY_CURRENT_USER\\Control Panel\\"
    keys = {
        desktop + "Desktop": {"LogPixels": f"dword:{dpi:08x}", "FontSmoothing": '"2"', "FontSmoothingType": "dword:00000001"},
        desktop + "Desktop\\WindowMetrics": {f"{name}Font": hexadecimal("", logical_font()) for name in FONTS},
        # By the full name of each font; Tahoma as the default.
        "HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows NT\\CurrentVersion\\FontLink\\SystemLink": {
            FAMILY: links("Regular"), f"{FAMILY} Bold": links("Bold"),
            "Tahoma": links("Regular"), "Tahoma Bold": links("Bold")},
    }
    if high_contrast:
        keys[desktop + "Colors"] = {name: f'"{color}"' for name, color in HIGH_CONTRAST.items()}
        keys["HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\ThemeManager"] = {"ThemeActive": '"0"'}
    lines = ["Windows Registry Editor Version 5.00"]
    for key, values in keys.items():
        lines += ["", f"[{key}]"] + [f'"{name}"={value}' for name, value in values.items()]
    return "\r\n".join(lines + [""])


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    commands = parser.add_subparsers(dest="command", required=True)
    fonts = commands.add_parser("fonts")
    fonts.add_argument("source")
    fonts.add_argument("target")
    desktop = commands.add_parser("settings")
    desktop.add_argument("file")
    desktop.add_argument("--dpi", type=int, default=96)
    desktop.add_argument("--high-contrast", action="store_true")
    options = parser.parse_args()
    if options.command == "fonts":
        join(options.source, options.target)
    else:
        with open(options.file, "w", encoding="utf-16", newline="") as file:  # with the mark that regedit expects
            file.write(settings(options.dpi, options.high_contrast))


if __name__ == "__main__":
    main()
