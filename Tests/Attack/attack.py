"""Attacks the programs from outside, in random sequences that a seed repeats.

attack.py NAME [--seconds N] [--seed S] [--steps N]

Rounds follow one another until the seconds are over; the first one has the seed S, each next one the
next number. What a round does depends on its seed and the number of steps alone.
"""

import argparse
import importlib
import os
import random
import sys
import time
import traceback
from pathlib import Path

NAMES = Path(__file__).with_name("attacks.txt").read_text().split()


def run_round(name, seed, steps):
    """Returns the fault, or None."""
    attack = importlib.import_module(name)
    held = []
    try:
        attack.attack(random.Random(f"{name} {seed}"), steps or attack.STEPS, held)
        return None
    except Exception:  # any error fails the round
        story = "".join(subject.story() for subject in held)
        return traceback.format_exc() + story
    finally:
        for subject in reversed(held):
            subject.close()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("name", choices=NAMES)
    parser.add_argument("--seconds", type=float, default=10)
    parser.add_argument("--seed", type=int, default=int.from_bytes(os.urandom(4), "little"))
    parser.add_argument("--steps", type=int, default=0, help="steps of a round; 0: as many as the attack likes")
    arguments = parser.parse_args()

    started, seed = time.monotonic(), arguments.seed
    while seed == arguments.seed or time.monotonic() - started < arguments.seconds:
        round_started = time.monotonic()
        fault = run_round(arguments.name, seed, arguments.steps)
        print(f"{arguments.name}: seed {seed}: {'FAULT' if fault else 'held'}, "
              f"{time.monotonic() - round_started:.1f} s", flush=True)
        if fault:
            print(fault)
            print(f"again: Scripts/attack {f'--steps {arguments.steps} ' if arguments.steps else ''}--seconds 1 "
                  f"--seed {seed} {arguments.name}", flush=True)
            return 1
        seed += 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
