"""The stand-in for PostgREST in front of a real PostgreSQL: what it serves, refuses and survives."""

import base64
import http.client
import json
import pathlib
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
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


def setUpModule():
    global OWNER, AUTHENTICATOR
    unittest.addModuleCleanup(shutil.rmtree, FOLDER)
    unittest.addModuleCleanup(postgres, "remove")
    OWNER, AUTHENTICATOR = postgres("start")


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


class Served(unittest.TestCase):
    """The server, in this process, on a port of its own."""

    patience = 30
    statement_timeout = 10

    def setUp(self):
        handler = type("Handler", (server.Handler,), {"timeout": self.patience})
        behind = database.Database(AUTHENTICATOR, statement_timeout=self.statement_timeout)
        served = server.Server(0, api.Api(behind, SECRET), handler=handler)
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


class WireContract(Served):
    def write(self, email, count, device):
        known = {"customer_email": email, "device_id": device, "day": DAY, "hour": 14, "count": count}
        known |= {"bundle_id": "org.Editor", "app_name": "Éditeur", "is_hidden": False, "updated_at": TIME}
        known |= {"device_name": "Ana's laptop", "last_seen_at": TIME}
        for table, keys, others in (
            ("device_day_counts", "customer_email,device_id,day", "count,updated_at"),
            ("device_hour_counts", "customer_email,device_id,day,hour", "count,updated_at"),
            ("device_app_hour_counts", "customer_email,device_id,day,hour,bundle_id", "count,updated_at"),
            ("device_app_registry", "customer_email,bundle_id", "app_name,is_hidden,updated_at"),
            ("devices", "customer_email,device_id", "device_name,last_seen_at"),
        ):
            row = json.dumps({name: known[name] for name in f"{keys},{others}".split(",")})
            target = f"{table}?on_conflict={keys}"
            self.assertEqual(self.ask("POST", target, row, Prefer="resolution=merge-duplicates"), (201, ""))

    def test_answers_the_twelve_requests_whatever_is_in_an_address(self):
        encoded = {"ana+b&c%d é@x": "ana%2Bb%26c%25d%20%C3%A9%40x", "a+b@x": "a%2Bb@x", "a b@x": "a+b@x"}
        for number, address in enumerate(encoded):
            for count, device in ((10, "first"), (number, "first"), (100, "second")):
                self.write(address, count, device)
        for number, (address, text) in enumerate(encoded.items()):
            day = f"device_day_counts?customer_email=eq.{text}&device_id=eq.first&day=eq.2026-03-0"
            self.assertEqual(self.ask("GET", f"{day}5&select=count"), (200, f'[{{"count":{number}}}]'))
            self.assertEqual(self.ask("GET", f"{day}6&select=count"), (200, "[]"))
            day, total = {"day": DAY}, {"total_count": 100 + number}
            editor = {"bundle_id": "org.Editor", "app_name": "Éditeur", **total}
            machine = {"device_name": "Ana's laptop", "last_seen_at": TIME}
            for function, arguments, expected in (
                ("today_total", {"p_day": DAY}, 100 + number),
                ("daily_totals", {"p_days": 30, "p_end_day": DAY}, [day | total]),
                ("hourly_totals", {"p_day": DAY}, [{"hour": 14, **total}]),
                ("app_hourly_totals", {"p_day": DAY}, [{"hour": 14, **editor}]),
                ("app_daily_totals", {"p_days": 30, "p_end_day": DAY}, [day | editor]),
                ("devices", {}, [{"device_id": device, **machine} for device in ("first", "second")]),
            ):
                arguments = json.dumps({"p_email": address, **arguments})
                status, body = self.ask("POST", f"rpc/get_account_{function}", arguments)
                self.assertEqual((status, json.loads(body)), (200, expected))

    def test_gives_anonymous_clients_nothing_else(self):
        self.write("eve@x.example", 7, "first")
        for table in ("device_hour_counts", "device_app_hour_counts", "device_app_registry", "devices"):
            self.assertEqual(self.ask("GET", f"{table}?customer_email=eq.eve@x.example"), (200, "[]"))
        self.assertEqual(self.ask("GET", "device_day_counts?select=customer_email")[0], 401)
        for method in ("DELETE", "PATCH", "PUT"):
            self.assertEqual(self.ask(method, "devices?customer_email=eq.eve@x.example", "{}")[0], 405)


