// Whole runs over elementary streams: they are read and checked, and nothing is written.
#include <gtest/gtest.h>

#include <filesystem>

#include "src/main/flows/flows.h"
#include "src/records/run_options.h"
#include "tests/support/ac4_builder.h"
#include "tests/support/eac3_builder.h"
#include "tests/support/packed_builder.h"
#include "tests/support/recording_sink.h"
#include "tests/support/run_options_scope.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {
namespace {

using Ids = std::vector<int>;

Bytes ac4_frame(bool iframe = true, bool with_crc = false, bool long_size = false) {
    BuildFrame frame = simple_stereo_frame();
    frame.iframe = iframe;
    frame.groups[0].substreams[0].iframes = {iframe};
    return write_syncframe(write_ac4_frame(frame), with_crc, long_size);
}

Bytes eac3_frame() {
    return test_support::build_eac3_frame(test_support::Eac3Spec{});
}

class ElementaryFlow : public testing::Test {
protected:
    ElementaryFlow() {
        std::filesystem::create_directory("out");
        g_output_dir = "out";
    }

    // What a run says of a stream, the name of the file aside.
    Ids findings(Status (*flow)(Loglist*), const Bytes& stream) {
        (void)folder_.write("in", std::string(stream.begin(), stream.end()));
        g_input = "in";
        RecordingSink sink;
        EXPECT_FALSE(has_failed(flow(nullptr)));
        EXPECT_TRUE(std::filesystem::is_empty("out"));
        Ids ids = sink.ids();
        std::erase(ids, 3);
        return ids;
    }

    RunOptionsScope scope_;
    TempFolder folder_;
    WorkingDirectory directory_{folder_.path()};
};

TEST_F(ElementaryFlow, GoodStreamsRaiseNothing) {
    EXPECT_EQ(findings(run_eac3, repeated(eac3_frame(), 100)), Ids{});
    EXPECT_EQ(findings(run_ac4, repeated(ac4_frame(), 100)), Ids{});
    EXPECT_EQ(findings(run_ac4, joined({ac4_frame(true, true), ac4_frame(false, false, true),
                                        ac4_frame(false, true, true)})),
              Ids{});
    EXPECT_EQ(findings(run_eac3, {}), Ids{});
    EXPECT_EQ(findings(run_ac4, {}), Ids{});
}

TEST_F(ElementaryFlow, LostSyncEndsTheStreamWithItsMessage) {
    const Bytes garbage(9, 0x33);
    EXPECT_EQ(findings(run_eac3, joined({eac3_frame(), garbage, eac3_frame()})), Ids{4332});
    EXPECT_EQ(findings(run_ac4, joined({ac4_frame(), garbage, ac4_frame()})), Ids{4490});
    EXPECT_EQ(findings(run_eac3, ac4_frame()), Ids{4332});
    EXPECT_EQ(findings(run_ac4, eac3_frame()), Ids{4490});
}

TEST_F(ElementaryFlow, FramesThatCannotBeAnalysedAreTold) {
    Bytes broken = eac3_frame();
    broken[5] = 0xFF;  // bsid 31
    EXPECT_EQ(findings(run_eac3, joined({eac3_frame(), broken})), Ids{4333});
    const Bytes empty = {0xAC, 0x40, 0, 0};
    EXPECT_EQ(findings(run_ac4, joined({ac4_frame(), empty, ac4_frame()})), Ids{4491});
    EXPECT_EQ(findings(run_ac4, joined({empty, ac4_frame()})), (Ids{4491, 4485}));
}

TEST_F(ElementaryFlow, FirstFrameMustBeAnIFrame) {
    EXPECT_EQ(findings(run_ac4, joined({ac4_frame(false), ac4_frame()})), Ids{4485});
}

// Sizes of 24 bits beyond what the file has, up to the largest.
TEST_F(ElementaryFlow, Ac4SizesBeyondTheFileAreLostSync) {
    for (const Bytes& size : {Bytes{0, 0, 1}, Bytes{0, 0xFF, 0xFF}, Bytes{0x20, 0, 0},
                              Bytes{0xA0, 0, 1}, Bytes{0xFF, 0xFF, 0xFF}}) {
        EXPECT_EQ(findings(run_ac4, joined({ac4_frame(), {0xAC, 0x40, 0xFF, 0xFF}, size})),
                  Ids{4490});
    }
}

}  // namespace
}  // namespace mediasplit
