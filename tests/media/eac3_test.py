"""E-AC-3 from the encoder of ffmpeg, in MP4 and in transport streams: what is told and what is written."""

import re
import struct
import unittest

from media_support import FIRST_PID, MediaCase, copied_bytes, ffmpeg, payload_places, payloads, run

PMT_PID = 0x1000  # where ffmpeg puts the program map

# A stream of 32 kHz breaks one rule in each frame. Its line stands once for the time slices of a block, which are
# all alike, and once for the stream so far.
RATE_LINE = "    074 - FAILURE: Orvel Audio Plus: I0: Sample rate is not 48kHz."
LINES_OF_A_BLOCK = [RATE_LINE, RATE_LINE]

BAD_SYNC = re.compile(
    r"\n\nFATAL ERROR:  Invalid syncword detected while detecting byte order\n\nError occurred in:\n"
    r"\.\./\.\./\.\./\.\./oapinfolib/src/dit_fio\.\w+ \(line \d+\)\n\n")

# The descriptor of a stereo main service (ATSC A/52 Annex G): no further flags.
SERVICE = bytes([0x80, 0x80 | 1 << 6 | 2, 0x3F])
ATSC = bytes([0xCC, len(SERVICE)]) + SERVICE
DVB = bytes([0x7A, len(SERVICE)]) + SERVICE


def crc32_mpeg(data):
    """The check value of a section (ISO/IEC 13818-1 Annex A)."""
    value = 0xFFFFFFFF
    for byte in data:
        value ^= byte << 24
        for _ in range(8):
            value = (value << 1 ^ (0x04C11DB7 if value & 0x80000000 else 0)) & 0xFFFFFFFF
    return value


def with_program_map(data, stream_type, descriptors):
    """The stream with another program map: one E-AC-3 stream of this type."""
    stream = struct.pack(">BHH", stream_type, 0xE000 | FIRST_PID, 0xF000 | len(descriptors)) + descriptors
    body = struct.pack(">HBBBHH", 1, 0xC1, 0, 0, 0xE000 | FIRST_PID, 0xF000) + stream
    section = struct.pack(">BH", 2, 0xB000 | len(body) + 4) + body
    section += struct.pack(">I", crc32_mpeg(section))
    changed = bytearray(data)
    for at in range(0, len(data), 188):
        if (data[at + 1] & 0x1F) << 8 | data[at + 2] == PMT_PID:
            header = bytes([0x47, data[at + 1], data[at + 2], 0x10 | data[at + 3] & 0x0F, 0])
            changed[at:at + 188] = (header + section).ljust(188, b"\xFF")
    return bytes(changed)


def flipped(data, place):
    """One bit of one byte turned over."""
    return data[:place] + bytes([data[place] ^ 0x10]) + data[place + 1:]


class Eac3Case(MediaCase):
    def encode(self, name, rate=32000, *options):
        ffmpeg("-f", "lavfi", "-i", "sine=f=440:r=%d:d=2" % rate, "-ac", "2", "-c:a", "eac3", "-b:a", "192k", *options,
               self.path(name))
        return self.read(self.path(name))

    def store(self, name, data):
        with open(self.path(name), "wb") as file:
            file.write(data)

    def told(self, name, expected_lines, expected_errors=""):
        """Splits a file and gives its outputs; both streams hold these lines and no other."""
        outputs = self.split(name)
        lines = [line for line in self.printed.splitlines() if not line.startswith("skip box file: ")]
        self.assertEqual(lines, expected_lines + ["Succeed to demultiplex " + name])
        if isinstance(expected_errors, str):
            self.assertEqual(self.errors, expected_errors)
        else:
            self.assertRegex(self.errors, re.compile("^(?:%s)$" % expected_errors.pattern))
        return outputs


