"""Every option, every exit status, both streams."""

import os
import re
import unittest

from program import ProgramTest

VERSION = re.compile(
    r"\A\*\*\* Media Split Tool \*\*\*\n"
    r"\*\*\* Version 2\.0\.0\.None \*\*\*\n"
    r"\*\*\* Built on \d\d:\d\d:\d\d [A-Z][a-z][a-z] [ 1-3]\d \d{4} \*\*\*\n")

USAGE_BEFORE_EXAMPLES = """
The media split tool can demux specified manifest files (DASH, HLS) and media files (MP4/fMP4, MPEG-2 TS).
This tool supports local input files only and common encryption files with clear key pairs.

Supported formats:
   - HLS version 3 and later
   - MPEG-DASH Live, On-demand, ATSC 3.0 profile
       For Live profile supports SegmentList, SegmentTemplate
       For Live profile supports static/dynamic type manifest
   - MP4/fMP4
   - MPEG-2 TS
   - OAP/AC4 Elemental stream

Supported codecs:
   - Orvel Audio Plus
   - Orvel AC-4
   - Orvel Prisma

Usage:
   mediasplit -i <local_input_filename> -o <output_directory> [--decryption-keys <key_ID1:key1, key_ID2:key2....>] [--track-id <track_id>] [--pid <pid>] [--px-old-signaling] [--live-duration <live_duration:seconds>]

Options:
   -h      Displays help information.
   -i      Specifies the input file. Supported input file types are playlist file (HLS), manifest file (DASH), MPEG-2 TS, MP4, and Fragmented MP4 files.
   -o      Sets the output folder path.
   -s      Specifies the beginning index segment of MPEG-2 TS sequence, default is 0.
   -v      Prints version information.
   --decryption-keys A comma-separated list of key_ID:key pairs, each represented as 32 hex digits.
   --track-id Demultiplex a specified track from MP4/fMP4. (Serve for MP4/fMP4 only, not for MPEG2-TS, DASH, HLS)
   --pid      Demultiplex a specified substream with pid from MPEG2-TS. (Serve for MPEG2-TS only, not for MP4/fMP4, DASH, HLS)
   --live-duration Specifies the duration to be tested in the live stream (unit: seconds), default is 10.0s.

Examples:
"""

EXAMPLES = [
    "mediasplit -i input.m3u8 -o tmp",
    "mediasplit -i input_%d.ts -o tmp",
    "mediasplit -i input_%d.ts -s 2 -o tmp",
    "mediasplit -i input_%0[x]d.ts -o tmp",
    "mediasplit -i input_%04d.ts -o tmp",
    "mediasplit -i ChID_voices_51_256_oap.mpd -o tmp",
    "mediasplit -i ChID_voices_51_256_oap.mp4 -o tmp",
    "mediasplit -i ChID_voices_51_256_oap.mp4 -o tmp --track-id 1",
    "mediasplit -i ChID_voices_51_256_oap.ts -o tmp --pid 100",
]

START_INDEX_WARNING = ('WARNING: The command "-s start number" is only used when the input is a '
                       "series of TS files. \n")


def error(text):
    return "ERROR: %s\n" % text


