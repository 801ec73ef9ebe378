// Movie fragments (ISO/IEC 14496-12 8.8). A fragment is no structure of its own: each run appends a
// chunk and its samples to the tables of its track, as a plain file would hold them.
#include <algorithm>
#include <bit>

#include "src/log/findings.h"
#include "src/mp4demuxer/box_reader.h"
#include "src/mp4demuxer/handlers.h"
#include "src/mp4demuxer/sample_tables.h"

namespace mediasplit {

namespace {

constexpr std::uint32_t kMaxRunSamples = 65535;

// Flags of `tfhd`.
constexpr std::uint32_t kTfhdBaseDataOffset = 0x1;
constexpr std::uint32_t kTfhdDescription = 0x2;
constexpr std::uint32_t kTfhdDuration = 0x8;
constexpr std::uint32_t kTfhdSize = 0x10;
constexpr std::uint32_t kTfhdFlags = 0x20;

// Flags of `trun`.
constexpr std::uint32_t kTrunDataOffset = 0x1;
constexpr std::uint32_t kTrunFirstFlags = 0x4;
constexpr std::uint32_t kTrunDuration = 0x100;
constexpr std::uint32_t kTrunSize = 0x200;
constexpr std::uint32_t kTrunFlags = 0x400;
constexpr std::uint32_t kTrunComposition = 0x800;
constexpr std::uint32_t kTrunPerSample = kTrunDuration | kTrunSize | kTrunFlags | kTrunComposition;

// Bits of the sample flags.
constexpr std::uint32_t kNonSync = 0x10000;
constexpr std::uint32_t kDependsOn = 0x3000000;
constexpr std::uint32_t kDependsOnNone = 0x2000000;

struct Run {
    std::uint32_t flags = 0;
    std::uint32_t count = 0;
    std::int64_t data_offset = 0;
    std::uint32_t first_flags = 0;
    bool is_implicit = false;  // the box has no bytes for the samples
    [[nodiscard]] bool has(std::uint32_t flag) const { return (flags & flag) != 0; }
};

Mp4Stream* find_track(Mp4Demuxer& demuxer, std::uint32_t track_id, bool last_match) {
    Mp4Stream* found = nullptr;
    for (const auto& stream : demuxer.streams) {
        if (stream->track_id == track_id) {
            found = stream.get();
            if (!last_match) {
                break;
            }
        }
    }
    return found;
}

bool passes_limit(std::uint64_t present, std::uint64_t more, std::size_t row_size) {
    return (present + more) * row_size <= kMaxTableSize;
}

// Chunk offsets of fragments have 64 bits; a `moov` may have left narrow ones.
void widen_chunks(Mp4Stream& stream) {
    if (stream.stco_is_64bit != 0) {
        return;
    }
    const std::vector<std::uint8_t> narrow = std::move(stream.chunks);
    stream.chunks = {};
    for (std::size_t at = 0; at + 4 <= narrow.size(); at += 4) {
        append_u64(stream.chunks, load_u32(narrow, at));
    }
    stream.stco_is_64bit = 1;
}

void append_run_row(std::vector<std::uint8_t>& table, std::uint32_t& rows, std::uint32_t count,
                    std::uint32_t value) {
    append_u32(table, count);
    append_u32(table, value);
    ++rows;
}

// Accounts for samples that the box has no bytes for. False when a file of this size can't hold as
// many.
bool take_implicit_samples(Mp4Demuxer& demuxer, std::uint64_t count) {
    if (count > demuxer.implicit_samples_left) {
        return false;
    }
    demuxer.implicit_samples_left -= count;
    return true;
}

// Makes room for the samples: time row, size rows, one chunk and its row. The order of the tests
// decides what is left behind by a run that fails.
bool append_run(Mp4Demuxer& demuxer, Mp4Stream& stream, const Run& run) {
    if (run.has(kTrunDuration)) {
        if (!passes_limit(stream.stts_count, run.count, kSttsRow)) {
            return false;
        }
    } else {
        append_run_row(stream.stts, stream.stts_count, run.count, stream.default_sample_duration);
        stream.duration += run.count * stream.default_sample_duration;
    }
    stream.has_stts = true;
    if (run.has(kTrunComposition) && !passes_limit(stream.ctts_count, run.count, kCttsRow)) {
        return false;
    }
    if (!passes_limit(stream.num_samples, run.count, kStszRow) ||
        (run.is_implicit && !take_implicit_samples(demuxer, run.count))) {
        return false;
    }
    widen_chunks(stream);
    append_u64(stream.chunks, static_cast<std::uint64_t>(run.data_offset) +
                                  static_cast<std::uint64_t>(stream.base_offset));
    ++stream.num_chunks;
    append_u32(stream.stsc, stream.num_chunks);
    append_u32(stream.stsc, run.count);
    append_u32(stream.stsc, stream.curr_sample_descr_idx);
    ++stream.stsc_count;
    stream.num_samples += run.count;
    return true;
}

bool is_sync(std::uint32_t flags) {
    return (flags & kNonSync) == 0 || (flags & kDependsOn) == kDependsOnNone;
}

void append_samples(PayloadReader& in, Mp4Stream& stream, const Run& run) {
    const std::uint32_t first = stream.num_samples - run.count;
    // With a constant size the rows are never read.
    const bool keeps_sizes = stream.sample_size == 0;
    if (keeps_sizes) {
        stream.stsz.resize(static_cast<std::size_t>(stream.num_samples) * kStszRow);
    }
    for (std::uint32_t i = 0; i < run.count; ++i) {
        if (run.has(kTrunDuration)) {
            const std::uint32_t duration = in.u32();
            append_run_row(stream.stts, stream.stts_count, 1, duration);
            stream.duration += duration;
        }
        const std::uint32_t size = run.has(kTrunSize) ? in.u32() : stream.default_sample_size;
        if (keeps_sizes) {
            store_u32(stream.stsz, (static_cast<std::size_t>(first) + i) * kStszRow, size);
        }
        std::uint32_t flags = stream.default_sample_flag;
        if (run.has(kTrunFlags)) {
            flags = in.u32();
        } else if (i == 0 && run.has(kTrunFirstFlags)) {
            flags = run.first_flags;
        }
        if (is_sync(flags)) {
            append_u32(stream.stss, first + i + 1);
            ++stream.stss_count;
        }
        if (run.has(kTrunComposition)) {
            append_run_row(stream.ctts, stream.ctts_count, 1, in.u32());
        }
    }
}

}  // namespace

HandlerResult parse_box_trex(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    PayloadReader in(file, node.size);
    in.skip(4);
    TrexPending trex;
    trex.valid = 1;
    trex.track_id = in.u32();
    trex.sample_description_index = in.u32();
    trex.default_duration = in.u32();
    trex.default_size = in.u32();
    trex.default_flags = in.u32();
    Mp4Stream* stream = find_track(demuxer, trex.track_id, true);
    if (stream == nullptr) {
        demuxer.trex_pending = trex;
        return kHandled;
    }
    // Deliberate: the default flags of `trex` count nowhere, those of `tfhd` alone do.
    stream->curr_sample_descr_idx = trex.sample_description_index;
    stream->default_sample_duration = trex.default_duration;
    stream->default_sample_size = trex.default_size;
    demuxer.current = nullptr;
    return kHandled;
}

HandlerResult parse_box_mfhd(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_box_skip(demuxer, file, node, tree);
}

HandlerResult parse_box_tfhd(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    PayloadReader in(file, node.size);
    const std::uint32_t flags = in.u32();
    Mp4Stream* stream = find_track(demuxer, in.u32(), false);
    demuxer.current = stream;
    if (stream == nullptr) {
        return kHandled;
    }
    stream->base_is_moof = 1;
    stream->base_offset = demuxer.moof_offset;
    HandlerResult result = kHandled;
    if ((flags & kTfhdBaseDataOffset) != 0) {
        // Deliberate: the offset keeps its low 32 bits, the high ones count as a refusal.
        stream->base_is_moof = 0;
        result = in.u32();
        stream->base_offset = in.u32();
    }
    if ((flags & kTfhdDescription) != 0) {
        stream->curr_sample_descr_idx = in.u32();
    }
    if ((flags & kTfhdDuration) != 0) {
        stream->default_sample_duration = in.u32();
    }
    if ((flags & kTfhdSize) != 0) {
        stream->default_sample_size = in.u32();
    }
    if ((flags & kTfhdFlags) != 0) {
        stream->default_sample_flag = in.u32();
    }
    return result;
}

HandlerResult parse_box_tfdt(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    if (stream->baseMediaDecodeTime == ~std::uint64_t{0}) {
        PayloadReader in(file, node.size);
        const std::uint8_t version = in.u8();
        in.skip(3);
        stream->baseMediaDecodeTime = version == 1 ? in.u64() : in.u32();
    }
    return kHandled;
}

HandlerResult parse_box_trun(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    stream->marks |= kMarkTrun;
    PayloadReader in(file, node.size);
    Run run;
    run.flags = in.u32();
    run.count = in.u32();
    if (run.has(kTrunDataOffset)) {
        run.data_offset = static_cast<std::int32_t>(in.u32());
    } else if (stream->base_is_moof != 0) {
        // Right behind the plain header of an `mdat` that follows the `moof`.
        run.data_offset = demuxer.moof_size + 16;
    }
    if (run.has(kTrunFirstFlags)) {
        run.first_flags = in.u32();
    }
    if (!run.has(kTrunSize) && stream->default_sample_size == 0) {
        return kRefused;
    }
    const bool has_too_many = run.count > kMaxRunSamples;
    const std::uint64_t sample_bytes = 4U * std::popcount(run.flags & kTrunPerSample);
    run.is_implicit = has_too_many || sample_bytes == 0;
    if (!run.is_implicit) {
        // Samples that the box doesn't hold aren't there.
        run.count = static_cast<std::uint32_t>(
            std::min<std::uint64_t>(run.count, in.left() / sample_bytes));
    }
    // Deliberate: a run of too many samples is refused after the tables have grown.
    if (!append_run(demuxer, *stream, run) || has_too_many) {
        note_remark(
            "The samples of a movie fragment were dropped: its run, or the tables that runs add "
            "to, are larger than they may be.");
        return kRefused;
    }
    append_samples(in, *stream, run);
    return kHandled;
}

}  // namespace mediasplit
