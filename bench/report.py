"""Makes index.html from the measurements in a folder: charts and tables of peer time / our time.

usage: report.py FOLDER        (reads FOLDER/linux64.json and FOLDER/linux32.json)
       report.py FOLDER --docs DOCS  writes the table into DOCS/performance.md and the charts into DOCS/pictures instead
"""

import html
import json
import math
import os
import sys

BUILDS = {"linux64": "64-bit build beside 64-bit peers", "linux32": "32-bit build beside 32-bit peers"}
OURS = "norvala"
USUAL_SIZES = {"64x64", "512x512", "1920x1080"}
ONE_PIXEL = "1x1"
STYLE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "docs", "style.css")


def read(file):
    """{row: {size: {who: least nanoseconds}}} in the order of the program; the runs were in a random one."""
    rows = {}
    with open(file, encoding="utf-8") as stream:
        for entry in sorted(json.load(stream)["benchmarks"], key=lambda entry: entry["family_index"]):
            if entry.get("run_type") == "aggregate":
                continue
            row, size, who = entry["name"].rsplit("/", 2)
            times = rows.setdefault(row, {}).setdefault(size, {})
            times[who] = min(times.get(who, math.inf), entry["cpu_time"] * entry_unit(entry))
    return rows


def entry_unit(entry):
    return {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}[entry["time_unit"]]


def pixels(size):
    width, height = size.split("x")
    return int(width) * int(height)


def comparisons(rows):
    """(row, size, peer, our ns, peer ns) for every pair measured."""
    for row, sizes in rows.items():
        for size, times in sizes.items():
            for who, peer in times.items():
                if who != OURS and OURS in times:
                    yield row, size, who, times[OURS], peer


def largest_sizes(rows):
    return {row: max(sizes, key=pixels) for row, sizes in rows.items()}


def span(ratio):
    """Left end and width in percent of a bar from 1 to the ratio, on a logarithmic scale from 1/4 to 8."""
    place = min(max(40.0 + 20.0 * math.log2(ratio), 0.0), 100.0)
    return (40.0, place - 40.0) if ratio >= 1 else (place, 40.0 - place)


def bar(ratio):
    left, width = span(ratio)
    kind = "bar" if ratio >= 1 else "bar behind"
    return f'<div class="track"><div class="{kind}" style="left:{left:.1f}%;width:{width:.1f}%"></div></div>'


def chart(rows):
    largest = largest_sizes(rows)
    lines = ['<div class="bars">']
    for row, size, who, ours, peer in comparisons(rows):
        if size == largest[row]:
            ratio = peer / ours
            lines.append(f'<div class="name">{html.escape(row)} <span class="quiet">/ {html.escape(who)}</span></div>')
            lines.append(bar(ratio))
            lines.append(f'<div class="value">{ratio:.2f}</div>')
    lines.append("</div>")
    return "\n".join(lines)


def table(rows):
    lines = ['<div class="scroll"><table><tr><th>Work<th>Size<th class="number">ours, ns a pixel'
             '<th>Peer<th class="number">peer, ns a pixel<th class="number">peer / ours']
    for row, sizes in rows.items():
        for size, times in sizes.items():
            peers = [who for who in times if who != OURS] or [None]
            for who in peers:
                ours = times.get(OURS, math.nan)
                cells = [html.escape(row), size, f"{ours / pixels(size):.3f}"]
                if who:
                    cells += [html.escape(who), f"{times[who] / pixels(size):.3f}", f"{times[who] / ours:.2f}"]
                else:
                    cells += ["", "", ""]
                numbers = (2, 4, 5)
                lines.append("<tr>" + "".join(f'<td class="number">{c}' if i in numbers else f"<td>{c}"
                                              for i, c in enumerate(cells)))
    lines.append("</table></div>")
    return "\n".join(lines)


def page(builds, context):
    with open(STYLE, encoding="utf-8") as file:
        style = file.read()
    parts = [f"""<!DOCTYPE html>
<html lang="en">
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Norvala benchmarks</title>
<style>
{style}</style>
<h1>Norvala benchmarks</h1>
<p>Peer time divided by our time, for the same work in one run on one thread: right of the line, above 1, Norvala is
ahead. The scale is logarithmic, from a quarter to eight. Each time is the least processor time of several repetitions.
The bars show the largest size measured; the tables show all.</p>
<p class="quiet">{html.escape(context)}</p>"""]
    for name, rows in builds.items():
        parts.append(f"<h2>{BUILDS[name]}</h2>\n{chart(rows)}\n<h3>All sizes</h3>\n{table(rows)}")
    return "\n".join(parts) + "\n"


