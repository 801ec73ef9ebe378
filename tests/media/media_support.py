"""Makes real streams with ffmpeg, runs mediasplit on them and reads what came out with ffmpeg."""

import os
import shutil
import struct
import subprocess
import tempfile
import unittest

PATIENCE = 120  # seconds for any one command

MEDIASPLIT = os.environ.get("MEDIASPLIT", "build/release/src/main/mediasplit")


def run(*words, cwd=None):
    """Runs a command that must succeed and gives its standard output."""
    done = subprocess.run(words, cwd=cwd, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          timeout=PATIENCE)
    if done.returncode != 0:
        raise AssertionError(
            "%s ended with %d:\n%s" % (" ".join(map(str, words)), done.returncode,
                                       done.stderr.decode(errors="replace")[-3000:]))
    return done.stdout


def ffmpeg(*words, cwd=None):
    return run("ffmpeg", "-v", "error", "-nostdin", "-y", "-bitexact", *words, cwd=cwd)


def encoders():
    return run("ffmpeg", "-v", "error", "-encoders").decode()


def frame_checksums(path, selector, *input_options):
    """One checksum for each decoded frame of a stream, in output order, without times."""
    text = run("ffmpeg", "-v", "error", "-nostdin", *input_options, "-i", path, "-map", "0:" + selector,
               "-fps_mode" if selector.startswith("v") else "-async", "passthrough" if selector.startswith("v") else "0",
               "-f", "framemd5", "-").decode()
    return [line.split(",")[-1].strip() for line in text.splitlines() if line and line[0] != "#"]


def copied_bytes(path, selector, muxer="data", *input_options):
    """The packets of a stream as another program copies them."""
    return run("ffmpeg", "-v", "error", "-nostdin", *input_options, "-i", path, "-map", "0:" + selector, "-c",
               "copy", "-f", muxer, "-")


def adts_frame_count(data):
    """Walks a stream of ADTS frames by their frame lengths; every byte must belong to one."""
    position = count = 0
    while position < len(data):
        if data[position] != 0xFF or data[position + 1] & 0xF0 != 0xF0:
            raise AssertionError("no ADTS sync word at %d" % position)
        position += ((data[position + 3] & 3) << 11) | (data[position + 4] << 3) | (data[position + 5] >> 5)
        count += 1
    if position != len(data):
        raise AssertionError("the last ADTS frame is cut")
    return count


FIRST_PID = 256  # ffmpeg numbers the elementary streams of a transport stream from here


def payload_places(data, wanted):
    """File offset of each PES payload byte of a PID: an independent reading of the packets."""
    places = []
    for at in range(0, len(data) - 187, 188):
        assert data[at] == 0x47
        if ((data[at + 1] & 0x1F) << 8 | data[at + 2]) != wanted or not data[at + 3] & 0x10:
            continue
        begin = at + 4 + (1 + data[at + 4] if data[at + 3] & 0x20 else 0)
        if data[at + 1] & 0x40:
            assert data[begin:begin + 3] == b"\0\0\1"
            begin += 9 + data[begin + 8]
        places.extend(range(begin, at + 188))
    return places


def payloads(data, wanted):
    """PES payload bytes of a PID."""
    return bytes(data[place] for place in payload_places(data, wanted))


def packet_count(path, selector):
    text = run("ffprobe", "-v", "error", "-ignore_editlist", "1", "-select_streams", selector, "-count_packets",
               "-show_entries", "stream=nb_read_packets", "-of", "csv=p=0", path).decode()
    return int(text.split()[0].strip(","))


class MediaCase(unittest.TestCase):
    """A test with a folder of its own.

    `split` runs the program and gives its outputs; what it said is kept in `printed` and `errors`.
    """

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="mediasplit_media_")
        self.addCleanup(shutil.rmtree, self.folder, True)

    def path(self, name):
        return os.path.join(self.folder, name)

    def split(self, name, *options, expect=0):
        out = self.path("out_" + name.replace("/", "_").replace("%", "_"))
        done = subprocess.run([os.path.abspath(MEDIASPLIT), "-i", name, "-o", out, *options], cwd=self.folder,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=PATIENCE)
        self.assertEqual(done.returncode, expect, done.stdout.decode() + done.stderr.decode())
        self.printed = done.stdout.decode()
        self.errors = done.stderr.decode()
        last = self.printed.splitlines()[-1]
        self.assertEqual(last, "%s to demultiplex %s" % ("Failed" if expect else "Succeed", name))
        return {entry: os.path.join(out, entry) for entry in sorted(os.listdir(out))}

    @staticmethod
    def read(path):
        with open(path, "rb") as file:
            return file.read()


# ---- box surgery on whole files -------------------------------------------------------------------

def insert_box(data, path, skip, box):
    """Puts `box` at the end of the box at `path` (a list of types) and grows its parents.

    `skip` tells how many payload bytes stand before the children of a type on the path.
    """
    position, end = 0, len(data)
    parents = []
    for wanted in path:
        while position + 8 <= end:
            size, kind = struct.unpack(">I4s", data[position:position + 8])
            if kind == wanted:
                break
            position += size
        else:
            raise AssertionError("no box %r" % wanted)
        parents.append(position)
        end = position + size
        position += 8 + skip.get(wanted, 0)
    grown = bytearray(data)
    for parent in parents:
        size = struct.unpack(">I", grown[parent:parent + 4])[0]
        grown[parent:parent + 4] = struct.pack(">I", size + len(box))
    return bytes(grown[:end]) + box + bytes(grown[end:])
