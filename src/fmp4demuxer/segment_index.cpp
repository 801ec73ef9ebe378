#include "src/fmp4demuxer/segment_index.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "src/commonfileio/file_descriptor.h"
#include "src/fmp4demuxer/fmp4demux.h"
#include "src/log/logging.h"
#include "src/mp4demuxer/box_reader.h"
#include "src/util/address.h"
#include "src/util/segments.h"
#include "src/util/text.h"

namespace mediasplit {
namespace {

using Head = std::array<std::uint8_t, 8>;

bool holds(const Head& head, std::size_t at, std::string_view text) {
    return std::equal(text.begin(), text.end(), head.begin() + at, [](char c, std::uint8_t byte) {
        return static_cast<std::uint8_t>(c) == byte;
    });
}

int ac3_type(std::uint8_t bsid) {
    if (bsid <= 8) {
        return kFileTypeAc3;
    }
    return bsid >= 11 && bsid <= 16 ? kFileTypeEc3 : kFileTypeUnknown;
}

bool begins_with_box_of_a_file(const Head& head) {
    constexpr std::array<std::string_view, 4> kBoxes{"ftyp", "styp", "sidx", "moof"};
    return std::any_of(kBoxes.begin(), kBoxes.end(),
                       [&](std::string_view type) { return holds(head, 4, type); });
}

int classify(const Head& head) {
    if (head[0] == 'G') {
        return kFileTypeTs;
    }
    if (holds(head, 0, "ID3")) {
        return kFileTypePackedAudio;
    }
    if (holds(head, 0, "#M3U")) {
        return kFileTypePlaylist;
    }
    if (head[0] == 0x0B && head[1] == 0x77) {
        return ac3_type(head[5] >> 3);
    }
    if (head[0] == 0xFF && head[1] == 0xF1) {
        return kFileTypeAdts;
    }
    if (head[0] == 0xAC && (head[1] == 0x40 || head[1] == 0x41)) {
        return kFileTypeAc4;
    }
    return begins_with_box_of_a_file(head) ? kFileTypeMp4 : kFileTypeUnknown;
}

// Sizes of the subsegments, and where the first of them begins.
struct SegmentIndex {
    std::uint64_t first = 0;
    std::vector<std::uint32_t> sizes;
};

// Reads what stands behind the type. `base` is where the index box ends.
SegmentIndex read_index(InputFile& file, std::uint64_t base) {
    SegmentIndex index;
    const std::uint32_t version = f_src_read_u32(file) >> 24;
    const auto read_wide = [&file, version] {
        return version != 0 ? f_src_read_u64(file) : f_src_read_u32(file);
    };
    f_src_read_u64(file);  // reference_ID, timescale
    read_wide();           // earliest_presentation_time
    index.first = base + read_wide();
    f_src_read_u16(file);
    const std::uint16_t count = f_src_read_u16(file);
    for (std::uint32_t i = 0; i < count; ++i) {
        // Deliberate: a reference to another index counts as media.
        index.sizes.push_back(f_src_read_u32(file) & 0x7FFFFFFF);
        f_src_read_u64(file);
    }
    return index;
}

// Sets the file to the index. kFailed, beside 4061, when there is no index.
Status find_index(InputFile& file, const SegmentSlot* slot, Loglist* loglist, std::uint64_t& base) {
    base = 0;
    if (slot != nullptr && slot->byte_range != nullptr) {
        const std::uint64_t start = str2ulonglong(slot->byte_range->offset);
        const std::uint64_t last = str2ulonglong(slot->byte_range->last_byte);
        file.range_active = 1;
        file.range_start = static_cast<std::int64_t>(start);
        file.range_left = static_cast<std::int64_t>(last - start + 1);
        base = last + 1;
        if (const Status opened = ReOpenFileEx(file); opened != Status::kOk) {
            return opened;
        }
    }
    f_src_read_u32(file);
    return check(f_src_read_u32(file) == fourcc("sidx"), loglist, 4061, {});
}

}  // namespace

int get_file_type(OptText name, OptText local_path) {
    const bool remote = name && is_url(*name);
    const OptText path = remote ? local_path : name;
    FileDescriptor file = path ? open_for_reading(path.str()) : FileDescriptor{};
    if (!file) {
        static_cast<void>(Logging_err_type_check(nullptr, 4022, {}, name.view()));
        return kFileTypeUnknown;
    }
    Head head{};
    return file.read(head) < head.size() ? kFileTypeUnknown : classify(head);
}

Status fmp4demux_with_sidx(InputFile& file, const SegmentSlot* slot, Mp4Demuxer* demuxer,
                           List* timing_list) {
    Loglist* loglist = demuxer != nullptr ? demuxer->loglist : nullptr;
    std::uint64_t position = 0;
    Status status = find_index(file, slot, loglist, position);
    if (status != Status::kOk) {
        return status;
    }
    const SegmentIndex index = read_index(file, position);
    position = index.first;
    for (std::uint32_t i = 0; i < index.sizes.size(); ++i) {
        static_cast<void>(Rewind(file));
        SegmentSlot subsegment;
        subsegment.kind = kSlotMediaRange;
        subsegment.uri = file.name;
        subsegment.byte_range = std::make_unique<ByteRangeText>();
        subsegment.byte_range->offset = std::to_string(static_cast<std::int64_t>(position));
        subsegment.byte_range->length = std::to_string(index.sizes[i]);
        status |= check(index.sizes[i] != 0, loglist, 2023, {}, i, file.name);
        status |= safe_output_segment_url(&subsegment, loglist);
        if (index.sizes[i] == 0) {
            // A range without bytes would stand for the whole file.
            continue;
        }
        std::unique_ptr<SegmentTiming> timing;
        status |= fmp4demux(&file, &subsegment, demuxer, &timing);
        if (timing != nullptr) {
            timing->end = i + 1 == index.sizes.size() ? 1 : 0;
            bubbleSegment(timing_list, timing);
        }
        position += index.sizes[i];
    }
    return status;
}

}  // namespace mediasplit
