"""mediasplit-report: what mediasplit does, and a report of what was found on the way."""

import os
import pty
import shutil
import subprocess
import threading
import unittest
import xml.etree.ElementTree

from hls_test import MASTER, ts
from program import CLIP
from report_program import MEDIASPLIT_REPORT, ReportTest, read_report

# A rendition without NAME breaks 4047.
NAMELESS = MASTER.replace(',NAME="n"', "")


class InputTest(ReportTest):
    def setUp(self):
        super().setUp()
        for name in ["audio", "low", "high"]:
            self.write(name + "_0.ts", ts(name.encode()))
            self.put(name + ".m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:2\n#EXTINF:2,\n%s_0.ts\n#EXT-X-ENDLIST\n" % name)
        self.put("master.m3u8", MASTER)
        self.put("nameless.m3u8", NAMELESS)

    def put(self, name, text):
        self.write(name, text.encode())


class SameRunTest(InputTest):
    """What mediasplit takes has the same meaning, output and exit status."""

    CASES = [
        ["-i", CLIP, "-o", "out"],
        ["-i", CLIP, "-o", "out", "--track-id", "1"],
        ["-i", CLIP, "-o", "out", "--track-id", "99"],
        ["-i", CLIP, "-o", "out", "--track-id", "0"],
        ["-i", CLIP, "-o", "out", "--pid", "5"],
        ["-i", "master.m3u8", "-o", "out"],
        ["-i", "nameless.m3u8", "-o", "out"],
        ["-i", "low.m3u8", "-o", "out"],
        ["-i", "low_0.ts", "-o", "out"],
        ["-i", "low_%d.ts", "-o", "out", "-s", "0"],
        ["-i", "low_%d.ts", "-o", "out", "-s", "7"],
        ["-i", "missing.mp4", "-o", "out"],
        ["-i", "missing.mpd", "-o", "out"],
        ["-i", "%s%n.mp4", "-o", "out"],
        ["-i", "clip.xyz", "-o", "out"],
        ["-i", CLIP, "-o", "no/such/folder"],
        ["-i", CLIP],
        ["-o", "out"],
        ["-i", CLIP, "-o"],
        ["-s", "1x", "-i", "a.ts", "-o", "out"],
        ["--live-duration", "1.2.3", "-i", "a.m3u8", "-o", "out"],
        ["--px-old-signaling"],
        ["foo", "-i", CLIP],
        ["-i", CLIP, "-o", "out", "-v"],
        ["-v"],
        ["-s", "x", "-v", "foo"],
    ]

    def outputs(self):
        if not os.path.isdir(self.path("out")):
            return None
        return {name: self.read("out", name) for name in self.files("out")}

    def test_streams_outputs_and_status_are_those_of_mediasplit(self):
        for words in self.CASES:
            with self.subTest(" ".join(words)):
                shutil.rmtree(self.path("out"), True)
                expected = self.run_program(*words)
                expected_outputs = self.outputs()
                shutil.rmtree(self.path("out"), True)
                result = self.run_report("--report", "report.json", *words)
                self.expect(result, expected.status, expected.out, expected.err)
                self.assertEqual(self.outputs(), expected_outputs)

    def test_usage_is_followed_by_the_options_of_the_report(self):
        for words in [["-h"], []]:
            expected = self.run_program(*words)
            result = self.run_report(*words)
            self.expect(result, 0, err="")
            self.assertTrue(result.out.startswith(expected.out))
            self.assertIn("--report FILE", result.out[len(expected.out):])

    def test_help_and_version_do_nothing_else(self):
        for words in [["--help"], ["--version"], ["-i", CLIP, "-o", "out", "--report", "r", "--help"]]:
            result = self.run_report(*words)
            self.expect(result, 0, err="")
            self.assertIn("mediasplit-report", result.out)
        self.assertEqual(self.run_report("--version").out, "mediasplit-report 2.0.0\n")
        self.assertFalse(os.path.exists(self.path("out")) or os.path.exists(self.path("r")))


