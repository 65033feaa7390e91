"""Long runs of the tests that kill calls and fill disks up.

    soak.py ROUNDS MODULE ...       each such test of the modules goes through at least so many kills, or levels of free room

A module says in KILLS how often its tests kill; its classes Full... go through the levels once, which is repeated here, each time with
other numbers of kilobytes in between.
"""
import importlib
import random
import sys
import unittest

LEVELS = 40  # at least, of a test that fills a disk up
CALLS = {"references": 4}  # a kill hits one of so many calls that the module makes in turn; 1 where nothing is said


def all_tests(module):
    for suite in unittest.defaultTestLoader.loadTestsFromModule(module):
        yield from suite


def vary(case, chance):
    """Has the class leave up to three kilobytes more than a test asks for, but where it asks for none."""
    plain = case.leave_free
    case.leave_free = lambda self, kilobytes: plain(self, kilobytes + chance.randrange(4) if kilobytes else 0)


def soak(module, rounds):
    """Runs the tests; returns whether all passed."""
    module.KILLS = kills = rounds * CALLS.get(module.__name__, 1)
    chance = random.Random(rounds)
    suite, count = unittest.TestSuite(), {}
    varied = set()
    for test in all_tests(module):
        name = type(test).__name__
        full = name.startswith("Full")
        if full and not varied & set(type(test).__mro__):
            vary(type(test), chance)
            varied.add(type(test))
        repeats = -(-rounds // LEVELS) if full else int("kill" in test.id())
        for _ in range(repeats):
            suite.addTest(type(test)(test.id().split(".")[-1]))
        if repeats:
            count[test.id()] = f"{repeats * LEVELS} levels of room, or more" if full else f"{kills} kills"
    result = unittest.TextTestRunner(verbosity=1).run(suite)
    for test, reason in result.skipped[:1]:
        print(f"NOT RUN: {len(result.skipped)} of {result.testsRun} tests, {reason}")
    for name, done in count.items():
        print(f"{name}: {done}")
    return result.wasSuccessful()


if __name__ == "__main__":
    good = [soak(importlib.import_module(name), int(sys.argv[1])) for name in sys.argv[2:]]
    sys.exit(0 if all(good) else 1)
