# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

"""The picture of the figures, drawn by gnuplot."""

import math
import subprocess

from roster import EVERYONE, FLOORS, OURS

PANELS = (("Read everything: in the program", "ms", "read", "program"),
          ("Change one value and save: in the program", "ms", "change", "program"),
          ("Read everything: whole process", "ms", "read", "whole"),
          ("Read everything: peak memory", "MiB", "read", "peak"))

WIDTH, HEIGHT = 1040, 800
# Where the panels of a column or row begin and end, as shares of the width and height; the names of
# the lines stand to the right of their ends.
COLUMNS = ((0.06, 0.36), (0.56, 0.86))
ROWS = ((0.94, 0.6), (0.46, 0.12))

COLOURS = {"tallbook": "#c2255c", "gkeyfile": "#2f7d32", "kconfig": "#9c6b00",
           "libplist": "#1768b3", "sqlite-full": "#6b46c1", "libaccounts-glib": "#0f7f86",
           "nothing": "#777777", "replace-file": "#777777"}

# Seen with its colours turned round, hues kept, where the reader's screen is dark.
DARK = ("<style>@media (prefers-color-scheme: dark) "
        "{ svg { filter: invert(0.9) hue-rotate(180deg); } }</style>")


def spread(heights, least):
    """The heights, of which there are few, moved apart until each has `least` of room."""
    order = sorted(range(len(heights)), key=heights.__getitem__)
    placed = [heights[at] for at in order]
    for _ in range(200):
        for low in range(len(placed) - 1):
            short = least - (placed[low + 1] - placed[low])
            if short > 0:
                placed[low] -= short / 2
                placed[low + 1] += short / 2
    return {at: height for at, height in zip(order, placed)}


def lines_of(figures, figure):
    """(peer, [(size, value)]) of each line of a panel."""
    for peer in EVERYONE:
        points = [(size, getattr(each[peer.program], figure)) for size, each in figures.items()
                  if peer.program in each]
        if peer.label and any(value for _, value in points):
            yield peer, points


def ticks(low, high):
    """The round numbers between, three a decade where there are few decades."""
    steps = (1, 2, 5) if high / low < 100 else (1,)
    numbers = (step * 10.0**power for power in range(-3, 7) for step in steps)
    return ", ".join(f"'{number:,g}' {number}" for number in numbers if low <= number <= high)


def panel(title, unit, lines, left, right, top, bottom):
    """The commands that draw one panel."""
    values = [value for _, points in lines for _, value in points]
    low, high = math.log10(min(values)) - 0.1, math.log10(max(values)) + 0.1
    sizes = sorted({size for _, points in lines for size, _ in points})
    yield f"set lmargin at screen {left}; set rmargin at screen {right}"
    yield f"set tmargin at screen {top}; set bmargin at screen {bottom}"
    yield f"set xrange [{sizes[0] * 0.8}:{sizes[-1] * 1.25}]; set yrange [{10**low}:{10**high}]"
    yield f"set ytics ({ticks(10**low, 10**high)})"
    yield (f"set label '{title}, {unit}' at graph 0, graph 1.07 left "
           "textcolor rgb '#111111' font ',15'")
    heights = [(math.log10(points[-1][1]) - low) / (high - low) for _, points in lines]
    least = 17 / ((top - bottom) * HEIGHT)
    for at, height in spread(heights, least).items():
        peer = lines[at][0]
        yield (f"set label '{peer.label}' at graph 1.03, graph {height} left "
               f"textcolor rgb '{COLOURS[peer.program]}' font ',{15 if peer is OURS else 13}'")
    plots = []
    for peer, points in lines:
        block = "$" + peer.program.replace("-", "_")
        yield f"{block} << END"
        yield from (f"{size} {value}" for size, value in points)
        yield "END"
        width, dash = (3.5, 1) if peer is OURS else (1.7, 2 if peer in FLOORS else 1)
        plots.append(f"{block} with linespoints linewidth {width} dashtype {dash} pointtype 7 "
                     f"pointsize 0.45 linecolor rgb '{COLOURS[peer.program]}' notitle")
    yield "plot " + ", ".join(plots)


def draw(medians, machine, path):
    """Draws the four panels, with the machine and the date below them."""
    note = (f"Medians of fresh processes that took turns. {machine.processor}, {machine.memory}, "
            f"{machine.disk}; {machine.system}, {machine.kernel}; {machine.date}.")
    commands = [
        f"set terminal svg size {WIDTH},{HEIGHT} font 'sans-serif,13' background '#ffffff'",
        "set multiplot; set logscale xy; set grid linecolor rgb '#d5d5d5'",
        "set border 3 linecolor rgb '#555555'; set tics nomirror textcolor rgb '#333333'",
        "set xtics ('10' 10, '100' 100, '1,000' 1000, '10,000' 10000)",
        "set xlabel 'records' offset 0,0.6 textcolor rgb '#333333'",
        f"set label 1000 '{note}' at screen {COLUMNS[0][0]}, screen 0.025 left "
        "textcolor rgb '#555555' font ',12'"]
    for at, (title, unit, work, figure) in enumerate(PANELS):
        lines = list(lines_of(medians[work], figure))
        commands += panel(title, unit, lines, *COLUMNS[at % 2], *ROWS[at // 2])
        commands.append("unset label")
    drawn = subprocess.run(["gnuplot"], input="\n".join(commands), check=True, capture_output=True,
                           text=True).stdout
    with open(path, "w") as picture:
        picture.write(drawn.replace("<title>Gnuplot</title>", "<title>Measures</title>")
                      .replace("</desc>", "</desc>\n" + DARK))
