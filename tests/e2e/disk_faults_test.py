"""What a run does when its disk fills up, its output folder goes away or its input shrinks."""

import os
import shutil
import subprocess
import unittest

from inputs import mp4, samples, ts
from program import MEDIASPLIT, ProgramTest
from raw_server import RawServer

MEGABYTE = 1 << 20


class DiskFaultTest(ProgramTest):
    def small_disk(self, name, size):
        """A file system of `size` bytes at `name`."""
        path = self.path(name)
        os.mkdir(path)
        if os.geteuid() != 0 or subprocess.run(
                ["mount", "-t", "tmpfs", "-o", "size=%d" % size, "tmpfs", path], capture_output=True).returncode != 0:
            self.skipTest("no right to mount a small disk")
        self.addCleanup(subprocess.run, ["umount", "-l", path], capture_output=True)
        return path

    def start(self, *words):
        process = subprocess.Popen([MEDIASPLIT, *words], cwd=self.folder, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, stdin=subprocess.DEVNULL)
        self.addCleanup(process.kill)
        return process

    def wait(self, process):
        out, err = process.communicate(timeout=60)
        return process.returncode, out.decode(), err.decode()


class FullDiskTest(DiskFaultTest):
    def test_mp4_fails_and_leaves_a_clean_beginning(self):
        first, second = samples(b"first", 40, MEGABYTE // 4), samples(b"second", 40, MEGABYTE // 4)
        self.write("film.mp4", mp4([first, second]))
        self.small_disk("out", 8 * MEGABYTE)
        result = self.run_program("-i", "film.mp4", "-o", "out")
        self.expect(result, 1)
        self.assertEqual(result.last_line, "Failed to demultiplex film.mp4")
        self.assertIn("fail to write data", result.err)
        written = sorted(self.read("out", name) for name in self.files("out"))
        for content, whole in zip(written, [b"".join(first), b"".join(second)]):
            self.assertLess(len(content), len(whole))
            self.assertTrue(whole.startswith(content))

    def test_only_the_stream_that_found_no_room_is_cut(self):
        small, large = samples(b"small", 40, 100), samples(b"large", 40, MEGABYTE // 4)
        self.write("film.mp4", mp4([small, large]))
        self.run_program("-i", "film.mp4", "-o", "out")
        names = {len(self.read("out", name)): name for name in self.files("out")}
        disk = self.small_disk("disk", 4 * MEGABYTE)
        name = names[10 * MEGABYTE]
        os.remove(self.path("out", name))
        os.symlink(os.path.join(disk, "large"), self.path("out", name))
        result = self.run_program("-i", "film.mp4", "-o", "out")
        self.expect(result, 1)
        self.assertEqual(self.read("out", names[4000]), b"".join(small))

    def test_one_message_a_stream_is_enough(self):
        self.write("film.mp4", mp4([samples(b"large", 400, MEGABYTE // 16)]))
        self.small_disk("out", 2 * MEGABYTE)
        result = self.run_program("-i", "film.mp4", "-o", "out")
        self.expect(result, 1)
        self.assertEqual(result.err.count("fail to write data"), 1, result.err)

    def test_transport_stream_fails(self):
        payloads = samples(b"audio", 200, 60000)
        self.write("film.ts", ts(payloads))
        self.small_disk("out", 8 * MEGABYTE)
        result = self.run_program("-i", "film.ts", "-o", "out")
        self.expect(result, 1)
        self.assertEqual(result.last_line, "Failed to demultiplex film.ts")
        self.assertNotEqual(result.err, "")
        self.assertTrue(b"".join(payloads).startswith(self.read("out", "film_PID_257.out.adts")))

    def test_stream_that_just_fits_is_whole(self):
        self.write("film.mp4", mp4([samples(b"a", 16, MEGABYTE // 4)]))
        self.small_disk("out", 5 * MEGABYTE)
        self.expect(self.run_program("-i", "film.mp4", "-o", "out"), 0, err="")
        self.assertEqual(os.path.getsize(self.path("out", self.files("out")[0])), 4 * MEGABYTE)

    def test_tail_that_finds_no_room_at_the_close_fails_the_run(self):
        # Less than the output buffer: nothing is written before the end.
        self.write("film.mp4", mp4([samples(b"a", 1, 20000)]))
        self.small_disk("out", 8192)
        result = self.run_program("-i", "film.mp4", "-o", "out")
        self.expect(result, 1)
        self.assertEqual(result.last_line, "Failed to demultiplex film.mp4")
        self.assertNotEqual(result.err, "")


class LostFolderTest(DiskFaultTest):
    def test_folder_removed_between_segments_fails_the_run(self):
        server = RawServer()
        self.addCleanup(server.close)

        def answer(connection):
            shutil.rmtree(self.path("out"))
            content = ts([b"second"])
            connection.sendall(server.head(len(content)) + content)

        server.answers["/b.ts"] = answer
        self.write("a.ts", ts([b"first"]))
        os.mkdir(self.path("tmp"))
        self.write("list.m3u8", b"#EXTM3U\n#EXT-X-TARGETDURATION:2\n#EXTINF:2,\na.ts\n#EXTINF:2,\n%s\n#EXT-X-ENDLIST\n"
                   % server.url("/b.ts").encode())
        result = self.run_program("-i", "list.m3u8", "-o", "out")
        self.expect(result, 1)
        self.assertEqual(result.last_line, "Failed to demultiplex list.m3u8")
        self.assertIn("Fail to open the output file path: out/list_PID_257.out.adts", result.err)
        self.assertFalse(os.path.exists(self.path("out")))
        self.assertEqual(self.files("tmp"), [])

    def test_folder_removed_while_its_files_are_written_fails_the_run(self):
        self.write("film.mp4", mp4([samples(b"a", 64, MEGABYTE // 4), samples(b"b", 64, 100)]))
        self.run_program("-i", "film.mp4", "-o", "out")
        # A full pipe in place of the first stream's file holds the run where it is.
        held = self.files("out")[0]
        os.remove(self.path("out", held))
        os.mkfifo(self.path("out", held))
        process = self.start("-i", "film.mp4", "-o", "out")
        with open(self.path("out", held), "rb") as pipe:
            pipe.read(1)
            shutil.rmtree(self.path("out"))
            while pipe.read(MEGABYTE):
                pass
        status, out, err = self.wait(process)
        self.assertEqual(status, 1, out + err)
        self.assertIn("fail to write data [size : 6400 bytes]", err)
        self.assertTrue(out.endswith("Failed to demultiplex film.mp4\n"), out)

    def test_other_streams_stay_whole(self):
        os.mkdir(self.path("out"))
        clip = mp4([samples(b"a", 3, 1000), samples(b"b", 3, 1000)])
        self.write("film.mp4", clip)
        self.run_program("-i", "film.mp4", "-o", "out")
        blocked, kept = self.files("out")
        os.remove(self.path("out", blocked))
        os.mkdir(self.path("out", blocked))
        result = self.run_program("-i", "film.mp4", "-o", "out")
        self.expect(result, 1)
        self.assertIn("Fail to open the output file path: out/" + blocked, result.err)
        self.assertEqual(len(self.read("out", kept)), 3000)


class ShrinkingInputTest(DiskFaultTest):
    """The run is held in its place by an output that is a full pipe; meanwhile the input is cut."""

    def cut_while_read(self, name, content, keep, output):
        self.write(name, content)
        self.run_program("-i", name, "-o", "out")
        self.assertIn(output, self.files("out"))
        os.remove(self.path("out", output))
        os.mkfifo(self.path("out", output))
        process = self.start("-i", name, "-o", "out")
        with open(self.path("out", output), "rb") as pipe:
            pipe.read(1)
            os.truncate(self.path(name), keep)
            while pipe.read(MEGABYTE):
                pass
        return self.wait(process)

    def expect_loss(self, done, name, keep, size):
        status, out, err = done
        self.assertEqual(status, 1, out + err)
        self.assertTrue(out.endswith("Failed to demultiplex %s\n" % name), out)
        self.assertIn("Fail to read the data specified by the byte range [start : %d, length : %d] in the segment file "
                      "[%s] ." % (keep, size - keep, name), err)

    def test_plain_mp4(self):
        content = mp4([samples(b"a", 64, MEGABYTE // 4)])
        self.write("film.mp4", content)
        self.run_program("-i", "film.mp4", "-o", "out")
        output = self.files("out")[0]
        self.expect_loss(self.cut_while_read("film.mp4", content, 8 * MEGABYTE + 17, output),
                         "film.mp4", 8 * MEGABYTE + 17, len(content))

    def test_mp4_cut_to_nothing(self):
        content = mp4([samples(b"a", 64, MEGABYTE // 4)])
        self.write("film.mp4", content)
        self.run_program("-i", "film.mp4", "-o", "out")
        self.expect_loss(self.cut_while_read("film.mp4", content, 0, self.files("out")[0]), "film.mp4", 0, len(content))

    def test_transport_stream(self):
        content = ts(samples(b"a", 200, 60000))
        self.expect_loss(self.cut_while_read("film.ts", content, 5 * MEGABYTE, "film_PID_257.out.adts"),
                         "film.ts", 5 * MEGABYTE, len(content))

    def test_input_that_grows_is_no_fault(self):
        content = mp4([samples(b"a", 64, MEGABYTE // 4)])
        self.write("film.mp4", content)
        self.run_program("-i", "film.mp4", "-o", "out")
        status, out, err = self.cut_while_read("film.mp4", content, len(content) + 1000, self.files("out")[0])
        self.assertEqual((status, err), (0, ""), out)


if __name__ == "__main__":
    unittest.main()
