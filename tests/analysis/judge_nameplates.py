# SPDX-License-Identifier: GPL-3.0-or-later
"""Judges nameplates by the formulas, and holds what the program said of them against it:
judge_nameplates.py CASES, a file with a JSON object on each line."""

import collections
import json
import math
import re
import sys

NONE, WITHIN, BEYOND = range(3)
HALF_AMPERES, HALF_VOLTS = 0.00005, 0.05
NUMBER = re.compile(r"(?<![A-Za-z\d.])-?\d+(?:\.\d+)?(?:E[+-]\d+)?")
CLASS = re.compile(r"class (5P|10P|C)")
BEFORE = ", from the secondary excitation curve; leakage flux is not seen."


def line_at(points, x):
    """The straight line through points (x, y) that rise, level outside them."""
    if x <= points[0][0]:
        return points[0][1]
    for (x1, y1), (x2, y2) in zip(points, points[1:]):
        if x <= x2:
            return y1 + (y2 - y1) * (x - x1) / (x2 - x1)
    return points[-1][1]


def current_range(curve, volts):
    """The least and the most current at a voltage."""
    logs = [(math.log(v), math.log(i)) for i, v in curve]
    x, step = math.log(volts), HALF_VOLTS / volts
    low, high = line_at(logs, x - step), line_at(logs, x + step)
    for k in range(len(logs) - 1):
        if logs[k][0] < x < logs[k + 1][0]:
            steep = [(b[1] - a[1]) / (b[0] - a[0]) for a, b in zip(logs, logs[1:])]
            turns = [abs(b - a) for a, b in zip(steep, steep[1:])]
            sharper = max(turns[max(k - 1, 0):k + 1], default=0)
            low -= min(sharper * min(x - logs[k][0], logs[k + 1][0] - x), logs[k + 1][1] - logs[k][1])
    return max(0, math.exp(low) - HALF_AMPERES), math.exp(high) + HALF_AMPERES


def why_not(curve, volts):
    if not curve:
        return "the curve has no points."
    if volts < curve[0][1] * (1 - 1e-9):
        return "the curve begins above it."
    return "the curve ends before it." if volts > curve[-1][1] * (1 + 1e-9) else None


def accuracy_limit(curve, part, secondary, ohms):
    """The factor by walking down the curve, then by halving; and whether the curve ends before."""
    logs = [(math.log(i), math.log(v)) for i, v in curve]
    def spare(x):
        factor = math.exp(x) / (part * secondary)
        return math.exp(line_at(logs, x)) / (factor * secondary * ohms) - 1
    first, last = logs[0][0], logs[-1][0]
    if spare(last) >= 0:
        return math.exp(last) / (part * secondary), True
    places = sorted({x for x, _ in logs}, reverse=True)
    for high, low in zip(places, places[1:]):
        if spare(low) < 0:
            continue
        for _ in range(100):
            middle = (low + high) / 2
            low, high = (middle, high) if spare(middle) >= 0 else (low, middle)
        return math.exp(low) / (part * secondary), False
    return None


def held(low, high, rated, least):
    """The verdict of what is between two numbers, and its word."""
    if least:
        verdict = WITHIN if low >= rated else BEYOND if high < rated else NONE
        return verdict, {WITHIN: ", not less than", BEYOND: ", less than", NONE: ", which leaves"}[verdict]
    verdict = WITHIN if high <= rated else BEYOND if low > rated else NONE
    return verdict, {WITHIN: ", not more than", BEYOND: ", more than", NONE: ", which leaves"}[verdict]


def estimate(name, unit, value, curve):
    if value is None:
        why = "the curve begins above it." if curve else "the curve has no points."
        return NONE, [], f"The {name} is not estimated: {why}"
    word = "at least" if value[1] else "about"
    return NONE, [value[0]], f"The {name} is {word} #{unit}{BEFORE}"


def percent_part(error, limit):
    size = abs(error)
    end = "."
    verdict = NONE
    if limit >= 0:
        verdict = BEYOND if size > limit + 1e-9 else WITHIN
        end = {WITHIN: "; the limit is # %.", BEYOND: ", beyond the limit of # %."}[verdict]
    numbers = [limit] if limit >= 0 else []
    if size < 0.005 and not limit < 0.01:
        return verdict, [0.01] + numbers, "The turns ratio is within # % of the nameplate's" + end
    if size <= 1e-9:
        return verdict, numbers, "The turns ratio is exactly the nameplate's" + end
    side = "above" if error > 0 else "below"
    return verdict, [size] + numbers, f"The turns ratio is # % {side} the nameplate's" + end


