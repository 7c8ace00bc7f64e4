"""Makes operations fail at every place, and says what is in force afterwards.

  matrix.py DIRECTORY ZAMOFW RESULT [OPTION]... [OPERATION]...

DIRECTORY holds the tools. RESULT becomes a list of {"operation", "cause", "place", what is in force,
"says", "heals"}, one for each place; table.py makes a table of it.
"""
import argparse
import json
import subprocess
import sys
import time

from host import State, run
from operations import OPERATIONS, prepare, prepare_host
from points import CAUSES, KILLS, Point, Tools, attempt, count

HEALERS = ("nothing", "zamofw doctor --repair", "zamofw reload", "again", "zamofw undo",
           "zamofw enable", "zamofw disable")


NOTHING_HEALS = "nothing does"


def rules_word(state, before, after, trial):
    words = []
    for family in (4, 6):
        rules = state.rules(family)
        old, new = before.rules(family), after.rules(family)
        words.append("unchanged" if rules == old == new else "old" if rules == old
                     else "new" if rules == new
                     else "the trial's" if trial and rules == trial.rules(family) else "none" if not rules else "a part")
    if "unchanged" in words:
        words = [word for word in words if word != "unchanged"] or ["unchanged"]
    if len(set(words)) == 1:
        return words[0]
    return f"IPv4 {words[0]}, IPv6 {words[1]}"


def stored_word(value, old, new):
    if value == old == new:
        return "unchanged"
    if value is None or value == "unreadable":
        return "missing" if value is None else "unreadable"
    return "old" if value == old else "new" if value == new else "mixed"


def settings_word(state, before, after):
    settings = state.settings()
    word = stored_word(settings, before.settings(), after.settings())
    if word == "mixed" and settings == {**before.settings(), "status": False}:
        return "switched off"
    return word


def note_word(state):
    return "loaded" if b'firewall="yes"' in state.note() else "not loaded"


def profiles_word(state, before, after):
    profiles = state.stored()
    if any(not isinstance(document, dict) for document in profiles.values()):
        return "unreadable"
    return stored_word(profiles, before.stored(), after.stored())


def look(state, before, after, trial):
    """What is in force, in the words of the table."""
    left = []
    if state.has_guard() and not before.has_guard():
        left.append("guard rules")
    if state.place() != before.place():
        left.append("a chain missing")
    if state.temporaries():
        left.append("a temporary file")
    if state.has_trial_copy() and not after.has_trial_copy():
        left.append("a trial copy")
    if state.has_trial_record() and not after.has_trial_record():
        left.append("a trial record")
    if not isinstance(state.undo()[-1] if state.undo() else {}, dict):
        left.append("a snapshot that cannot be read")
    return {"rules": rules_word(state, before, after, trial),
            "door": "closed" if state.is_closed() else "open",
            "settings": settings_word(state, before, after),
            "profiles": profiles_word(state, before, after),
            "note": note_word(state),
            "left": ", ".join(left) or "nothing"}


