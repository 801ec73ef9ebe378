#include "src/id3demuxer/id3demux.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <memory>
#include <span>

#include "src/file_util/output_file.h"
#include "src/id3demuxer/es_streams.h"
#include "src/id3demuxer/id3_tag.h"
#include "src/log/logging.h"
#include "src/video/codec_text.h"

namespace mediasplit {

namespace {

constexpr std::uint8_t kLastAc3Bsid = 8;
constexpr std::uint8_t kFirstEac3Bsid = 11;
constexpr std::uint8_t kLastEac3Bsid = 16;

struct Extension {
    PackedKind kind;
    const char* text;
};

constexpr Extension kExtensions[] = {{PackedKind::kAc3, "ac3"},
                                     {PackedKind::kEac3, "ec3"},
                                     {PackedKind::kAac, "aac"},
                                     {PackedKind::kAc4, "ac4"}};

OptText extension_of(PackedKind kind) {
    const auto* const row = std::find_if(std::begin(kExtensions), std::end(kExtensions),
                                         [&](const Extension& at) { return at.kind == kind; });
    return row == std::end(kExtensions) ? OptText() : OptText(row->text);
}

std::int64_t decimal(const std::optional<std::string>& text) {
    return text ? std::strtoll(text->c_str(), nullptr, 10) : 0;
}

std::int64_t decimal_32(const std::optional<std::string>& text) {
    return std::clamp<std::int64_t>(decimal(text), std::numeric_limits<std::int32_t>::min(),
                                    std::numeric_limits<std::int32_t>::max());
}

Status open_range(InputFile& file, const ByteRangeText& text) {
    file.range_active = 1;
    file.range_start = decimal(text.offset);
    file.range_left = decimal_32(text.length);
    if (text.last_byte) {
        // Unsigned, so that no distance overflows.
        file.range_left =
            static_cast<std::int64_t>(static_cast<std::uint64_t>(decimal(text.last_byte)) + 1 -
                                      static_cast<std::uint64_t>(file.range_start));
    }
    return ReOpenFileEx(file);
}

// The kind of a frame of (E-)AC-3 whose sync word has just been read.
PackedKind kind_of_ac3(InputFile& file) {
    // Up to the byte with `bsid`; what isn't there reads as zero.
    std::array<std::uint8_t, 4> bytes{};
    const std::uint64_t got = ReadBytes(bytes.data(), bytes.size(), file);
    (void)SeekBytes(-static_cast<std::int64_t>(2 + got), file);
    const auto bsid = static_cast<std::uint8_t>(bytes[3] >> 3);
    if (bsid <= kLastAc3Bsid) {
        return PackedKind::kAc3;
    }
    return bsid >= kFirstEac3Bsid && bsid <= kLastEac3Bsid ? PackedKind::kEac3 : PackedKind::kNone;
}

// Tells the kind by the sync word and goes back to it. None for bytes of no kind.
std::optional<PackedKind> classify(const std::array<std::uint8_t, 2>& sync, InputFile& file) {
    if (sync[0] == 0x0B && sync[1] == 0x77) {
        return kind_of_ac3(file);
    }
    const bool is_ac4 = sync[0] == 0xAC && (sync[1] == 0x40 || sync[1] == 0x41);
    const bool is_aac = sync[0] == 0xFF && sync[1] == 0xF1;
    if (!is_ac4 && !is_aac) {
        return std::nullopt;
    }
    (void)SeekBytes(-2, file);
    return is_ac4 ? PackedKind::kAc4 : PackedKind::kAac;
}

Status check_codecs(PackedKind kind, const ManifestContext& context, Loglist* loglist) {
    const std::uint32_t index = context.stream_index;
    const LogContext where{index, {}, "CODECS"};
    const auto names = [&](const char* codec) { return codec_is_contained(context.codecs, codec); };
    switch (kind) {
        case PackedKind::kAc3:
            return check(names("ac-3"), loglist, 4497, where, index);
        case PackedKind::kAc4:
            return check(names("ac-4"), loglist, 4393, where, index, "ac-4");
        case PackedKind::kAac:
            return check(names("mp4a"), loglist, 4495, where, index);
        default:
            return Status::kOk;
    }
}

void copy_rest(InputFile& file, OutputFile* output) {
    std::span<const std::uint8_t> bytes;
    while (!(bytes = read_block(file)).empty()) {
        if (output != nullptr) {
            output->write(bytes);
        }
    }
}

Status read_audio(PackedKind kind, OutputFile* output, InputFile& file, ManifestContext* context,
                  Loglist* loglist) {
    switch (kind) {
        case PackedKind::kEac3:
            return parse_es_stream_oap(output, file, context, loglist);
        case PackedKind::kAc4:
            return parse_es_stream_ac4(output, file, context, loglist);
        default:
            copy_rest(file, output);
            return Status::kOk;
    }
}

}  // namespace

Status id3demux(InputFile* file, const SegmentSlot* slot, OptText output_dir, OptText name,
                bool new_file, ManifestContext* context, Loglist* loglist,
                OutputRegistry* outputs) {
    if (file == nullptr && slot == nullptr) {
        return Status::kFailed;
    }
    const std::optional<std::string> address = slot == nullptr ? std::nullopt : slot->uri;
    const bool has_range = slot != nullptr && slot->byte_range != nullptr;
    if (file == nullptr || (has_range && open_range(*file, *slot->byte_range) != Status::kOk)) {
        return Status::kFailed | Logging_err_type_check(loglist, 4063, {}, address);
    }
    const std::optional<std::uint64_t> time_stamp = read_id3_time_stamp(*file);
    if (!time_stamp) {
        return Logging_err_type_check(loglist, 4076, {}, file->name);
    }
    Status status = Logging_err_type_check(loglist, 12, {}, address, *time_stamp);
    std::array<std::uint8_t, 2> sync{};
    if (ReadBytes(sync.data(), sync.size(), *file) != sync.size()) {
        return status;
    }
    const std::optional<PackedKind> kind = classify(sync, *file);
    if (!kind) {
        note_remark(
            "A segment of packed audio was passed over: it holds none of AC-3, E-AC-3, AAC and "
            "AC-4.");
        return Status::kOk;
    }
    if (context != nullptr) {
        status |= check_codecs(*kind, *context, loglist);
    }
    std::unique_ptr<OutputFile> output;
    std::string path;
    if (output_dir) {
        if (buildFullName_Id3(&path, output_dir, name, context, extension_of(*kind), *kind) == 0) {
            output = outputs != nullptr ? outputs->open(path)
                                        : fileOpen_lstr(path, new_file ? "wb" : "ab");
        }
        // Audio that has nowhere to go fails the run; it is checked all the same.
        status |= output == nullptr ? Status::kFailed : Status::kOk;
    }
    status |= read_audio(*kind, output.get(), *file, context, loglist);
    if (output != nullptr && !output->close()) {
        status |= Logging_err_type_check(nullptr, 4081, {}, path);
    }
    return status;
}

}  // namespace mediasplit
