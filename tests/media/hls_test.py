"""Presentations made by ffmpeg's HLS muxer: every stream equals what a run over its joined segments gives."""

import os
import re
import shutil
import subprocess
import unittest

from media_support import MEDIASPLIT, PATIENCE, MediaCase, ffmpeg, frame_checksums, packet_count
from nginx_server import NginxServer

PICTURE = ["-f", "lavfi", "-i", "testsrc2=s=192x128:r=25:d=7"]
TONE = ["-f", "lavfi", "-i", "sine=f=440:r=48000:d=7"]
CODING = ["-c:v", "libx264", "-preset", "ultrafast", "-g", "25", "-c:a", "aac"]
HLS = ["-f", "hls", "-hls_time", "2", "-hls_playlist_type", "vod"]


def ac4_frames():
    """Sync frames of a real table of contents, padded."""
    corpus = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "fuzz/corpus/ac4_analyzer")
    with open(os.path.join(corpus, "stereo"), "rb") as file:
        content = file.read()[1:]
    frame = content[2:2 + int.from_bytes(content[:2], "big")].ljust(400, b"\0")
    return (b"\xac\x40" + len(frame).to_bytes(2, "big") + frame) * 50


def extension(name):
    return name.rsplit(".", 1)[1]


class Presentations(MediaCase):
    def make(self, kind, *streams):
        """A master playlist with `streams`, whose segments are of `kind`."""
        options = {"ts": ["-hls_segment_filename", self.path("s%v_%d.ts")],
                   "fmp4": ["-hls_segment_type", "fmp4", "-hls_fmp4_init_filename", "init%v.mp4",
                            "-hls_segment_filename", self.path("s%v_%d.m4s")],
                   "ranges": ["-hls_segment_type", "fmp4", "-hls_flags", "single_file",
                              "-hls_segment_filename", self.path("s%v.m4s")],
                   "ts_ranges": ["-hls_flags", "single_file", "-hls_segment_filename", self.path("s%v.ts")]}[kind]
        kinds = re.findall("([va]):[0-9]", " ".join(streams))
        maps = [word for letter in kinds for word in ("-map", "0:v" if letter == "v" else "1:a")]
        ffmpeg(*PICTURE, *TONE, *maps, *CODING, "-b:v:0", "300k", "-b:v:1", "90k", *HLS, *options, "-master_pl_name",
               "master.m3u8", "-var_stream_map", " ".join(streams), self.path("list%v.m3u8"), cwd=self.folder)

    def joined(self, index):
        """The bytes of all segments of a playlist, in order, as one file."""
        parts = []
        with open(self.path("list%d.m3u8" % index)) as file:
            for line in file:
                map_uri = re.search('#EXT-X-MAP:URI="([^"]*)"', line)
                if map_uri:
                    parts.append(map_uri.group(1))
                elif not line.startswith("#") and line.strip():
                    parts.append(line.strip())
        data = b"".join(self.read(self.path(name)) for name in dict.fromkeys(parts))
        name = "joined%d.%s" % (index, "ts" if parts[-1].endswith(".ts") else "mp4")
        with open(self.path(name), "wb") as file:
            file.write(data)
        return name

    def expected(self, count):
        """For each stream the files that a run over its joined segments gives, by extension."""
        result = []
        for index in range(count):
            outputs = self.split(self.joined(index))
            result.append({extension(name): self.read(path) for name, path in outputs.items()})
        return result

    def check(self, outputs, expected):
        found = {}
        for name, path in outputs.items():
            self.assertRegex(name, "^list[0-9]")
            index = int(name[4])
            found.setdefault(index, {})[extension(name)] = self.read(path)
        self.assertEqual(sorted(found), list(range(len(expected))))
        for index, files in enumerate(expected):
            self.assertEqual(sorted(found[index]), sorted(files))
            for kind, data in files.items():
                self.assertGreater(len(data), 5000)
                self.assertTrue(found[index][kind] == data, "stream %d, %s" % (index, kind))

    def run_all(self, kind, *streams):
        self.make(kind, *streams)
        expected = self.expected(len(streams))
        self.check(self.split("master.m3u8"), expected)
        # Without threads: each playlist by itself.
        for index in range(len(streams)):
            outputs = self.split("list%d.m3u8" % index)
            self.assertEqual({extension(name): self.read(path) for name, path in outputs.items()}, expected[index])
        return expected

    def test_fragmented_renditions(self):
        self.run_all("fmp4", "v:0,agroup:a", "v:1,agroup:a", "a:0,agroup:a,language:en,default:yes")
        outputs = self.split("master.m3u8")
        for name, path in outputs.items():
            index = int(name[4])
            if name.endswith(".264"):
                self.assertEqual(frame_checksums(path, "v:0"), frame_checksums(self.path("joined%d.mp4" % index), "v:0"))
            else:
                self.assertIn("_Lang_en", name)
                self.assertEqual(packet_count(path, "a:0"), packet_count(self.path("joined%d.mp4" % index), "a:0"))

    def test_transport_stream_renditions(self):
        self.run_all("ts", "v:0,agroup:a", "v:1,agroup:a", "a:0,agroup:a,language:en,default:yes")

    def test_muxed_transport_streams(self):
        self.run_all("ts", "v:0,a:0", "v:1,a:1")

    def test_muxed_fragments(self):
        self.run_all("fmp4", "v:0,a:0", "v:1,a:1")

    def test_ranges_of_fragmented_files(self):
        self.run_all("ranges", "v:0,agroup:a", "a:0,agroup:a")

    def test_ranges_of_transport_streams(self):
        self.run_all("ts_ranges", "v:0,agroup:a", "a:0,agroup:a")

    def test_only_stream(self):
        self.run_all("fmp4", "v:0,a:0")

    def test_key_id_of_the_playlist_selects_the_key(self):
        key, own_id, listed_id = "00112233445566778899aabbccddeeff", "f" * 32, "000102030405060708090a0b0c0d0e0f"
        # One slice a picture, no SEI: each sample has one protected range.
        ffmpeg(*PICTURE, "-c:v", "libx264", "-x264-params", "slices=1:sliced-threads=0:keyint=25", "-bsf:v",
               "filter_units=remove_types=6", "-pix_fmt", "yuv420p", self.path("clear.mp4"))
        clear = self.split("clear.mp4")
        # The file names another key id, so that only the one of the playlist leads to the key.
        ffmpeg("-i", self.path("clear.mp4"), "-c", "copy", "-encryption_scheme", "cenc-aes-ctr", "-encryption_key", key,
               "-encryption_kid", own_id, self.path("secret.mp4"))
        with open(self.path("empty.m4s"), "wb") as file:
            file.write(b"\0\0\0\x10stypmsdh\0\0\0\0")
        with open(self.path("secret.m3u8"), "w") as file:
            file.write('#EXTM3U\n#EXT-X-KEY:METHOD=SAMPLE-AES-CTR,URI="data:text/plain;base64,AAECAwQFBgcICQoLDA0ODw=="\n'
                       '#EXT-X-MAP:URI="secret.mp4"\n#EXTINF:7,\nempty.m4s\n#EXT-X-ENDLIST\n')
        outputs = self.split("secret.m3u8", "--decryption-keys", listed_id + ":" + key)
        self.assertEqual([self.read(path) == self.read(list(clear.values())[0]) for path in outputs.values()], [True])
        self.split("secret.m3u8", expect=1)

    # ---- addresses ----

    def serve(self):
        os.chmod(self.folder, 0o755)
        server = NginxServer(self.folder, self.folder + "_nginx")
        self.addCleanup(shutil.rmtree, server.folder, True)
        self.addCleanup(server.stop)
        return server

    def split_address(self, url, *before):
        out = self.path("out_address")
        shutil.rmtree(out, True)
        done = subprocess.run([*before, os.path.abspath(MEDIASPLIT), "-i", url, "-o", out, "--live-duration", "1000"],
                              cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=PATIENCE)
        self.assertEqual(done.returncode, 0, done.stdout.decode() + done.stderr.decode())
        self.assertEqual(os.listdir(self.path("tmp")), [])
        self.printed = done.stdout.decode()
        return {name: os.path.join(out, name) for name in os.listdir(out)}

    def test_addresses_give_what_folders_give(self):
        server = self.serve()
        for kind in ["fmp4", "ts", "ranges"]:
            with self.subTest(kind):
                self.make(kind, "v:0,agroup:a", "v:1,agroup:a", "a:0,agroup:a,language:en")
                expected = self.expected(3)
                self.check(self.split_address(server.url("master.m3u8")), expected)
                self.check(self.split_address(server.url("moved/master.m3u8")), expected)

    def test_redirects_end_after_twenty(self):
        server = self.serve()
        self.make("ts", "v:0,a:0")
        self.check(self.split_address(server.url("hop/" + "a" * 20 + "/master.m3u8")), self.expected(1))
        url = server.url("hop/" + "a" * 21 + "/master.m3u8")
        done = subprocess.run([os.path.abspath(MEDIASPLIT), "-i", url, "-o", self.path("none")], cwd=self.folder,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=PATIENCE)
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"CURL error code: 47", done.stdout)
        self.assertEqual(os.listdir(self.path("tmp")), [])

    def test_single_inputs_by_address(self):
        server = self.serve()
        ffmpeg(*PICTURE, *TONE, *CODING, self.path("plain.mp4"))
        ffmpeg("-i", self.path("plain.mp4"), "-c", "copy", self.path("plain.ts"))
        ffmpeg(*TONE, "-c:a", "eac3", "-b:a", "192k", "-f", "eac3", self.path("plain.ec3"))
        with open(self.path("plain.ac4"), "wb") as file:
            file.write(ac4_frames())
        for name in ["plain.mp4", "plain.ts", "plain.ec3", "plain.ac4"]:
            local = {base: self.read(path) for base, path in self.split(name).items()}
            said = self.printed
            for url in [server.url(name), server.url("moved/" + name)]:
                with self.subTest(url):
                    outputs = self.split_address(url)
                    self.assertEqual({base: self.read(path) for base, path in outputs.items()}, local)
                    self.assertEqual(self.printed.replace(url, name), said)

    def test_secure_addresses(self):
        if subprocess.run(["unshare", "--mount", "--map-root-user", "true"], capture_output=True).returncode != 0:
            self.skipTest("no mounts of one's own here")
        server = self.serve()
        self.make("fmp4", "v:0,agroup:a", "a:0,agroup:a")
        # The certificate counts as an authority's for this one program.
        trust = ["unshare", "--mount", "--map-root-user", "sh", "-c",
                 'mount --bind "$0" /etc/ssl/certs/ca-certificates.crt && exec "$@"', server.folder + "/certificate.pem"]
        self.check(self.split_address(server.url("master.m3u8", secure=True), *trust), self.expected(2))


if __name__ == "__main__":
    unittest.main()
