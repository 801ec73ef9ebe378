"""Playlists from folders and addresses: streams, failures, live reloads, what is left behind."""

import os
import re
import resource
import shutil
import subprocess
import unittest

from inputs import ts
from program import CLIP, ProgramTest
from scripted_server import ScriptedServer

AUDIO = ('#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="g",LANGUAGE="en",NAME="n",CHANNELS="2",URI="audio.m3u8"\n')
STREAM = '#EXT-X-STREAM-INF:BANDWIDTH=%d,FRAME-RATE=25,CODECS="avc1.42c00d,mp4a.40.2",AUDIO="g"\n%s.m3u8\n'
MASTER = "#EXTM3U\n" + AUDIO + STREAM % (1000, "low") + STREAM % (2000, "high")
OUTPUTS = {"audio_PID_257.out.adts": b"audio 0.audio 1.", "low_PID_257_Bitrate_1000bps.out.adts": b"low 0.low 1.",
           "high_PID_257_Bitrate_2000bps.out.adts": b"high 0.high 1."}


class HlsTest(ProgramTest):
    def setUp(self):
        super().setUp()
        os.mkdir(self.path("www"))
        for name in ["audio", "low", "high"]:
            for i in range(2):
                self.write("www/%s_%d.ts" % (name, i), ts(b"%s %d." % (name.encode(), i)))
            self.put(name + ".m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:2\n#EXTINF:2,\n%s_0.ts\n#EXTINF:2,\n%s_1.ts\n"
                     "#EXT-X-ENDLIST\n" % (name, name))
        self.put("master.m3u8", MASTER)
        self.server = ScriptedServer(self.path("www"))
        self.server.__enter__()
        self.addCleanup(self.server.__exit__)

    def put(self, name, text):
        self.write("www/" + name, text.encode())

    def outputs(self, folder="out"):
        return {name: self.read(folder, name) for name in self.files(folder)}

    def split(self, name, status=0, *options, **more):
        result = self.run_program("-i", name, "-o", "out", *options, **more)
        self.assertEqual(result.status, status, result.out + result.err)
        self.assertEqual(result.last_line, "%s to demultiplex %s" % ("Failed" if status else "Succeed", name))
        return result


