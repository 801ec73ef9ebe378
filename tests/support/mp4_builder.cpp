#include "tests/support/mp4_builder.h"

#include <algorithm>

namespace mediasplit::mp4 {

namespace {

Bytes number(std::uint64_t value, int width) {
    Bytes bytes;
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
    return bytes;
}

void append(Bytes& out, const Bytes& more) {
    out.insert(out.end(), more.begin(), more.end());
}

std::uint32_t packed_language(std::string_view language) {
    std::uint32_t word = 0;
    for (const char letter : language.substr(0, 3)) {
        word = word << 5 | (static_cast<unsigned char>(letter) - 0x60U);
    }
    return word;
}

Bytes units_of(const std::vector<Bytes>& units) {
    Bytes out;
    for (const Bytes& unit : units) {
        append(out, u16(unit.size()));
        append(out, unit);
    }
    return out;
}

// Where the chunks of a plain file's tracks begin, relative to the `mdat` payload.
struct Layout {
    std::vector<std::vector<std::uint64_t>> chunk_offsets;  // of each track
    Bytes data;
};

Layout lay_out(const MovieSpec& movie) {
    Layout layout;
    layout.chunk_offsets.resize(movie.tracks.size());
    const std::size_t step = std::max<std::size_t>(movie.samples_per_chunk, 1);
    std::size_t longest = 0;
    for (const TrackSpec& track : movie.tracks) {
        longest = std::max(longest, track.samples.size());
    }
    for (std::size_t first = 0; first < longest; first += step) {
        for (std::size_t t = 0; t < movie.tracks.size(); ++t) {
            const std::vector<SampleSpec>& samples = movie.tracks[t].samples;
            if (first >= samples.size()) {
                continue;
            }
            layout.chunk_offsets[t].push_back(layout.data.size());
            for (std::size_t i = first; i < std::min(first + step, samples.size()); ++i) {
                append(layout.data, samples[i].data);
            }
        }
    }
    return layout;
}

std::vector<SencRow> senc_rows(const TrackSpec& track, std::size_t first, std::size_t count) {
    std::vector<SencRow> rows;
    for (std::size_t i = first; i < std::min(first + count, track.samples.size()); ++i) {
        rows.push_back(track.samples[i].senc);
    }
    return rows;
}

Bytes sample_table(const MovieSpec& movie, const TrackSpec& track,
                   const std::vector<std::uint64_t>& offsets) {
    Rows durations;
    Rows compositions;
    Rows syncs;
    std::vector<std::uint32_t> sizes;
    bool has_composition = false;
    for (std::size_t i = 0; i < track.samples.size(); ++i) {
        const SampleSpec& sample = track.samples[i];
        durations.push_back({1, sample.duration});
        compositions.push_back({1, static_cast<std::uint32_t>(sample.composition_offset)});
        has_composition = has_composition || sample.composition_offset != 0;
        sizes.push_back(static_cast<std::uint32_t>(sample.data.size()));
        if (sample.is_sync) {
            syncs.push_back({static_cast<std::uint32_t>(i + 1)});
        }
    }
    const std::uint32_t step = std::max<std::uint32_t>(movie.samples_per_chunk, 1);
    Rows chunk_rows;
    if (!offsets.empty()) {
        chunk_rows.push_back({1, step, 1});
        const auto rest = static_cast<std::uint32_t>(track.samples.size() % step);
        if (rest != 0) {
            if (offsets.size() == 1) {
                chunk_rows.back()[1] = rest;
            } else {
                chunk_rows.push_back({static_cast<std::uint32_t>(offsets.size()), rest, 1});
            }
        }
    }
    std::vector<Bytes> parts = {stsd(track.entries), table_box("stts", durations)};
    if (has_composition) {
        parts.push_back(table_box("ctts", compositions));
    }
    if (syncs.size() != track.samples.size()) {
        parts.push_back(table_box("stss", syncs));
    }
    parts.push_back(table_box("stsc", chunk_rows));
    parts.push_back(stsz(sizes));
    if (movie.use_co64) {
        parts.push_back(co64(offsets));
    } else {
        Rows rows;
        for (const std::uint64_t offset : offsets) {
            rows.push_back({static_cast<std::uint32_t>(offset)});
        }
        parts.push_back(table_box("stco", rows));
    }
    if (track.write_senc && !track.samples.empty()) {
        parts.push_back(
            senc(senc_rows(track, 0, track.samples.size()), track.senc_with_subsamples));
    }
    return box("stbl", parts);
}

Bytes trak(const MovieSpec& movie, const TrackSpec& track,
           const std::vector<std::uint64_t>& offsets) {
    std::uint32_t duration = 0;
    for (const SampleSpec& sample : track.samples) {
        duration += sample.duration;
    }
    const Bytes header = track.handler == "soun" ? full_box("smhd", 0, 0, {zeros(4)})
                                                 : full_box("vmhd", 0, 1, {zeros(8)});
    const Bytes dinf = box("dinf", {full_box("dref", 0, 0, {u32(1), full_box("url ", 0, 1)})});
    const Bytes mdia =
        box("mdia", {mdhd(track.time_scale, offsets.empty() ? 0 : duration, track.language),
                     hdlr(track.handler),
                     box("minf", {header, dinf, sample_table(movie, track, offsets)})});
    return box("trak", {tkhd(track.track_id), track.edits.empty() ? Bytes{} : edts(track.edits),
                        track.extra, mdia});
}

Bytes moov(const MovieSpec& movie, const Layout& layout, std::uint64_t mdat_payload_offset) {
    std::vector<Bytes> parts = {mvhd(movie.timescale)};
    for (std::size_t t = 0; t < movie.tracks.size(); ++t) {
        std::vector<std::uint64_t> offsets = layout.chunk_offsets[t];
        for (std::uint64_t& offset : offsets) {
            offset += mdat_payload_offset;
        }
        parts.push_back(trak(movie, movie.tracks[t], offsets));
    }
    return box("moov", parts);
}

constexpr std::uint32_t kSyncFlags = 0x02000000;
constexpr std::uint32_t kNonSyncFlags = 0x01010000;

Bytes run_fields(const SampleSpec& sample) {
    return join({u32(sample.duration), u32(sample.data.size()),
                 u32(sample.is_sync ? kSyncFlags : kNonSyncFlags),
                 u32(static_cast<std::uint32_t>(sample.composition_offset))});
}

struct FragmentPart {
    const TrackSpec* track = nullptr;
    std::size_t first = 0;
    std::size_t count = 0;
    std::uint64_t data_offset = 0;  // in the `mdat` payload
};

Bytes traf(const MovieSpec& movie, const FragmentPart& part, std::uint64_t moof_offset,
           std::uint64_t payload_offset) {
    const TrackSpec& track = *part.track;
    const bool from_moof = movie.default_base_is_moof;
    const Bytes header =
        from_moof ? tfhd(track.track_id) : tfhd(track.track_id, 1, {u64(moof_offset)});
    std::vector<Bytes> run = {u32(part.count), u32(payload_offset + part.data_offset)};
    std::uint64_t decode_time = 0;
    for (std::size_t i = 0; i < part.first + part.count; ++i) {
        if (i < part.first) {
            decode_time += track.samples[i].duration;
        } else {
            run.push_back(run_fields(track.samples[i]));
        }
    }
    std::vector<Bytes> parts = {header, full_box("tfdt", 1, 0, {u64(decode_time)}),
                                full_box("trun", 0, 0xF01, {join(run)})};
    if (track.write_senc) {
        parts.push_back(senc(senc_rows(track, part.first, part.count), track.senc_with_subsamples));
    }
    return box("traf", parts);
}

Bytes moof_and_mdat(const MovieSpec& movie, const std::vector<FragmentPart>& parts,
                    const Bytes& data, std::uint64_t file_offset, std::uint32_t sequence_number) {
    // The size of a `moof` doesn't depend on the offsets in it.
    Bytes moof;
    for (int pass = 0; pass < 2; ++pass) {
        std::vector<Bytes> children = {full_box("mfhd", 0, 0, {u32(sequence_number)})};
        const std::uint64_t payload_offset = moof.size() + 8;
        for (const FragmentPart& part : parts) {
            children.push_back(traf(movie, part, file_offset, payload_offset));
        }
        moof = box("moof", children);
    }
    return join({moof, box("mdat", {data})});
}

}  // namespace

Bytes u8(std::uint64_t value) {
    return number(value, 1);
}
Bytes u16(std::uint64_t value) {
    return number(value, 2);
}
Bytes u24(std::uint64_t value) {
    return number(value, 3);
}
Bytes u32(std::uint64_t value) {
    return number(value, 4);
}
Bytes u64(std::uint64_t value) {
    return number(value, 8);
}

Bytes text(std::string_view characters) {
    return {characters.begin(), characters.end()};
}

Bytes repeat(std::uint8_t value, std::size_t count) {
    return Bytes(count, value);
}

Bytes join(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& part : parts) {
        append(out, part);
    }
    return out;
}

