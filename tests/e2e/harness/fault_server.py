#!/usr/bin/env python3
"""A small HTTP server whose answers misbehave on purpose, by path.

  /echo...        200; the body is the request as received (request line and headers)
  /nolength       200 without Content-Length; the body ends when the connection closes
  /zerolength     200 with "Content-Length: 0" and no body
  /empty          200 without Content-Length and without body
  /missing        404 with a small HTML page
  /redirect       302 to http://127.0.0.1/<rest of the query string, default small.bin>
  /relative       302 with a relative Location ("/echo-redirected")
  /loop           302 to itself, for ever
  /tohttps        302 to https://127.0.0.2:443/ (nothing listens there)
  /tofile         302 to file:///etc/passwd
  /cut            Content-Length 100000, 30000 bytes, then the connection is closed
  /stall          Content-Length 100000, 10000 bytes, then nothing (the connection stays)
  /silent         the request is read and never answered
  /chunked        a chunked body of 3 x 1000 bytes
  anything else   200 with a short body naming the path

Usage: fault_server.py ADDRESS PORT [READY_FILE]. Writes READY_FILE once listening.
"""
import socket
import socketserver
import sys
import threading
import time


def pattern(size, seed=0):
    return bytes((i * 7 + seed) % 251 for i in range(size))


class Handler(socketserver.BaseRequestHandler):
    def read_request(self):
        data = b""
        self.request.settimeout(30)
        while b"\r\n\r\n" not in data:
            chunk = self.request.recv(4096)
            if not chunk:
                return None
            data += chunk
        return data.split(b"\r\n\r\n", 1)[0] + b"\r\n\r\n"

    def send(self, data):
        self.request.sendall(data)

    def answer(self, status, headers, body=b""):
        head = "HTTP/1.1 %s\r\n" % status
        for name, value in headers:
            head += "%s: %s\r\n" % (name, value)
        self.send(head.encode() + b"\r\n" + body)

    def handle(self):
        while True:
            request = self.read_request()
            if request is None:
                return
            line = request.split(b"\r\n", 1)[0].decode("latin-1")
            parts = line.split(" ")
            target = parts[1] if len(parts) > 1 else "/"
            if "://" in target:  # a proxy request names the whole URL
                target = "/" + target.split("://", 1)[1].split("/", 1)[-1]
            path, _, query = target.partition("?")
            if not self.respond(path, query, request):
                return

    def respond(self, path, query, request):
        close = [("Connection", "close")]
        if path.startswith("/echo"):
            self.answer("200 OK", [("Content-Length", len(request))], request)
            return True
        if path == "/nolength":
            self.answer("200 OK", close, pattern(5000))
            return False
        if path == "/zerolength":
            self.answer("200 OK", [("Content-Length", 0)])
            return True
        if path == "/empty":
            self.answer("200 OK", close)
            return False
        if path == "/missing":
            body = b"<html><body>Not Found</body></html>"
            self.answer("404 Not Found", [("Content-Length", len(body))], body)
            return True
        if path == "/redirect":
            location = "http://127.0.0.1/" + (query or "small.bin")
            self.answer("302 Found", [("Location", location), ("Content-Length", 9)], b"redirect!")
            return True
        if path == "/relative":
            self.answer("301 Moved", [("Location", "/echo-redirected"), ("Content-Length", 0)])
            return True
        if path == "/loop":
            self.answer("302 Found", [("Location", "/loop"), ("Content-Length", 0)])
            return True
        if path == "/tohttps":
            self.answer("302 Found", [("Location", "https://127.0.0.2:443/"), ("Content-Length", 0)])
            return True
        if path == "/tofile":
            self.answer("302 Found", [("Location", "file:///etc/passwd"), ("Content-Length", 0)])
            return True
        if path == "/cut":
            self.answer("200 OK", [("Content-Length", 100000)], pattern(30000))
            self.request.shutdown(socket.SHUT_RDWR)
            return False
        if path == "/stall":
            self.answer("200 OK", [("Content-Length", 100000)], pattern(10000))
            time.sleep(3600)
            return False
        if path == "/silent":
            time.sleep(3600)
            return False
        if path == "/chunked":
            self.send(b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n")
            for i in range(3):
                self.send(b"3e8\r\n" + pattern(1000, i) + b"\r\n")
            self.send(b"0\r\n\r\n")
            return True
        body = ("path " + path).encode()
        self.answer("200 OK", [("Content-Length", len(body))], body)
        return True


class Server(socketserver.ThreadingTCPServer):
    daemon_threads = True
    allow_reuse_address = True


def main():
    address, port = sys.argv[1], int(sys.argv[2])
    server = Server((address, port), Handler)
    if len(sys.argv) > 3:
        with open(sys.argv[3], "w") as ready:
            ready.write("ready\n")
    server.serve_forever()


if __name__ == "__main__":
    main()
