"""A job on a Slurm cluster of two nodes, which this brings up on this machine and takes down again."""
import contextlib
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

from kvx_support import KVX, KvxTest, main

PIECES = 12
FRAMES = 300
NODES = ("n1", "n2")
PROGRAMS = ("munged", "slurmctld", "slurmd", "sbatch", "squeue", "sinfo", "scontrol", "ffmpeg")
PATH = os.environ.get("PATH", "") + ":/usr/sbin:/sbin"


class Cluster:
    """Its own folders and ports; everything that was started is ended by its process id."""

    def __init__(self):
        # The socket's path must be short.
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kvx-slurm-", dir="/tmp"))
        self.host = socket.gethostname().split(".")[0]
        self.environment = {**os.environ, "PATH": PATH, "SLURM_CONF": str(self.folder / "slurm.conf")}
        for name in list(self.environment):
            if name.startswith(("SLURM_", "SBATCH_")) and name != "SLURM_CONF":
                del self.environment[name]
        sockets = [socket.socket() for _ in range(3)]
        for s in sockets:
            s.bind(("127.0.0.1", 0))
        self.ports = [s.getsockname()[1] for s in sockets]
        for s in sockets:
            s.close()
        self.daemons = {}

    def path(self, name):
        return str(self.folder / name)

    def start(self, name, *words):
        log = open(self.path(name + ".out"), "wb")
        self.daemons[name] = subprocess.Popen(words, env=self.environment, stdin=subprocess.DEVNULL, stdout=log,
                                              stderr=log, start_new_session=True)
        log.close()

    def up(self):
        for name in ("munge", "state", *("spool-" + n for n in NODES)):
            (self.folder / name).mkdir(mode=0o700)
        key = self.folder / "munge/key"
        key.write_bytes(os.urandom(1024))
        key.chmod(0o400)
        self.folder.chmod(0o755)
        (self.folder / "munge").chmod(0o711)
        self.start("munged", "munged", "--foreground", "--force", "--key-file=" + str(key),
                   *(f"--{kind}-file={self.path('munge/' + kind)}" for kind in ("pid", "log", "seed")),
                   "--socket=" + self.path("munge/s"))
        (self.folder / "slurm.conf").write_text(f"""
ClusterName=kvx
SlurmctldHost={self.host}(127.0.0.1)
SlurmUser=root
SlurmdUser=root
AuthType=auth/munge
AuthInfo=socket={self.path('munge/s')}
CredType=cred/munge
SlurmctldPort={self.ports[0]}
StateSaveLocation={self.path('state')}
SlurmdSpoolDir={self.folder}/spool-%n
SlurmctldPidFile={self.path('slurmctld.pid')}
SlurmdPidFile={self.folder}/slurmd-%n.pid
SlurmctldLogFile={self.path('slurmctld.log')}
SlurmdLogFile={self.folder}/slurmd-%n.log
ProctrackType=proctrack/pgid
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
ReturnToService=2
SlurmdParameters=config_overrides
MpiDefault=none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
SlurmdTimeout=5
KillWait=1
SchedulerParameters=sched_min_interval=100000,bf_interval=1
{chr(10).join(f'NodeName={n} NodeHostname={self.host} NodeAddr=127.0.0.1 Port={p} CPUs=1 State=UNKNOWN'
              for n, p in zip(NODES, self.ports[1:]))}
PartitionName=p Nodes=ALL Default=YES MaxTime=INFINITE State=UP
""")
        self.wait(lambda: os.path.exists(self.path("munge/s")), "munged")
        self.start("slurmctld", "slurmctld", "-D", "-f", self.path("slurm.conf"))
        for node in NODES:
            self.start(node, "slurmd", "-D", "-N", node, "-f", self.path("slurm.conf"))
        self.wait(lambda: self.ask("sinfo", "-h", "-N", "-o", "%t").split() == ["idle"] * len(NODES), "the nodes")

    def ask(self, *words):
        done = subprocess.run(words, env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=30)
        return done.stdout.decode()

    def wait(self, there, what, seconds=60):
        for _ in range(seconds * 5):
            if there():
                return
            time.sleep(0.2)
        logs = [f"{p.name}: {p.read_text(errors='replace')[-1000:]}" for p in self.folder.glob("*.log")]
        raise RuntimeError("\n".join([f"{what} did not come", *logs]))

    def down(self):
        for name in reversed(list(self.daemons)):
            self.end(name, signal.SIGTERM)
        shutil.rmtree(self.folder, ignore_errors=True)

    def end(self, name, how):
        daemon = self.daemons.pop(name, None)
        if not daemon:
            return
        daemon.send_signal(how)
        try:
            daemon.wait(10)
        except subprocess.TimeoutExpired:
            daemon.kill()
            daemon.wait()


