"""The programs of a long run: a broker, two lines with two simulated meters each, the gateway that
polls them, and a clock of the gateway's own."""
import json
import mmap
import os
import signal
import socket
import struct
import subprocess
import time

LINES = ("cellar", "roof")
UNITS = (1, 2)
POLL_MS = 50

SETTINGS = """# Settings of a long run.
{lines}{meters}[Mqtt]
Host=127.0.0.1
Port={port}
Prefix=soak
Qos=1

[Store]
File={folder}/store
WriteInterval=2

[Process]
PidFile={folder}/gateway.pid
ControlSocket={folder}/gateway.sock
StatisticsInterval=5
"""
LINE = "[Line {name}]\nDevice={folder}/{name}\nSpeed=9600\nTurnAround=0\n\n"
METER = ("[Meter {line}{unit}]\nLine={line}\nUnit={unit}\nPollInterval={poll}\nTimeout=100\n"
         "Map=simulated\n\n")


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_for(what, holds, seconds=60):
    """Waits until something holds, and raises when it never does."""
    deadline = time.monotonic() + seconds
    while not holds():
        if time.monotonic() > deadline:
            raise TimeoutError(f"waited {seconds} s in vain: {what}")
        time.sleep(0.1)


class Stage:
    """Starts and stops the programs. All files are in one folder."""

    def __init__(self, build, clock_library, folder):
        self.build, self.folder, self.clock_library = build, folder, clock_library
        self.port = free_port()
        self.running = {}
        self.log = self.path("gateway.log")
        self._make_clock()
        self._write_settings()
        self.set_broker(True)
        self.devices = {}
        for line in LINES:
            self._start_meters(line)
            self.plug(line)

    def path(self, name):
        return os.path.join(self.folder, name)

    def program(self, name):
        folder = "tools" if name in ("linesim", "inictl") else "examples"
        return os.path.join(self.build, folder, name, f"{name}.bin")

    def _make_clock(self):
        with open(self.path("clock"), "wb+") as file:
            file.write(struct.pack("=q", 0))
            file.flush()
            self.clock = mmap.mmap(file.fileno(), 8)

    def set_clock(self, seconds):
        """Puts the gateway's time of day so far ahead."""
        self.clock[:8] = struct.pack("=q", int(seconds * 1e9))

    def _write_settings(self):
        lines = "".join(LINE.format(name=name, folder=self.folder) for name in LINES)
        meters = "".join(METER.format(line=line, unit=unit, poll=POLL_MS)
                         for line in LINES for unit in UNITS)
        with open(self.path("gateway.ini"), "w", encoding="ascii") as file:
            file.write(SETTINGS.format(lines=lines, meters=meters, port=self.port,
                                       folder=self.folder))
        with open(self.path("broker.conf"), "w", encoding="ascii") as file:
            file.write(f"listener {self.port} 127.0.0.1\nallow_anonymous true\nuser root\n"
                       f"persistence true\npersistence_location {self.folder}/\n"
                       "max_queued_messages 0\nset_tcp_nodelay true\n")

    def _start(self, name, command, **options):
        with open(self.path(f"{name}.out"), "ab") as output:
            self.running[name] = subprocess.Popen(command, stdin=subprocess.DEVNULL,
                                                  **{"stdout": output, "stderr": output, **options})
        return self.running[name]

    def stop(self, name, number=signal.SIGTERM):
        """Ends a program. @return its status"""
        process = self.running.pop(name, None)
        if process is None:
            return None
        process.send_signal(signal.SIGCONT)
        process.send_signal(number)
        return process.wait(60)

    def stop_all(self):
        for name in list(self.running):
            self.stop(name, signal.SIGKILL)

    def set_broker(self, is_there):
        if is_there and "broker" not in self.running:
            self._start("broker", ("/usr/sbin/mosquitto", "-c", self.path("broker.conf")))
        elif not is_there:
            self.stop("broker")

    def subscriber(self):
        """A subscriber whose session outlives the broker's absences; its lines are TOPIC PAYLOAD."""
        return self._start("subscriber", ("mosquitto_sub", "-h", "127.0.0.1", "-p", str(self.port),
                                          "-q", "1", "-i", "soak-watch", "-c", "-v", "-t", "soak/#"),
                           stdout=subprocess.PIPE)

    def _start_meters(self, line):
        process = self._start(f"meters {line}", (self.program("meter"), "--units",
                                                 f"{UNITS[0]}-{UNITS[-1]}"),
                              stdout=subprocess.PIPE)
        self.devices[line] = process.stdout.readline().decode().strip()

    def plug(self, line, *disturbance):
        """Connects the meters of a line, by a cable that may disturb what passes."""
        self.unplug(line)
        self._start(line, (self.program("linesim"), "--join", "-l", self.path(line), "-d",
                           self.devices[line], *disturbance))
        wait_for(f"the cable of {line}", lambda: os.path.exists(self.path(line)))

    def unplug(self, line):
        self.stop(line)

    def start_gateway(self):
        environment = dict(os.environ, LD_PRELOAD=self.clock_library,
                           SHIFTED_CLOCK=self.path("clock"))
        return self._start("gateway", (self.program("gateway"), "-c", self.path("gateway.ini"),
                                       "--verbose", "--log", self.log), env=environment)

    @property
    def gateway(self):
        return self.running["gateway"]

    def set_option(self, section, option, value):
        subprocess.run((self.program("inictl"), "set", self.path("gateway.ini"), section, option,
                        str(value)), check=True, stdin=subprocess.DEVNULL)

    def ask(self, *command):
        """What gatewayctl prints, and its status."""
        result = subprocess.run((self.program("gatewayctl"), "-s", self.path("gateway.sock"),
                                 *command), capture_output=True, text=True, check=False, timeout=60)
        return result.stdout, result.returncode

    def ask_json(self, command):
        """The answer of the gateway, None when there is none."""
        output, status = self.ask("--json", command)
        return json.loads(output) if status == 0 else None

    def publish(self, topic, text):
        subprocess.run(("mosquitto_pub", "-h", "127.0.0.1", "-p", str(self.port), "-q", "1", "-t",
                        topic, "-m", text), check=True, stdin=subprocess.DEVNULL)

    def is_calm(self):
        """Whether the gateway is connected and everything is published."""
        status = self.ask_json("status")
        broker = status and status["broker"]
        return bool(broker) and broker["connected"] and broker["waiting"] == 0
