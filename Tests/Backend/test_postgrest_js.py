"""The twelve requests as PostgREST's own JavaScript client sends them. scripts/fetch_postgrest_js puts it in place."""

import json
import pathlib
import shutil
import subprocess
import unittest

from served import DAY, KEY, TIME, Served, listed

TOP = pathlib.Path(__file__).resolve().parents[2]
CLIENT = TOP / "build/postgrest-js/node_modules/@supabase/postgrest-js"


@unittest.skipUnless(CLIENT.exists() and shutil.which("node"), "scripts/fetch_postgrest_js has not been run")
class JavaScriptClient(Served):
    def test_gets_the_twelve_answers_and_clear_refusals(self):
        url = f"http://127.0.0.1:{self.address[1]}/rest/v1"
        line = ["node", TOP / "Tests/Backend/twelve.mjs", CLIENT, url, KEY]
        done = subprocess.run(line, capture_output=True, text=True, timeout=60)
        self.assertEqual(done.returncode, 0, done.stderr)
        total, editor = {"total_count": 7}, {"bundle_id": "org.Editor", "app_name": "Éditeur", "total_count": 7}
        machine = {"device_id": listed("jo+b&c%d é@x", "first"), "device_name": "laptop", "last_seen_at": TIME}
        expected = [[201, None]] * 5 + [[200, [{"count": 7}]], [200, 7], [200, [{"day": DAY} | total]]]
        expected += [[200, [{"hour": 14} | row]] for row in (total, editor)]
        expected += [[200, [{"day": DAY} | editor]], [200, [machine]]]
        self.assertEqual(json.loads(done.stdout), expected + [[status, None] for status in (400, 406, 406, 400)])
