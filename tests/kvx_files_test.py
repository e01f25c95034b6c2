"""Nothing of a user's is written over unasked, and no file has its name before it is whole."""
import os
import signal
import subprocess
import time

from kvx_support import KVX, KvxTest, main


class Originals(KvxTest):
    def test_inputs_are_never_written_over(self):
        self.kvx("render", "Invert", "demo", "f_%04d.png", "--size", "16x16", "--frames", 4, "--start-number", 5)
        os.symlink(".", self.folder / "link")
        before = {name: self.read(name) for name in self.names() if name.endswith("png")}
        self.assertEqual(list(before), ["f_0005.png", "f_0006.png", "f_0007.png", "f_0008.png"])
        for target in ("./f_%04d.png", "link/f_%04d.png", "f_0006.png"):
            result = self.invert("f_%04d.png", target, "--overwrite", status=2)
            self.assertIn("the output is the input", result.notes)
        self.invert("f_0005.png", "o.png", "--progress", "f_0005.png", "--overwrite", status=2)
        self.assertEqual(before, {name: self.read(name) for name in before})

    def test_existing_files_need_overwrite(self):
        made = {"o.png": ["render", "Invert", "demo", "o.png", "--size", "16x16"],
                "s_1.png": ["render", "Invert", "demo", "s_%d.png", "--size", "16x16", "--frames", "3"],
                "o.mkv": ["render", "Invert", "demo", "o.mkv", "--size", "16x16"],
                "r.json": ["recipe", "write", "Invert", "r.json"],
                "p.jpg": ["preview", "Brightness", "demo", "p.jpg"],
                "c.png": ["contact-sheet", "demo", "c.png", "Invert"]}
        for name, words in made.items():
            self.write(name, b"mine")
            result = self.kvx(*words, status=2)
            self.assertIn(f"{name} exists; --overwrite replaces it", result.notes)
            self.assertEqual(self.read(name), b"mine")
            self.kvx(*words, "--overwrite")
            self.assertNotEqual(self.read(name), b"mine")
        (self.folder / "g").mkdir()
        self.write("g/index.html", b"mine")
        self.kvx("gallery", "demo", "-o", "g", status=2)
        self.write("o.mp4.part", b"mine")
        self.invert("demo", "o.mp4", "--size", "16x16")
        self.assertEqual(self.read("o.mp4.part"), b"mine")
        self.assertFalse([name for name in self.names() if name.startswith(".kvx")])

    def test_causes_are_told(self):
        self.write("plain", b"")
        for name, cause in (("none/o.png", "no such folder"), ("none/o.mp4", "no such folder"),
                            ("plain/o.png", "no such folder"), ("/proc/o.png", "cannot be written")):
            self.assertIn(cause, self.invert("demo", name, "--size", "16x16", status=1).notes)


class Interruptions(KvxTest):
    def interrupt(self, number, *words):
        process = subprocess.Popen([KVX, *words], cwd=self.folder, stderr=subprocess.PIPE)
        for _ in range(200):
            time.sleep(0.05)
            if (self.folder / "p").exists() and b"frame=" in self.read("p"):
                break
        process.send_signal(number)
        notes = process.communicate(timeout=60)[1].decode()
        return process.returncode, notes

    def test_signals_keep_the_old_file_and_name_the_part(self):
        self.clip("long.mkv", "-c:v", "mpeg4", seconds=40, size="320x180", sound=False)
        for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143), (signal.SIGHUP, 143)):
            self.write("o.mkv", b"old")
            self.write("p", b"")
            got, notes = self.interrupt(number, "render", "Invert", "long.mkv", "o.mkv",
                                        "--overwrite", "--progress", "p")
            self.assertEqual(got, status, notes)
            self.assertIn("o.partial.mkv", notes)
            self.assertEqual(self.read("o.mkv"), b"old")
            self.assertTrue(self.read("p").endswith(b"progress=interrupted\n"))
            self.assertGreater(len(self.times("o.partial.mkv")), 0)
            (self.folder / "o.partial.mkv").unlink()
            self.assertEqual(self.names(), ["long.mkv", "o.mkv", "p"])

    def test_a_silent_pipe_does_not_hold_up_the_end(self):
        process = subprocess.Popen([KVX, "render", "Invert", "-", "o.mkv"], cwd=self.folder, stdin=subprocess.PIPE,
                                   stderr=subprocess.PIPE)
        time.sleep(1)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(timeout=20), 130)
        process.communicate()
        self.assertEqual(self.names(), [])


if __name__ == "__main__":
    main()
