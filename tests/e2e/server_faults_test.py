"""Servers that stall, end early, lie about lengths or never stop, and signals in the middle of a run."""

import resource
import signal
import subprocess
import threading
import time
import unittest

from inputs import initialization, segment, ts
from program import MEDIASPLIT, SANITIZED, ProgramTest
from raw_server import RawServer

MEGABYTE = 1 << 20
LIST = "#EXTM3U\n#EXT-X-TARGETDURATION:1\n%s#EXT-X-ENDLIST\n"


class ServerFaultTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.server = RawServer()
        self.addCleanup(self.server.close)
        self.server.answers["/good.ts"] = ts([b"good"])

    def put(self, path, segments):
        self.server.answers[path] = (LIST % "".join("#EXTINF:1,\n%s\n" % name for name in segments)).encode()

    def split(self, path, status):
        result = self.run_program("-i", self.server.url(path), "-o", "out")
        self.expect(result, status)
        self.assertEqual(result.last_line,
                         "%s to demultiplex %s" % ("Failed" if status else "Succeed", self.server.url(path)))
        self.assertEqual(self.files("tmp"), [])
        return result

    def start(self, path):
        process = subprocess.Popen([MEDIASPLIT, "-i", self.server.url(path), "-o", "out"], cwd=self.folder,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, stdin=subprocess.DEVNULL)
        self.addCleanup(process.kill)
        return process