class Tokens(Served):
    def test_are_refused_unless_signed_with_the_secret_and_in_their_time(self):
        now = 1_767_268_800
        table = {
            "three parts": ["", "a.b", f"{KEY}.x"],
            "decoded": ["..", f"!{KEY}", "é.x.y", token([])],
            "HS256": [f"{segment({'alg': 'none'})}.{segment({})}.", token({}, "none"), token({}, "hs256")],
            "signature": [token({}, secret="other"), token({}, secret=""), KEY[:-1], KEY[:-43]],
            "expired": [token({"exp": now - 60})],
            "not yet": [token({"nbf": now + 60})],
            "claims": [token({"exp": "tomorrow"}), token({"exp": True}), token({"role": 7})],
        }
        for reason, texts in table.items():
            for text in texts:
                with self.subTest(text), self.assertRaisesRegex(errors.ApiError, f"^401 .*{reason}"):
                    tokens.verify(text, SECRET, now)
        for claims in ({}, {"exp": now + 60, "nbf": now - 60}, {"exp": now - 20, "nbf": now + 20}):
            self.assertEqual(tokens.verify(token(claims), SECRET, now)[0], "anon")

    def test_decide_what_a_request_becomes(self):
        for role, expected in (
            (None, "200 number"),
            ("anon", "200 number"),
            ("fernhollow", "403 42501"),
            ("nowhere", "400 22023"),
            ("anon'; reset role; --", "400 22023"),
        ):
            bearer = role and f"Bearer {token({'role': role})}"
            status, body = self.ask("POST", TOTAL, UNKNOWN, Authorization=bearer)
            self.assertEqual(f"{status} {'number' if body == '0' else json.loads(body)['code']}", expected)
        for key, bearer in ((None, KEY), ("wrong", KEY), (KEY, "wrong")):
            answer = self.ask("POST", TOTAL, UNKNOWN, apikey=key, Authorization=f"Bearer {bearer}")
            self.assertEqual(answer[0], 401)


