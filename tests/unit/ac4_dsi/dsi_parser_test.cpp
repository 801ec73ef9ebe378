#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "src/ac4analyze_impl/ac4_dsi.h"
#include "tests/support/dsi_builder.h"
#include "tests/unit/ac4_dsi/dsi_equal.h"

namespace mediasplit {
namespace {

using Bytes = std::vector<std::uint8_t>;

DsiRecord parse(const Bytes& bytes, std::uint32_t result = 0) {
    const Bytes held(bytes.begin(), bytes.end());  // exactly sized
    DsiRecord record;
    EXPECT_EQ(ac4_dsi_parser(held, record, nullptr), result);
    return record;
}

DsiRecord head_with(std::uint32_t n_presentations) {
    DsiRecord record;
    record.dsi_version = 1;
    record.bitstream_version = 2;
    record.fs_index = 1;
    record.n_presentations = n_presentations;
    return record;
}

// One presentation of a single group without substreams.
DsiRecord plain_record(std::uint32_t n_presentations = 1) {
    DsiRecord record = head_with(n_presentations);
    DsiPresentation presentation;
    presentation.version = 1;
    presentation.presentation_config_v1 = 31;
    presentation.groups.resize(1);
    record.presentations.assign(n_presentations, presentation);
    return record;
}

// dac4 of a stereo stream at 48 kHz, written out by hand.
TEST(DsiParser, ReadsAStereoBoxWrittenByHand) {
    MetadataBits bits;
    bits.code("001").code("0000010").code("1").code("1101").code("000000001").code("0");
    bits.code("00").put(0, 32).put(0xFFFFFFFF, 32).align();
    bits.put(1, 8).put(18, 8);
    bits.code("11111").code("001").code("0").code("00").code("00").code("00000").put(0, 10);
    bits.code("1").code("00001").put(1, 24).code("0").code("0");
    bits.code("1").code("0").code("1").put(1, 8).code("00").code("0").put(1, 24);
    bits.code("1").code("000").code("1").put(2, 6).put('e', 8).put('n', 8);
    bits.code("0").code("0").code("0").code("0").align();
    bits.code("0").code("1").code("0000").code("0").code("0");
    const DsiRecord record = parse(bits.to_bytes());
    EXPECT_EQ(record.dsi_version, 1U);
    EXPECT_EQ(record.bitstream_version, 2U);
    EXPECT_EQ(record.fs_index, 1U);
    EXPECT_EQ(record.frame_rate_index, 13U);
    EXPECT_EQ(record.bit_rate_info.bit_rate_precision, 0xFFFFFFFFU);
    ASSERT_EQ(record.presentations.size(), 1U);
    const DsiPresentation& presentation = record.presentations[0];
    EXPECT_FALSE(presentation.bad);
    EXPECT_EQ(presentation.version, 1U);
    EXPECT_EQ(presentation.pres_bytes, 18U);
    EXPECT_EQ(presentation.presentation_bytes, 18U);
    EXPECT_EQ(presentation.presentation_config_v1, 31U);
    EXPECT_EQ(presentation.mdcompat, 1U);
    EXPECT_EQ(presentation.dsi_presentation_ch_mode, 1U);
    EXPECT_EQ(presentation.presentation_channel_mask_v1, 1U);
    ASSERT_EQ(presentation.groups.size(), 1U);
    const DsiSubstreamGroup& group = presentation.groups[0];
    EXPECT_EQ(group.b_substreams_present, 1U);
    ASSERT_EQ(group.substreams.size(), 1U);
    EXPECT_EQ(group.substreams[0].dsi_substream_channel_mask, 1U);
    EXPECT_EQ(group.b_content_type, 1U);
    EXPECT_EQ(group.language_tag_bytes, "en");
    EXPECT_EQ(presentation.de_indicator, 0U);
    EXPECT_EQ(presentation.orvel_sphere_indicator, 1U);
}

TEST(DsiParser, ReadsEachElement) {
    const DsiRecord written = full_dsi_record();
    const Bytes bytes = write_dac4(written);
    const DsiRecord record = parse(bytes);
    expect_same_record(record, written);
    for (const DsiPresentation& presentation : record.presentations) {
        EXPECT_FALSE(presentation.bad);
        EXPECT_EQ(presentation.presentation_bytes, presentation.pres_bytes);
    }
    EXPECT_EQ(record.presentation_parse_end, 0U);
}

// The number of groups of each presentation_config_v1.
TEST(DsiParser, ConfigTellsTheNumberOfGroups) {
    constexpr std::uint32_t kGroups[] = {2, 2, 2, 3, 3};
    for (std::uint32_t config = 0; config < 32; ++config) {
        for (std::uint32_t minus2 = 0; minus2 < 8; minus2 += config == 5 ? 1 : 8) {
            std::uint32_t expected = config < 5 ? kGroups[config] : 0;
            expected = config == 31 ? 1 : expected;
            expected = config == 5 ? minus2 + 2 : expected;
            DsiRecord written = plain_record();
            DsiPresentation& presentation = written.presentations[0];
            presentation.presentation_config_v1 = config;
            presentation.n_substream_groups_minus2 = minus2;
            presentation.groups.assign(expected, DsiSubstreamGroup{});
            presentation.presentation_channel_mask_v1 = 0x800000;
            presentation.b_pre_virtualized = config == 6 ? 0 : 1;
            if (config == 6) {
                presentation.b_add_emdf_substreams = 1;
            }
            if (config > 6 && config < 31) {
                presentation.n_skip_bytes = config * 4;
            }
            SCOPED_TRACE(config);
            expect_same_record(parse(write_dac4(written)), written);
        }
    }
}

TEST(DsiParser, OldBitstreamVersionKeepsTheTwoVersionsOnly) {
    for (const std::uint32_t version : {0U, 1U}) {
        DsiRecord written = full_dsi_record();
        written.bitstream_version = version;
        const DsiRecord record = parse(write_dac4(written));
        EXPECT_EQ(record.dsi_version, 1U);
        EXPECT_EQ(record.bitstream_version, version);
        EXPECT_EQ(record.fs_index, 0U);
        EXPECT_EQ(record.n_presentations, 0U);
        EXPECT_TRUE(record.presentations.empty());
    }
}

TEST(DsiParser, NoPresentations) {
    const DsiRecord record = parse(write_dac4(head_with(0)));
    EXPECT_EQ(record.n_presentations, 0U);
    EXPECT_TRUE(record.presentations.empty());
}

TEST(DsiParser, EmptyPayloadIsRefused) {
    parse({}, 1);
    DsiRecord record = full_dsi_record();
    EXPECT_EQ(ac4_dsi_parser({}, record, nullptr), 1U);
    EXPECT_EQ(record.n_presentations, 0U);
}

TEST(DsiParser, CountsPayloadsAndKeepsTheLast) {
    DsiRecord record;
    EXPECT_EQ(ac4_dsi_parser(write_dac4(full_dsi_record()), record, nullptr), 0U);
    EXPECT_EQ(record.box_count, 1U);
    EXPECT_EQ(ac4_dsi_parser(write_dac4(head_with(0)), record, nullptr), 0U);
    EXPECT_EQ(record.box_count, 2U);
    expect_same_record(record, head_with(0));
}

TEST(DsiParser, ChannelMaskOfWhatIsNotChannelCodedIsTheConstant) {
    const DsiRecord record = parse(write_dac4(plain_record()));
    EXPECT_EQ(record.presentations.at(0).b_presentation_channel_coded, 0U);
    EXPECT_EQ(record.presentations.at(0).presentation_channel_mask_v1, 0x800000U);
}

TEST(DsiParser, EmdfOnlyPresentationHasNothingElse) {
    DsiRecord written = plain_record();
    DsiPresentation& presentation = written.presentations[0];
    presentation = DsiPresentation{};
    presentation.version = 1;
    presentation.presentation_config_v1 = 6;
    presentation.b_add_emdf_substreams = 1;
    presentation.n_add_emdf_substreams = 2;
    presentation.emdf_substreams = {{1, 2}, {3, 4}};
    presentation.presentation_channel_mask_v1 = 0x800000;
    const DsiRecord record = parse(write_dac4(written));
    expect_same_record(record, written);
    EXPECT_TRUE(record.presentations[0].groups.empty());
}

TEST(DsiParser, LanguageStandsInsideTheContentType) {
    DsiSubstreamGroup group;
    group.b_content_type = 0;
    // b_content_type is the last element of such a group: no language follows.
    const Bytes bytes = write_group_dsi(group).to_bytes();
    DsiSubstreamGroup read;
    std::uint64_t position = 0;
    EXPECT_EQ(f_ac4_substream_group_dsi(read, position, bytes, nullptr), 0U);
    EXPECT_EQ(position, 12U);
}

TEST(DsiParser, IndicatorsNeedAByteOfTheDeclaredSize) {
    DsiRecord written = plain_record(2);
    for (DsiPresentation& presentation : written.presentations) {
        presentation.orvel_sphere_indicator = 1;
        presentation.presentation_channel_mask_v1 = 0x800000;
    }
    // The true size is one byte too small to hold them.
    const DsiRecord without =
        parse(write_dac4(written, {false, [](auto size) { return size; }, 0}));
    ASSERT_EQ(without.presentations.size(), 2U);
    for (const DsiPresentation& presentation : without.presentations) {
        EXPECT_EQ(presentation.orvel_sphere_indicator, 0U);
        EXPECT_EQ(presentation.presentation_bytes, presentation.pres_bytes);
    }
    expect_same_record(parse(write_dac4(written)), written);
}

TEST(DsiParser, ContinuesAtTheDeclaredEnd) {
    DsiRecord written = full_dsi_record();
    const DsiRecord record = parse(write_dac4(written, {true, [](auto size) { return size; }, 7}));
    expect_same_record(record, written);
    for (const DsiPresentation& presentation : record.presentations) {
        EXPECT_EQ(presentation.presentation_bytes + 7, presentation.pres_bytes);
    }
}

TEST(DsiParser, SizeOf255HasAnExtension) {
    for (const std::uint32_t padding : {240U, 260U, 65000U}) {
        DsiRecord written = plain_record(2);
        for (DsiPresentation& presentation : written.presentations) {
            presentation.presentation_channel_mask_v1 = 0x800000;
        }
        const DsiRecord record =
            parse(write_dac4(written, {true, [](auto size) { return size; }, padding}));
        expect_same_record(record, written);
        EXPECT_EQ(record.presentations[0].pres_bytes,
                  record.presentations[0].presentation_bytes + padding);
    }
}

TEST(DsiParser, SizeOf255AtTheEndOfTheBoxIsBad) {
    Bytes bytes = write_dac4(head_with(1));
    bytes.insert(bytes.end(), {1, 255, 0});
    const DsiRecord record = parse(bytes);
    ASSERT_EQ(record.presentations.size(), 1U);
    EXPECT_TRUE(record.presentations[0].bad);
}

// Elements are read up to their end, and the next presentation stands behind them.
TEST(DsiParser, SizeOfZeroDoesNotCutThePresentation) {
    DsiRecord written = plain_record(2);
    written.presentations[1].mdcompat = 5;
    const DsiRecord record = parse(write_dac4(written, {false, [](auto) { return 0U; }, 0}));
    ASSERT_EQ(record.presentations.size(), 2U);
    EXPECT_EQ(record.presentations[0].pres_bytes, 0U);
    EXPECT_GT(record.presentations[0].presentation_bytes, 0U);
    EXPECT_EQ(record.presentations[1].mdcompat, 5U);
}

TEST(DsiParser, Version0PresentationEndsTheReading) {
    DsiRecord written = plain_record(3);
    written.presentations[1].version = 0;
    const DsiRecord record = parse(write_dac4(written));
    EXPECT_EQ(record.n_presentations, 3U);
    EXPECT_EQ(record.presentation_parse_end, 2U);
    ASSERT_EQ(record.presentations.size(), 2U);
    EXPECT_EQ(record.presentations[1].presentation_config_v1, 0U);
    EXPECT_FALSE(record.presentations[1].bad);
}

TEST(DsiParser, PresentationOfALaterVersionIsPassedOver) {
    DsiRecord written = plain_record(2);
    written.presentations[0].version = 3;
    written.presentations[1].mdcompat = 2;
    const DsiRecord record = parse(write_dac4(written));
    ASSERT_EQ(record.presentations.size(), 2U);
    EXPECT_EQ(record.presentations[0].presentation_config_v1, 0U);
    EXPECT_EQ(record.presentations[1].mdcompat, 2U);
}

TEST(DsiParser, CountOf511InTwentyBytesTakesWhatIsThere) {
    Bytes bytes = write_dac4(head_with(511));
    bytes.resize(20, 0x01);  // versions of 1
    const DsiRecord record = parse(bytes);
    EXPECT_EQ(record.n_presentations, 511U);
    ASSERT_FALSE(record.presentations.empty());
    EXPECT_LE(record.presentations.size(), 3U);
    EXPECT_LE(record.presentations.capacity(), 8U);
}

TEST(DsiParser, SubstreamCountOf255AtTheEndTakesWhatIsThere) {
    DsiSubstreamGroup group;
    group.n_substreams = 255;
    Bytes bytes = write_group_dsi(group).to_bytes();
    DsiSubstreamGroup read;
    std::uint64_t position = 0;
    EXPECT_EQ(f_ac4_substream_group_dsi(read, position, bytes, nullptr), 1U);
    EXPECT_EQ(read.n_substreams, 255U);
    EXPECT_LE(read.substreams.capacity(), 4U);
}

TEST(DsiParser, LengthsBeyondTheEndLeaveTheirBytesEmpty) {
    DsiRecord written = plain_record();
    written.presentations[0].b_presentation_filter = 1;
    written.presentations[0].n_filter_bytes = 255;
    const DsiRecord filter = parse(write_dac4(written));
    EXPECT_EQ(filter.presentations.at(0).n_filter_bytes, 255U);
    EXPECT_TRUE(filter.presentations[0].filter_data.empty());
    EXPECT_TRUE(filter.presentations[0].bad);

    written = plain_record();
    DsiSubstreamGroup& group = written.presentations[0].groups[0];
    group.b_content_type = 1;
    group.b_language_indicator = 1;
    group.n_language_tag_bytes = 63;
    const DsiRecord language = parse(write_dac4(written));
    EXPECT_EQ(language.presentations.at(0).groups.at(0).n_language_tag_bytes, 63U);
    EXPECT_TRUE(language.presentations[0].groups[0].language_tag_bytes.empty());
    EXPECT_TRUE(language.presentations[0].bad);
}

TEST(DsiParser, CutBoxKeepsWhatStandsAheadOfTheCut) {
    const DsiRecord written = full_dsi_record();
    const Bytes bytes = write_dac4(written);
    const std::size_t head = write_dsi_head(written).size() / 8;
    for (std::size_t size = 1; size < bytes.size(); ++size) {
        const DsiRecord record =
            parse(Bytes(bytes.begin(), bytes.begin() + static_cast<long>(size)));
        EXPECT_EQ(record.dsi_version, 1U);
        EXPECT_EQ(record.presentations.empty(), size <= head) << size;
        if (size > head) {
            EXPECT_EQ(record.short_program_id, written.short_program_id);
            const DsiPresentation& last = record.presentations.back();
            const bool all_read = last.presentation_bytes > 0;
            EXPECT_EQ(last.bad, !all_read) << size;
            for (std::size_t p = 0; p + 1 < record.presentations.size(); ++p) {
                expect_same_presentation(record.presentations[p], written.presentations[p]);
            }
        }
    }
}

TEST(DsiParser, AnyByteMayBeWrong) {
    const Bytes bytes = write_dac4(full_dsi_record());
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        for (const unsigned flip : {0x01U, 0x80U, 0xFFU, 0x55U}) {
            Bytes damaged = bytes;
            damaged[i] = static_cast<std::uint8_t>(damaged[i] ^ flip);
            const DsiRecord record = parse(damaged);
            EXPECT_LE(record.presentations.size(), record.n_presentations);
        }
    }
}

TEST(DsiParser, PutsEachElementIntoTheTree) {
    const DsiRecord written = full_dsi_record();
    const Bytes bytes = write_dac4(written);
    const EzxmlPtr tree = ezxml_new("dac4");
    DsiRecord record;
    ASSERT_EQ(ac4_dsi_parser(bytes, record, tree.get()), 0U);
    const auto text = [](const Ezxml* node, const char* name) {
        const Ezxml* child = ezxml_child(node, name);
        return child != nullptr ? std::string(child->txt) : std::string("none");
    };
    EXPECT_EQ(text(tree.get(), "dsi_version"), "1");
    EXPECT_EQ(text(tree.get(), "short_program_id"), "43981");
    EXPECT_EQ(text(tree.get(), "program_uuid"), "00112233-4455-6677-8899-aabbccddeeff");
    EXPECT_EQ(text(tree.get(), "bit_rate"), "3735928559");
    std::vector<std::string> names;
    for (const Ezxml* child = tree->child; child != nullptr; child = child->ordered) {
        names.emplace_back(child->name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{
                         "dsi_version", "bitstream_version", "fs_index", "frame_rate_index",
                         "n_presentations", "b_program_id", "short_program_id", "b_uuid",
                         "program_uuid", "bit_rate_mode", "bit_rate", "bit_rate_precision",
                         "ac4_presentation_dsi", "ac4_presentation_dsi", "ac4_presentation_dsi"}));
    const Ezxml* presentation = ezxml_child(tree.get(), "ac4_presentation_dsi");
    ASSERT_NE(presentation, nullptr);
    EXPECT_EQ(text(presentation, "presentation_version"), "1");
    EXPECT_EQ(text(presentation, "presentation_config_v1"), "5");
    EXPECT_EQ(text(presentation, "presentation_channel_mask_v1"), "127");
    EXPECT_STREQ(ezxml_attr(ezxml_child(presentation, "filter_data"), "size"), "3");
    EXPECT_EQ(text(presentation, "extended_presentation_id"), "400");
    EXPECT_EQ(text(presentation, "reserved_field_2"), "none");
    EXPECT_STREQ(ezxml_attr(ezxml_child(presentation, "mdcompat"), "ui-id"),
                 std::to_string(reinterpret_cast<std::uintptr_t>(&record.presentations[0].mdcompat))
                     .c_str());
    const Ezxml* group = ezxml_child(presentation, "ac4_substream_group_dsi");
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(text(group, "language_tag_bytes"), "en-GB");
    EXPECT_EQ(text(ezxml_child(group, "ac4_substream_dsi"), "dsi_substream_channel_mask"), "71");
}

TEST(DsiParser, TreeNamesTheFirstBitOfAGroupPresentationFilter) {
    const DsiSubstreamGroup written = full_dsi_record().presentations[0].groups[0];
    const EzxmlPtr tree = ezxml_new("group");
    DsiSubstreamGroup group;
    std::uint64_t position = 0;
    const Bytes bytes = write_group_dsi(written).to_bytes();
    ASSERT_EQ(f_ac4_substream_group_dsi(group, position, bytes, tree.get()), 0U);
    expect_same_group(group, written);
    EXPECT_STREQ(tree->child->name, "b_presentation_filter");
    EXPECT_STREQ(tree->child->txt, "1");
    EXPECT_EQ(ezxml_child(tree.get(), "b_substreams_present"), nullptr);
}

}  // namespace
}  // namespace mediasplit
