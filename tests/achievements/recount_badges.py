#!/usr/bin/env python3
"""Badges of a sample history, counted anew from the raw samples, against `pedvar awards`.

recount_badges.py PEDVAR SAMPLE_EXPORT DAYS
"""

import datetime
import json
import os
import sqlite3
import subprocess
import sys
import tempfile
from collections import defaultdict
from pathlib import Path
from zoneinfo import ZoneInfo

ZONE = ZoneInfo("Europe/Berlin")
EPOCH = datetime.datetime(2001, 1, 1, tzinfo=datetime.timezone.utc)
LONG = 4 * 3_600_000
LAST = datetime.date(2024, 11, 3)
DAY = datetime.timedelta(days=1)


def counted(store, kind):
    """(start, is long, amount) of each sample, less what sources before its own cover."""
    rank = {id: place for place, (id,) in enumerate(store.execute("SELECT id FROM sources ORDER BY position, id"))}
    rows = store.execute(
        "SELECT start, duration, source, value FROM samples JOIN series ON series.id = series WHERE identifier = ?",
        ("HKQuantityTypeIdentifier" + kind,)).fetchall()
    covered = []  # disjoint spans in order
    for place in sorted({(duration > LONG, rank[source]) for _, duration, source, _ in rows}):
        own = sorted(row for row in rows if (row[1] > LONG, rank[row[2]]) == place)
        first = 0
        for start, duration, _, value in own:
            length = max(duration, 1)
            while first < len(covered) and covered[first][1] <= start:
                first += 1
            taken, at = 0, first
            while at < len(covered) and covered[at][0] < start + length:
                taken += min(covered[at][1], start + length) - max(covered[at][0], start)
                at += 1
            yield start, place[0], value * (length - taken) / length
        merged = []
        for start, end in sorted(covered + [(row[0], row[0] + row[1]) for row in own if row[1] > 0]):
            if merged and start <= merged[-1][1]:
                merged[-1] = (merged[-1][0], max(end, merged[-1][1]))
            else:
                merged.append((start, end))
        covered = merged


def whole(amount):
    return int(amount + 1e-6)


