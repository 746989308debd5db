"""A long run of the gateway, with something happening to it every few seconds.

usage: run.py BUILD CLOCK-LIBRARY MINUTES SEED FOLDER    writes samples and events into FOLDER
"""
import heapq
import itertools
import os
import random
import signal
import socket
import sys
import tempfile
import time

from stage import LINES, POLL_MS, UNITS, Stage, wait_for
from verdict import verdict
from watch import Account, Samples

MEAN_PAUSE = 2.0  # s between two events
KILLING = 0.2  # part of the time in which the gateway is killed; the rest is one process's
NOISE = ("--drop", "700", "--spoil", "700")
LEFT_ALONE = [signal.SIGCHLD, signal.SIGPIPE, signal.SIGWINCH, signal.SIGURG, signal.SIGCONT]
HOUR, DAY = 3600, 86400
STEPS = (0, 1.5, -1.5, HOUR, -HOUR, DAY, -DAY, 400 * DAY, -9000 * DAY, 3600 * DAY)
SHOWN_WITHIN = 90  # s after a step of the clock a reading has the new time


class Run:
    """What happens in a run, and when."""

    def __init__(self, stage, account, samples, rng, events):
        self.stage, self.account, self.samples, self.rng = stage, account, samples, rng
        self._events = events
        self._later = []
        self._order = itertools.count()
        self._busy = {}
        self.offset = 0.0
        self.unseen = None  # when the clock was put, until a reading shows it
        self.faults = []
        self.counts = {}
        self.kinds = {self.unplug: 6, self.disturb: 3, self.stall_line: 2, self.lose_broker: 3,
                      self.reload: 6, self.reload_wrong: 2, self.move_log: 2, self.step_clock: 5,
                      self.send_signals: 4, self.freeze: 2, self.look_in: 5, self.connect_only: 2}

    def note(self, what):
        self.counts[what] = self.counts.get(what, 0) + 1
        print(f"{self.samples.now():.1f} {what}", file=self._events, flush=True)

    def after(self, seconds, action, *arguments):
        heapq.heappush(self._later, (time.monotonic() + seconds, next(self._order), action, arguments))

    def claim(self, what, seconds):
        """Takes hold of a thing for some time, unless something happens to it already."""
        now = time.monotonic()
        if self._busy.get(what, 0) > now:
            return False
        self._busy[what] = now + seconds + 0.5
        return True

    # What can happen. Each puts things right again by itself, later.

    def unplug(self):
        line, away = self.rng.choice(LINES), self.rng.uniform(0.3, 6)
        if self.claim(line, away):
            self.note("unplugged")
            self.stage.unplug(line)
            self.after(away, self.stage.plug, line)

    def disturb(self):
        line, long = self.rng.choice(LINES), self.rng.uniform(4, 12)
        if self.claim(line, long):
            self.note("noise")
            self.stage.plug(line, *NOISE, "--seed", str(self.rng.randrange(1000)))
            self.after(long, self.stage.plug, line)

    def stall_line(self):
        line, long = self.rng.choice(LINES), self.rng.uniform(0.3, 3)
        if self.claim(line, long):
            self.note("line stalled")
            self.stage.running[line].send_signal(signal.SIGSTOP)
            self.after(long, self.stage.running[line].send_signal, signal.SIGCONT)

    def lose_broker(self):
        away = self.rng.uniform(0.5, 8)
        if self.claim("broker", away + 5):
            self.note("broker away")
            self.stage.set_broker(False)
            self.after(away, self.stage.set_broker, True)

    def reload(self):
        if not self.claim("settings", 1):
            return
        line, unit = self.rng.choice(LINES), self.rng.choice(UNITS)
        meter = f"Meter {line}{unit}"
        changes = ((meter, "PollInterval", self.rng.randint(POLL_MS - 10, POLL_MS + 10)),
                   (meter, "Timeout", self.rng.randint(80, 150)),
                   (f"Line {line}", "TurnAround", self.rng.randint(0, 3)),
                   (f"Line {line}", "Speed", self.rng.choice((9600, 19200))),
                   ("Process", "StatisticsInterval", self.rng.randint(3, 8)))
        self.note("reloaded")
        self.stage.set_option(*self.rng.choice(changes))
        if self.rng.random() < 0.5:
            self.stage.gateway.send_signal(signal.SIGHUP)
        elif self.stage.ask("reload")[1] != 0:
            self.faults.append("good settings were refused")

    def reload_wrong(self):
        if not self.claim("settings", 1):
            return
        self.note("wrong settings")
        self.stage.set_option("Meter roof1", "Unit", "nobody")
        if self.stage.ask("reload")[1] != 1:
            self.faults.append("wrong settings were taken")
        self.stage.set_option("Meter roof1", "Unit", 1)

    def move_log(self):
        if self.claim("log", 30):
            self.note("log moved")
            os.replace(self.stage.log, self.stage.log + ".moved")
            self.stage.gateway.send_signal(signal.SIGHUP)
            self.after(20, self.expect_log)

    def expect_log(self):
        if not os.path.exists(self.stage.log):
            self.faults.append("the log was not opened anew")

    def step_clock(self):
        if self.unseen is not None:
            return
        self.offset = self.rng.choice([step for step in STEPS if step != self.offset])
        self.note("clock put")
        self.stage.set_clock(self.offset)
        self.unseen = time.monotonic()

    def send_signals(self):
        self.note("signals")
        for _ in range(self.rng.randint(1, 50)):
            self.stage.gateway.send_signal(self.rng.choice(LEFT_ALONE))

    def freeze(self):
        self.note("frozen")
        self.stage.gateway.send_signal(signal.SIGSTOP)
        time.sleep(self.rng.uniform(0.2, 2))
        self.stage.gateway.send_signal(signal.SIGCONT)

    def look_in(self):
        line, unit = self.rng.choice(LINES), self.rng.choice(UNITS)
        command = self.rng.choice((("status",), ("--json", "meters"), ("check",),
                                   ("poll", f"{line}{unit}"), ("poll", "nobody"),
                                   ("watch", "-n", "1", "--count", "2")))
        self.note("looked in")
        if self.stage.ask(*command)[1] not in (0, 1):
            self.faults.append(f"gatewayctl {command} found no gateway")

    def connect_only(self):
        """Somebody connects, says half of something and stays, or does not read."""
        self.note("half a request")
        peer = socket.socket(socket.AF_UNIX)
        peer.setblocking(False)
        peer.connect(self.stage.path("gateway.sock"))
        peer.send(self.rng.choice((b"json sta", b"json meters\n" * 200, b"\0" * 1000)))
        self.after(self.rng.uniform(0, 5), peer.close)

    def kill(self):
        self.note("killed")
        self.stage.stop("gateway", signal.SIGKILL)
        self.start_gateway()

    # The course of a run.

    def start_gateway(self):
        self.stage.start_gateway()
        self.samples.begin(self.stage.gateway.pid)
        wait_for("the gateway's socket", lambda: self.stage.ask_json("status") is not None)

    def put_right(self):
        """Ends all that happens at present, and leaves the lines unplugged."""
        while self._later:
            _, _, action, arguments = heapq.heappop(self._later)
            action(*arguments)
        for line in LINES:
            self.stage.unplug(line)
        self.stage.set_broker(True)

    def plug_all(self):
        for line in LINES:
            self.stage.plug(line)

    def run_for(self, seconds, killing=False):
        """Lets things happen, and takes a sample a second."""
        end = time.monotonic() + seconds
        self.after(self.rng.expovariate(1 / MEAN_PAUSE), self.happen)
        kills = int(seconds / 30) + 1 if killing else 0
        for number in range(kills):
            self.after(seconds * (number + self.rng.random()) / kills, self.kill)
        sample = time.monotonic()
        while time.monotonic() < end:
            if time.monotonic() >= sample:
                self.samples.take(self.offset)
                self.look_at_clock()
                sample = max(sample + 1, time.monotonic() + 0.5)
            if self._later and self._later[0][0] <= time.monotonic():
                _, _, action, arguments = heapq.heappop(self._later)
                action(*arguments)
                continue
            due = min(sample, end, self._later[0][0] if self._later else end)
            time.sleep(max(0, due - time.monotonic()))
            if self.stage.gateway.poll() is not None:
                raise RuntimeError(f"the gateway ended with status {self.stage.gateway.returncode}")
        self._later = [entry for entry in self._later
                       if entry[2] not in (self.happen, self.kill)]
        heapq.heapify(self._later)

    def happen(self):
        self.after(self.rng.expovariate(1 / MEAN_PAUSE), self.happen)
        kinds = list(self.kinds)
        self.rng.choices(kinds, [self.kinds[kind] for kind in kinds])[0]()

    def look_at_clock(self):
        if self.unseen is None:
            return
        if abs(self.account.shift - self.offset) < 1:
            self.unseen = None
        elif time.monotonic() - self.unseen > SHOWN_WITHIN:
            self.faults.append(f"no reading shows the clock {self.offset} s ahead")
            self.unseen = None

    def calm(self):
        """Everything plugged, connected, published. @return descriptors and threads then"""
        self.put_right()
        self.plug_all()
        wait_for("all meters answer", lambda: (self.stage.ask_json("status") or {})
                 .get("answering") == len(LINES) * len(UNITS), 150)
        wait_for("all is published", self.stage.is_calm, 120)
        return [self.samples.handles() for _ in range(20) if time.sleep(0.25) is None]