class Requests(Served):
    """With a table and functions of other shapes than Fernhollow's, for errors of every kind."""

    statement_timeout = 0.3

    def setUp(self):
        super().setUp()
        value("""
            drop table if exists things cascade;
            create table things (id bigint primary key, "100 %s" text not null default 'none', owner text);
            create or replace function nothing() returns void language sql as '';
            create or replace function names() returns setof text language sql as $$ values ('b'), ('a')$$;
            create or replace function numbers(up_to int) returns table (n bigint) language sql
                as 'select generate_series(1, up_to)';
            create or replace function greet("Who" text default 'you', loud bool default false) returns text
                language sql as 'select case when loud then upper("Who") else "Who" end';
            create or replace function twice(a int, b int default 0) returns int language sql as 'select 1';
            create or replace function twice(a int, c text default '') returns int language sql as 'select 1';
            create or replace function wait() returns void language sql as 'select pg_sleep(9)';
            create or replace function hidden() returns int language sql as 'select 1';
            grant select, insert, update on things to anon;
            grant execute on all functions in schema public to anon;
            revoke execute on function hidden() from anon""")

    def test_call_functions_of_every_shape(self):
        for function, given, status, expected in (
            ("nothing", "{}", 204, ""),
            ("names", "", 200, '["b", "a"]'),
            ("numbers", '{"up_to": 2}', 200, '[{"n":1}, \n {"n":2}]'),
            ("greet", "{}", 200, '"you"'),
            ("greet", '{"Who": "\\"é\\"\\n", "loud": true}', 200, '"\\"É\\"\\n"'),
        ):
            self.assertEqual(self.ask("POST", f"rpc/{function}", given), (status, expected))

    def test_write_rows_together_or_not_at_all(self):
        merge, ignore = "return=minimal, resolution=merge-duplicates", "resolution=ignore-duplicates"
        for rows, prefer, status, expected in (
            ([{"id": 1, "100 %s": "x"}, {"id": 2**53 + 1, "100 %s": "y"}], None, 201, f"1 x,{2**53 + 1} y"),
            ({"id": 1, "100 %s": "z"}, None, 409, "1 x,9007199254740993 y"),
            ({"id": 1, "100 %s": "z"}, merge, 201, "1 z,9007199254740993 y"),
            ({"id": 1, "owner": "me"}, merge, 201, "1 z,9007199254740993 y"),
            ([{"id": 2, "100 %s": "v"}, {"id": 1, "100 %s": "w"}], ignore, 201, "1 z,2 v,9007199254740993 y"),
            ([{"id": 3}, {"id": 2}], None, 409, "1 z,2 v,9007199254740993 y"),
            ([], None, 201, "1 z,2 v,9007199254740993 y"),
        ):
            answer = self.ask("POST", "things?on_conflict=id", json.dumps(rows), Prefer=prefer)
            things = value("select string_agg(id || ' ' || \"100 %s\", ',' order by id) from things")
            self.assertEqual((answer[0], things), (status, expected))
        listed = self.ask("GET", "things?select=id,100%20%25s&order=id.desc&limit=2&offset=1")
        self.assertEqual(listed, (200, '[{"id":2,"100 %s":"v"}, \n {"id":1,"100 %s":"z"}]'))

    def test_that_are_wrong_or_not_served_are_explained_and_do_no_harm(self):
        table = r"""
            400 PGRST102: things  | things {"id": | things {"id":1} x | things 7 | things [1] | rpc/numbers []
            400 PGRST102: things [{"id":1},{"owner":"x"}] | things [[[[ | things {"id":"\xff"}
            400 PGRST102: things {"id":NaN}
            400 22P05: things {"id":1,"owner":"\u0000"}
            400 22021: rpc/greet {"Who":"\u0000"} | rpc/greet {"Who":"\ud800"} | things {"\ud800":1}
            400 22P02: things {"id":"one"} | things {"id":1.5} | things?id=eq.one
            400 22003: things {"id":9223372036854775808}
            400 23502: things {"id":null}
            400 42703: things {"price":2} | things {"id\") values (1); drop table things; --":1}
            400 42703: things?price=eq.1 | things?select=id%20from%20things;--
            400 42P10: things?on_conflict=owner {"id":1}
            404 42P01: nowhere {"a":1} | nowhere | pg_class | things"%3Bdrop%20table%20things
            404 PGRST202: rpc/nowhere {} | rpc/pg_sleep {"seconds":9}
            404 42883: rpc/numbers {} | rpc/numbers {"up_to":1,"x":0} | rpc/numbers {"UP_TO":1}
            404 PGRST125: things%00x | things/1 | things%ff
            300 42725: rpc/twice {"a":1}
            401 42501: rpc/hidden {}
            500 57014: rpc/wait {}
            405 PGRST101: rpc/nothing
            400 2201W: things?limit=-1
            400 PGRST100: things?id=gt.1 | things?id=1 | things?id=not.eq.1 | things?or=(id.eq.1,id.eq.2)
            400 PGRST100: things?select=id::text | things?select=owner(id) | things?select="id"
            400 PGRST100: things?order=id.sideways | things?%00=eq.1 | things?%ff=eq.1 | things?owner=eq.%ff
            400 PGRST100: rpc/names?limit=1 {} | rpc/numbers {"up_to":[1]} | things?columns=id {"id":1}
            400 PGRST100: things {"\u0000":1}"""
        client = self.client()
        for line in table.strip().splitlines():
            expected, cases = line.strip().split(": ", 1)
            for case in cases.split(" | "):
                target, given, body = case.partition(" ")
                prefer = "resolution=merge-duplicates" if "on_conflict" in target else None
                body = body.encode().replace(rb"\xff", b"\xff")
                status, answer = ask(client, "POST" if given else "GET", target, body, Prefer=prefer)
                content = json.loads(answer)
                self.assertEqual(f"{status} {content['code']}", expected, case)
                self.assertEqual(set(content), {"code", "message", "details", "hint"})
        for name, texts, status in (
            ("Accept", ["application/json;q=0.9, */*"], 200),
            ("Accept", ["application/vnd.pgrst.object+json", "text/csv"], 406),
            ("Accept_Profile", ["private"], 406),
            ("Content_Type", ["text/csv"], 415),
            ("Prefer", ["count=exact", "return=representation"], 400),
            ("Range", ["0-1"], 400),
        ):
            for text in texts:
                self.assertEqual(self.ask("GET", "things", **{name: text})[0], status, text)
        without_keys = self.ask("POST", "things", '{"id":1}', Prefer="resolution=merge-duplicates")
        self.assertEqual(without_keys[0], 400)
        self.assertEqual(self.ask("GET", "things"), (200, "[]"))


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
        self.assertRegex(program.stdout.readline(), r"^GET /rest/v1/devices 200 [\d.]+ ms$")
        self.assertRegex(program.stdout.readline(), r"^GET \(another path\) 404 ")
