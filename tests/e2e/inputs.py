"""Inputs whose streams are known to the byte."""

import struct


def box(kind, *parts):
    body = b"".join(parts)
    return struct.pack(">I4s", 8 + len(body), kind) + body


def track(number, sizes, offsets):
    """A track of samples without a codec that is known, so that they are written as they stand."""
    entry = box(b"zzzz", bytes(6), b"\0\1", bytes(20))
    stbl = box(b"stbl", box(b"stsd", bytes(4), struct.pack(">I", 1), entry),
               box(b"stts", struct.pack(">IIII", 0, 1, len(sizes), 1000)),
               box(b"stsc", struct.pack(">IIIII", 0, 1, 1, 1, 1)),
               box(b"stsz", struct.pack(">III", 0, 0, len(sizes)), struct.pack(">%dI" % len(sizes), *sizes)),
               box(b"stco", struct.pack(">II", 0, len(offsets)), struct.pack(">%dI" % len(offsets), *offsets)))
    mdia = box(b"mdia", box(b"mdhd", bytes(12), struct.pack(">II", 1000, 0), b"\x55\xc4\0\0"),
               box(b"hdlr", bytes(8), b"meta", bytes(13)), box(b"minf", box(b"nmhd", bytes(4)), stbl))
    return box(b"trak", box(b"tkhd", bytes(12), struct.pack(">I", number), bytes(68)), mdia)


def mp4(tracks):
    """A plain file; `tracks` holds the samples of each, which lie in turn in the file."""
    turns = max(len(samples) for samples in tracks)

    def build(first):
        offsets, at = [[] for _ in tracks], first
        for turn in range(turns):
            for index, samples in enumerate(tracks):
                if turn < len(samples):
                    offsets[index].append(at)
                    at += len(samples[turn])
        moov = box(b"moov", box(b"mvhd", bytes(12), struct.pack(">II", 1000, 0), bytes(80)),
                   *(track(i + 1, [len(s) for s in samples], offsets[i]) for i, samples in enumerate(tracks)))
        return box(b"ftyp", b"isom\0\0\0\1isom") + moov

    head = build(0)
    data = b"".join(samples[turn] for turn in range(turns) for samples in tracks if turn < len(samples))
    return build(len(head) + 8) + struct.pack(">I4s", 8 + len(data), b"mdat") + data


def samples(name, count, size):
    """`count` samples of `size` bytes, no two alike."""
    return [((b"%s %d " % (name, i)) * (size // 4))[:size] for i in range(count)]


# ---- fragmented files -------------------------------------------------------------------------------

def words(*values):
    return struct.pack(">%dI" % len(values), *values)


def initialization():
    """A track of a coding that nothing is known of: its samples come out as they are."""
    tables = [box(b"stsd", words(0, 1), box(b"zzzz", bytes(78)))]
    tables += [box(kind, words(0, 0)) for kind in (b"stts", b"stsc", b"stco")] + [box(b"stsz", words(0, 0, 0))]
    media = box(b"mdia", box(b"mdhd", words(0, 0, 0, 1000, 0), b"\x55\xc4\0\0"), box(b"hdlr", words(0, 0), b"vide", bytes(13)),
                box(b"minf", box(b"stbl", *tables)))
    track = box(b"trak", box(b"tkhd", words(0, 0, 0, 1), bytes(68)), media)
    return box(b"ftyp", b"isom", words(1), b"isom") + box(
        b"moov", box(b"mvhd", words(0, 0, 0, 1000, 0), bytes(80)), track, box(b"mvex", box(b"trex", words(0, 1, 1, 0, 0, 0))))


def segment(text, duration=2000):
    """One sample."""
    def moof(offset):
        trun = box(b"trun", words(0x301, 1, offset, duration, len(text)))
        return box(b"moof", box(b"mfhd", words(0, 1)), box(b"traf", box(b"tfhd", words(0x20000, 1)), trun))

    return moof(len(moof(0)) + 8) + box(b"mdat", text)


# ---- transport streams ------------------------------------------------------------------------------

def packet(pid, start, payload, counter=0):
    stuffing = 184 - len(payload)
    head = bytes([0x47, (0x40 if start else 0) | pid >> 8, pid & 255])
    if stuffing == 0:
        return head + bytes([0x10 | counter]) + payload
    field = bytes([stuffing - 1]) + (b"\0" + b"\xff" * (stuffing - 2) if stuffing > 1 else b"")
    return head + bytes([0x30 | counter]) + field + payload


def ts(payloads, pid=257):
    """A transport stream with one ADTS stream: one PES packet for each payload, or for the only one."""
    payloads = [payloads] if isinstance(payloads, bytes) else payloads
    pat = bytes([0, 0, 0xB0, 13, 0, 1, 0xC1, 0, 0, 0, 1, 0xE1, 0, 0, 0, 0, 0])
    pmt = bytes([0, 2, 0xB0, 18, 0, 1, 0xC1, 0, 0, 0xE0 | pid >> 8, pid & 255, 0xF0, 0, 0x0F, 0xE0 | pid >> 8,
                 pid & 255, 0xF0, 0, 0, 0, 0, 0])
    out, counter = [packet(0, True, pat), packet(256, True, pmt)], 0
    for payload in payloads:
        pes = b"\0\0\1\xC0" + (len(payload) + 3).to_bytes(2, "big") + b"\x80\0\0" + payload
        for at in range(0, len(pes), 184):
            out.append(packet(pid, at == 0, pes[at:at + 184], counter))
            counter = (counter + 1) % 16
    return b"".join(out)