class Slurm(KvxTest):
    def setUp(self):
        super().setUp()
        self.cluster = Cluster()
        self.addCleanup(self.cluster.down)
        self.cluster.up()

    def farm(self, *words, **more):
        return self.kvx("farm", *words, env=self.cluster.environment, **more)

    def look(self):
        return json.loads(self.farm("status", "job", "--json").out)

    def running(self):
        """Processes of this job's workers: id and piece."""
        found = {}
        for entry in pathlib.Path("/proc").iterdir():
            try:
                words = (entry / "cmdline").read_bytes().split(b"\0")
                if b"run" in words and str(self.folder / "job").encode() in words and words[0] == KVX.encode():
                    environment = dict(v.split(b"=", 1) for v in (entry / "environ").read_bytes().split(b"\0") if b"=" in v)
                    found[int(entry.name)] = environment
            except (OSError, ValueError):
                continue
        return found

    def on_node(self, node):
        return [process for process, e in self.running().items() if e.get(b"SLURMD_NODENAME") == node]

    def kill_one(self):
        for process in self.running():
            try:
                os.kill(process, signal.SIGKILL)
                return True
            except ProcessLookupError:
                continue  # it was quicker
        return False

    def test_twelve_pieces_whatever_happens(self):
        self.clip("a.mkv", "-c:v", "libx264", "-g", 50, "-c:a", "aac", seconds=FRAMES / 25, size="640x360")
        effects = ["-e", "Aibao", "-e", "Bad_TVSignal:opacity=50", "--codec", "ffv1"]
        self.kvx("render", *effects, "a.mkv", "whole.mkv")
        self.farm("plan", "job", *effects, "a.mkv", "farm.mkv", "--pieces", PIECES)
        self.assertEqual((self.look()["pieces"], self.look()["total"]), (PIECES, FRAMES))

        # A disk that is full for one piece: what has its name is no folder.
        blocked = self.folder / "job/pieces"
        blocked.mkdir()
        (blocked / "000005").write_bytes(b"in the way")
        said = self.farm("submit", "job", "--slurm", "--", "--partition=p").out.decode()
        self.assertIn("12 pieces", said)
        # A worker is killed in the middle, then the node of another.
        self.cluster.wait(lambda: len(self.running()) == 2, "two workers")
        self.cluster.wait(self.kill_one, "a worker to kill")
        self.cluster.wait(lambda: self.on_node(b"n2"), "work on n2")
        self.cluster.end("n2", signal.SIGKILL)
        for process in self.on_node(b"n2"):
            with contextlib.suppress(ProcessLookupError):
                os.kill(process, signal.SIGKILL)
        self.cluster.wait(lambda: not self.cluster.ask("squeue", "-h"), "the end of the jobs", 120)
        status = self.look()
        self.assertFalse(status["joined"])
        self.assertIn(5, status["missing"])
        self.assertGreater(status["done"], 6)
        self.assertNotIn("farm.mkv", self.names())

        # One more comes to harm; then what is missing is handed in again, on the node that is left.
        (blocked / "000005").unlink()
        whole = [p for p in sorted(blocked.glob("0*")) if p.is_dir()]
        data = whole[0] / "packets.bin"
        data.write_bytes(data.read_bytes()[:-7])
        kept = {p: (p / "packets.bin").stat().st_ino for p in whole[1:]}
        again = self.farm("submit", "job", "--slurm", "--wait").out.decode()
        self.assertIn(f"{len(status['missing']) + 1} pieces", again)
        self.assertIn("12 of 12 pieces are done: 300 of 300 frames", again)
        self.assertTrue(self.look()["joined"])
        for piece, number in kept.items():
            self.assertEqual((piece / "packets.bin").stat().st_ino, number, "made once")
        frames = []
        for name in ("whole.mkv", "farm.mkv"):
            words = ["ffmpeg", "-v", "error", "-i", name, "-map", "0", "-c:a", "copy", "-f", "framemd5", "-"]
            frames.append(subprocess.run(words, cwd=self.folder, check=True, stdout=subprocess.PIPE).stdout)
        self.assertEqual(*frames)
        self.farm("clean", "job")


if __name__ == "__main__":
    if os.geteuid() != 0:
        print("only root can bring a cluster up: skipped")
        sys.exit(77)
    missing = [program for program in PROGRAMS if not shutil.which(program, path=PATH)]
    if missing:
        print("skipped, for there is no " + ", ".join(missing))
        sys.exit(77)
    main()
