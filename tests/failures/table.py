"""The table of docs/failures.md: what `matrix.py` has found, with equal rows put together.

  table.py write DOCUMENT RESULT...   replaces the part of the document that is generated
  table.py check DOCUMENT RESULT...   fails unless each thing found stands in the document
"""
import json
import sys

from operations import OPERATIONS
from points import CAUSES

BEGIN = "<!-- The rest is written by scripts/failures --update. -->\n"
COLUMNS = ("rules", "policies", "settings", "profiles", "modules", "left behind", "healed by")
HEAD = ("what fails", *COLUMNS)


def cells_of(result):
    policies = "ACCEPT" if result["door"] == "open" else "DROP"
    return (result["rules"], policies, result["settings"], result["profiles"], result["note"],
            result["left"], "hangs" if result["hung"] else code(result["heals"]))


def without_variant(operation):
    return operation.partition(" (")[0]


def code(heals):
    return f"`{heals}`" if heals.startswith("zamofw") else heals


def read(paths):
    results = []
    for path in paths:
        with open(path, encoding="utf-8") as file:
            results += json.load(file)
    return results


def rows_of(results):
    """For each operation its rows, and for each of these the causes."""
    tables = {}
    for result in results:
        causes = tables.setdefault(result["operation"], {}).setdefault(cells_of(result), set())
        causes.add(result["cause"])
    return tables


def row_text(cells):
    return "| " + " | ".join(cells) + " |\n"


def table_text(rows):
    text = row_text(HEAD) + "|---" * len(HEAD) + "|\n"
    order = {cause: number for number, cause in enumerate(CAUSES)}

    def rank(row):
        return [order[cause] for cause in sorted(row[1], key=order.get)], row[0]

    for cells, causes in sorted(rows.items(), key=rank):
        named = [CAUSES[cause] for cause in sorted(causes, key=order.get)]
        text += row_text(("; ".join(named), *cells))
    return text


def without_memory(rows):
    return {cells: causes - {"memory"} for cells, causes in rows.items() if causes != {"memory"}}


def document_text(results):
    """One table for all operations that have the same. The legacy variant has one of its own only
    where it differs."""
    tables = rows_of(results)
    names = [operation.name for operation in OPERATIONS]
    together = {}
    for operation in sorted(tables, key=lambda full: (names.index(without_variant(full)), full)):
        rows = tables[operation]
        name = without_variant(operation)
        if operation == name or without_memory(tables.get(name, {})) != rows:
            together.setdefault(table_text(rows), []).append(operation)
    return "".join(f"\n### {', '.join(operations)}\n\n{table}"
                   for table, operations in together.items())


def rows_in(document):
    """The set of (operation, cause, cells) that a document says."""
    causes = {words: cause for cause, words in CAUSES.items()}
    said = set()
    operations = []
    for line in document.partition(BEGIN)[2].splitlines():
        if line.startswith("### "):
            operations = line[4:].split(", ")
        elif line.startswith("| ") and not line.startswith("| " + HEAD[0]):
            cells = line.strip("| ").split(" | ")
            for words in cells[0].split("; "):
                said.update((operation, causes[words], tuple(cells[1:]))
                            for operation in operations)
    return said


def unsaid(results, said):
    """The legacy variant has the table of the other one where it lacks its own."""
    with_table = {operation for operation, _, _ in said}
    for result in results:
        operation = result["operation"]
        if operation not in with_table:
            operation = without_variant(operation)
        if (operation, result["cause"], cells_of(result)) not in said:
            yield result


LINE_BY_LINE = ("enable", "reload --sequential", "the library's trial")
TAKING_BACK = ("profile use", "import", "undo")


def is_unnoticed(result):
    """What the library does not notice, see the document: interfaces that the system does not
    tell, and flushes that fail before a reload line by line."""
    no_interfaces = result["place"].endswith("VLIBNetGetInterfaceInfo") or (
        result["cause"] == "memory")
    operation = without_variant(result["operation"])
    return "a part" in result["rules"] and (no_interfaces or operation in LINE_BY_LINE)


def lies(results):
    """Operations that said that they had done it and had not, or that took back only what is
    stored."""
    whole = {"new", "unchanged", "the trial's"}
    for result in results:
        stored = {result["settings"], result["profiles"]}
        is_done = {result["rules"], *stored} <= whole
        is_half = (without_variant(result["operation"]) in TAKING_BACK
                   and result["rules"] == "new" and "old" in stored)
        if not is_unnoticed(result) and ((result["says"] == "done" and not is_done)
                                         or (result["says"] == "failed" and is_half)):
            yield result


def main():
    mode, path, *found = sys.argv[1:]
    results = read(found)
    with open(path, encoding="utf-8") as file:
        document = file.read()
    faults = [f"{result['operation']} said {result['says']}: {result['place']}: "
              f"{cells_of(result)}" for result in lies(results)]
    faults += [f"{result['operation']}: {result['place']}: this time it was {result['missed']}"
               for result in results if result["missed"]]
    if mode == "write":
        with open(path, "w", encoding="utf-8") as file:
            file.write(document.partition(BEGIN)[0] + BEGIN + document_text(results))
    else:
        faults += [f"{path} does not say this: {result['operation']}: {result['place']}: "
                   f"{cells_of(result)}" for result in unsaid(results, rows_in(document))]
    if not results:
        faults.append("nothing was tried")
    print("\n".join(faults[:40]))
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
