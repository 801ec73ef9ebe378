"""MP4 inputs as ffmpeg writes them: what comes out decodes to the same frames as the source."""

import itertools
import os
import struct
import unittest

from media_support import (MediaCase, adts_frame_count, copied_bytes, encoders, ffmpeg, frame_checksums, insert_box,
                           packet_count)

PICTURE = ["-f", "lavfi", "-i", "testsrc2=s=192x128:r=25:d=2"]
SECOND_PICTURE = ["-t", "2", "-f", "lavfi", "-i", "mandelbrot=s=128x96:r=25"]
TONE = ["-f", "lavfi", "-i", "sine=f=440:r=48000:d=2"]

# How the file is laid out: name, muxer options, file extension.
LAYOUTS = [
    ("moov_last", [], "mp4"),
    ("moov_first", ["-movflags", "+faststart"], "mp4"),
    ("fragment_per_key_frame", ["-movflags", "+frag_keyframe+empty_moov"], "mp4"),
    ("fragment_by_duration", ["-movflags", "+empty_moov", "-frag_duration", "200000"], "mp4"),
    ("default_base_moof", ["-movflags", "+frag_keyframe+empty_moov+default_base_moof"], "mp4"),
    ("separate_fragments", ["-movflags", "+frag_keyframe+empty_moov+separate_moof"], "mp4"),
    ("delayed_moov", ["-movflags", "+frag_keyframe+delay_moov"], "mp4"),
    ("quicktime", [], "mov"),
]

X264 = ["-c:v", "libx264", "-preset", "ultrafast", "-bf", "2", "-g", "12", "-x264-params", "scenecut=0:b-adapt=0"]
X265 = ["-c:v", "libx265", "-preset", "ultrafast", "-x265-params", "log-level=none:keyint=12:bframes=2"]

# Codec pairs: name, encoder options of both streams, extension and kind of each output.
CODECS = [
    ("avc1_stereo", [*X264, "-tag:v", "avc1", "-c:a", "aac", "-ac", "2"], "264", "aac"),
    ("avc3_mono", [*X264, "-tag:v", "avc3", "-c:a", "aac", "-ac", "1"], "264", "aac"),
    ("hvc1_surround", [*X265, "-tag:v", "hvc1", "-c:a", "aac", "-ac", "6"], "265", "aac"),
    ("hev1_ac3", [*X265, "-tag:v", "hev1", "-c:a", "ac3", "-ac", "6"], "265", "ac3"),
    ("avc1_eac3", [*X264, "-tag:v", "avc1", "-c:a", "eac3", "-ac", "6"], "264", "ec3"),
]

NO_EDIT = ["-ignore_editlist", "1"]


def name_of(source, track, extension):
    return "%s_track_id_%d.out.%s" % (os.path.splitext(os.path.basename(source))[0], track, extension)


class Mp4Matrix(MediaCase):
    def check_video(self, source, outputs, name, selector="v:0"):
        self.assertIn(name, outputs)
        expected = frame_checksums(self.path(source), selector, *NO_EDIT)
        self.assertGreater(len(expected), 20)
        self.assertEqual(frame_checksums(outputs[name], "v:0"), expected)

    def check_audio(self, source, outputs, name, kind):
        self.assertIn(name, outputs)
        written = self.read(outputs[name])
        if kind == "aac":
            self.assertEqual(adts_frame_count(written), packet_count(self.path(source), "a:0"))
            expected = frame_checksums(self.path(source), "a:0", *NO_EDIT, "-flags2", "+skip_manual")
            self.assertEqual(frame_checksums(outputs[name], "a:0", "-flags2", "+skip_manual"), expected)
        else:
            expected = copied_bytes(self.path(source), "a:0", {"ac3": "ac3", "ec3": "eac3"}[kind], *NO_EDIT)
            self.assertGreater(len(expected), 1000)
            self.assertEqual(written, expected)


def layout_test(layout, codecs):
    def test(self):
        _, muxing, extension = layout
        _, encoding, video, audio = codecs
        source = "clip." + extension
        ffmpeg(*PICTURE, *TONE, *encoding, *muxing, self.path(source))
        outputs = self.split(source)
        self.assertEqual(len(outputs), 2)
        self.check_video(source, outputs, name_of(source, 1, video))
        self.check_audio(source, outputs, name_of(source, 2, audio), audio)
    return test


def refused_by_peer(layout, codecs):
    """ffmpeg writes no AC-3 or E-AC-3 into an empty moov, and no HEVC tag hev1 into QuickTime."""
    empty = any("empty_moov" in word for word in layout[1])
    return empty and codecs[3] in ("ac3", "ec3")


for layout, codecs in itertools.product(LAYOUTS, CODECS):
    if refused_by_peer(layout, codecs):
        continue
    setattr(Mp4Matrix, "test_%s_%s" % (codecs[0], layout[0]), layout_test(layout, codecs))


