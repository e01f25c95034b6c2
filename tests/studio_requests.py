#!/usr/bin/env python3
"""Usage: studio_requests.py KVX [SECONDS]. The studio behind its page, asked without a browser: what it refuses, that its
pixels and files are those of kvx render, that work stops when nobody wants it, and SECONDS of random requests."""
import json
import os
import random
import socket
import subprocess
import sys
import tempfile
import time
import unittest

from studio_driver import Studio

KVX = os.path.abspath(sys.argv[1])
SECONDS = float(sys.argv[2]) if len(sys.argv) > 2 else 4

# One effect with a value over time, one that remembers frames, one in half opacity.
CHAIN = {"effects": [{"effect": "Brightness", "params": {"Bringhtness": {"0": 20, "30": 80}}}, {"effect": "Delay"},
                     {"effect": "Emboss", "opacity": 50}]}


def kvx(*words, **more):
    return subprocess.run([KVX, *words], check=True, capture_output=True, text=True, **more)


class StudioCase(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.home = cls.folder.name
        kvx("render", "--frames", "120", "--size", "160x90", "--codec", "ffv1", "-e", "Warm", "demo", "clip.mkv",
            cwd=cls.home)
        cls.studio = Studio(KVX, "clip.mkv", cls.home, {"XDG_CONFIG_HOME": cls.home + "/config"})
        cls.addClassCleanup(cls.folder.cleanup)

    @classmethod
    def tearDownClass(cls):
        assert cls.studio.stop() == 0

    def path(self, name):
        return os.path.join(self.home, name)

    def ask(self, name, body, status=200, studio=None):
        got, answer = (studio or self.studio).request(name + "?page=test", body)
        self.assertEqual(got, status, answer[:300])
        return answer

    def job(self, phase, studio=None, seconds=300):
        """Follows the events until the render is in this phase."""
        studio = studio or self.studio
        with socket.create_connection(("127.0.0.1", studio.port)) as connection:
            token = studio.address.split("/")[3]
            connection.sendall(f"GET /{token}/events?page=test HTTP/1.1\r\nHost: 127.0.0.1:{studio.port}\r\n\r\n"
                               .encode())
            connection.settimeout(5)
            heard = b""
            end = time.time() + seconds
            while f'"phase":"{phase}"'.encode() not in heard.rsplit(b"data:", 1)[-1]:
                self.assertLess(time.time(), end, heard[-300:])
                heard += connection.recv(4096)

    def test_refuses_strangers(self):
        studio = self.studio
        root = f"http://127.0.0.1:{studio.port}/"
        for address in (root, root + "0" * 32 + "/", root + studio.address.split("/")[3][:-1] + "/"):
            for name in ("", "describe", "main.js"):
                self.assertEqual(studio.request(name, address=address)[0], 403)
        for headers in ({"Host": "studio.example"}, {"Host": f"127.0.0.1.example:{studio.port}"},
                        {"Origin": "http://studio.example"}, {"Origin": "null"},
                        {"Origin": f"http://127.0.0.1:{studio.port + 1}"}):
            self.assertEqual(studio.request("describe", headers=headers)[0], 403, headers)
        self.assertEqual(studio.request("describe", headers={"Origin": root[:-1]})[0], 200)
        self.assertEqual(studio.request("lines", {}, {"Content-Type": "text/plain"})[0], 415)
        with self.assertRaises(OSError):
            socket.create_connection(("127.0.0.2", studio.port), 2).close()

    def test_writes_nothing_but_a_new_file_beside_the_input(self):
        os.symlink("/nonexistent/x.png", self.path("link.png"))
        before = sorted(os.listdir(self.home))
        for name in ("", "../x.mkv", "/tmp/x.mkv", "a/b.mkv", "a\\b.mkv", ".mkv", "..", "x", "x.conf", "x.m3u8", "a\nb.mkv",
                     "clip.mkv", "./clip.mkv", "link.png", "x%04d.mkv", "x" * 300 + ".mkv", "x.mkv/.", "nul\0.mkv"):
            answer = json.loads(self.ask("render", {"recipe": CHAIN, "name": name}, 400))
            self.assertTrue(answer["error"], name)
        self.assertEqual(sorted(os.listdir(self.home)), before)
        os.remove(self.path("link.png"))

    def test_pixels_are_those_of_the_command(self):
        jumping = {"effects": [CHAIN["effects"][0], CHAIN["effects"][2]]}  # needs no frame but its own
        for chain, frames in ((jumping, (100, 3, 60)), (CHAIN, (31, 0, 17, 119, 18))):  # as somebody scrubs
            with open(self.path("chain.json"), "w") as file:
                json.dump(chain, file)
            folder = tempfile.mkdtemp(dir=self.home)
            kvx("render", "--recipe", "chain.json", "clip.mkv", folder + "/%04d.png", cwd=self.home)
            for frame in frames:
                with open(f"{folder}/{frame:04d}.png", "rb") as file:
                    self.assertEqual(self.ask("picture", {"recipe": chain, "frame": frame}) == file.read(), True, frame)

    def test_line_and_render_make_the_same_file(self):
        lines = json.loads(self.ask("lines", {"recipe": CHAIN, "name": "by line.mkv"}))
        self.assertEqual(json.loads(lines["recipe"])["effects"][2]["opacity"], 50)
        line = lines["lines"][0]["line"]
        self.assertTrue(line.startswith("kvx render "))
        subprocess.run(line.replace("kvx", KVX, 1), shell=True, check=True, cwd=self.home, capture_output=True)
        self.ask("render", {"recipe": CHAIN, "name": "by studio.mkv"})
        self.job("done")
        frames = [kvx("render", "-e", "Invert", name, "-", "--raw", "160x90", cwd=self.home, errors="surrogateescape").stdout
                  for name in ("by line.mkv", "by studio.mkv")]
        self.assertEqual(frames[0], frames[1])
        self.assertEqual(len(frames[0].encode(errors="surrogateescape")), 120 * 160 * 90 * 4)

    def test_lines_for_other_programs_say_what_those_can_do(self):
        def lines(effect, param, values):
            recipe = {"effects": [{"effect": effect, "params": {param: values}}]}
            return {row["program"]: row for row in json.loads(self.ask("lines", {"recipe": recipe}))["lines"]}

        number = lines("Brightness", "Bringhtness", {"0": 20, "30": 80})
        self.assertIn("'bringhtness=0=20;30=80'", number["melt"]["line"])
        self.assertEqual(number["gst-launch-1.0"]["line"], "")
        color = lines("BGFWave", "BG_Color", {"0": 255, "30": 65280})  # melt goes by channel: other pictures
        self.assertIn("BG_Color=0:255,30:65280", color["kvx"]["line"])
        self.assertEqual((color["melt"]["line"], "colours over time" in color["melt"]["note"]), ("", True))

    def test_render_stops_when_cancelled_and_when_the_page_is_gone(self):
        studio = Studio(KVX, "demo", self.home)
        self.addCleanup(studio.stop)
        slow = {"recipe": CHAIN, "frames": 10000, "name": "never.mkv"}
        self.ask("render", slow, 200, studio)
        self.ask("render", {**slow, "name": "second.mkv"}, 400, studio)
        self.ask("cancel", {}, 200, studio)
        self.job("cancelled", studio)
        self.ask("render", slow, 200, studio)
        time.sleep(6)  # no stream of events: the page is closed
        self.job("cancelled", studio)
        self.ask("render", slow, 200, studio)
        self.assertEqual(studio.stop(), 1)  # what was under way was not done
        self.assertEqual([name for name in os.listdir(self.home) if "never" in name or "second" in name], [])

    def test_says_what_is_wrong(self):
        for name, body, words in (
                ("preview", {"recipe": {"effects": [{"effect": "Snwo"}]}}, "did you mean"),
                ("preview", {"recipe": {"effects": [{"effect": "Warm", "params": {"x": 1}}]}}, "no parameter"),
                ("preview", {"recipe": {"effects": [{"effect": "Brightness", "params": {"Bringhtness": 101}}]}}, "range"),
                ("preview", {"recipe": {"effects": [{"effect": "Warm"}] * 33}}, "at most 32"),
                ("preview", {"x": 100, "width": 100, "height": 10}, "outside"),
                ("preview", {"frames": 1e9}, "frames"), ("preview", {"pad": "9999x1"}, "8192"),
                ("recipe", {"text": "{"}, "not JSON"), ("recipe", {"text": "[" * 100000}, "not JSON"),
                ("favourites", {"favourites": [-1]}, "not known"), ("preview", b"[]", "not a JSON object")):
            self.assertIn(words, json.loads(self.ask(name, body, 400))["error"])
        self.assertEqual(self.studio.request("preview", b"{}" + b" " * (1 << 20))[0], 413)

    def test_keeps_favourites(self):
        self.ask("favourites", {"favourites": [71, 74]})
        self.assertEqual(json.loads(self.ask("describe", None))["favourites"], [71, 74])

    def memory(self):
        with open(f"/proc/{self.studio.process.pid}/status") as file:
            return next(int(line.split()[1]) for line in file if line.startswith("VmRSS"))

    def test_survives_random_requests(self):
        seed = random.randrange(1 << 32)
        print("seed", seed)
        draw = random.Random(seed)
        token = self.studio.address.split("/")[3]
        names = ["", "describe", "thumbnail", "events", "preview", "picture", "lines", "render", "cancel", "recipe",
                 "favourites", "main.js", "%2e%2e/%2e%2e/etc/passwd", "x" * 9000]
        values = [0, -1, 1.5, 1e300, True, None, "", "demo", "1x1", "80x45", [], {}, [[]], {"a": {}}, "\ud800", CHAIN,
                  {"effects": []}, {"effects": [{"effect": "Snow"}]}]
        keys = ["recipe", "frame", "frames", "pad", "x", "y", "width", "height", "fitWidth", "draft", "before", "keep",
                "number", "text", "favourites"]

        def one():
            name = draw.choice(names)
            body = json.dumps({draw.choice(keys): draw.choice(values) for _ in range(draw.randrange(6))}).encode()
            if draw.random() < 0.2:
                body = bytes(draw.randrange(256) for _ in range(draw.randrange(400)))
            head = f"{draw.choice(['GET', 'POST', 'POST', 'POST', 'HEAD', 'PUT', 'OPTIONS', 'X'])} " \
                   f"/{token if draw.random() < 0.9 else draw.choice(['', 'x', token[:9]])}/{name}" \
                   f"?page={draw.choice(['a', 'b', 'c' * 99, str(draw.random())[2:]])}&effect={draw.choice(['Warm', '74', '', 'x'])}" \
                   " HTTP/1.1\r\n"
            headers = {"Host": f"127.0.0.1:{self.studio.port}", "Content-Type": "application/json",
                       "Content-Length": str(len(body))}
            if draw.random() < 0.3:
                headers[draw.choice(["Host", "Content-Length", "Transfer-Encoding", "Range", "Origin", "Connection",
                                     "Content-Encoding", "Expect"])] = draw.choice(
                    ["", "chunked", "-1", "99999999999999999999", "bytes=0-", "bytes=9-1,4-", "x" * 5000, "gzip", "close",
                     "100-continue"])
            text = head.encode() + "".join(f"{k}: {v}\r\n" for k, v in headers.items()).encode() + b"\r\n" + body
            if draw.random() < 0.1:
                text = text[:draw.randrange(len(text))]
            with socket.create_connection(("127.0.0.1", self.studio.port), 10) as connection:
                connection.settimeout(0.1)
                try:
                    connection.sendall(text)
                    if draw.random() < 0.8:
                        connection.recv(65536)
                except OSError:
                    pass

        start = time.time()
        count = 0
        memory = []
        while time.time() - start < SECONDS:
            one()
            count += 1
            if count % 50 == 0:
                memory.append(self.memory())
        self.assertIsNone(self.studio.process.poll())
        self.ask("describe", None)
        print(f"{count} requests, memory in MiB at the quarters:",
              [memory[int(len(memory) * share)] // 1024 for share in (0, 0.25, 0.5, 0.75)] if memory else [],
              self.memory() // 1024)
        if SECONDS > 60:
            self.assertLess(memory[-1], 1.2 * memory[len(memory) // 4])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=1)
