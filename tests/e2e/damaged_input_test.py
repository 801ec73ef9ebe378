"""Damaged files: each run ends by itself with a closing line and an exit status of 0 or 1."""

import random
import unittest

from program import CLIP, ProgramTest

RUNS = 60


class DamagedInputTest(ProgramTest):
    def setUp(self):
        super().setUp()
        with open(CLIP, "rb") as file:
            self.clip = file.read()
        self.random = random.Random(4711)
        # The boxes that tell the structure of the clip, where damage matters most.
        start = self.clip.index(b"moov") - 4
        size = int.from_bytes(self.clip[start:start + 4], "big")
        self.structure = range(start, start + size)

    def run_damaged(self, content, what):
        self.write("damaged.mp4", content)
        result = self.run_program("-i", "damaged.mp4", "-o", "out")
        self.assertIn(result.status, [0, 1], "%s:\n%s" % (what, result.err[-3000:]))
        closing = "Succeed" if result.status == 0 else "Failed"
        self.assertEqual(result.last_line, closing + " to demultiplex damaged.mp4", what)

    def test_cut_files(self):
        places = [0, 1, 7, 8, 9] + self.random.sample(self.structure, RUNS) + \
            self.random.sample(range(len(self.clip)), RUNS // 2)
        for place in places:
            self.run_damaged(self.clip[:place], "cut at %d" % place)

    def test_changed_bytes(self):
        for place in self.random.sample(self.structure, RUNS):
            for value in [0x00, 0xFF, self.clip[place] ^ 0x80]:
                changed = bytearray(self.clip)
                changed[place] = value
                self.run_damaged(changed, "byte %d is %d" % (place, value))

    def test_noise(self):
        for seed in range(RUNS // 4):
            noise = random.Random(seed).randbytes(5000)
            self.run_damaged(noise, "noise %d" % seed)
            self.run_damaged(self.clip[:self.structure.start + 16] + noise,
                             "noise %d in moov" % seed)


if __name__ == "__main__":
    unittest.main()
