"""Where an operation can fail, and how it is made to fail there."""
import os
import pathlib
import re
import subprocess

from host import ENVIRONMENT, forget_locks

LOG = "/tmp/failures.log"
COUNT_FILE = "/tmp/failures.count"

# What is said in the table, and how `supervise` and the preloaded library call it.
KILLS = {"kill": "killed", "kill-all": "killed with its programs"}
PROGRAMS = {"no-program": "program missing", "end-program": "program killed at its begin",
            "lose-result": "program killed at its end"}
FAIL = "disk full"
PLATFORM = "platform"
MEMORY = "no memory"
CAUSES = {**KILLS, **PROGRAMS, "fail": FAIL, "platform": PLATFORM, "memory": MEMORY}


class Tools:
    def __init__(self, directory, zamofw):
        self.supervise = directory + "/failures_supervise"
        self.library = directory + "/libfailures_faults.so"
        self.trial = directory + "/failures_trial"
        self.zamofw = zamofw


class Point:
    def __init__(self, cause, role, number, place=""):
        self.cause = cause
        self.role = role
        self.number = number
        self.place = place

    def __str__(self):
        return f"{self.cause} {self.role} {self.number} {self.place}"


class Ended:
    """How an operation ended: its exit status, or that it hung."""

    def __init__(self, status, log, said):
        self.hung = status == 3
        words = log.rsplit("status ", 1)
        self.status = int(words[1]) if len(words) == 2 else None
        self.log = log
        self.said = said

    def missed(self, point):
        """What failed in the place of the call that was meant; empty when it was that one."""
        if point.cause in ("platform", "memory"):
            return ""
        there = [line[6:] for line in self.log.splitlines() if line.startswith("there ")]
        if [_settled(place) for place in there] == [_settled(point.place)]:
            return ""
        return ", ".join(there) or "nothing"


def _words(tools, operation):
    if operation.words is None:
        return [tools.trial, "office"]
    return [tools.zamofw, *operation.words]


def _settled(place):
    """Without what is random in names: numbers of new profiles and of processes, and the end of a
    temporary name."""
    return re.sub(r"(?<=_mod_list\.)\w+|(?<!IPv)\d+", "N", place)


def attempt(tools, operation, point):
    forget_locks()
    for path in (LOG, COUNT_FILE):
        pathlib.Path(path).unlink(missing_ok=True)
    environment = dict(ENVIRONMENT)
    action, role = point.cause, point.role
    if point.cause in ("platform", "memory"):
        environment.update(FAULT_LIBRARY=tools.library, FAULT_KIND=point.cause,
                           FAULT_NUMBER=str(point.number), FAULT_LOG=COUNT_FILE)
        action, role = "none", "none"
    # What outlives the process must not hold a pipe of ours open.
    with open("/tmp/failures.said", "w+b") as said:
        result = subprocess.run(
            [tools.supervise, LOG, action, role, str(point.number), *_words(tools, operation)],
            env=environment, stdin=subprocess.DEVNULL, stdout=said, stderr=said, check=False)
        said.seek(0)
        text = said.read().decode(errors="replace")
    if result.returncode not in (0, 3):
        raise RuntimeError(f"supervise: {result.returncode}: {text}")
    log = pathlib.Path(LOG).read_text() if os.path.exists(LOG) else ""
    return Ended(result.returncode, log, text)


def count(tools, operation, bring_back):
    """All points of an operation, the causes in the order of CAUSES."""
    calls = []
    for line in attempt(tools, operation, Point("count", "-", 0)).log.splitlines()[:-1]:
        role, number, call, target = line.split(" ", 3)
        calls.append((role, int(number), call, target))
    bring_back()
    attempt(tools, operation, Point("memory", "-", 0))
    lines = [line.split() for line in pathlib.Path(COUNT_FILE).read_text().splitlines()]
    bring_back()
    platform = [line for line in lines if line[0] != "memory"]
    memory = [line for line in lines if line[0] == "memory"]
    points = []
    for cause in (*KILLS, *PROGRAMS, "fail"):
        for role, number, call, target in calls:
            if (cause in KILLS or
                    (cause in PROGRAMS) == (call == "start")):
                points.append(Point(cause, role, number, f"{call} {target}"))
    for cause, events in (("platform", platform), ("memory", memory)):
        points += [Point(cause, "-", number + 1, events[number][0])
                   for number in first_and_last(events)]
    return points


def first_and_last(events):
    """The first and the last of those that come from the same callers."""
    first, last = {}, {}
    for number, event in enumerate(events):
        first.setdefault(tuple(event), number)
        last[tuple(event)] = number
    return sorted({*first.values(), *last.values()})
