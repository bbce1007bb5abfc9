# What the tests of orbe-view share: the program as it runs, and a page without a browser, over plain sockets.
import base64
import json
import os
import re
import select
import socket
import struct
import subprocess
import tempfile
import time

PATIENCE = 30  # s; a test that takes that long has failed


def make_recording(program, path, *arguments):
    subprocess.run([program, "make", path, "--force", *arguments], check=True, capture_output=True, timeout=PATIENCE)


def wait_until(condition, told=lambda: "it never came"):
    """What the condition answers, as soon as that is something. The one way in which tests wait for what happens beside
    them; `told` says what there was instead."""
    end = time.monotonic() + PATIENCE
    while not (got := condition()):
        if time.monotonic() > end:
            raise AssertionError(told())
        time.sleep(0.05)
    return got


class View:
    """orbe-view, from its start to its end."""

    def __init__(self, program, *arguments):
        self.errors = tempfile.TemporaryFile()
        self.process = subprocess.Popen(
            [program, *arguments, "--port", "0"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self.errors,
            text=True)
        is_there, _, _ = select.select([self.process.stdout], [], [], PATIENCE)
        line = self.process.stdout.readline() if is_there else ""
        match = re.match(r"orbe-view: (http://(.*):(\d+)/(?:\?token=(\w+))?)$", line)
        if not match:
            self.process.kill()
            raise AssertionError(f"orbe-view does not serve: {line!r} {self.error_text()!r}")
        self.address, self.host, self.token = match[1], match[2], match[4]
        self.port = int(match[3])

    def tell(self, line):
        """The program with the modelled box: what happens to the box."""
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()

    def error_text(self):
        self.errors.seek(0)
        return self.errors.read().decode()

    def stop(self):
        """Answers the exit code, what it counted, and what it complained about."""
        self.process.terminate()
        rest, _ = self.process.communicate(timeout=PATIENCE)
        errors = self.error_text()
        self.errors.close()
        self.process.stdout.close()
        match = re.match(r"orbe-view: (\d+) pictures shown, (\d+) left out; (\d+) samples? lost in the data\n$", rest)
        counts = tuple(map(int, match.groups())) if match else None
        return self.process.returncode, counts, errors

    def cpu_seconds(self):
        with open(f"/proc/{self.process.pid}/stat") as file:
            fields = file.read().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def connect(self):
        return socket.create_connection(("127.0.0.1", self.port), timeout=PATIENCE)

    def ask(self, request):
        """The answer to the bytes of a request, up to the end of the connection."""
        with self.connect() as connection:
            connection.sendall(request)
            return read_all(connection)


def read_all(connection):
    answer = b""
    try:
        while part := connection.recv(65536):
            answer += part
    except ConnectionResetError:
        pass
    return answer


def decode_picture(payload):
    (length,) = struct.unpack_from("<I", payload)
    head = json.loads(payload[4:4 + length])
    values = memoryview(payload[4 + length:]).cast("f")
    blocks = {}
    for block in head["blocks"]:
        begin = block["offset"]
        blocks[block["name"]] = values[begin:begin + block["rows"] * block["columns"]].tolist()
    return head, blocks


class Page:
    """A connected page."""

    def __init__(self, view, target="/data", host=None, origin=None, buffer=None):
        self.socket = socket.socket()
        if buffer:
            self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, buffer)
        self.socket.settimeout(PATIENCE)
        self.socket.connect(("127.0.0.1", view.port))
        host = host or f"127.0.0.1:{view.port}"
        origin = f"http://{host}" if origin is None else origin
        key = base64.b64encode(os.urandom(16)).decode()
        self.socket.sendall((
            f"GET {target} HTTP/1.1\r\nHost: {host}\r\nOrigin: {origin}\r\nUpgrade: websocket\r\n"
            f"Connection: Upgrade\r\nSec-WebSocket-Key: {key}\r\nSec-WebSocket-Version: 13\r\n\r\n").encode())
        self.rest = b""
        while b"\r\n\r\n" not in self.rest:
            part = self.socket.recv(65536)
            if not part:
                break
            self.rest += part
        head, _, self.rest = self.rest.partition(b"\r\n\r\n")
        self.status = int(head.split()[1]) if head else 0

    def take(self, size):
        while len(self.rest) < size:
            part = self.socket.recv(1 << 20)
            if not part:
                raise EOFError
            self.rest += part
        taken, self.rest = self.rest[:size], self.rest[size:]
        return taken

    def receive(self):
        """Kind and payload of the next message; kind 8 is the end, which may come in the middle of a picture."""
        first, payload = self.receive_frame()
        kind = first & 15
        while not first & 128:
            first, more = self.receive_frame()
            if first & 8:
                return first & 15, more
            payload += more
        return kind, payload

    def receive_frame(self):
        first, second = self.take(2)
        size = second & 127
        if size == 126:
            (size,) = struct.unpack(">H", self.take(2))
        elif size == 127:
            (size,) = struct.unpack(">Q", self.take(8))
        return first, self.take(size)

    def send(self, payload, kind=1, final=True):
        mask = os.urandom(4)
        size = len(payload)
        head = bytes([(128 if final else 0) | kind])
        if size < 126:
            head += bytes([128 | size])
        elif size < 65536:
            head += bytes([128 | 126]) + struct.pack(">H", size)
        else:
            head += bytes([128 | 127]) + struct.pack(">Q", size)
        masked = bytes(byte ^ mask[i % 4] for i, byte in enumerate(payload))
        self.socket.sendall(head + mask + masked)

    def say(self, message):
        self.send(json.dumps(message).encode())

    def picture(self, wanted=lambda head: "traces" in head, whole=lambda blocks: True):
        """The next picture that is wanted, as soon as it is whole."""
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            kind, payload = self.receive()
            if kind == 2:
                head, blocks = decode_picture(payload)
                if wanted(head) and whole(blocks):
                    return head, blocks
            elif kind == 8:
                raise AssertionError(f"the page was put out: {payload!r}")
        raise AssertionError("no such picture came")

    def message(self, wanted_kind):
        """The payload of the next message of that kind."""
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            kind, payload = self.receive()
            if kind == wanted_kind:
                return payload
        raise AssertionError(f"no message of kind {wanted_kind} came")

    def answer(self):
        """What the program says next about what the page has said."""
        return self.message(1).decode()

    def end(self):
        """How the program has ended the connection: its code and its reason."""
        payload = self.message(8)
        return struct.unpack_from(">H", payload)[0], payload[2:].decode()

    def close(self):
        self.socket.close()
