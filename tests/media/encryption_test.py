"""Encrypted content of real packagers comes out as the clear source does, byte for byte.

The content has one encrypted track and one protected range a sample: deliberately, each protected
range starts at a fresh keystream block.
"""

import os
import shutil
import unittest

from media_support import MediaCase, ffmpeg, run

KID = "a7e61c373e219033c21091fa607bf3b8"
KEY = "76a6c65c5ea762046bd749a2e632ccbb"
KEYS = ("--decryption-keys", KID + ":" + KEY)
PACKAGER = os.environ.get("MEDIASPLIT_PACKAGER") or shutil.which("packager")


class EncryptionCase(MediaCase):
    def setUp(self):
        super().setUp()
        # One slice a picture, no SEI.
        ffmpeg("-f", "lavfi", "-i", "testsrc2=size=320x240:rate=25:duration=3", "-c:v", "libx264", "-x264-params",
               "slices=1:sliced-threads=0:keyint=25", "-bsf:v", "filter_units=remove_types=6", "-pix_fmt", "yuv420p",
               self.path("video.mp4"))
        ffmpeg("-f", "lavfi", "-i", "sine=frequency=440:duration=3", "-c:a", "aac", "-ac", "2", self.path("audio.mp4"))

    def only_output(self, name, *options):
        outputs = self.split(name, *options)
        self.assertEqual(len(outputs), 1)
        data = self.read(list(outputs.values())[0])
        self.assertGreater(len(data), 1000)
        return data


class WithFfmpeg(EncryptionCase):
    def encrypt(self, name):
        ffmpeg("-i", self.path(name + ".mp4"), "-c", "copy", "-encryption_scheme", "cenc-aes-ctr", "-encryption_key", KEY,
               "-encryption_kid", KID, self.path(name + "_cenc.mp4"))

    def test_cenc_equals_the_clear_source(self):
        for name in "video", "audio":
            self.encrypt(name)
            self.assertEqual(self.only_output(name + "_cenc.mp4", *KEYS), self.only_output(name + ".mp4"), name)

    def test_wrong_key_gives_other_bytes(self):
        self.encrypt("audio")
        wrong = self.only_output("audio_cenc.mp4", "--decryption-keys", KID + ":" + KEY[::-1])
        self.assertNotEqual(wrong, self.only_output("audio.mp4"))

    def test_missing_key_fails_the_run(self):
        self.encrypt("audio")
        self.assertEqual(self.split("audio_cenc.mp4", expect=1), {})


@unittest.skipUnless(PACKAGER, "MEDIASPLIT_PACKAGER names no packager")
class WithPackager(EncryptionCase):
    def package(self, source, stream, target, *options):
        run(PACKAGER, "in=%s,stream=%s,output=%s" % (self.path(source), stream, self.path(target)), *options)

    def test_all_schemes_equal_the_clear_source(self):
        ffmpeg("-i", self.path("video.mp4"), "-c:v", "libx265", "-x265-params", "log-level=none:slices=1", "-tag:v", "hvc1",
               self.path("hevc.mp4"))
        for name, stream in ("video", "video"), ("hevc", "video"), ("audio", "audio"):
            self.package(name + ".mp4", stream, name + "_clear.mp4")
            clear = self.only_output(name + "_clear.mp4")
            for scheme in "cenc", "cbc1", "cens", "cbcs":
                target = "%s_%s.mp4" % (name, scheme)
                self.package(name + ".mp4", stream, target, "--enable_raw_key_encryption", "--keys",
                             "label=:key_id=%s:key=%s" % (KID, KEY), "--protection_scheme", scheme, "--clear_lead", "0")
                self.assertEqual(self.only_output(target, *KEYS), clear, target)


if __name__ == "__main__":
    unittest.main()
