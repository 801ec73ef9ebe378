"""Transport streams as ffmpeg writes them: the PES payloads come out byte for byte."""

import unittest

from media_support import FIRST_PID, MediaCase, ffmpeg, frame_checksums, payloads

PICTURE = ["-f", "lavfi", "-i", "testsrc2=s=192x128:r=25:d=3"]
TONE = ["-f", "lavfi", "-i", "sine=f=440:r=48000:d=3"]

VIDEO = {
    "h264": ["-c:v", "libx264", "-preset", "ultrafast", "-bf", "2", "-g", "12"],
    "h265": ["-c:v", "libx265", "-preset", "ultrafast", "-x265-params", "log-level=none:keyint=12"],
    "mpeg": ["-c:v", "mpeg2video", "-g", "12"],
}
AUDIO = {
    "adts": ["-c:a", "aac"],
    "ac3": ["-c:a", "ac3", "-ac", "6"],
    "ec3": ["-c:a", "eac3", "-ac", "6"],
}


class TransportStreams(MediaCase):
    def check_outputs(self, outputs, inputs, stem, extensions):
        self.assertEqual(sorted(outputs), sorted(
            "%s_PID_%d.out.%s" % (stem, FIRST_PID + i, extension) for i, extension in enumerate(extensions)))
        joined = b"".join(self.read(self.path(name)) for name in inputs)
        for i, extension in enumerate(extensions):
            written = self.read(outputs["%s_PID_%d.out.%s" % (stem, FIRST_PID + i, extension)])
            expected = payloads(joined, FIRST_PID + i)
            self.assertGreater(len(expected), 1000)
            self.assertEqual(written, expected, extension)

    def single(self, video, audio):
        ffmpeg(*PICTURE, *TONE, *VIDEO[video], *AUDIO[audio], self.path("clip.ts"))
        outputs = self.split("clip.ts")
        self.check_outputs(outputs, ["clip.ts"], "clip", [video, audio])
        self.assertEqual(frame_checksums(outputs["clip_PID_256.out." + video], "v:0"),
                         frame_checksums(self.path("clip.ts"), "v:0"))

    def test_several_audio_streams(self):
        ffmpeg(*PICTURE, *TONE, "-map", "0:v", "-map", "1:a", "-map", "1:a", "-map", "1:a", *VIDEO["h264"],
               "-c:a:0", "aac", "-c:a:1", "ac3", "-c:a:2", "eac3", self.path("clip.ts"))
        self.check_outputs(self.split("clip.ts"), ["clip.ts"], "clip", ["h264", "adts", "ac3", "ec3"])

    def test_one_pid_is_selected(self):
        ffmpeg(*PICTURE, *TONE, *VIDEO["h264"], *AUDIO["ac3"], self.path("clip.ts"))
        outputs = self.split("clip.ts", "--pid", "257")
        self.assertEqual(list(outputs), ["clip_PID_257.out.ac3"])
        self.assertEqual(self.read(outputs["clip_PID_257.out.ac3"]), payloads(self.read(self.path("clip.ts")), 257))

    def test_series_gives_the_bytes_of_the_joined_file(self):
        ffmpeg(*PICTURE, *TONE, *VIDEO["h264"], *AUDIO["ec3"], "-f", "segment", "-segment_time", "1", "-break_non_keyframes",
               "0", self.path("seg_%03d.ts"))
        names = ["seg_%03d.ts" % i for i in range(3)]
        outputs = self.split("seg_%03d.ts")
        self.check_outputs(outputs, names, "seg_%03d", ["h264", "ec3"])
        with open(self.path("joined.ts"), "wb") as joined:
            for name in names:
                joined.write(self.read(self.path(name)))
        whole = self.split("joined.ts")
        for extension, pid in (("h264", 256), ("ec3", 257)):
            self.assertEqual(self.read(outputs["seg_%%03d_PID_%d.out.%s" % (pid, extension)]),
                             self.read(whole["joined_PID_%d.out.%s" % (pid, extension)]))

    def test_series_begins_at_the_start_number(self):
        ffmpeg(*PICTURE, *TONE, *VIDEO["h264"], *AUDIO["adts"], "-f", "segment", "-segment_time", "1",
               self.path("seg_%d.ts"))
        outputs = self.split("seg_%d.ts", "-s", "1")
        self.check_outputs(outputs, ["seg_1.ts", "seg_2.ts"], "seg_%d", ["h264", "adts"])

    def test_series_without_a_first_file_fails(self):
        self.split("none_%d.ts", expect=1)

    def test_input_that_is_no_transport_stream_fails(self):
        with open(self.path("clip.ts"), "wb") as file:
            file.write(bytes(range(256)) * 8)
        self.split("clip.ts", expect=1)


for video in VIDEO:
    for audio in AUDIO:
        setattr(TransportStreams, "test_%s_with_%s" % (video, audio),
                lambda self, video=video, audio=audio: self.single(video, audio))

if __name__ == "__main__":
    unittest.main()
