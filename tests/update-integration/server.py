"""Serves a folder on the loopback, over TLS if it is given a certificate, and prints its port. It also makes what it
serves: a line of its input is a command with its arguments, between tabs, and is answered with "done" or what went wrong.

    server.py FOLDER [CERTIFICATE KEY]

Commands are those of feed.py, and odd-package with the arguments of packages.py.

What a file NAME.answer says is done instead of serving NAME:
    status N          an answer of that status with a body
    redirect URL      another address
    silent            nothing at all
    cut N             N bytes of the file, and the end in the middle
    hold              the first bytes of the file, and the rest once NAME.go is there
    endless           more and more
    trickle           a byte five times a second, for ever; NAME.left is there when the client has hung up
Each request adds a byte to the file "requests".
"""
import http.server
import os
import ssl
import sys
import threading
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "sandbox"))
sys.dont_write_bytecode = True
import feed  # noqa: E402
import packages  # noqa: E402

COMMANDS = {"key": feed.make_key, "package": feed.make_package, "feed": feed.make_feed,
            "configuration": feed.make_configuration, "odd-package": packages.main}


class Handler(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *arguments):
        pass

    def do_GET(self):
        path = self.translate_path(self.path)
        with open(os.path.join(self.directory, "requests"), "ab") as file:
            file.write(b".")
        try:
            with open(path + ".answer", encoding="utf-8") as file:
                answer, _, value = file.read().partition(" ")
        except FileNotFoundError:
            return super().do_GET()
        getattr(self, "answer_" + answer)(path, value)

    def answer_status(self, _, value):
        self.send_response(int(value))
        self.send_header("Content-Length", "4")
        self.end_headers()
        self.wfile.write(b"none")

    def answer_redirect(self, _, value):
        self.send_response(302)
        self.send_header("Location", value)
        self.end_headers()

    def answer_silent(self, *_):
        time.sleep(60)

    def begin(self, size):
        self.send_response(200)
        if size is not None:
            self.send_header("Content-Length", str(size))
        self.end_headers()

    def answer_cut(self, path, value):
        self.begin(os.path.getsize(path))
        with open(path, "rb") as file:
            self.wfile.write(file.read(int(value)))

    def answer_hold(self, path, _):
        with open(path, "rb") as file:
            content = file.read()
        self.begin(len(content))
        self.wfile.write(content[:100])
        self.wfile.flush()
        end = time.monotonic() + 60
        while not os.path.exists(path + ".go") and time.monotonic() < end:
            time.sleep(0.01)
        self.wfile.write(content[100:])

    def answer_endless(self, *_):
        self.begin(None)
        try:
            while True:
                self.wfile.write(b" " * 65536)
        except OSError:
            pass


    def answer_trickle(self, path, _):
        self.begin(None)
        try:
            while True:
                self.wfile.write(b" ")
                time.sleep(0.2)
        except OSError:
            with open(path + ".left", "wb"):
                pass


class Server(http.server.ThreadingHTTPServer):
    def handle_error(self, *arguments):
        pass  # whoever hangs up has had enough


def main(folder, certificate=None, key=None):
    server = Server(("127.0.0.1", 0), lambda *arguments: Handler(*arguments, directory=folder))
    if certificate:
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(certificate, key)
        server.socket = context.wrap_socket(server.socket, server_side=True)
    print(server.server_address[1], flush=True)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    for line in sys.stdin:
        command, *arguments = line.rstrip("\n").split("\t")
        try:
            COMMANDS[command](*arguments)
            print("done", flush=True)
        except (OSError, LookupError, TypeError, ValueError) as problem:
            print(repr(problem), flush=True)


main(*sys.argv[1:])
