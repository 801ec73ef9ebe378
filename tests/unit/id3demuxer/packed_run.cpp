#include "tests/unit/id3demuxer/packed_run.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include <gtest/gtest.h>

#include "src/file_util/output_file.h"

namespace mediasplit {

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
    return file_names(folder.path());
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
