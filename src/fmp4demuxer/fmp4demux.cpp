#include "src/fmp4demuxer/fmp4demux.h"

#include <optional>
#include <utility>

#include "src/fmp4demuxer/checks/manifest_records.h"
#include "src/fmp4demuxer/outputs.h"
#include "src/fmp4demuxer/sample_decryption.h"
#include "src/fmp4demuxer/sample_loop.h"
#include "src/fmp4demuxer/source_name.h"
#include "src/fmp4demuxer/track_driver.h"
#include "src/mp4demuxer/mp4demuxer.h"

namespace mediasplit {
namespace {

std::optional<std::string> owned(OptText text) {
    return text ? std::optional<std::string>(text.str()) : std::nullopt;
}

void add(Status* status, Status more) {
    if (status != nullptr) {
        *status |= more;
    }
}

bool lies_behind(const InputFile& file, const ByteRange& range) {
    const std::int64_t size = FileSize(file);
    return size >= 0 && range.length != 0 && range.start >= static_cast<std::uint64_t>(size);
}

// Puts the file to the first byte of its range, or of the whole file without one. Fails for a range
// of which the file has nothing.
Status open_range(InputFile& file, const std::optional<ByteRange>& range) {
    if (range && lies_behind(file, *range)) {
        return Status::kCantOpen;
    }
    file.range_active = range ? 1 : 0;
    file.range_start = range ? static_cast<std::int64_t>(range->start) : 0;
    file.range_left = range ? static_cast<std::int64_t>(range->length) : 0;
    return ReOpenFileEx(file);
}

}  // namespace

std::unique_ptr<Mp4Demuxer> fmp4demux_create(OptText output_dir, OptText output_base,
                                             OptText output_suffix,
                                             ManifestContext* manifest_context,
                                             DashContext* dash_context, OptText key_text,
                                             OptText key_list, Status* status, Loglist* loglist,
                                             std::uint32_t track_filter) {
    std::unique_ptr<Mp4Demuxer> demuxer = mp4demuxer_create();
    if (manifest_context != nullptr && dash_context != nullptr) {
        add(status, Logging_err_type_check(loglist, 3006, {}, kDriverSourceName, 98));
        return nullptr;
    }
    demuxer->input_mode = kInputFile;
    demuxer->output_dir = owned(output_dir);
    demuxer->output_base = owned(output_base);
    demuxer->output_suffix = owned(output_suffix);
    demuxer->manifest_context = manifest_context;
    demuxer->dash_context = dash_context;
    if (dash_context != nullptr) {
        demuxer->input_mode = kInputDash;
    } else if (manifest_context != nullptr) {
        demuxer->input_mode = kInputHls;
        if (manifest_context->is_iframe_stream != 0) {
            demuxer->input_mode = kInputHlsIframe;
            demuxer->output_dir.reset();
        }
    }
    demuxer->loglist = loglist;
    demuxer->track_filter = track_filter;
    demuxer->key_list = owned(key_list);
    if (key_text) {
        const Status converted = take_content_key(*demuxer, *key_text);
        if (converted != Status::kOk) {
            add(status, converted);
            return nullptr;
        }
    }
    return demuxer;
}

void fmp4demux_share_outputs(Mp4Demuxer& demuxer, OutputRegistry& registry) {
    if (demuxer.outputs == nullptr) {
        demuxer.outputs = std::make_shared<OutputSet>();
    }
    demuxer.outputs->registry = &registry;
}

Status fmp4demux(InputFile* file, const SegmentSlot* slot, Mp4Demuxer* demuxer,
                 std::unique_ptr<SegmentTiming>* timing) {
    if (file == nullptr || demuxer == nullptr) {
        return Logging_err_type_check(nullptr, 3006, {}, kDriverSourceName, 160);
    }
    ManifestRecords manifest;
    const Status resolved = find_manifest_records(*demuxer, manifest);
    if (resolved != Status::kOk) {
        return resolved;
    }
    const std::optional<ByteRange> range = byte_range_of(slot);
    demuxer->tree_root = nullptr;
    mp4demuxer_update(demuxer, range ? range->start : 0,
                      range ? static_cast<std::uint32_t>(range->length) : 0);
    mp4demuxer_parse_boxes(*demuxer, *file);

    const KeySetup keys = set_up_decryption(*demuxer);
    Status status = keys.status;
    if (!keys.usable) {
        return status;
    }
    if (demuxer->output_dir) {
        size_output_slots(*demuxer);
    }
    if (!selection_exists(*demuxer)) {
        return status | Logging_err_type_check(demuxer->loglist, 4011, {}, demuxer->track_filter);
    }
    status |= check_languages(*demuxer);
    status |= open_tracks(*demuxer, entry_checks_due(slot));
    if (open_range(*file, range) != Status::kOk) {
        const ByteRange told = range.value_or(ByteRange{});
        return status | Logging_err_type_check(demuxer->loglist, 4065, {}, told.start, told.length,
                                               file->name);
    }
    status |= walk_samples(*demuxer, *file, timing);
    return status | flush_outputs(*demuxer);
}

Status fmp4demux_destroy(std::unique_ptr<Mp4Demuxer> demuxer) {
    if (demuxer == nullptr) {
        return Status::kOk;
    }
    const Status status = close_outputs(*demuxer);
    demuxer->decrypt.reset();
    mp4demuxer_destroy(std::move(demuxer));
    return status;
}

}  // namespace mediasplit
