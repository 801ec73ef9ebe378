#include "src/fmp4demuxer/writers/unit_output.h"

#include <gtest/gtest.h>

#include "src/fmp4demuxer/outputs.h"
#include "src/fmp4demuxer/writers/nal_units.h"
#include "src/video/nal_unit.h"
#include "tests/unit/fmp4demuxer/demux_run.h"

namespace mediasplit {
namespace {

using mp4::Bytes;

TEST(UnitOutput, BytesThatCannotBeWrittenRaise4085WithTheirSize) {
    RecordingSink sink;
    OutputFile file(-1);
    EXPECT_EQ(write_bytes(&file, Bytes(123, 0), nullptr), Status::kFailed);
    ASSERT_EQ(sink.ids(), std::vector<int>{4085});
    EXPECT_EQ(sink.reports()[0].text,
              "When parsing MP4 bitstream, fail to write data [size : 123 bytes] to the output "
              "elementary stream file.");
}

TEST(UnitOutput, StartCodeOfASampleUnitRaises4085WithSize4) {
    RecordingSink sink;
    OutputFile file(-1);
    EXPECT_EQ(write_sample_unit(&file, Bytes(9, 0), nullptr), Status::kFailed);
    ASSERT_FALSE(sink.reports().empty());
    EXPECT_EQ(sink.reports()[0].id, 4085);
    EXPECT_NE(sink.reports()[0].text.find("[size : 4 bytes]"), std::string::npos);
}

TEST(UnitOutput, StartCodeOfAConfigurationUnitRaises4083) {
    RecordingSink sink;
    OutputFile file(-1);
    EXPECT_EQ(write_config_unit(&file, Bytes(9, 0), nullptr), Status::kFailed);
    EXPECT_EQ(sink.ids(), std::vector<int>{4083});
}

TEST(UnitOutput, ConfigurationUnitItselfRaises4085) {
    RecordingSink sink;
    const auto file = fileOpen_lstr("/dev/full", "wb");
    ASSERT_NE(file, nullptr);
    // The start code waits in the buffer, the unit is too large for it.
    EXPECT_EQ(write_config_unit(file.get(), Bytes(0x400000, 0), nullptr), Status::kFailed);
    EXPECT_EQ(sink.ids(), std::vector<int>{4085});
    // A file that failed is reported once.
    EXPECT_EQ(write_config_unit(file.get(), Bytes(9, 0), nullptr), Status::kOk);
    EXPECT_EQ(write_sample_unit(file.get(), Bytes(9, 0), nullptr), Status::kOk);
    EXPECT_EQ(write_bytes(file.get(), Bytes(9, 0), nullptr), Status::kOk);
    EXPECT_EQ(sink.ids(), std::vector<int>{4085});
}

TEST(UnitOutput, TrackWithoutFileTakesNothing) {
    RecordingSink sink;
    EXPECT_EQ(write_sample_unit(nullptr, Bytes(9, 0), nullptr), Status::kOk);
    EXPECT_EQ(write_config_unit(nullptr, Bytes(9, 0), nullptr), Status::kOk);
    Mp4Demuxer demuxer;
    EXPECT_EQ(output_of(demuxer, 0), nullptr);
    EXPECT_TRUE(sink.ids().empty());
}

TEST(UnitOutput, AllParameterSetsOfAConfigurationAreWritten) {
    AvcConfig config;
    for (const std::uint8_t byte : {1, 2}) {
        config.sps.emplace_back();
        config.sps.back().unit = {0x67, byte};
        config.pps.push_back({0x68, byte});
    }
    TempFolder folder;
    const auto path = folder.path("out");
    const auto file = fileOpen_lstr(path, "wb");
    EXPECT_EQ(h264_write_sps_pps_nal(config, file.get(), nullptr), Status::kOk);
    EXPECT_TRUE(file->close());
    EXPECT_EQ(file_bytes(path), start_coded({{0x67, 1}, {0x67, 2}, {0x68, 1}, {0x68, 2}}));
}

TEST(Outputs, BytesThatAreLostAtTheEndAreReportedOnce) {
    RecordingSink sink;
    Mp4Demuxer demuxer;
    demuxer.streams.push_back(std::make_unique<Mp4Stream>());
    size_output_slots(demuxer);
    ASSERT_EQ(open_output(demuxer, 0, "/dev/full"), Status::kOk);
    ASSERT_TRUE(demuxer.out_files[0]->write(Bytes(10, 1)));
    EXPECT_EQ(close_outputs(demuxer), Status::kFailed);
    EXPECT_EQ(sink.ids(), std::vector<int>{4085});
    EXPECT_EQ(close_outputs(demuxer), Status::kOk);
}

TEST(Outputs, WholeFilesCloseWithoutAReport) {
    RecordingSink sink;
    TempFolder folder;
    Mp4Demuxer demuxer;
    demuxer.streams.push_back(std::make_unique<Mp4Stream>());
    size_output_slots(demuxer);
    ASSERT_EQ(open_output(demuxer, 0, folder.path("out")), Status::kOk);
    ASSERT_TRUE(demuxer.out_files[0]->write(Bytes(10, 1)));
    EXPECT_EQ(close_outputs(demuxer), Status::kOk);
    EXPECT_TRUE(sink.reports().empty());
    EXPECT_EQ(file_bytes(folder.path("out")), Bytes(10, 1));
}

Bytes measured(const Bytes& unit, std::size_t from) {
    const ByteSpan span = measure_unit(unit, from);
    return {span.begin(), span.end()};
}

TEST(NalUnits, MeasuredUnitEndsAtTheFirstZeroRun) {
    EXPECT_EQ(measured({0x67, 1, 2, 0, 0, 1, 9}, 1), (Bytes{0x67, 1, 2}));
    EXPECT_EQ(measured({0x67, 1, 2, 0, 0, 0, 9}, 1), (Bytes{0x67, 1, 2}));
    EXPECT_EQ(measured({0x67, 1, 2, 0, 0, 3, 9}, 1), (Bytes{0x67, 1, 2, 0, 0, 3, 9}));
    EXPECT_EQ(measured({0x67, 1, 2}, 1), (Bytes{0x67, 1, 2}));
    EXPECT_EQ(measured({0x42, 0, 0, 0, 7}, 2), (Bytes{0x42, 0, 0, 0, 7}));
    EXPECT_EQ(measured({}, 2), Bytes{});
}

TEST(NalUnits, MeasuredUnitHoldsAllThatTheParsersReadAndNoMuchMore) {
    // Escaped as densely as can be, the unit fills the work area all the same.
    Bytes unit{0x67};
    while (unit.size() < 5000) {
        unit.insert(unit.end(), {0, 0, 3});
    }
    const Bytes part = measured(unit, 1);
    EXPECT_LT(part.size(), 1000U);
    const auto unescaped = [](const Bytes& bytes) {
        Bytes area(kNalWorkAreaSize);
        area.resize(nal_remove_0x03(area, bytes));
        return area;
    };
    EXPECT_EQ(unescaped(part).size(), kNalWorkAreaSize);
    EXPECT_EQ(unescaped(part), unescaped(unit));
}

TEST(NalUnits, EnhancementParameterSetEndsWithThe7EBehindItsFourthByte) {
    const auto set = [](const Bytes& unit) {
        const ByteSpan span = enhancement_parameter_set(unit);
        return Bytes(span.begin(), span.end());
    };
    EXPECT_EQ(set({0x7C, 0x01, 0x67, 0x7E, 0x10, 0x7E, 0x99}), (Bytes{0x67, 0x7E, 0x10, 0x7E}));
    EXPECT_EQ(set({0x7C, 0x01, 0x67, 0x64, 0x7E}), (Bytes{0x67, 0x64, 0x7E}));
    EXPECT_EQ(set({0x7C, 0x01, 0x67, 0x64, 0x10}), (Bytes{0x67, 0x64, 0x10}));
    EXPECT_EQ(set({0x7C, 0x01, 0x67}), Bytes{0x67});
    EXPECT_EQ(set({0x7C, 0x01}), Bytes{});
}

}  // namespace
}  // namespace mediasplit
