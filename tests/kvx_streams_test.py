"""Sound, subtitles, chapters and whatever else lies beside the frames."""
import array
import subprocess

from kvx_support import KvxTest, main

SUBTITLES = b"1\n00:00:00,200 --> 00:00:00,600\nHello\n\n2\n00:00:00,700 --> 00:00:00,900\nagain\n"
CHAPTERS = b""";FFMETADATA1
title=Film
[CHAPTER]
TIMEBASE=1/1000
START=0
END=400
title=One
[CHAPTER]
TIMEBASE=1/1000
START=400
END=1000
title=Two
"""


class Streams(KvxTest):
    def rich(self, name, sound, text):
        self.write("s.srt", SUBTITLES)
        self.write("c.txt", CHAPTERS)
        self.write("font.ttf", b"no real font")
        attach = ["-attach", "font.ttf", "-metadata:s:t", "mimetype=font/ttf"] if name.endswith("mkv") else []
        self.clip(name, "-i", "s.srt", "-i", "c.txt", "-map", 0, "-map", 1, "-map", 2, "-map_metadata", 3, "-c:v",
                  "mpeg4", "-c:a", sound, "-c:s", text, "-metadata:s:a", "language=ger", "-metadata:s:s",
                  "language=fre", "-disposition:s", "forced", "-metadata", "creation_time=2020-01-02T03:04:05Z",
                  *attach)

    def test_what_the_container_takes_goes_over_and_the_rest_becomes_its_usual_codec(self):
        self.rich("a.mkv", "flac", "srt")
        self.rich("b.mp4", "aac", "mov_text")
        cases = (("a.mkv", "o.mkv", "flac", "subrip"), ("a.mkv", "o.mp4", "aac", "mov_text"),
                 ("a.mkv", "o.webm", "opus", "webvtt"), ("b.mp4", "p.mp4", "aac", "mov_text"),
                 ("b.mp4", "p.mkv", "aac", "ass"))
        for source, target, sound, text in cases:
            result = self.invert(source, target)
            audio, subtitle = self.streams(target, "audio")[0], self.streams(target, "subtitle")[0]
            self.assertEqual((audio["codec_name"], subtitle["codec_name"]), (sound, text))
            self.assertEqual((audio["tags"]["language"], subtitle["tags"]["language"]), ("ger", "fre"))
            self.assertEqual(subtitle["disposition"]["forced"], 1, target)
            probe = self.probe(target)
            chapters = [(c["tags"]["title"], round(float(c["end_time"]), 1)) for c in probe["chapters"]]
            self.assertEqual(chapters, [("One", 0.4), ("Two", 1.0)], target)
            tags = {key.lower(): value for key, value in probe["format"]["tags"].items()}
            self.assertEqual(tags["title"], "Film")
            self.assertTrue(tags["creation_time"].startswith("2020-01-02T03:04:05"))
            self.assertAlmostEqual(self.packets(target, "s:0")[-1] if text != "mov_text" else 0.7, 0.7, delta=0.05)
            if sound != audio["codec_name"]:
                self.assertIn("audio stream 1", result.notes)
        self.assertEqual(self.streams("o.mkv", "attachment")[0]["tags"]["filename"], "font.ttf")
        self.assertIn("font.ttf is not kept", self.invert("a.mkv", "o.mp4", "--overwrite").notes)

    def test_what_cannot_be_kept_stops_the_run_before_the_first_frame(self):
        self.rich("a.mkv", "pcm_s16le", "srt")
        result = self.invert("a.mkv", "o.avi", status=1)
        self.assertIn("subtitle stream 2 (subrip) cannot go into this kind of file", result.notes)
        self.assertNotIn("o.avi", self.names())
        self.invert("a.mkv", "o.avi", "--no-subtitles")
        self.assertEqual(self.streams("o.avi", "audio")[0]["codec_name"], "pcm_s16le")
        self.invert("a.mkv", "o.mov", "--no-audio", "--no-subtitles")
        self.assertEqual(self.streams("o.mov", "audio") + self.streams("o.mov", "subtitle"), [])

    def test_sound_becomes_what_each_container_wants(self):
        self.clip("a.avi", "-c:v", "mpeg4", "-c:a", "pcm_s16le", seconds=2)
        for target, sound in (("o.mp4", "aac"), ("o.ogv", "vorbis"), ("o.mpg", "mp2"), ("o.mxf", "pcm_s16le")):
            self.invert("a.avi", target)
            audio = self.streams(target, "audio", "-count_packets")[0]
            self.assertEqual(audio["codec_name"], sound)
            self.assertAlmostEqual(float(audio["duration"]), 2, delta=0.12, msg=target)

    def test_sound_before_the_first_picture_stays_and_start_cuts_both(self):
        self.ffmpeg("-itsoffset", 0.5, "-f", "lavfi", "-i", "testsrc2=s=96x54:r=25:d=1", "-f", "lavfi", "-i",
                    "sine=d=1.5", "-c:v", "mpeg4", "-c:a", "mp2", "late.mkv")
        self.invert("late.mkv", "o.mkv")
        self.assertAlmostEqual(self.packets("o.mkv", "v:0")[0], self.packets("late.mkv", "v:0")[0], delta=0.002)
        self.assertEqual(len(self.packets("o.mkv", "a:0")), len(self.packets("late.mkv", "a:0")))
        # Silence, then a tone from the second second on.
        self.ffmpeg("-f", "lavfi", "-i", "testsrc2=s=96x54:r=25:d=4", "-f", "lavfi", "-i",
                    "aevalsrc='if(gte(t,2),sin(2000*t),0)':d=4", "-c:v", "mpeg4", "-c:a", "pcm_s16le", "step.mkv")
        self.invert("step.mkv", "o2.mkv", "--start", 1, "--end", 3)
        for stream in ("v:0", "a:0"):
            self.assertAlmostEqual(self.packets("o2.mkv", stream)[0], 0, delta=0.03, msg=stream)
        words = self.pcm("o2.mkv")
        loud = next(i for i, w in enumerate(words) if abs(w) > 2000) / 44100
        self.assertAlmostEqual(loud, 1, delta=0.03)
        self.assertAlmostEqual(len(words) / 44100, 2, delta=0.06)
        self.assertEqual(len(self.times("o2.mkv")), 50)

    def pcm(self, name):
        raw = subprocess.run(["ffmpeg", "-v", "error", "-i", name, "-f", "s16le", "-ac", "1", "-"], cwd=self.folder,
                             check=True, stdout=subprocess.PIPE).stdout
        return array.array("h", raw)

    def test_tags_that_a_container_drops_without_a_word_are_named(self):
        self.clip("a.mkv", "-c:v", "mpeg4", "-c:a", "aac", "-metadata", "artist=Me", "-metadata", "mood=calm",
                  "-metadata:s:a", "language=fre")
        self.assertEqual(self.invert("a.mkv", "o.mkv").notes, "")
        notes = self.invert("a.mkv", "o.mp4").notes
        self.assertIn("does not keep: MOOD\n", notes)
        self.assertNotIn("language", notes)
        notes = self.invert("a.mkv", "o.mov").notes
        self.assertIn("language (fre)", notes)
        self.assertNotIn("MOOD", notes)

    def test_covers_and_timecodes(self):
        self.kvx("render", "Invert", "demo", "cover.png", "--size", "32x32")
        self.clip("plain.mp4", "-c:v", "mpeg4", "-timecode", "01:02:03:04", sound=False)
        self.ffmpeg("-i", "plain.mp4", "-i", "cover.png", "-map", "0:v", "-map", 1, "-c", "copy", "-disposition:v:1",
                    "attached_pic", "a.mp4")
        self.invert("a.mp4", "o.mp4")
        video = self.streams("o.mp4", "video")
        self.assertEqual([s["disposition"]["attached_pic"] for s in video], [0, 1])
        self.assertEqual(video[0]["tags"]["timecode"], "01:02:03:04")
        self.invert("a.mp4", "o.mkv")
        self.assertEqual([s["codec_name"] for s in self.streams("o.mkv", "video")], ["h264", "png"])
        notes = self.invert("a.mp4", "o.avi").notes
        self.assertIn("timecode 01:02:03:04 is not kept", notes)
        self.assertIn("the cover (png) is not kept", notes)


if __name__ == "__main__":
    main()
