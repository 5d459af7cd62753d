"""The stand-in for PostgREST in front of a real PostgreSQL: what it serves and what it refuses."""

import json
import unittest

from served import DAY, KEY, SECRET, TIME, TOTAL, UNKNOWN, Served, ask, errors, listed, segment, token, tokens, value


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
                ("devices", {}, [{"device_id": listed(address, device), **machine} for device in ("first", "second")]),
            ):
                arguments = json.dumps({"p_email": address, **arguments})
                status, body = self.ask("POST", f"rpc/get_account_{function}", arguments)
                self.assertEqual((status, json.loads(body)), (200, expected))

    def test_gives_anonymous_clients_nothing_else(self):
        self.write("eve@x.example", 7, "first")
        day = "device_day_counts?customer_email=eq.eve@x.example&device_id=eq.first&day=eq.2026-03-05"
        for target, prefer in (
            *((f"{table}?customer_email=eq.eve@x.example", None) for table in ("device_hour_counts", "devices")),
            *((f"{table}?device_id=eq.nobody", None) for table in ("device_app_hour_counts", "device_day_counts")),
            ("device_day_counts?select=customer_email,device_id&count=eq.7&limit=1", None),
            (f"{day}&select=customer_email", None),
            (f"{day}&count=eq.7&select=count", None),
            (f"{day}&order=count&select=count", None),
            ("device_app_registry", None),
        ):
            for pre_request in (self.pre_request, None):
                self.restart(pre_request)
                self.assertEqual(self.ask("GET", target)[0], 401, target)
        self.assertEqual(self.ask("GET", f"{day}&select=count&limit=1"), (200, '[{"count":7}]'))
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
    pre_request = None

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
