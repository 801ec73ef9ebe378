#!/usr/bin/env python3
"""Times whole runs of mediasplit beside peers on the same input, in turn, and prints the ratios.

Inputs of about 1 GB are made once (ffmpeg) in a scratch folder and kept there: --scratch, by default
/tmp/mediasplit_bench. Figures are medians of --runs turns; the page cache is warm. No figure is judged.
Beside the wall clock stands the processor time of a run, which other work on the machine disturbs less.
With --table FILE all figures are also written there as one table, with the machine and the command lines.
"""

import argparse
import collections
import os
import shutil
import statistics
import struct
import subprocess
import time

GIGABYTE = 1_000_000_000
FRAGMENTED = ("-movflags", "+frag_keyframe+empty_moov")


def run(words):
    subprocess.run(words, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def measure(words, fresh):
    """Wall seconds, processor seconds and peak resident KiB of one run; `fresh` folders and files are removed first."""
    for path in fresh:
        shutil.rmtree(path, ignore_errors=True)
        if os.path.isfile(path):
            os.remove(path)
        if path.endswith("/"):
            os.makedirs(path)
    started = time.monotonic()
    pid = os.fork()
    if pid == 0:
        null = os.open(os.devnull, os.O_RDWR)
        for stream in (0, 1, 2):
            os.dup2(null, stream)
        os.execvp(words[0], words)
    _, status, usage = os.wait4(pid, 0)
    elapsed = time.monotonic() - started
    if status != 0:
        raise SystemExit("%s ended with status %d" % (" ".join(words), status))
    return elapsed, usage.ru_utime + usage.ru_stime, usage.ru_maxrss


Row = collections.namedtuple("Row", "title name wall cpu peak ratio cpu_ratio words")
FLOORS = ("cp", "cp -r", "dd bs=1M", "openssl aes-128-ctr", "cksum")

TABLE_HEAD = """# Performance

Written by `make bench`; `bench/whole_program.py` makes the inputs and tells the figures. Medians of %d turns, in which
the contenders take turns; inputs and outputs in the page cache. "ours/this" above 1 means that mediasplit takes longer
than the line's program. Nothing here is a limit that a test holds.

The floors: `cp` copies inside the kernel, `dd` reads and writes every byte, as a program must that looks at them,
`openssl` is the bare cipher, `cksum` one pass with a check word, `cat` one pass. Between `cp` and `dd` lies the second
copy of every byte, out of the kernel and back. It could be had for nothing only by working on the page cache in place,
where a file that another program changes or cuts short would change under checks that were made already.

Machine: %s.

| Input | Program | Wall s | Processor s | Peak MiB | Ours/this, wall | Ours/this, processor |
|---|---|---|---|---|---|---|
"""


def machine():
    with open("/proc/cpuinfo") as file:
        model = [line.split(":")[1].strip() for line in file if line.startswith("model name")]
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    return "%d x %s, %.0f GiB, load of %.1f at the end" % (len(model), model[0], memory, os.getloadavg()[0])


class Bench:
    def __init__(self, options):
        self.options = options
        self.rows = []
        self.notes = []
        self.peaks = []

    def path(self, name):
        return os.path.join(self.options.scratch, name)

    def write_table(self):
        if not self.options.table:
            return
        with open(self.options.table, "w") as file:
            file.write(TABLE_HEAD % (self.options.runs, machine()))
            for row in self.rows:
                file.write("| %s | %s | %.3f | %.3f | %.1f | %.2f | %.2f |\n" % row[:-1])
            self.write_distances(file)
            self.write_memory(file)
            file.write("\nCommand lines, with the scratch folder left out:\n\n")
            for row in self.rows:
                words = " ".join(row.words).replace(self.options.scratch + "/", "")
                file.write("- %s, %s: `%s`\n" % (row.title, row.name, words.replace(self.options.program, "mediasplit")))
            for note in self.notes:
                file.write("\n" + note + "\n")
            if self.options.kernels:
                with open(self.options.kernels) as kernels:
                    file.write("\nKernels, and decryption beside the bare cipher:\n\n```\n%s```\n" % kernels.read())

    def write_distances(self, file):
        file.write("\n## Distance to the floor\n\n| Input | Floor | Wall | Processor |\n|---|---|---|---|\n")
        for row in self.rows:
            if row.name in FLOORS:
                file.write("| %s | `%s` | %.2f | %.2f |\n" % (row.title, row.name, row.ratio, row.cpu_ratio))

    def write_memory(self, file):
        if self.peaks:
            file.write("\n## Peak memory\n\nMiB for a short and for a long input; what grows is the index tables.\n\n"
                       "| Input | MB | Peak | MB | Peak |\n|---|---|---|---|---|\n")
            for row in self.peaks:
                file.write("| %s | %.0f | %.1f | %.0f | %.1f |\n" % row)

    def make(self, name, build):
        path = self.path(name)
        if not os.path.exists(path):
            print("making", name, flush=True)
            build(path + ".part" + os.path.splitext(name)[1])
            os.replace(path + ".part" + os.path.splitext(name)[1], path)
        return path

    def split(self, source, *words):
        return [self.options.program, "-i", source, "-o", self.path("out/").rstrip("/"), *words]

    def compare(self, title, contenders):
        """`contenders`: name to command; the first is ours. Each gets one run not counted."""
        results = {name: [] for name in contenders}
        for turn in range(self.options.runs + 1):
            for name, words in contenders.items():
                figure = measure(words, [self.path("out/")])
                if turn > 0:
                    results[name].append(figure)
        print("\n" + title)
        base = None
        for name, figures in results.items():
            wall, cpu, _ = (statistics.median(column) for column in zip(*figures))
            peak = max(peak for _, _, peak in figures) / 1024
            base = base or (wall, cpu)
            row = Row(title, name, wall, cpu, peak, base[0] / wall, base[1] / max(cpu, 1e-3), contenders[name])
            print("  %-24s %8.3f s   processor %7.3f s   peak %7.1f MiB   ours/this %5.2f   by processor %5.2f" % row[1:7])
            self.rows.append(row)
            self.write_table()

    def clip(self):
        """Some seconds of 60 Mbit/s 1080p H.264 and AAC."""
        return self.make("clip.mp4", lambda path: run(
            ["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "testsrc2=s=1920x1080:r=25:d=8,noise=alls=60:allf=t",
             "-f", "lavfi", "-i", "sine=f=440:r=48000:d=8", "-c:v", "libx264", "-preset", "ultrafast", "-b:v", "60M",
             "-maxrate", "60M", "-bufsize", "60M", "-pix_fmt", "yuv420p", "-c:a", "aac", "-b:a", "192k", path]))

    def looped(self, name, *words, size=GIGABYTE):
        times = size // os.path.getsize(self.clip())
        return self.make(name, lambda path: run(
            ["ffmpeg", "-v", "error", "-y", "-stream_loop", str(times), "-i", self.clip(), "-c", "copy", *words, path]))

    def against_copies(self, title, source, ffmpeg_outputs):
        out = self.path("out")
        copies = [word.replace("OUT", out) for word in ffmpeg_outputs]
        self.compare("%s, %.0f MB" % (title, os.path.getsize(source) / 1e6), {
            "mediasplit": self.split(source),
            "cp": ["cp", source, out + "/copy"],
            "dd bs=1M": ["dd", "if=" + source, "of=" + out + "/copy", "bs=1M"],
            "ffmpeg -c copy": ["ffmpeg", "-v", "error", "-nostdin", "-y", "-i", source, *copies],
        })

    def mp4(self):
        streams = ["-map", "0:v", "-c", "copy", "OUT/v.h264", "-map", "0:a", "-c", "copy", "OUT/a.aac"]
        self.against_copies("plain MP4", self.looped("plain.mp4"), streams)
        self.against_copies("fragmented MP4", self.looped("fragmented.mp4", *FRAGMENTED), streams)

    def ts(self):
        streams = ["-map", "0:v", "-c", "copy", "OUT/v.h264", "-map", "0:a", "-c", "copy", "OUT/a.aac"]
        self.against_copies("transport stream", self.looped("stream.ts"), streams)

    def playlist(self):
        """A master playlist of 10 renditions beside a copy of all its streams."""
        folder = self.make("playlist", lambda path: write_playlist(path, self.clip()))
        source = os.path.join(folder, "master.m3u8")
        size = sum(entry.stat().st_size for entry in os.scandir(folder))
        self.compare("HLS presentation of 10 renditions, %.0f MB" % (size / 1e6), {
            "mediasplit": self.split(source),
            "cp -r": ["cp", "-r", folder, self.path("out/copy")],
            "ffmpeg -c copy": ["ffmpeg", "-v", "error", "-nostdin", "-y", "-i", source, "-map", "0", "-c", "copy",
                               self.path("out/all.mkv")],
        })

    def encrypted(self):
        """Decryption beside the bare cipher, which decryption_ratio times on its own."""
        source = self.make("encrypted.mp4", lambda path: run(
            ["ffmpeg", "-v", "error", "-y", "-i", self.looped("plain.mp4"), "-map", "0:v", "-c", "copy", "-encryption_scheme",
             "cenc-aes-ctr", "-encryption_key", "00112233445566778899aabbccddeeff", "-encryption_kid",
             "0123456789abcdef0123456789abcdef", path]))
        self.compare("encrypted MP4 (cenc), %.0f MB" % (os.path.getsize(source) / 1e6), {
            "mediasplit": self.split(source, "--decryption-keys",
                                     "0123456789abcdef0123456789abcdef:00112233445566778899aabbccddeeff"),
            "cp": ["cp", source, self.path("out/copy")],
            "openssl aes-128-ctr": ["openssl", "enc", "-aes-128-ctr", "-K", "00112233445566778899aabbccddeeff", "-iv",
                                    "0" * 32, "-in", source, "-out", self.path("out/copy")],
            "ffmpeg -c copy": ["ffmpeg", "-v", "error", "-nostdin", "-y", "-decryption_key",
                               "00112233445566778899aabbccddeeff", "-i", source, "-c", "copy",
                               self.path("out/v.h264")],
        })

    def eac3(self, name, size):
        tone = self.make("tone.ec3", lambda part: run(
            ["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "anoisesrc=d=60:r=48000:a=0.3", "-ac", "6", "-c:a", "eac3",
             "-b:a", "640k", "-f", "eac3", part]))
        return self.make(name, lambda path: repeat(tone, path, size))

    def ac4(self, name, size):
        return self.make(name, lambda path: write_ac4(path, size))

    def packed_aac(self, name, size):
        """A playlist with a single long segment, and that segment."""
        tone = self.make("tone.aac", lambda part: run(
            ["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "anoisesrc=d=60:r=48000:a=0.3", "-ac", "2", "-c:a", "aac",
             "-b:a", "320k", "-f", "adts", part]))
        segment = self.make(name + ".aac", lambda path: repeat(tone, path, size, time_tag()))
        with open(self.path(name + ".m3u8"), "w") as out:
            out.write("#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\n%s.aac\n#EXT-X-ENDLIST\n" % name)
        return self.path(name + ".m3u8"), segment

    def elementary(self):
        """Streams that are only read and checked: beside a pass over the bytes, and one with a check word."""
        for title, source in [("E-AC-3 stream", self.eac3("stream.ec3", GIGABYTE)),
                              ("AC-4 stream", self.ac4("stream.ac4", GIGABYTE))]:
            contenders = {"mediasplit": self.split(source), "cat": ["cat", source], "cksum": ["cksum", source]}
            if source.endswith(".ec3"):  # ffmpeg reads no AC-4
                contenders["ffmpeg -c copy"] = ["ffmpeg", "-v", "error", "-nostdin", "-i", source, "-c", "copy", "-f",
                                                "null", "-"]
            self.compare("%s, %.0f MB" % (title, os.path.getsize(source) / 1e6), contenders)

    def packed(self):
        """Packed audio comes in segments of a playlist."""
        source, segment = self.packed_aac("packed", GIGABYTE)
        self.compare("packed AAC, %.0f MB" % (os.path.getsize(segment) / 1e6), {
            "mediasplit": self.split(source),
            "cp": ["cp", segment, self.path("out/copy")],
            "dd bs=1M": ["dd", "if=" + segment, "of=" + self.path("out/copy"), "bs=1M"],
            "ffmpeg -c copy": ["ffmpeg", "-v", "error", "-nostdin", "-y", "-i", segment, "-c", "copy", self.path("out/a.aac")],
        })

    def dash(self):
        """A presentation of 10 Representations beside a copy of all its streams, and many readings of one manifest."""
        folder = self.make("dash", lambda path: write_presentation(path, self.clip()))
        source = os.path.join(folder, "stream.mpd")
        size = sum(entry.stat().st_size for entry in os.scandir(folder))
        self.compare("DASH presentation of 10 Representations, %.0f MB" % (size / 1e6), {
            "mediasplit": self.split(source),
            "cp -r": ["cp", "-r", folder, self.path("out/copy")],
            "ffmpeg -c copy": ["ffmpeg", "-v", "error", "-nostdin", "-y", "-i", source, "-map", "0", "-c", "copy",
                               self.path("out/all.mkv")],
        })
        self.large_manifests()

    def large_manifests(self):
        """Peak memory of workers that each read the manifest; they share one segment."""
        for representations, megabytes in ((1, 1), (50, 1), (1, 20), (50, 20)):
            folder = self.make("mpd_%d_%d" % (representations, megabytes), lambda path, count=representations, size=megabytes:
                               write_large_manifest(path, count, size))
            figures = [measure(self.split(os.path.join(folder, "stream.mpd")), [self.path("out/")])
                       for _ in range(self.options.runs)]
            self.notes.append("%d Representations of a manifest of %d MB: %.3f s, peak %.1f MiB." %
                              (representations, megabytes, statistics.median(wall for wall, _, _ in figures),
                               max(peak for _, _, peak in figures) / 1024))
            print("\n" + self.notes[-1])

    def ranges(self):
        """One file that a playlist names range by range, as it comes out of a single-file packager."""
        folder = self.make("ranges", write_ranges)
        source = os.path.join(folder, "list.m3u8")
        self.compare("HLS playlist of 3600 byte ranges, %.0f MB" % (os.path.getsize(os.path.join(folder, "list.m4s")) / 1e6), {
            "mediasplit": self.split(source),
            "cp": ["cp", os.path.join(folder, "list.m4s"), self.path("out/copy")],
            "ffmpeg -c copy": ["ffmpeg", "-v", "error", "-nostdin", "-y", "-i", source, "-c", "copy", self.path("out/v.h264")],
        })

    def memory(self):
        """Peaks of two sizes of each format."""
        formats = {
            "plain MP4": lambda tag, size: self.looped(tag + "plain.mp4", size=size),
            "fragmented MP4": lambda tag, size: self.looped(tag + "fragmented.mp4", *FRAGMENTED, size=size),
            "transport stream": lambda tag, size: self.looped(tag + "stream.ts", size=size),
            "E-AC-3 stream": lambda tag, size: self.eac3(tag + "stream.ec3", size),
            "AC-4 stream": lambda tag, size: self.ac4(tag + "stream.ac4", size),
            "packed AAC": lambda tag, size: self.packed_aac(tag + "packed", size),
        }
        for title, make in formats.items():
            figures = []
            for tag, size in (("short_", GIGABYTE // 16), ("", GIGABYTE)):
                source = make(tag, size)
                source, media = source if isinstance(source, tuple) else (source, source)
                figures += [os.path.getsize(media) / 1e6, measure(self.split(source), [self.path("out/")])[2] / 1024]
            self.peaks.append((title, *figures))
            print("\n%s: %.0f MB peak at %.1f MiB, %.0f MB at %.1f MiB" % self.peaks[-1])
        self.write_table()

    def many_samples(self):
        """Ten times the samples; the ratio of the times tells how the walk grows."""
        for kind, counts in (("plain", (200_000, 2_000_000)), ("fragmented", (50_000, 500_000))):
            walls = []
            for count in counts:
                source = self.make("samples_%s_%d.mp4" % (kind, count),
                                   lambda path, k=kind, n=count: write_small_samples(path, k, n))
                walls.append(statistics.median(
                    measure(self.split(source), [self.path("out/")])[0] for _ in range(self.options.runs)))
            self.notes.append("Many samples, %s: %d in %.3f s, %d in %.3f s: %.1f times as long for ten times the samples." %
                              (kind, counts[0], walls[0], counts[1], walls[1], walls[1] / walls[0]))
            print("\n" + self.notes[-1])
            self.write_table()


# ---- presentations ----------------------------------------------------------------------------------

def write_presentation(folder, clip):
    """Nine video and one audio Representation of numbered segments of 2 s."""
    os.makedirs(folder, exist_ok=True)
    maps = ["-map", "0:v"] * 9 + ["-map", "0:a"]
    subprocess.run(["ffmpeg", "-v", "error", "-y", "-i", clip, *maps, "-c", "copy", "-f", "dash", "-seg_duration", "2",
                    "-adaptation_sets", "id=0,streams=v id=1,streams=a", "stream.mpd"], check=True, cwd=folder)


def write_playlist(folder, clip):
    """Eight video and two audio renditions in fragments of 2 s, 1 GB in all."""
    os.makedirs(folder, exist_ok=True)
    maps = ["-map", "0:v"] * 8 + ["-map", "0:a"] * 2
    names = ["v:%d" % i for i in range(8)] + ["a:0", "a:1"]
    subprocess.run(["ffmpeg", "-v", "error", "-y", "-stream_loop", str(GIGABYTE // (8 * os.path.getsize(clip))), "-i", clip,
                    *maps, "-c", "copy", "-f", "hls", "-hls_segment_type", "fmp4", "-hls_time", "2", "-hls_playlist_type",
                    "vod", "-hls_fmp4_init_filename", "init_%v.mp4", "-hls_segment_filename", "s%v_%d.m4s", "-var_stream_map",
                    " ".join(names), "list%v.m3u8"], check=True, cwd=folder)
    # The muxer leaves the codecs of copied video out of its own.
    with open(os.path.join(folder, "master.m3u8"), "w") as master:
        master.write("#EXTM3U\n")
        for i, language in ((8, "en"), (9, "de")):
            master.write('#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="a",NAME="%s",LANGUAGE="%s",URI="list%d.m3u8"\n' %
                         (language, language, i))
        for i in range(8):
            master.write('#EXT-X-STREAM-INF:BANDWIDTH=%d,FRAME-RATE=25,CODECS="avc1.640028,mp4a.40.2",AUDIO="a"\nlist%d.m3u8\n'
                         % (60_000_000 + i, i))


def write_ranges(folder):
    """An hour of small fragments of one second."""
    os.makedirs(folder, exist_ok=True)
    second = os.path.join(folder, "second.mp4")
    run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "testsrc2=s=640x360:r=25:d=1", "-c:v", "libx264", "-preset",
         "ultrafast", "-b:v", "800k", "-pix_fmt", "yuv420p", second])
    subprocess.run(["ffmpeg", "-v", "error", "-y", "-stream_loop", "3599", "-i", second, "-c", "copy", "-f", "hls",
                    "-hls_segment_type", "fmp4", "-hls_flags", "single_file", "-hls_time", "1", "-hls_playlist_type", "vod",
                    "list.m3u8"], check=True, cwd=folder)


def write_large_manifest(folder, representations, megabytes):
    """Timelines that fill the manifest; the first segment lasts longer than the Period."""
    os.makedirs(folder, exist_ok=True)
    row = '<S t="%d" d="1000" r="0" padding="%s"/>\n'
    width = len(row % (10 ** 11, "x" * 150))
    rows = megabytes * 1_000_000 // representations // width
    with open(os.path.join(folder, "stream.mpd"), "w") as out:
        out.write('<MPD><Period duration="PT1S"><AdaptationSet mimeType="audio/mp4">\n')
        for i in range(representations):
            out.write('<Representation id="%d" bandwidth="1"><SegmentTemplate initialization="init.mp4?%d" media="s.mp4">'
                      "<SegmentTimeline>\n" % (i, i))
            out.writelines(row % (10 ** 11 + 1000 * j, "x" * 150) for j in range(rows))
            out.write("</SegmentTimeline></SegmentTemplate></Representation>\n")
        out.write("</AdaptationSet></Period></MPD>\n")
    whole = os.path.join(folder, "whole.mp4")
    write_small_samples(whole, "fragmented", 100)
    with open(whole, "rb") as file:
        data = file.read()
    first = data.index(b"moof") - 4
    with open(os.path.join(folder, "s.mp4"), "wb") as out:
        out.write(data[first:])
    for i in range(representations):
        with open(os.path.join(folder, "init.mp4?%d" % i), "wb") as out:
            out.write(data[:first])


# ---- files of many small samples --------------------------------------------------------------------

def box(kind, *parts):
    body = b"".join(parts)
    return struct.pack(">I4s", 8 + len(body), kind) + body


def movie(tables, extra=b""):
    entry = box(b"ac-3", bytes(6), b"\0\1", bytes(8), b"\0\2\0\x10", bytes(4), struct.pack(">I", 48000 << 16),
                box(b"dac3", b"\x10\x11\x00"))
    stbl = box(b"stbl", box(b"stsd", bytes(4), struct.pack(">I", 1), entry), *tables)
    mdia = box(b"mdia", box(b"mdhd", bytes(12), struct.pack(">II", 48000, 0), b"\x55\xc4\0\0"),
               box(b"hdlr", bytes(8), b"soun", bytes(13)), box(b"minf", box(b"smhd", bytes(8)), stbl))
    track = box(b"trak", box(b"tkhd", bytes(12), struct.pack(">I", 1), bytes(68)), mdia)
    return box(b"moov", box(b"mvhd", bytes(12), struct.pack(">II", 1000, 0), bytes(80)), track, extra)


def write_small_samples(path, kind, count):
    ftyp = box(b"ftyp", b"isom\0\0\0\1isom")
    with open(path, "wb") as out:
        if kind == "plain":
            chunk, size = 100, 16
            chunks = count // chunk
            def tables(first):
                offsets = struct.pack(">II", 0, chunks) + b"".join(
                    struct.pack(">I", first + i * chunk * size) for i in range(chunks))
                return [box(b"stts", struct.pack(">IIII", 0, 1, count, 1536)),
                        box(b"stsc", struct.pack(">IIIII", 0, 1, 1, chunk, 1)),
                        box(b"stsz", struct.pack(">III", 0, 0, count) + struct.pack(">I", size) * count),
                        box(b"stco", offsets)]
            head = len(ftyp) + len(movie(tables(0))) + 8
            out.write(ftyp + movie(tables(head)) + struct.pack(">I4s", 8 + count * size, b"mdat"))
            out.write(bytes(range(16)) * count)
            return
        mvex = box(b"mvex", box(b"trex", bytes(4), struct.pack(">IIIII", 1, 1, 1536, 16, 0)))
        empty = [box(kind, bytes(8)) for kind in (b"stts", b"stsc", b"stco")] + [box(b"stsz", bytes(12))]
        out.write(ftyp + movie(empty, mvex))
        for _ in range(count // 100):
            n = 100
            trun = box(b"trun", struct.pack(">IIi", 0x201, n, 0) + struct.pack(">I", 16) * n)
            moof_size = 8 + 16 + 8 + 16 + len(trun)
            trun = box(b"trun", struct.pack(">IIi", 0x201, n, moof_size + 8) + struct.pack(">I", 16) * n)
            moof = box(b"moof", box(b"mfhd", bytes(8)),
                       box(b"traf", box(b"tfhd", struct.pack(">II", 0x20000, 1)), trun))
            out.write(moof + box(b"mdat", bytes(range(16)) * n))


# ---- elementary streams -----------------------------------------------------------------------------

def time_tag():
    """The ID3 tag that tells a segment's time."""
    private = b"com.apple.streaming.transportStreamTimestamp\0" + bytes(8)
    frame = b"PRIV" + len(private).to_bytes(4, "big") + bytes(2) + private
    return b"ID3\4\0\0" + len(frame).to_bytes(4, "big") + frame


def repeat(source, path, size, head=b""):
    """`head`, then whole copies of `source`, one behind the other, until `size` bytes are reached."""
    with open(source, "rb") as file:
        content = file.read()
    with open(path, "wb") as out:
        out.write(head)
        for _ in range(max(size // len(content), 1)):
            out.write(content)


def write_ac4(path, size):
    """Sync frames of a real table of contents and 1500 bytes each."""
    corpus = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "tests/fuzz/corpus/ac4_analyzer")
    with open(os.path.join(corpus, "stereo"), "rb") as file:
        content = file.read()[1:]
    frame = content[2:2 + int.from_bytes(content[:2], "big")].ljust(1500, b"\0")
    with open(path, "wb") as out:
        for _ in range(size // (len(frame) + 4) // 1000):
            out.write((b"\xac\x40" + len(frame).to_bytes(2, "big") + frame) * 1000)


JOBS = ["mp4", "ts", "playlist", "ranges", "dash", "encrypted", "elementary", "packed", "many_samples", "memory"]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", default="build/bench/src/main/mediasplit")
    parser.add_argument("--scratch", default="/tmp/mediasplit_bench")
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--table", help="the file that the table is written to")
    parser.add_argument("--kernels", help="output of the kernels' benchmarks, which goes into the table's file, too")
    parser.add_argument("jobs", nargs="*", help="some of: %s; default: all" % ", ".join(JOBS))
    options = parser.parse_args()
    options.program = os.path.abspath(options.program)
    os.makedirs(options.scratch, exist_ok=True)
    bench = Bench(options)
    for job in options.jobs or JOBS:
        getattr(bench, job)()


if __name__ == "__main__":
    main()
