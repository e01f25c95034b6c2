"""Options do what they say or are refused; names are found or suggested."""
import json
import subprocess
import time

from kvx_support import KVX, KvxTest, main


class Options(KvxTest):
    def test_options_without_effect_are_refused(self):
        self.kvx("render", "Invert", "demo", "in.png", "--size", "16x16")
        for words in (["demo", "o.png", "--crf", 3], ["demo", "o.png", "--codec", "ffv1"],
                      ["in.png", "o.png", "--size", "8x8"], ["in.png", "o.png", "--raw", "8x8"],
                      ["demo", "o.png", "--start-number", 3], ["in.png", "o.png", "--gaps", "hold"],
                      ["demo", "-", "--overwrite"], ["demo", "o.png", "--no-audio"],
                      ["demo", "o.mp4", "--crf", 3, "--bitrate", "1M"], ["demo", "o.png", "--literal"]):
            self.kvx("render", "Invert", *words, status=2)
        self.kvx("render", "-e", "Invert", "demo", "o.png", "--opacity", 50, status=2)
        self.kvx("recipe", "write", "Invert", "r.json", "--opacity", 55.5)
        self.assertEqual(json.loads(self.read("r.json"))["effects"][0]["opacity"], 55.5)
        self.kvx("render", "--recipe", "r.json", "demo", "o.png", "--opacity", 50, status=2)
        self.assertEqual(self.names(), ["in.png", "r.json"])

    def test_keyframes_stand_once_and_not_before_the_beginning(self):
        for points in ("0:1,0:2", "-1:1", "3:1,3.0:2"):
            self.kvx("render", "Brightness", "-p", "BRINGHTNESS=" + points, "demo", "o.png", status=2)
        self.write("r.json", b'{"effects": [{"effect": 25, "params": {"bringhtness": {"1": 5, "1": 6}}}]}')
        self.assertIn('"1" stands twice', self.kvx("recipe", "check", "r.json", status=2).notes)
        points = ", ".join(f'"{i}": {i % 100}' for i in range(300000))
        self.write("long.json", ('{"effects": [{"effect": 25, "params": {"Bringhtness": {%s}}}]}' % points).encode())
        before = time.monotonic()
        self.kvx("recipe", "check", "long.json")
        self.assertLess(time.monotonic() - before, 10)

    def test_suggestions(self):
        cases = ((["reder"], 'no command "reder"; did you mean render, '), (["recipe", "chek"], "did you mean check"),
                 (["info", "Brihgtness"], "did you mean Brightness, "),
                 (["render", "Snow", "-p", "Percnt=3", "demo", "o.png"], "did you mean Percent, "))
        for words, part in cases:
            notes = self.kvx(*words, status=2).notes
            self.assertIn(part, notes)
            self.assertEqual(notes.count("\n"), 1)
        self.assertEqual(self.kvx("info", "Brihgtness", status=2).notes.count(", "), 2, "three suggestions")
        self.assertIn("no effect matches", self.kvx("list", "zzz", status=1).notes)

    def test_output_that_cannot_be_written_is_an_error(self):
        self.kvx("recipe", "write", "Invert", "r.json")
        for words in ("list", "list --json", "info 25", "doctor", "--help", "--version", "recipe check r.json",
                      "render Invert demo - --size 16x16"):
            for target, cause in ((">/dev/full", "No space left"), (">&-", "cannot be written")):
                done = subprocess.run(f'"{KVX}" {words} {target}', shell=True, cwd=self.folder, stderr=subprocess.PIPE)
                self.assertEqual(done.returncode, 1, words + target)
                self.assertIn(cause, done.stderr.decode())

    def test_names_of_files(self):
        self.kvx("render", "Invert", "--size", "16x16", "--", "demo", "-name.png")
        self.invert("demo", "odd%d.png", "--literal", "--size", "16x16")
        self.assertEqual(self.names(), ["-name.png", "odd%d.png"])
        self.kvx("render", "Invert", "--", "-name.png", "-out.png")
        self.invert("odd%d.png", "o.png")

    def test_json(self):
        self.assertEqual(json.loads(self.kvx("info", 25, "--json").out)["params"][0]["name"], "Bringhtness")
        self.assertEqual(json.loads(self.kvx("doctor", "--json").out)["problems"], [])
        self.assertIn("Bringhtness=", self.kvx("complete", "render", "brightness", "-p", "").out.decode())
        self.assertIn("libx264", self.kvx("complete", "render", "--codec", "lib").out.decode())

    def test_encoders_are_silent_unless_asked(self):
        for codec in ("libx265", "libx264", "libvpx-vp9", "libaom-av1", "libsvtav1", "libtheora", "mpeg2video",
                      "libxvid"):
            result = self.invert("demo", f"{codec}.mkv", "--codec", codec, "--size", "128x96", "--frames", 3)
            self.assertEqual(result.notes, "", codec)
        self.assertIn("x265", self.kvx("-v", "render", "Invert", "demo", "v.mkv", "--codec", "libx265", "--size",
                                       "128x96").notes)


if __name__ == "__main__":
    main()
