"""Frames come as many as they were, and when they were."""
from kvx_support import KvxTest, main


class Time(KvxTest):
    def test_every_kind_of_file_keeps_count_and_duration(self):
        self.clip("a.mp4", "-c:v", "mpeg4", "-c:a", "aac", seconds=2, rate="24000/1001")
        count = len(self.times("a.mp4"))
        for ending in ("mp4", "mkv", "mov", "webm", "avi", "ogv", "ts", "mpg", "mxf", "vob", "3gp", "m2ts"):
            self.invert("a.mp4", "o." + ending)
            times = self.times("o." + ending)
            self.assertEqual(len(times), count, ending)
            self.assertAlmostEqual(times[-1], (count - 1) * 1001 / 24000, delta=0.002, msg=ending)
        self.invert("a.mp4", "p.mkv", "--codec", "mpeg2video")
        self.assertEqual(len(self.times("p.mkv")), count)
        # Sound that begins a little earlier adds no frame.
        self.ffmpeg("-i", "a.mp4", "-c", "copy", "-output_ts_offset", 0.023, "late.mkv")
        self.invert("late.mkv", "late.avi")
        self.assertEqual(len(self.times("late.avi")), count)
        # A rate that a codec does not know becomes its nearest; what is shown when stays.
        self.invert("demo", "q.mpg", "--frames", 10, "--fps", 10, "--size", "64x36")
        self.assertAlmostEqual(self.times("q.mpg")[-1], 1, delta=0.11)

    def test_variable_rates_stay_or_are_filled(self):
        self.clip("v.mkv", "-vf", "select=lt(n\\,6)+gte(n\\,6)*not(mod(n\\,4))", "-vsync", "vfr", "-c:v", "ffv1",
                  seconds=2, sound=False)
        times = self.times("v.mkv")
        self.assertEqual(len(times), 17)
        for ending in ("mkv", "mp4", "mov", "webm", "ts"):
            self.invert("v.mkv", "o." + ending)
            got = self.times("o." + ending)
            self.assertEqual(len(got), len(times), ending)
            self.assertLess(max(abs(a - b) for a, b in zip(times, got)), 0.002, ending)
        result = self.invert("v.mkv", "o.avi")
        self.assertIn("wants a constant rate", result.notes)
        self.assertAlmostEqual(self.times("o.avi")[-1], times[-1], delta=0.05)
        # At every moment the filled file shows what the source shows.
        self.invert("v.mkv", "same.avi", "--codec", "ffv1")
        self.assertEqual(self.pixels("same.avi", 8), self.pixels("same.avi", 9))
        self.assertEqual(self.pixels("same.avi", 7), self.pixels("same.avi", 6), "0.28 s shows the frame of 0.24 s")
        self.assertNotEqual(self.pixels("same.avi", 7), self.pixels("same.avi", 8))

    def test_keyframes_and_time_count_from_the_beginning_of_the_input(self):
        self.clip("a.mkv", "-c:v", "ffv1", seconds=2, sound=False)
        track = ["-p", "bringhtness=0:0,49:98"]
        self.kvx("render", "Brightness", *track, "a.mkv", "w_%d.png")
        self.kvx("render", "Brightness", *track, "a.mkv", "p_%d.png", "--start", 1)
        self.assertEqual(self.read("p_0.png"), self.read("w_25.png"))
        self.assertEqual(self.read("p_24.png"), self.read("w_49.png"))
        # A parameter of time gets milliseconds: a delay of 80 shows the frame before the last one, of 25 in a second.
        size = ["--size", "64x36", "--frames", 6]
        self.kvx("render", "Delay", "-p", "Delay=80", "demo", "d_%d.png", *size)
        self.kvx("render", "Invert", "--opacity", 0, "demo", "e_%d.png", *size)
        self.assertEqual(self.pixels("d_5.png"), self.pixels("e_3.png"))

    def test_sequences_keep_their_numbers_and_name_their_gaps(self):
        self.kvx("render", "Invert", "demo", "f_%03d.png", "--size", "16x16", "--frames", 5, "--start-number", 98)
        (self.folder / "f_100.png").unlink()
        self.assertIn("f_%03d.png lacks 100", self.invert("f_%03d.png", "g_%03d.png").notes)
        self.assertEqual([n for n in self.names() if n[0] == "g"], ["g_098.png", "g_099.png", "g_101.png", "g_102.png"])
        self.invert("f_%03d.png", "h_%d.png", "--gaps", "hold", "--start-number", 1)
        self.assertEqual(self.read("h_2.png"), self.read("h_3.png"))
        self.assertEqual(len([n for n in self.names() if n[0] == "h"]), 5)
        self.invert("f_%03d.png", "i_%d.png", "--gaps", "refuse", status=1)
        self.invert("f_%03d.png", "o.mkv", "--fps", 10, "--gaps", "hold")
        self.assertEqual(self.times("o.mkv"), [0, 0.1, 0.2, 0.3, 0.4])


if __name__ == "__main__":
    main()
