"""Those who look on: a subscriber that accounts for every reading, and the samples of a process."""
import datetime
import json
import os
import threading
import time

REMEMBERED = 50000  # readings, to compare repetitions with


class Account:
    """Takes the lines of a subscriber, on a thread of its own."""

    def __init__(self, process):
        self.readings = self.repetitions = 0
        self.gaps, self.conflicts = [], []
        self.last = None  # the highest number
        self.shift = 0.0  # s by which the newest reading's time is ahead of ours
        self.probe = ""  # the newest message to this topic, which comes behind all readings before it
        self._contents = {}
        self._thread = threading.Thread(target=self._read, args=(process.stdout,), daemon=True)
        self._thread.start()

    def _read(self, stream):
        for line in stream:
            topic, _, payload = line.strip().partition(b" ")
            if topic == b"soak/probe":
                self.probe = payload.decode()
            if topic.endswith(b"/reading"):
                self._take(payload)

    def _take(self, payload):
        reading = json.loads(payload)
        number = reading["seq"]
        if self.last is not None and number <= self.last:
            self.repetitions += 1
            if self._contents.get(number, hash(payload)) != hash(payload):
                self.conflicts.append(number)
            return
        if self.last is not None and number != self.last + 1:
            self.gaps.append((self.last, number))
        self.last = number
        self.readings += 1
        self._contents[number] = hash(payload)
        self._contents.pop(number - REMEMBERED, None)
        taken = datetime.datetime.fromisoformat(reading["time"].replace("Z", "+00:00"))
        self.shift = taken.timestamp() - time.time()


def _fields(path, names):
    found = {}
    with open(path, encoding="ascii", errors="replace") as file:
        for line in file:
            name, _, value = line.partition(":")
            if name in names:
                found[name] = int(value.split()[0])
    return found


class Samples:
    """Memory, descriptors, threads, wake-ups and processor time of one process after the other."""

    HEADER = "seconds process rss_kib own_kib descriptors threads wakeups cpu_ms readings offset_s"

    def __init__(self, file, account):
        self.rows, self._file, self._account = [], file, account
        self.begun = time.monotonic()
        self.process = self.wakeups = 0  # number and wake-ups of the present process
        self._pid = self._before = None
        print(self.HEADER, file=file)

    def now(self):
        return time.monotonic() - self.begun

    def begin(self, pid):
        """From now on another process is looked at."""
        self._pid, self._before = pid, None
        self.process += 1
        self.wakeups = 0

    def _threads(self):
        """Of each thread how often it waited, and its processor time in ms."""
        folder = f"/proc/{self._pid}/task"
        for thread in os.listdir(folder):
            try:
                waited = _fields(f"{folder}/{thread}/status", ("voluntary_ctxt_switches",))
                with open(f"{folder}/{thread}/schedstat", encoding="ascii") as file:
                    yield thread, (sum(waited.values()), int(file.read().split()[0]) / 1e6)
            except OSError:  # it has ended meanwhile
                continue

    def handles(self):
        """How many descriptors and threads there are now."""
        return len(os.listdir(f"/proc/{self._pid}/fd")), len(os.listdir(f"/proc/{self._pid}/task"))

    def take(self, offset):
        """Adds a row with what happened since the last one."""
        memory = _fields(f"/proc/{self._pid}/smaps_rollup", ("Rss", "Private_Clean", "Private_Dirty"))
        now = (self.now(), dict(self._threads()), self._account.readings)
        if self._before:
            self._add(memory, now, offset)
        self._before = now

    def _add(self, memory, now, offset):
        before = self._before
        seconds = now[0] - before[0]
        wakeups, cpu = (sum(figures[n] - before[1].get(thread, (0, 0))[n]
                            for thread, figures in now[1].items()) for n in (0, 1))
        self.wakeups += wakeups
        row = (now[0], self.process, memory["Rss"],
               memory["Private_Clean"] + memory["Private_Dirty"], *self.handles(),
               wakeups / seconds, cpu / seconds, (now[2] - before[2]) / seconds, offset)
        self.rows.append(row)
        print(*(f"{value:.1f}" if isinstance(value, float) else value for value in row),
              file=self._file, flush=True)
