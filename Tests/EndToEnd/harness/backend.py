"""The hosted backend on this machine: a real PostgreSQL with the interface in front of it."""

import json
import os
import pathlib
import re
import shutil
import socket
import subprocess
import tempfile
import threading

from . import processes

TOP = pathlib.Path(__file__).resolve().parents[3]
POSTGRES = TOP / "Backend/local/postgres"
INTERFACE = TOP / "Backend/local/fernhollow-backend"


class Backend:
    """An empty database of its own. start() and stop() concern the interface in front of it, not the database."""

    def __init__(self):
        self._folder = pathlib.Path(tempfile.mkdtemp(prefix="fernhollow-backend-"))
        self._process = None
        self.port = 0
        started = processes.run([POSTGRES, "start", self._folder / "postgres"], None, 120)
        if started.returncode != 0:
            raise AssertionError(f"PostgreSQL did not start: {started.stderr}")
        self.owner, self._authenticator = started.stdout.splitlines()[:2]

    def start(self):
        """Starts the interface, on its earlier port if it had one."""
        command = [INTERFACE, "--database", self._authenticator, "--port", self.port]
        log = self._folder / "interface.log"
        self._process = processes.start(command, dict(os.environ), log, stdout=subprocess.PIPE, text=True)
        ready = self._process.stdout.readline()
        found = re.search(r":(\d+)$", ready.strip())
        if not found:
            raise AssertionError(f"the backend did not start: {ready}{log.read_text()}")
        self.port = int(found[1])
        return self

    def stop(self):
        if self._process:
            processes.end(self._process)
            self._process = None

    def close(self):
        self.stop()
        subprocess.run([POSTGRES, "remove", self._folder / "postgres"], capture_output=True, timeout=60)
        shutil.rmtree(self._folder, ignore_errors=True)

    def rows(self, query):
        """The rows of a query as lists, with the rights of the database's owner."""
        sql = f"SELECT coalesce(json_agg(row_to_json(q)), '[]') FROM ({query}) AS q"
        done = processes.run(["psql", "-X", "-q", "-At", "-d", self.owner, "-c", sql], None, 60)
        if done.returncode != 0:
            raise AssertionError(done.stderr)
        return [list(row.values()) for row in json.loads(done.stdout)]

    def value(self, query):
        (row,) = self.rows(query)
        return row[0]

    def tables(self, address, device):
        """The counts that one device has sent, in the form of the tables of its own database."""
        where = f"WHERE customer_email = '{address}' AND device_id = '{device}'"
        hours = self.rows(f"SELECT day, hour, count FROM device_hour_counts {where}")
        applications = self.rows(f"SELECT day, hour, bundle_id, count FROM device_app_hour_counts {where}")
        return {
            "daily": dict(self.rows(f"SELECT day, count FROM device_day_counts {where}")),
            "hourly": {tuple(row[:2]): row[2] for row in hours},
            "applications": {tuple(row[:3]): row[3] for row in applications},
        }


class SilentServer:
    """Accepts every connection and never answers."""

    def __init__(self):
        self._socket = socket.create_server(("127.0.0.1", 0), backlog=64)
        self.port = self._socket.getsockname()[1]
        self.accepted = []
        threading.Thread(target=self._accept, daemon=True).start()

    def _accept(self):
        while True:
            try:
                self.accepted.append(self._socket.accept()[0])
            except OSError:
                return

    def end(self):
        self._socket.close()
        for connection in self.accepted:
            connection.close()
