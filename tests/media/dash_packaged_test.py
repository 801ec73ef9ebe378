"""Presentations as packagers make them: one indexed file for each Representation, lists, templates, encrypted ones.

The files are ffmpeg's; manifests, byte ranges and encryption are made here.
"""

import os
import struct
import subprocess
import unittest

from folder_server import serve
from media_support import MediaCase, ffmpeg, frame_checksums, insert_box

KEY = "00112233445566778899aabbccddeeff"
KID = "a1a2a3a4a5a6a7a8b1b2b3b4b5b6b7b8"
OTHER_KID = "c1c2c3c4c5c6c7c8d1d2d3d4d5d6d7d8"
# One slice a picture and no SEI, so that a sample has one unit. The tone ends ahead of the Period, which cuts what goes
# beyond it.
CODING = {"v0": ["-f", "lavfi", "-i", "testsrc2=s=192x128:r=25:d=6", "-c:v", "libx264", "-g", "25", "-keyint_min", "25",
                 "-x264-params", "slices=1:sliced-threads=0:scenecut=0", "-bsf:v", "filter_units=remove_types=6"],
          "v1": ["-f", "lavfi", "-i", "testsrc2=s=96x64:r=25:d=6", "-c:v", "libx264", "-g", "25", "-keyint_min", "25",
                 "-x264-params", "slices=1:sliced-threads=0:scenecut=0", "-bsf:v", "filter_units=remove_types=6"],
          "a": ["-f", "lavfi", "-i", "sine=f=440:r=48000:d=5.8", "-c:a", "aac", "-frag_duration", "1000000"]}
EXTENSION = {"v0": "264", "v1": "264", "a": "aac"}
MIME = {"v0": "video/mp4", "v1": "video/mp4", "a": "audio/mp4"}


def boxes(data, begin, end):
    while begin + 8 <= end:
        size, kind = struct.unpack(">I4s", data[begin:begin + 8])
        yield kind, begin, begin + size
        begin += size


def find(data, *path):
    """First and last byte of a box."""
    begin, end = 0, len(data)
    for wanted in path:
        begin, end = next((a, b) for kind, a, b in boxes(data, begin, end) if kind == wanted)
        begin += 8
    return begin - 8, end - 1


def subsegments(data):
    """First and last byte of each subsegment, by the index of the file."""
    first, last = find(data, b"sidx")
    version = data[first + 8]
    at = first + 12 + 8 + (16 if version else 8)
    position = last + 1 + int.from_bytes(data[at - (8 if version else 4):at], "big")
    count = int.from_bytes(data[at + 2:at + 4], "big")
    result = []
    for i in range(count):
        size = int.from_bytes(data[at + 4 + 12 * i:at + 8 + 12 * i], "big") & 0x7FFFFFFF
        result.append((position, position + size - 1))
        position += size
    return result


# ---- encryption ("cenc", ISO/IEC 23001-7) -----------------------------------------------------------

def box(kind, *parts):
    body = b"".join(parts)
    return struct.pack(">I4s", 8 + len(body), kind) + body


def keystream(key, counters):
    return subprocess.run(["openssl", "enc", "-aes-128-ecb", "-nopad", "-K", key], input=b"".join(counters),
                          stdout=subprocess.PIPE, check=True, timeout=60).stdout


