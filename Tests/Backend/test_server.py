"""The stand-in as a server: many clients, slow ones, broken ones, and the program around it."""

import http.client
import json
import re
import signal
import socket
import subprocess
import threading
import time
import unittest

import psycopg
from served import AUTHENTICATOR, KEY, LOCAL, OWNER, TOTAL, UNKNOWN, Served, ask, postgres, value


class Transport(Served):
    patience = 1

    def total(self, client):
        return ask(client, "POST", TOTAL, UNKNOWN)

    def exchange(self, sent):
        """The statuses of all answers until the server closes the connection."""
        received = b""
        with socket.create_connection(self.address, timeout=10) as client:
            client.sendall(sent.encode())
            while part := client.recv(65536):
                received += part
        return " ".join(re.findall(r"HTTP/1.1 (\d+) ", received.decode()))

    def test_serves_many_clients_over_eight_connections(self):
        answers = []

        def stay(client):
            answers.extend(self.total(client) for _ in range(5))

        threads = [threading.Thread(target=stay, args=[self.client()]) for _ in range(60)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join(20)
        self.assertEqual(answers, [(200, "0")] * 300)
        used = value("select count(*) from pg_stat_activity where usename = 'authenticator'")
        self.assertLessEqual(used, 8)

    def test_is_not_held_up_by_clients_that_are_silent_or_stop_half_way(self):
        clients = [socket.create_connection(self.address, 10) for _ in range(40)]
        for client in clients:
            self.addCleanup(client.close)
        for client in clients[::2]:
            client.sendall(b"POST / HTTP/1.1\r\nHos")
        self.assertEqual(self.total(self.client()), (200, "0"))
        self.assertEqual([client.recv(100) for client in clients], [b""] * 40)

    def test_keeps_requests_apart(self):
        def head(method, *lines):
            return "\r\n".join([f"{method} /rest/v1/{TOTAL} HTTP/1.1", f"apikey: {KEY}", *lines, "", ""])

        other = head("DELETE")
        length = f"Content-Length: {len(UNKNOWN)}"
        good = head("POST", length) + UNKNOWN
        for sent, statuses in (
            (good + good, "200 200"),
            (head("GET", f"Content-Length: {len(other)}") + other, "405"),
            (head("POST") + other, "404 405"),
            (good[:-1], ""),
            (head("POST", f"Content-Length: {2**20 + 1}") + " " * (2**20 + 1) + other, "413 405"),
            (head("POST", f"Content-Length: {10**12}"), "413"),
            ("STEAL / HTTP/1.1\r\n\r\n", "501"),
            ("\0" * 300, ""),
            (f"GET /{'a' * 65_532}", "414"),
            (head("GET", *["a: b"] * 100)[:-2], "431"),
        ):
            self.assertEqual(self.exchange(sent), statuses, sent[:300])
        for unclear in (": -1", ": 1_0", ": 3, 0", " : 3", ": 3\r\nContent-Length: 0"):
            self.assertEqual(self.exchange(head("POST", f"Content-Length{unclear}")), "400", unclear)
        for encoding in ("chunked", "identity"):
            self.assertEqual(self.exchange(head("GET", length, f"Transfer-Encoding: {encoding}")), "400")

    def test_survives_a_restart_of_the_database(self):
        self.assertEqual(self.total(self.client()), (200, "0"))
        postgres("stop")
        status, body = self.total(self.client())
        self.assertEqual((status, json.loads(body)["code"]), (503, "PGRST000"))
        self.assertNotRegex(body, "/|socket|authenticator")
        postgres("start")
        self.assertEqual(self.total(self.client()), (200, "0"))
        postgres("stop")
        postgres("start")  # the connection that the server holds is dead now
        self.assertEqual(self.total(self.client()), (200, "0"))


class Program(unittest.TestCase):
    def start(self, *arguments):
        command = ["/usr/bin/python3", LOCAL / "fernhollow-backend", *arguments]
        program = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.addCleanup(program.communicate)
        self.addCleanup(program.kill)
        return program

    def serve(self, *arguments):
        program = self.start("--database", AUTHENTICATOR, "--port", "0", *arguments)
        port = int(re.search(r"listening on http://127.0.0.1:(\d+)$", program.stdout.readline().strip())[1])
        client = http.client.HTTPConnection("127.0.0.1", port, timeout=30)
        self.addCleanup(client.close)
        return program, client

    def test_says_in_one_line_why_it_cannot_serve(self):
        _, other = self.serve()
        for arguments, status, sentence in (
            ([], 2, "required: --database"),
            (["--port=70000", "--database=x"], 2, "--port takes a number from 0 to 65535"),
            (["--secret=", "--database=x"], 2, "--secret must not be empty"),
            (["--faster", "--database=x"], 2, "--faster"),
            (["--port=0", "--database=host=/nowhere user=x"], 1, "the database cannot be reached: "),
            (["--port=0", "--database=what is this"], 1, "the database cannot be reached: "),
            ([f"--port={other.port}", f"--database={AUTHENTICATOR}"], 1, "Address already in use"),
        ):
            program = self.start(*arguments)
            output, _ = program.communicate(timeout=20)
            self.assertRegex(output, f"^fernhollow-backend: .*{re.escape(sentence)}.*\n$")
            self.assertEqual(program.returncode, status, output)

    def test_ends_within_a_second_whatever_its_clients_do(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            program, client = self.serve()
            self.assertEqual(ask(client, "POST", TOTAL, UNKNOWN), (200, "0"))
            with psycopg.connect(OWNER) as owner:
                owner.execute("lock table public.device_day_counts in access exclusive mode")
                client.request("POST", f"/rest/v1/{TOTAL}", UNKNOWN, {"apikey": KEY})
                waiting, limit = "select count(*) from pg_locks where not granted", time.monotonic() + 10
                while not value(waiting) and time.monotonic() < limit:
                    pass
                asked = time.monotonic()
                program.send_signal(number)
                self.assertEqual(program.wait(10), 0)
                self.assertLess(time.monotonic() - asked, 1.5)  # half a second, on a busy machine

    def test_logs_no_address(self):
        program, client = self.serve("--verbose")
        ask(client, "GET", "devices?customer_email=eq.ana@x.example")
        ask(client, "GET", "ana@x.example")
        self.assertRegex(program.stdout.readline(), r"^GET /rest/v1/devices 401 [\d.]+ ms$")
        self.assertRegex(program.stdout.readline(), r"^GET \(another path\) 401 ")