Bytes join(const std::vector<Bytes>& parts) {
    Bytes out;
    for (const Bytes& part : parts) {
        append(out, part);
    }
    return out;
}

Bytes hex(std::string_view digits) {
    Bytes out;
    int pending = -1;
    for (const char digit : digits) {
        constexpr std::string_view kDigits = "0123456789abcdef";
        const std::size_t value =
            kDigits.find(static_cast<char>(digit >= 'A' && digit <= 'F' ? digit + 32 : digit));
        if (value == std::string_view::npos) {
            continue;
        }
        if (pending < 0) {
            pending = static_cast<int>(value);
        } else {
            out.push_back(static_cast<std::uint8_t>(pending << 4 | static_cast<int>(value)));
            pending = -1;
        }
    }
    return out;
}

Bytes box_of_size(std::uint64_t told_size, std::string_view type,
                  std::initializer_list<Bytes> parts) {
    return join({u32(told_size), text(type), join(parts)});
}

Bytes large_box_of_size(std::uint64_t told_size, std::string_view type,
                        std::initializer_list<Bytes> parts) {
    return join({u32(1), text(type), u64(told_size), join(parts)});
}

Bytes box(std::string_view type, const std::vector<Bytes>& parts) {
    const Bytes payload = join(parts);
    return join({u32(payload.size() + 8), text(type), payload});
}

