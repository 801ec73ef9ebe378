"""Whole runs: folders, kinds of input, the closing line, streams that can't be written."""

import os
import resource
import unittest

from program import CLIP, SANITIZED, ProgramTest


def error(text):
    return "ERROR: %s\n" % text


class OutputFolderTest(ProgramTest):
    def expect_no_folder(self, folder):
        result = self.run_program("-i", "a.mp4", "-o", folder)
        self.expect(result, 1, out="", err=error(
            "Fail to create the output elementary stream folder: %s" % folder))

    def test_folder_is_made(self):
        self.run_program("-i", "a.mp4", "-o", "out")
        self.assertTrue(os.path.isdir(self.path("out")))

    def test_existing_folder_is_used_as_it_stands(self):
        os.mkdir(self.path("out"))
        self.write("out/kept", b"kept")
        result = self.run_program("-i", CLIP, "-o", "out")
        self.expect(result, 0, err="")
        self.assertIn("kept", self.files("out"))

    def test_folder_without_its_parents_fails(self):
        self.expect_no_folder("a/b/c")
        self.expect_no_folder("/proc/none")
        self.assertEqual(self.files("."), [])

    def test_empty_folder_name_fails(self):
        self.expect_no_folder("")

    def test_file_in_place_of_the_folder_fails(self):
        self.write("out")
        self.expect_no_folder("out")

    def test_stream_that_cannot_be_opened_fails_the_run(self):
        self.run_program("-i", CLIP, "-o", "out")
        names = self.files("out")
        for name in names:
            os.remove(self.path("out", name))
            os.mkdir(self.path("out", name))
        result = self.run_program("-i", CLIP, "-o", "out")
        self.assertEqual(result.status, 1)
        self.assertEqual(result.last_line, "Failed to demultiplex %s" % CLIP)
        for name in names:
            self.assertIn(name, result.err)

    @unittest.skipIf(SANITIZED, "takes much memory of its own")
    def test_want_of_memory_is_told_and_fails_the_run(self):
        def limit_memory():
            resource.setrlimit(resource.RLIMIT_DATA, (64 << 20, 64 << 20))

        self.write("list.m3u8", b"#EXTINF:1,\nsegment.ts\n" * 1000000)
        result = self.run_program("-i", "list.m3u8", "-o", "out", preexec_fn=limit_memory)
        self.assertEqual(result.status, 1)
        self.assertEqual(result.err, "mediasplit: out of memory\n")

    def test_stream_that_cannot_be_written_in_full_fails_the_run_without_a_signal(self):
        def limit_file_size():
            resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096))

        result = self.run_program("-i", CLIP, "-o", "out", preexec_fn=limit_file_size)
        self.assertEqual(result.status, 1)
        self.assertEqual(result.last_line, "Failed to demultiplex %s" % CLIP)

    def test_full_device_fails_the_run(self):
        self.run_program("-i", CLIP, "-o", "out")
        for name in self.files("out"):
            os.remove(self.path("out", name))
            os.symlink("/dev/full", self.path("out", name))
        result = self.run_program("-i", CLIP, "-o", "out")
        self.assertEqual(result.status, 1)
        self.assertEqual(result.last_line, "Failed to demultiplex %s" % CLIP)


class AddressTest(ProgramTest):
    def test_address_makes_the_folder_for_downloads(self):
        result = self.run_program("-i", "http://127.0.0.1:1/a.mp4", "-o", "out")
        self.assertEqual(result.status, 1)
        self.assertEqual(result.err,
                         error("Fail to open the file : http://127.0.0.1:1/a.mp4"))
        self.assertTrue(result.out.startswith(
            "WARNING: Fail to download file: http://127.0.0.1:1/a.mp4 on GMT: "), result.out)
        self.assertEqual(result.last_line, "Failed to demultiplex http://127.0.0.1:1/a.mp4")
        self.assertEqual(self.files("tmp"), [])

    def test_folder_for_downloads_that_cannot_be_made_ends_the_run_first(self):
        result = self.run_program("-i", "https://127.0.0.1:1/a.mp4", cwd="/proc")
        self.expect(result, 1, out="",
                    err=error("Fail to create tmp folder to store downloaded files."))

    def test_local_input_makes_no_folder_for_downloads(self):
        self.run_program("-i", "a.mp4", "-o", "out")
        self.assertEqual(self.files("."), ["out"])

    def test_address_with_a_query_has_no_known_format(self):
        result = self.run_program("-i", "http://127.0.0.1:1/a.m3u8?a=b", "-o", "out")
        self.expect(result, 1, err=error("The input file format is unsupported."),
                    out="Failed to demultiplex http://127.0.0.1:1/a.m3u8?a=b\n")

    def test_series_of_addresses_has_no_first_file(self):
        name = "http://127.0.0.1:1/a_%d.ts"
        result = self.run_program("-i", name, "-o", "out")
        self.expect(result, 1, out="Failed to demultiplex %s\n" % name, err=error(
            "Fail to fetch the TS file based on the TS file template : %s" % name))