class CommandLineTest(ProgramTest):
    def assert_usage(self, text):
        version = VERSION.match(text)
        self.assertIsNotNone(version, text)
        usage = text[version.end():]
        self.assertEqual(usage[:len(USAGE_BEFORE_EXAMPLES)], USAGE_BEFORE_EXAMPLES)
        examples = usage[len(USAGE_BEFORE_EXAMPLES):].rstrip("\n").split("\n\n")
        self.assertEqual(len(examples), len(EXAMPLES))
        for example, command in zip(examples, EXAMPLES):
            prose, line = example.split("\n")
            self.assertRegex(prose, r"\A    - \S")
            self.assertEqual(line, "        " + command)

    def assert_version_only(self, text):
        version = VERSION.match(text)
        self.assertIsNotNone(version, text)
        self.assertEqual(text[version.end():], "")

    def assert_usage_error(self, words, err):
        result = self.run_program(*words)
        self.expect(result, 1, err=err)
        self.assert_usage(result.out)

    def test_no_arguments_show_the_usage_and_succeed(self):
        result = self.run_program()
        self.expect(result, 0, err="")
        self.assert_usage(result.out)

    def test_help_shows_version_and_usage(self):
        result = self.run_program("-h")
        self.expect(result, 0, err="")
        self.assert_usage(result.out)

    def test_version_shows_the_version_lines_only(self):
        result = self.run_program("-v")
        self.expect(result, 0, err="")
        self.assert_version_only(result.out)

    def test_version_behind_an_input_runs_without_a_known_format(self):
        result = self.run_program("-i", "a.mp4", "-o", "out", "-v")
        self.expect(result, 1, err=error("The input file format is unsupported."))
        version = VERSION.match(result.out)
        self.assertEqual(result.out[version.end():], "Failed to demultiplex a.mp4\n")

    def test_version_wins_over_earlier_errors_and_later_words(self):
        result = self.run_program("-s", "x", "-v", "foo")
        self.expect(result, 0,
                    err=error('The command "-s" must be followed with an unsigned integer.'))
        self.assert_version_only(result.out)

    def test_input_alone_needs_an_output(self):
        self.expect(self.run_program("-i", "a.mp4"), 1, out="",
                    err=error('The command "-o" is required.'))

    def test_output_alone_needs_an_input(self):
        self.assert_usage_error(["-o", "out"], error('The command "-i" is required.'))
        self.assertFalse(os.path.exists(self.path("out")))

    def test_unknown_words_are_named(self):
        for word in ["foo", "--px-old-signaling", "--broadcast-profile", "-", "-x", "--help"]:
            with self.subTest(word):
                self.assert_usage_error([word], error('The command "%s" is unsupported.' % word))

    def test_percent_signs_of_an_unknown_word_are_safe(self):
        self.assert_usage_error(["%s%n%d"], error('The command "%s%n%d" is unsupported.'))
        self.assert_usage_error(["100%%"], error('The command "100%" is unsupported.'))

    def test_long_words_are_cut_within_the_line(self):
        result = self.run_program("x" * 100000)
        self.assertEqual(result.status, 1)
        self.assertEqual(len(result.err), 2047)
        self.assertTrue(result.err.startswith('ERROR: The command "xxx'))
        self.assertTrue(result.err.endswith('x" is unsupported.\n'))

    def test_start_index_needs_a_number(self):
        self.assert_usage_error(["-i", "a_%d.ts", "-o", "out", "-s"], error(
            'The command "-s" needs an argument to indicate the start number.'))
        bad = error('The command "-s" must be followed with an unsigned integer.')
        self.assert_usage_error(["-s", "1x", "-i", "a_%d.ts", "-o", "out"], bad)
        self.assert_usage_error(["-s", "-1.", "-i", "a_%d.ts", "-o", "out"], bad * 2)

    def test_live_duration_needs_a_number(self):
        self.assert_usage_error(["-i", "a.m3u8", "-o", "out", "--live-duration"], error(
            'The command "--live-duration" needs an argument to indicate the tested duration in '
            "the live stream."))
        bad = error('The command "--live-duration" must be followed with a number.')
        self.assert_usage_error(["--live-duration", "1.2.3", "-i", "a.m3u8", "-o", "out"], bad * 2)
        self.assert_usage_error(["--live-duration", "5s", "-i", "a.m3u8", "-o", "out"], bad)

    def test_start_index_is_idle_for_a_single_ts_file(self):
        result = self.run_program("-s", "2", "-i", "a.ts", "-o", "out")
        self.expect(result, 1, out="Failed to demultiplex a.ts\n",
                    err=error("Fail to open the file : a.ts"))

    def test_start_index_is_warned_of_and_the_run_goes_on(self):
        result = self.run_program("-s", "2", "-i", "a.mp4", "-o", "out")
        self.expect(result, 1, out=START_INDEX_WARNING + "Failed to demultiplex a.mp4\n",
                    err=error("Fail to open the file : a.mp4"))
        for name in ["a.m3u8", "a.mpd"]:
            result = self.run_program("-s", "2", "-i", name, "-o", "out")
            self.assertTrue(result.out.startswith(START_INDEX_WARNING))

    def test_track_id_is_for_mp4_only(self):
        warning = ('WARNING: The command "--track-id id" is only used when the input is an '
                   "MP4/ISO. \n")
        result = self.run_program("--track-id", "1", "-i", "a.ts", "-o", "out")
        self.expect(result, 1, out=warning + "Failed to demultiplex a.ts\n")
        result = self.run_program("--track-id", "1", "-i", "a.mp4", "-o", "out")
        self.expect(result, 1, out="Failed to demultiplex a.mp4\n")

    def test_pid_is_for_ts_only(self):
        warning = 'WARNING: The command "--pid id" is only used when the input is a TS file.\n'
        result = self.run_program("--pid", "256", "-i", "a.mp4", "-o", "out")
        self.expect(result, 1, out=warning + "Failed to demultiplex a.mp4\n")
        for name in ["a.ts", "a_%d.ts"]:
            result = self.run_program("--pid", "256", "-i", name, "-o", "out")
            self.expect(result, 1, out="Failed to demultiplex %s\n" % name)

    def test_both_selections_are_warned_of_in_their_order(self):
        result = self.run_program("--pid", "1", "--track-id", "0", "-i", "a.xyz", "-o", "out")
        self.expect(result, 1, err=error('The command "--track-id" must be followed with a '
                                         "not-zero integer.") +
                    error("The input file format is unsupported."))
        self.assertEqual([line.split('"')[1] for line in result.out.splitlines()[:2]],
                         ["--track-id id", "--pid id"])

    def test_last_words_without_value_are_not_given(self):
        for word in ["--track-id", "--pid", "--decryption-keys"]:
            with self.subTest(word):
                result = self.run_program("-i", "a.mp4", "-o", "out", word)
                self.expect(result, 1, out="Failed to demultiplex a.mp4\n",
                            err=error("Fail to open the file : a.mp4"))
        self.expect(self.run_program("-i", "a.mp4", "-o"), 1, out="",
                    err=error('The command "-o" is required.'))
        self.assert_usage_error(["-o", "out", "-i"], error('The command "-i" is required.'))

    def test_values_are_taken_unexamined(self):
        result = self.run_program("-i", "-o", "-o", "out")
        self.expect(result, 1, out="Failed to demultiplex -o\n",
                    err=error("The input file format is unsupported."))
        self.assertEqual(self.files("."), ["out"])


if __name__ == "__main__":
    unittest.main()
