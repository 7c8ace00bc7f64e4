"""Makes the tables of docs/performance.md, and what it says of the machine.

  tables.py RESULTS PARTS QUIET

From the directory RESULTS, with a file VARIANT.SUBJECT of rows, a file VARIANT.SUBJECT.others for the
work of other programs, `machine`, and `claims` with a line for each subject and what is promised, into
the directory PARTS, a file for each part of the page.
More work of others than QUIET, in percent of one processor, has disturbed a measurement.
"""
import pathlib
import re
import sys
from typing import NamedTuple

VARIANTS = ("nft", "legacy")
HEAD = ("measured", "compared with", *(f"{variant}: {side}" for variant in VARIANTS
                               for side in ("ours", "other", "ratio")), "limit", "verdict")


class Row(NamedTuple):
    claim: str
    ours: str
    other_name: str
    other: str
    unit: str
    ratio: str
    limit: str
    verdict: str


def read_rows(path):
    return [Row(*line.split("\t")) for line in path.read_text(encoding="utf-8").splitlines()]


def number(text):
    """Three digits are enough, and never fewer than the point has before it."""
    value = float(text)
    digits = f"{value:,.0f}" if abs(value) >= 100 else f"{value:.3g}"
    return digits if "e" not in digits else f"{value:.7f}".rstrip("0")


def ratio(row):
    """One that is over its limit must not be rounded to it."""
    value = float(row.ratio)
    if row.verdict == "OVER":
        return f"{value:.4g}"
    return f"{value:.2f}" if 0.1 <= value < 100 else number(f"{value:.2g}" if value < 1 else value)


def claim_text(text):
    return re.sub(r"\b(\d)(\d{3})\b", r"\1,\2", text)


def cells_of(rows):
    """`rows` are those of the variants for the same claim."""
    first = rows[0]
    cells = [claim_text(first.claim), claim_text(first.other_name)]
    for row in rows:
        cells += [f"{number(value)} {row.unit}".rstrip() for value in (row.ours, row.other)]
        cells.append(f"**{ratio(row)}**" if row.verdict == "OVER" else ratio(row))
    over = [variant for variant, row in zip(VARIANTS, rows) if row.verdict == "OVER"]
    verdict = f"**OVER: {', '.join(over)}**" if over else first.verdict.replace("-", "")
    return [*cells, f"{float(first.limit):g}" if first.verdict != "-" else "", verdict]


def table_line(cells):
    return "| " + " | ".join(cells) + " |\n"


def table(of_variants):
    claims = [[row.claim for row in rows] for rows in of_variants]
    if claims[0] != claims[1] or not claims[0]:
        raise ValueError(f"the variants have measured different things: {claims}")
    return (table_line(HEAD) + "|---" * len(HEAD) + "|\n"
            + "".join(table_line(cells_of(rows)) for rows in zip(*of_variants)))


def machine_text(machine, quiet, others, over, count):
    most = max(share for shares in others.values() for share in shares)
    text = (f"Measured on {machine.strip()}.\n"
            f"Other programs used at most {most} % of one processor while a subject was measured.\n")
    busy = [f"- `{subject}`: {' % and '.join(map(str, shares))} %\n"
            for subject, shares in others.items() if max(shares) > quiet]
    if busy:
        text += ("\n**The machine was busy.** Do not trust the numbers of these; what other programs "
                 f"used meanwhile, with {' and '.join(VARIANTS)}:\n\n{''.join(busy)}")
    if over:
        text += f"\n**Over their limits**, {len(over)} of {count}:\n\n"
        text += "".join(f"- {words}\n" for words in over)
    else:
        text += f"\nAll {count} ratios with a limit keep it.\n"
    return text


def parts_of(claims, results):
    """`results`: for each variant and subject its rows and the work of others."""
    tables, over, others, count = {}, [], {}, 0
    for subject, claim in claims.items():
        of_variants = [results[variant, subject][0] for variant in VARIANTS]
        tables[subject] = f"**Promise:** {claim}.\n\n{table(of_variants)}"
        others[subject] = [results[variant, subject][1] for variant in VARIANTS]
        for variant, rows in zip(VARIANTS, of_variants):
            limited = [row for row in rows if row.verdict != "-"]
            count += len(limited)
            over += [f"{claim_text(row.claim)}, {variant}: {ratio(row)} times "
                     f"{claim_text(row.other_name)}, the limit is {float(row.limit):g}"
                     for row in limited if row.verdict == "OVER"]
    return tables, others, over, count


def main():
    source, target = map(pathlib.Path, sys.argv[1:3])
    results = {}
    for path in sorted(source.glob("*.others")):
        variant, subject = path.stem.split(".")
        results[variant, subject] = (read_rows(path.with_suffix("")), int(path.read_text()))
    claims = dict(line.split(maxsplit=1) for line in (source / "claims").read_text().splitlines())
    tables, *summary = parts_of(claims, results)
    tables["machine"] = machine_text((source / "machine").read_text(), int(sys.argv[3]), *summary)
    target.mkdir(exist_ok=True)
    for name, text in tables.items():
        (target / name).write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