class InMp4(Eac3Case):
    def samples(self, name):
        """Offset and size of each sample."""
        text = run("ffprobe", "-v", "error", "-select_streams", "a:0", "-show_entries", "packet=pos,size", "-of",
                   "csv=p=0", self.path(name)).decode()
        return sorted((int(pos), int(size)) for size, pos in
                      (line.strip(",").split(",")[:2] for line in text.split()))

    def check_bytes(self, name, outputs):
        data = self.read(self.path(name))
        expected = b"".join(data[at:at + size] for at, size in self.samples(name))
        self.assertGreater(len(expected), 10000)
        self.assertEqual(expected, copied_bytes(self.path(name), "a:0"))
        self.assertEqual(list(outputs), [name.replace(".mp4", "_track_id_1.out.ec3")])
        self.assertEqual(self.read(*outputs.values()), expected)

    def test_good_stream_prints_nothing(self):
        self.encode("clip.mp4", 48000)
        self.check_bytes("clip.mp4", self.told("clip.mp4", []))

    def test_stream_of_six_channels_prints_nothing(self):
        self.encode("clip.mp4", 48000, "-ac", "6")
        self.check_bytes("clip.mp4", self.told("clip.mp4", []))

    def test_broken_rule_is_told_for_each_sample(self):
        self.encode("clip.mp4")
        count = len(self.samples("clip.mp4"))
        self.assertGreater(count, 30)
        self.check_bytes("clip.mp4", self.told("clip.mp4", LINES_OF_A_BLOCK * count))

    def test_sample_with_a_wrong_crc_is_written_and_tells_no_rule(self):
        data = self.encode("clip.mp4")
        samples = self.samples("clip.mp4")
        at, size = samples[10]
        self.store("bad.mp4", flipped(data, at + size // 2))
        self.check_bytes("bad.mp4", self.told("bad.mp4", LINES_OF_A_BLOCK * (len(samples) - 1)))

    def test_sample_without_sync_word_is_written_and_told(self):
        data = self.encode("clip.mp4", 48000)
        at, _ = self.samples("clip.mp4")[10]
        self.store("bad.mp4", flipped(data, at))
        self.check_bytes("bad.mp4", self.told("bad.mp4", [], BAD_SYNC))

    def test_fragmented_file_is_told_sample_by_sample(self):
        self.encode("clip.mp4", 32000, "-movflags", "delay_moov", "-frag_duration", "500000")
        count = len(self.samples("clip.mp4"))
        self.check_bytes("clip.mp4", self.told("clip.mp4", LINES_OF_A_BLOCK * count))


class InTransportStreams(Eac3Case):
    def stream(self, stream_type, descriptors, rate=32000):
        return with_program_map(self.encode("made.ts", rate, "-f", "mpegts"), stream_type, descriptors)

    def check_bytes(self, name, outputs):
        expected = payloads(self.read(self.path(name)), FIRST_PID)
        self.assertGreater(len(expected), 10000)
        self.assertEqual(list(outputs), [name.replace(".ts", "_PID_%d.out.ec3" % FIRST_PID)])
        self.assertEqual(self.read(*outputs.values()), expected)

    def pes_count(self, data):
        return sum(1 for at in range(0, len(data), 188)
                   if data[at + 1] & 0x40 and (data[at + 1] & 0x1F) << 8 | data[at + 2] == FIRST_PID)

    def place_in_a_frame(self, data):
        """File offset of a byte in the midst of a frame that stands half way through the stream."""
        places = payload_places(data, FIRST_PID)
        stream = bytes(data[place] for place in places)
        position = frame = 0
        while frame <= len(stream) // 2:
            self.assertEqual(stream[position:position + 2], b"\x0B\x77")
            frame, size = position, 2 * ((stream[position + 2] & 7) << 8 | stream[position + 3]) + 2
            position += size
        return places[frame + size // 2]

    def test_good_stream_prints_nothing(self):
        for stream_type, descriptor in ((0x87, ATSC), (0x06, DVB)):
            self.store("clip.ts", self.stream(stream_type, descriptor, 48000))
            self.check_bytes("clip.ts", self.told("clip.ts", []))

    def test_broken_rule_is_told_for_each_pes_packet(self):
        for stream_type, descriptor in ((0x87, ATSC), (0x06, DVB)):
            data = self.stream(stream_type, descriptor)
            self.store("clip.ts", data)
            count = self.pes_count(data)
            self.assertGreater(count, 5)
            self.check_bytes("clip.ts", self.told("clip.ts", LINES_OF_A_BLOCK * count))

    def test_stream_without_its_descriptor_is_written_unread(self):
        data = self.encode("clip.ts", 32000, "-f", "mpegts")
        self.check_bytes("clip.ts", self.told("clip.ts", []))
        self.store("other.ts", with_program_map(data, 0x87, DVB))
        self.check_bytes("other.ts", self.told("other.ts", []))

    def test_pes_packet_with_a_wrong_crc_is_written_and_tells_no_rule(self):
        for stream_type, descriptor in ((0x87, ATSC), (0x06, DVB)):
            data = self.stream(stream_type, descriptor)
            self.store("bad.ts", flipped(data, self.place_in_a_frame(data)))
            self.check_bytes("bad.ts", self.told("bad.ts", LINES_OF_A_BLOCK * (self.pes_count(data) - 1)))

    def test_frame_without_sync_word_is_written_and_told(self):
        data = self.stream(0x87, ATSC, 48000)
        # The first frame of a PES packet stands behind its header.
        starts = [at for at in range(0, len(data), 188)
                  if data[at + 1] & 0x40 and (data[at + 1] & 0x1F) << 8 | data[at + 2] == FIRST_PID]
        packet = starts[len(starts) // 2]
        place = next(place for place in payload_places(data, FIRST_PID) if place > packet)
        self.store("bad.ts", flipped(data, place))
        self.check_bytes("bad.ts", self.told("bad.ts", [], BAD_SYNC))


if __name__ == "__main__":
    unittest.main()