class Mp4Special(Mp4Matrix):
    """Layouts beyond the matrix; the tests of the base class are not run again."""

    def test_edit_list_with_delay(self):
        ffmpeg("-itsoffset", "0.7", *PICTURE, *TONE, *X264, "-c:a", "aac", self.path("clip.mp4"))
        outputs = self.split("clip.mp4")
        self.check_video("clip.mp4", outputs, "clip_track_id_1.out.264")
        self.check_audio("clip.mp4", outputs, "clip_track_id_2.out.aac", "aac")

    def test_two_video_tracks(self):
        ffmpeg(*PICTURE, *SECOND_PICTURE, *TONE, "-map", "0:v", "-map", "1:v", "-map", "2:a", *X264, "-c:a", "aac",
               self.path("clip.mp4"))
        outputs = self.split("clip.mp4")
        self.check_video("clip.mp4", outputs, "clip_track_id_1.out.264", "v:0")
        self.check_video("clip.mp4", outputs, "clip_track_id_2.out.264", "v:1")
        self.check_audio("clip.mp4", outputs, "clip_track_id_3.out.aac", "aac")

    def test_one_track_is_selected(self):
        ffmpeg(*PICTURE, *TONE, *X264, "-c:a", "aac", self.path("clip.mp4"))
        outputs = self.split("clip.mp4", "--track-id", "2")
        self.assertEqual(list(outputs), ["clip_track_id_2.out.aac"])
        self.check_audio("clip.mp4", outputs, "clip_track_id_2.out.aac", "aac")

    def test_timed_text(self):
        with open(self.path("a.srt"), "w") as text:
            text.write("1\n00:00:00,100 --> 00:00:00,900\nfirst line\n\n"
                       "2\n00:00:01,000 --> 00:00:01,800\nsecond line\n")
        ffmpeg(*PICTURE, "-i", self.path("a.srt"), "-map", "0:v", "-map", "1:s", *X264, "-c:s", "mov_text",
               self.path("clip.mp4"))
        outputs = self.split("clip.mp4")
        expected = copied_bytes(self.path("clip.mp4"), "s:0", "data", *NO_EDIT)
        self.assertIn(b"second line", expected)
        self.assertEqual(self.read(outputs["clip_track_id_2.out.data"]), expected)

    def test_several_fragment_runs_of_many_tracks(self):
        ffmpeg(*PICTURE, *TONE, "-map", "0:v", "-map", "1:a", "-map", "1:a", "-map", "1:a", *X264, "-c:a", "aac",
               "-movflags", "+frag_keyframe+empty_moov", self.path("clip.mp4"))
        outputs = self.split("clip.mp4")
        self.check_video("clip.mp4", outputs, "clip_track_id_1.out.264")
        for track in (2, 3, 4):
            self.check_audio("clip.mp4", outputs, "clip_track_id_%d.out.aac" % track, "aac")


class Av1(MediaCase):
    def encode(self):
        names = encoders()
        for encoder, options in (("libaom-av1", ["-cpu-used", "8"]), ("libsvtav1", ["-preset", "12"])):
            if encoder in names:
                ffmpeg("-f", "lavfi", "-i", "testsrc2=s=192x128:r=25:d=0.4", "-c:v", encoder, *options,
                       self.path("clip.mp4"))
                return
        self.skipTest("this ffmpeg has no AV1 encoder")

    def test_plain_track_leaves_an_empty_file(self):
        self.encode()
        outputs = self.split("clip.mp4")
        self.assertEqual(self.read(outputs["clip_track_id_1.out.obu"]), b"")

    def test_track_with_enhancement_configuration_leaves_the_packets(self):
        self.encode()
        # profile 10, level 1, RPU and base layer present, compatible with 0, in the published bit layout
        config = struct.pack(">BBI", 1, 0, (10 << 25) | (1 << 19) | (1 << 18) | (1 << 16)) + bytes(18)
        box = struct.pack(">I4s", 8 + len(config), b"pxvC") + config
        data = insert_box(self.read(self.path("clip.mp4")),
                          [b"moov", b"trak", b"mdia", b"minf", b"stbl", b"stsd", b"av01"], {b"stsd": 8, b"av01": 78}, box)
        with open(self.path("layered.mp4"), "wb") as file:
            file.write(data)
        outputs = self.split("layered.mp4")
        expected = copied_bytes(self.path("clip.mp4"), "v:0", "data", *NO_EDIT)
        self.assertGreater(len(expected), 500)
        self.assertEqual(self.read(outputs["layered_track_id_1.out.obu"]), expected)


def load_tests(loader, _tests, _pattern):
    suite = unittest.TestSuite(loader.loadTestsFromTestCase(case) for case in (Mp4Matrix, Av1))
    suite.addTests(Mp4Special(name) for name in sorted(vars(Mp4Special)) if name.startswith("test_"))
    return suite


if __name__ == "__main__":
    unittest.main()
