#!/usr/bin/env python3
"""Makes one page of one or more runs of the benchmarks, which needs neither network nor server.

usage: page.py PAGE UPLOT-FOLDER FILE...    the figures of the last file, and a history over all of them
"""
import html
import json
import re
import sys
from pathlib import Path
from typing import Any, Dict, Iterable, List, Optional

import figures

HERE = Path(__file__).resolve().parent / "page"
# The colours, light and dark, and the looks of a plot are those of the pages of "qorctl watch".
COLOURS = HERE.parents[1] / "tools/qorctl/watch/plot/page.css"
NO_VALUE = "\u2013"


def shown(value: Optional[float], digits: int = 5) -> str:
    return NO_VALUE if value is None else f"{float(f'{value:.{digits}g}'):.10g}"


def table(caption: str, head: List[str], rows: Iterable[List[str]], texts: int = 1) -> str:
    """The first `texts` columns are texts, the others numbers."""
    def cells(kind: str, row: List[str]) -> str:
        return "".join(f'<{kind}{"" if i < texts else " class=number"}>{html.escape(cell)}</{kind}>'
                       for i, cell in enumerate(row))
    body = "\n".join(f"<tr>{cells('td', row)}</tr>" for row in rows)
    return (f"<table><caption>{html.escape(caption)}</caption><thead><tr>{cells('th', head)}</tr></thead>\n"
            f"<tbody>{body}</tbody></table>")


def plot(kind: str, index: int, label: str) -> str:
    return (f'<div class="plot" role="img" data-kind="{kind}" data-figure="{index}" '
            f'aria-label="{html.escape(label)}"></div>')


def card(name: str, plots: str, beside: str) -> str:
    return (f'<section class="card"><h3>{html.escape(name)}</h3><div class="sides">{plots}'
            f'<div class="beside" tabindex="0" role="region" aria-label="Numbers of {html.escape(name)}">{beside}</div>'
            "</div></section>")


def figure_card(run: figures.Run, index: int, figure: figures.Figure) -> str:
    quantiles = figure.quantiles or [(0, figure.least), (0.5, figure.p50), (0.95, figure.p95), (0.99, figure.p99)]
    facts = [["samples", str(figure.samples)], ["p50", shown(figure.p50)]]
    if figure.bound:
        facts += [["bound of p50", shown(figure.bound)], ["p50 / bound", shown(figure.p50 / figure.bound, 3)]]
    if run.over_floor(figure):
        facts.append(["p50 / floor", shown(run.over_floor(figure), 3)])
    tables = table("in short", ["", "\u00b5s"], facts)
    tables += table("quantiles", ["below", "\u00b5s"], [[f"{100 * share:g} %", shown(us)] for share, us in quantiles])
    if figure.parts:
        tables += table("medians", ["round", "\u00b5s"], [[str(i + 1), shown(us)] for i, us in enumerate(figure.parts)])
    plots = ""
    if figure.quantiles:
        plots += plot("quantiles", index, f"Quantiles of {figure.name}; the table beside has them")
    if figure.parts:
        plots += plot("parts", index, f"Medians of the rounds of {figure.name}; the table beside has them")
    return card(figure.name, plots, tables)


def floors(run: figures.Run) -> str:
    rows = [[figure.name, shown(figure.p50), figure.floor, shown(run.figures[figure.floor].p50),
             shown(run.over_floor(figure), 3)]
            for figure in run.figures.values() if figure.floor in run.figures]
    if not rows:
        return ""
    rows = [[name, floor, p50, floor_p50, ratio] for name, p50, floor, floor_p50, ratio in rows]
    return "<h2>Round trips, beside the raw one of their run</h2>" + table(
        "p50 in microseconds; under Wine and natively these differ, so compare the ratios",
        ["round trip", "its floor", "p50", "p50 of its floor", "ratio"], rows, texts=2)


def numbers(run: figures.Run) -> str:
    if not run.numbers:
        return ""
    rows = [[each.name, each.unit, shown(each.value), shown(each.bound or None)] for each in run.numbers]
    return "<h2>Rates and amounts</h2>" + table("one number each", ["what", "unit", "value", "bound"], rows, texts=2)


