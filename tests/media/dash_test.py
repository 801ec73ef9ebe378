"""Presentations of ffmpeg's DASH muxer: what comes out is what the joined segments give."""

import glob
import os
import re
import unittest
import xml.etree.ElementTree as ElementTree

from folder_server import serve
from media_support import MediaCase, ffmpeg, frame_checksums

PICTURE = ["-f", "lavfi", "-i", "testsrc2=s=192x128:r=25:d=6"]
# Shorter than the picture: a walk by duration ends where the Period does, even ahead of a last sample.
TONE = ["-f", "lavfi", "-i", "sine=f=440:r=48000:d=5.8"]
CODING = ["-c:v", "libx264", "-preset", "ultrafast", "-bf", "2", "-g", "25", "-keyint_min", "25", "-c:a", "aac"]
ADDRESSING = {
    "timeline": ["-use_template", "1", "-use_timeline", "1"],
    "number": ["-use_template", "1", "-use_timeline", "0"],
    "list": ["-use_template", "0", "-use_timeline", "0"],
    "single_file_list": ["-single_file", "1", "-use_template", "0", "-use_timeline", "0"],
    "on_demand": ["-single_file", "1", "-global_sidx", "1", "-format_options", "movflags=+cmaf"],
}
XMLNS = "{urn:mpeg:dash:schema:mpd:2011}"


