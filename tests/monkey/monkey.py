#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Acts at random on the real program and the simulated instrument, and looks after each act.

    monkey.py --seeds 1..10 [--acts 60] [--jobs 4]      runs these seeds
    monkey.py --seeds 7 --keep                          one of them again; its folder is kept
    monkey.py --seeds 7 --replay FILE                   the acts of a file that a failed run wrote

By hand it takes the programs of build/release.

After each act the program must be alive and answer, show one dialog at most, and have its menu File
enabled exactly when no child window is open; and every shot that it showed as complete must be in a
file, unless the act was one that drops it. At the end the program is started once more, what it offers
is saved, and the shots, the records, the data folder and its directory file must agree.
"""

import argparse
import concurrent.futures
import os
import pathlib
import random
import sys
import time
import traceback

import built  # noqa: F401, the paths of the next ones
import harness
import monkey_acts
import monkey_rig


def play(seed, acts, keep, replay=None):
    """One run: (seed, summary or None, failure or None)."""
    rig = monkey_rig.MonkeyRig(seed)
    failure = None
    try:
        if replay is None:
            source = monkey_acts.RandomActs(seed, acts)
        else:
            source = monkey_acts.GivenActs(replay)
        rig.play(source)
    except Exception as error:  # whatever it was, its acts are what matters
        trace = "" if isinstance(error, AssertionError) else traceback.format_exc()
        failure = f"{error}\n{trace}"
    text = rig.summary()
    if failure:
        failure = rig.report(failure)
    rig.close(keep=keep and failure is not None)
    return seed, text, failure


def seeds_of(text):
    """N, A..B, or "some": ten when DAVO_LONG is set, else one of these."""
    if text == "some":
        print(f"DAVO_SEED={harness.SEED}", flush=True)
        all_ten = list(range(1, 11))
        return all_ten if "DAVO_LONG" in os.environ else [random.Random(harness.SEED).choice(all_ten)]
    first, _, last = text.partition("..")
    seeds = range(int(first), int(last or first) + 1)
    if not seeds:
        raise argparse.ArgumentTypeError(f"no seed in {text}")
    return seeds


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seeds", type=seeds_of, default=range(1, 2), help="N or A..B")
    parser.add_argument("--acts", type=int, default=60, help="of each seed")
    parser.add_argument("--jobs", type=int, default=2 * (os.cpu_count() or 1))
    parser.add_argument("--replay", type=pathlib.Path, help="a file of acts")
    parser.add_argument("--keep", action="store_true", help="the folders of failed runs")
    options = parser.parse_args()

    began = time.monotonic()
    replay = options.replay and options.replay.read_text().splitlines()
    failed = []
    totals = monkey_rig.Totals()
    with concurrent.futures.ProcessPoolExecutor(options.jobs) as pool:
        runs = [pool.submit(play, seed, options.acts, options.keep, replay)
                for seed in options.seeds]
        for run in concurrent.futures.as_completed(runs):
            seed, summary, failure = run.result()
            totals.add(summary)
            if failure:
                failed.append(seed)
                print(f"seed {seed} FAILED: {failure}", flush=True)
                if replay is None:
                    print(f"again: python3 tests/monkey/monkey.py --seeds {seed} --acts {options.acts}", flush=True)
            else:
                print(f"seed {seed}: {summary}", flush=True)
    print(f"{len(runs)} seeds, {totals}, {time.monotonic() - began:.0f} s, "
          f"failed: {sorted(failed) or 'none'}", flush=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
