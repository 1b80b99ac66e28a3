"""The release programs as processes, on loopback, with a state of their own."""
import http.client
import json
import os
import pathlib
import re
import signal
import socket
import ssl
import subprocess
import tempfile
import time
import urllib.parse

IDLE, BUFFERING, PLAYING, PAUSED = range(4)


def wait_until(holds, what, seconds=30.0, pause=0.002):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        value = holds()
        if value:
            return value
        time.sleep(pause)
    raise TimeoutError(f"waited in vain for {what}")


class Program:
    def __init__(self, command, log):
        self.log = pathlib.Path(log)
        with open(log, "wb") as file:
            self.started = time.monotonic()
            self.process = subprocess.Popen(
                command, stdin=subprocess.DEVNULL, stdout=file, stderr=subprocess.STDOUT)
        self.pid = self.process.pid

    def says(self, pattern, seconds=60.0):
        def found():
            if self.process.poll() is not None:
                raise RuntimeError(f"it has ended:\n{self.log.read_text()[-2000:]}")
            return re.search(pattern, self.log.read_text(errors="replace"))
        return wait_until(found, pattern, seconds, pause=0.0005)

    def stop(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
        self.process.wait(20)

    def rss_kib(self):
        status = pathlib.Path(f"/proc/{self.pid}/status").read_text()
        return int(re.search(r"VmRSS:\s+(\d+)", status).group(1))

    def context_switches(self):
        """Of each thread, by its name and number."""
        switches = {}
        for task in pathlib.Path(f"/proc/{self.pid}/task").iterdir():
            status = (task / "status").read_text()
            name = re.search(r"Name:\s+(.*)", status).group(1)
            counts = re.findall(r"ctxt_switches:\s+(\d+)", status)
            switches[f"{name} {task.name}"] = sum(map(int, counts))
        return switches


class Connection:
    """One kept connection that speaks JSON."""

    def __init__(self, url):
        parts = urllib.parse.urlsplit(url)
        self.base = parts.path.rstrip("/")
        self.http = http.client.HTTPConnection(parts.hostname, parts.port, timeout=60)

    def ask(self, method, path, body=None):
        content = None if body is None else json.dumps(body)
        headers = {"Content-Type": "application/json"} if content else {}
        self.http.request(method, f"{self.base}/{path}", content, headers)
        answer = self.http.getresponse()
        return answer.status, json.loads(answer.read() or b"null")

    def told(self, method, path, body=None):
        status, answer = self.ask(method, path, body)
        if status != 200:
            raise RuntimeError(f"{path}: {status} {answer}")
        return answer


class ServiceExchange:
    """One kept connection to the service through a port; a report's exchange, as bare as can be."""

    def __init__(self, service, port):
        host = urllib.parse.urlsplit(service["baseUrl"]).hostname
        context = ssl.create_default_context(cafile=service["caFile"])
        self.http = http.client.HTTPSConnection(host, port, timeout=60, context=context)
        self.http._create_connection = lambda _, *args, **named: socket.create_connection(
            ("127.0.0.1", port), *args, **named)

    def seconds(self):
        began = time.monotonic()
        self.http.request("POST", "/events/none", b"{}", {"Content-Type": "application/json"})
        self.http.getresponse().read()
        return time.monotonic() - began


class House:
    """An emulator and, when asked for, a player that is set up for it."""

    def __init__(self, build):
        self.build = pathlib.Path(build)
        self.scratch = tempfile.TemporaryDirectory(prefix="tavu-bench-")
        self.folder = pathlib.Path(self.scratch.name)
        (self.folder / "player").mkdir(mode=0o700)
        self.emulator = self.player = None
        self.starts = 0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for program in (self.player, self.emulator):
            if program:
                program.stop()
        self.scratch.cleanup()

    def log(self, name):
        self.starts += 1
        return self.folder / f"{name}-{self.starts}.log"

    def start_emulator(self, *options, music=None, samples=True):
        command = [str(self.build / "src/emulator/amazon-music-emulator"),
                   "--state", str(self.folder / "emulator"), "--poll-interval", "1",
                   "--seed", "1", "--key-headers-every", "0", *options]
        if samples and not music:
            command += ["--samples", str(self.build / "samples")]
        if music:
            command.append(str(music))
        self.emulator = Program(command, self.log("emulator"))
        self.service = json.loads(self.emulator.says(r'\{".*"ready":.*\}').group(0))
        self.control = Connection(self.service["control"])

    def scanned(self, seconds=600.0):
        wait_until(lambda: self.control.told("GET", "status")["scan"] == "done", "the scan",
                   seconds, pause=0.01)

    def settings(self, more, proxy_port):
        service = self.service
        secret = self.folder / "secret"
        secret.write_text("emulator-secret\n")
        secret.chmod(0o600)
        port = proxy_port or service["tlsPort"]
        # The sound's host is an address, with its port.
        places = [f"{host}:443" for host in service["hosts"]]
        places.append(f"{service['address']}:{service['tlsPort']}")
        return {
            "service.base-url": service["baseUrl"],
            "service.device-code-url": service["deviceCodeUrl"],
            "service.token-url": service["tokenUrl"],
            "service.authorization-url": service["authorizationUrl"],
            "service.client-id": service["clientId"],
            "service.client-secret-file": secret,
            "service.domain-suffix": service["domainSuffix"],
            "service.ca-file": service["caFile"],
            "service.connect-to": " ".join(f"{p}:127.0.0.1:{port}" for p in places),
            "player.state-folder": self.folder / "player",
            "player.output": "audioconvert ! fakesink sync=true",
            "player.mpris": "false",
            "control.port": "0",
            "log.level": "warn",
            **more,
        }

    def start_player(self, more=None, proxy_port=None):
        """Returns the seconds from its start until it says that it is ready."""
        command = [str(self.build / "src/player/main/tavu-player"), "--config", os.devnull]
        for name, value in self.settings(more or {}, proxy_port).items():
            command += ["-o", f"{name}={value}"]
        self.player = Program(command, self.log("player"))
        url = self.player.says(r"tavu-player is ready: (http:\S+)").group(1)
        ready = time.monotonic() - self.player.started
        self.url = url
        self.api = Connection(url.rstrip("/") + "/api/v1")
        return ready

    def sign_in(self):
        self.api.told("POST", "login/start", {})
        login = wait_until(lambda: self.login("waiting"), "a code")
        self.control.told("POST", "login/approve", {"user_code": login["userCode"]})
        wait_until(lambda: self.login("loggedIn"), "the login")
        wait_until(lambda: self.api.ask("GET", "rows")[0] == 200, "the root", pause=0.05)

    def login(self, state):
        login = self.api.told("GET", "state")["login"]
        return login if login["state"] == state else None

    def now(self):
        return self.api.told("GET", "state")["player"]

    def rows(self, path=""):
        return self.api.told("GET", f"rows?path={urllib.parse.quote(path, safe='')}")["rows"]

    def row(self, *titles):
        """The row at the end of a trail of titles, each of which may be cut short."""
        path = ""
        for title in titles:
            row = next(row for row in self.rows(path) if row.get("title", "").startswith(title))
            path = row["path"]
        return row

    def play(self, *titles):
        self.api.told("POST", "play", {"ref": self.row(*titles)["ref"]})
        self.in_state(PLAYING)

    def command(self, name, body=None):
        self.api.told("POST", f"player/{name}", body or {})

    def shows(self, title):
        def plays():
            now = self.now()
            return now["state"] == PLAYING and now["title"] == title
        wait_until(plays, title)

    def in_state(self, state):
        wait_until(lambda: self.now()["state"] == state, f"state {state}")