class LyingServerTest(ServerFaultTest):
    def test_segment_that_ends_early_each_time_ends_its_stream(self):
        content = ts([b"whole"])
        self.server.answers["/cut.ts"] = lambda c: c.sendall(self.server.head(len(content)) + content[:300])
        self.put("/list.m3u8", ["good.ts", "cut.ts", "good.ts"])
        result = self.split("/list.m3u8", 1)
        self.assertEqual(result.out.count("CURL error code: 18"), 3, result.out)
        self.assertEqual(result.err, "ERROR: Fail to get segment: %s\n" % self.server.url("/cut.ts"))
        self.assertEqual(self.read("out/list_PID_257.out.adts"), b"good")

    def test_more_bytes_than_told_are_left_out(self):
        content = ts([b"whole"])
        self.server.answers["/long.ts"] = lambda c: c.sendall(self.server.head(len(content)) + content + b"x" * 5000)
        self.put("/list.m3u8", ["long.ts"])
        self.split("/list.m3u8", 0)
        self.assertEqual(self.read("out/list_PID_257.out.adts"), b"whole")

    def test_answer_that_is_no_http_is_a_failed_download(self):
        for answer in [b"", b"\0" * 4000, b"HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\nabc",
                       b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\nabc"]:
            with self.subTest(answer[:60]):
                self.server.answers["/bad.m3u8"] = lambda c, a=answer: c.sendall(a)
                result = self.split("/bad.m3u8", 1)
                self.assertIn("WARNING: Fail to download file: ", result.out)
                self.assertEqual(result.err, "ERROR: Fail to fetch: %s\n" % self.server.url("/bad.m3u8"))

    def test_stalled_segment_that_then_ends_leaves_the_other_streams_whole(self):
        text = "#EXTM3U\n"
        for name in ["slow", "fast"]:
            self.put("/%s.m3u8" % name, [name + ".ts"])
            text += '#EXT-X-STREAM-INF:BANDWIDTH=1,FRAME-RATE=25,CODECS="mp4a.40.2"\n%s.m3u8\n' % name
        self.server.answers["/master.m3u8"] = text.encode()
        self.server.answers["/fast.ts"] = ts([b"fast"])
        content = ts([b"slow"])

        def stall(connection):
            connection.sendall(self.server.head(len(content)) + content[:200])
            time.sleep(0.5)

        self.server.answers["/slow.ts"] = stall
        result = self.split("/master.m3u8", 1)
        self.assertIn("Fail to get segment: " + self.server.url("/slow.ts"), result.err)
        self.assertEqual([self.read("out", name) for name in self.files("out")], [b"fast"])


class EndlessServerTest(ServerFaultTest):
    """More is sent than any playlist has; disk and memory of the run stay bounded."""

    MOST = 64 * MEGABYTE

    def endless(self, told):
        self.sent = 0

        def answer(connection):
            connection.sendall(self.server.head(told) + b"#EXTM3U\n")
            while self.sent < 10_000_000_000:
                connection.sendall(b"#EXT-X-NOTHING\n" * 70000)
                self.sent += 15 * 70000
        return answer

    def expect_end(self, path):
        def limits():
            # Neither more memory nor larger files than this would be needed.
            resource.setrlimit(resource.RLIMIT_FSIZE, (2 * self.MOST, 2 * self.MOST))
            if not SANITIZED:
                resource.setrlimit(resource.RLIMIT_DATA, (512 * MEGABYTE, 512 * MEGABYTE))

        result = self.run_program("-i", self.server.url(path), "-o", "out", preexec_fn=limits)
        self.expect(result, 1)
        self.assertIn("CURL error code: 23", result.out)
        self.assertIn("Fail to fetch: " + self.server.url(path), result.err)
        self.assertLess(self.sent, 2 * self.MOST)
        self.assertEqual(self.files("tmp"), [])

    def test_playlist(self):
        self.server.answers["/list.m3u8"] = self.endless(10_000_000_000)
        self.expect_end("/list.m3u8")

    def test_playlist_of_no_told_length(self):
        self.server.answers["/list.m3u8"] = self.endless(None)
        self.expect_end("/list.m3u8")

    def test_manifest(self):
        self.server.answers["/manifest.mpd"] = self.endless(None)
        self.expect_end("/manifest.mpd")

    def test_playlist_of_one_stream_leaves_the_others_whole(self):
        self.server.answers["/master.m3u8"] = b"".join(
            b'#EXT-X-STREAM-INF:BANDWIDTH=1,FRAME-RATE=25,CODECS="mp4a.40.2"\n%s.m3u8\n' % name
            for name in [b"endless", b"good"])
        self.server.answers["/endless.m3u8"] = self.endless(None)
        self.put("/good.m3u8", ["good.ts"])
        result = self.split("/master.m3u8", 1)
        self.assertIn("Fail to fetch: " + self.server.url("/endless.m3u8"), result.err)
        self.assertEqual([self.read("out", name) for name in self.files("out")], [b"good"])


class SignalTest(ServerFaultTest):
    """A run that is told to end does so by that signal and takes its fetched files along."""

    def end_by(self, which, path):
        process = self.start(path)
        self.assertTrue(self.server.waiting.wait(30))
        deadline = time.monotonic() + 30
        while not self.files("tmp") and time.monotonic() < deadline:
            time.sleep(0.01)
        self.assertNotEqual(self.files("tmp"), [])
        process.send_signal(which)
        out, err = process.communicate(timeout=30)
        self.assertEqual(process.returncode, -which, err)
        self.assertEqual(self.files("tmp"), [])
        return out.decode()

    def test_manifest_under_way(self):
        for which in [signal.SIGINT, signal.SIGTERM, signal.SIGHUP]:
            self.server.waiting.clear()
            self.server.answers["/list.m3u8"] = self.server.hold(b"#EXTM3U\n", 100)
            self.end_by(which, "/list.m3u8")

    def test_segment_under_way(self):
        self.server.answers["/slow.ts"] = self.server.hold(ts([b"slow"]), 10000)
        self.put("/list.m3u8", ["good.ts", "slow.ts"])
        self.end_by(signal.SIGTERM, "/list.m3u8")

    def test_many_streams_under_way(self):
        text = "#EXTM3U\n"
        for i in range(20):
            self.put("/s%d.m3u8" % i, ["good.ts", "slow.ts"])
            text += '#EXT-X-STREAM-INF:BANDWIDTH=%d,FRAME-RATE=25,CODECS="mp4a.40.2"\ns%d.m3u8\n' % (i + 1, i)
        self.server.answers["/master.m3u8"] = text.encode()
        self.server.answers["/slow.ts"] = self.server.hold(b"G", 1000)
        self.end_by(signal.SIGINT, "/master.m3u8")

    def test_ignored_signal_stays_ignored(self):
        self.server.answers["/list.m3u8"] = self.server.hold(b"#EXTM3U\n", 100)
        process = subprocess.Popen([MEDIASPLIT, "-i", self.server.url("/list.m3u8"), "-o", "out"], cwd=self.folder,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        self.addCleanup(process.kill)
        self.assertTrue(self.server.waiting.wait(30))
        process.send_signal(signal.SIGHUP)
        time.sleep(0.1)
        self.assertIsNone(process.poll())
        self.server.release.set()
        process.communicate(timeout=30)
        self.assertEqual(process.returncode, 1)  # the playlist ended early

    def test_readers_of_both_outputs_that_went_away_dont_end_the_run(self):
        self.put("/list.m3u8", ["good.ts", "good.ts"])
        process = self.start("/list.m3u8")
        process.stdout.close()
        process.stderr.close()
        self.assertEqual(process.wait(timeout=30), 0)
        self.assertEqual(self.read("out/list_PID_257.out.adts"), b"goodgood")


class ManyStreamsTest(ServerFaultTest):
    def put_streams(self, count):
        text = "#EXTM3U\n"
        for i in range(count):
            self.put("/s%d.m3u8" % i, ["%d_%d.ts" % (i, n) for n in range(2)])
            for n in range(2):
                self.server.answers["/%d_%d.ts" % (i, n)] = ts([b"stream %d segment %d." % (i, n)])
            text += '#EXT-X-STREAM-INF:BANDWIDTH=%d,FRAME-RATE=25,CODECS="mp4a.40.2"\ns%d.m3u8\n' % (i + 1, i)
        self.server.answers["/master.m3u8"] = text.encode()

    def whole(self, i):
        return b"stream %d segment 0.stream %d segment 1." % (i, i)

    def name(self, i):
        return "s%d_PID_257_Bitrate_%dbps.out.adts" % (i, i + 1)

    def test_500_streams_at_once(self):
        self.put_streams(500)
        self.split("/master.m3u8", 0)
        self.assertEqual({name: self.read("out", name) for name in self.files("out")},
                         {self.name(i): self.whole(i) for i in range(500)})

    def test_500_streams_with_a_low_limit_that_may_be_raised(self):
        self.put_streams(500)
        hard = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
        if 0 <= hard < 4096:
            self.skipTest("this machine allows %d open files" % hard)
        result = self.run_program("-i", self.server.url("/master.m3u8"), "-o", "out",
                                  preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (64, hard)))
        self.expect(result, 0, err="")
        self.assertEqual(len(self.files("out")), 500)

    def test_500_representations_at_once(self):
        names = ["r%d" % i for i in range(500)]
        text = '<MPD><Period duration="PT4S"><AdaptationSet mimeType="video/mp4">'
        for name in names:
            text += ('<Representation id="%s" bandwidth="1"><SegmentTemplate initialization="%s_i.mp4" '
                     'media="%s_$Number$.m4s" duration="2"/></Representation>' % (name, name, name))
            self.server.answers["/%s_i.mp4" % name] = initialization()
            for n in 1, 2:
                self.server.answers["/%s_%d.m4s" % (name, n)] = segment(b"%s %d." % (name.encode(), n))
        self.server.answers["/stream.mpd"] = (text + "</AdaptationSet></Period></MPD>").encode()
        self.split("/stream.mpd", 0)
        self.assertEqual(sorted(self.read("out", name) for name in self.files("out")),
                         sorted(b"%s 1.%s 2." % (name.encode(), name.encode()) for name in names))

    def test_limit_of_64_open_files(self):
        count = 200
        self.put_streams(count)

        def release_together(content, gate=threading.Barrier(20)):
            def answer(connection):
                try:
                    gate.wait(1)  # many streams hold their files at the same time
                except threading.BrokenBarrierError:
                    pass
                connection.sendall(self.server.head(len(content)) + content)
            return answer

        for i in range(count):
            self.server.answers["/%d_1.ts" % i] = release_together(ts([b"stream %d segment 1." % i]))
        result = self.run_program("-i", self.server.url("/master.m3u8"), "-o", "out",
                                  preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (64, 64)))
        self.expect(result, 1)
        self.assertEqual(result.last_line, "Failed to demultiplex " + self.server.url("/master.m3u8"))
        whole = [i for i in range(count) if self.name(i) in self.files("out")
                 and self.read("out", self.name(i)) == self.whole(i)]
        self.assertGreater(len(whole), 0)
        # Every stream that isn't whole is told of.
        told = result.err.count("ERROR: ")
        self.assertGreaterEqual(told, count - len(whole), result.err)
        # A stream that couldn't open its file for one segment goes on with the next; none holds anything else.
        for name in self.files("out"):
            pieces = [b"stream %s segment %d." % (name[1:].split("_")[0].encode(), n) for n in range(2)]
            self.assertIn(self.read("out", name), [b"", pieces[0], pieces[1], pieces[0] + pieces[1]])
        self.assertEqual(self.files("tmp"), [])


if __name__ == "__main__":
    unittest.main()
