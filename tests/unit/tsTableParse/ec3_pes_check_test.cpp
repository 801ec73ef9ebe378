#include <gtest/gtest.h>

#include "tests/support/eac3_builder.h"
#include "tests/unit/tsTableParse/ts_run.h"

namespace mediasplit {
namespace {

using test_support::build_eac3_frame;
using test_support::Eac3Spec;
using test_support::join;
using test_support::swapped;

constexpr std::uint16_t kAudio = 0x102;

struct DescriptorSpec {
    std::uint8_t substreams = 0;  // flags of substreams 1, 2, 3 from bit 2 down
    std::uint8_t full_service = 1;
    std::uint8_t service_type = 0;
    std::uint8_t channels = 4;
    Bytes rest{};  // behind the language byte
};

Bytes ec3_descriptor(std::uint8_t tag, const DescriptorSpec& spec) {
    Bytes body = {static_cast<std::uint8_t>(0x80 | spec.substreams),
                  static_cast<std::uint8_t>(0x80 | spec.full_service << 6 | spec.service_type << 3 |
                                            spec.channels),
                  0x3F};
    body.insert(body.end(), spec.rest.begin(), spec.rest.end());
    return descriptor(tag, body);
}

// One PES packet with `audio` on a stream of the ATSC kind with this descriptor.
TsRun check_pes(const Bytes& audio, const DescriptorSpec& spec = {}, std::uint8_t type = 0x87,
                std::uint8_t tag = 0xCC) {
    TsBuilder builder = one_program({{type, kAudio, ec3_descriptor(tag, spec)}});
    builder.pes(kAudio, {.stream_id = 0xBD, .pts = 90000, .payload = audio});
    return demux(builder.bytes());
}

Eac3Spec surround() {
    Eac3Spec spec;
    spec.acmod = 7;
    spec.lfeon = 1;
    return spec;
}

Eac3Spec with_acmod(unsigned acmod) {
    Eac3Spec spec;
    spec.acmod = acmod;
    spec.lfeon = 0;
    return spec;
}

Eac3Spec with_addbsi(const Bytes& addbsi) {
    Eac3Spec spec = surround();
    spec.addbsi = addbsi;
    return spec;
}

// The messages of the check, 4317 among them.
std::vector<int> findings(const TsRun& run) {
    std::vector<int> ids;
    for (const auto& report : run.reports) {
        if (report.id >= 4317 && report.id <= 4338) {
            ids.push_back(report.id);
        }
    }
    return ids;
}

using Ids = std::vector<int>;

TEST(Ec3PesCheck, GoodPacketPassesAndItsEndIsKnown) {
    const Bytes frame = build_eac3_frame(surround());
    const TsRun run = check_pes(join({frame, frame}));
    EXPECT_EQ(findings(run), Ids{});
    EXPECT_EQ(run.summary.audio[0].end_pts, 90000 + 2 * 2880);
    EXPECT_EQ(run.files.at("main_PID_258.out.ec3"), join({frame, frame}));
}

TEST(Ec3PesCheck, FailedCheckRaisesTheMissingDescriptorToo) {
    Eac3Spec bad = surround();
    bad.good_crc = false;
    const Bytes frame = build_eac3_frame(bad);
    const TsRun run = check_pes(frame);
    EXPECT_EQ(findings(run), (Ids{4333, 4317}));
    EXPECT_EQ(run.files.at("main_PID_258.out.ec3"), frame);
    EXPECT_EQ(findings(check_pes(frame, {}, 0x06, 0x7A)), Ids{4333});
}

TEST(Ec3PesCheck, UnreadableBlockIsReported) {
    EXPECT_EQ(findings(check_pes(pattern(200, 1))), (Ids{4333, 4317}));
}

TEST(Ec3PesCheck, PacketNeedsAWholeAccessUnit) {
    Eac3Spec one_block = surround();
    one_block.numblkscod = 0;
    const Bytes frame = build_eac3_frame(one_block);
    EXPECT_EQ(findings(check_pes(frame)).front(), 4331);
    one_block.convsync = 0;
    const Bytes next = build_eac3_frame(one_block);
    EXPECT_EQ(findings(check_pes(join({frame, next, next, next, next, next}))), Ids{});
}

TEST(Ec3PesCheck, BytesMustStandInFileOrder) {
    const Bytes frame = build_eac3_frame(surround());
    EXPECT_EQ(findings(check_pes(swapped(frame))), (Ids{4335, 4317}));
}

TEST(Ec3PesCheck, SubstreamsOfFurtherProgramsNeedTheirFlags) {
    Eac3Spec second = surround();
    second.substreamid = 1;
    Eac3Spec third = surround();
    third.substreamid = 2;
    const Bytes audio =
        join({build_eac3_frame(surround()), build_eac3_frame(second), build_eac3_frame(third)});
    EXPECT_EQ(findings(check_pes(audio, {.substreams = 6})), Ids{});
    const TsRun run = check_pes(audio, {.substreams = 4});
    EXPECT_EQ(findings(run), (Ids{4336, 4317}));
    EXPECT_EQ(run.text(4336),
              "For an [EC3] stream, in TS, the \"substream2_flag\" in descriptor mismatches the "
              "corresponding description in the elementary stream. (expected substream_flag values "
              ": 1; actual value:0)");
    EXPECT_EQ(findings(check_pes(audio, {.substreams = 2})), (Ids{4336, 4317}));
    EXPECT_EQ(findings(check_pes(build_eac3_frame(surround()), {.substreams = 0})), Ids{});
}

struct ChannelCase {
    std::uint8_t channels;
    unsigned acmod;
    const char* broken;  // the field of 4337, nullptr if it holds
};

TEST(Ec3PesCheck, NumberOfChannelsFollowsAcmod) {
    const ChannelCase cases[] = {{1, 0, nullptr}, {1, 2, "001"},  {2, 2, nullptr}, {2, 1, "010"},
                                 {4, 3, nullptr}, {4, 2, "100"},  {5, 7, nullptr}, {5, 2, "101"},
                                 {0, 2, nullptr}, {3, 7, nullptr}};
    for (const auto& one : cases) {
        const TsRun run =
            check_pes(build_eac3_frame(with_acmod(one.acmod)), {.channels = one.channels});
        EXPECT_EQ(run.count(4337), one.broken != nullptr ? 1U : 0U)
            << int{one.channels} << " " << one.acmod;
        if (one.broken != nullptr) {
            EXPECT_EQ(run.text(4337), "For an [EC3] stream, in TS, the Num of Channels Field (" +
                                          std::string(one.broken) +
                                          ") in descriptor mismatches the acmod field (" +
                                          std::to_string(one.acmod) + ") in bitstream.");
        }
    }
}

TEST(Ec3PesCheck, MoreThanFiveChannelsAreACompleteMainService) {
    const Bytes frame = build_eac3_frame(surround());
    EXPECT_EQ(check_pes(frame, {.full_service = 1, .service_type = 0, .channels = 5}).count(4334),
              0U);
    EXPECT_EQ(check_pes(frame, {.full_service = 0, .service_type = 0, .channels = 5}).count(4334),
              1U);
    EXPECT_EQ(check_pes(frame, {.full_service = 1, .service_type = 2, .channels = 5}).count(4334),
              1U);
}

TEST(Ec3PesCheck, ReservedChannelNumbersAreForbidden) {
    const Bytes frame = build_eac3_frame(surround());
    EXPECT_EQ(findings(check_pes(frame, {.channels = 6})), (Ids{4338, 4317}));
    EXPECT_EQ(findings(check_pes(frame, {.channels = 7})), (Ids{4338, 4317}));
}

TEST(Ec3PesCheck, StreamWithoutObjectsHasNoExtension) {
    EXPECT_EQ(findings(check_pes(build_eac3_frame(with_addbsi({0x01, 0x10})))), (Ids{4329, 4317}));
    EXPECT_EQ(findings(check_pes(build_eac3_frame(with_addbsi({0x00, 0x10})))), Ids{});
}

TEST(Ec3PesCheck, StreamWithObjectsMatchesItsDescriptor) {
    const DescriptorSpec joc = {.rest = {0x01, 0x10}};
    EXPECT_EQ(findings(check_pes(build_eac3_frame(with_addbsi({0x01, 0x10})), joc)), Ids{});
    EXPECT_EQ(findings(check_pes(build_eac3_frame(surround()), joc)), (Ids{4326, 4317}));
    EXPECT_EQ(findings(check_pes(build_eac3_frame(with_addbsi({0x01})), joc)), (Ids{4326, 4317}));
    EXPECT_EQ(findings(check_pes(build_eac3_frame(with_addbsi({0x03, 0x10})), joc)),
              (Ids{4327, 4317}));
    const TsRun run = check_pes(build_eac3_frame(with_addbsi({0x01, 0x0F})), joc);
    EXPECT_EQ(findings(run), (Ids{4328, 4317}));
    EXPECT_NE(
        run.text(4328).find("(expected complexity_index_type_a value: 0xf; actual value: 0x10)"),
        std::string::npos);
}

TEST(Ec3PesCheck, FirstDependentSubstreamCarriesTheExtension) {
    Eac3Spec dependent = with_addbsi({0x01, 0x10});
    dependent.strmtyp = 1;
    const Bytes audio = join({build_eac3_frame(surround()), build_eac3_frame(dependent)});
    EXPECT_EQ(findings(check_pes(audio, {.rest = {0x01, 0x10}})), Ids{});
    EXPECT_EQ(findings(check_pes(audio)), (Ids{4329, 4317}));
}

TEST(Ec3PesCheck, Ac4DescriptorEndsTheSearchOfPrivateData) {
    Bytes tags = descriptor(0x7F, {0});
    const Bytes ec3 = ec3_descriptor(0x7A, {});
    tags.insert(tags.end(), ec3.begin(), ec3.end());
    TsBuilder builder = one_program({{0x06, kAudio, tags}});
    builder.pes(kAudio, {.stream_id = 0xBD, .payload = pattern(200, 1)});
    EXPECT_EQ(findings(demux(builder.bytes())), Ids{});
}

}  // namespace
}  // namespace mediasplit