def last_reading(run, probe):
    """The number of the last reading; all lines are unplugged, so that no further one comes."""
    time.sleep(1)
    wait_for("all is published", run.stage.is_calm, 120)
    run.stage.publish("soak/probe", probe)
    wait_for("the subscriber", lambda: run.account.probe == probe)
    return run.account.last or 0


def play(run, seconds):
    """@return what verdict() wants to know of the last process"""
    facts = {}
    run.start_gateway()
    run.run_for(seconds * KILLING, killing=True)
    run.put_right()
    run.kill()
    facts["first"] = last_reading(run, "begin")
    facts["calm before"] = run.calm()
    run.run_for(seconds * (1 - KILLING))
    facts["calm after"] = run.calm()
    run.put_right()
    facts["last"] = last_reading(run, "end")
    meters = [meter["statistics"] for meter in run.stage.ask_json("meters")]
    facts["counted"] = sum(meter["readings"] for meter in meters)
    facts["polls"] = sum(meter["polls"] for meter in meters)
    facts["broker"] = run.stage.ask_json("status")["broker"]
    facts["log"] = sum(os.path.getsize(run.stage.path(name)) for name in os.listdir(run.stage.folder)
                       if name.startswith("gateway.log") and not name.endswith("moved"))
    facts["status"] = run.stage.stop("gateway")
    return facts


def main():
    build, clock_library, minutes, seed, output = sys.argv[1:6]
    with tempfile.TemporaryDirectory() as folder, \
            open(f"{output}/samples", "w", encoding="ascii") as samples, \
            open(f"{output}/events", "w", encoding="ascii") as events:
        stage = Stage(build, clock_library, folder)
        try:
            account = Account(stage.subscriber())
            run = Run(stage, account, Samples(samples, account), random.Random(seed), events)
            facts = play(run, float(minutes) * 60)
        except Exception:
            for name in ("gateway.log", "gateway.out"):
                if os.path.exists(stage.path(name)):
                    with open(stage.path(name), encoding="utf-8", errors="replace") as file:
                        print(f"{name}:", *file.readlines()[-20:], sep="\n", file=sys.stderr)
            raise
        finally:
            stage.stop_all()
    sys.exit(not verdict(run, facts))


if __name__ == "__main__":
    main()