class FolderTest(HlsTest):
    def test_master_playlist_is_split(self):
        result = self.split("www/master.m3u8")
        self.assertEqual(result.err, "")
        self.assertEqual(self.outputs(), OUTPUTS)
        self.assertEqual(self.files("."), ["out", "www"])

    def test_second_run_replaces_the_files_of_the_first(self):
        self.split("www/master.m3u8")
        self.split("www/master.m3u8")
        self.assertEqual(self.outputs(), OUTPUTS)

    def test_media_playlist_is_split(self):
        self.split("www/low.m3u8")
        self.assertEqual(self.outputs(), {"low_PID_257.out.adts": b"low 0.low 1."})

    def test_threads_give_what_single_runs_give(self):
        self.split("www/master.m3u8")
        threaded = sorted(self.outputs().values())
        shutil.rmtree(self.path("out"))
        for name in ["audio", "low", "high"]:
            self.split("www/%s.m3u8" % name)
        self.assertEqual(sorted(self.outputs().values()), threaded)

    def test_missing_playlist_is_named(self):
        result = self.split("none.m3u8", 1)
        self.assertEqual(result.err, "ERROR: Fail to open the file : none.m3u8\n")

    def test_missing_rendition_fails_the_run_and_leaves_the_others(self):
        os.remove(self.path("www/low.m3u8"))
        result = self.split("www/master.m3u8", 1)
        self.assertEqual(result.err, "ERROR: Fail to open the file : www/low.m3u8\n")
        self.assertEqual(self.outputs(), {name: data for name, data in OUTPUTS.items() if "low" not in name})

    def test_missing_segment_ends_its_stream_only(self):
        os.remove(self.path("www/high_1.ts"))
        result = self.split("www/master.m3u8", 1)
        self.assertEqual(result.err, "ERROR: Fail to get segment: www/high_1.ts\n")
        self.assertEqual(self.outputs(), dict(OUTPUTS, **{"high_PID_257_Bitrate_2000bps.out.adts": b"high 0."}))

    def test_addresses_of_a_local_playlist_are_not_fetched_without_the_folder_for_downloads(self):
        self.put("far.m3u8", "#EXTINF:1,\n%s\n" % self.server.url("/low_0.ts"))
        result = self.split("www/far.m3u8", 1)
        self.assertEqual(result.out.count("WARNING: Try to download segment"), 3)
        self.assertEqual(self.server.requests, [])
        os.mkdir(self.path("tmp"))
        self.split("www/far.m3u8")
        self.assertEqual(self.outputs(), {"far_PID_257.out.adts": b"low 0."})
        self.assertEqual(self.files("tmp"), [])

    def test_binary_playlists_end_by_themselves(self):
        for content in [b"", b"\0" * 10000, bytes(range(256)) * 64, b"#EXTINF:" + b"x" * 20000,
                        b"#EXTINF:2,\n" + b"y" * 2000 + b".ts\n", b"#EXT-X-STREAM-INF:CODECS=mp4a\nlow.m3u8"]:
            self.write("www/bad.m3u8", content)
            result = self.run_program("-i", "www/bad.m3u8", "-o", "out")
            self.assertIn(result.status, [0, 1])
            self.assertRegex(result.last_line, "to demultiplex www/bad.m3u8")

    def test_playlist_that_names_itself_ends(self):
        self.put("self.m3u8", STREAM % (1, "self") + STREAM % (2, "low"))
        self.split("www/self.m3u8", 1)
        self.assertIn(b"low 0.low 1.", self.outputs().values())

    def test_many_segments_are_split_in_order(self):
        text = "#EXT-X-TARGETDURATION:1\n"
        for i in range(2000):
            text += "#EXTINF:1,\nlow_%d.ts\n" % (i % 2)
        self.put("many.m3u8", text)
        self.split("www/many.m3u8")
        self.assertEqual(self.outputs(), {"many_PID_257.out.adts": b"low 0.low 1." * 1000})

    def test_many_streams_run_at_once(self):
        text = ""
        for i in range(32):
            shutil.copyfile(self.path("www/low.m3u8"), self.path("www/s%d.m3u8" % i))
            text += '#EXT-X-STREAM-INF:BANDWIDTH=%d,FRAME-RATE=25,CODECS="mp4a.40.2"\ns%d.m3u8\n' % (i + 1, i)
        self.put("wide.m3u8", text)
        self.split("www/wide.m3u8")
        self.assertEqual(self.outputs(), {"s%d_PID_257_Bitrate_%dbps.out.adts" % (i, i + 1): b"low 0.low 1."
                                          for i in range(32)})

    def test_streams_of_one_name_do_not_write_into_each_other(self):
        for folder in ["main", "comments"]:
            os.mkdir(self.path("www/" + folder))
            self.put(folder + "/audio.m3u8", "#EXTM3U\n" + "#EXTINF:2,\n%s.ts\n" % folder * 300)
            self.write("www/%s/%s.ts" % (folder, folder), ts(b"%s." % folder.encode()))
        rendition = '#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="g",LANGUAGE="en",NAME="%s",CHANNELS="2",URI="%s/audio.m3u8"\n'
        self.put("two.m3u8", "#EXTM3U\n" + rendition % ("a", "main") + rendition % ("b", "comments") + STREAM % (1, "low"))
        result = self.split("www/two.m3u8", 1)
        self.assertIn("ERROR: Fail to open the output file path: out/audio_PID_257.out.adts\n", result.err)
        self.assertIn(self.outputs()["audio_PID_257.out.adts"], [b"main." * 300, b"comments." * 300])

    def test_full_device_fails_the_run(self):
        self.split("www/low.m3u8")
        os.remove(self.path("out/low_PID_257.out.adts"))
        os.symlink("/dev/full", self.path("out/low_PID_257.out.adts"))
        self.split("www/low.m3u8", 1)