class ContentTest(InputTest):
    def test_clip_has_outputs_and_no_findings(self):
        report = self.report_of("-i", CLIP, "-o", "out")
        self.assertEqual((report["input"], report["result"]), (CLIP, "Succeed"))
        self.assertEqual(report["findings"], [])
        self.assertEqual(report["notes"], [])
        self.assertEqual(report["streams"], [{
            "stream": "", "counts": {"error": 0, "warning": 0, "info": 0},
            "outputs": [{"file": "out/" + name, "kind": kind, "bytes": len(self.read("out", name))}
                        for name, kind in [("clip_track_id_1.out.264", "264"), ("clip_track_id_2.out.aac", "aac")]]}])

    def test_broken_rule_is_found_with_all_there_is_to_know(self):
        report = self.report_of("-i", "nameless.m3u8", "-o", "out")
        self.assertEqual(report["result"], "Succeed")
        found = [finding for finding in report["findings"] if finding["id"] == 4047]
        self.assertEqual(found, [{
            "id": 4047, "level": "error", "checkpoint": 0, "family": "general", "layer": "HLS", "stream": "",
            "element": "", "attribute": "", "count": 1, "reference": "",
            "text": 'In HLS master-playlist, the #EXT-X-MEDIA parameter [index : 0] must include "NAME" attribute.'}])
        self.assertIn(4047, report["evaluated"])

    def test_rule_that_holds_is_evaluated_and_not_found(self):
        report = self.report_of("-i", "master.m3u8", "-o", "out")
        self.assertIn(4047, report["evaluated"])
        self.assertNotIn(4047, self.ids(report))
        self.assertNotIn(4303, report["evaluated"])

    def test_streams_of_a_playlist_stand_in_its_order(self):
        for _ in range(5):
            report = self.report_of("-i", "master.m3u8", "-o", "out")
            self.assertEqual([stream["stream"] for stream in report["streams"]],
                             ["", "audio.m3u8", "low.m3u8", "high.m3u8"])
            self.assertEqual([[output["kind"] for output in stream["outputs"]] for stream in report["streams"]],
                             [[], ["adts"], ["adts"], ["adts"]])

    def test_printed_errors_are_findings_too(self):
        report = self.report_of("-i", "missing.mp4", "-o", "out", status=1)
        self.assertEqual(report["result"], "Failed")
        self.assertEqual([(finding["id"], finding["text"]) for finding in report["findings"]],
                         [(4022, "Fail to open the file : missing.mp4")])

    def test_command_line_that_is_refused_is_a_failed_run(self):
        report = self.report_of("-o", "out", "foo", status=1)
        self.assertEqual((report["input"], report["result"], self.ids(report)), ("", "Failed", [4001]))

    def test_findings_belong_to_their_stream(self):
        os.remove(self.path("low_0.ts"))
        report = self.report_of("-i", "master.m3u8", "-o", "out", status=1)
        missing = [(finding["stream"], finding["text"]) for finding in report["findings"] if finding["id"] == 4063]
        self.assertEqual(missing, [("low.m3u8", "Fail to get segment: low_0.ts")])

    def test_empty_output_gets_a_note(self):
        self.write("idle.ts", ts(b"")[:2 * 188])
        report = self.report_of("-i", "idle.ts", "-o", "out")
        self.assertEqual([(note["text"], note["count"]) for note in report["notes"]], [
            ("Nothing was written to out/idle_PID_257.out.adts: its stream gave no data.", 1)])

    def test_dropped_table_gets_a_note(self):
        with open(CLIP, "rb") as file:
            clip = bytearray(file.read())
        at = clip.index(b"stts") + 8
        clip[at:at + 4] = b"\x01\0\0\0"
        self.write("huge.mp4", clip)
        report = self.report_of("-i", "huge.mp4", "-o", "out")
        self.assertIn({"stream": "", "text": "A sample table was dropped: it is larger than tables may be (2 MiB).",
                       "count": 1}, report["notes"])

    def test_bytes_that_are_not_utf8_are_written_as_numbers(self):
        name = b"\xff\xe4\xb8\n.mp4"
        result = self.run_report("-i", name, "-o", "out", "--report", "report.json")
        self.assertEqual(result.status, 1)
        report = read_report(self.read("report.json"))
        self.assertEqual(report["input"], "\\xFF\\xE4\\xB8\n.mp4")
        self.assertEqual(report["findings"][0]["text"], "Fail to open the file : \\xFF\\xE4\\xB8\n.mp4")

    def test_levels_leave_findings_out_and_counts_alone(self):
        os.remove(self.path("low_0.ts"))
        everything = self.report_of("-i", "nameless.m3u8", "-o", "out", status=1)
        errors = self.report_of("-i", "nameless.m3u8", "-o", "out", "--min-level", "error", status=1)
        self.assertEqual({finding["level"] for finding in errors["findings"]}, {"error"})
        self.assertLess(0, len(errors["findings"]))
        self.assertEqual([stream["counts"] for stream in errors["streams"]],
                         [stream["counts"] for stream in everything["streams"]])


