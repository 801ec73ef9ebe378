"""Elementary streams of real encoders as inputs: they are read and checked, and nothing is written."""

import os
import subprocess
import unittest

from media_support import MEDIASPLIT, PATIENCE, MediaCase, ffmpeg


class ElementaryStreams(MediaCase):
    def encode(self, name, channels):
        ffmpeg("-f", "lavfi", "-i", "sine=f=440:r=48000:d=2", "-c:a", "eac3", "-ac", str(channels), self.path(name))

    def lines(self, name):
        done = subprocess.run([os.path.abspath(MEDIASPLIT), "-i", name, "-o", "out"], cwd=self.folder,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=PATIENCE)
        self.assertEqual(done.returncode, 0)
        return done.stdout.decode() + done.stderr.decode()

    def test_eac3_is_read_and_nothing_is_written(self):
        for channels in 1, 2, 6:
            self.encode("clip.ec3", channels)
            self.assertEqual(self.split("clip.ec3"), {})
            self.assertNotIn("FATAL", self.lines("clip.ec3"))

    def test_damaged_eac3_is_told_by_the_analysis_and_is_no_failure(self):
        self.encode("clip.ec3", 2)
        data = bytearray(self.read(self.path("clip.ec3")))
        data[len(data) // 2] ^= 0xFF
        with open(self.path("damaged.ec3"), "wb") as file:
            file.write(data)
        self.assertEqual(self.split("damaged.ec3"), {})
        self.assertNotEqual(self.lines("damaged.ec3"), self.lines("clip.ec3").replace("clip", "damaged"))

    def test_inputs_that_hold_something_else_are_no_failure(self):
        for name in "clip.ec3", "clip.ac4":
            for content in b"", b"\x0b", b"no audio at all", b"\xac\x40\xff\xff\xff\xff\xff":
                with open(self.path(name), "wb") as file:
                    file.write(content)
                self.assertEqual(self.split(name), {})

    def test_missing_inputs_fail(self):
        for name in "none.ec3", "none.ac4":
            self.assertEqual(self.split(name, expect=1), {})


if __name__ == "__main__":
    unittest.main()
