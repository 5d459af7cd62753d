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
            "HS256": [f"{segment({'alg': 'none'})}.{segment({})}.", token({}, "none")],
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
        for role, expected in ((None, 200), ("anon", 200), ("fernhollow", 403), ("anon'; reset role; --", 400)):
            bearer = role and f"Bearer {token({'role': role})}"
            self.assertEqual(self.ask("POST", TOTAL, UNKNOWN, Authorization=bearer)[0], expected, role)
        for key, bearer in ((None, KEY), ("wrong", KEY), (KEY, "wrong")):
            answer = self.ask("POST", TOTAL, UNKNOWN, apikey=key, Authorization=f"Bearer {bearer}")
            self.assertEqual(answer[0], 401)


class WrongRequests(Served):
    """Without the check of each request, which refuses most of them before the stand-in reads them."""

    pre_request = None

    def test_wrong_requests_are_explained_and_do_no_harm(self):
        table = r"""
            400 PGRST102: devices  | devices {"a": | devices 7 | devices [{"device_id":"d"},{"day":"x"}]
            400 22P05: devices {"device_name":"\u0000"}
            400 22008: device_day_counts {"day":"2026-02-30"}
            400 23502: devices {"device_id":null}
            400 42703: devices {"price":2} | devices {"device_id\") values (1); drop table devices; --":1}
            400 42703: devices?price=eq.1 | devices?select=device_id%20from%20devices;--
            404 42P01: nowhere {"a":1} | nowhere | pg_class | devices"%3Bdrop%20table%20devices
            404 PGRST202: rpc/nowhere {} | rpc/pg_sleep {"seconds":9}
            405 PGRST101: rpc/get_account_devices
            400 PGRST100: devices?device_id=gt.1 | devices?or=(device_id.eq.1,device_id.eq.2)"""
        client = self.client()
        for line in table.strip().splitlines():
            expected, cases = line.strip().split(": ", 1)
            for case in cases.split(" | "):
                target, given, body = case.partition(" ")
                status, answer = ask(client, "POST" if given else "GET", target, body)
                content = json.loads(answer)
                self.assertEqual(f"{status} {content['code']}", expected, case)
                self.assertEqual(set(content), {"code", "message", "details", "hint"})
        self.assertEqual(value("SELECT count(*) FROM devices WHERE device_id IN ('d', '1')"), 0)
