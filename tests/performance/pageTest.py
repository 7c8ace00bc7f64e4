"""The page of scripts/bench --write: measured parts are replaced, and nothing looks better than it is."""
import pathlib
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts/bench.d"))
import parts
import tables

PAGE = ("# Figures\n<!-- measured: open -->\nmore\n"
        "<!-- measured: reload -->\nold\n<!-- end of reload -->\nwords\n"
        "<!-- measured: others -->\nkept\n<!-- end of others -->\n")
SLOW = "reload of 1000 rules\t1234.5\tthe loop\t800\tms\t1.503\t1.5\tOVER\n"
FAST = "reload of 1000 rules\t0.0123\tthe loop\t800\tms\t0.0000154\t1.5\tok\n"
PLAIN = "a fork\t2\ta spawn\t1\tKiB\t2\t0\t-\n"


def written(machine, **results):
    with tempfile.TemporaryDirectory() as directory:
        source, target = pathlib.Path(directory), pathlib.Path(directory, "parts")
        (source / "machine").write_text(machine)
        (source / "claims").write_text("reload  it is fast\n")
        for name, (rows, others) in results.items():
            (source / name.replace("_", ".")).write_text(rows)
            (source / f"{name.replace('_', '.')}.others").write_text(f"{others}\n")
        sys.argv = ["tables.py", str(source), str(target), "15"]
        tables.main()
        return {file.name: file.read_text() for file in target.iterdir()}


class PageTest(unittest.TestCase):
    def test_replaces_what_is_measured_and_nothing_else(self):
        self.assertEqual(parts.filled(PAGE, {"reload": "new \\1\n"}), PAGE.replace("old", "new \\1"))
        self.assertEqual(parts.without_place(PAGE, ["reload", "open", "missing"]),
                         ["missing", "open"])

    def test_marks_what_is_over_its_limit(self):
        made = written("2 processors", nft_reload=(FAST + PLAIN, 3), legacy_reload=(SLOW + PLAIN, 0))
        self.assertEqual(made["reload"].splitlines()[4:], [
            "| reload of 1,000 rules | the loop | 0.0123 ms | 800 ms | 0.000015 "
            "| 1,234 ms | 800 ms | **1.503** | 1.5 | **OVER: legacy** |",
            "| a fork | a spawn | 2 KiB | 1 KiB | 2.00 | 2 KiB | 1 KiB | 2.00 |  |  |"])
        self.assertIn("**Over their limits**, 1 of 2:\n\n- reload of 1,000 rules, legacy: 1.503 times "
                      "the loop, the limit is 1.5\n", made["machine"])
        self.assertNotIn("busy", made["machine"])

    def test_warns_of_a_busy_machine(self):
        made = written("2 processors", nft_reload=(FAST, 3), legacy_reload=(FAST, 140))
        self.assertIn("**The machine was busy.**", made["machine"])
        self.assertIn("- `reload`: 3 % and 140 %\n", made["machine"])
        self.assertIn("All 2 ratios with a limit keep it.", made["machine"])

    def test_refuses_variants_that_measured_different_things(self):
        with self.assertRaises(ValueError):
            written("2 processors", nft_reload=(FAST + PLAIN, 3), legacy_reload=(FAST, 3))


unittest.main()