def name_of(run: figures.Run) -> str:
    return run.commit or run.path.name


def history_rows(runs: List[figures.Run]) -> List[Dict[str, Any]]:
    """A row for each figure of the last run that an earlier one has as well."""
    rows = []
    for name, last in runs[-1].figures.items():
        own = [run.figures.get(name) for run in runs]
        if sum(each is not None for each in own) < 2:
            continue
        ratios = [run.ratio(each) if each else None for run, each in zip(runs, own)]
        rows.append({"name": name, "p50": [each.p50 if each else None for each in own], "ratio": ratios,
                     "over": "bound" if last.bound else "floor"})
    return rows


def history_card(runs: List[figures.Run], index: int, row: Dict[str, Any]) -> str:
    has_ratio = any(each is not None for each in row["ratio"])
    plots = plot("p50", index, f"p50 of {row['name']} over the runs; the table beside has it")
    if has_ratio:
        plots += plot("ratio", index, f"p50 of {row['name']} over its {row['over']}; the table beside has it")
    head = ["run", "p50, \u00b5s"] + [f"/ {row['over']}"] * has_ratio
    cells = [[str(i + 1), shown(p50)] + [shown(ratio, 3)] * has_ratio
             for i, (p50, ratio) in enumerate(zip(row["p50"], row["ratio"]))]
    return card(row["name"], plots, table("by run", head, cells))


def history(runs: List[figures.Run], rows: List[Dict[str, Any]]) -> str:
    if len(runs) < 2:
        return ""
    listed = [[str(i + 1), run.when or NO_VALUE, name_of(run), str(run.host.get("processor", NO_VALUE))]
              for i, run in enumerate(runs)]
    cards = "\n".join(history_card(runs, index, row) for index, row in enumerate(rows))
    return ("<h2>History</h2>" + table("the runs, in the order in which they were given",
                                       ["run", "when", "of", "processor"], listed, texts=4)
            + f'<div class="cards" id="history">{cards}</div>')


def about(run: figures.Run) -> str:
    pairs = [("Run", run.when), ("Commit", run.commit), *((key.capitalize(), str(value))
                                                          for key, value in run.host.items())]
    return "".join(f"<div><dt>{html.escape(key)}</dt><dd>{html.escape(value)}</dd></div>"
                   for key, value in pairs if value)


def script_json(content: Any) -> str:
    return json.dumps(content).replace("<", "\\u003c")


def page(runs: List[figures.Run], uplot: Path) -> str:
    run = runs[-1]
    rows = history_rows(runs)
    last = list(run.figures.values())
    cards = "\n".join(figure_card(run, index, figure) for index, figure in enumerate(last))
    data = {"history": rows, "figures": [
        {"quantiles": figure.quantiles, "parts": figure.parts, "bound": figure.bound} for figure in last]}
    parts = {
        "title": html.escape(f"Speed, {name_of(run)}"), "about": about(run), "floors": floors(run),
        "history": history(runs, rows), "figures": f'<div class="cards" id="figures">{cards}</div>',
        "numbers": numbers(run), "data": script_json(data),
        "plot licence": (uplot / "LICENSE").read_text(encoding="utf-8"),
        "plot.css": (uplot / "dist/uPlot.min.css").read_text(encoding="utf-8"),
        "plot.js": (uplot / "dist/uPlot.iife.min.js").read_text(encoding="utf-8"),
        "colours.css": COLOURS.read_text(encoding="utf-8"),
        "page.css": (HERE / "page.css").read_text(encoding="utf-8"),
        "page.js": (HERE / "page.js").read_text(encoding="utf-8"),
    }
    template = (HERE / "page.html").read_text(encoding="utf-8")
    return re.sub(r"\{\{(.*?)\}\}", lambda match: parts[match.group(1)], template)


def main() -> int:
    out, uplot, *names = (Path(each) for each in sys.argv[1:])
    try:
        out.write_text(page([figures.read(name) for name in names], uplot), encoding="utf-8")
    except figures.Unusable as error:
        print(f"run: {error}", file=sys.stderr)
        return 2
    except OSError as error:
        print(f"run: {error.filename}: {error.strerror}", file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main())