class Matrix:
    def __init__(self, tools, operation, variant):
        self.tools = tools
        self.name = operation.name + variant
        self.operation = operation
        prepare(operation, tools.zamofw)
        self.before = State()
        self.trial = self.state_of_trial()
        self.ran = attempt(tools, operation, Point("count", "-", 0))
        self.after = State()
        self.before.bring_back()
        self.healed = {}
        self.results = []

    def state_of_trial(self):
        """While the trial is under way, which the operation itself ends at once."""
        if self.operation.begin is None:
            return None
        run(self.tools.zamofw, *self.operation.begin, check=True)
        state = State()
        run(self.tools.zamofw, "revert", check=True)
        self.before.bring_back()
        return state

    def is_well(self):
        """Whole, and as it was before or as it should be afterwards."""
        state = State()
        configuration = (state.settings(), state.stored())
        whole = configuration in ((self.before.settings(), self.before.stored()),
                                  (self.after.settings(), self.after.stored()))
        if self.operation.touches_kernel:
            kernel = run(self.tools.zamofw, "verify").returncode == 0
        else:
            kernel = state.tables == self.before.tables
        return (whole and kernel and not state.has_trial_record()
                and run(self.tools.zamofw, "doctor").returncode == 0)

    def heal(self, state):
        digest = state.digest()
        if digest not in self.healed:
            self.healed[digest] = self.healer(state)
        return self.healed[digest]

    def healer(self, state):
        for healer in HEALERS:
            state.bring_back()
            if healer == "again":
                if self.operation.words is None:
                    continue
                run(self.tools.zamofw, *self.operation.words)
            elif healer != "nothing":
                run(self.tools.zamofw, *healer.split()[1:])
            if self.is_well():
                if healer == "again":
                    return "the same again"
                return healer
        return NOTHING_HEALS

    def attempt(self, point, times=3):
        """Once more when another call failed: how often the timer of a trial looks whether its time
        is over depends on how busy the machine is."""
        ended = attempt(self.tools, self.operation, point)
        if ended.missed(point) and times > 1:
            self.before.bring_back()
            return self.attempt(point, times - 1)
        return ended

    def try_point(self, point):
        ended = self.attempt(point)
        state = State()
        row = look(state, self.before, self.after, self.trial)
        row["says"] = "killed" if ended.status == -1 else "done" if ended.status == 0 else "failed"
        row["hung"] = ended.hung
        row["missed"] = ended.missed(point)
        row["heals"] = self.heal(state)
        if State().digest() != self.before.digest():
            self.before.bring_back()
        self.results.append({"operation": self.name, "cause": point.cause,
                             "place": str(point), **row})
        if row["heals"] == NOTHING_HEALS or ended.hung:
            print(f"{self.name}: {point}: {ended.said}", file=sys.stderr, flush=True)

    def run(self, sample, causes):
        points = count(self.tools, self.operation, self.before.bring_back)
        for cause in causes:
            these = [point for point in points if point.cause == cause]
            for point in spread(these, sample * (2 if cause in KILLS else 1)) if sample else these:
                self.try_point(point)


def spread(points, wanted):
    """About so many of them, from the begin to the end."""
    size = min(len(points), wanted)
    return [points[(2 * i + 1) * len(points) // (2 * size)] for i in range(size)]


def run_all(arguments):
    tools = Tools(arguments.directory, arguments.zamofw)
    prepare_host(tools.zamofw)
    start = State()
    # What an allocation does not get, it does not get with either variant. Which of them there are
    # depends on the compiler and the libraries.
    with_memory = not (arguments.legacy or arguments.quick)
    causes = arguments.cause or [c for c in CAUSES if c != "memory" or with_memory]
    part, parts = (int(word) for word in arguments.part.split("/"))
    results = []
    for index, operation in enumerate(OPERATIONS):
        if arguments.operation and operation.name not in arguments.operation:
            continue
        if index % parts != part or (arguments.legacy and not operation.touches_kernel):
            continue
        if arguments.quick and not operation.is_quick:
            continue
        begin = time.monotonic()
        start.bring_back()
        matrix = Matrix(tools, operation, " (legacy)" if arguments.legacy else "")
        matrix.run(arguments.sample, causes)
        results += matrix.results
        print(f"{matrix.name}: {len(matrix.results)} points, {len(matrix.healed)} states, "
              f"{time.monotonic() - begin:.0f} s", file=sys.stderr, flush=True)
        with open(arguments.result, "w", encoding="utf-8") as file:
            json.dump(results, file)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("directory")
    parser.add_argument("zamofw")
    parser.add_argument("result")
    parser.add_argument("--sample", type=int, default=0)
    parser.add_argument("--legacy", action="store_true")
    parser.add_argument("--quick", action="store_true", help="only the operations that differ most")
    parser.add_argument("--cause", action="append", choices=CAUSES)
    parser.add_argument("--part", default="0/1")
    parser.add_argument("operation", nargs="*")
    run_all(parser.parse_intermixed_args())


if __name__ == "__main__":
    main()