Bytes box(std::string_view type, std::initializer_list<Bytes> parts) {
    return box(type, std::vector<Bytes>(parts));
}

Bytes full_box(std::string_view type, std::uint32_t version, std::uint32_t flags,
               std::initializer_list<Bytes> parts) {
    return box(type, {u8(version), u24(flags), join(parts)});
}

Bytes large_box(std::string_view type, std::initializer_list<Bytes> parts) {
    const Bytes payload = join(parts);
    return large_box_of_size(payload.size() + 16, type, {payload});
}

Bytes ftyp(std::string_view major, const std::vector<std::string>& compatible) {
    std::vector<Bytes> parts = {text(major), u32(0)};
    for (const std::string& brand : compatible) {
        parts.push_back(text(brand));
    }
    return box("ftyp", parts);
}

Bytes styp(std::string_view major, const std::vector<std::string>& compatible) {
    Bytes bytes = ftyp(major, compatible);
    bytes[4] = 's';
    return bytes;
}

Bytes mvhd(std::uint32_t timescale) {
    return full_box(
        "mvhd", 0, 0,
        {zeros(8), u32(timescale), u32(0), u32(0x10000), u16(0x100), zeros(10), u32(0x10000),
         zeros(12), u32(0x10000), zeros(12), u32(0x40000000), zeros(24), u32(1000)});
}

Bytes tkhd(std::uint32_t track_id, std::uint32_t version) {
    return full_box("tkhd", version, 3,
                    {zeros(version == 1 ? 16 : 8), u32(track_id), zeros(version == 1 ? 68 : 64)});
}

Bytes mdhd(std::uint32_t time_scale, std::uint32_t duration, std::string_view language,
           std::uint32_t version) {
    return full_box(
        "mdhd", version, 0,
        {zeros(version == 1 ? 16 : 8), u32(time_scale),
         version == 1 ? u64(duration) : u32(duration), u16(packed_language(language)), u16(0)});
}

Bytes hdlr(std::string_view handler) {
    return full_box("hdlr", 0, 0, {u32(0), text(handler), zeros(12), text("test"), u8(0)});
}

Bytes edts(const std::vector<EditSpec>& edits, std::uint32_t version) {
    std::vector<Bytes> rows = {u32(edits.size())};
    for (const EditSpec& edit : edits) {
        const auto media_time = static_cast<std::uint64_t>(edit.media_time);
        rows.push_back(version == 1 ? u64(edit.segment_duration) : u32(edit.segment_duration));
        rows.push_back(version == 1 ? u64(media_time) : u32(media_time));
        rows.push_back(u32(0x10000));
    }
    return box("edts", {full_box("elst", version, 0, {join(rows)})});
}

Bytes table_box(std::string_view type, const Rows& rows) {
    Bytes payload = join({u32(0), u32(rows.size())});
    for (const std::vector<std::uint32_t>& row : rows) {
        for (const std::uint32_t word : row) {
            append(payload, u32(word));
        }
    }
    return box(type, {payload});
}