def markdown_table(head, lines):
    """`lines` maps the cells at the left to {build: value}."""
    text = [f"| {' | '.join(head)} | 32-bit | 64-bit |", "|" + "---|" * len(head) + "---:|---:|"]
    for left, by_build in lines.items():
        values = [by_build.get(build, "") for build in ("linux32", "linux64")]
        text.append(f"| {' | '.join([*left, *values])} |")
    return "\n".join(text) + "\n"


def markdown(builds):
    """The ratios of all builds side by side, one line a row and peer, and the times of calls on one pixel."""
    ratios, calls = {}, {}
    for name, rows in builds.items():
        largest = largest_sizes(rows)
        for row, size, who, ours, peer in comparisons(rows):
            if size == largest[row] or not rows[row].keys() <= USUAL_SIZES:
                ratios.setdefault((row, size, who), {})[name] = f"{peer / ours:.2f}"
        for row, sizes in rows.items():
            if ONE_PIXEL in sizes:
                calls.setdefault((row,), {})[name] = f"{sizes[ONE_PIXEL][OURS]:.1f}"
    return (markdown_table(["work", "size", "peer"], ratios)
            + "\nOne call on one pixel, in nanoseconds; the first line is what the measuring itself takes.\n\n"
            + markdown_table(["call"], calls))


def picture(rows):
    """The chart as an SVG file, readable on light and dark ground."""
    largest = largest_sizes(rows)
    lines = []
    for row, size, who, ours, peer in comparisons(rows):
        if size == largest[row]:
            ratio, y = peer / ours, 16 * len(lines) + 14
            left, width = span(ratio)
            colour = "#2a9d74" if ratio >= 1 else "#d0702f"
            lines.append(f'<text x="392" y="{y}" text-anchor="end">{html.escape(row)} / {html.escape(who)}</text>'
                         f'<rect x="{400 + 4 * left:.0f}" y="{y - 10}" width="{max(4 * width, 1):.0f}" height="11" '
                         f'fill="{colour}"/><text x="845" y="{y}" text-anchor="end">{ratio:.2f}</text>')
    height = 16 * len(lines) + 8
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 850 {height}" width="850" height="{height}">'
            f'<style>text {{ font: 11px sans-serif; fill: #777; }}</style>'
            f'<path d="M560 0V{height}" stroke="#777"/>' + "\n".join(lines) + "</svg>\n")


def write_docs(builds, context, docs):
    for name, rows in builds.items():
        with open(os.path.join(docs, "pictures", f"performance-{name}.svg"), "w", encoding="utf-8") as file:
            file.write(picture(rows))
    guide = os.path.join(docs, "performance.md")
    with open(guide, encoding="utf-8") as file:
        text = file.read()
    head, _, rest = text.partition("<!-- table -->\n")
    _, _, tail = rest.partition("<!-- end of table -->\n")
    with open(guide, "w", encoding="utf-8") as file:
        file.write(f"{head}<!-- table -->\n\n{context}.\n\n{markdown(builds)}\n<!-- end of table -->\n{tail}")


def main():
    folder = sys.argv[1]
    files = {name: os.path.join(folder, name + ".json") for name in BUILDS}
    builds = {name: read(file) for name, file in files.items() if os.path.exists(file)}
    if not builds:
        sys.exit(f"report.py: no measurements in {folder}")
    with open(files[next(iter(builds))], encoding="utf-8") as stream:
        machine = json.load(stream)["context"]
    context = f"{machine['date'][:10]}, {machine['num_cpus']} processors at {machine['mhz_per_cpu']} MHz"
    if "--docs" in sys.argv[2:]:
        write_docs(builds, context, sys.argv[3])
        return
    with open(os.path.join(folder, "index.html"), "w", encoding="utf-8") as file:
        file.write(page(builds, context))


if __name__ == "__main__":
    main()