class FormatTest(InputTest):
    def test_text_is_the_default_and_goes_to_standard_output(self):
        result = self.run_report("-i", "nameless.m3u8", "-o", "out")
        expected = self.run_program("-i", "nameless.m3u8", "-o", "out")
        self.expect(result, 0, err=expected.err + expected.out)
        lines = result.out.splitlines()
        self.assertEqual(lines[0], "nameless.m3u8")
        self.assertRegex(lines[1], r"^Succeed; \d+ errors?.*; \d+ rules tested$")
        self.assertIn("  Errors", lines)
        self.assertIn("    4047  In HLS master-playlist, the #EXT-X-MEDIA parameter [index : 0] must include "
                      '"NAME"', lines)
        self.assertNotIn("\033", result.out)

    def test_json_on_standard_output_stands_alone(self):
        result = self.run_report("-i", CLIP, "-o", "out", "--format", "json", "--report", "-")
        self.assertEqual(read_report(result.out)["input"], CLIP)
        expected = self.run_program("-i", CLIP, "-o", "out")
        self.assertEqual(result.err, expected.out)

    def test_junit_has_a_suite_for_each_stream_and_a_failure_for_each_finding(self):
        self.run_report("-i", "nameless.m3u8", "-o", "out", "--report", "report.xml")
        root = xml.etree.ElementTree.fromstring(self.read("report.xml"))
        suites = root.findall("testsuite")
        self.assertEqual([suite.get("name") for suite in suites],
                         ["Main stream", "audio.m3u8", "low.m3u8", "high.m3u8"])
        listed = self.report_of("-i", "nameless.m3u8", "-o", "out", "--min-level", "warning")["findings"]
        failures = root.findall("testsuite/testcase/failure")
        self.assertEqual(sorted(failure.get("message") for failure in failures),
                         sorted(finding["text"] for finding in listed))
        for node in [root, *suites]:
            self.assertEqual(int(node.get("tests")), len(node.findall(".//testcase")))
            self.assertEqual(int(node.get("failures")), len(node.findall(".//failure")))
            self.assertEqual(int(node.get("errors")), len(node.findall(".//error")))

    def test_junit_tells_a_failed_run(self):
        self.run_report("-i", "\x01<&>.mp4", "-o", "out", "--report", "report.xml")
        root = xml.etree.ElementTree.fromstring(self.read("report.xml"))
        self.assertEqual([error.get("message") for error in root.iter("error")],
                         ["Failed to demultiplex \\x01<&>.mp4"])

    def test_html_is_one_page(self):
        self.run_report("-i", "nameless.m3u8", "-o", "out", "--report", "report.html")
        page = self.read("report.html").decode()
        self.assertTrue(page.startswith("<!DOCTYPE html>"))
        self.assertIn("must include &quot;NAME&quot; attribute.", page)


