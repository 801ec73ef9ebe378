#include "src/tsTableParse/stream_selection.h"

#include <algorithm>
#include <array>
#include <string>

#include "src/log/logging.h"
#include "src/tsTableParse/es_output.h"
#include "src/tsTableParse/pes_assembly.h"

namespace mediasplit {

namespace {

struct TypeExtension {
    std::int64_t key;  // stream type or descriptor tag
    const char* extension;
};

constexpr std::array kAudioTypes = {TypeExtension{kTypeMpegAudio, ""},
                                    TypeExtension{kTypeAdts, "adts"},
                                    TypeExtension{kTypeLatm, "aac"}, TypeExtension{kTypeAc3, "ac3"},
                                    TypeExtension{kTypeEc3, "ec3"}};

constexpr std::array kVideoTypes = {
    TypeExtension{kTypeMpeg1Video, "mpeg"}, TypeExtension{kTypeMpeg2Video, "mpeg"},
    TypeExtension{kTypeAvc, "h264"}, TypeExtension{kTypeHevc, "h265"}};

// Tags that tell the codec of private data, the one that wins first.
constexpr std::array kAudioTags = {TypeExtension{kTagAc4, "ac4"}, TypeExtension{kTagEc3Dvb, "ec3"},
                                   TypeExtension{kTagEc3Atsc, "ec3"},
                                   TypeExtension{kTagAc3, "ac3"}};
constexpr std::array kVideoTags = {TypeExtension{kTagAvcVideo, "h264"},
                                   TypeExtension{kTagHevcVideo, "h265"}};

bool has_tag(const TsElementaryStream& stream, std::int64_t tag) {
    return std::any_of(stream.descriptors.begin(), stream.descriptors.end(),
                       [tag](const TsDescriptor& descriptor) { return descriptor.tag == tag; });
}

template <std::size_t kRows>
const char* extension_by_tag(const std::array<TypeExtension, kRows>& rows,
                             const TsElementaryStream& stream) {
    for (const auto& row : rows) {
        if (has_tag(stream, row.key)) {
            return row.extension;
        }
    }
    return nullptr;
}

template <std::size_t kRows>
const char* extension_by_type(const std::array<TypeExtension, kRows>& rows, std::int64_t type) {
    for (const auto& row : rows) {
        if (row.key == type) {
            return row.extension;
        }
    }
    return nullptr;
}

// The extension of `stream`, or nullptr if it isn't of this kind.
template <std::size_t kTypes, std::size_t kTags>
const char* extension_of(const std::array<TypeExtension, kTypes>& types,
                         const std::array<TypeExtension, kTags>& tags,
                         const TsElementaryStream& stream) {
    return stream.stream_type == kTypePrivateData ? extension_by_tag(tags, stream)
                                                  : extension_by_type(types, stream.stream_type);
}

// Opens the stream's file. A name that is refused is reported, and creating goes on with no name.
Status create_file(TsOutputFiles& files, const char* extension, std::uint32_t kind,
                   std::int64_t pid, const TsContext& context) {
    std::string name;
    const Status status = buildFileName_ts(name, pid, context, extension, files);
    (void)esCreateWriteCallback(name, kind, pid, files);
    return status;
}

Status select_audio(TsOutputFiles& files, const TsElementaryStream& stream, const char* extension,
                    TsContext& context) {
    TsStreamInfo& info = context.stream_info;
    const bool is_selected = tsPacketParserGetAudioStreamIdx(context, stream.elementary_pid) >= 0;
    if (is_selected) {
        return Status::kOk;
    }
    if (info.audio_count == kMaxTsAudioStreams) {
        note_remark("A program has more audio streams than can be taken apart; one was dropped.");
        return Status::kOk;
    }
    const Status status = create_file(files, extension, 0, stream.elementary_pid, context);
    info.audio_pid[info.audio_count] = static_cast<std::int32_t>(stream.elementary_pid);
    info.audio_type[info.audio_count] = static_cast<std::uint32_t>(stream.stream_type);
    ++info.audio_count;
    return status;
}

Status select_video(TsOutputFiles& files, const TsElementaryStream& stream, const char* extension,
                    TsContext& context) {
    if (stream.elementary_pid == context.video_pid) {
        return Status::kOk;
    }
    if (context.video_pid != -1) {
        return Logging_err_type_check(context.loglist, 4075, {});
    }
    const Status status = create_file(files, extension, 1, stream.elementary_pid, context);
    context.video_pid = stream.elementary_pid;
    return status;
}

}  // namespace

Status select_stream(TsOutputFiles& files, const TsElementaryStream& stream, TsContext& context) {
    Status status = Status::kOk;
    if (const char* extension = extension_of(kAudioTypes, kAudioTags, stream);
        extension != nullptr) {
        status |= select_audio(files, stream, extension, context);
    }
    if (const char* extension = extension_of(kVideoTypes, kVideoTags, stream);
        extension != nullptr) {
        status |= select_video(files, stream, extension, context);
    }
    return status;
}

}  // namespace mediasplit
