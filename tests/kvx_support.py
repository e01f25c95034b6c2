"""What the tests of the kvx command share: running it, making clips, asking ffprobe."""
import json
import os
import pathlib
import subprocess
import tempfile
import unittest

KVX = os.environ["KVX"]


class Result:
    def __init__(self, done):
        self.status = done.returncode
        self.out = done.stdout
        self.notes = done.stderr.decode(errors="replace")


class KvxTest(unittest.TestCase):
    """Every test runs in an empty folder of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def kvx(self, *words, status=0, **options):
        done = subprocess.run([KVX, *map(str, words)], cwd=self.folder, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, timeout=120, **options)
        result = Result(done)
        self.assertEqual(result.status, status, f"{words}\n{result.notes}")
        return result

    def invert(self, source, target, *more, status=0):
        return self.kvx("render", "Invert", source, target, *more, status=status)

    def ffmpeg(self, *words):
        subprocess.run(["ffmpeg", "-v", "error", "-y", *map(str, words)], cwd=self.folder, check=True)

    def clip(self, name, *more, seconds=1, rate="25", size="96x54", sound=True):
        """A moving picture, with a tone unless it is not wanted."""
        words = ["-f", "lavfi", "-i", f"testsrc2=s={size}:r={rate}:d={seconds}"]
        if sound:
            words += ["-f", "lavfi", "-i", f"sine=d={seconds}"]
        self.ffmpeg(*words, *more, name)

    def probe(self, name, *more):
        words = ["ffprobe", "-v", "error", "-show_streams", "-show_format", "-show_chapters", "-of", "json", *more,
                 str(name)]
        return json.loads(subprocess.run(words, cwd=self.folder, check=True, stdout=subprocess.PIPE).stdout)

    def streams(self, name, kind, *more):
        return [s for s in self.probe(name, *more)["streams"] if s["codec_type"] == kind]

    def times(self, name):
        """When the frames of the video are shown, in seconds, from the first one."""
        frames = self.probe(name, "-select_streams", "v:0", "-show_frames")["frames"]
        stamps = []
        for f in frames:  # the last one of a program stream has no stamp of its own
            own = f.get("best_effort_timestamp_time")
            stamps.append(float(own) if own else stamps[-1] + float(f["pkt_duration_time"]))
        stamps.sort()
        return [round(t - stamps[0], 3) for t in stamps]

    def packets(self, name, stream):
        """Times of a stream's packets, in seconds."""
        found = self.probe(name, "-select_streams", stream, "-show_packets")["packets"]
        return [float(p["pts_time"]) for p in found]

    def pixels(self, name, frame=0, pixel_format="rgba"):
        """A frame's bytes, as ffmpeg decodes it."""
        words = ["ffmpeg", "-v", "error", "-i", str(name), "-vf", f"select=eq(n\\,{frame})", "-frames:v", "1", "-f",
                 "rawvideo", "-pix_fmt", pixel_format, "-"]
        return subprocess.run(words, cwd=self.folder, check=True, stdout=subprocess.PIPE).stdout

    def write(self, name, data):
        (self.folder / name).write_bytes(data)

    def read(self, name):
        return (self.folder / name).read_bytes()

    def names(self):
        return sorted(os.listdir(self.folder))


def main():
    unittest.main(verbosity=1)
