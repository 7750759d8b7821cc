#!/usr/bin/env python3
"""Runs shell commands in a terminal of their own and writes an SVG that shows them as they ran.

    terminal_svg.py OUTPUT.svg TITLE < COMMANDS

Each line of the input is a command for one bash, which keeps its variables. Lines appear at the time at which they
were printed; with reduced motion, all at once. The script understands two of a terminal's control sequences: colours, and
a line that is drawn again."""
import html
import os
import pty
import re
import sys
import time

COLUMNS = 100
WIDTH, HEIGHT, MARGIN = 8.4, 18, 16  # of a character, of a line, around the text, in pixels
TYPING, READING = 0.9, 1.6           # seconds before and after a command's output
COLOURS = {"1": "b", "31": "r", "32": "g", "33": "y", "35": "m", "36": "c"}
MARK = "\x01end\x01"
STYLE = """
svg{background:#1b1f24;border-radius:8px}
text{font:14px ui-monospace,Menlo,Consolas,"DejaVu Sans Mono",monospace;fill:#d7dde4;white-space:pre}
.p{fill:#8fd18f}.b{font-weight:bold}.r{fill:#ff8f87}.g{fill:#8fd18f}.y{fill:#e6c36a}.m{fill:#d6a5f0}.c{fill:#7cc7e8}
@media(prefers-reduced-motion:no-preference){text{opacity:0;animation:s 1ms forwards}@keyframes s{to{opacity:1}}}
"""


def run(commands):
    """Yields (command, [(seconds, line)]) for each command."""
    pid, terminal = pty.fork()
    if pid == 0:
        os.execvp("bash", ["bash", "--noprofile", "--norc", "-c",
                           f"stty cols {COLUMNS} rows 40 -echo; "
                           'while IFS= read -r command; do eval "$command"; printf "\\1end\\1\\n"; done'])
    time.sleep(0.5)
    for command in commands:
        os.write(terminal, command.encode() + b"\n")
        begin, pending, lines = time.monotonic(), "", []
        while MARK not in pending:
            pending += os.read(terminal, 4096).decode("utf-8", "replace")
            *ended, rest = pending.split("\n")
            pending = MARK if any(MARK in line for line in ended) else rest
            lines += [(time.monotonic() - begin, part) for line in ended if MARK not in line for part in wrapped(line)]
        yield command, lines
    os.close(terminal)


def wrapped(line):
    """What was drawn last on a line, as the lines that it takes on the terminal."""
    line = re.split(r"\r(?:\x1b\[K)?", line.rstrip("\r"))[-1].expandtabs()
    if "\x1b" in line:  # a table, which fits
        return [line]
    return [line[at:at + COLUMNS] for at in range(0, max(len(line), 1), COLUMNS)]


def spans(line):
    """The markup of a line with its colours."""
    parts, style = [], ""
    for part in re.split(r"(\x1b\[[0-9;]*m)", line):
        if part.startswith("\x1b["):
            style = COLOURS.get(part[2:-1].split(";")[-1], "")
        elif part:
            text = html.escape(re.sub(r"\x1b\[[0-9;]*[A-Za-z]", "", part))
            parts.append(f'<tspan class="{style}">{text}</tspan>' if style else text)
    return "".join(parts)


def main():
    output, title = sys.argv[1:]
    rows, now = [], 0.5
    for command, lines in run([line.rstrip("\n") for line in sys.stdin if line.strip()]):
        rows.append((now, f'<tspan class="p">$</tspan> {html.escape(command)}'))
        now += TYPING
        rows += [(now + seconds, spans(line)) for seconds, line in lines]
        now += (lines[-1][0] if lines else 0) + READING
    width = round(COLUMNS * WIDTH + 2 * MARGIN)
    with open(output, "w", encoding="utf-8") as svg:
        svg.write(f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {len(rows) * HEIGHT + 2 * MARGIN}" '
                  f'role="img" aria-label="{html.escape(title)}"><title>{html.escape(title)}</title>'
                  f"<style>{STYLE}</style>\n")
        for number, (seconds, markup) in enumerate(rows, 1):
            y = MARGIN + number * HEIGHT - 4
            svg.write(f'<text x="{MARGIN}" y="{y}" style="animation-delay:{seconds:.1f}s">{markup}</text>\n')
        svg.write("</svg>\n")


main()
