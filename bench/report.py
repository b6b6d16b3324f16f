"""Makes index.html from the measurements in a folder: means, rows behind, charts and tables of peer time / our time.

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
GROWTH_SIZE = "3840x2160"  # only in the charts of how time grows, and in the tables
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
    return {row: max(sizes.keys() - {GROWTH_SIZE} or sizes, key=pixels) for row, sizes in rows.items()}


def at_largest_sizes(rows):
    """{(row, peer): ratio} at the largest size of each row."""
    largest = largest_sizes(rows)
    return {(row, who): peer / ours for row, size, who, ours, peer in comparisons(rows) if size == largest[row]}


def geometric_mean(ratios):
    return math.exp(sum(map(math.log, ratios)) / len(ratios)) if ratios else math.nan


def across(builds):
    """The 32-bit build beside the 64-bit peers: {(row, peer): ratio} at the largest size of each row."""
    ours, theirs = builds.get("linux32", {}), builds.get("linux64", {})
    return {(row, who): peer / ours[row][size][OURS]
            for row, size, who, _, peer in comparisons(theirs)
            if size == largest_sizes(theirs)[row] and OURS in ours.get(row, {}).get(size, {})}


def means(builds):
    """[(what is compared, geometric mean, rows, {row behind: ratio})]"""
    compared = [(BUILDS[name], at_largest_sizes(rows)) for name, rows in builds.items()]
    if len(builds) == 2:
        compared.append(("32-bit build beside 64-bit peers", across(builds)))
    return [(what, geometric_mean(ratios.values()), len(ratios),
             {key: ratio for key, ratio in sorted(ratios.items(), key=lambda item: item[1]) if ratio < 1})
            for what, ratios in compared if ratios]


def summary(builds):
    lines = ['<table><tr><th>Compared<th class="number">Geometric mean<th class="number">Rows'
             '<th class="number">Behind']
    details = []
    for what, mean, rows, behind in means(builds):
        lines.append(f'<tr><td>{what}<td class="number">{mean:.2f}<td class="number">{rows}'
                     f'<td class="number">{len(behind)}')
        items = "".join(f'<tr><td>{html.escape(row)} <span class="quiet">/ {html.escape(who)}</span>'
                        f'<td class="number">{ratio:.2f}' for (row, who), ratio in behind.items())
        if items:
            details.append(f"<details open><summary>Behind: {what} ({len(behind)})</summary><table>{items}</table></details>")
    return "\n".join(lines + ["</table>"] + details)


def growth(rows):
    """Small charts of nanoseconds a pixel from the smallest to the largest size, ours and the first peer's."""
    width, height, left, bottom = 250, 130, 34, 112
    charts = []
    for row, sizes in rows.items():
        if GROWTH_SIZE not in sizes:
            continue
        names = [size for size in ("64x64", "512x512", "1920x1080", GROWTH_SIZE) if size in sizes]
        peer = next((who for who in sizes[GROWTH_SIZE] if who != OURS), None)
        curves = [(who, [sizes[size][who] / pixels(size) for size in names if who in sizes[size]])
                  for who in (peer, OURS) if who]
        top = max(max(values) for _, values in curves) * 1.1
        end = math.log(pixels(GROWTH_SIZE) / pixels(names[0]))
        places = [left + (width - left - 18) * math.log(pixels(size) / pixels(names[0])) / end for size in names]
        parts = [f'<text x="{left - 4}" y="14" text-anchor="end">{top:.2g}</text>'
                 f'<text x="{left - 4}" y="{bottom}" text-anchor="end">0</text>'
                 f'<path d="M{left} 6V{bottom}H{width - 6}" fill="none" stroke="var(--line)"/>']
        for x, size in zip(places, names):
            parts.append(f'<text x="{x:.0f}" y="{bottom + 14}" text-anchor="middle">{size.split("x")[0]}</text>')
        for who, values in curves:
            points = [(x, bottom - (bottom - 8) * value / top) for x, value in zip(places, values)]
            colour, dash = ("var(--good)", "") if who == OURS else ("var(--quiet)", ' stroke-dasharray="4 3"')
            parts.append(f'<polyline points="{" ".join(f"{x:.1f},{y:.1f}" for x, y in points)}" fill="none" '
                         f'stroke="{colour}" stroke-width="2"{dash}/>')
            if who == OURS:
                parts += [f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3" fill="{colour}"><title>{size}: {value:.3f} ns a '
                          f"pixel</title></circle>" for (x, y), size, value in zip(points, names, values)]
        beside = f' <span class="quiet">beside {html.escape(peer)}</span>' if peer else ""
        charts.append(f'<figure><figcaption>{html.escape(row)}{beside}</figcaption>'
                      f'<svg viewBox="0 0 {width} {height}" role="img" aria-label="{html.escape(row)}">'
                      f'{"".join(parts)}</svg></figure>')
    return f'<div class="growth">{"".join(charts)}</div>' if charts else ""


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
<p>Peer time divided by our time, for the same work in one run on one thread: above 1, Norvala is ahead. Each time is
the least processor time of several repetitions.</p>
<p class="quiet">{html.escape(context)}</p>
{summary(builds)}"""]
    for name, rows in builds.items():
        charts = growth(rows)
        if charts:
            parts.append(f"<h2>How time grows: {BUILDS[name]}</h2>\n<p>Nanoseconds a pixel over the width of the image, "
                         f"from 64x64 to 3840x2160; dashed, the peer.</p>\n{charts}")
    for name, rows in builds.items():
        parts.append(f"<h2>Every row: {BUILDS[name]}</h2>\n<p>At the largest usual size. Right of the line, Norvala is "
                     f"ahead; the scale is logarithmic, from a quarter to eight.</p>\n{chart(rows)}\n"
                     f"<h3>All sizes</h3>\n{table(rows)}")
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
    lines = "".join(f"| {what} | {mean:.2f} | {rows} | {len(behind)} |\n" for what, mean, rows, behind in means(builds))
    return (f"| compared, at the largest size | geometric mean | rows | behind |\n|---|---:|---:|---:|\n{lines}\n"
            + markdown_table(["work", "size", "peer"], ratios)
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
    context = (f"{machine['date'][:10]}, {machine.get('processor', 'unknown processor')} "
               f"({machine['num_cpus']} processors), {machine.get('compiler', 'unknown compiler')}; "
               f"peers: {machine.get('peers', 'none')}")
    if "--docs" in sys.argv[2:]:
        write_docs(builds, context, sys.argv[3])
        return
    with open(os.path.join(folder, "index.html"), "w", encoding="utf-8") as file:
        file.write(page(builds, context))


if __name__ == "__main__":
    main()
