"""A generated month of counts that looks like a person's work, the same each time."""

import contextlib
import datetime
import http.server
import json
import random
import sqlite3
import threading

APPLICATIONS = [
    ("org.example.code", "Code Editor"),
    ("org.example.terminal", "Terminal"),
    ("org.example.browser", "Web Browser"),
    ("org.example.chat", "Team Chat"),
    ("org.example.mail", "Mail"),
    ("org.example.writer", "Writer"),
    ("org.example.notes", "Notes"),
    ("org.example.sheets", "Spreadsheets"),
    ("org.example.wangye", "网页浏览器"),
    ("org.example.muharrir", "محرر النصوص"),
    ("org.example.database", "Database Console"),
    ("org.example.music", "Music"),
    ("org.example.calendar", "Calendar"),
    ("org.example.draw", "Vector Drawing"),
    ("org.example.photos", "Photo Library"),
    ("org.example.meetings", "Meetings"),
    ("org.example.files", "Files"),
    ("org.example.passwords", "Passwords"),
    ("org.example.reader", "Document Reader"),
    ("org.example.calculator", "Calculator"),
    ("org.example.longest", "Integrated Development Environment for Very Long Names"),
    ("org.example.maps", "Maps"),
    ("org.example.podcasts", "Podcasts"),
    ("org.example.games", "Chess"),
    ("org.example.settings", "Settings"),
]
# How much of a day's typing falls into each hour, from midnight on.
HOURS = [1, 0, 0, 0, 0, 0, 0, 3, 14, 32, 40, 36, 12, 26, 38, 42, 36, 24, 12, 8, 10, 12, 7, 3]


class History:
    """Counts by day, hour and application, `days` days up to `last`, the last of them up to `hour`."""

    def __init__(self, last, hour=23, days=30, applications=25, seed=7):
        chance = random.Random(seed)
        self.names = dict(APPLICATIONS[:applications])
        for number in range(len(self.names), applications):
            self.names[f"org.example.more{number}"] = f"Application {number}"
        self.last = datetime.date.fromisoformat(last)
        self.counts = {}
        for age in reversed(range(days)):
            day = self.last - datetime.timedelta(days=age)
            mood = chance.uniform(0.55, 1.25) * (0.18 if day.weekday() >= 5 else 1)
            if day.weekday() == 6 and chance.random() < 0.5:
                continue  # a day off
            for rank, application in enumerate(self.names):
                liking = mood * chance.uniform(0.4, 1.6) / (rank + 1) ** 1.05
                for at, share in enumerate(HOURS[: hour + 1] if age == 0 else HOURS):
                    count = int(38 * share * liking * chance.uniform(0.3, 1.7))
                    if count:
                        self.counts[day.isoformat(), at, application] = count

    def days(self):
        """The total of each day."""
        totals = {}
        for (day, _, _), count in self.counts.items():
            totals[day] = totals.get(day, 0) + count
        return totals

    def replace(self, file):
        """Replaces the contents of a database by these counts."""
        with contextlib.closing(sqlite3.connect(file)) as database, database:
            for table in ("app_registry", "app_hour_counts", "hourly_counts", "daily_counts"):
                database.execute(f"DELETE FROM {table}")
        self.fill(file)

    def fill(self, file):
        """Adds these counts to a database that the program made."""
        with contextlib.closing(sqlite3.connect(file)) as database, database:
            write = database.executemany
            write("INSERT INTO app_registry (bundle_id, app_name, first_seen) VALUES (?, ?, 1)", self.names.items())
            hours = {}
            for (day, hour, _), count in self.counts.items():
                hours[day, hour] = hours.get((day, hour), 0) + count
            write(
                "INSERT INTO app_hour_counts (day, hour, bundle_id, count, updated_at) VALUES (?, ?, ?, ?, 1)",
                ((*key, count) for key, count in self.counts.items()),
            )
            write(
                "INSERT INTO hourly_counts (day, hour, count, updated_at) VALUES (?, ?, ?, 1)",
                ((*key, count) for key, count in hours.items()),
            )
            write("INSERT INTO daily_counts (day, count, updated_at) VALUES (?, ?, 1)", self.days().items())


class AccountServer:
    """A backend that knows an account's days and machines, and accepts every upload."""

    def __init__(self, address, history, devices=()):
        days = [{"day": day, "total_count": total} for day, total in history.days().items()]
        answers = {"get_account_daily_totals": days, "get_account_devices": list(devices)}

        class Handler(http.server.BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def answer(self):
                request = json.loads(self.rfile.read(int(self.headers.get("Content-Length", 0))) or "{}")
                is_asked = isinstance(request, dict) and request.get("p_email") == address
                procedure = self.path.rsplit("/", 1)[-1]
                body = json.dumps(answers.get(procedure, []) if is_asked else []).encode()
                self.send_response(200)
                self.send_header("Content-Type", "application/json")
                self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body)

            do_GET = do_POST = answer

            def log_message(self, *_):
                pass

        class Server(http.server.ThreadingHTTPServer):
            def handle_error(self, *_):
                pass  # a client that has ended

        self._server = Server(("127.0.0.1", 0), Handler)
        self.port = self._server.server_port
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    def end(self):
        self._server.shutdown()
        self._server.server_close()
