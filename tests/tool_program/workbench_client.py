"""A page of the workbench without a browser, for tests of the built program."""
import copy
import http.client
import json
import queue
import threading


class Page:
    """What a browser does: the token for a cookie, requests, events."""

    def __init__(self, address):
        self.address = address
        self.port = int(address.split(":")[2].split("/")[0])
        self.host = f"127.0.0.1:{self.port}"
        self.cookie = None
        self.events = queue.Queue()
        self.seen = []
        self.stream = None
        self.socket = None
        status, headers, _ = self.request("GET", "/" + address.rsplit("/", 1)[1])
        assert status == 303, status
        self.cookie = headers["Set-Cookie"].split(";")[0]

    def request(self, method, target, body=None, **changes):
        """Sends a request as the page does; returns status, headers and body."""
        headers = {"Host": self.host}
        if self.cookie:
            headers["Cookie"] = self.cookie
        if body is not None:
            headers["Origin"] = f"http://{self.host}"
            if not isinstance(body, bytes):
                headers["Content-Type"] = "application/json"
                body = json.dumps(body).encode()
        headers.update(changes)
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=120)
        try:
            connection.request(method, target, body, headers)
            response = connection.getresponse()
            return response.status, response.headers, response.read()
        finally:
            connection.close()

    def state(self):
        """GET /api/state."""
        return json.loads(self.request("GET", "/api/state")[2])

    def run(self, *words, camera=None, status=200, **more):
        """POST /api/run."""
        found, _, body = self.request("POST", "/api/run", {
            "words": [str(word) for word in words], "camera": camera, **more})
        assert found == status, (found, body)
        return json.loads(body)

    def post(self, target, body, status=200):
        """POST with a JSON body."""
        found, _, answer = self.request("POST", target, body)
        assert found == status, (found, answer)
        return json.loads(answer)

    def upload(self, name, content):
        """POST /api/files."""
        status, _, body = self.request("POST", f"/api/files?name={name}", content)
        assert status == 200, (status, body)
        return json.loads(body)

    def download(self, name):
        """GET /api/files/NAME."""
        status, _, body = self.request("GET", f"/api/files/{name}")
        assert status == 200, (status, body)
        return body

    def another(self):
        """A second page of the same browser."""
        page = copy.copy(self)
        page.events = queue.Queue()
        page.seen = []
        return page

    def listen(self, name=""):
        """Opens the stream of events, for a page of that name."""
        self.stream = http.client.HTTPConnection("127.0.0.1", self.port, timeout=300)
        self.stream.request("GET", f"/api/events?page={name}", headers={"Host": self.host, "Cookie": self.cookie})
        self.socket = self.stream.sock  # which the response takes over
        response = self.stream.getresponse()
        assert response.status == 200, response.status
        threading.Thread(target=self._read, args=(response,), daemon=True).start()

    def close(self):
        """Closes the stream, as a browser does that is closed."""
        self.socket.shutdown(2)
        self.stream.close()

    def _read(self, response):
        name = None
        try:
            for line in response:
                text = line.decode().rstrip("\n")
                if text.startswith("event: "):
                    name = text[7:]
                elif text.startswith("data: "):
                    self.events.put((name, json.loads(text[6:])))
        except (OSError, ValueError, AttributeError):
            pass

    def wait_for(self, name, condition=lambda data: True, timeout=60):
        """The next event of that name that fits."""
        while True:
            found, data = self.events.get(timeout=timeout)
            self.seen.append((found, data))
            if found == name and condition(data):
                return data
