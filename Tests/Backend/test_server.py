"""The stand-in as a program: what it logs and how it ends."""

import http.client
import re
import signal
import subprocess
import time
import unittest

import psycopg
from served import AUTHENTICATOR, KEY, LOCAL, OWNER, TOTAL, UNKNOWN, ask, value


class Program(unittest.TestCase):
    def test_logs_no_address_and_ends_at_once_whatever_its_clients_do(self):
        command = ["/usr/bin/python3", LOCAL / "fernhollow-backend", "--database", AUTHENTICATOR]
        command += ["--port", "0", "--verbose"]
        program = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.addCleanup(program.communicate)
        self.addCleanup(program.kill)
        port = int(re.search(r"listening on http://127.0.0.1:(\d+)$", program.stdout.readline().strip())[1])
        client = http.client.HTTPConnection("127.0.0.1", port, timeout=30)
        self.addCleanup(client.close)
        ask(client, "GET", "devices?customer_email=eq.ana@x.example")
        ask(client, "GET", "ana@x.example")
        self.assertRegex(program.stdout.readline(), r"^GET /rest/v1/devices 401 [\d.]+ ms$")
        self.assertRegex(program.stdout.readline(), r"^GET \(another path\) 401 ")

        with psycopg.connect(OWNER) as owner:
            owner.execute("lock table public.device_day_counts in access exclusive mode")
            client.request("POST", f"/rest/v1/{TOTAL}", UNKNOWN, {"apikey": KEY})
            waiting, limit = "select count(*) from pg_locks where not granted", time.monotonic() + 10
            while not value(waiting) and time.monotonic() < limit:
                pass
            asked = time.monotonic()
            program.send_signal(signal.SIGTERM)
            self.assertEqual(program.wait(10), 0)
            self.assertLess(time.monotonic() - asked, 1.5)  # half a second, on a busy machine
