#include <gtest/gtest.h>

#include "tests/unit/tsTableParse/ts_run.h"

namespace mediasplit {
namespace {

constexpr std::uint16_t kPid = 0x101;

ManifestContext manifest_of(const char* codecs) {
    ManifestContext manifest;
    manifest.codecs = codecs;
    manifest.stream_index = 3;
    manifest.rendition_index = 2;
    manifest.duplicate_index_text = "3, 5";
    return manifest;
}

TsRun judge(const std::vector<TsStreamDescription>& streams, ManifestContext* manifest = nullptr,
            bool is_hls = false) {
    return demux(one_program(streams).bytes(), {.manifest = manifest, .is_hls = is_hls});
}

// An ATSC E-AC-3 descriptor with the given flags and service bytes.
Bytes ec3(std::uint8_t flags, std::uint8_t full, std::uint8_t service, std::uint8_t channels,
          std::uint8_t tag = 0xCC) {
    return descriptor(
        tag, {static_cast<std::uint8_t>(0x80 | flags),
              static_cast<std::uint8_t>(0x80 | full << 6 | service << 3 | channels), 0x3F});
}

Bytes joc_ec3(std::uint8_t tag) {
    return descriptor(tag, {0x80, 0xC4, 0x3F, 0x01, 0x10});
}

Bytes prsm(std::uint8_t major, std::uint8_t minor, unsigned flags) {
    return descriptor(0xB0,
                      {major, minor, 8 << 1, static_cast<std::uint8_t>(1 << 3 | flags), 0x10});
}

Bytes registration(const char* text) {
    return descriptor(0x05, Bytes(text, text + 4));
}

Bytes joined(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

TEST(PmtEac3, CodecsMustNameIt) {
    ManifestContext good = manifest_of("avc1.640028,ec-3");
    ManifestContext bad = manifest_of("avc1.640028,mp4a.40.2");
    EXPECT_EQ(judge({{0x87, kPid, ec3(0, 1, 0, 4)}}, &good).count(4283), 0U);
    EXPECT_EQ(judge({{0x87, kPid, ec3(0, 1, 0, 4)}}, &bad).text(4283),
              "For an [EC3] stream, in HLS master-playlist, the attribute \"CODECS\" in the "
              "#EXT-X-STREAM-INF [index : 3] must include \"ec-3\". ");
    bad.group_id = "audio";
    EXPECT_EQ(judge({{0x87, kPid, ec3(0, 1, 0, 4)}}, &bad).count(4283), 0U);
    EXPECT_EQ(judge({{0x87, kPid, ec3(0, 1, 0, 4)}}).count(4283), 0U);
}

TEST(PmtEac3, ObjectsAreForbiddenInHls) {
    EXPECT_EQ(judge({{0x87, kPid, joc_ec3(0xCC)}}, nullptr, true).count(4292), 1U);
    EXPECT_EQ(judge({{0x06, kPid, joc_ec3(0x7A)}}, nullptr, true).count(4292), 1U);
    EXPECT_EQ(judge({{0x87, kPid, joc_ec3(0xCC)}}).count(4292), 0U);
    EXPECT_EQ(judge({{0x87, kPid, ec3(0, 1, 0, 4)}}, nullptr, true).count(4292), 0U);
}

TEST(PmtEac3, ChannelsTextMustMatchWhenItWasNotParsed) {
    ManifestContext manifest = manifest_of("ec-3");
    manifest.group_id = "audio";
    manifest.channels_text = "6";
    EXPECT_EQ(judge({{0x87, kPid, ec3(0, 1, 0, 4)}}, &manifest).text(4286),
              "For an [EC3] stream, in HLS master-playlist, the attribute \"CHANNELS\" in the "
              "#EXT-X-MEDIA [index : 2] mismatches the corresponding description in the TS PMT "
              "EC3-descriptor. (expected CHANNELS value: 4; actual value: 6)");
    manifest.channels_text = "4";
    EXPECT_EQ(judge({{0x87, kPid, ec3(0, 1, 0, 4)}}, &manifest).count(4286), 0U);
}

TEST(PmtEac3, ParsedChannelCountIsTheLimit) {
    ManifestContext manifest = manifest_of("ec-3");
    manifest.channels_text = "2/JOC";
    manifest.channels_parsed = 1;
    manifest.channel_count = 2;
    EXPECT_EQ(
        judge({{0x87, kPid, ec3(0, 1, 0, 4)}}, &manifest).text(4289),
        "For an [EC3] stream, in HLS master-manifest, the channel count value scheduled in the "
        "attribute \"CHANNELS\" (value: 2/JOC) in the #EXT-X-MEDIA [index : 2] is too small, "
        "the EC3 stream requires 4 channels.");
    EXPECT_EQ(manifest.found_channels_max, 4U);
    EXPECT_EQ(manifest.found_channels_valid, 1U);
    manifest.channel_count = 6;
    manifest.found_channels_valid = 0;
    EXPECT_EQ(judge({{0x87, kPid, ec3(0, 1, 0, 4)}}, &manifest).count(4289), 0U);
    EXPECT_EQ(manifest.found_channels_valid, 0U);
}

TEST(PmtEac3, DvbTagOnAtscTypeIsReportedWithoutFurtherRules) {
    ManifestContext bad = manifest_of("mp4a.40.2");
    const TsRun run = judge({{0x87, kPid, ec3(0, 1, 0, 4, 0x7A)}}, &bad);
    EXPECT_EQ(run.count(4318), 1U);
    EXPECT_EQ(run.count(4283), 0U);
    const TsRun both = judge({{0x87, kPid, joined(ec3(0, 1, 0, 4), ec3(0, 1, 0, 4, 0x7A))}});
    EXPECT_EQ(both.count(4318), 0U);
}

TEST(PmtEac3, FlagsMustBeClear) {
    for (const std::uint8_t flag : {0x20, 0x10, 0x08}) {
        EXPECT_EQ(judge({{0x87, kPid, ec3(flag, 1, 0, 4)}}).count(4320), 1U) << int{flag};
    }
    EXPECT_EQ(
        judge({{0x87, kPid, descriptor(0xCC, {0x80, 0xC4, 0x40, 'e', 'n', 'g'})}}).count(4320), 1U);
    EXPECT_EQ(judge({{0x87, kPid, ec3(0x47, 1, 0, 4)}}).count(4320), 0U);
}

struct ServiceCase {
    std::uint8_t full, service, channels;
    int broken;
};

TEST(PmtEac3, ServiceTypeRules) {
    const ServiceCase cases[] = {{1, 0, 4, 0}, {0, 0, 4, 4321}, {0, 1, 4, 0},    {1, 1, 4, 4322},
                                 {0, 4, 4, 0}, {1, 4, 4, 4322}, {0, 5, 0, 0},    {0, 5, 2, 4323},
                                 {1, 6, 0, 0}, {0, 6, 0, 4324}, {1, 6, 1, 4324}, {0, 2, 4, 0},
                                 {1, 7, 7, 0}};
    for (const auto& one : cases) {
        const TsRun run = judge({{0x87, kPid, ec3(0, one.full, one.service, one.channels)}});
        for (const int id : {4321, 4322, 4323, 4324}) {
            EXPECT_EQ(run.count(id), id == one.broken ? 1U : 0U) << int{one.service} << " " << id;
        }
    }
}

TEST(PmtEac3, AtscTagOnPrivateDataIsReported) {
    EXPECT_EQ(judge({{0x06, kPid, ec3(0, 1, 0, 4)}}).count(4319), 1U);
    EXPECT_EQ(judge({{0x06, kPid, ec3(0, 1, 0, 4, 0x7A)}}).count(4319), 0U);
}

TEST(PmtCodecs, AacMustBeNamed) {
    for (const std::uint8_t type : {0x0F, 0x11}) {
        ManifestContext bad = manifest_of("ec-3");
        ManifestContext good = manifest_of("mp4a.40.2");
        EXPECT_EQ(judge({{type, kPid, {}}}, &bad).count(4492), 1U);
        EXPECT_EQ(judge({{type, kPid, {}}}, &good).count(4492), 0U);
        bad.group_id = "audio";
        EXPECT_EQ(judge({{type, kPid, {}}}, &bad).count(4492), 0U);
    }
}

TEST(PmtCodecs, VideoMustBeNamed) {
    ManifestContext avc = manifest_of("avc1.640028");
    ManifestContext hvc = manifest_of("hvc1.2.4.L123.B0");
    ManifestContext hev = manifest_of("hev1.2.4.L123.B0");
    ManifestContext none;
    EXPECT_EQ(judge({{0x1B, kPid, {}}}, &avc).count(4111), 0U);
    EXPECT_EQ(judge({{0x1B, kPid, {}}}, &hvc).count(4111), 1U);
    EXPECT_EQ(judge({{0x1B, kPid, {}}}, &none).count(4111), 1U);
    EXPECT_EQ(judge({{0x1B, kPid, {}}}).count(4111), 0U);
    EXPECT_EQ(judge({{0x24, kPid, {}}}, &hvc).count(4112), 0U);
    EXPECT_EQ(judge({{0x24, kPid, {}}}, &hev).count(4112), 0U);
    EXPECT_EQ(judge({{0x24, kPid, {}}}, &avc).count(4112), 1U);
}

TEST(PmtPrsm, IsForbiddenInHlsAndEndsTheJudgement) {
    for (const std::uint8_t type : {0x1B, 0x24, 0x06}) {
        const std::vector<TsStreamDescription> streams = {{type, kPid, prsm(2, 0, 5)},
                                                          {0x06, 0x102, ec3(0, 1, 0, 4)}};
        const TsRun run = judge(streams, nullptr, true);
        EXPECT_EQ(run.count(4169), 1U) << int{type};
        EXPECT_EQ(run.count(4257), 0U);
        EXPECT_EQ(run.count(4319), 0U);
        EXPECT_EQ(judge(streams).count(4169), 0U);
    }
    EXPECT_EQ(judge({{0x06, kPid, registration("PRSM")}}, nullptr, true).count(4169), 1U);
    EXPECT_EQ(judge({{0x06, kPid, registration("HEVC")}}, nullptr, true).count(4169), 0U);
}

TEST(PmtPrsm, VersionAndFlagRules) {
    for (const std::uint8_t type : {0x1B, 0x24, 0x06}) {
        EXPECT_EQ(judge({{type, kPid, prsm(2, 0, 5)}}).count(4257), 1U);
        EXPECT_EQ(judge({{type, kPid, prsm(1, 3, 5)}}).count(4258), 1U);
        EXPECT_EQ(judge({{type, kPid, prsm(1, 0, 1)}}).count(4259), 1U);
        EXPECT_EQ(judge({{type, kPid, descriptor(0xB0, {1, 0, 10, 8 | 4, 0, 0})}}).count(4260), 1U);
        const TsRun good = judge({{type, kPid, prsm(1, 0, 5)}});
        for (const int id : {4257, 4258, 4259, 4260}) {
            EXPECT_EQ(good.count(id), 0U) << id;
        }
    }
}

TEST(PmtPrsm, FirstDescriptorCountsOnAvcAndEveryOneOnHevc) {
    const Bytes two = joined(prsm(1, 0, 5), prsm(2, 0, 5));
    EXPECT_EQ(judge({{0x1B, kPid, two}}).count(4257), 0U);
    EXPECT_EQ(judge({{0x24, kPid, two}}).count(4257), 1U);
}

TEST(PmtPrsm, EnhancementFlagOfASinglePid) {
    const auto with = [](unsigned flags) {
        return joined(registration("PRSM"), prsm(1, 0, flags));
    };
    EXPECT_EQ(judge({{0x06, kPid, with(7)}}).count(4262), 1U);
    EXPECT_EQ(judge({{0x06, kPid, with(5)}}).count(4262), 0U);
    EXPECT_EQ(judge({{0x06, kPid, prsm(1, 0, 7)}}).count(4262), 0U);
    EXPECT_EQ(judge({{0x24, 0x102, prsm(1, 0, 5)}, {0x06, kPid, prsm(1, 0, 5)}}).count(4263), 1U);
    EXPECT_EQ(judge({{0x24, 0x102, prsm(1, 0, 5)}, {0x06, kPid, prsm(1, 0, 7)}}).count(4263), 0U);
    EXPECT_EQ(judge({{0x06, kPid, prsm(1, 0, 5)}}).count(4263), 0U);
}

TEST(PmtPrsm, ManifestThatNamesItNeedsOne) {
    ManifestContext named = manifest_of("pxhe.08.05");
    ManifestContext silent;
    ManifestContext other = manifest_of("hvc1.2.4.L123.B0");
    named.duplicate_index_text = "3, 5";
    EXPECT_EQ(
        judge({{0x0F, kPid, {}}}, &named).text(4156),
        "In HLS master-manifest, the CODECS attribute in the #EXT-X-STREAM-INF [index : 3, 5] "
        "indicates it refers a Orvel Prisma stream, but none Orvel Prisma stream or "
        "registration descriptor has been found in PMT of current TS segment.");
    EXPECT_EQ(judge({{0x0F, kPid, {}}}, &silent).count(4156), 1U);
    EXPECT_EQ(judge({{0x0F, kPid, {}}}, &other).count(4156), 0U);
    EXPECT_EQ(judge({{0x24, kPid, prsm(1, 0, 5)}}, &named).count(4156), 0U);
    EXPECT_EQ(judge({{0x06, kPid, registration("PRSM")}}, &named).count(4156), 0U);
}

TEST(PmtAc4, IsForbiddenInHls) {
    EXPECT_EQ(judge({{0x06, kPid, descriptor(0x7F, {0})}}, nullptr, true).count(4395), 1U);
    EXPECT_EQ(judge({{0x06, kPid, descriptor(0x7F, {0})}}).count(4395), 0U);
}

TEST(PmtChecks, RunAtEveryPacketOfTheTable) {
    TsBuilder builder = one_program({{0x06, kPid, ec3(0, 1, 0, 4)}});
    builder.pmt(0x100, 1, {});
    EXPECT_EQ(demux(builder.bytes()).count(4319), 2U);
}

TEST(PmtChecks, LargeTableIsNotJudgedForEver) {
    // As many descriptors as one packet takes, judged again at many small packets.
    Bytes descriptors;
    for (int i = 0; i < 10; ++i) {
        descriptors.insert(descriptors.end(), {0xCC, 0});
    }
    TsBuilder builder = one_program(std::vector<TsStreamDescription>(6, {0x06, kPid, descriptors}));
    constexpr std::uint64_t kPackets = 5000;
    for (std::uint64_t i = 0; i < kPackets; ++i) {
        builder.packet(0x100, false, {0});
    }
    const TsRun run = demux(builder.bytes());
    EXPECT_GT(run.count(4319), 100'000U);
    // (2^18 + 8 * 5002) streams and descriptors, of which ten in eleven are findings, and one
    // judgement more. Without an end it would be 300,000.
    EXPECT_LT(run.count(4319), 275'000U);
    EXPECT_FALSE(run.notes.empty());
}

}  // namespace
}  // namespace mediasplit
