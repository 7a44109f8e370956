#!/usr/bin/env python3
"""Holds `pace` and `compare` against sums made here from the raw samples, around clock changes of four zones.

insights_against_samples.py PEDVAR SAMPLE_EXPORT
"""

import bisect
import calendar
import json
import os
import sqlite3
import statistics
import subprocess
import sys
import tempfile
from datetime import date, datetime, timedelta, timezone
from zoneinfo import ZoneInfo

EPOCH = datetime(2001, 1, 1, tzinfo=timezone.utc)
DAY = timedelta(days=1)
LOOKS = [  # days on or after which clocks change
    ("Europe/Berlin", "2024-03-31"), ("Europe/Berlin", "2024-10-28"),
    ("America/New_York", "2024-03-10"), ("America/New_York", "2024-11-03"),
    ("America/Santiago", "2024-04-06"), ("America/Santiago", "2024-09-08"),
    ("Australia/Lord_Howe", "2024-04-07"), ("Australia/Lord_Howe", "2024-10-06"),
]
faults = []


def expect(what, shown, known, tolerance=1.0):
    """Whole numbers may round to either side."""
    if abs(shown - known) > tolerance:
        faults.append(f"{what}: shown {shown}, from the samples {known}")


def counted_samples(file):
    """Moment and counted steps of each sample: less the share of its time that sources further up cover."""
    database = sqlite3.connect(f"file:{file}?mode=ro", uri=True)
    rows = database.execute(
        "SELECT position, start, start + duration, value FROM samples JOIN sources ON sources.id = source "
        "WHERE series = (SELECT id FROM series WHERE identifier LIKE '%StepCount') ORDER BY position, start")
    covered, own, rank, result = [], [], None, []
    for position, start, end, value in rows:
        if position != rank:
            covered, own, rank = merged(covered + own), [], position
        own.append((start, end))
        span = max(end, start + 1) - start
        result.append((EPOCH + timedelta(milliseconds=start),
                       value * (1 - overlap(covered, start, start + span) / span)))
    return sorted(result)


def merged(spans):
    result = []
    for start, end in sorted(spans):
        if result and start <= result[-1][1]:
            result[-1] = (result[-1][0], max(end, result[-1][1]))
        else:
            result.append((start, end))
    return result


def overlap(spans, start, end):
    total = 0
    for other in spans[max(bisect.bisect(spans, (start,)) - 1, 0):]:
        if other[0] >= end:
            break
        total += max(min(end, other[1]) - max(start, other[0]), 0)
    return total


class Known:
    """What the samples say in one zone."""

    def __init__(self, samples, zone):
        self.hours, self.days = {}, {}
        for moment, steps in samples:
            local = moment.astimezone(zone)
            hours = self.hours.setdefault(local.date(), [0.0] * 24)
            hours[local.hour] += steps
            self.days[local.date()] = self.days.get(local.date(), 0) + steps

    def on(self, day):
        return int(self.days.get(day, 0))

    def span(self, first, last):
        return [int(self.days[first + DAY * i]) for i in range((last - first).days + 1)
                if first + DAY * i in self.days]

    def references(self, day):
        before = (day.replace(day=1) - DAY).replace(day=1)
        earlier = before.replace(day=min(day.day, calendar.monthrange(before.year, before.month)[1]))
        monday, yesterday = day - DAY * day.weekday(), day - DAY
        return {
            "yesterday": self.on(yesterday), "sameDayLastWeek": self.on(day - 7 * DAY),
            "twoWeeksAgo": self.on(day - 14 * DAY), "sameDayLastMonth": self.on(earlier), "dailyGoal": 10000,
            "sevenDayAverage": statistics.mean(self.span(day - 7 * DAY, yesterday)),
            "thirtyDayAverage": statistics.mean(self.span(day - 30 * DAY, yesterday)),
            "thirtyDayBest": max(self.span(day - 30 * DAY, yesterday)),
            "weekToDate": sum(self.span(monday - 7 * DAY, day - 7 * DAY)),
            "monthToDate": sum(self.span(before, earlier)),
        }

    def quartiles(self, day):
        """Of 25 points each, over the 28 days before."""
        curves = []
        for ago in range(1, 29):
            hours = self.hours.get(day - DAY * ago, [0.0] * 24)
            if int(sum(hours)) >= 250:
                curves.append([sum(hours[:hour]) for hour in range(25)])
        return len(curves), [statistics.quantiles(points, n=4, method="inclusive") for points in zip(*curves)]


def main(pedvar, sample_export):
    with tempfile.TemporaryDirectory() as folder:
        environment = {"HOME": "/nonexistent", "LC_ALL": "C.UTF-8"}

        def run(zone, *words):
            return subprocess.run([pedvar, "--data", f"{folder}/data", *words], check=True, capture_output=True,
                                  env=environment | {"TZ": zone}).stdout

        subprocess.run([sample_export, "--days", "330", "--end", "2024-11-20", "--out", folder], check=True)
        run("UTC", "import", f"{folder}/health_export")
        samples = counted_samples(f"{folder}/data/health.sqlite")
        for name, text in LOOKS:
            known, day, what = Known(samples, ZoneInfo(name)), date.fromisoformat(text), f"{name} {text}"
            comparison = json.loads(run(name, "compare", "--now", text, "--json"))
            expect(f"{what} current", comparison["current"], known.on(day))
            rows = {row["id"]: row["reference"] for row in comparison["rows"]}
            references = known.references(day)
            if rows.keys() != references.keys():
                faults.append(f"{what}: rows {sorted(rows)}")
            for row, reference in references.items():
                expect(f"{what} {row}", rows[row], reference, 1 if "ToDate" not in row else 31)

            pace = json.loads(run(name, "pace", "--now", f"{text}T15:30", "--json"))
            count, quartiles = known.quartiles(day)
            expect(f"{what} days", pace["dayCount"], count, 0)
            for hour, (lower, median, upper) in enumerate(quartiles):
                expect(f"{what} lower {hour}", pace["lower"][hour], lower)
                expect(f"{what} median {hour}", pace["median"][hour], median)
                expect(f"{what} upper {hour}", pace["upper"][hour], upper)
                if not pace["lower"][hour] <= pace["median"][hour] <= pace["upper"][hour]:
                    faults.append(f"{what}: the band is not around the median at {hour}")
            now = datetime.fromisoformat(f"{text}T15:30").replace(tzinfo=ZoneInfo(name))
            steps = sum(amount for moment, amount in samples
                        if moment < now and moment.astimezone(ZoneInfo(name)).date() == day)
            expect(f"{what} steps", pace["steps"], steps)
            lower, median, upper = (sum(pair) / 2 for pair in zip(quartiles[15], quartiles[16]))
            expect(f"{what} typical", pace["typicalSteps"], median, 1.5)
            status = 1 if upper - lower < 120 else 0 if steps > upper else 2 if steps < lower else 1
            expect(f"{what} status", pace["status"], status, 0)
    print("\n".join(faults) or f"{len(LOOKS)} looks agree with {len(samples)} samples")
    return 1 if faults else 0


if __name__ == "__main__":
    os.umask(0o077)
    sys.exit(main(*sys.argv[1:]))