class AddressTest(HlsTest):
    def test_master_playlist_gives_what_the_folder_gives(self):
        self.split(self.server.url("/master.m3u8"))
        self.assertEqual(self.outputs(), OUTPUTS)
        self.assertEqual(self.files("tmp"), [])
        self.assertEqual(len(self.server.requests), 10)

    def test_redirects_are_followed(self):
        self.server.script["/moved.m3u8"] = [("redirect", "/low.m3u8")]
        self.server.script["/low_0.ts"] = [("redirect", self.server.url("/high_0.ts"))]
        self.split(self.server.url("/moved.m3u8"))
        self.assertEqual(self.outputs(), {"moved_PID_257.out.adts": b"high 0.low 1."})

    def test_endless_redirects_end(self):
        self.server.script["/loop.m3u8"] = [("redirect", "/loop.m3u8")]
        result = self.split(self.server.url("/loop.m3u8"), 1)
        self.assertIn("CURL error code: 47", result.out)
        self.assertEqual(result.err, "ERROR: Fail to fetch: %s\n" % self.server.url("/loop.m3u8"))
        self.assertEqual(self.files("tmp"), [])

    def test_missing_playlist_is_named(self):
        result = self.split(self.server.url("/none.m3u8"), 1)
        self.assertEqual(result.err, "ERROR: Fail to fetch: %s\n" % self.server.url("/none.m3u8"))
        self.assertRegex(result.out, "^WARNING: Fail to download file: ")

    def test_missing_rendition_is_named(self):
        self.server.script["/low.m3u8"] = [404]
        result = self.split(self.server.url("/master.m3u8"), 1)
        self.assertEqual(result.err, "ERROR: Fail to fetch: %s\n" % self.server.url("/low.m3u8"))
        self.assertEqual(len(self.outputs()), 2)

    def test_segment_is_tried_again(self):
        self.put("low.m3u8", "#EXTINF:1,\nlow_0.ts\n#EXTINF:1,\nlow_1.ts\n#EXT-X-ENDLIST\n")
        self.server.script["/low_1.ts"] = [404, ("close", ts(b"low 1.")), ts(b"low 1.")]
        result = self.split(self.server.url("/low.m3u8"))
        self.assertEqual(self.outputs(), {"low_PID_257.out.adts": b"low 0.low 1."})
        self.assertEqual(re.findall("Try to download segment .* failed, times : (.)", result.out), ["1", "2"])
        self.assertEqual(result.err, "")
        self.assertEqual(self.files("tmp"), [])

    def test_segment_that_is_not_there_ends_the_stream(self):
        self.put("low.m3u8", "#EXTINF:1,\nlow_0.ts\n#EXTINF:1,\ngone.ts\n#EXTINF:1,\nlow_1.ts\n")
        result = self.split(self.server.url("/low.m3u8"), 1)
        self.assertEqual(result.err, "ERROR: Fail to get segment: %s\n" % self.server.url("/gone.ts"))
        self.assertEqual(self.outputs(), {"low_PID_257.out.adts": b"low 0."})
        self.assertNotIn("/low_1.ts", self.server.requests)
        self.assertEqual(self.files("tmp"), [])

    def test_finished_playlist_ends_at_the_wanted_duration(self):
        text = "".join("#EXTINF:4,\nlow_%d.ts\n" % (i % 2) for i in range(6)) + "#EXT-X-ENDLIST\n"
        self.put("long.m3u8", text)
        self.split(self.server.url("/long.m3u8"))
        self.assertEqual(self.outputs(), {"long_PID_257.out.adts": b"low 0.low 1.low 0."})
        self.split(self.server.url("/long.m3u8"), 0, "--live-duration", "100")
        self.assertEqual(self.outputs(), {"long_PID_257.out.adts": b"low 0.low 1." * 3})

    def test_growing_playlist_is_loaded_again(self):
        head = "#EXT-X-TARGETDURATION:1\n#EXTINF:0.5,\nlow_0.ts\n"
        self.server.script["/live.m3u8"] = [text.encode() for text in
                                            [head, head, head + "#EXTINF:0.5,\nlow_1.ts\n#EXT-X-ENDLIST\n"]]
        result = self.split(self.server.url("/live.m3u8"))
        # Once to see what it is, then by its worker.
        self.assertEqual(self.server.requests.count("/live.m3u8"), 3)
        self.assertIn("INFO: ===========SUBPLAYLIST [URI: %s] UPDATE(1001 ms)===========\n"
                      % self.server.url("/live.m3u8"), result.out)
        self.assertEqual(self.outputs(), {"live_PID_257.out.adts": b"low 0.low 0.low 1."})
        self.assertEqual(self.files("tmp"), [])

    def test_live_stream_ends_at_the_wanted_duration(self):
        self.put("live.m3u8", "#EXT-X-TARGETDURATION:1\n#EXTINF:0.5,\nlow_0.ts\n")
        self.split(self.server.url("/live.m3u8"), 0, "--live-duration", "0.8")
        self.assertEqual(self.outputs(), {"live_PID_257.out.adts": b"low 0." * 2})

    def test_folder_for_downloads_that_cannot_be_made_ends_the_run(self):
        result = self.run_program("-i", self.server.url("/master.m3u8"), "-o", "/tmp", cwd="/proc")
        self.expect(result, 1, out="", err="ERROR: Fail to create tmp folder to store downloaded files.\n")
        self.assertEqual(self.server.requests, [])

    def test_downloads_that_cannot_be_written_fail(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (8, 8))

        self.write("dummy")
        result = self.run_program("-i", self.server.url("/master.m3u8"), "-o", "out", preexec_fn=limit)
        self.assertEqual(result.status, 1)
        self.assertEqual(result.last_line, "Failed to demultiplex " + self.server.url("/master.m3u8"))
        self.assertEqual(self.files("tmp"), [])

    def test_parent_folders_of_addresses_are_resolved(self):
        os.mkdir(self.path("www/a"))
        self.put("a/up.m3u8", "#EXTINF:1,\n../low_0.ts\n#EXTINF:1,\n./../low_1.ts\n#EXT-X-ENDLIST\n")
        self.split(self.server.url("/a/up.m3u8"))
        self.assertEqual(self.outputs(), {"up_PID_257.out.adts": b"low 0.low 1."})
        self.assertEqual(self.server.requests[-2:], ["/low_0.ts", "/low_1.ts"])

    def test_certificate_that_nobody_vouches_for_is_a_failed_download(self):
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=127.0.0.1",
                        "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", self.path("key.pem"), "-out",
                        self.path("certificate.pem")], check=True, capture_output=True, timeout=60)
        secure = ScriptedServer(self.path("www"))
        secure.use_tls(self.path("certificate.pem"), self.path("key.pem"))
        with secure:
            result = self.split(secure.url("/master.m3u8"), 1)
        # Nobody vouches for the certificate.
        self.assertIn("CURL error code: 60", result.out)
        self.assertEqual(self.files("tmp"), [])