def recount(path, goals):
    store = sqlite3.connect(f"file:{path}?mode=ro", uri=True)
    steps, hours, metres = defaultdict(float), defaultdict(lambda: [0.0] * 24), defaultdict(float)
    for start, is_long, amount in counted(store, "StepCount"):
        local = (EPOCH + datetime.timedelta(milliseconds=start)).astimezone(ZONE)
        steps[local.date()] += amount
        if not is_long:
            hours[local.date()][local.hour] += amount
    for start, _, amount in counted(store, "DistanceWalkingRunning"):
        metres[(EPOCH + datetime.timedelta(milliseconds=start)).astimezone(ZONE).date()] += amount

    days = [min(steps) + DAY * i for i in range((LAST - min(steps)).days + 1)]
    count = {day: whole(steps[day]) for day in days}
    goal = {day: [g for since, g in goals if since <= day or since == goals[0][0]][-1] for day in days}
    met = {day: count[day] >= goal[day] for day in days}
    # Hours are what each adds to the whole steps so far.
    clock = {day: [whole(sum(hours[day][:h + 1])) - whole(sum(hours[day][:h])) for h in range(24)] for day in days}

    found = {}

    def badge(key, requirement, values):
        """`values`: (day, value) in order."""
        values = list(values)
        first = next((day for day, value in values if value >= requirement), None)
        found[key] = (max([value for _, value in values], default=0), first and first.isoformat())

    for key, need in [("firstSteps", 1000), ("stepUp", 5000), ("stepMaster", 10000), ("stepLegend", 15000),
                      ("superStepper", 20000), ("ultraWalker", 25000), ("explorer30K", 30000), ("hero40K", 40000),
                      ("champion50K", 50000)]:
        badge(key, need, count.items())
    for key, need in [("walker5K", 5000), ("champion10K", 10000), ("halfMarathon", 21097), ("marathonMaster", 42195),
                      ("ultra50K", 50000), ("legend100K", 100000)]:
        badge(key, need, ((day, whole(metres[day])) for day in sorted(metres)))

    def streak(day):
        length = 0
        while met.get(day):
            length, day = length + 1, day - DAY
        return length

    streaks = [(day, streak(day)) for day in days]
    for key, need in [("gettingStarted", 3), ("committed", 7), ("twoWeeksStrong", 14), ("monthlyChampion", 30),
                      ("unstoppable", 100), ("halfYearHero", 180), ("yearWarrior", 365), ("consistencyKing", 5)]:
        badge(key, need, streaks)

    def so_far(same, value):
        """Sums over the days up to each that are the `same`."""
        sums = defaultdict(int)
        for day in days:
            sums[same(day)] += value(day)
            yield day, sums[same(day)]

    monday = lambda day: day - DAY * day.weekday()
    month = lambda day: (day.year, day.month)
    weekend = [day for day in days if day.weekday() >= 5]
    badge("weekendWarrior", 2, ((d, s) for d, s in so_far(monday, lambda d: d in weekend_set and met[d]) if d in weekend_set)
          if (weekend_set := set(weekend)) else [])
    badge("weekendWarriorPlus", 2, so_far(monday, lambda d: d in weekend_set and count[d] >= 15000))
    badge("earlyBird", 5000, ((day, sum(clock[day][:9])) for day in days))
    badge("nightOwl", 3000, ((day, sum(clock[day][21:])) for day in days))
    badge("midnightWalker", 1000, ((day, clock[day][0]) for day in days))
    grid = [(day, value) for day in days for value in clock[day]]
    badge("speedDemon", 10000, ((b[0], a[1] + b[1]) for a, b in zip([(None, 0)] + grid, grid)))
    badge("centuryClub", 100000, so_far(monday, count.get))
    badge("perfectWeek", 7, so_far(monday, met.get))
    length = lambda day: ((day.replace(day=28) + DAY * 4).replace(day=1) - DAY).day
    badge("monthMastery", 30, ((d, 30 if s == length(d) else min(s, 29)) for d, s in so_far(month, met.get)))
    badge("monthlyMilestone", 300000, so_far(month, count.get))
    for key, need in [("halfMillion", 500000), ("millionStepClub", 1000000), ("elite5Million", 5000000),
                      ("legend10Million", 10000000)]:
        badge(key, need, so_far(lambda day: None, count.get))
    present = goals[-1][1]
    for key, times in [("doubleTrouble", 2), ("tripleThreat", 3)]:
        first = next((day for day in days if count[day] >= times * goal[day]), None)
        best = max(count[day] * present // goal[day] for day in days)
        found[key] = (best, first and first.isoformat())
    return found


def main():
    pedvar, sample_export, span = sys.argv[1:]
    environment = dict(os.environ, TZ="Europe/Berlin", LC_ALL="C.UTF-8")
    with tempfile.TemporaryDirectory() as folder:
        run = lambda *words: subprocess.run(words, env=environment, check=True, capture_output=True).stdout
        run(sample_export, "--out", folder, "--days", span, "--end", LAST.isoformat())
        data = ("--data", folder + "/data")
        run(pedvar, *data, "import", folder + "/health_export")
        goals = [(LAST - DAY * (int(span) // 2), 9000), (LAST - DAY * (int(span) // 3), 7500)]
        with sqlite3.connect(folder + "/data/defaults.sqlite") as defaults:
            history = json.dumps([{"day": day.isoformat(), "goal": goal} for day, goal in goals])
            defaults.execute("UPDATE defaults SET value = ? WHERE key = 'dailyGoalHistory'", (history.encode(),))
        shown = json.loads(run(pedvar, *data, "--now", LAST.isoformat(), "awards", "--json"))["awards"]
        expected = recount(folder + "/data/health.sqlite", goals)
    faults = []
    for award in shown:
        is_same = expected[award["key"]] == (award["progress"], award["unlockedDate"])
        if not is_same or award["isUnlocked"] != (award["unlockedDate"] is not None):
            faults.append(f"{award['key']}: shown {award['progress']}, {award['unlockedDate']}; "
                          f"counted {expected[award['key']]}")
    unlocked = sum(award["isUnlocked"] for award in shown)
    print("\n".join(faults) or f"{len(shown)} badges are as counted, {unlocked} of them unlocked")
    return 1 if faults or len(shown) != 39 else 0


if __name__ == "__main__":
    sys.exit(main())