Bytes stsz(const std::vector<std::uint32_t>& sizes) {
    Bytes payload = join({u32(0), u32(0), u32(sizes.size())});
    for (const std::uint32_t size : sizes) {
        append(payload, u32(size));
    }
    return box("stsz", {payload});
}

Bytes stsz_constant(std::uint32_t size, std::uint32_t count) {
    return box("stsz", {u32(0), u32(size), u32(count)});
}

Bytes co64(const std::vector<std::uint64_t>& offsets) {
    Bytes payload = join({u32(0), u32(offsets.size())});
    for (const std::uint64_t offset : offsets) {
        append(payload, u64(offset));
    }
    return box("co64", {payload});
}

Bytes trex(std::uint32_t track_id, std::uint32_t description, std::uint32_t duration,
           std::uint32_t size, std::uint32_t flags) {
    return full_box("trex", 0, 0,
                    {u32(track_id), u32(description), u32(duration), u32(size), u32(flags)});
}

Bytes tfhd(std::uint32_t track_id, std::uint32_t flags, std::initializer_list<Bytes> fields) {
    return full_box("tfhd", 0, flags, {u32(track_id), join(fields)});
}

Bytes trun(std::uint32_t flags, std::uint32_t count, std::initializer_list<Bytes> fields) {
    return full_box("trun", 0, flags, {u32(count), join(fields)});
}

Bytes video_entry(std::string_view type, std::uint32_t width, std::uint32_t height,
                  std::initializer_list<Bytes> children) {
    return box(type,
               {zeros(6), u16(1), zeros(16), u16(width), u16(height), u32(0x480000), u32(0x480000),
                u32(0), u16(1), zeros(32), u16(24), u16(0xFFFF), join(children)});
}

Bytes audio_entry(std::string_view type, std::uint32_t channels, std::uint32_t sample_size,
                  std::uint32_t sample_rate, std::initializer_list<Bytes> children) {
    return box(type, {zeros(6), u16(1), zeros(8), u16(channels), u16(sample_size), u16(0), u16(0),
                      u16(sample_rate), u16(0), join(children)});
}

Bytes stsd(const std::vector<Bytes>& entries) {
    return full_box("stsd", 0, 0, {u32(entries.size()), join(entries)});
}

Bytes avcC(const std::vector<Bytes>& sps, const std::vector<Bytes>& pps,
           std::uint32_t length_size_minus_one) {
    Bytes head = {1, 0x64, 0, 0x28};
    if (!sps.empty() && sps.front().size() >= 4) {
        std::copy_n(sps.front().begin() + 1, 3, head.begin() + 1);
    }
    return box("avcC", {head, u8(0xFC | length_size_minus_one), u8(0xE0 | sps.size()),
                        units_of(sps), u8(pps.size()), units_of(pps)});
}

Bytes hvcC(const std::vector<HevcArray>& arrays, std::uint32_t length_size_minus_one) {
    std::vector<Bytes> parts = {u8(1),
                                u8(1),
                                u32(0x60000000),
                                u16(0x9000),
                                u32(0),
                                u8(120),
                                u16(0xF000),
                                u8(0xFC),
                                u8(0xFD),
                                u8(0xF8),
                                u8(0xF8),
                                u16(0),
                                u8(0x0C | length_size_minus_one),
                                u8(arrays.size())};
    for (const HevcArray& array : arrays) {
        parts.push_back(u8(0x80 | array.type));
        parts.push_back(u16(array.units.size()));
        parts.push_back(units_of(array.units));
    }
    return box("hvcC", parts);
}

Bytes esds(const Bytes& decoder_specific_info, std::uint32_t object_type) {
    const Bytes specific = join({u8(5), u8(decoder_specific_info.size()), decoder_specific_info});
    const Bytes decoder =
        join({u8(4), u8(13 + specific.size()), u8(object_type), u8(0x15), zeros(11), specific});
    const Bytes sync_layer = hex("060102");
    return full_box(
        "esds", 0, 0,
        {u8(3), u8(3 + decoder.size() + sync_layer.size()), u16(1), u8(0), decoder, sync_layer});
}

Bytes prsm_config(std::string_view type, std::uint32_t profile, std::uint32_t level,
                  std::uint32_t compatible_id, std::uint32_t md_compression) {
    const std::uint32_t word =
        profile << 17 | level << 11 | 1U << 10 | 1U << 8 | compatible_id << 4 | md_compression << 2;
    return box(type, {u8(1), u8(0), u24(word), zeros(19)});
}