class StatusTest(InputTest):
    def status(self, *words):
        return self.run_report("-o", "out", "--report", "report.json", *words).status

    def test_findings_count_only_when_asked_for(self):
        self.assertEqual(self.status("-i", "nameless.m3u8"), 0)
        self.assertEqual(self.status("-i", "nameless.m3u8", "--fail-on", "none"), 0)
        self.assertEqual(self.status("-i", "nameless.m3u8", "--fail-on", "error"), 2)
        self.assertEqual(self.status("-i", "nameless.m3u8", "--fail-on", "warning"), 2)
        self.assertEqual(self.status("-i", CLIP, "--fail-on", "warning"), 0)

    def test_warnings_are_no_errors(self):
        words = ["-i", CLIP, "-s", "1"]
        self.assertEqual(self.status(*words, "--fail-on", "error"), 0)
        self.assertEqual(self.status(*words, "--fail-on", "warning"), 2)

    def test_what_is_left_out_of_the_report_counts_all_the_same(self):
        self.assertEqual(self.status("-i", CLIP, "-s", "1", "--fail-on", "warning", "--min-level", "error"), 2)

    def test_failed_run_stays_a_failed_run(self):
        self.assertEqual(self.status("-i", "missing.mp4", "--fail-on", "error"), 1)


class ReportFileTest(InputTest):
    def assert_refused(self, result, reason):
        self.expect(result, 1, out="")
        self.assertRegex(result.err, r"\Amediasplit-report: can't write the report to .*" + reason)
        self.assertFalse(os.path.exists(self.path("out")))

    def test_path_that_cannot_be_written_ends_it_before_any_work(self):
        for path in ["no/such/report.json", ".", "", "low.m3u8/report.json"]:
            with self.subTest(path):
                self.assert_refused(self.run_report("-i", CLIP, "-o", "out", "--report", path), ": ")

    def test_input_is_not_overwritten(self):
        self.put_clip("clip.mp4")
        os.symlink("clip.mp4", self.path("link.json"))
        for path in ["clip.mp4", "./clip.mp4", "link.json"]:
            with self.subTest(path):
                self.assert_refused(self.run_report("-i", "clip.mp4", "-o", "out", "--report", path),
                                    "it is the input")
        with open(CLIP, "rb") as file:
            self.assertEqual(self.read("clip.mp4"), file.read())

    def test_file_of_a_series_is_not_overwritten(self):
        self.write("s1.ts", b"of the series")
        for path in ["s1.ts", "./s1.ts", "s02.ts"]:
            with self.subTest(path):
                self.assert_refused(self.run_report("-i", "s%d.ts", "-o", "out", "--report", path),
                                    "it is a file of the input")
        self.assertEqual(self.read("s1.ts"), b"of the series")
        self.assertFalse(os.path.exists(self.path("s02.ts")))
        self.run_report("-i", "s%d.ts", "-o", "out", "--report", "s.ts.json")
        self.assertTrue(self.read("s.ts.json"))

    def test_stream_is_not_overwritten(self):
        self.run_program("-i", CLIP, "-o", "out")
        name = os.path.join("out", self.files("out")[0])
        expected = self.read(name)
        result = self.run_report("-i", CLIP, "-o", "out", "--report", name)
        self.assertEqual(result.status, 1)
        self.assertIn("the run wrote a stream to it", result.err)
        self.assertEqual(self.read(name), expected)

    def test_report_may_lie_in_the_output_folder(self):
        for path in ["out/report.json", "./out//report.json"]:
            with self.subTest(path):
                shutil.rmtree(self.path("out"), True)
                result = self.run_report("-i", CLIP, "-o", "out", "--report", path)
                self.assertEqual(result.status, 0, result.err)
                read_report(self.read("out", "report.json"))

    def test_earlier_report_is_replaced(self):
        self.write("report.json", b"x" * 100000)
        self.report_of("-i", CLIP, "-o", "out")

    def test_report_that_cannot_be_finished_is_an_error(self):
        result = self.run_report("-i", CLIP, "-o", "out", "--report", "/dev/full")
        self.assertEqual(result.status, 1)
        self.assertIn("can't write the report to /dev/full", result.err)

    def test_reader_that_went_away_is_an_error_and_no_signal(self):
        reader, writer = os.pipe()
        os.close(reader)
        result = self.run_report("-i", CLIP, "-o", "out", stdout=writer)
        os.close(writer)
        self.assertEqual(result.status, 1)
        self.assertIn("can't write the report to -", result.err)

    def test_closed_standard_streams_take_nothing_into_files(self):
        command = [MEDIASPLIT_REPORT, "-i", CLIP, "-o", "out", "--report", "report.json"]
        subprocess.run(["sh", "-c", 'exec "$@" >&- 2>&- <&-', "sh", *command], cwd=self.folder, timeout=120, check=True)
        report = read_report(self.read("report.json"))
        for output in report["streams"][0]["outputs"]:
            self.assertNotIn(b"demultiplex", self.read(output["file"]))

    def test_mistakes_in_own_words_end_it_before_any_work(self):
        for words in [["--format", "pdf"], ["--fail-on", "x"], ["--min-level=x"], ["--quiet=x"], ["--report"]]:
            with self.subTest(words):
                result = self.run_report("-i", CLIP, "-o", "out", *words)
                self.expect(result, 1, out="")
                self.assertTrue(result.err.startswith("mediasplit-report: the option "))
                self.assertFalse(os.path.exists(self.path("out")))


