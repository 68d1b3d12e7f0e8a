"""Requests to the workbench: the first byte says whether the rest is a whole request, or target and
body of a page's own."""

HEAD = (b"Host: 127.0.0.1:8123\r\nOrigin: http://127.0.0.1:8123\r\n"
        b"Cookie: borvanusb_8123=ffeeddccbbaa99887766554433221100\r\n")


def whole(line, body=b"", head=HEAD):
    """A request as it comes through a socket."""
    length = b"Content-Length: %d\r\n" % len(body) if body else b""
    kind = b"Content-Type: application/json\r\n" if body else b""
    return b"\x00" + line + b" HTTP/1.1\r\n" + head + kind + length + b"\r\n" + body


def own(target, body):
    """A page's own request."""
    return b"\x01" + target + b"\n" + body


REQUESTS = {
    "page": whole(b"GET /"),
    "token": whole(b"GET /?token=00112233445566778899aabbccddeeff", head=b"Host: 127.0.0.1:8123\r\n"),
    "state": whole(b"GET /api/state"),
    "events": whole(b"GET /api/events"),
    "run": whole(b"POST /api/run", b'{"words":["reg","read","0x100"],"camera":"p","job":"j","wait":false}'),
    "foreign-host": whole(b"GET /", head=HEAD.replace(b"127.0.0.1:8123\r\nO", b"evil.example\r\nO")),
    "chunked": whole(b"POST /api/run", head=HEAD + b"Transfer-Encoding: chunked\r\n") + b"2\r\n{}\r\n0\r\n\r\n",
    "two-lengths": whole(b"POST /api/run", b"{}", HEAD + b"Content-Length: 9\r\n"),
    "own-run": own(b"/api/run", b'{"words":["flash","program","fw.hex","--report","r.json"]}'),
    "own-parts": own(b"/api/run", b'{"words":["flash","program","a@0x0","b@region:boot"]}'),
    "own-outside": own(b"/api/run", b'{"words":["flash","verify","..\\\\fw.hex"]}'),
    "own-script": own(b"/api/run", b'{"words":["run","a.txt"]}'),
    "own-write": own(b"/api/run", b'{"words":["reg","write","0x100","1"]}'),
    "own-diff": own(b"/api/run", b'{"words":["reg","diff","camera:1","preset:night"]}'),
    "own-live": own(b"/api/live", b'{"camera":"p","words":["SENSOR.*"],"rate":20}'),
    "own-stop": own(b"/api/stop", b'{"job":"j1"}'),
    "own-file": own(b"/api/files?name=M%C3%BCller.bin", b"\x00\x01\x02"),
    "own-device": own(b"/api/files?name=nul.txt", b"x"),
    "own-deep": own(b"/api/run", b'{"words":' + b"[" * 40 + b"]" * 40 + b"}"),
}
