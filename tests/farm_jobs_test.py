"""Jobs of pictures and lists, and jobs to which everything happens that happens on a farm."""
import json
import os
import signal
import subprocess
import time

from kvx_support import KVX, KvxTest, main

SLOW = ["-e", "Aibao"]


class Jobs(KvxTest):
    def plan(self, *words, status=0):
        return self.kvx("farm", "plan", "job", *words, status=status)

    def run_all(self):
        for piece in reversed(range(self.look()["pieces"])):
            self.kvx("farm", "run", "job", piece)

    def join(self, status=0):
        return self.kvx("farm", "join", "job", status=status)

    def look(self):
        return json.loads(self.kvx("farm", "status", "job", "--json").out)

    def demo(self, name, *more, frames=30):
        self.kvx("render", "Warm", "demo", name, "--frames", frames, "--size", "64x36", *more)

    def start(self, *words, **options):
        return subprocess.Popen([KVX, *map(str, words)], cwd=self.folder, stdout=subprocess.DEVNULL,
                                stderr=subprocess.PIPE, **options)

    def same(self, a, b):
        self.assertEqual(self.read(a), self.read(b), (a, b))

    def test_sequences(self):
        self.demo("in_%03d.png", "--start-number", 7)
        (self.folder / "in_020.png").unlink()
        track = ["-e", "Brightness:Bringhtness=0:0,30:90"]
        for more in ([], ["--gaps", "hold"], ["--start", 0.2, "--start-number", 100]):
            for folder in ("whole", "farm"):
                (self.folder / folder).mkdir(exist_ok=True)
            self.kvx("render", *track, "in_%03d.png", "whole/%d.png", "--overwrite", *more)
            self.plan(*track, "in_%03d.png", "farm/%d.png", "--frames-per-piece", 7, "--overwrite", *more)
            self.run_all()
            self.join()
            self.join()  # once more does no harm
            names = os.listdir(self.folder / "whole")
            self.assertEqual(sorted(os.listdir(self.folder / "farm")), sorted(names))
            for name in names:
                self.same(f"whole/{name}", f"farm/{name}")
            self.kvx("farm", "clean", "job")
            self.assertNotIn("job", self.names())
        # Into a video, at a rate that the codec does not know: frames are repeated.
        for name in ("whole.mpg", "farm.mpg"):
            if name == "whole.mpg":
                self.kvx("render", *track, "in_%03d.png", name, "--fps", 10)
            else:
                self.plan(*track, "in_%03d.png", name, "--fps", 10, "--pieces", 4)
                self.run_all()
                self.join()
        self.assertEqual(self.times("whole.mpg"), self.times("farm.mpg"))

    def test_lists(self):
        (self.folder / "in/deep").mkdir(parents=True)
        self.demo("in/p_%d.png", frames=9)
        self.demo("in/deep/q_%d.jpg", frames=3)
        self.demo("in/deep/c.mkv", "--codec", "ffv1", frames=5)
        self.write("in/notes.txt", b"no picture")
        chance = ["-e", "FilmGrain", "-e", "Camcorder", "--seed", 5]
        self.assertIn("1 file: neither", self.plan(*chance, "in", "out", "--pieces", 4, "--codec", "ffv1").notes)
        self.assertEqual(self.look()["pieces"], 4)
        self.assertEqual(self.look()["total"], 13)
        self.run_all()
        self.join()
        # As each would come out of a run by itself.
        for name in ("p_0.png", "p_8.png", "deep/q_2.jpg", "deep/c.mkv"):
            more = ["--codec", "ffv1"] if name.endswith("mkv") else []
            whole = "whole" + name[name.rindex("."):]
            self.kvx("render", *chance, "in/" + name, whole, "--overwrite", *more)
            if more:
                self.assertEqual(*[[self.pixels(n, i) for i in range(5)] for n in (whole, "out/" + name)])
            else:
                self.same(whole, "out/" + name)
        self.kvx("farm", "clean", "job")
        self.write("list", b"".join(b"in/p_%d.png\0" % i for i in range(5)))
        self.plan("Warm", "--files-from", "list", "more", "--frames-per-piece", 2)
        self.assertEqual((self.look()["pieces"], self.look()["total"]), (3, 5))
        self.run_all()
        self.join()
        self.assertEqual(len(os.listdir(self.folder / "more")), 5)
        self.kvx("farm", "clean", "job")
        # One that cannot be read takes no other along, and is said.
        self.write("in/p_3.png", b"\x89PNG\r\n\x1a\nnothing")
        self.plan("Warm", "in/p_*.png", "kept", "--pieces", 1)
        self.assertIn("p_3.png", self.kvx("farm", "run", "job", 0, status=1).notes)
        self.assertIn("p_3.png", self.look()["failed"][0]["message"])
        self.kvx("farm", "clean", "job")
        self.plan("Warm", "in/p_*.png", "kept", "--pieces", 1, "--keep-going")
        self.run_all()
        self.assertIn("p_3.png", self.join().notes)
        self.assertEqual(len(os.listdir(self.folder / "kept")), 8)

    def test_chance_and_order(self):
        self.clip("a.mkv", "-c:v", "ffv1", seconds=1)
        notes = self.plan("-e", "FilmGrain", "a.mkv", "farm.mkv", "--codec", "ffv1", "--pieces", 4).notes
        self.assertIn("one piece: its effects need all frames in order", notes)
        seed = json.loads(self.read("job/job.json"))["seed"]
        self.assertIn(f"seed is {seed}", notes)
        self.run_all()
        self.join()
        self.kvx("render", "FilmGrain", "a.mkv", "whole.mkv", "--codec", "ffv1", "--seed", seed)
        self.assertEqual(*[[self.pixels(n, i) for i in (0, 13, 24)] for n in ("whole.mkv", "farm.mkv")])
        self.assertEqual(self.packets("whole.mkv", "a"), self.packets("farm.mkv", "a"))

    def test_misfortune(self):
        self.clip("a.mkv", "-c:v", "libx264", "-g", 20, seconds=2)
        self.kvx("render", *SLOW, "a.mkv", "whole.mkv", "--codec", "ffv1")
        self.plan(*SLOW, "a.mkv", "farm.mkv", "--codec", "ffv1", "--pieces", 5)
        self.assertIn("5 of 5 pieces are missing: 0-4", self.join(status=1).notes)
        # Side by side; one is killed, one is stopped.
        workers = [self.start("farm", "run", "job", 0) for _ in range(3)]
        time.sleep(0.3)
        workers[0].kill()
        workers[1].send_signal(signal.SIGTERM)
        ends = [worker.wait() for worker in workers]
        for worker in workers:
            worker.stderr.close()
        self.assertEqual(ends[2], 0)
        self.kvx("farm", "run", "job", env={**os.environ, "SLURM_ARRAY_TASK_ID": "1"})
        self.kvx("farm", "run", "job", env={**os.environ, "SGE_TASK_ID": "3"})
        self.kvx("farm", "run", "job", "--offset", 3, env={**os.environ, "JOB_COMPLETION_INDEX": "0"})
        self.kvx("farm", "run", "job", status=2)
        self.kvx("farm", "run", "job", 5, status=2)
        self.assertEqual(self.look()["missing"], [4])
        # A disk that is full: no piece, and nothing half.
        full = self.start("farm", "run", "job", 4, preexec_fn=lambda: __import__("resource").setrlimit(
            __import__("resource").RLIMIT_FSIZE, (20000, 20000)))
        said = full.communicate()[1].decode()
        self.assertEqual(full.returncode, 1)
        self.assertIn("File too large", said)
        self.assertIn("File too large", self.look()["failed"][0]["message"])
        self.kvx("farm", "run", "job", 4)
        # Cut short: seen without reading. Another byte: seen by the join.
        data = self.folder / "job/pieces/000002/packets.bin"
        whole = data.read_bytes()
        data.write_bytes(whole[:-100])
        self.assertIn("bytes instead of", self.look()["failed"][0]["message"])
        self.assertEqual(self.look()["missing"], [2])
        self.join(status=1)
        data.write_bytes(whole[:500] + b"?" + whole[501:])
        self.assertIn("another checksum; kvx farm run", self.join(status=1).notes)
        self.assertNotIn("farm.mkv", self.names())
        self.assertIn("made anew", self.kvx("farm", "run", "job", 2).notes)
        self.assertIn(b"whole already", self.kvx("farm", "run", "job", 2).out)
        self.join()
        self.assertEqual(*[[self.pixels(n, i) for i in range(0, 50, 7)] for n in ("whole.mkv", "farm.mkv")])
        self.assertEqual(self.times("whole.mkv"), self.times("farm.mkv"))
        self.join(status=2)  # nothing is written over unasked
        # The input is another one now.
        self.clip("a.mkv", "-c:v", "libx264", "-g", 20, "-crf", 40, seconds=2)
        data.unlink()
        self.assertIn("has changed since the job was planned", self.kvx("farm", "run", "job", 2, status=1).notes)

    def test_refusals(self):
        self.clip("a.mkv", "-c:v", "ffv1")
        self.demo("p_%d.png", frames=2)
        for words, said in (
                (["Warm", "a.mkv", "-"], "not a pipe"), (["Warm", "-", "b.mkv"], "a job needs files"),
                (["Warm", "p_0.png", "b.png"], "kvx render"), (["Warm", "p_0.png", "p_1.png", "b.mkv"], "into a folder"),
                (["Warm", "a.mkv", "b.mkv", "--pieces", 2, "--frames-per-piece", 3], "excludes"),
                (["Warm", "a.mkv", "b.mkv", "-j", 2], "kvx farm run"), (["Warm", "a.mkv", "a.mkv", "--overwrite"], "input"),
                (["Warm", "a.mkv", "p_0.png"], "kvx render"), (["Warn", "a.mkv", "b.mkv"], "Warm"),
                (["Warm", "a.mkv", "p_%d.png"], "exists"), (["Warm", "b.mkv"], "wanted"),
                (["Warm", "a.mkv", "b.mkv", "--codec", "libx264", "--pix-fmt", "abc"], "pixel format")):
            self.assertIn(said, self.plan(*words, status=2).notes)
            self.assertNotIn("job", self.names())
        self.assertIn("nothing matches", self.plan("Warm", "x*.png", "out", status=1).notes)
        self.plan("Warm", "a.mkv", "b.mkv")
        self.assertIn("kvx farm clean", self.plan("Warm", "a.mkv", "b.mkv", status=2).notes)
        self.kvx("farm", "run", "job", 0, "--seed", 3, status=2)
        self.assertIn("there is no job.json", self.kvx("farm", "status", "nowhere", status=1).notes)
        printed = self.kvx("farm", "submit", "job", "--print").out.decode().splitlines()
        self.assertEqual(len(printed), 1)
        subprocess.run(["sh", "-c", printed[0]], check=True, stdout=subprocess.DEVNULL)
        self.assertEqual(self.kvx("farm", "submit", "job", "--print").out, b"")
        self.kvx("farm", "submit", "job", status=2)
        self.kvx("farm", "submit", "job", "--kubernetes", status=2)


if __name__ == "__main__":
    main()
