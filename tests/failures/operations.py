"""The operations that are made to fail, each with what comes before it."""
import pathlib

from host import run

SERVICES = "/usr/zamo/etc.defaults/services.d"


class Operation:
    def __init__(self, name, words, prepare=(), touches_kernel=True, disabled=False, begin=None):
        self.name = name
        self.words = words
        self.prepare = prepare
        self.touches_kernel = touches_kernel
        self.disabled = disabled
        self.begin = begin
        self.is_quick = name in ("enable", "disable", "reload", "import", "try", "rule add")


# For both families, so that a mixture of the two shows.
PORT = "allow --port 8080".split()
CLIENT = ("--client", "10.1.0.2")
CHANGED = (["rule", "add", "home", "eth0", *PORT],)


def edit(name, words):
    return Operation(name, words, touches_kernel=False)


OPERATIONS = [
    Operation("enable", ["enable"], disabled=True),
    Operation("disable", ["disable"]),
    Operation("reload", ["reload"], CHANGED),
    Operation("reload --sequential", ["reload", "--sequential"], CHANGED),
    Operation("profile use", ["profile", "use", "office"]),
    Operation("import", ["--yes", "import", "/tmp/import.json"]),
    Operation("undo", ["undo"], (["--yes", "import", "/tmp/import.json"],)),
    Operation("try", ["try", "office", *CLIENT, "--seconds", "1"],
              begin=["try", "office", *CLIENT, "--seconds", "600"]),
    Operation("the library's trial", None),
    Operation("update", ["update"], ("remove-service",), touches_kernel=False),
    edit("rule add", ["rule", "add", "office", "eth0", *PORT]),
    edit("rule insert", ["rule", "insert", "office", "eth0", "1", *PORT]),
    edit("rule replace", ["rule", "replace", "office", "eth0", "1", *PORT]),
    edit("rule remove", ["rule", "remove", "office", "eth0", "1"]),
    edit("rule move", ["rule", "move", "office", "eth0", "1", "2"]),
    edit("rule disable", ["rule", "disable", "office", "eth0", "1"]),
    edit("policy", ["policy", "office", "eth0", "none"]),
    edit("profile create", ["profile", "create", "cabin"]),
    edit("profile copy", ["profile", "copy", "office", "cabin"]),
    edit("profile rename", ["profile", "rename", "home", "cabin"]),
    edit("profile delete", ["--yes", "profile", "delete", "guest"]),
    edit("profile set", ["--yes", "profile", "set", "office", "/tmp/office.json"]),
    edit("service reserve", ["service", "reserve", "http"]),
    edit("service release", ["--yes", "service", "release", "ssh"]),
    edit("adapter rename", ["--yes", "adapter", "rename", "eth0", "eth1"]),
]


def prepare_host(zamofw):
    """Three profiles, and the first of them in force."""
    for words in ("link add eth0 type veth peer name peer0", "link set eth0 up",
                  "link set peer0 up", "addr add 10.1.0.1/24 dev eth0"):
        run("/sbin/ip", *words.split(), check=True)
    for path in pathlib.Path("/usr/zamo/etc/firewall.d").glob("*"):
        path.unlink()
    (pathlib.Path(SERVICES) / "zz_gone.json").write_text(
        '{"destination": {"protocol": "tcp", "ports": ["7777"]}}')
    run("/usr/zamo/sbin/zamofw-chains", check=True)
    for name, port in (("home", "22"), ("office", "23"), ("guest", "24")):
        for words in (["profile", "create", name], ["policy", name, "eth0", "deny"],
                      ["rule", "add", name, "eth0", "allow", "--port", port],
                      ["rule", "add", name, "eth0", "allow", "--service", "ssh,zz_gone"],
                      ["rule", "add", name, "global", "allow", "--from", "2001:db8::/32"]):
            run(zamofw, "--quiet", *words, check=True)
    run(zamofw, "profile", "use", "home", "--no-reload", check=True)
    run(zamofw, "enable", check=True)
    document = run(zamofw, "export", check=True).stdout
    text = document.replace('"24"', '"2424"').replace('"guest"', '"shed"')
    pathlib.Path("/tmp/import.json").write_text(text.replace('"22"', '"2222"'))
    shown = run(zamofw, "profile", "show", "office", check=True).stdout
    pathlib.Path("/tmp/office.json").write_text(shown.replace('"23"', '"2323"'))


def prepare(operation, zamofw):
    gone = pathlib.Path(SERVICES) / "zz_gone.json"
    if not gone.exists():
        gone.write_text('{"destination": {"protocol": "tcp", "ports": ["7777"]}}')
    for words in operation.prepare:
        if words == "remove-service":
            gone.unlink()
        else:
            run(zamofw, "--quiet", *words, check=True)
    if operation.disabled:
        run(zamofw, "disable", check=True)
