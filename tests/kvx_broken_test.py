"""Damaged files, pipes, devices: what can be decoded comes out, the rest is said."""
import os
import subprocess

from kvx_support import KVX, KvxTest, main


class Broken(KvxTest):
    def test_damage_is_said_and_the_sound_part_kept(self):
        how = {"mp4": ["-movflags", "faststart"], "mkv": [], "ts": [], "avi": []}
        for ending, more in how.items():
            self.clip("a." + ending, "-c:v", "mpeg4" if ending != "ts" else "mpeg2video", "-g", 5, *more, seconds=4,
                      sound=False)
            whole = self.read("a." + ending)
            self.invert("a." + ending, "whole.mkv", "--overwrite")
            self.write("cut." + ending, whole[:len(whole) * 55 // 100])
            result = self.invert("cut." + ending, "o.mkv", "--overwrite", status=1)
            self.assertRegex(result.notes, "ended (after|within)")
            self.assertEqual(len(self.times("o.mkv")), len(self.times("cut." + ending)), ending)
            self.invert("cut." + ending, "o.mkv", "--overwrite", "--keep-going")
            hurt = bytearray(whole)
            middle = len(hurt) // 2
            hurt[middle:middle + 300] = bytes((b * 7 + 3) % 256 for b in hurt[middle:middle + 300])
            self.write("hurt." + ending, bytes(hurt))
            result = self.invert("hurt." + ending, "o.mkv", "--overwrite", status=1)
            self.assertIn("damaged", result.notes)
            self.assertGreaterEqual(len(self.times("o.mkv")), len(self.times("hurt." + ending)), ending)

    def test_one_bad_picture_does_not_end_a_sequence(self):
        self.kvx("render", "Invert", "demo", "f_%d.png", "--size", "16x16", "--frames", 4)
        self.write("f_2.png", self.read("f_2.png")[:40])
        self.assertIn("f_2.png: broken PNG", self.invert("f_%d.png", "g_%d.png", status=1).notes)
        self.assertEqual([n for n in self.names() if n[0] == "g"], ["g_0.png", "g_1.png", "g_3.png"])
        self.invert("f_%d.png", "h_%d.png", "--keep-going")

    def test_pipes_lose_nothing(self):
        self.clip("a.mkv", "-c:v", "ffv1", sound=False)
        self.clip("a.mp4", "-c:v", "mpeg4")
        self.kvx("render", "Invert", "demo", "a.png", "--size", "16x16")
        for name in ("a.mkv", "a.mp4", "a.png"):
            target = "o" + name[1:]
            self.invert(name, target)
            kvx = f'"{KVX}" render Invert'
            shell = f"{kvx} <(cat {name}) p{name[1:]} && cat {name} | {kvx} - q{name[1:]}"
            subprocess.run(["bash", "-c", "set -o pipefail; " + shell], cwd=self.folder, check=True)
            for other in ("p", "q"):
                self.assertEqual(self.pixels(other + name[1:]), self.pixels(target))
                if name != "a.png":
                    self.assertEqual(self.times(other + name[1:]), self.times(target))

    def test_nothing_waits_or_reads_for_ever(self):
        os.mkfifo(self.folder / "fifo")
        os.symlink("/dev/zero", self.folder / "endless.png")
        with open(self.folder / "large.png", "wb") as file:
            file.write(b"\x89PNG\r\n\x1a\n")
            file.truncate(3 << 30)
        for name, cause in (("fifo", "nobody writes"), ("endless.png", "is a device"), ("large.png", "more than"),
                            (".", "is a directory"), ("none.mkv", "no such file")):
            result = self.invert(name, "o.png", status=1)
            self.assertIn(cause, result.notes)
            self.assertEqual(result.notes.count("\n"), 1)
        self.kvx("render", "--recipe", "/dev/zero", "demo", "o.png", status=1)

    def test_an_encoder_that_does_not_start_is_named(self):
        self.clip("a.mkv", "-c:v", "ffv1", sound=False)
        for target, codec, status in (("o.mov", "libsvtav1", 1), ("o.3gp", "h263", 1), ("o.mp4", "ffvhuff", 2)):
            result = self.invert("a.mkv", target, "--codec", codec, status=status)
            self.assertIn(codec, result.notes)
            self.assertNotIn(target, self.names())


if __name__ == "__main__":
    main()
