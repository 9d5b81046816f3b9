# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

"""The page with the figures."""

from roster import EVERYONE, NOTHING, OURS, PEERS, REPLACEMENT

INTRODUCTION = """# Against others

What it costs to keep the same records in other ways. `scripts/bench peers` measures, and writes
this page and its [picture](measures.svg); `scripts/setup --peers` installs the others.

The records are those of `bench/PropertyListFiles.h`, ten keys each. Every figure is the median of
fresh processes that took turns, with warm caches: {turns} records.
The programs, in `bench/peers/`, go about it as their libraries recommend, and find the same: a sum
over every key of every record is compared, after the changes once more.

- *In the program*: milliseconds by its own clock, setting the library up included, until everything
  was read or saved. Nobody frees what was read.
- *Whole process*: milliseconds from fork to wait, loading the libraries included.
- *Peak memory*: MiB, the most that was resident at a time.
- *Flushes*: calls that wait for the disk, counted with `strace`.
"""


def row(cells):
    return "| " + " | ".join(cells) + " |\n"


def rounded(value):
    digits = 2 if value < 10 else 1 if value < 100 else 0
    return f"{value:,.{digits}f}"


def figures_table(medians, figure, summary=None, flushes=None):
    """A row a program, a column a size, and a last row that sums up."""
    sizes = list(medians)
    heads = ["", *(["flushes"] if flushes else []), *(f"{size:,} records" for size in sizes)]
    text = row(heads) + row(["---", *["--:"] * (len(heads) - 1)])
    for peer in EVERYONE:
        figures = [medians[size].get(peer.program) for size in sizes]
        if any(each and getattr(each, figure) for each in figures):
            cells = [rounded(getattr(each, figure)) if each else "too slow" for each in figures]
            text += row([peer.name, *([str(flushes[peer.program])] if flushes else []), *cells])
    if summary:
        name, value = summary
        values = [f"**{value(medians[size]):.2f}**" for size in sizes]
        text += row([f"**{name}**", *([""] if flushes else []), *values])
    return text


def quickest_other(figures, figure):
    return min(getattr(figures[peer.program], figure) for peer in PEERS
               if peer is not OURS and peer.program in figures)


def page(medians, flushes, versions, machine, turns):
    """The whole page, in Markdown."""

    def share(of, figure):
        return lambda all: getattr(all[OURS.program], figure) / getattr(all[of.program], figure)

    turns = ", ".join(f"{count} of each at {size:,}" for size, count in turns.items())
    read, change = medians["read"], medians["change"]
    text = INTRODUCTION.format(turns=turns) + "\n"
    text += row(["", ""]) + row(["---", "---"])
    for name, value in machine._asdict().items():
        text += row([name, value])
    text += "\n## Reading everything: in the program\n\n"
    text += figures_table(read, "program", ("quickest other / this library", lambda all: (
        quickest_other(all, "program") / all[OURS.program].program)))
    text += "\n## Reading everything: whole process\n\n"
    text += figures_table(read, "whole", ("this library / nothing", share(NOTHING, "whole")))
    text += "\n## Reading everything: peak memory\n\n" + figures_table(read, "peak")
    text += "\n## Changing one value and saving: in the program\n\n"
    text += figures_table(change, "program", ("this library / bare replacement",
                                              share(REPLACEMENT, "program")), flushes)
    text += "\n## Changing one value and saving: whole process\n\n" + figures_table(change, "whole")
    text += "\n## Changing one value and saving: peak memory\n\n" + figures_table(change, "peak")
    text += "\n## How each saves\n\n" + row(["", "version", "what is written"]) + row(["---"] * 3)
    for peer in EVERYONE:
        if peer.saving and peer.program in flushes:
            text += row([peer.name, versions.get(peer.program, ""), peer.saving])
    return text
