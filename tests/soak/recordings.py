#!/usr/bin/env python3
"""Recordings that are killed and gone on with.

recordings.py PEDVAR [--kills N] [--seed N]: the program of a build with fault points. A replayed walk is killed N times,
each time at another moment, and gone on with until it is in the history. As root, another one meets a full disk.
"""

import argparse
import json
import math
import os
import random
import shutil
import signal
import sqlite3
import subprocess
import sys
import tempfile
from datetime import datetime, timedelta, timezone
from pathlib import Path

MOST_LOST = 5  # seconds
POINTS = ("session in history", "before workout", "workout saved", "replay in history")

arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
arguments.add_argument("pedvar", type=Path)
arguments.add_argument("--kills", type=int, default=100)
arguments.add_argument("--seed", type=int, default=1)
options = arguments.parse_args()
random.seed(options.seed)
work = Path(tempfile.mkdtemp(prefix="pedvar-soak-"))
track = work / "walk.gpx"
failures = []


def write_track(seconds):
    """A walk with a bend, a hill and two rests."""
    start = datetime(2024, 5, 1, 6, 30, tzinfo=timezone.utc)
    latitude, longitude = 52.5, 13.4
    with open(track, "w") as file:
        file.write('<?xml version="1.0"?><gpx version="1.1" creator="soak"><trk><trkseg>\n')
        for second in range(seconds):
            rests = 600 <= second < 660 or 1500 <= second < 1530
            if not rests:
                heading = second / 400
                latitude += 1.4 * math.cos(heading) / 111_000
                longitude += 1.4 * math.sin(heading) / 67_600
            height = 40 + 25 * math.sin(second / 300)
            moment = (start + timedelta(seconds=second)).strftime("%Y-%m-%dT%H:%M:%SZ")
            file.write(f'<trkpt lat="{latitude:.7f}" lon="{longitude:.7f}"><ele>{height:.2f}</ele>'
                       f"<time>{moment}</time></trkpt>\n")
        file.write("</trkseg></trk></gpx>\n")


def command(data, *words):
    return [str(options.pedvar), "--data", str(data), *map(str, words)]


def record(data, kill_after=None, point=None):
    """(whether it was killed, its lines); killed when so many lines were read, or at a point of the program."""
    environment = {**os.environ, **({"PEDVAR_FAULT_AT": point} if point else {})}
    process = subprocess.Popen(command(data, "record", "walk", "--replay", track, "--save", "--json"),
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, env=environment)
    lines = []
    for line in process.stdout:
        if not line.endswith("\n"):
            break  # cut off
        lines.append(json.loads(line))
        if len(lines) == kill_after:
            process.kill()
    status = process.wait()
    if status not in (0, -signal.SIGKILL):
        sys.exit(f"exit {status}: {lines[-1:]}")
    return status == -signal.SIGKILL, lines


def look(data, *words):
    return json.loads(subprocess.run(command(data, *words, "--json"), stdout=subprocess.PIPE, check=True).stdout)


def activity(data):
    """The only one that is there."""
    found = look(data, "activities")["activities"]
    if len(found) != 1:
        sys.exit(f"{len(found)} activities in {data}")
    return found[0]


def workouts(data):
    database = sqlite3.connect(f"file:{data}/health.sqlite?mode=ro", uri=True)
    return database.execute("select count(*) from workouts").fetchone()[0]


def check(condition, text):
    if not condition:
        failures.append(text)
        print(f"FAILED   {text}", flush=True)


def moment(line):
    return datetime.fromisoformat(line["time"])


def kill_and_go_on():
    _, lines = record(work / "whole")
    whole = activity(work / "whole")
    seconds = len(lines) - 1
    data = work / "killed"
    rounds, kills, at_points, lost, widest = 0, 0, 0, 0, {}
    while kills < options.kills:
        rounds += 1
        shutil.rmtree(data, ignore_errors=True)
        in_round, before = 0, None
        while True:
            point = f"{random.choice(POINTS)}:1" if random.random() < 0.2 else None
            after = None if point or random.random() < 0.1 else random.randrange(1, seconds)
            was_killed, lines = record(data, after, point)
            status = [line for line in lines if "state" in line]
            if before and status:
                gone = (before - moment(status[0])).total_seconds() + 1
                lost = max(lost, gone)
                check(gone <= MOST_LOST, f"round {rounds}: {gone:.0f} s were lost")
            before = moment(status[-1]) if status else before
            if not was_killed:
                break
            in_round += 1
            at_points += point is not None
        kills += in_round
        found = activity(data)
        for key in ("id", "startTime", "endTime", "duration", "activityType", "steps"):
            check(found[key] == whole[key], f"round {rounds}: {key} is {found[key]} instead of {whole[key]}")
        for key in ("distance", "calories", "averagePace", "points", "elevationGain", "elevationLoss"):
            widest[key] = max(widest.get(key, 0), abs(found[key] - whole[key]) / max(1, in_round))
        check(workouts(data) == 1, f"round {rounds}: {workouts(data)} workouts")
        check(not (data / "replay").exists(), f"round {rounds}: the replay's folder is left")
    differences = ", ".join(f"{key} {value:.3g}" for key, value in widest.items())
    print(f"{kills} kills of {rounds} walks, {at_points} of them at named points; at most {lost:.0f} s lost; "
          f"the results differ per kill by at most: {differences}", flush=True)
    check(at_points > kills / 20, f"{at_points} points were met: is this a build with fault points?")
    # A recording that goes on begins with a first point: the way to it is not counted, and altitudes have no
    # reference yet: up to two steps of 5 m, the accuracy of the altitudes, are seen more or less.
    check(widest["distance"] < 3 and widest["points"] <= 1, "a kill costs more than the way between two fixes")
    check(max(widest["elevationGain"], widest["elevationLoss"]) < 12, "a kill costs more climbing than it may")


def meet_full_disk():
    folder = work / "small"
    folder.mkdir()
    subprocess.run(["mount", "-t", "tmpfs", "-o", "size=2m", "tmpfs", folder], check=True)
    try:
        process = subprocess.Popen(command(folder / "data", "record", "walk", "--gpsd", "localhost:1", "--json"),
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

        def wait_for(condition):
            for line in process.stdout:
                if condition(json.loads(line)):
                    return
            sys.exit("the recording ended")

        wait_for(lambda line: line["state"] == "recording")
        try:
            (folder / "filler").write_bytes(bytes(4 << 20))
        except OSError:
            pass
        wait_for(lambda line: line["storageProblem"] is not None)
        (folder / "filler").unlink()
        wait_for(lambda line: line["storageProblem"] is None)
        process.terminate()
        out, err = process.communicate()
        left = json.loads(out.splitlines()[-1])
        told = [line for line in err.splitlines() if "stored" in line]
        check(process.returncode == 0 and len(told) == 2, f"exit {process.returncode}, told {err}")
        finished = look(folder / "data", "record", "--finish")
        check(finished["duration"] == left["duration"], f"{finished['duration']} s of {left['duration']} s are kept")
        print("a recording goes on through a full disk:", *told, sep="\n    ", flush=True)
    finally:
        subprocess.run(["umount", folder], check=True)


write_track(3600)
kill_and_go_on()
if os.geteuid() == 0:
    meet_full_disk()
shutil.rmtree(work)
print("failed" if failures else "passed")
sys.exit(1 if failures else 0)
