#!/usr/bin/env python3
"""Imports that are killed, starved and fed nonsense.

imports.py PEDVAR SAMPLE_EXPORT [--kills N] [--seed N] [--big]: both are programs of the build. Each case prints one
line; the last line counts them. Cases that need root (full disk, read-only file system) are skipped without it.
"""

import argparse
import json
import os
import random
import resource
import shutil
import signal
import sqlite3
import subprocess
import sys
import tempfile
import threading
import time
import zipfile
from pathlib import Path

MEBIBYTE = 1 << 20
MEMORY_LIMIT = 100 * MEBIBYTE

arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
arguments.add_argument("pedvar", type=Path)
arguments.add_argument("sample_export", type=Path)
arguments.add_argument("--kills", type=int, default=200)
arguments.add_argument("--seed", type=int, default=1)
arguments.add_argument("--big", action="store_true", help="300 MB and 10 GB files too")
options = arguments.parse_args()
random.seed(options.seed)
passed, failed, skipped = [], [], []


class Fault(Exception):
    pass


def expect(condition, text):
    if not condition:
        raise Fault(text)


def command(data, *words):
    return [str(options.pedvar), "--data", str(data), *map(str, words)]


def processor_of_children():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def run(data, *words, environment=None):
    """The finished process with its output, its seconds on the clock and of the processor, and its peak memory in
    bytes."""
    start, before = time.monotonic(), processor_of_children()
    process = subprocess.Popen(command(data, *words), stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                               env={**os.environ, **(environment or {})})
    output = {}
    readers = [threading.Thread(target=lambda n=n, f=f: output.update({n: f.read()}))
               for n, f in (("out", process.stdout), ("err", process.stderr))]
    for reader in readers:
        reader.start()
    # What the kernel reports at the end includes the memory of this program before the other one was loaded.
    memory = 0
    while process.poll() is None:
        memory = max(memory, peak_memory(process.pid))
        time.sleep(0.005)
    for reader in readers:
        reader.join()
    process.stdout.close(), process.stderr.close()
    process.out, process.err = output["out"], output["err"]
    process.seconds, process.memory = time.monotonic() - start, memory
    process.processor = processor_of_children() - before  # whatever else the machine does meanwhile
    return process


def peak_memory(process):
    """Bytes; 0 when the process has just ended."""
    try:
        status = Path(f"/proc/{process}/status").read_text()
    except OSError:
        return 0
    line = next((line for line in status.splitlines() if line.startswith("VmHWM")), "VmHWM: 0 kB")
    return int(line.split()[1]) * 1024


def contents(data):
    """Everything that a store holds, with names in place of numbers."""
    database = sqlite3.connect(f"file:{data}/health.sqlite?mode=ro", uri=True)
    sources = "(select id, kind || '|' || name || '|' || hardware as text from sources)"
    series = "(select id, identifier || '|' || unit as text from series)"
    rows = {
        "samples": f"select t.text, start, duration, s.text, value from samples join {series} t on t.id = series "
                   f"join {sources} s on s.id = source order by 1, 2, 3, 4, 5",
        "totals": f"select t.text, day, sums from totals join {series} t on t.id = series order by 1, 2",
        "stale": "select count(*) from totals where sums is null",
        "workouts": f"select activity, start, end, s.text, distance from workouts "
                    f"join {sources} s on s.id = source order by 1, 2, 3",
        "routes": "select name, size, deflated from workout_routes order by 1",
        "order": "select name, kind from sources order by position",
    }
    found = {name: database.execute(query).fetchall() for name, query in rows.items()}
    expect(database.execute("pragma integrity_check").fetchall() == [("ok",)], "the store is damaged")
    database.close()
    return found


def same(left, right):
    for name in left:
        expect(left[name] == right[name], f"{name} differ ({len(left[name])} and {len(right[name])} rows)")


def make_export(folder, *words):
    subprocess.run([str(options.sample_export), "--out", str(folder), "--end", "2024-11-03", *words], check=True)
    return folder / "health_export"


def case(text, needs_root=False):
    """Runs the function that follows in a folder of its own."""
    def decorate(function):
        if needs_root and os.geteuid() != 0:
            skipped.append(text)
            print(f"skipped  {text} (needs root)")
            return function
        with tempfile.TemporaryDirectory(prefix="pedvar-soak-") as folder:
            start = time.monotonic()
            try:
                detail = function(Path(folder)) or ""
                passed.append(text)
                print(f"passed   {text} ({time.monotonic() - start:.1f} s) {detail}", flush=True)
            except Fault as fault:
                failed.append(text)
                print(f"FAILED   {text}: {fault}", flush=True)
        return function
    return decorate


