#!/usr/bin/env python3
"""What becomes of the logs of real receivers: through gpsd into a recording.

receivers.py PEDVAR LOG...: each log of NMEA sentences is spoken into a serial line of its own at its own pace, all at
once; the clock in its sentences is set to now, and gaps are shortened. One line a log: fixes that gpsd told, the moments
that they are of, points of the recorded route, metres, and what the recorder said.
"""

import json
import os
import pty
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import tty
from concurrent.futures import ThreadPoolExecutor
from functools import reduce
from pathlib import Path

LONGEST_GAP = 5  # seconds
TIME_FIELD = {"RMC": 1, "GGA": 1, "GNS": 1, "ZDA": 1, "GBS": 1, "GST": 1, "GRS": 1, "GLL": 5}

pedvar = Path(sys.argv[1]).resolve()


def checksum(body):
    return b"%02X" % reduce(lambda sum, byte: sum ^ byte, body, 0)


def seconds(text):
    return int(text[:2]) * 3600 + int(text[2:4]) * 60 + float(text[4:])


def epochs(log):
    """[(seconds since the first, [lines])]: what is said in one go."""
    groups, last, at = [(0.0, [])], None, 0.0
    for line in log.read_bytes().splitlines():
        found = re.fullmatch(rb"\$(..(...),[^*]*)(\*..)?\s*", line)
        if not found:
            continue
        field = TIME_FIELD.get(found[2].decode(errors="replace"))
        fields = found[1].split(b",")
        if field and len(fields) > field and re.fullmatch(rb"\d{6}(\.\d+)?", fields[field]):
            moment = seconds(fields[field])
            if last is not None and moment != last:
                step = moment - last
                at += min(step, LONGEST_GAP) if step > 0 else 1
                groups.append((at, []))
            last = moment
        groups[-1][1].append(line)
    return groups if len(groups) > 1 else pieces(log)


def pieces(log):
    """The same of a log in a receiver's own binary language, whose clock stays as it is."""
    said = re.sub(rb"\A(#.*\n)+", b"", log.read_bytes())
    return [(at / 1000, [said[at:at + 200]]) for at in range(0, len(said), 200)]


def retimed(line, moment):
    """The sentence with the clock of `moment`; one whose checksum is wrong stays so, as does what is none."""
    if not line.startswith(b"$"):
        return line
    body, star, sum = line[1:].partition(b"*")
    if star and sum.strip().upper() != checksum(body):
        return line + b"\r\n"
    fields = body.split(b",")
    kind = fields[0][2:].decode(errors="replace")
    field = TIME_FIELD.get(kind)
    utc = time.gmtime(moment)
    if field and len(fields) > field and fields[field]:
        fields[field] = b"%s%03d" % (time.strftime("%H%M%S.", utc).encode(), int(moment % 1 * 1000))
    if kind == "RMC" and len(fields) > 9 and fields[9]:
        fields[9] = time.strftime("%d%m%y", utc).encode()
    if kind == "ZDA" and len(fields) > 4 and fields[2]:
        fields[2:5] = time.strftime("%d,%m,%Y", utc).encode().split(b",")
    body = b",".join(fields)
    return b"$" + body + (b"*" + checksum(body) if star else b"") + b"\r\n"


def count_fixes(port, counts):
    client = socket.create_connection(("127.0.0.1", port))
    client.sendall(b'?WATCH={"enable":true,"json":true};\n')
    for line in client.makefile():
        report = json.loads(line)
        if report["class"] == "TPV" and report.get("mode", 0) >= 2 and "lat" in report:
            counts.append(report.get("time"))


def through(log):
    receiver, machine = pty.openpty()
    tty.setraw(machine)
    device = os.ttyname(machine)
    os.chmod(device, 0o666)  # gpsd gives up the rights of root
    with socket.socket() as free:
        free.bind(("127.0.0.1", 0))
        port = free.getsockname()[1]
    quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    gpsd = subprocess.Popen(["/usr/sbin/gpsd", "-N", "-n", "-S", str(port), device], **quiet)
    data = tempfile.mkdtemp(prefix="pedvar-receivers-")
    base = [str(pedvar), "--data", data, "record"]
    recording = subprocess.Popen([*base, "walk", "--json", "--gpsd", f"127.0.0.1:{port}"],
                                 stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    said, counts = [], []
    threading.Thread(target=lambda: said.extend(recording.stderr), daemon=True).start()
    time.sleep(5)
    threading.Thread(target=count_fixes, args=(port, counts), daemon=True).start()
    time.sleep(1)
    start = time.time()
    for at, lines in epochs(log):
        time.sleep(max(0, start + at - time.time()))
        for line in lines:
            os.write(receiver, retimed(line, start + at))
    time.sleep(5)
    recording.send_signal(signal.SIGINT)
    recording.wait()
    finished = subprocess.run([*base, "--finish", "--json"], capture_output=True, text=True)
    gpsd.kill()
    gpsd.wait()
    os.close(receiver)
    os.close(machine)
    activity = json.loads(finished.stdout)
    told = [line.strip() for line in said if "step counter" not in line]
    return (log.name, len(counts), len(set(counts)), activity["points"], round(activity["distance"], 1), told)


logs = [Path(name) for name in sys.argv[2:]]
with ThreadPoolExecutor(len(logs)) as pool:
    for row in pool.map(through, logs):
        print(*row, sep="\t", flush=True)
