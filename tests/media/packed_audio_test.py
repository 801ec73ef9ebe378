"""Elementary streams of real encoders as inputs: they are read and checked, and nothing is written."""

import os
import subprocess
import unittest

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


class PackedRenditions(MediaCase):
    """A rendition of tagged segments; its audio comes out as it was before it was packed."""

    def write(self, name, data):
        with open(self.path(name), "wb") as file:
            file.write(data if isinstance(data, bytes) else data.encode())

    def pack(self, codec, muxer, codecs, *options):
        playlist = "#EXTM3U\n#EXT-X-VERSION:6\n#EXT-X-TARGETDURATION:2\n"
        audio = b""
        for number in range(3):
            ffmpeg("-f", "lavfi", "-i", "sine=f=%d:r=48000:d=1" % (300 + number), "-c:a", codec, "-ac", "2", *options,
                   "-f", muxer, self.path("part"))
            part = self.read(self.path("part"))
            audio += part
            self.write("seg%d.%s" % (number, muxer), TAG + part)
            playlist += "#EXTINF:1.0,\nseg%d.%s\n" % (number, muxer)
        self.write("audio.m3u8", playlist + "#EXT-X-ENDLIST\n")
        self.write("master.m3u8",
                   "#EXTM3U\n#EXT-X-VERSION:6\n"
                   '#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="a",NAME="one",LANGUAGE="en",DEFAULT=YES,AUTOSELECT=YES,'
                   'CHANNELS="2",URI="audio.m3u8"\n'
                   '#EXT-X-STREAM-INF:BANDWIDTH=200000,CODECS="%s",AUDIO="a"\naudio.m3u8\n' % codecs)
        return audio

    def check(self, codec, muxer, codecs, extension):
        audio = self.pack(codec, muxer, codecs)
        outputs = self.split("master.m3u8")
        named = [path for name, path in outputs.items() if "_GroupID_a_Lang_en_Channel_2ch.out." + extension in name]
        self.assertEqual(len(named), 1, outputs)
        self.assertEqual(self.read(named[0]), audio)

    def test_eac3(self):
        self.check("eac3", "eac3", "ec-3", "ec3")

    def test_ac3(self):
        self.check("ac3", "ac3", "ac-3", "ac3")

    def test_aac(self):
        self.check("aac", "adts", "mp4a.40.2", "aac")


if __name__ == "__main__":
    unittest.main()
