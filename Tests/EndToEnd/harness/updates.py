"""The maker of the program: a key, releases in one file each, and the web site that offers them."""

import functools
import http.server
import json
import os
import pathlib
import shutil
import subprocess
import threading

from .program import program_under_test

TOP = pathlib.Path(__file__).resolve().parents[3]
APP_RUN = '#!/bin/sh\nexec "$APPDIR/usr/lib/fernhollow/fernhollow" "$@"\n'


class Site:
    """Serves a folder on this machine. `altered` maps a file's name to what is sent in its place."""

    def __init__(self, folder):
        self.folder = folder
        self.folder.mkdir()
        self.altered = {}
        self.requests = []
        self._server = http.server.ThreadingHTTPServer(
            ("127.0.0.1", 0), functools.partial(_Visit, self)
        )
        self._server.daemon_threads = True
        self.address = f"http://127.0.0.1:{self._server.server_port}"
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    def end(self):
        self._server.shutdown()
        self._server.server_close()

    def behave(self):
        """From now on serves the files as they are."""
        self.altered = {}
        self.requests = []


class _Visit(http.server.BaseHTTPRequestHandler):
    def __init__(self, site, *arguments):
        self.site = site
        super().__init__(*arguments)

    def do_GET(self):
        name = self.path.lstrip("/")
        file = self.site.folder / name
        body = self.site.altered.get(name) or (file.read_bytes() if file.is_file() else None)
        if body is None:
            self.send_error(404)
            return
        self.send_response(200)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        try:
            self.wfile.write(body)
        except OSError:
            pass  # the program may close the connection at any time
        self.site.requests.append(name)

    def log_message(self, *_):
        pass


class Maker:
    """Makes releases of the program under test that differ only in fernhollow.json."""

    def __init__(self, folder, site):
        self._folder = folder
        self._folder.mkdir()
        self._site = site
        self._key = folder / "key"
        self._public_key = self._release("keys", self._key).strip()
        self._program = folder / "fernhollow"
        shutil.copy(program_under_test(), self._program)
        if not os.environ.get("FERNHOLLOW_SANITIZED"):  # sanitizers' reports need the symbols
            subprocess.run(["strip", self._program], check=True, timeout=120)

    def package(self, version, libraries=0):
        """The release in one file, with so many bytes of padding in place of libraries."""
        file = self._folder / f"Fernhollow-{version}.AppImage"
        appdir = self._folder / f"appdir-{version}"
        home = appdir / "usr/lib/fernhollow"
        home.mkdir(parents=True)
        os.link(self._program, home / "fernhollow")
        (home / "libraries").write_bytes(os.urandom(libraries))
        (home / "fernhollow.json").write_text(json.dumps(self._facts(version)))
        (appdir / "AppRun").write_text(APP_RUN)
        (appdir / "AppRun").chmod(0o755)
        subprocess.run(
            [TOP / "Packaging/appimage", "--self-extracting", appdir, file], check=True, timeout=120
        )
        return file

    def publish(self, version, package, notes):
        """Puts a package on the site and into its feed."""
        facts = self._folder / "fernhollow.json"
        facts.write_text(json.dumps(self._facts(version)))
        notes_file = self._folder / "notes"
        notes_file.write_text(notes)
        shutil.copy(package, self._site.folder / package.name)
        self._release(
            *("feed", "--key", self._key, "--program", facts, "--package-type", "appimage"),
            *("--notes", notes_file, "--url", f"{self._site.address}/{package.name}"),
            *(package, self._site.folder / "appcast.xml"),
        )

    def _facts(self, version):
        return {
            "CFBundleShortVersionString": version,
            "CFBundleVersion": version,
            "UpdateFeedURL": f"{self._site.address}/appcast.xml",
            "UpdatePublicKey": self._public_key,
            "UpdateCheckInterval": "86400",
        }

    def _release(self, *arguments):
        done = subprocess.run(
            [os.environ["FERNHOLLOW_RELEASE"], *arguments], capture_output=True, text=True, timeout=120
        )
        if done.returncode != 0:
            raise AssertionError(f"fernhollow-release: {done.stderr}")
        return done.stdout
