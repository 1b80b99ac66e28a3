"""Somebody who looks at everything that the player's page shows."""
import http.client
import re
import urllib.parse

# The page and what it names, its style sheets and modules included.
LINKS = re.compile(r"""(?:src|href)="(?!http)([^"#]+)"|(?:from|import) *\(?["'](\.[^"']+)["']""")


class Visitor:
    def __init__(self, house):
        self.house = house
        self.seen = set()

    def walk(self):
        """Everything once, as deep as it goes."""
        self.load("/")
        self.browse("", depth=0)

    def load(self, address):
        """A file of the page or a picture, and what it names."""
        if address in self.seen:
            return
        self.seen.add(address)
        connection = http.client.HTTPConnection(urllib.parse.urlsplit(self.house.url).netloc)
        connection.request("GET", address)
        answer = connection.getresponse()
        body = answer.read()
        connection.close()
        if answer.getheader("Content-Type", "").startswith(("text/html", "text/javascript")):
            for attribute, module in LINKS.findall(body.decode()):
                self.load(urllib.parse.urljoin(address, attribute or module))

    def browse(self, path, depth):
        if path in self.seen or depth > 4:
            return
        self.seen.add(path)
        address = f"rows?path={urllib.parse.quote(path, safe='')}"
        status, answer = self.house.api.ask("GET", address)
        if status != 200:
            return  # An error screen.
        for row in answer["rows"]:
            if row.get("icon", "").startswith("/"):
                self.load(row["icon"])
            if row.get("path"):
                self.browse(row["path"], depth + 1)
