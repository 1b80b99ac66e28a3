"""Stands between two programs on one machine and adds a round trip, as a distant host would."""
import asyncio
import os
import socket


class SlowProxy:
    """A process of its own, so that nobody else's work delays what passes."""

    def __init__(self, target_port, round_trip):
        self.target_port = target_port
        self.one_way = round_trip / 2
        listener = socket.create_server(("127.0.0.1", 0))
        self.port = listener.getsockname()[1]
        goes_on, self.held = os.pipe()
        self.pid = os.fork()
        if self.pid == 0:
            os.close(self.held)
            asyncio.run(self._run(listener, goes_on))
            os._exit(0)
        os.close(goes_on)
        listener.close()

    def close(self):
        os.close(self.held)
        os.waitpid(self.pid, 0)

    async def _run(self, listener, goes_on):
        self.loop = asyncio.get_running_loop()
        ended = self.loop.create_future()
        self.loop.add_reader(goes_on, lambda: ended.done() or ended.set_result(None))
        await asyncio.start_server(self._serve, sock=listener)
        await ended
        os._exit(0)

    async def _serve(self, reader, writer):
        # The handshake of TCP takes a round trip as well.
        await asyncio.sleep(2 * self.one_way)
        there_reader, there_writer = await asyncio.open_connection("127.0.0.1", self.target_port)
        await asyncio.gather(
            self._pass_on(reader, there_writer), self._pass_on(there_reader, writer))

    async def _pass_on(self, reader, writer):
        """In order, each piece after its way, however many are on the way."""
        on_the_way = asyncio.Queue()

        async def deliver():
            while True:
                due, data = await on_the_way.get()
                await asyncio.sleep(due - self.loop.time())
                if not data:
                    break
                writer.write(data)
                await writer.drain()
            writer.close()

        delivery = asyncio.ensure_future(deliver())
        try:
            while data := await reader.read(65536):
                on_the_way.put_nowait((self.loop.time() + self.one_way, data))
        except ConnectionError:
            pass
        on_the_way.put_nowait((self.loop.time() + self.one_way, b""))
        try:
            await delivery
        except ConnectionError:
            pass