class InputTest(ProgramTest):
    def test_folder_as_input_fails_the_run(self):
        os.mkdir(self.path("film.mp4"))
        result = self.run_program("-i", "film.mp4", "-o", "out")
        self.expect(result, 1, out="Failed to demultiplex film.mp4\n",
                    err=error("Fail to open the file : film.mp4"))

    def test_folder_as_playlist_or_manifest_fails_the_run(self):
        for name in "list.m3u8", "stream.mpd":
            with self.subTest(name):
                os.mkdir(self.path(name))
                result = self.run_program("-i", name, "-o", "out")
                self.expect(result, 1, out="Failed to demultiplex %s\n" % name,
                            err=error("Fail to open the file : %s" % name))

    def test_mp4_succeeds_and_tells_so_last(self):
        result = self.run_program("-i", CLIP, "-o", "out")
        self.expect(result, 0, err="")
        self.assertEqual(result.last_line, "Succeed to demultiplex %s" % CLIP)
        sizes = {os.path.splitext(name)[1]: os.path.getsize(self.path("out", name))
                 for name in self.files("out")}
        self.assertEqual(sorted(sizes), [".264", ".aac"])
        self.assertTrue(all(sizes.values()), sizes)

    def test_start_index_leaves_an_mp4_run_a_success(self):
        result = self.run_program("-s", "2", "-i", CLIP, "-o", "out")
        self.expect(result, 0, err="")
        self.assertTrue(result.out.startswith("WARNING: "))

    def test_second_run_into_the_same_folder_leaves_the_same_streams(self):
        self.run_program("-i", CLIP, "-o", "out")
        first = {name: self.read("out", name) for name in self.files("out")}
        self.run_program("-i", CLIP, "-o", "out")
        second = {name: self.read("out", name) for name in self.files("out")}
        self.assertEqual(first.keys(), second.keys())
        self.assertTrue(first == second)

    def test_extensions_of_mp4_are_read_as_mp4(self):
        for extension in ["mp4", "m4i", "m4s", "m4v", "m4a", "m4p", "m4r", "cmfa", "cmfv", "mov",
                          "MOV"]:
            with self.subTest(extension):
                name = "clip." + extension
                self.put_clip(name)
                result = self.run_program("-i", name, "-o", "out")
                self.expect(result, 0, err="")
                self.assertEqual(result.last_line, "Succeed to demultiplex " + name)

    def test_unknown_extensions_are_unsupported(self):
        for name in ["clip.MP4", "clip.Mov", "clip", "clip.mp4x", "a.b/clip"]:
            with self.subTest(name):
                result = self.run_program("-i", name, "-o", "out")
                self.expect(result, 1, out="Failed to demultiplex %s\n" % name,
                            err=error("The input file format is unsupported."))

    def test_missing_inputs_are_named(self):
        for name in ["no.mp4", "no.ts", "no.trp", "no.ec3", "no.ac4"]:
            with self.subTest(name):
                result = self.run_program("-i", name, "-o", "out")
                self.expect(result, 1, out="Failed to demultiplex %s\n" % name,
                            err=error("Fail to open the file : %s" % name))

    def test_series_without_its_first_file_is_named(self):
        self.write("a_1.ts")
        for name in ["a_%d.ts", "a_%04d.ts"]:
            with self.subTest(name):
                result = self.run_program("-i", name, "-o", "out")
                self.expect(result, 1, out="Failed to demultiplex %s\n" % name, err=error(
                    "Fail to fetch the TS file based on the TS file template : %s" % name))

    def test_percent_signs_of_a_name_are_safe(self):
        name = "%s%n%x.mp4"
        result = self.run_program("-i", name, "-o", "out")
        self.expect(result, 1, out="Failed to demultiplex %s\n" % name,
                    err=error("Fail to open the file : %s" % name))

    def test_inputs_without_content_end_by_themselves(self):
        self.write("empty.mp4")
        os.mkdir(self.path("folder.mp4"))
        for name in ["empty.mp4", "folder.mp4", "/dev/null/a.mp4"]:
            with self.subTest(name):
                result = self.run_program("-i", name, "-o", "out")
                self.assertIn(result.status, [0, 1])
                self.assertRegex(result.last_line, "^(Succeed|Failed) to demultiplex " + name)
        self.assertEqual(self.files("out"), [])

    def test_name_longer_than_any_file_name_is_reported_in_a_cut_line(self):
        name = "x" * 5000 + ".mp4"
        result = self.run_program("-i", name, "-o", "out")
        self.assertEqual(result.status, 1)
        self.assertEqual(result.err, "ERROR: Fail to open the file : ".ljust(2046, "x") + "\n")
        self.assertEqual(result.out, "Failed to demultiplex ".ljust(2046, "x") + "\n")

    def test_track_id_that_is_no_id_is_reported_and_the_run_goes_on(self):
        report = error('The command "--track-id" must be followed with a not-zero integer.')
        for value in ["0", "-2", "x"]:
            with self.subTest(value):
                result = self.run_program("--track-id", value, "-i", CLIP, "-o", "out")
                self.assertTrue(result.err.startswith(report), result.err)
                self.assertRegex(result.last_line, "^(Succeed|Failed) to demultiplex ")
                # The report itself doesn't fail the run.
                self.assertEqual(result.status, 0 if result.err == report else 1)

    def test_track_id_selects_one_track(self):
        result = self.run_program("--track-id", "1", "-i", CLIP, "-o", "out")
        self.expect(result, 0, err="")
        self.assertEqual(len(self.files("out")), 1)

    def test_track_id_that_does_not_exist_fails(self):
        result = self.run_program("--track-id", "99", "-i", CLIP, "-o", "out")
        self.expect(result, 1, err=error(
            'The track_id (99) specified by "--track-id" does not exist.'))
        self.assertEqual(result.last_line, "Failed to demultiplex %s" % CLIP)

    def test_reader_that_went_away_ends_the_run_without_a_signal(self):
        reader, writer = os.pipe()
        os.close(reader)
        result = self.run_program("-i", CLIP, "-o", "out", stdout=writer)
        os.close(writer)
        self.expect(result, 0, err="")
        self.assertEqual(len(self.files("out")), 2)


if __name__ == "__main__":
    unittest.main()
