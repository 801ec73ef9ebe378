#include "tests/unit/id3demuxer/packed_run.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include <gtest/gtest.h>

#include "src/file_util/output_file.h"

namespace mediasplit {

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

Bytes repeated(const Bytes& part, std::size_t count) {
    Bytes all;
    for (std::size_t i = 0; i < count; ++i) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

Bytes id3_tag_of(const Bytes& content, std::optional<std::uint32_t> size) {
    const auto told = size.value_or(static_cast<std::uint32_t>(content.size()));
    Bytes tag = {'I', 'D', '3', 4, 0, 0};
    for (const unsigned shift : {21U, 14U, 7U, 0U}) {
        tag.push_back(static_cast<std::uint8_t>(told >> shift & 0x7F));
    }
    return joined({tag, content});
}

Bytes time_stamp_frame(std::uint64_t time_stamp) {
    constexpr std::string_view kOwner = "com.apple.streaming.transportStreamTimestamp";
    Bytes frame = {'P', 'R', 'I', 'V', 0, 0, 0, 53, 0, 0};
    frame.insert(frame.end(), kOwner.begin(), kOwner.end());
    frame.push_back(0);
    for (int shift = 56; shift >= 0; shift -= 8) {
        frame.push_back(static_cast<std::uint8_t>(time_stamp >> shift));
    }
    return frame;
}

Bytes id3_tag(std::uint64_t time_stamp, std::size_t extra) {
    return id3_tag_of(joined({time_stamp_frame(time_stamp), Bytes(extra, 0)}));
}

PackedRun::PackedRun() {
    constexpr std::array<CheckpointText, 3> kActive{{{"210000"}, {"330000"}, {"310000"}}};
    loglist = init_loglist(kActive.size(), kActive.data());
    context.codecs = "ec-3,ac-3,mp4a.40.2,ac-4.02.01.00";
    context.stream_index = 3;
    context.rendition_index = 5;
    slot.uri = "seg.pa";
}

InputFile PackedRun::open(const Bytes& bytes) const {
    const std::string path = inputs_.write("seg.pa", std::string(bytes.begin(), bytes.end()));
    InputFile input;
    input.name = "seg.pa";
    EXPECT_EQ(OpenFileEx(path, nullptr, 0, input), Status::kOk);
    return input;
}

Status PackedRun::segment(const Bytes& bytes, bool new_file) {
    InputFile input = open(bytes);
    const std::string path = folder.path();
    const Status status =
        id3demux(&input, has_slot ? &slot : nullptr, has_folder ? OptText(path) : OptText(), name,
                 new_file, has_context ? &context : nullptr, loglist.get());
    CloseFile(input);
    return status;
}

Status PackedRun::stream(StreamReader reader, const Bytes& bytes) {
    InputFile input = open(bytes);
    const std::unique_ptr<OutputFile> file = fileOpen_lstr(folder.path("stream.out"), "wb");
    const Status status =
        reader(file.get(), input, has_context ? &context : nullptr, loglist.get());
    CloseFile(input);
    EXPECT_TRUE(file->close());
    return status;
}

std::optional<Bytes> PackedRun::output(const std::string& file) const {
    if (!std::filesystem::exists(folder.path(file))) {
        return std::nullopt;
    }
    const std::string text = read_file(folder.path(file));
    return Bytes(text.begin(), text.end());
}

std::vector<std::string> PackedRun::output_names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string PackedRun::text_of(int id) const {
    for (const RecordedReport& report : sink.reports()) {
        if (report.id == id) {
            return report.text;
        }
    }
    return "";
}

}  // namespace mediasplit
