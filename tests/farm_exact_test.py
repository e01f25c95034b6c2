"""What a farm puts together is what one run gives."""
import subprocess

from kvx_support import KvxTest, main

# These look at the frame's place, its second, and the clip's length; one has keyframes.
MOVING = ["-e", "Brightness:Bringhtness=0:10,60:90", "-e", "SplitMove",
          "-e", "Bad_TVSignal:opacity=60"]


class Exact(KvxTest):
    def farm(self, *words, pieces=5, effects=MOVING, output="farm.mkv"):
        """Plans, runs and joins; the pieces run from the last to the first."""
        self.notes = self.kvx("farm", "plan", "job", *effects, *words, output, "--pieces", pieces).notes
        count = self.pieces()
        for piece in reversed(range(count)):
            self.kvx("farm", "run", "job", piece, "--quiet")
        self.kvx("farm", "join", "job")
        self.kvx("farm", "clean", "job")
        return count

    def pieces(self):
        import json
        return json.loads(self.kvx("farm", "status", "job", "--json").out)["pieces"]

    def judge(self, name):
        """All that a player sees of a file: frames, stamps and bytes of every stream, tags, chapters."""
        probe = self.probe(name, "-show_packets", "-show_data_hash", "md5")
        for stream in probe["streams"]:
            stream.get("tags", {}).pop("DURATION", None)
        for packet in probe["packets"]:
            packet.pop("pos", None)
        words = ["ffmpeg", "-v", "error", "-i", name, "-map", "0:v:0", "-f", "framemd5", "-"]
        frames = subprocess.run(words, cwd=self.folder, check=True, stdout=subprocess.PIPE).stdout.decode()
        return probe, frames

    def compare(self, source, *options, ending="mkv", codec=("--codec", "ffv1"), pieces=5, effects=("-e", "Invert")):
        options = [*codec, *options, "--overwrite"]
        whole, farmed = "whole." + ending, "farm." + ending
        self.kvx("render", *effects, source, whole, *options)
        self.assertEqual(self.farm(source, *options, pieces=pieces, effects=effects, output=farmed), pieces, getattr(self, "notes", ""))
        self.same(whole, farmed)

    def same(self, whole, farmed, packets=True):
        (a, frames), (b, farmed_frames) = self.judge(whole), self.judge(farmed)
        self.assertEqual(frames, farmed_frames)
        for key in ("codec_name", "width", "height", "duration", "time_base", "r_frame_rate", "tags", "disposition"):
            self.assertEqual([s.get(key) for s in a["streams"]], [s.get(key) for s in b["streams"]], key)
        self.assertEqual(a["chapters"], b["chapters"])
        self.assertEqual(a["format"].get("tags"), b["format"].get("tags"))
        self.assertEqual(a["format"]["duration"], b["format"]["duration"])
        kinds = [s["codec_type"] for s in a["streams"]]
        for index, kind in enumerate(kinds):
            of = [[p for p in probe["packets"] if p["stream_index"] == index] for probe in (a, b)]
            if kind == "video":
                times = [[(p.get("pts"), p.get("dts"), p.get("duration")) for p in own] for own in of]
                self.assertEqual(*times)
            else:
                self.assertEqual(*of)

    def test_rates_and_key_frames(self):
        sound = ["-c:a", "aac"]
        subtitle = "1\n00:00:00,500 --> 00:00:02,500\nfirst\n\n2\n00:00:03,000 --> 00:00:03,500\nsecond\n"
        self.write("s.srt", subtitle.encode())
        self.write("c.txt", b";FFMETADATA1\ntitle=T\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=1500\ntitle=One\n"
                            b"[CHAPTER]\nTIMEBASE=1/1000\nSTART=1500\nEND=4000\ntitle=Two\n")
        x264 = ["-c:v", "libx264", "-pix_fmt", "yuv420p"]
        self.clip("plain.mp4", *x264, "-bf", 3, "-g", 30, *sound, seconds=4)
        with self.subTest("everything beside the frames"):
            self.ffmpeg("-i", "plain.mp4", "-i", "s.srt", "-i", "c.txt", "-map", 0, "-map", 1, "-map_metadata", 2, "-c",
                        "copy", "-c:s", "mov_text", "-metadata:s:a:0", "language=deu", "full.mp4")
            self.compare("full.mp4", effects=MOVING)
            self.compare("full.mp4", ending="mov", codec=("--codec", "png"), pieces=3)
        with self.subTest("key frames 10 s apart"):
            self.clip("long.mkv", *x264, "-g", 250, "-keyint_min", 250, "-sc_threshold", 0, sound=False, seconds=11)
            self.compare("long.mkv", pieces=4)
        with self.subTest("open groups"):
            self.clip("open.mp4", *x264, "-bf", 3, "-x264-params", "open-gop=1:keyint=12:min-keyint=12:bframes=3", *sound,
                      seconds=4)
            self.compare("open.mp4", pieces=7)
            self.clip("open.ts", "-c:v", "mpeg2video", "-bf", 2, "-g", 12, "-q:v", 3, "-c:a", "mp2", seconds=4)
            self.compare("open.ts", pieces=7)
            self.clip("hevc.mkv", "-c:v", "libx265", "-x265-params", "log-level=none:open-gop=1:keyint=20", sound=False)
            self.compare("hevc.mkv", pieces=3)
        with self.subTest("slow return to whole pictures"):
            self.clip("refresh.mkv", *x264, "-x264-params", "intra-refresh=1:keyint=20", sound=False, seconds=3)
            self.compare("refresh.mkv", pieces=4)

    def test_time(self):
        x264 = ["-c:v", "libx264", "-pix_fmt", "yuv420p", "-bf", 2, "-g", 24]
        self.clip("a.mp4", *x264, "-c:a", "aac", seconds=4, rate="30000/1001")
        with self.subTest("variable rate"):
            self.clip("v.mkv", *x264, "-vf", "select=lt(n\\,30)+gte(n\\,30)*not(mod(n\\,4))", "-vsync", "vfr", seconds=4)
            self.compare("v.mkv", effects=MOVING)
            # Frames are repeated there, across the cuts too.
            self.compare("v.mkv", ending="avi", pieces=7)
            # No two frames apart by the same time: an encoder's packets wait for each other otherwise at every cut.
            self.clip("w.mkv", *x264, "-vf", "select=lt(mod(n*n\\,13)\\,6)", "-vsync", "vfr", seconds=4)
            self.compare("w.mkv", ending="mp4", codec=("--codec", "libx264", "--crf", 0))
        with self.subTest("a clip that starts at 5 s"):
            self.ffmpeg("-i", "a.mp4", "-c", "copy", "-output_ts_offset", 5, "late.mkv")
            self.compare("late.mkv", effects=MOVING)
            self.ffmpeg("-i", "a.mp4", "-c", "copy", "-muxdelay", 0, "-output_ts_offset", 5, "late.ts")
            self.compare("late.ts", pieces=4)
        with self.subTest("an edit list"):
            self.ffmpeg("-ss", 1.3, "-i", "a.mp4", "-c", "copy", "edit.mp4")
            self.compare("edit.mp4", effects=MOVING, ending="mp4", codec=("--codec", "png"))
        with self.subTest("a part"):
            for part in (["--start", 1.3], ["--end", 2.7], ["--start", 0.7, "--frames", 50], ["--frames", 44]):
                self.compare("a.mp4", *part, effects=MOVING, pieces=4)
        with self.subTest("turned"):
            self.ffmpeg("-i", "a.mp4", "-c", "copy", "-metadata:s:v:0", "rotate=90", "turned.mp4")
            self.compare("turned.mp4")
        with self.subTest("interlaced"):
            self.clip("i.mkv", "-vf", "interlace", "-c:v", "mpeg2video", "-flags", "+ildct+ilme", "-q:v", 2, sound=False,
                      rate=50, seconds=2)
            self.compare("i.mkv", "--deinterlace")

    def test_kinds_of_files(self):
        self.clip("a.mkv", "-c:v", "libx264", "-g", 20, "-c:a", "aac", seconds=2)
        for ending, codec in (("avi", "ffv1"), ("mov", "prores_ks"), ("mpg", "mpeg2video"), ("ogv", "libtheora"),
                              ("webm", "libvpx"), ("mxf", "mpeg2video"), ("ts", "mpeg2video"), ("mp4", "mpeg4")):
            with self.subTest(ending):
                self.farm("a.mkv", "--codec", codec, effects=["-e", "Warm"], output="farm." + ending)
                self.kvx("render", "Warm", "a.mkv", "whole." + ending, "--codec", codec)
                times = [self.times(n + ending) for n in ("farm.", "whole.")]
                self.assertEqual(*times)
        with self.subTest("alpha beside the picture"):
            self.kvx("render", "Invert", "demo", "alpha_%d.png", "--frames", 30, "--pad", "64x64", "--size", "64x36")
            self.compare("alpha_%d.png", ending="webm", codec=("--codec", "libvpx-vp9"), pieces=1)


if __name__ == "__main__":
    main()