class SingleInputTest(HlsTest):
    def test_transport_stream_by_address(self):
        self.split(self.server.url("/low_0.ts"))
        self.assertEqual(self.outputs(), {"low_0_PID_257.out.adts": b"low 0."})
        self.assertEqual(self.files("tmp"), [])

    def test_mp4_by_address(self):
        shutil.copyfile(CLIP, self.path("www/clip.mp4"))
        self.split(self.server.url("/clip.mp4"))
        fetched = self.outputs()
        shutil.rmtree(self.path("out"))
        self.split("www/clip.mp4")
        self.assertEqual(self.outputs(), fetched)
        self.assertEqual(len(fetched), 2)
        self.assertEqual(self.files("tmp"), [])

    def test_missing_address_is_named(self):
        for name in ["/none.ts", "/none.mp4", "/none.ec3", "/none.ac4"]:
            url = self.server.url(name)
            result = self.split(url, 1)
            self.assertEqual(result.err, "ERROR: Fail to open the file : %s\n" % url)
            self.assertIn("WARNING: Fail to download file: %s on GMT: " % url, result.out)
            # The failed download left nothing to remove.
            self.assertRegex(result.out, r"\nFail to remove tmp/segment_\d+_\d+ \(%s\)\n" % re.escape(url))
            self.assertEqual(self.files("tmp"), [])
            self.assertEqual(self.server.requests, [name])
            self.server.requests.clear()

    def test_download_that_ends_early_is_a_failed_one(self):
        for name in ["/cut.ts", "/cut.mp4", "/cut.ec3", "/cut.ac4"]:
            self.server.script[name] = [("close", b"x" * 1000)]
            result = self.split(self.server.url(name), 1)
            self.assertIn("CURL error code: 18", result.out)
            self.assertEqual(self.files("tmp"), [])

    def test_folder_for_downloads_that_cannot_be_made_ends_the_run(self):
        for name in ["/a.ts", "/a.mp4", "/a.ec3", "/a.ac4", "/a.mpd", "/a.m3u8"]:
            result = self.run_program("-i", self.server.url(name), "-o", "/tmp", cwd="/proc")
            self.expect(result, 1, out="", err="ERROR: Fail to create tmp folder to store downloaded files.\n")
        self.assertEqual(self.server.requests, [])

    def test_folder_for_downloads_is_used_as_it_stands_and_stays(self):
        os.mkdir(self.path("tmp"))
        self.write("tmp/other", b"mine")
        self.split(self.server.url("/low_0.ts"))
        self.assertEqual(self.files("tmp"), ["other"])

    def test_file_in_the_place_of_the_folder_for_downloads_fails_the_run(self):
        self.write("tmp")
        for name in ["/low_0.ts", "/low.m3u8"]:
            result = self.run_program("-i", self.server.url(name), "-o", "out")
            self.assertEqual(result.status, 1)
        self.assertEqual(self.server.requests, [])

    def test_local_inputs_need_no_folder_for_downloads(self):
        self.split("www/low_0.ts")
        self.assertEqual(self.files("."), ["out", "www"])


if __name__ == "__main__":
    unittest.main()
