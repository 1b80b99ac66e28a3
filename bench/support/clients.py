"""Many clients of a player's events, and the least that can tell them something."""
import os
import re
import select
import socket
import time
import urllib.parse


class EventClients:
    def __init__(self, url, count):
        parts = urllib.parse.urlsplit(url)
        request = (f"GET /api/v1/events HTTP/1.1\r\nHost: {parts.netloc}\r\n"
                   "Accept: text/event-stream\r\n\r\n").encode()
        self.poll = select.epoll()
        self.sockets = {}
        self.serials = {}
        self.lost = 0
        self.size = 0  # Of the last event.
        for _ in range(count):
            client = socket.create_connection((parts.hostname, parts.port))
            client.sendall(request)
            self.sockets[client.fileno()] = client
        for client in self.sockets.values():
            self._read_snapshot(client)
            client.setblocking(False)
            self.poll.register(client, select.EPOLLIN)

    def _read_snapshot(self, client):
        text = b""
        while not (found := re.search(rb"id: ?(\d+)[^\n]*\n(.*\n)*?\n", text)):
            text += client.recv(65536)
        self.serials[client.fileno()] = int(found.group(1))

    def delays(self, began):
        """Seconds from `began` until each client has been told; what one misses is lost."""
        waiting = set(self.sockets)
        arrived = []
        while waiting and time.monotonic() < began + 5:
            for number, _ in self.poll.poll(0.1):
                data = self.sockets[number].recv(65536)
                now = time.monotonic()
                self.size = len(data)
                if number in waiting:
                    waiting.discard(number)
                    arrived.append((number, now, data))
        for number, _, data in arrived:
            for serial in re.findall(rb"id: ?(\d+)", data):
                self.lost += int(serial) - self.serials[number] - 1
                self.serials[number] = int(serial)
        self.lost += len(waiting)
        return [now - began for _, now, _ in arrived]

    def close(self):
        for client in self.sockets.values():
            client.close()


class BareTeller:
    """A process that sends the same bytes to each of its clients and does nothing else."""

    SNAPSHOT = b"id: 0\ndata: {}\n\n"

    def __init__(self, count, size):
        listener = socket.create_server(("127.0.0.1", 0), backlog=count)
        self.url = f"http://127.0.0.1:{listener.getsockname()[1]}"
        self.asks, asked = socket.socketpair()
        self.pid = os.fork()
        if self.pid == 0:
            self.asks.close()
            self._serve(listener, asked, count, size)
            os._exit(0)
        listener.close()
        asked.close()

    def _serve(self, listener, asked, count, size):
        clients = []
        for _ in range(count):
            client, _ = listener.accept()
            client.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            client.recv(65536)
            client.sendall(self.SNAPSHOT)
            clients.append(client)
        serial = 0
        while asked.recv(1):
            serial += 1
            event = f"id: {serial}\ndata: ".encode().ljust(size - 2, b"-") + b"\n\n"
            for client in clients:
                client.send(event)

    def tell(self):
        self.asks.send(b"!")

    def close(self):
        self.asks.close()
        os.waitpid(self.pid, 0)
