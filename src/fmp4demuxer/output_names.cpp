#include "src/fmp4demuxer/output_names.h"

#include <optional>
#include <utility>

#include "base/osal.h"
#include "src/file_util/name_parts.h"
#include "src/fmp4demuxer/checks/prisma_codecs.h"
#include "src/fmp4demuxer/dash_context.h"
#include "src/fmp4demuxer/source_name.h"
#include "src/log/logging.h"
#include "src/records/manifest_context.h"

namespace mediasplit {
namespace {

void append_video(std::string& stem, const ManifestContext& context) {
    if (context.codecs) {
        append_pieces(stem, {"_Codec_", get_main_codec(context.codecs)});
    }
    if (context.bandwidth) {
        append_pieces(stem, {"_Bitrate_", *context.bandwidth, "bps"});
    }
}

std::string playlist_stem(std::string stem, const ManifestContext& context,
                          std::string_view extension, std::uint32_t stream_type) {
    if (stream_type == kStreamAudio) {
        append_rendition(stem, context);
    } else if (stream_type == kStreamVideo) {
        append_video(stem, context);
    } else if (extension == kUnknownExtension) {
        stem = "_Codec_" + context.codecs.value_or(std::string{});
        append_pieces(stem, {"_", std::to_string(osal_get_time())});
    }
    return stem;
}

std::string representation_stem(std::string stem, const DashContext& context) {
    if (!context.period_id || !append_pieces(stem, {"_PerID_", *context.period_id})) {
        append_pieces(stem, {"_PerIdx_", std::to_string(context.period_index)});
    }
    if (context.representation_id) {
        append_pieces(stem, {"_RepID_", *context.representation_id});
    }
    return stem;
}

}  // namespace

std::string track_file_name(const Mp4Demuxer& demuxer, std::uint32_t stream_index,
                            std::string_view extension) {
    std::string name = demuxer.output_dir.value_or(std::string{}) + "/" +
                       demuxer.output_base.value_or(std::string{});
    if (demuxer.output_suffix) {
        name += "_" + *demuxer.output_suffix;
    }
    // Track ids are written as signed numbers.
    name += "_track_id_";
    name += std::to_string(static_cast<std::int32_t>(demuxer.streams[stream_index]->track_id));
    name += ".out.";
    name += extension;
    return name;
}

Status buildFullName_mp4(std::string* name, const Mp4Demuxer* demuxer, std::uint32_t stream_index,
                         OptText extension, std::uint32_t stream_type) {
    if (name == nullptr || demuxer == nullptr || !extension ||
        stream_index >= demuxer->streams.size()) {
        return Logging_err_type_check(nullptr, 3006, {}, kDriverSourceName, 161) | Status::kFailed;
    }
    const std::string_view used = output_extension(*extension);
    std::string stem = demuxer->output_base.value_or(std::string{});
    if (demuxer->input_mode == kInputHls && demuxer->manifest_context != nullptr) {
        stem = playlist_stem(std::move(stem), *demuxer->manifest_context, used, stream_type);
    } else if (demuxer->input_mode == kInputDash && demuxer->dash_context != nullptr) {
        stem = representation_stem(std::move(stem), *demuxer->dash_context);
    } else if (demuxer->input_mode == kInputHlsIframe) {
        name->clear();
        return Status::kOk;
    } else {
        *name = track_file_name(*demuxer, stream_index, used);
        return Status::kOk;
    }
    const std::optional<std::string> file_name = output_file_name(stem, used);
    if (!file_name) {
        return Logging_err_type_check(demuxer->loglist, 4079, {}, stem) | Status::kFailed;
    }
    *name = demuxer->output_dir.value_or(std::string{}) + "/" + *file_name;
    return Status::kOk;
}

}  // namespace mediasplit