def judge(case):
    plate = case["plate"]
    secondary, rct, ek, ie, turns, limit, alf, burden, connected, c_volts, measured = plate
    ek, ie, turns, alf, burden, c_volts = (
        value if value is not None and 0 < value <= 1e9 else None for value in (ek, ie, turns, alf, burden, c_volts))
    rct, connected = (value if value is not None and 0 <= value <= 1e9 else None for value in (rct, connected))
    curve = sorted(p for p in case["points"] if p[0] > 0 and p[1] > 0)
    kind = case["kind"]
    if kind == 0:
        if ek:
            low, high = case["knee"]
            if low is None:
                yield NONE, [], "The knee point e.m.f. is not known: the curve has none for certain."
            else:
                verdict, word = held(low, high, ek, True)
                open_word = " open" if verdict == NONE else ""
                yield (verdict, [low, high, ek],
                       f"The knee point e.m.f. is between # and # V{word} the nameplate's # V{open_word}.")
            why = why_not(curve, ek)
            if why:
                yield NONE, [ek], f"The exciting current at the nameplate's # V is not known: {why}"
            else:
                low, high = current_range(curve, ek)
                start = "The exciting current at the nameplate's # V is between # and # A"
                if ie:
                    verdict, word = held(low, high, ie, False)
                    open_word = " open" if verdict == NONE else ""
                    yield verdict, [ek, low, high, ie], f"{start}{word} the nameplate's # A{open_word}."
                else:
                    yield NONE, [ek, low, high], start + "."
        if turns and measured is not None and measured > 0:
            yield percent_part(100 * (measured - turns) / turns, limit)
        yield NONE, [], "The class PX is not passed as a whole: this instrument does not measure Rct."
        return
    no_rct = "is not estimated: it takes Rct, which this instrument does not measure."
    if secondary > 0 and kind == 3:
        if rct is None:
            yield NONE, [], "The C voltage " + no_rct
        else:
            value = None
            if curve and 2 * secondary >= curve[0][0]:
                logs = [(math.log(i), math.log(v)) for i, v in curve]
                volts = math.exp(line_at(logs, math.log(2 * secondary))) - 20 * secondary * rct
                value = max(volts, 0), curve[-1][0] < 2 * secondary * (1 - 1e-9)
            yield estimate("C voltage", " V", value, curve)
    if secondary > 0 and kind in (1, 2) and burden:
        if alf:
            yield NONE, [alf * burden / secondary], "The nameplate asks for # V at the rated burden."
        ohms = burden / secondary ** 2
        name = "accuracy limit factor at the rated burden"
        if rct is None:
            yield NONE, [], f"The {name} {no_rct}"
        else:
            found = accuracy_limit(curve, 0.05 if kind == 1 else 0.1, secondary, rct + ohms) if curve else None
            yield estimate(name, "", found, curve)
            if alf and connected is not None and rct + connected > 0:
                yield (NONE, [alf, alf * (rct + ohms) / (rct + connected)],
                       "At the connected burden the nameplate's accuracy limit factor of # becomes #.")
    number = c_volts if kind == 3 else alf
    name = ("PX", "5P", "10P", "C")[kind]
    yield (NONE, [number] if number else [],
           f"The class {name}{'#' if number else ''} is not judged: this instrument measures the turns ratio by "
           "voltage, not the error of the current.")


def apart(name):
    """A class without the digits of its kind, apart from its number."""
    return "class " + {"5P": "five ", "10P": "ten ", "C": "voltage "}[name[1]]


def same(said, expected):
    """What a finding says, with the numbers as far as they have digits."""
    verdict, sentence = said
    wanted_verdict, numbers, text = expected
    sentence = CLASS.sub(apart, sentence.replace(" (10 % / 50 %)", ""))
    text = CLASS.sub(apart, text)
    texts = NUMBER.findall(sentence)
    plain = NUMBER.sub("#", sentence)
    if verdict != wanted_verdict or plain != text or len(texts) != len(numbers):
        return False
    for shown, number in zip(texts, numbers):
        decimals = len(shown.partition(".")[2]) if "E" not in shown else 300
        near = 0.5 * 10.0 ** -min(decimals, 15) + 1e-6 * abs(number) * (decimals > 4)
        if abs(float(shown) - number) > near + 1e-9 * abs(number) + 1e-12:
            return False
    return True


def main():
    verdicts = collections.Counter()
    texts = collections.Counter()
    with open(sys.argv[1], encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            case = json.loads(line)
            expected = list(judge(case))
            said = case["findings"]
            assert len(expected) == len(said), (number, line, expected)
            for one, other in zip(said, expected):
                assert same(one, other), (number, line, one, other)
                verdicts[other[0]] += 1
                texts[other[2]] += 1
    assert min(verdicts[verdict] for verdict in (NONE, WITHIN, BEYOND)) > 200, verdicts
    assert len(texts) > 30, texts
    print(f"{number} nameplates, {sum(texts.values())} findings of {len(texts)} kinds, by verdict {dict(verdicts)}")


main()
