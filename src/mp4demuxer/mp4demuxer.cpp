// A presentation from its making to its end, and the containers that mark its tracks and fragments.
#include "src/mp4demuxer/mp4demuxer.h"

#include <algorithm>

#include "src/log/findings.h"
#include "src/mp4demuxer/box_walker.h"
#include "src/mp4demuxer/handlers.h"
#include "src/mp4demuxer/sample_tables.h"

namespace mediasplit {

namespace {

// Samples without bytes of their own that any walk may have, however small its file is.
constexpr std::uint64_t kImplicitSamplesFloor = 0x100000;

void apply_pending_trex(Mp4Demuxer& demuxer, Mp4Stream& stream) {
    TrexPending& pending = demuxer.trex_pending;
    if (pending.valid == 0 || pending.track_id != stream.track_id) {
        return;
    }
    stream.default_sample_duration = pending.default_duration;
    stream.default_sample_size = pending.default_size;
    stream.curr_sample_descr_idx = pending.sample_description_index;
    pending.valid = 0;
}

}  // namespace

std::unique_ptr<Mp4Demuxer> mp4demuxer_create() {
    return std::make_unique<Mp4Demuxer>();
}

std::uint32_t mp4demuxer_update(Mp4Demuxer* demuxer, std::uint64_t range_start,
                                std::uint32_t range_length) {
    if (demuxer == nullptr) {
        return 1;
    }
    demuxer->range_start = range_start;
    demuxer->range_length = range_length;
    for (const auto& stream : demuxer->streams) {
        reset_sample_tables(*stream);
    }
    return 0;
}

void mp4demuxer_parse_boxes(Mp4Demuxer& demuxer, InputFile& file) {
    BoxNode& root = demuxer.root;
    const std::int64_t file_size = FileSize(file);
    root.type = fourcc("file");
    if (demuxer.range_start != 0) {
        root.size = demuxer.range_length;
        static_cast<void>(SeekBytes(static_cast<std::int64_t>(demuxer.range_start), file));
    } else {
        root.size = demuxer.range_length != 0 ? demuxer.range_length : file_size;
    }
    if (demuxer.range_length != 0) {
        limit_read_ahead(demuxer.range_length, file);
    }
    demuxer.implicit_samples_left = std::max(
        kImplicitSamplesFloor, static_cast<std::uint64_t>(std::max<std::int64_t>(file_size, 0)));
    static_cast<void>(parse_box_with_index(demuxer, file, root, demuxer.tree_root, 0));
}

void mp4demuxer_destroy(std::unique_ptr<Mp4Demuxer> demuxer) {
    demuxer.reset();
}

HandlerResult parse_box_moof(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    demuxer.moof_offset = static_cast<std::int64_t>(CurrentOffset(file)) - 8;
    demuxer.moof_size = node.size;
    return parse_box(demuxer, file, node, tree);
}

HandlerResult parse_box_traf(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    const HandlerResult result = parse_box(demuxer, file, node, tree);
    demuxer.current = nullptr;
    return result;
}

HandlerResult parse_box_trak(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    if (demuxer.streams.size() >= kMaxTracks) {
        note_remark("A track was dropped: there are more than 256 of them.");
        return kRefused;
    }
    demuxer.streams.push_back(std::make_unique<Mp4Stream>());
    demuxer.stream_count = static_cast<std::uint32_t>(demuxer.streams.size());
    Mp4Stream& stream = *demuxer.streams.back();
    demuxer.current = &stream;
    const HandlerResult result = parse_box(demuxer, file, node, tree);
    apply_pending_trex(demuxer, stream);
    demuxer.current = nullptr;
    return result;
}

}  // namespace mediasplit
