"""Stands between two programs on one machine and adds a round trip, as a distant host would."""
import asyncio
import threading


class SlowProxy:
    def __init__(self, target_port, round_trip):
        self.target_port = target_port
        self.one_way = round_trip / 2
        self.connections = 0
        self.loop = asyncio.new_event_loop()
        self.server = self.loop.run_until_complete(
            asyncio.start_server(self._serve, "127.0.0.1", 0))
        self.port = self.server.sockets[0].getsockname()[1]
        threading.Thread(target=self.loop.run_forever, daemon=True).start()

    async def _serve(self, reader, writer):
        self.connections += 1
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
