# Who gets the page and the data of orbe-view, and who does not; and that whatever is sent to it leaves the others
# alone. Arguments: orbe-view, orbe-recording.
import json
import os
import re
import socket
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.error
import urllib.request

from view_program import PATIENCE, Page, View, make_recording, read_all

VIEW, RECORDING = sys.argv[1:3]


def has_long_addresses():
    try:
        with socket.socket(socket.AF_INET6) as probe:
            probe.bind(("::1", 0))
    except OSError:
        return False
    return True


class Security(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.recording = os.path.join(cls.folder.name, "small.bin")
        make_recording(RECORDING, cls.recording, "--seconds", "0.3", "--ports", "1", "--no-rhd")

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def view(self, *arguments):
        view = View(VIEW, self.recording, *arguments)
        self.addCleanup(self.end, view)
        return view

    def end(self, view):
        if view.process.returncode is not None:
            return
        code, counts, errors = view.stop()
        self.assertEqual((code, errors), (0, ""))
        self.assertEqual(counts[2], 0)

    def status(self, view, target="/", host=None, method="GET", more=""):
        host = host or f"127.0.0.1:{view.port}"
        answer = view.ask(f"{method} {target} HTTP/1.1\r\nHost: {host}\r\nConnection: close\r\n{more}\r\n".encode())
        return int(answer.split()[1]), answer.partition(b"\r\n\r\n")[2].decode()

    def assert_goes_on(self, page):
        """The page that has been there all the while still gets pictures of what it asks for."""
        page.say({"view": {"port": 1, "first": 7, "count": 3}})
        head, blocks = page.picture(lambda head: head.get("traces", {}).get("first") == 7)
        self.assertEqual(len(blocks["traces"]), 3 * 2 * len(blocks["lost"]))

    def test_files_of_the_page_and_nothing_else(self):
        view = self.view()
        status, page = self.status(view)
        self.assertEqual(status, 200)
        self.assertIn("<title>orbe-view</title>", page)
        self.assertIn("MIT License", self.status(view, "/uplot/LICENSE.txt")[1])
        for target in ["/../view.css", "/etc/passwd", "//", "/view.css/", "/%2e%2e/", "/data"]:
            self.assertEqual(self.status(view, target), (404, "There is no such file.\n"), target)
        # To HEAD goes no body, whatever the answer, or what follows on the connection is taken for something else.
        wrong = f"127.0.0.1:{view.port + 1}"
        for target, host, status in [("/", None, 200), ("/none", None, 404), ("/", wrong, 421)]:
            self.assertEqual(self.status(view, target, host, method="HEAD"), (status, ""), target)
        self.assertEqual(self.status(self.view("--listen", "127.0.0.1"), method="HEAD"), (403, ""))
        with view.connect() as connection:
            head = f" HTTP/1.1\r\nHost: 127.0.0.1:{view.port}\r\n"
            connection.sendall(f"HEAD /none{head}\r\nGET /icon.svg{head}Connection: close\r\n\r\n".encode())
            first, second = read_all(connection).split(b"\r\n\r\n", 1)
        self.assertTrue(first.startswith(b"HTTP/1.1 404 "), first)
        self.assertIn(b"\r\nContent-Length: 23", first)
        self.assertTrue(second.startswith(b"HTTP/1.1 200 "), second)
        self.assertEqual(self.status(view, method="POST"), (405, "orbe-view answers GET and HEAD.\n"))
        self.assertEqual(self.status(view, method="DELETE")[0], 405)

    def test_listens_at_its_own_address_alone(self):
        view = self.view()
        with open("/proc/net/tcp") as file:
            listening = [line.split()[1] for line in file if line.split()[3] == "0A"]
        self.assertEqual([each for each in listening if each.endswith(f":{view.port:04X}")],
                         [f"0100007F:{view.port:04X}"])

    def test_other_host_names_are_refused(self):
        view = self.view()
        for host in [f"evil.example:{view.port}", "127.0.0.1", f"localhost.evil.example:{view.port}", "x" * 300]:
            status, text = self.status(view, host=host)
            self.assertEqual((status, text),
                             (421, "orbe-view is asked by its address only, not by this host name.\n"))
            page = Page(view, host=host)
            self.assertEqual(page.status, 421)
            page.close()
        self.assertEqual(self.status(view, host=f"localhost:{view.port}")[0], 200)
        answer = view.ask(b"GET / HTTP/1.1\r\nConnection: close\r\n\r\n")
        self.assertTrue(answer.startswith(b"HTTP/1.1 421 "), answer)

    def test_pages_of_others_get_no_data(self):
        view = self.view()
        for origin in ["http://evil.example", f"http://localhost:{view.port}", "null", f"https://127.0.0.1:{view.port}"]:
            page = Page(view, origin=origin)
            self.assertEqual(page.status, 403, origin)
            self.assertIn(b"Only orbe-view's own page gets the data.", page.rest)
            page.close()

    def test_name_of_any_bytes_is_shown(self):
        name = os.path.join(self.folder.name.encode(), b"a\xe4.bin")
        os.symlink(self.recording, name)
        view = View(VIEW, name)
        self.addCleanup(self.end, view)
        page = Page(view)
        self.assert_goes_on(page)
        page.close()

    def test_connection_that_was_refused_does_not_stay(self):
        view = self.view()
        connection = view.connect()
        connection.sendall(b"GET\r\n\r\n")
        end = time.monotonic() + PATIENCE
        with self.assertRaises(OSError): # however much it has to say
            while time.monotonic() < end:
                connection.sendall(b"x")
                time.sleep(0.1)
        connection.close()

    def test_token_is_asked_for_where_others_can_reach_it(self):
        view = self.view("--listen", "127.0.0.1")
        self.assertRegex(view.token, "^[0-9a-f]{32}$")
        wrong = "0" * 32
        for target in ["/", "/index.html", f"/?token={wrong}", f"/?token={view.token[:-1]}"]:
            self.assertEqual(self.status(view, target), (
                403, "The address lacks the token that orbe-view has printed, or has a wrong one.\n"), target)
        for target in ["/data", f"/data?token={wrong}"]:
            page = Page(view, target)
            self.assertEqual(page.status, 403)
            page.close()
        self.assertEqual(self.status(view, f"/?token={view.token}")[0], 200)
        page = Page(view, f"/data?token={view.token}")
        self.assertEqual(page.status, 101)
        self.assert_goes_on(page)
        page.close()

    def test_printed_addresses_can_be_opened(self):
        browser = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        for listen, here in [("0.0.0.0", "127.0.0.1"), ("::", "[::1]"), ("::1", "[::1]"), ("0::0", "[::1]")]:
            if ":" in listen and not has_long_addresses():
                run = subprocess.run([VIEW, self.recording, "--listen", listen], capture_output=True, text=True,
                                     timeout=PATIENCE)
                self.assertIn(f"cannot listen at {listen}", run.stderr)
                continue
            view = self.view("--listen", listen)
            self.assertEqual(view.host, here)
            addresses = [view.address]
            if listen != "::1":
                line = view.process.stdout.readline()
                others = re.fullmatch(r"orbe-view: from other machines: (.*)\n", line)
                if others:
                    addresses += others[1].split(" or ")
                else:
                    self.assertEqual(line, "orbe-view: other machines do not reach this one: "
                                           "it has no such address in a network\n")
            for address in addresses:
                self.assertNotIn(address, addresses[:addresses.index(address)])
                self.assertEqual(address.count("["), here.count("["))
                with browser.open(address, timeout=PATIENCE) as page:
                    self.assertIn(b"<title>orbe-view</title>", page.read())
                with self.assertRaises(urllib.error.HTTPError) as refusal:
                    browser.open(address.partition("?")[0], timeout=PATIENCE)
                self.assertEqual(refusal.exception.code, 403)
                refusal.exception.close()

    def test_malformed_requests_are_refused(self):
        view = self.view()
        good = Page(view)
        for request, status in [(b"\x00\xff\x00\xff\r\n\r\n", 400), (b"GET\r\n\r\n", 400), (b"GET / FTP/1.1\r\n\r\n", 400),
                                (b"GET / HTTP/1.1\r\nno header\r\n\r\n", 400),
                                (b"GET /" + b"a" * 20000 + b" HTTP/1.1\r\n\r\n", 431),
                                (b"GET / HTTP/1.1\r\nX: " + b"y" * 20000 + b"\r\n\r\n", 431)]:
            answer = view.ask(request)
            self.assertTrue(answer.startswith(f"HTTP/1.1 {status} ".encode()), (request[:40], answer[:200]))
        self.assert_goes_on(good)
        good.close()

    def test_messages_that_make_no_sense_put_the_page_out(self):
        view = self.view()
        good = Page(view)
        for payload, reason in [(b"{", "the message is no JSON"), (b"[" * 4000, "the message is no JSON"),
                                (b'{"view": {"port": 99}}', "'port' is out of range"),
                                (b'{"view": {"columns": 1e9}}', "'columns' is no whole number"),
                                (b'{"delete": true}', "'delete' is nothing that a page can say")]:
            page = Page(view)
            page.send(payload)
            self.assertEqual(page.end(), (1008, "orbe-view does not understand: " + reason))
            page.close()
        # A reason that is too long for the end of a connection ends with a whole character. Behind the 32 bytes of
        # the beginning 91 are left, of which the last one has no room for two.
        page = Page(view)
        page.send(json.dumps({"é" * 100: True}, ensure_ascii=False).encode())
        self.assertEqual(page.end(), (1008, "orbe-view does not understand: '" + "é" * 45))
        page.close()
        page = Page(view)
        page.send(b"\x01\x02\x03", kind=2)
        self.assertEqual(page.end(), (1008, "orbe-view takes text"))
        page.close()
        self.assert_goes_on(good)
        good.close()

    def test_huge_messages_put_the_page_out(self):
        view = self.view()
        good = Page(view)
        whole = Page(view)
        whole.send(b'{"view": {"port": 1' + b" " * 100_000)
        self.assertEqual(whole.end()[0], 1009)
        whole.close()
        # Announced as 2^62 bytes, none of which has come.
        announced = Page(view)
        announced.socket.sendall(bytes([0x81, 0xFF]) + (1 << 62).to_bytes(8, "big") + b"mask")
        self.assertEqual(announced.end()[0], 1009)
        announced.close()
        parts = Page(view)
        for part in range(40):
            try:
                parts.send(b"x" * 1000, kind=1 if part == 0 else 0, final=False)
            except OSError:
                break
        self.assertEqual(parts.end()[0], 1009)
        parts.close()
        self.assert_goes_on(good)
        good.close()

    def test_nothing_changes_the_box_unless_that_is_allowed(self):
        page = Page(self.view())
        page.say({"streams": False})
        self.assertEqual(page.answer(), "The box is not changed from here: orbe-view was started without --control.")
        self.assert_goes_on(page)
        page.close()

    def crowd(self, view):
        """200 connections besides one, of which only some get an answer to what they ask."""
        others = [view.connect() for _ in range(200)]
        room = 48 - 1
        # Those that have room first: the server waits for their questions for 10 s.
        for connection in others[:room]:
            request = f"GET /icon.svg HTTP/1.1\r\nHost: 127.0.0.1:{view.port}\r\nConnection: close\r\n\r\n"
            connection.sendall(request.encode())
        for connection in others[room:]:
            answer = read_all(connection)
            self.assertTrue(answer.startswith(b"HTTP/1.1 503 "), answer)
            self.assertIn(b"Too many connections to orbe-view are open; close some pages.", answer)
        for connection in others[:room]:
            self.assertTrue(read_all(connection).startswith(b"HTTP/1.1 200 "))
        for connection in others:
            connection.close()

    def test_too_many_connections_are_refused_and_the_others_go_on(self):
        view = self.view()
        good = Page(view)
        self.crowd(view)
        self.assert_goes_on(good)
        good.close()

    def test_what_streams_goes_on_whoever_comes(self):
        recording = os.path.join(self.folder.name, "streaming.bin")
        make_recording(RECORDING, recording, "--seconds", "5", "--ports", "1", "--no-rhd")
        view = View(VIEW, "--simulation", recording)
        self.addCleanup(self.end, view)
        page = Page(view)
        page.say({"view": {"count": 1, "columns": 100}}) # so short that they all find room on the way
        head, _ = page.picture(lambda each: each.get("status", {}).get("position", 0) > 0.2)
        before = head["status"]["position"]
        self.crowd(view)
        after = page.picture(lambda each: each["status"]["position"] > before + 0.5 and each.get("health"))[0]
        self.assertTrue(after["status"]["streams"])
        for line in after["health"]:
            self.assertGreater(line["streams"][0][0], 0, "a rate")
        self.assertEqual(after["health_sums"][0][:4], [0, 0, 0, 0])
        self.assert_goes_on(page)
        page.close()

    def test_too_many_pages_are_refused(self):
        view = self.view()
        pages = [Page(view) for _ in range(17)]
        self.assertEqual([page.status for page in pages], 16 * [101] + [503])
        self.assertIn(b"Too many pages of orbe-view are open; close some of them.", pages[-1].rest)
        self.assert_goes_on(pages[0])
        for page in pages:
            page.close()

    def test_ends_while_pages_are_open(self):
        view = self.view()
        pages = [Page(view, buffer=4096) for _ in range(4)]
        for page in pages[1:]:
            page.say({"view": {"count": 96, "columns": 2000}}) # and then takes nothing
        for _ in range(20):
            self.assertEqual(pages[0].receive()[0], 2)
        self.end(view)
        for page in pages:
            page.close()

    def described_folder(self, name, change):
        """A recorded folder with another description."""
        folder = os.path.join(self.folder.name, name)
        subprocess.run([RECORDING, "export", self.recording, folder, "--seconds", "0.1"], check=True,
                       capture_output=True, timeout=30)
        path = os.path.join(folder, "orbe_recording.json")
        with open(path, encoding="utf8") as file:
            text = file.read()
        with open(path, "w", encoding="utf8") as file:
            file.write(change(text))
        return folder

    def test_what_cannot_be_shown_is_said(self):
        empty = os.path.join(self.folder.name, "empty")
        os.mkdir(empty)
        strange = self.described_folder("strange", lambda text: text.replace('"spikeglx"', '"tape"'))
        damaged = self.described_folder("damaged", lambda text: text[:len(text) // 2])
        for arguments, code, text in [
                ([], 2, "one of RECORDING, --box and --simulation is required"),
                (["x", "--box"], 2, "one of RECORDING, --box and --simulation is required"),
                ([os.path.join(self.folder.name, "none.bin")], 1, "none.bin"),
                (["--simulation", os.path.join(self.folder.name, "none.bin")], 1, "cannot read '"),
                ([empty], 1, "is no recording that orbe-view knows: it has neither orbe_recording.json nor"),
                ([strange], 1, "has the format 'tape', which is not known here"),
                ([damaged], 1, "orbe_recording.json' is damaged: "),
                ([self.recording, "--listen", "evil.example"], 1, "cannot listen at evil.example"),
                ([self.recording, "--listen", "203.0.113.1"], 1, "cannot listen at 203.0.113.1"),
                ([self.recording, "--port", "70000"], 2, "--port")]:
            run = subprocess.run([VIEW, *arguments], capture_output=True, text=True, timeout=30)
            self.assertEqual(run.returncode, code, (arguments, run.stderr))
            self.assertIn(text, run.stderr, arguments)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
