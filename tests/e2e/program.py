"""Runs mediasplit in a folder of its own and shows what it printed and left behind."""

import os
import shutil
import subprocess
import tempfile
import unittest

MEDIASPLIT = os.path.abspath(os.environ.get("MEDIASPLIT", "build/release/src/main/mediasplit"))
with open(MEDIASPLIT, "rb") as _program:
    SANITIZED = b"__asan_init" in _program.read()  # takes much memory of its own
REPOSITORY = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
CLIP = os.path.join(REPOSITORY, "demo", "clip.mp4")


def output_of(*words, **options):
    """What a command that must succeed prints."""
    done = subprocess.run(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=120,
                          **options)
    if done.returncode != 0:
        raise AssertionError("%s ended with %d:\n%s" % (words, done.returncode, (done.stdout + done.stderr).decode()))
    return done.stdout.decode()


class Result:
    def __init__(self, done):
        self.status = done.returncode
        self.out = (done.stdout or b"").decode(errors="surrogateescape")
        self.err = (done.stderr or b"").decode(errors="surrogateescape")

    @property
    def last_line(self):
        return self.out.splitlines()[-1] if self.out else ""


class ProgramTest(unittest.TestCase):
    """A test with a working folder that goes away with it."""

    maxDiff = None

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="mediasplit_")
        self.addCleanup(shutil.rmtree, self.folder, True)

    def path(self, *parts):
        return os.path.join(self.folder, *parts)

    def write(self, name, content=b""):
        with open(self.path(name), "wb") as file:
            file.write(content)

    def read(self, *parts):
        with open(self.path(*parts), "rb") as file:
            return file.read()

    def put_clip(self, name):
        shutil.copyfile(CLIP, self.path(name))

    def files(self, folder):
        return sorted(os.listdir(self.path(folder)))

    def run_program(self, *words, cwd=None, **options):
        options.setdefault("stdout", subprocess.PIPE)
        options.setdefault("stderr", subprocess.PIPE)
        return Result(subprocess.run([MEDIASPLIT, *words], cwd=cwd or self.folder, timeout=120,
                                     stdin=subprocess.DEVNULL, **options))

    def expect(self, result, status, out=None, err=None):
        self.assertEqual((result.status, result.out if out is None else out,
                          result.err if err is None else err),
                         (status, result.out, result.err))
