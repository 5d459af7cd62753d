"""What the tests of the stand-in share: a PostgreSQL of their own and the server in front of it, in this process."""

import atexit
import base64
import hashlib
import http.client
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import threading
import unittest

import psycopg

LOCAL = pathlib.Path(__file__).resolve().parents[2] / "Backend/local"
sys.path.insert(0, str(LOCAL))

from stand_in import api, database, errors, server, tokens  # noqa: E402

SECRET = "fernhollow-local-development-only-secret"
TOTAL = "rpc/get_account_today_total"
UNKNOWN = '{"p_email":"x","p_day":"2026-03-05"}'
DAY = "2026-03-05"
TIME = "2026-03-05T14:07:09Z"
FOLDER = pathlib.Path(tempfile.mkdtemp(prefix="fernhollow-stand-in-"))


def postgres(command):
    """Starts or stops the tests' cluster; returns the owner's connection string and the authenticator's."""
    line = [LOCAL / "postgres", command, FOLDER / "postgres"]
    return subprocess.run(line, capture_output=True, text=True, check=True).stdout.splitlines()


def value(statement):
    """As the owner, whom no policy binds."""
    with psycopg.connect(OWNER, autocommit=True, options="-c search_path=public") as connection:
        cursor = connection.execute(statement)
        return cursor.fetchone()[0] if cursor.description else None


OWNER, AUTHENTICATOR = postgres("start")
atexit.register(shutil.rmtree, FOLDER)
atexit.register(postgres, "remove")


def segment(content):
    return base64.urlsafe_b64encode(json.dumps(content).encode()).decode().rstrip("=")


def token(claims, algorithm="HS256", secret=SECRET):
    """Signed correctly, whatever it says."""
    text = f"{segment({'alg': algorithm})}.{segment(claims)}"
    return f"{text}.{tokens.sign(text, secret).decode()}"


KEY = token({"role": "anon"})


def ask(client, method, target, body=None, **headers):
    """The status and the body of the answer."""
    given = {"apikey": KEY, "Content-Type": "application/json", **headers}
    given = {name.replace("_", "-"): text for name, text in given.items() if text}
    client.request(method, f"/rest/v1/{target}", body.encode() if isinstance(body, str) else body, given)
    answer = client.getresponse()
    return answer.status, answer.read().decode()


def listed(address, device):
    """What the list of devices has in the place of an identifier."""
    return hashlib.sha256(f"{address}\n{device}".encode()).hexdigest()


class Served(unittest.TestCase):
    """The server, in this process, on a port of its own."""

    pre_request = "fernhollow.check_request"

    def setUp(self):
        self.restart(self.pre_request)

    def restart(self, pre_request):
        """A server of its own, which lives to the end of the test."""
        behind = database.Database(AUTHENTICATOR, pre_request=pre_request)
        served = server.Server(0, api.Api(behind, SECRET))
        threading.Thread(target=served.serve_forever, args=[0.05]).start()
        for end in (behind.close, served.server_close, served.shutdown):
            self.addCleanup(end)
        self.address = served.server_address

    def client(self):
        client = http.client.HTTPConnection(*self.address, timeout=30)
        self.addCleanup(client.close)
        return client

    def ask(self, method, target, body=None, **headers):
        return ask(self.client(), method, target, body, **headers)
