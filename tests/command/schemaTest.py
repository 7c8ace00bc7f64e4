"""The JSON schemas take what the firewall ships, documents and writes, and refuse what `zamofw check`
refuses as far as a schema can say it.

    schemaTest.py SOURCE_DIRECTORY PROGRAM
"""
import glob
import json
import re
import subprocess
import sys
import unittest

import jsonschema

SOURCE, PROGRAM = sys.argv[1:3]


def load(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)


SCHEMAS = {name: load(f"{SOURCE}/data/schema/{name}.json")
           for name in ("profile", "settings", "export", "service")}
STORE = {name + ".json": schema for name, schema in SCHEMAS.items()}


def faults(name, document):
    resolver = jsonschema.RefResolver("", SCHEMAS[name], store=STORE)
    return list(jsonschema.Draft7Validator(SCHEMAS[name], resolver=resolver).iter_errors(document))


def zamofw(*words, text=None):
    return subprocess.run([PROGRAM, *words], input=text, capture_output=True, text=True, check=False)


def documents(path, start, end):
    """What stands between two lines of a text, when it is JSON and has a member."""
    with open(path, encoding="utf-8") as file:
        blocks = re.findall(rf"^{start}\n(\{{.*?^\}}\n){end}$", file.read(), re.M | re.S)
    return [json.loads(block) for block in blocks]


def kind(document):
    if "config_profiles" in document:
        return "export"
    return "profile" if "name" in document else "service"


RULE = {"enable": True, "policy": 0, "adapterDirect": 1, "table": "filter", "chainList": [],
        "blLog": False, "ipType": 0, "ipDirect": 1, "ipGroup": 5, "ipList": [], "portDirect": 0,
        "portGroup": 3, "portList": [], "protocol": 1, "name": "", "labelList": [], "ruleIndex": 0,
        "ruleID": 0}
VALUES = [True, 1.5, 2 ** 31, -2 ** 31 - 1, "text", "filter", "", {}, [], ["INPUT_FIREWALL"], ["a b"],
          ["-x"], [""], ["x" * 29], [1], *range(-1, 7), 31, 32, 33]
ADDRESSES = [[], ["10.0.0.1"], ["10.0.0.0/24"], ["10.0.0.1-10.0.0.9"], ["10.0.0.0", "24"], ["10.1"],
             ["010.0.0.1"], ["10.0.0.1", "10.0.0.9"], ["2001:db8::", "32"], ["10.0.0.0", "255.0.0.0"],
             ["2001:db8::1", "2001:db8::9"], ["10.0.0.1", "2001:db8::1"], ["10.0.0.0", "x"], ["host"]]
PORTS = [[], ["22"], ["22", "80"], ["6000-6010"], ["022"], ["65536"], ["22,80"], ["22-"], [" 22"],
         ["-22"], ["ssh"], ["0"], ["65535"], ["0-65535"]]


def variants():
    """Rules that differ from a sound one in little."""
    for name in RULE:
        for value in VALUES:
            yield {**RULE, name: value}
        yield {key: value for key, value in RULE.items() if key != name}
        yield {**RULE, name.lower() + "s": RULE[name]}
    for family in (0, 1, 2):
        for group in (0, 1, 4):
            for entries in ADDRESSES:
                yield {**RULE, "ipType": family, "ipGroup": group, "ipList": entries}
    for protocol in (0, 1, 2, 3, 4, 5, 32):
        for entries in PORTS:
            yield {**RULE, "portGroup": 1, "protocol": protocol, "portList": entries}
    for count in (0, 1, 15, 16):
        yield {**RULE, "ipGroup": 3, "ipList": ["DE"] * count}
    for code in ("de", "D", "D E", "-D", ""):
        yield {**RULE, "ipGroup": 3, "ipList": [code]}
    for group in (0, 2):
        yield {**RULE, "portGroup": group}
        yield {**RULE, "portGroup": group, "portList": ["ssh", "http"]}
    yield {**RULE, "policy": 2, "table": "none"}