def encrypt_samples(samples, clear, key, first_iv):
    """The samples with all but `clear` bytes encrypted, and what `senc` says of each."""
    counters, rows = [], []
    for i, sample in enumerate(samples):
        iv = struct.pack(">Q", first_iv + i)
        counters += [iv + struct.pack(">Q", n) for n in range((len(sample) - clear + 15) // 16)]
        rows.append(iv + (struct.pack(">HHI", 1, clear, len(sample) - clear) if clear else b""))
    stream = keystream(key, counters)
    coded, at = [], 0
    for sample in samples:
        size = len(sample) - clear
        coded.append(sample[:clear] + bytes(a ^ b for a, b in zip(sample[clear:], stream[at:at + size])))
        at += (size + 15) // 16 * 16
    return coded, rows


def encrypt_entry(initialization, kid):
    """The initialization segment with the track's entry protected."""
    begin, _ = find(initialization, b"moov", b"trak", b"mdia", b"minf", b"stbl", b"stsd")
    entry = initialization[begin + 20:begin + 24]
    sinf = box(b"sinf", box(b"frma", entry), box(b"schm", bytes(4), b"cenc", struct.pack(">I", 0x10000)),
               box(b"schi", box(b"tenc", bytes(4), bytes([0, 0, 1, 8]), bytes.fromhex(kid))))
    is_video = entry == b"avc1"
    grown = insert_box(initialization, [b"moov", b"trak", b"mdia", b"minf", b"stbl", b"stsd", entry],
                       {b"stsd": 8, entry: 78 if is_video else 28}, sinf)
    return grown.replace(entry, b"encv" if is_video else b"enca", 1) if is_video else \
        grown[:begin + 20] + b"enca" + grown[begin + 24:]


def default_sample_size(data):
    tfhd, _ = find(data, b"moof", b"traf", b"tfhd")
    flags = int.from_bytes(data[tfhd + 9:tfhd + 12], "big")
    at = tfhd + 16 + sum(size for bit, size in ((1, 8), (2, 4), (8, 4)) if flags & bit)
    return int.from_bytes(data[at:at + 4], "big") if flags & 0x10 else None


def sample_sizes(data, trun):
    flags = int.from_bytes(data[trun + 9:trun + 12], "big")
    count = int.from_bytes(data[trun + 12:trun + 16], "big")
    if not flags & 0x200:
        return [default_sample_size(data)] * count
    fields = [bit for bit in (0x100, 0x200, 0x400, 0x800) if flags & bit]
    at = trun + 20 + (4 if flags & 4 else 0) + 4 * fields.index(0x200)
    rows = range(at, at + 4 * len(fields) * count, 4 * len(fields))
    return [int.from_bytes(data[row:row + 4], "big") for row in rows]


def encrypt_fragment(data, clear, key, first_iv):
    """A `moof` and `mdat` of one run of samples."""
    begin, last = find(data, b"moof")
    trun, _ = find(data, b"moof", b"traf", b"trun")
    offset = struct.unpack(">i", data[trun + 16:trun + 20])[0]
    samples, place = [], begin + offset
    for size in sample_sizes(data, trun):
        samples.append(data[place:place + size])
        place += size
    coded, rows = encrypt_samples(samples, clear, key, first_iv)
    senc = box(b"senc", struct.pack(">II", 2 if clear else 0, len(rows)), *rows)
    moof = bytearray(data[begin:last + 1])
    moof[trun - begin + 16:trun - begin + 20] = struct.pack(">i", offset + len(senc))
    return insert_box(bytes(moof), [b"moof", b"traf"], {}, senc) + box(b"mdat", b"".join(coded))


def encrypt(data, clear, key, kid):
    """An indexed file with its samples encrypted and its index made anew."""
    index, last = find(data, b"sidx")
    fragments = [encrypt_fragment(data[first:end + 1], clear, key, 1000 * (i + 1))
                 for i, (first, end) in enumerate(subsegments(data))]
    head = data[index:last + 1]
    table = last + 1 - index - 12 * len(fragments)
    sidx = bytearray(head)
    for i, fragment in enumerate(fragments):
        sidx[table + 12 * i:table + 12 * i + 4] = struct.pack(">I", len(fragment))
    return encrypt_entry(data[:index], kid) + bytes(sidx) + b"".join(fragments)


# ---- manifests --------------------------------------------------------------------------------------

def protection(kid):
    dashed = "-".join([kid[:8], kid[8:12], kid[12:16], kid[16:20], kid[20:]])
    return ('<ContentProtection schemeIdUri="urn:mpeg:dash:mp4protection:2011" value="cenc" cenc:default_KID="%s"/>'
            '<ContentProtection schemeIdUri="urn:uuid:1077efec-c0b2-4d02-ace3-3c1e52e2fb4b"/>' % dashed)


class Packaged(MediaCase):
    """`files` holds the bytes of each Representation's indexed file."""

    made = {}

    def setUp(self):
        super().setUp()
        if not self.made:
            for name, words in CODING.items():
                ffmpeg(*words, "-f", "mp4", "-movflags",
                       "+frag_keyframe+empty_moov+default_base_moof+global_sidx+skip_trailer", self.path("made.mp4"))
                self.made[name] = self.read(self.path("made.mp4"))
        self.files = dict(self.made)
        self.clear = {}
        for name, data in self.made.items():
            self.put("clear_%s.mp4" % name, data)
            outputs = self.split("clear_%s.mp4" % name)
            self.assertEqual(len(outputs), 1)
            self.clear[name] = self.read(list(outputs.values())[0])
            self.assertGreater(len(self.clear[name]), 1000)

    def put(self, name, data):
        with open(self.path(name), "wb") as file:
            file.write(data)

    def write_manifest(self, addressing, in_set="", in_representation="", period='duration="PT6S"'):
        """`addressing` makes the children of a Representation, and its files."""
        text = '<?xml version="1.0" encoding="UTF-8"?>\n<MPD xmlns="urn:mpeg:dash:schema:mpd:2011" ' \
               'xmlns:cenc="urn:mpeg:cenc:2013" type="static" minBufferTime="PT2S"><Period id="p" %s>' % period
        for kind, names in ("video", ["v0", "v1"]), ("audio", ["a"]):
            text += '<AdaptationSet contentType="%s">%s' % (kind, in_set)
            for name in names:
                text += '<Representation id="%s" bandwidth="100" mimeType="%s">%s%s</Representation>' % (
                    name, MIME[name], in_representation, addressing(name))
            text += "</AdaptationSet>"
        self.put("stream.mpd", (text + "</Period></MPD>").encode())

    def indexed(self, name):
        data = self.files[name]
        self.put(name + ".mp4", data)
        first, last = find(data, b"sidx")
        return '<BaseURL>%s.mp4</BaseURL><SegmentBase indexRange="%d-%d"><Initialization range="0-%d"/></SegmentBase>' % (
            name, first, last, first - 1)

    def listed_ranges(self, name):
        data = self.files[name]
        self.put(name + ".mp4", data)
        rows = "".join('<SegmentURL mediaRange="%d-%d"/>' % row for row in subsegments(data))
        return '<BaseURL>%s.mp4</BaseURL><SegmentList duration="1"><Initialization range="0-%d"/>%s</SegmentList>' % (
            name, find(data, b"sidx")[0] - 1, rows)

    def cut(self, name):
        data = self.files[name]
        self.put(name + "_init.mp4", data[:find(data, b"sidx")[0]])
        rows = subsegments(data)
        for i, (first, last) in enumerate(rows):
            self.put("%s_%d.m4s" % (name, i + 1), data[first:last + 1])
        return len(rows)

    def listed_files(self, name):
        rows = "".join('<SegmentURL media="%s_%d.m4s"/>' % (name, i + 1) for i in range(self.cut(name)))
        return '<SegmentList duration="1"><Initialization sourceURL="%s_init.mp4"/>%s</SegmentList>' % (name, rows)

    def numbered(self, name):
        count = self.cut(name)
        return '<SegmentTemplate timescale="1" initialization="$RepresentationID$_init.mp4" ' \
               'media="$RepresentationID$_$Number$.m4s"><SegmentTimeline><S t="0" d="1" r="%d"/></SegmentTimeline>' \
               '</SegmentTemplate>' % (count - 1)

    ALL = ["indexed", "listed_ranges", "listed_files", "numbered"]

    def expect_clear(self, outputs):
        self.assertEqual(sorted(outputs), sorted("stream_PerID_p_RepID_%s.out.%s" % row for row in EXTENSION.items()))
        for name, extension in EXTENSION.items():
            self.assertEqual(self.read(outputs["stream_PerID_p_RepID_%s.out.%s" % (name, extension)]), self.clear[name])


class Clear(Packaged):
    def test_each_addressing_gives_what_the_files_give(self):
        for kind in self.ALL:
            with self.subTest(kind):
                self.write_manifest(getattr(self, kind))
                self.expect_clear(self.split("stream.mpd"))
                self.assertEqual(self.errors, "")

    def test_each_addressing_gives_the_same_over_http(self):
        with serve(self.folder) as address:
            for kind in self.ALL:
                with self.subTest(kind):
                    self.write_manifest(getattr(self, kind))
                    # Without --live-duration: a static presentation is played as a whole.
                    self.expect_clear(self.split(address + "/stream.mpd"))
                    self.assertEqual(os.listdir(self.path("tmp")), [])

    def test_decoded_pictures_are_those_of_the_file(self):
        self.write_manifest(self.indexed)
        written = self.split("stream.mpd")["stream_PerID_p_RepID_v0.out.264"]
        self.assertEqual(frame_checksums(written, "v:0"), frame_checksums(self.path("clear_v0.mp4"), "v:0"))

    def test_index_that_is_no_index_is_told_and_the_others_are_written(self):
        self.write_manifest(lambda name: self.indexed(name).replace('indexRange="', 'indexRange="1') if name == "v1"
                            else self.indexed(name))
        outputs = self.split("stream.mpd", expect=1)
        self.assertEqual(self.errors, 'ERROR: In DASH manifest, in <segmentBase>, the "indexRange" value is incorrect, it '
                         'must indicate the location of a "sidx" box.\n')
        self.assertEqual(self.read(outputs["stream_PerID_p_RepID_v0.out.264"]), self.clear["v0"])
        self.assertEqual(self.read(outputs["stream_PerID_p_RepID_a.out.aac"]), self.clear["a"])

    def test_segments_of_two_periods_make_the_whole(self):
        """The second Period goes on in the numbers and times of the first one."""
        counts = {name: self.cut(name) for name in self.files}
        text = '<MPD type="static">'
        for period, (first, count) in ("one", (1, 2)), ("two", (3, None)):
            text += '<Period id="%s" duration="PT3S"><AdaptationSet>' % period
            for name in self.files:
                repeats = (counts[name] - first if count is None else count - 1)
                text += '<Representation id="%s" bandwidth="1" mimeType="%s"><SegmentTemplate startNumber="%d" ' \
                        'initialization="$RepresentationID$_init.mp4" media="$RepresentationID$_$Number$.m4s">' \
                        '<SegmentTimeline><S t="%d" d="1" r="%d"/></SegmentTimeline></SegmentTemplate>' \
                        '</Representation>' % (name, MIME[name], first, first - 1, repeats)
            text += "</AdaptationSet></Period>"
        # Longer than either, so that the timelines end the walks.
        self.put("stream.mpd", (text.replace('duration="PT3S"', 'duration="PT30S"') + "</MPD>").encode())
        outputs = self.split("stream.mpd")
        self.assertEqual(len(outputs), 6)
        parts = [self.read(outputs["stream_PerID_%s_RepID_a.out.aac" % period]) for period in ("one", "two")]
        self.assertEqual(b"".join(parts), self.clear["a"])
        self.assertGreater(min(map(len, parts)), 100)
        for name in "v0", "v1":
            pictures = [frame_checksums(outputs["stream_PerID_%s_RepID_%s.out.264" % (period, name)], "v:0")
                        for period in ("one", "two")]
            self.assertEqual([len(part) for part in pictures], [50, 100])
            self.assertEqual(sum(pictures, []), frame_checksums(self.path("clear_%s.mp4" % name), "v:0"))


class Encrypted(Packaged):
    def encrypt_all(self, kid):
        for name, data in self.made.items():
            # Length, unit header and some of the slice header stay clear.
            self.files[name] = encrypt(data, 0 if name == "a" else 16, KEY, kid)

    def test_each_addressing_gives_the_clear_streams(self):
        self.encrypt_all(KID)
        for kind in self.ALL:
            with self.subTest(kind):
                self.write_manifest(getattr(self, kind), in_set=protection(KID))
                self.expect_clear(self.split("stream.mpd", "--decryption-keys", KID + ":" + KEY))

    def test_key_id_of_the_manifest_finds_the_key(self):
        """The files name an id that no key is given for."""
        self.encrypt_all(OTHER_KID)
        for place in "in_set", "in_representation":
            with self.subTest(place):
                self.write_manifest(self.indexed, **{place: protection(KID)})
                self.expect_clear(self.split("stream.mpd", "--decryption-keys", KID + ":" + KEY))

    def test_key_id_of_the_files_finds_the_key_without_the_manifests(self):
        self.encrypt_all(KID)
        self.write_manifest(self.indexed)
        self.expect_clear(self.split("stream.mpd", "--decryption-keys", KID + ":" + KEY))

    def test_own_key_for_each_representation(self):
        keys = {"v0": ("1" * 32, "2" * 32), "v1": ("3" * 32, "4" * 32), "a": ("5" * 32, "6" * 32)}
        for name, data in self.made.items():
            self.files[name] = encrypt(data, 0 if name == "a" else 16, keys[name][1], OTHER_KID)
        self.write_manifest(lambda name: protection(keys[name][0]) + self.indexed(name))
        self.expect_clear(self.split("stream.mpd", "--decryption-keys", ",".join(map(":".join, keys.values()))))

    def test_missing_key_fails_the_run(self):
        self.encrypt_all(KID)
        self.write_manifest(self.indexed, in_set=protection(KID))
        self.split("stream.mpd", expect=1)
        self.split("stream.mpd", "--decryption-keys", OTHER_KID + ":" + KEY, expect=1)

    def test_wrong_key_gives_other_bytes(self):
        self.encrypt_all(KID)
        self.write_manifest(self.indexed, in_set=protection(KID))
        outputs = self.split("stream.mpd", "--decryption-keys", KID + ":" + KEY[::-1])
        written = self.read(outputs["stream_PerID_p_RepID_a.out.aac"])
        self.assertEqual(len(written), len(self.clear["a"]))
        self.assertNotEqual(written, self.clear["a"])


if __name__ == "__main__":
    unittest.main()