Bytes frma(std::string_view format) {
    return box("frma", {text(format)});
}

Bytes schm(std::string_view scheme, std::uint32_t version) {
    return full_box("schm", 0, 0, {text(scheme), u32(version)});
}

Bytes tenc(const TencSpec& spec) {
    return full_box(
        "tenc", spec.version, 0,
        {u8(0), u8(spec.pattern), u8(spec.is_protected), u8(spec.iv_size), spec.kid,
         spec.constant_iv ? join({u8(spec.constant_iv->size()), *spec.constant_iv}) : Bytes{}});
}

Bytes sinf(std::string_view format, std::string_view scheme, const TencSpec& spec) {
    return box("sinf", {frma(format), schm(scheme), box("schi", {tenc(spec)})});
}

Bytes senc(const std::vector<SencRow>& rows, bool with_subsamples) {
    std::vector<Bytes> parts = {u32(with_subsamples ? 2 : 0), u32(rows.size())};
    for (const SencRow& row : rows) {
        parts.push_back(row.iv);
        if (with_subsamples) {
            parts.push_back(u16(row.subsamples.size()));
            for (const SubsampleSpec& subsample : row.subsamples) {
                parts.push_back(join({u16(subsample.clear_bytes), u32(subsample.protected_bytes)}));
            }
        }
    }
    return box("senc", parts);
}

Bytes plain_file(const MovieSpec& movie) {
    const Layout layout = lay_out(movie);
    const Bytes mdat = box("mdat", {layout.data});
    // The size of a `moov` doesn't depend on the offsets in it.
    const std::size_t moov_size = moov(movie, layout, 0).size();
    const std::uint64_t payload = movie.ftyp_box.size() + 8 + (movie.moov_first ? moov_size : 0);
    const Bytes head = moov(movie, layout, payload);
    return movie.moov_first ? join({movie.ftyp_box, head, mdat})
                            : join({movie.ftyp_box, mdat, head});
}

Bytes initialization_segment(const MovieSpec& movie) {
    MovieSpec empty = movie;
    std::vector<Bytes> parts = {mvhd(movie.timescale)};
    std::vector<Bytes> defaults;
    for (TrackSpec& track : empty.tracks) {
        track.samples.clear();
        parts.push_back(trak(empty, track, {}));
        defaults.push_back(trex(track.track_id));
    }
    parts.push_back(box("mvex", defaults));
    return join({movie.ftyp_box, box("moov", parts)});
}

Bytes media_segment(const MovieSpec& movie, std::size_t first, std::size_t count,
                    std::uint64_t file_offset, std::uint32_t sequence_number) {
    Bytes out;
    Bytes data;
    std::vector<FragmentPart> parts;
    const auto flush = [&] {
        if (!parts.empty()) {
            append(out,
                   moof_and_mdat(movie, parts, data, file_offset + out.size(), sequence_number++));
        }
        parts.clear();
        data.clear();
    };
    for (const TrackSpec& track : movie.tracks) {
        if (first >= track.samples.size()) {
            continue;
        }
        const std::size_t taken = std::min(count, track.samples.size() - first);
        parts.push_back({&track, first, taken, data.size()});
        for (std::size_t i = first; i < first + taken; ++i) {
            append(data, track.samples[i].data);
        }
        if (!movie.in_one_moof) {
            flush();
        }
    }
    flush();
    return out;
}

Bytes fragmented_file(const MovieSpec& movie) {
    Bytes out = initialization_segment(movie);
    std::size_t longest = 0;
    for (const TrackSpec& track : movie.tracks) {
        longest = std::max(longest, track.samples.size());
    }
    const std::size_t step = std::max<std::size_t>(movie.samples_per_fragment, 1);
    std::uint32_t sequence_number = 1;
    for (std::size_t first = 0; first < longest; first += step) {
        append(out, media_segment(movie, first, step, out.size(), sequence_number));
        sequence_number += movie.in_one_moof ? 1 : static_cast<std::uint32_t>(movie.tracks.size());
    }
    return out;
}

Bytes all_sample_data(const TrackSpec& track) {
    Bytes out;
    for (const SampleSpec& sample : track.samples) {
        append(out, sample.data);
    }
    return out;
}

}  // namespace mediasplit::mp4