class TerminalTest(InputTest):
    """Standard error is a terminal; a segment comes through a pipe that takes its time."""

    def run_at_terminal(self, *words, until=None, environment=None):
        """What a run shows. The segment comes once `until` is shown, or after the time that lines would take."""
        os.mkfifo(self.path("slow.ts"))
        self.put("slow.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:2\n#EXTINF:2,\nlow_0.ts\n#EXTINF:2,\nslow.ts\n"
                 "#EXT-X-ENDLIST\n")
        go_on, done = threading.Event(), threading.Event()

        def feed():
            go_on.wait(1.5 if until is None else 60)
            while not done.is_set():  # it may be opened more than once
                try:
                    with open(self.path("slow.ts"), "wb") as file:
                        file.write(ts(b"slow"))
                except OSError:
                    pass

        terminal, side = pty.openpty()
        feeder = threading.Thread(target=feed, daemon=True)
        feeder.start()
        process = subprocess.Popen([MEDIASPLIT_REPORT, "-i", "slow.m3u8", "-o", "out", "--report", "report.json", *words],
                                   cwd=self.folder, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=side,
                                   env={**os.environ, "TERM": "xterm", **(environment or {})})
        os.close(side)
        shown = b""
        try:
            while True:
                shown += os.read(terminal, 65536)
                if until is not None and until in shown:
                    go_on.set()
        except OSError:
            pass  # the other side is closed
        os.close(terminal)
        self.assertIn(process.wait(60), [0, 1])
        done.set()
        return shown.decode()

    def test_live_lines_show_how_far_it_is_and_go_away(self):
        shown = self.run_at_terminal(until=b" segment")
        self.assertRegex(shown, r"slow\.m3u8: 1 segment, \d+ bytes, \d+ findings?\r\n")
        self.assertLess(shown.rindex("\r\n", 0, shown.rindex(" segment") + 80), shown.rindex("\033[1A\r\033[J"))

    def test_quiet_shows_none(self):
        self.assertNotIn("segment", self.run_at_terminal("--quiet"))

    def test_terminal_that_cannot_move_shows_none(self):
        self.assertNotIn("segment", self.run_at_terminal(environment={"TERM": "dumb"}))


if __name__ == "__main__":
    unittest.main()
