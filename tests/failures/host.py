"""The private host on which operations are made to fail: its state, and how to bring one back."""
import json
import os
import pathlib
import subprocess

STORE = "/usr/zamo/etc/firewall.d"
SETTINGS = STORE + "/firewall_settings.json"
LOCKS = "/var/lock/firewall"
NOTE = "/tmp/iptables_serv_mod_list"
DIRECTORIES = (STORE, "/var/lib/zamofw", "/var/log/zamofw", "/run/zamofw")
CHAINS = ("INPUT_FIREWALL", "FORWARD_FIREWALL")
GUARD = "FIREWALL_RELOADING"
TRIAL_COPY = ".test_"
ENVIRONMENT = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "SSH_CONNECTION": "", "HOME": "/root"}


def run(*words, text=None, check=False):
    given = {"stdin": subprocess.DEVNULL} if text is None else {"input": text}
    result = subprocess.run(words, capture_output=True, text=True, env=ENVIRONMENT, check=False,
                            timeout=120, **given)
    if check and result.returncode != 0:
        raise RuntimeError(f"{' '.join(words)}: {result.stdout}{result.stderr}")
    return result


def _paths():
    for directory in DIRECTORIES:
        for path in sorted(pathlib.Path(directory).rglob("*")):
            if path.is_file():
                yield str(path)
    for path in pathlib.Path("/tmp").glob("iptables_serv_mod_list*"):
        yield str(path)


def _table(program):
    text = run(f"/sbin/{program}-save", "-t", "filter", check=True).stdout
    return "\n".join("".join((line.split(" [")[0]))
                     for line in text.splitlines() if not line.startswith("#")) + "\n"


def forget_locks():
    """Makes the n-th call the same one in each attempt. It takes one more call to make a lock file
    than to open one, and names of new profiles are random."""
    for path in pathlib.Path(LOCKS).glob("*"):
        path.unlink()


class State:
    """Everything that an operation may leave behind."""

    def __init__(self):
        self.files = {}
        for path in _paths():
            self.files[path] = (pathlib.Path(path).read_bytes(), os.stat(path).st_mode & 0o777)
        self.tables = {4: _table("iptables"), 6: _table("ip6tables")}

    def bring_back(self):
        for path in list(_paths()):
            if path not in self.files:
                os.unlink(path)
        for path, (content, mode) in self.files.items():
            os.makedirs(os.path.dirname(path), mode=0o700, exist_ok=True)
            with open(path, "wb") as file:
                file.write(content)
            os.chmod(path, mode)
        for family, program in ((4, "iptables"), (6, "ip6tables")):
            if _table(program) != self.tables[family]:
                run(f"/sbin/{program}-restore", text=self.tables[family], check=True)

    def rules(self, family):
        return [line for line in self.tables[family].splitlines()
                if line.startswith(tuple(f"-A {chain} " for chain in CHAINS))]

    def is_closed(self):
        return any(line.startswith((":INPUT DROP", ":FORWARD DROP"))
                   for table in self.tables.values() for line in table.splitlines())

    def has_guard(self):
        return any(f"-A {GUARD} " in table for table in self.tables.values())

    def place(self):
        """The chains, and what calls them."""
        return [line for table in self.tables.values() for line in table.splitlines()
                if line.startswith((":", "-A INPUT ", "-A FORWARD "))
                and not line.startswith((":INPUT ", ":FORWARD "))]

    def document(self, path):
        content = self.files.get(path)
        if content is None:
            return None
        try:
            return json.loads(content[0])
        except ValueError:
            return "unreadable"

    def settings(self):
        return self.document(SETTINGS)

    def profiles(self):
        """By name, since new files have names drawn by lot."""
        found = {}
        for path in self.files:
            if path.startswith(STORE) and path.endswith(".json") and path != SETTINGS:
                document = self.document(path)
                name = document.get("name") if isinstance(document, dict) else path
                found[name if name not in found else path] = document
        return found

    def stored(self):
        return {name: document for name, document in self.profiles().items()
                if not str(name).startswith(TRIAL_COPY)}

    def has_trial_copy(self):
        return any(str(name).startswith(TRIAL_COPY) for name in self.profiles())

    def has_trial_record(self):
        return "/var/lib/zamofw/trial.json" in self.files

    def note(self):
        return self.files.get(NOTE, (b"",))[0]

    def temporaries(self):
        return [path for path in self.files
                if path.endswith(".tmp") or path.startswith(NOTE + ".")]

    def undo(self):
        """What could be taken back, newest last."""
        numbers = sorted((int(pathlib.Path(path).stem), path) for path in self.files
                         if "/undo/" in path and path.endswith(".json"))
        return [self.document(path) for _, path in numbers]

    def digest(self):
        undo = [entry.get("configuration") if isinstance(entry, dict) else entry
                for entry in self.undo()]
        return json.dumps([self.tables, self.settings(), sorted(self.profiles().items()),
                           self.note().decode(), len(self.temporaries()), undo,
                           self.has_trial_record(),
                           "/var/lib/zamofw/trial.rules" in self.files], sort_keys=True)
