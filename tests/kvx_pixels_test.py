"""Colours, alpha, shape and direction of the frames."""
from kvx_support import KvxTest, main


class Pixels(KvxTest):
    def solid(self, name, color, *more, size="64x36"):
        self.ffmpeg("-f", "lavfi", "-i", f"color={color}:s={size}:r=25:d=0.2", *more, name)

    def near(self, got, wanted, by, message=None):
        for a, b in zip(got[:4], wanted):
            self.assertAlmostEqual(a, b, delta=by, msg=message)

    def test_matrix_by_tag_and_by_size(self):
        # Of this green the two matrices make values that are far from each other's.
        cases = (("tagged.mkv", "64x36", ["-vf", "scale=out_color_matrix=bt709", "-colorspace", "bt709"]),
                 ("small.mkv", "64x36", ["-vf", "scale=out_color_matrix=bt601"]),
                 ("large.mkv", "64x720", ["-vf", "scale=out_color_matrix=bt709"]))
        for name, size, how in cases:
            self.solid(name, "0x20C040", *how, "-pix_fmt", "yuv444p", "-c:v", "libx264", "-crf", 4, size=size)
            self.kvx("render", "Invert", "--opacity", 0, name, name + ".png")
            self.near(self.pixels(name + ".png"), (0x20, 0xC0, 0x40, 255), 3, name)
            # The way back, judged by a decoder that is told which matrix.
            self.kvx("render", "Invert", "--opacity", 0, name, "back_" + name)
            back = self.streams("back_" + name, "video")[0]
            self.assertEqual(back.get("color_space"), self.streams(name, "video")[0].get("color_space"))
            self.kvx("render", "Invert", "--opacity", 0, "back_" + name, "back_" + name + ".png")
            self.near(self.pixels("back_" + name + ".png"), (0x20, 0xC0, 0x40, 255), 4, name)

    def test_rotation_and_sample_aspect(self):
        self.clip("flat.mp4", "-c:v", "libx264", "-crf", 4, "-vf", "setsar=4/3", sound=False)
        self.ffmpeg("-i", "flat.mp4", "-c", "copy", "-metadata:s:v", "rotate=90", "turned.mp4")
        self.assertIn("rotation", str(self.streams("turned.mp4", "video")[0]))
        self.kvx("render", "Invert", "--opacity", 0, "turned.mp4", "o_%d.png", "--frames", 1)
        video = self.probe("o_0.png")["streams"][0]
        self.assertEqual((video["width"], video["height"]), (54, 96))
        ours, theirs = self.pixels("o_0.png"), self.pixels("turned.mp4")
        self.assertLess(sum(abs(a - b) for a, b in zip(ours, theirs)) / len(theirs), 3)
        self.invert("flat.mp4", "o.mkv")
        self.invert("turned.mp4", "t.mkv")
        self.assertEqual(self.streams("o.mkv", "video")[0]["sample_aspect_ratio"], "4:3")
        self.assertEqual(self.streams("t.mkv", "video")[0]["sample_aspect_ratio"], "3:4")
        self.assertIn(b" A4:3 ", self.invert("flat.mp4", "-").out[:80])

    def test_alpha_stays_where_the_encoder_has_it(self):
        self.clip("a.mkv", "-vf", "format=rgba,geq=r='r(X,Y)':g='g(X,Y)':b='b(X,Y)':a='2*X'", "-c:v", "ffv1",
                  seconds=0.2, sound=False)
        wanted = self.pixels("a.mkv")[3::4]
        self.invert("a.mkv", "o.webm")
        for codec, name in (("prores_ks", "p.mov"), ("ffv1", "f.mkv"), ("png", "n.mov"), ("qtrle", "q.mov"),
                            ("", "o.webm")):
            if codec:
                self.invert("a.mkv", name, "--codec", codec)
            self.kvx("render", "Invert", "--opacity", 0, name, name + "_%d.png", "--frames", 1)
            got = self.pixels(name + "_0.png")[3::4]
            self.assertLess(max(abs(a - b) for a, b in zip(got, wanted)), 12, name)
        for target in ("o.mp4", "-", "o.jpg"):
            self.assertIn("the transparency is lost", self.invert("a.mkv", target).notes)

    def test_depth_sampling_and_hdr_are_named(self):
        self.clip("a.mkv", "-pix_fmt", "yuv422p10le", "-c:v", "ffv1", "-color_trc", "smpte2084", "-colorspace",
                  "bt2020nc", "-color_primaries", "bt2020", seconds=0.2, sound=False)
        notes = self.invert("a.mkv", "o.mp4").notes
        self.assertIn("10 bits per channel become 8", notes)
        self.assertIn("smpte2084", notes)
        video = self.streams("o.mp4", "video")[0]
        self.assertEqual(video["pix_fmt"], "yuv422p")
        self.assertNotEqual(video.get("color_transfer"), "smpte2084")
        self.assertIn("colour sampling 4:2:2 becomes 4:2:0", self.invert("a.mkv", "o.avi").notes)
        self.invert("a.mkv", "p.mp4", "--pix-fmt", "yuv444p", "--preset", "ultrafast", "--bitrate", "300k")
        self.assertEqual(self.streams("p.mp4", "video")[0]["pix_fmt"], "yuv444p")

    def test_interlaced_sources(self):
        self.clip("a.mkv", "-vf", "interlace", "-c:v", "libx264", "-flags", "+ildct+ilme", rate="50", size="96x64",
                  sound=False)
        self.assertIn("interlaced", self.invert("a.mkv", "o.mkv").notes)
        self.assertIn(self.streams("o.mkv", "video")[0]["field_order"], ("tt", "tb"))
        self.invert("a.mkv", "p.mkv", "--deinterlace")
        self.assertEqual(self.streams("p.mkv", "video")[0]["field_order"], "progressive")
        self.assertEqual(len(self.times("p.mkv")), len(self.times("a.mkv")))

    def test_usual_quality_of_older_codecs(self):
        self.clip("a.mkv", "-c:v", "ffv1", "-pix_fmt", "yuv420p", size="320x180", sound=False)
        source = self.pixels("a.mkv", 10, "yuv420p")

        def error(name):
            self.kvx("render", "Invert", "--opacity", 0, "a.mkv", name)
            got = self.pixels(name, 10, "yuv420p")
            return sum((a - b) ** 2 for a, b in zip(got, source)) / len(source)

        best = error("o.mp4")
        for name in ("o.avi", "o.wmv", "o.mpg", "o.ts", "o.webm"):
            self.assertLess(error(name), 2 * best + 1, name)


if __name__ == "__main__":
    main()
