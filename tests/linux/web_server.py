#!/usr/bin/env python3
"""A web server on loopback that answers well and badly, by the path asked for. Writes its port, then serves."""

import http.server
import sys
import threading
import time

ANSWER = b'{"resultCount":1,"results":[{"version":"99.1","releaseNotes":"Walks further."}]}'


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *arguments):
        pass

    def answer(self, body=ANSWER, status=200, **headers):
        self.send_response(status)
        for name, value in headers.items():
            self.send_header(name, value)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def do_GET(self):
        path = self.path.split("?")[0]
        try:
            getattr(self, path.strip("/"))()
        except (BrokenPipeError, ConnectionResetError):
            self.close_connection = True

    def good(self):
        # Only whoever asks for the right application is answered.
        self.answer(ANSWER if self.path.endswith("?id=1") else b'{"results":[]}')

    def old(self):
        self.answer(b'{"results":[{"version":"0.0.1"}]}')

    def notes(self):
        self.answer(rb'{"results":[{"version":"99.2","releaseNotes":"Walks further.\r\n\nCounts \u001b[31mbetter."}]}')

    def empty(self):
        self.answer(b'{"resultCount":0,"results":[]}')

    def error(self):
        self.answer(ANSWER, 500)

    def missing(self):
        self.answer(b"<h1>Not here</h1>", 404)

    def nonsense(self):
        self.answer(bytes(range(256)))

    def redirect(self):
        self.answer(b"", 302, Location="/good?id=1")

    def circle(self):
        self.answer(b"", 302, Location="/circle")

    def elsewhere(self):
        self.answer(b"", 302, Location="file:///etc/hostname")

    def large(self):
        self.answer(b" " * 50_000_000 + ANSWER)

    def endless(self):
        self.send_response(200)
        self.send_header("Transfer-Encoding", "chunked")
        self.end_headers()
        while True:
            self.wfile.write(b"10000\r\n" + b" " * 0x10000 + b"\r\n")

    def slow(self):
        self.send_response(200)
        self.send_header("Content-Length", "1000")
        self.end_headers()
        while True:
            self.wfile.write(b" ")
            time.sleep(0.1)

    def silent(self):
        time.sleep(60)

    def cut(self):
        self.send_response(200)
        self.send_header("Content-Length", "1000")
        self.end_headers()
        self.wfile.write(ANSWER)
        self.close_connection = True


def main():
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    server.daemon_threads = True
    print(server.server_address[1], flush=True)
    # Ends with whoever started it.
    threading.Thread(target=lambda: (sys.stdin.read(), server.shutdown()), daemon=True).start()
    server.serve_forever()


if __name__ == "__main__":
    main()