class Schemas(unittest.TestCase):
    def test_are_schemas(self):
        for schema in SCHEMAS.values():
            jsonschema.Draft7Validator.check_schema(schema)

    def test_take_what_is_shipped_and_documented(self):
        shipped = [load(path) for path in glob.glob(f"{SOURCE}/data/services.d/*.json")]
        shipped.append(load(f"{SOURCE}/data/profile_default.json"))
        shown = documents(f"{SOURCE}/docs/formats.md", "```json", "```")
        pages = []
        for page in ("profile", "service"):
            path = f"{SOURCE}/docs/man/zamofirewall-{page}.5"
            pages += documents(path, r"\.Bd -literal", r"\.Ed")
        self.assertGreater(len(shipped), 60)
        self.assertEqual([kind(document) for document in pages], ["profile", "service"])
        self.assertEqual(sorted({kind(document) for document in shown}),
                         ["export", "profile", "service"])
        for document in shipped + shown + pages:
            self.assertEqual(faults(kind(document), document), [])
        checked = zamofw("check", "--file", "-", text=json.dumps(pages[0]))
        self.assertEqual(checked.returncode, 0, checked.stdout)

    def test_take_what_the_command_writes(self):
        for words in ("profile create home", "policy home eth0 deny",
                      "rule add home eth0 allow --from 10.0.0.0/8 --service ssh --label a",
                      "rule add home eth0 deny --to 2001:db8::1-2001:db8::9 --out --log",
                      "rule add home global allow --proto icmp --disabled --name Ping",
                      "rule add home eth0 allow --from 10.0.0.1 --proto both --source-port 1,2-3",
                      "service reserve http", "profile create empty"):
            self.assertEqual(zamofw("--quiet", "--yes", *words.split()).returncode, 0, words)
        directory = "/usr/zamo/etc/firewall.d"
        stored = [load(path) for path in glob.glob(f"{directory}/[0-9]*.json")]
        self.assertEqual(len(stored), 3)
        for document in [*stored, json.loads(zamofw("profile", "show", "home").stdout)]:
            self.assertEqual(faults("profile", document), [])
        self.assertEqual(faults("settings", load(f"{directory}/firewall_settings.json")), [])
        self.assertEqual(faults("export", json.loads(zamofw("export").stdout)), [])

    def test_refuse_the_rules_that_check_refuses(self):
        rules = list(variants())
        profile = {"name": "p", "adapterPolicyMap": {"eth0": 1}, "rules": {"eth0": rules}}
        refused = {fault.absolute_path[2] for fault in faults("profile", profile)}
        answer = json.loads(zamofw("--json", "check", "--file", "-", text=json.dumps(profile)).stdout)
        # What only this machine knows.
        local = ("no-country-data", "no-effect", "absent-adapter", "unknown-service")
        found = {int(finding["path"].split("/")[3]): finding["kind"]
                 for finding in answer["findings"]
                 if (finding["kind"] not in local or "is no country code" in finding["message"])
                 and finding["path"].count("/") > 2}
        for index, rule in enumerate(rules):
            # The numbers of a prefix and of the ends of a range are beyond a schema.
            if found.get(index) not in ("bad-prefix", "reversed-range"):
                self.assertEqual(index in refused, index in found, f"{rule} {found.get(index)}")
        self.assertGreater(len(found), 200)

    def test_refuse_other_documents(self):
        rule = {"enable": True, "table": "filter", "ipGroup": 5, "portGroup": 3}
        profile = {"name": "p", "rules": {"eth0": [rule]}}
        pair = {"protocol": "tcp", "ports": ["22"]}
        export = {"config_profiles": {"1.json": profile}}
        empty = {"name": "p", "rules": None, "adapterPolicyMap": None}
        for name, document in (("profile", profile), ("profile", empty), ("export", export)):
            self.assertEqual(faults(name, document), [])
        for name, document in (
                ("profile", {}), ("profile", {"name": 7}), ("profile", {"name": ""}),
                ("profile", {**profile, "rule": {}}), ("profile", {**profile, "rules": []}),
                ("profile", {**profile, "adapterPolicyMap": {"eth0": 3}}),
                ("profile", {**profile, "adapterPolicyMap": {"eth0": "deny"}}),
                ("profile", {**profile, "rules": {"eth 0": []}}),
                ("profile", {**profile, "rules": {"eth0": rule}}),
                ("settings", {"status": "on"}), ("settings", {"profile": 1}),
                ("settings", {"stauts": True}), ("settings", []),
                ("export", {}), ("export", {**export, "config_version": 2}),
                ("export", {**export, "config_firewall_settings": {"status": 1}}),
                ("export", {"config_profiles": {"1": profile}}),
                ("export", {"config_profiles": {"a/1.json": profile}}),
                ("export", {"config_profiles": {"firewall_settings.json": profile}}),
                ("export", {"config_profiles": {"1.json": {**profile, "polcy": 1}}}),
                ("service", {"destination": {"protocol": "tcp"}}), ("service", {"enabled": 1}),
                ("service", {"destination": {**pair, "protocol": "TCP"}}),
                ("service", {"source": {**pair, "ports": [22]}}),
                ("service", {"source": {**pair, "port": []}}), ("service", {"dest": pair}),
                *(("service", {"destination": {**pair, "ports": [port]}})
                  for port in ("0", "022", "65536", "22-", "x", "22-70000"))):
            self.assertNotEqual(faults(name, document), [], f"{name}: {document}")

    def test_have_the_members_of_the_manual_pages(self):
        def members(schema):
            names = set()
            if isinstance(schema, dict):
                names.update(schema.get("properties", {}))
                for value in schema.values():
                    names |= members(value)
            return names
        for page, names in (("profile", ("profile", "settings", "export")), ("service", ("service",))):
            with open(f"{SOURCE}/docs/man/zamofirewall-{page}.5", encoding="utf-8") as file:
                named = set(re.findall(r"\bVa (\w+)", file.read()))
            known = set().union(*(members(SCHEMAS[name]) for name in names)) - {"global"}
            self.assertEqual(named, known)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