class Presentations(MediaCase):
    def make(self, kind, *extra):
        ffmpeg(*PICTURE, *TONE, "-map", "0:v", "-map", "0:v", "-map", "1:a", *CODING, "-b:v:0", "300k", "-b:v:1", "100k",
               "-adaptation_sets", "id=0,streams=v id=1,streams=a", "-f", "dash", "-seg_duration", "2", *ADDRESSING[kind],
               *extra, "stream.mpd", cwd=self.folder)

    def joined(self, representation):
        """The bytes of one Representation in one file."""
        name = "stream-stream%s.mp4" % representation
        if os.path.exists(self.path(name)):
            return self.read(self.path(name))
        return b"".join(self.read(path) for path in [self.path("init-stream%s.m4s" % representation)] + sorted(
            glob.glob(self.path("chunk-stream%s-*" % representation))))

    def expected(self, representation, extension):
        name = "joined%s.mp4" % representation
        with open(self.path(name), "wb") as file:
            file.write(self.joined(representation))
        outputs = self.split(name)
        self.assertEqual(list(outputs), ["joined%s_track_id_1.out.%s" % (representation, extension)])
        return self.read(list(outputs.values())[0])

    def check_outputs(self, outputs):
        self.assertEqual(sorted(outputs), [
            "stream_PerID_0_RepID_0.out.264", "stream_PerID_0_RepID_1.out.264", "stream_PerID_0_RepID_2.out.aac"])
        for representation, extension in ((0, "264"), (1, "264"), (2, "aac")):
            written = self.read(outputs["stream_PerID_0_RepID_%d.out.%s" % (representation, extension)])
            self.assertGreater(len(written), 1000)
            self.assertEqual(written, self.expected(representation, extension))

    def manifest(self):
        return self.read(self.path("stream.mpd")).decode()

    def rewrite(self, text):
        with open(self.path("stream.mpd"), "w") as file:
            file.write(text)

    def test_timeline(self):
        self.make("timeline")
        self.assertIn("<SegmentTimeline>", self.manifest())
        outputs = self.split("stream.mpd")
        self.check_outputs(outputs)
        self.assertEqual(len(frame_checksums(outputs["stream_PerID_0_RepID_0.out.264"], "v:0")), 150)

    def test_number(self):
        self.make("number")
        self.assertIn("$Number", self.manifest())
        self.check_outputs(self.split("stream.mpd"))

    def test_list(self):
        self.make("list")
        self.assertIn("<SegmentURL", self.manifest())
        self.check_outputs(self.split("stream.mpd"))

    def test_list_of_ranges_of_one_file(self):
        self.make("single_file_list")
        self.assertIn("mediaRange", self.manifest())
        self.check_outputs(self.split("stream.mpd"))

    def test_on_demand_file_with_an_index(self):
        self.make("on_demand")
        if "indexRange" not in self.manifest():
            self.make_segment_base()
        self.check_outputs(self.split("stream.mpd"))

    def make_segment_base(self):
        """A SegmentBase in place of the SegmentList, pointing at the index that the muxer wrote."""
        text = self.manifest()
        for representation in range(3):
            data = self.joined(representation)
            index = data.index(b"sidx") - 4
            end = index + int.from_bytes(data[index:index + 4], "big") - 1
            base = '<SegmentBase indexRange="%d-%d"><Initialization range="0-%d"/></SegmentBase>' % (index, end, index - 1)
            text = re.sub(r"<SegmentList.*?</SegmentList>", base, text, count=1, flags=re.S)
        self.rewrite(text)

    def test_over_http(self):
        for kind in ADDRESSING:
            with self.subTest(kind):
                self.setUp()
                self.make(kind)
                with serve(self.folder) as address:
                    # Without --live-duration: a static presentation is played as a whole.
                    outputs = self.split(address + "/stream.mpd")
                self.check_outputs(outputs)
                self.assertEqual(os.listdir(self.path("tmp")), [])

    def test_two_periods_are_split_one_after_the_other(self):
        self.make("timeline")
        text = self.manifest()
        period = re.search(r"<Period.*</Period>", text, re.S).group(0)
        second = period.replace('id="0"', 'id="two"', 1).replace('start="PT0.0S"', 'start="PT6.0S"')
        text = text.replace(period, period + second)
        self.rewrite(re.sub('mediaPresentationDuration="[^"]*"', 'mediaPresentationDuration="PT12S"', text))
        outputs = self.split("stream.mpd")
        self.assertEqual(len(outputs), 6)
        for name, path in outputs.items():
            if "PerID_two" in name:
                self.assertEqual(self.read(path), self.read(outputs[name.replace("two", "0")]))

    def test_only_representation_runs_alone(self):
        ffmpeg(*TONE, "-c:a", "eac3", "-ac", "6", "-f", "dash", "-seg_duration", "2", "stream.mpd", cwd=self.folder)
        outputs = self.split("stream.mpd")
        self.assertEqual(list(outputs), ["stream_PerID_0_RepID_0.out.ec3"])
        self.assertEqual(self.read(list(outputs.values())[0]), self.expected(0, "ec3"))

    def test_encrypted_representation_by_the_key_id_of_the_manifest(self):
        key, kid = "00112233445566778899aabbccddeeff", "a1a2a3a4a5a6a7a8b1b2b3b4b5b6b7b8"
        other_kid = "ff" * 16
        ffmpeg(*TONE, "-c:a", "aac", self.path("clip.mp4"))
        clear = self.read(self.split("clip.mp4")["clip_track_id_1.out.aac"])
        ffmpeg("-i", self.path("clip.mp4"), "-c", "copy", "-encryption_scheme", "cenc-aes-ctr", "-encryption_key", key,
               "-encryption_kid", kid, self.path("coded.mp4"))
        # With the id of the file's own `tenc`, and with another one that only the manifest tells.
        for told in (kid, other_kid):
            dashed = "-".join([told[:8], told[8:12], told[12:16], told[16:20], told[20:]])
            self.rewrite('<MPD mediaPresentationDuration="PT6S"><Period id="0"><AdaptationSet mimeType="audio/mp4">'
                         '<Representation id="0" bandwidth="1" codecs="mp4a.40.2"><ContentProtection value="cenc" '
                         'schemeIdUri="urn:mpeg:dash:mp4protection:2011" cenc:default_KID="%s"/><SegmentList duration="6">'
                         '<Initialization sourceURL="coded.mp4"/></SegmentList>'
                         '</Representation></AdaptationSet></Period></MPD>' % dashed)
            outputs = self.split("stream.mpd", "--decryption-keys", told + ":" + key)
            self.assertEqual(self.read(outputs["stream_PerID_0_RepID_0.out.aac"]), clear)

    def test_manifest_is_well_formed_as_made(self):
        self.make("timeline")
        self.assertEqual(ElementTree.fromstring(self.manifest()).tag, XMLNS + "MPD")


if __name__ == "__main__":
    unittest.main()
