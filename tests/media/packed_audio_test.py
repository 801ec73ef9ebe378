"""Elementary streams of real encoders as inputs: they are read and checked, and nothing is written."""

import os
import subprocess
import unittest

from folder_server import serve
from media_support import MEDIASPLIT, PATIENCE, MediaCase, ffmpeg


class ElementaryStreams(MediaCase):
    def encode(self, name, channels):
        ffmpeg("-f", "lavfi", "-i", "sine=f=440:r=48000:d=2", "-c:a", "eac3", "-ac", str(channels), "-f",
               "eac3", self.path(name))

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

    def test_damaged_eac3_is_no_failure(self):
        self.encode("clip.ec3", 2)
        data = bytearray(self.read(self.path("clip.ec3")))
        data[len(data) // 2] ^= 0xFF
        with open(self.path("damaged.ec3"), "wb") as file:
            file.write(data)
        self.assertEqual(self.split("damaged.ec3"), {})

    def test_inputs_that_hold_something_else_are_no_failure(self):
        for name in "clip.ec3", "clip.ac4":
            for content in b"", b"\x0b", b"no audio at all", b"\xac\x40\xff\xff\xff\xff\xff":
                with open(self.path(name), "wb") as file:
                    file.write(content)
                self.assertEqual(self.split(name), {})

    def test_missing_inputs_fail(self):
        for name in "none.ec3", "none.ac4":
            self.assertEqual(self.split(name, expect=1), {})


TAG = (b"ID3\4\0\0\0\0\0\x3fPRIV\0\0\0\x35\0\0com.apple.streaming.transportStreamTimestamp\0" + bytes(8))

# A sync frame of stereo at 48 kHz with four bytes of audio, an I-frame.
AC4 = bytes.fromhex("ac40001a8017730000025c5882656e802008600400000008a5a5a5a50020")


class PackedRenditions(MediaCase):
    """A rendition of tagged segments; its audio comes out as it was before it was packed."""

    def write(self, name, data):
        with open(self.path(name), "wb") as file:
            file.write(data if isinstance(data, bytes) else data.encode())

    def encode(self, codec, muxer):
        parts = []
        for number in range(3):
            ffmpeg("-f", "lavfi", "-i", "sine=f=%d:r=48000:d=1" % (300 + number), "-c:a", codec, "-ac", "2", "-f", muxer,
                   self.path("part"))
            parts.append(self.read(self.path("part")))
        os.remove(self.path("part"))
        return parts

    def pack(self, parts, codecs):
        playlist = "#EXTM3U\n#EXT-X-VERSION:6\n#EXT-X-TARGETDURATION:2\n"
        for number, part in enumerate(parts):
            self.write("seg%d.pa" % number, TAG + part)
            playlist += "#EXTINF:1.0,\nseg%d.pa\n" % number
        self.write("audio.m3u8", playlist + "#EXT-X-ENDLIST\n")
        self.write("master.m3u8",
                   "#EXTM3U\n#EXT-X-VERSION:6\n"
                   '#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="a",NAME="one",LANGUAGE="en",DEFAULT=YES,AUTOSELECT=YES,'
                   'CHANNELS="2",URI="audio.m3u8"\n'
                   '#EXT-X-STREAM-INF:BANDWIDTH=200000,CODECS="%s",AUDIO="a"\naudio.m3u8\n' % codecs)

    def check_outputs(self, master, audio, extension):
        outputs = self.split(master)
        named = [path for name, path in outputs.items() if "_GroupID_a_Lang_en_Channel_2ch.out." + extension in name]
        self.assertEqual(len(named), 1, outputs)
        self.assertEqual(self.read(named[0]), audio)

    def check(self, codec, muxer, codecs, extension):
        parts = self.encode(codec, muxer)
        self.pack(parts, codecs)
        self.check_outputs("master.m3u8", b"".join(parts), extension)

    def test_eac3(self):
        self.check("eac3", "eac3", "ec-3", "ec3")

    def test_ac3(self):
        self.check("ac3", "ac3", "ac-3", "ac3")

    def test_aac(self):
        self.check("aac", "adts", "mp4a.40.2", "aac")

    def test_ac4(self):
        self.pack([AC4 * 10, AC4 * 20], "ac-4.02.01.00")
        self.check_outputs("master.m3u8", AC4 * 30, "ac4")

    def test_frames_behind_lost_sync_are_dropped_up_to_the_next_segment(self):
        self.pack([AC4 * 3 + b"lost" + AC4, AC4 * 5], "ac-4.02.01.00")
        self.check_outputs("master.m3u8", AC4 * 8, "ac4")

    def test_damaged_tag_is_told_and_the_other_segments_come_out(self):
        self.pack([AC4, AC4, AC4 * 2], "ac-4.02.01.00")
        self.write("seg1.pa", TAG[:9] + b"\0" + TAG[10:] + AC4)
        outputs = self.split("master.m3u8", expect=1)
        named = [path for name, path in outputs.items() if name.endswith("_Channel_2ch.out.ac4")]
        self.assertEqual([self.read(path) for path in named], [AC4 * 3])
        self.assertIn("ERROR: In Packed audio[seg1.pa], fail to parse the ID3 tag.", self.errors)

    def test_segments_of_an_address(self):
        with serve(self.folder) as address:
            for parts, codecs, extension in ((self.encode("eac3", "eac3"), "ec-3", "ec3"),
                                             ([AC4 * 4, AC4 * 5], "ac-4.02.01.00", "ac4")):
                self.pack(parts, codecs)
                self.check_outputs(address + "/master.m3u8", b"".join(parts), extension)


if __name__ == "__main__":
    unittest.main()