work = Path(tempfile.mkdtemp(prefix="pedvar-soak-"))
export = make_export(work, "--dense", "--days", "120")
clean = run(work / "clean", "import", export, "--json")
if clean.returncode != 0:
    sys.exit(f"the clean import failed: {clean.out}{clean.err}")
reference = contents(work / "clean")


@case(f"{options.kills} kills at random moments, then one full run, give the store of one clean import")
def kills(folder):
    data, killed = folder / "data", 0
    for round_number in range(options.kills):
        process = subprocess.Popen(command(data, "import", export), stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        time.sleep(random.uniform(0, clean.seconds))
        process.send_signal(signal.SIGKILL)
        killed += process.wait() == -signal.SIGKILL
        if round_number % 20 == 19:  # a fresh store now and then, so that early moments are met on one
            expect(run(data, "import", export, "--json").returncode == 0, "the full run failed")
            same(contents(data), reference)
            shutil.rmtree(data)
    expect(killed > options.kills / 2, f"only {killed} runs were hit")
    return f"{killed} hit a running import"


@case("kills at named points, then one full run, give the store of one clean import")
def named_kills(folder):
    hit = 0
    for point in ("batch written", "before totals", "totals written", "after totals"):
        for count in (1, 2, 3):
            data = folder / f"{point} {count}"
            process = run(data, "import", export, environment={"PEDVAR_FAULT_AT": f"{point}:{count}"})
            hit += process.returncode == -signal.SIGKILL
            expect(run(data, "import", export, "--json").returncode == 0, "the full run failed")
            same(contents(data), reference)
    expect(hit >= 4, f"only {hit} points were met: is this a build with fault points?")
    return f"{hit} points met"


@case("two imports at once both end well, and the store is that of one")
def two_at_once(folder):
    running = [subprocess.Popen(command(folder / "data", "import", export, "--json"), stdout=subprocess.PIPE)
               for _ in range(2)]
    reports = [json.loads(process.communicate()[0]) for process in running]
    expect(all(process.returncode == 0 for process in running), f"an import failed: {reports}")
    expect(sum(r["added"] for r in reports) == len(reference["samples"]), "not every sample was added once")
    same(contents(folder / "data"), reference)


@case("`today` in a loop during an import always answers, with sums that only grow")
def read_while_writing(folder):
    data = folder / "data"
    process = subprocess.Popen(command(data, "import", export), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    answers = []
    while process.poll() is None:
        look = run(data, "week", "2024-10-30", "--json")
        expect(look.returncode == 0, f"exit {look.returncode}: {look.out}")
        answers.append(json.loads(look.out)["totalSteps"])
    expect(process.returncode == 0 and len(answers) > 3, f"{len(answers)} answers")
    last = json.loads(run(data, "week", "2024-10-30", "--json").out)["totalSteps"]
    expect(answers[-1] <= last and last > 0, "the last answer is beyond the end")
    return f"{len(answers)} answers"


@case("a truncated file keeps what was readable and exits 1")
def truncated(folder):
    copy = folder / "cut.xml"
    shutil.copy(export / "export.xml", copy)
    os.truncate(copy, int(copy.stat().st_size * 0.7))
    process = run(folder / "data", "import", copy, "--json")
    report = json.loads(process.out)
    expect(process.returncode == 1 and report["added"] > 0 and "error" in report, process.out[:300])
    expect(run(folder / "data", "import", export, "--json").returncode == 0, "the whole file failed afterwards")
    same(contents(folder / "data"), reference)


@case("a file with 1,000 bad bytes is read to its end, and the repairs are counted")
def bad_bytes(folder):
    text = bytearray((export / "export.xml").read_bytes())
    start = text.index(b"<Record")
    for _ in range(1000):
        text[random.randrange(start, len(text))] = random.choice([0x0B, 0x00, 0xFF, 0xC3, 0x1F])
    (folder / "bad.xml").write_bytes(text)
    process = run(folder / "data", "import", folder / "bad.xml", "--json")
    report = json.loads(process.out)
    expect(process.returncode in (0, 1), f"exit {process.returncode}")
    whole = len(reference["samples"])
    expect(report["added"] > whole - 3000, f"{report['added']} of {whole} samples: {report['skipped']}")
    return f"{whole - report['added']} samples lost"


@case("a full disk leaves whole batches, one message, and a store that goes on when there is room", needs_root=True)
def full_disk(folder):
    subprocess.run(["mount", "-t", "tmpfs", "-o", "size=6m", "tmpfs", folder], check=True)
    try:
        process = run(folder / "data", "import", export, "--json")
        expect(process.returncode == 1, f"exit {process.returncode}")
        expect(json.loads(process.out)["error"]["kind"] == "full", process.out[:300])
        subprocess.run(["mount", "-o", "remount,size=200m", folder], check=True)
        expect(run(folder / "data", "import", export, "--json").returncode == 0, "no import after room was made")
        same(contents(folder / "data"), reference)
    finally:
        subprocess.run(["umount", folder], check=True)


@case("a store on a read-only file system is read, and writing to it is refused with one message", needs_root=True)
def read_only(folder):
    subprocess.run(["mount", "-t", "tmpfs", "-o", "size=200m", "tmpfs", folder], check=True)
    try:
        shutil.copytree(work / "clean", folder / "data")
        subprocess.run(["mount", "-o", "remount,ro", folder], check=True)
        look = run(folder / "data", "week", "2024-10-30", "--json")
        expect(look.returncode == 0 and json.loads(look.out)["totalSteps"] > 0, look.out[:300])
        process = run(folder / "data", "import", export, "--json")
        expect(process.returncode == 1 and json.loads(process.out)["error"]["kind"] == "unwritable", process.out[:300])
    finally:
        subprocess.run(["umount", folder], check=True)


@case("a zip that unpacks to gigabytes of one tag or of nothing ends with one message, in bounded memory")
def zip_bomb(folder):
    for name, body in (("tag", b"<Record type=\"" + b"a" * MEBIBYTE), ("space", b" " * MEBIBYTE)):
        bomb = folder / f"{name}.zip"
        with zipfile.ZipFile(bomb, "w", zipfile.ZIP_DEFLATED) as archive:
            with archive.open("export.xml", "w", force_zip64=True) as entry:
                entry.write(b"<?xml version=\"1.0\"?><HealthData locale=\"en_GB\">")
                for _ in range(3000):
                    entry.write(body)
        process = run(folder / "data", "import", bomb, "--json")
        expect(process.returncode == 1 and "error" in json.loads(process.out), process.out[:300])
        expect(process.memory < MEMORY_LIMIT, f"{process.memory / MEBIBYTE:.0f} MiB")
        expect(process.processor < 60, f"{process.processor:.0f} s")


if options.big:
    @case("a 300 MB export is read within 100 MiB; cut in the middle it keeps what was readable")
    def big(folder):
        huge = make_export(folder, "--dense", "--days", "1826") / "export.xml"
        process = run(folder / "data", "import", huge, "--json")
        expect(process.returncode == 0, process.out[:300])
        expect(process.memory < MEMORY_LIMIT, f"{process.memory / MEBIBYTE:.0f} MiB")
        detail = f"{huge.stat().st_size / 1e6:.0f} MB, {process.memory / MEBIBYTE:.0f} MiB"
        os.truncate(huge, huge.stat().st_size // 2 + 17)
        process = run(folder / "cut", "import", huge, "--json")
        report = json.loads(process.out)
        expect(process.returncode == 1 and report["added"] > 100_000 and "error" in report, process.out[:300])
        return detail

    @case("10 GB of sparse nonsense end with one message, in bounded time and memory")
    def sparse(folder):
        for name, head in (("nothing.xml", b""), ("begun.xml", b"<HealthData locale=\"en\">")):
            with open(folder / name, "wb") as file:
                file.write(head)
                file.truncate(10 << 30)
            process = run(folder / "data", "import", folder / name, "--json")
            expect(process.returncode == 1 and "error" in json.loads(process.out), process.out[:300])
            expect(process.memory < MEMORY_LIMIT, f"{process.memory / MEBIBYTE:.0f} MiB")
            expect(process.processor < 120, f"{process.processor:.0f} s")


shutil.rmtree(work)
print(f"{len(passed)} passed, {len(failed)} failed, {len(skipped)} skipped")
sys.exit(1 if failed else 0)
