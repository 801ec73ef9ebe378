#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "src/ac4analyze_impl/dsi_compare.h"
#include "tests/support/dsi_builder.h"
#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

using Ids = std::vector<int>;

ReferenceDsi reference_of(const DsiRecord& record) {
    ReferenceDsi reference;
    static_cast<DsiHead&>(reference) = record;
    reference.presentations = record.presentations;
    return reference;
}

// A record of one presentation.
DsiRecord single_record(const DsiPresentation& presentation) {
    DsiRecord record = full_dsi_record();
    record.n_presentations = 1;
    record.presentations = {presentation};
    return record;
}

DsiRecord rich_record() {
    DsiRecord record = single_record(full_dsi_record().presentations[0]);
    record.presentations[0].b_extended_presentation_id = 0;
    return record;
}

// Two presentations of one group that differ in their ids.
DsiRecord record_of_two() {
    DsiPresentation presentation = full_dsi_record().presentations[2];
    presentation.version = 1;
    presentation.b_presentation_id = 1;
    presentation.presentation_id = 3;
    DsiRecord record = single_record(presentation);
    record.n_presentations = 2;
    presentation.presentation_id = 4;
    record.presentations.push_back(presentation);
    return record;
}

struct Compared {
    Ids ids;
    std::vector<std::string> texts;
    Status status = Status::kOk;
};

Compared compare(const DsiRecord& stream, DsiRecord& box, bool iframe = true) {
    RecordingSink sink;
    const ReferenceDsi reference = reference_of(stream);
    Compared out;
    out.status = ac4_Ac4SpecificBox_comp(&reference, &box, iframe, nullptr);
    out.ids = sink.ids();
    for (const RecordedReport& report : sink.reports()) {
        out.texts.push_back(report.text);
    }
    return out;
}

using Change = std::function<void(DsiRecord&)>;
Change in_presentation(std::function<void(DsiPresentation&)> change) {
    return [change](DsiRecord& record) { change(record.presentations[0]); };
}
Change in_group(std::size_t g, std::function<void(DsiSubstreamGroup&)> change) {
    return [g, change](DsiRecord& record) { change(record.presentations[0].groups[g]); };
}
Change in_substream(std::size_t g, std::function<void(DsiSubstream&)> change) {
    return in_group(g, [change](DsiSubstreamGroup& group) { change(group.substreams[0]); });
}

struct Case {
    int id;
    Change change;
};

std::vector<Case> cases() {
    using P = DsiPresentation;
    using G = DsiSubstreamGroup;
    using S = DsiSubstream;
    return {
        {4415, [](DsiRecord& r) { r.dsi_version = 0; }},
        {4419, [](DsiRecord& r) { r.bitstream_version = 3; }},
        {4420, [](DsiRecord& r) { r.fs_index = 0; }},
        {4421, [](DsiRecord& r) { r.frame_rate_index = 1; }},
        {4423, [](DsiRecord& r) { r.n_presentations = 2; }},
        {4424, [](DsiRecord& r) { r.b_program_id = 0; }},
        {4425, [](DsiRecord& r) { r.short_program_id = 1; }},
        {4426, [](DsiRecord& r) { r.b_uuid = 0; }},
        {4427, [](DsiRecord& r) { r.program_uuid[15] = 0; }},
        {4418, in_presentation([](P& p) { p.version = 2; })},
        {4429, in_presentation([](P& p) { p.presentation_config_v1 = 4; })},
        {4430, in_presentation([](P& p) { p.mdcompat = 1; })},
        {4431, in_presentation([](P& p) { p.b_presentation_id = 0; })},
        {4432, in_presentation([](P& p) { p.presentation_id = 1; })},
        {4433, in_presentation([](P& p) { p.dsi_frame_rate_multiply_info = 0; })},
        {4434, in_presentation([](P& p) { p.dsi_frame_rate_fraction_info = 0; })},
        {4435, in_presentation([](P& p) { p.presentation_emdf_version = 0; })},
        {4436, in_presentation([](P& p) { p.presentation_key_id = 0; })},
        {4437, in_presentation([](P& p) { p.b_presentation_channel_coded = 0; })},
        {4438, in_presentation([](P& p) { p.dsi_presentation_ch_mode = 11; })},
        {4439, in_presentation([](P& p) { p.pres_b_4_back_channels_present = 0; })},
        {4440, in_presentation([](P& p) { p.pres_top_channel_pairs = 1; })},
        {4441, in_presentation([](P& p) { p.presentation_channel_mask_v1 = 0; })},
        {4442, in_presentation([](P& p) { p.b_presentation_core_differs = 0; })},
        {4443, in_presentation([](P& p) { p.b_presentation_core_channel_coded = 0; })},
        {4444, in_presentation([](P& p) { p.dsi_presentation_channel_mode_core = 2; })},
        {4445, in_presentation([](P& p) { p.b_presentation_filter = 0; })},
        {4446, in_presentation([](P& p) { p.b_enable_presentation = 0; })},
        {4447, in_presentation([](P& p) { p.n_filter_bytes = 2; })},
        {4448, in_presentation([](P& p) { p.filter_data[2] = 'x'; })},
        {4449, in_presentation([](P& p) { p.b_multi_pid = 0; })},
        {4450, in_presentation([](P& p) { p.n_substream_groups_minus2 = 0; })},
        {4451, in_group(0, [](G& g) { g.b_substreams_present = 0; })},
        {4452, in_group(0, [](G& g) { g.b_hsf_ext = 0; })},
        {4453, in_group(0, [](G& g) { g.b_channel_coded = 0; })},
        {4454, in_group(0, [](G& g) { g.n_substreams = 3; })},
        {4454, in_group(0, [](G& g) { g.n_substreams = 0; })},
        {4455, in_substream(0, [](S& s) { s.dsi_sf_multiplier = 0; })},
        {4456, in_substream(0, [](S& s) { s.dsi_substream_channel_mask = 0; })},
        {4457, in_substream(1, [](S& s) { s.b_ajoc = 0; })},
        {4458, in_substream(1, [](S& s) { s.b_static_dmx = 1; })},
        {4459, in_substream(1, [](S& s) { s.n_dmx_objects_minus1 = 0; })},
        {4460, in_substream(1, [](S& s) { s.n_umx_objects_minus1 = 0; })},
        {4461, in_substream(1, [](S& s) { s.b_substream_contains_bed_objects = 0; })},
        {4462, in_substream(1, [](S& s) { s.b_substream_contains_dynamic_objects = 1; })},
        {4463, in_substream(1, [](S& s) { s.b_substream_contains_ISF_objects = 1; })},
        {4464, in_group(2, [](G& g) { g.b_content_type = 0; })},
        {4465, in_group(2, [](G& g) { g.content_classifier = 0; })},
        {4467, in_presentation([](P& p) { p.b_pre_virtualized = 0; })},
        {4468, in_presentation([](P& p) { p.b_add_emdf_substreams = 0; })},
        {4469, in_presentation([](P& p) { p.n_add_emdf_substreams = 1; })},
        {4470, in_presentation([](P& p) { p.emdf_substreams[0].emdf_version = 0; })},
        {4471, in_presentation([](P& p) { p.emdf_substreams[0].substream_key_id = 0; })},
        {4472, in_presentation([](P& p) { p.b_presentation_bitrate_info = 0; })},
        {4473, in_presentation([](P& p) { p.orvel_sphere_indicator = 0; })},
    };
}

TEST(DsiComparison, EqualRecordsRaiseNothing) {
    for (const DsiRecord& stream : {rich_record(), record_of_two()}) {
        DsiRecord box = stream;
        const Compared compared = compare(stream, box);
        EXPECT_EQ(compared.ids, Ids{});
        EXPECT_EQ(compared.status, Status::kOk);
    }
}

TEST(DsiComparison, EachFieldChangedAloneRaisesItsMessageAlone) {
    for (const Case& each : cases()) {
        const DsiRecord stream = rich_record();
        DsiRecord box = stream;
        each.change(box);
        const Compared compared = compare(stream, box);
        EXPECT_EQ(compared.ids, Ids{each.id});
        EXPECT_EQ(compared.status, Status::kRuleBroken) << each.id;
    }
}

TEST(DsiComparison, EachFieldIsTestedWhenNothingDiffers) {
    const DsiRecord stream = rich_record();
    DsiRecord box = stream;
    RecordingSink sink;
    const ReferenceDsi reference = reference_of(stream);
    EXPECT_EQ(ac4_Ac4SpecificBox_comp(&reference, &box, true, nullptr), Status::kOk);
    for (const Case& each : cases()) {
        EXPECT_TRUE(sink.was_evaluated(each.id)) << each.id;
    }
}

TEST(DsiComparison, MessagesComeInTheOrderOfTheBox) {
    // Two changes at a time, the later one made first.
    const std::vector<Case> all = cases();
    const std::vector<int> ends = {4419, 4423, 4418, 4429};
    for (std::size_t i = 0; i + 1 < all.size(); ++i) {
        const Case& first = all[i];
        const Case& second = all[i + 1];
        const DsiRecord stream = rich_record();
        DsiRecord box = stream;
        second.change(box);
        first.change(box);
        Ids expected = {first.id, second.id};
        if (std::find(ends.begin(), ends.end(), first.id) != ends.end()) {
            expected = {first.id};
        }
        const Compared compared = compare(stream, box);
        if (first.id == second.id || first.id == 4454 || second.id == 4454) {
            continue;  // one substream less to look at
        }
        EXPECT_EQ(compared.ids, expected) << first.id << " " << second.id;
    }
}

TEST(DsiComparison, ExpectedValueIsTheStreamsAndActualTheBoxs) {
    const DsiRecord stream = rich_record();
    DsiRecord box = stream;
    box.fs_index = 0;
    box.presentations[0].mdcompat = 1;
    box.presentations[0].groups[1].b_hsf_ext = 1;
    box.presentations[0].groups[1].substreams[1].n_umx_objects_minus1 = 2;
    box.presentations[0].emdf_substreams[1].emdf_version = 9;
    const std::vector<std::string> texts = compare(stream, box).texts;
    ASSERT_EQ(texts.size(), 5U);
    EXPECT_NE(texts[0].find("expected fs_index value: 1; actual value: 0"), std::string::npos);
    EXPECT_NE(texts[1].find("[index : 0] info"), std::string::npos);
    EXPECT_NE(texts[1].find("expected mdcompat value: 3; actual value: 1"), std::string::npos);
    EXPECT_NE(texts[2].find("group [index : 1] of presentation [index : 0]"), std::string::npos);
    EXPECT_NE(texts[2].find("value: 0; actual value: 1"), std::string::npos);
    EXPECT_NE(
        texts[3].find("substream [index : 1] of group [index : 1] of presentation [index : 0]"),
        std::string::npos);
    EXPECT_NE(texts[3].find("value: 14; actual value: 2"), std::string::npos);
    EXPECT_NE(texts[4].find("emdf substream [index : 1] of presentation [index : 0]"),
              std::string::npos);
    EXPECT_NE(texts[4].find("value: 3; actual value: 9"), std::string::npos);
}

// Fields behind a condition that the stream doesn't meet aren't looked at.
TEST(DsiComparison, FieldsThatDoNotApplyAreNotCompared) {
    struct Gate {
        Change close;   // on both sides
        Change differ;  // in the box
    };
    using P = DsiPresentation;
    const std::vector<Gate> gates = {
        {[](DsiRecord& r) { r.b_program_id = 0; }, [](DsiRecord& r) { r.short_program_id = 1; }},
        {[](DsiRecord& r) { r.b_uuid = 0; }, [](DsiRecord& r) { r.program_uuid = {}; }},
        {in_presentation([](P& p) { p.b_presentation_id = 0; }),
         in_presentation([](P& p) { p.presentation_id = 1; })},
        {in_presentation([](P& p) { p.b_presentation_channel_coded = 0; }),
         in_presentation([](P& p) {
             p.dsi_presentation_ch_mode = 1;
             p.pres_b_4_back_channels_present = 0;
             p.pres_top_channel_pairs = 0;
         })},
        {in_presentation([](P& p) { p.dsi_presentation_ch_mode = 3; }), in_presentation([](P& p) {
             p.pres_b_4_back_channels_present = 0;
             p.pres_top_channel_pairs = 0;
         })},
        {in_presentation([](P& p) { p.b_presentation_core_differs = 0; }),
         in_presentation([](P& p) { p.b_presentation_core_channel_coded = 0; })},
        {in_presentation([](P& p) { p.b_presentation_core_channel_coded = 0; }),
         in_presentation([](P& p) { p.dsi_presentation_channel_mode_core = 0; })},
        {in_presentation([](P& p) { p.b_presentation_filter = 0; }), in_presentation([](P& p) {
             p.b_enable_presentation = 0;
             p.n_filter_bytes = 0;
             p.filter_data = "xyz";
         })},
        {in_presentation([](P& p) { p.presentation_config_v1 = 31; }), in_presentation([](P& p) {
             p.b_multi_pid = 0;
             p.n_substream_groups_minus2 = 7;
         })},
        {in_presentation([](P& p) { p.presentation_config_v1 = 4; }),
         in_presentation([](P& p) { p.n_substream_groups_minus2 = 7; })},
        {in_presentation([](P& p) { p.b_add_emdf_substreams = 0; }),
         in_presentation([](P& p) { p.n_add_emdf_substreams = 3; })},
        {in_substream(1, [](DsiSubstream& s) { s.b_ajoc = 0; }),
         in_substream(1,
                      [](DsiSubstream& s) {
                          s.b_static_dmx = 1;
                          s.n_dmx_objects_minus1 = 0;
                          s.n_umx_objects_minus1 = 0;
                      })},
        {in_substream(1, [](DsiSubstream& s) { s.b_static_dmx = 1; }),
         in_substream(1, [](DsiSubstream& s) { s.n_dmx_objects_minus1 = 0; })},
        {in_substream(0, [](DsiSubstream&) {}),
         in_substream(0, [](DsiSubstream& s) { s.b_ajoc = 1; })},
        {in_substream(1, [](DsiSubstream&) {}),
         in_substream(1, [](DsiSubstream& s) { s.dsi_substream_channel_mask = 1; })},
        {in_group(0, [](DsiSubstreamGroup& g) { g.b_content_type = 0; }),
         in_group(0, [](DsiSubstreamGroup& g) { g.content_classifier = 0; })},
        {in_presentation([](P& p) { p.b_extended_presentation_id = 1; }),
         in_presentation([](P& p) { p.presentation_id = 1; })},
        // Languages, rates, the name and dialogue enhancement are no part of the comparison.
        {in_presentation([](P&) {}), in_presentation([](P& p) {
             p.groups[0].language_tag_bytes = "de";
             p.bit_rate_info = {};
             p.b_alternative = 0;
             p.de_indicator = 0;
             p.groups[0].substreams[1].substream_bitrate_indicator = 0;
         })},
    };
    for (std::size_t i = 0; i < gates.size(); ++i) {
        DsiRecord stream = rich_record();
        gates[i].close(stream);
        DsiRecord box = stream;
        gates[i].differ(box);
        EXPECT_EQ(compare(stream, box).ids, Ids{}) << i;
    }
}

TEST(DsiComparison, NothingIsDoneWithoutARecordOrBehindAVersion0Presentation) {
    const DsiRecord stream = rich_record();
    const ReferenceDsi reference = reference_of(stream);
    DsiRecord box;
    RecordingSink sink;
    EXPECT_EQ(ac4_Ac4SpecificBox_comp(nullptr, &box, true, nullptr), Status::kOk);
    EXPECT_EQ(ac4_Ac4SpecificBox_comp(&reference, nullptr, true, nullptr), Status::kOk);
    box.presentation_parse_end = 1;
    EXPECT_EQ(ac4_Ac4SpecificBox_comp(&reference, &box, true, nullptr), Status::kOk);
    EXPECT_EQ(sink.ids(), Ids{});
}

TEST(DsiComparison, MoreThan64PresentationsCannotBeVerified) {
    DsiRecord stream = rich_record();
    stream.n_presentations = 64;
    DsiRecord box = rich_record();
    EXPECT_EQ(compare(stream, box).ids, Ids{4423});
    stream.n_presentations = 65;
    const Compared compared = compare(stream, box);
    EXPECT_EQ(compared.ids, Ids{4422});
    EXPECT_NE(compared.texts[0].find("over 64 presentations"), std::string::npos);
    EXPECT_EQ(compared.status, Status::kRuleBroken);
}

TEST(DsiComparison, SeveralPresentationsOfTheBoxNeedAnId) {
    const DsiRecord stream = record_of_two();
    DsiRecord box = stream;
    box.presentations[0].b_presentation_id = 0;
    box.presentations[0].mdcompat = 7;  // not looked at any more
    box.presentations[1].mdcompat = 7;
    const Compared compared = compare(stream, box);
    EXPECT_EQ(compared.ids, (Ids{4428, 4430}));
    EXPECT_NE(compared.texts[0].find("expected b_presentation_id value: 1; actual value: 0"),
              std::string::npos);
}

TEST(DsiComparison, SinglePresentationNeedsNoId) {
    DsiRecord stream = rich_record();
    stream.presentations[0].b_presentation_id = 0;
    stream.presentations[0].presentation_id = 0;
    DsiRecord box = stream;
    EXPECT_EQ(compare(stream, box).ids, Ids{});
}

TEST(DsiComparison, PresentationsAreMatchedByIdInAnyOrder) {
    DsiRecord stream = record_of_two();
    stream.presentations[0].mdcompat = 2;
    DsiRecord box = stream;
    std::swap(box.presentations[0], box.presentations[1]);
    EXPECT_EQ(compare(stream, box).ids, Ids{});
}

TEST(DsiComparison, IdThatTheStreamDoesNotHave) {
    const DsiRecord stream = record_of_two();
    DsiRecord box = stream;
    box.presentations[0].presentation_id = 9;
    const Compared compared = compare(stream, box);
    EXPECT_EQ(compared.ids, Ids{4417});
    EXPECT_NE(compared.texts[0].find("presentation [index: 0]"), std::string::npos);
    DsiRecord other_version = stream;
    other_version.presentations[1].version = 2;
    EXPECT_EQ(compare(stream, other_version).ids, Ids{4417});
}

TEST(DsiComparison, StreamPresentationWithoutIdIsToldEachTimeItIsPassed) {
    DsiRecord stream = record_of_two();
    stream.presentations[0].b_presentation_id = 0;
    stream.presentations[0].presentation_id = 0;
    DsiRecord box = record_of_two();
    // The first of the box finds no match behind it, the second finds the second.
    EXPECT_EQ(compare(stream, box).ids, (Ids{4484, 4417, 4484}));
}

TEST(DsiComparison, FirstOfTwoPresentationsWithOneIdMatches) {
    DsiRecord stream = record_of_two();
    stream.presentations[1].presentation_id = 3;
    stream.presentations[1].mdcompat = 5;
    DsiRecord box = stream;
    box.presentations[1].mdcompat = stream.presentations[0].mdcompat;
    EXPECT_EQ(compare(stream, box).ids, Ids{});
}

TEST(DsiComparison, ExtendedIdMatchesOnlyItsLike) {
    DsiRecord stream = record_of_two();
    for (DsiPresentation& presentation : stream.presentations) {
        presentation.b_extended_presentation_id = 1;
        presentation.extended_presentation_id = 100 + presentation.presentation_id;
    }
    DsiRecord box = stream;
    box.presentations[0].presentation_id = 31;  // doesn't count
    EXPECT_EQ(compare(stream, box).ids, Ids{});
    box.presentations[0].extended_presentation_id = 99;
    EXPECT_EQ(compare(stream, box).ids, Ids{4417});
    box = stream;
    box.presentations[0].b_extended_presentation_id = 0;
    EXPECT_EQ(compare(stream, box).ids, Ids{4417});
    DsiRecord plain_stream = record_of_two();
    box = stream;
    EXPECT_EQ(compare(plain_stream, box).ids, (Ids{4417, 4417}));
}

TEST(DsiComparison, Version0PresentationOfTheStreamIsNotCompared) {
    DsiRecord stream = rich_record();
    stream.presentations[0].version = 0;
    DsiRecord box = stream;
    box.presentations[0].mdcompat = 7;
    EXPECT_EQ(compare(stream, box).ids, Ids{});
    EXPECT_FALSE(box.presentations[0].compared);
}

TEST(DsiComparison, DifferentConfigEndsTheComparison) {
    const DsiRecord stream = record_of_two();
    DsiRecord box = stream;
    box.presentations[0].presentation_config_v1 = 4;
    box.presentations[1].mdcompat = 7;
    EXPECT_EQ(compare(stream, box).ids, Ids{4429});
}

TEST(DsiComparison, MissingPartsOfACutBoxCompareAsZero) {
    const DsiRecord stream = rich_record();
    DsiRecord box = stream;
    box.presentations[0].groups.resize(2);
    box.presentations[0].groups[1].substreams.resize(1);
    box.presentations[0].emdf_substreams.clear();
    const Compared compared = compare(stream, box);
    EXPECT_EQ(compared.ids, (Ids{4457, 4458, 4460, 4462,  // second substream of the second group
                                 4454, 4464, 4465,        // the third group
                                 4470, 4471, 4470, 4471}));
    box.presentations.clear();
    EXPECT_EQ(compare(stream, box).ids, Ids{4418});
}

TEST(DsiComparison, SphereIndicatorOfAnObjectPresentationMustBeEqual) {
    DsiRecord stream = rich_record();
    stream.presentations[0].b_presentation_channel_coded = 0;
    for (const bool iframe : {true, false}) {
        DsiRecord box = stream;
        box.presentations[0].orvel_sphere_indicator = 0;
        const Compared compared = compare(stream, box, iframe);
        EXPECT_EQ(compared.ids, Ids{2049});
        EXPECT_EQ(compared.status, Status::kOk);  // a warning
        DsiRecord silent = stream;
        silent.presentations[0].orvel_sphere_indicator = 0;
        box = stream;
        EXPECT_EQ(compare(silent, box, iframe).ids, Ids{2049});
    }
}

TEST(DsiComparison, SphereIndicatorOfAChannelPresentationIsLookedAtOnIFrames) {
    const DsiRecord stream = rich_record();
    DsiRecord box = stream;
    box.presentations[0].orvel_sphere_indicator = 0;
    EXPECT_EQ(compare(stream, box, true).ids, Ids{4473});
    EXPECT_EQ(compare(stream, box, false).ids, Ids{});
}

TEST(DsiComparison, BoxMayAnnounceASphereIndicatorThatAFrameDoesNotHave) {
    DsiRecord stream = rich_record();
    stream.presentations[0].orvel_sphere_indicator = 0;
    DsiRecord box = rich_record();
    EXPECT_EQ(compare(stream, box, true).ids, Ids{});
    EXPECT_TRUE(box.presentations[0].compared);
    EXPECT_EQ(box.presentations[0].stream_orvel_sphere_indicator, 0U);
    RecordingSink sink;
    EXPECT_EQ(ac4_check_sphere_indicators(box, nullptr), Status::kRuleBroken);
    ASSERT_EQ(sink.ids(), Ids{4473});
    EXPECT_NE(sink.reports()[0].text.find("[index : 0]"), std::string::npos);
    EXPECT_NE(sink.reports()[0].text.find("value: 0; actual value: 1"), std::string::npos);
}

TEST(DsiComparison, OneFrameWithTheSphereIndicatorServesTheTrack) {
    DsiRecord stream = rich_record();
    DsiRecord box = rich_record();
    for (const std::uint32_t indicator : {0U, 1U, 0U}) {
        stream.presentations[0].orvel_sphere_indicator = indicator;
        compare(stream, box);
    }
    EXPECT_EQ(box.presentations[0].stream_orvel_sphere_indicator, 1U);
    RecordingSink sink;
    EXPECT_EQ(ac4_check_sphere_indicators(box, nullptr), Status::kOk);
    EXPECT_EQ(sink.ids(), Ids{});
    EXPECT_TRUE(sink.was_evaluated(4473));
}

TEST(DsiComparison, TrackThatWasNotComparedHasNoSphereIndicatorToCheck) {
    DsiRecord box = rich_record();
    RecordingSink sink;
    EXPECT_EQ(ac4_check_sphere_indicators(box, nullptr), Status::kOk);
    box.presentations[0].compared = true;
    box.presentations[0].orvel_sphere_indicator = 0;
    EXPECT_EQ(ac4_check_sphere_indicators(box, nullptr), Status::kOk);
    EXPECT_EQ(sink.ids(), Ids{});
}

// Presentations of as many groups and substreams; their ids are 1, 2 and so on.
DsiRecord record_of_shape(std::uint32_t presentations, std::uint32_t groups,
                          std::uint32_t substreams) {
    DsiSubstreamGroup group;
    group.b_channel_coded = 1;
    group.n_substreams = substreams;
    group.substreams.resize(substreams);
    DsiPresentation presentation = full_dsi_record().presentations[0];
    presentation.n_substream_groups_minus2 = groups - 2;
    presentation.groups.assign(groups, group);
    DsiRecord record = single_record(presentation);
    record.n_presentations = presentations;
    record.presentations.assign(presentations, presentation);
    for (std::uint32_t p = 0; p < presentations; ++p) {
        record.presentations[p].b_extended_presentation_id = 1;
        record.presentations[p].extended_presentation_id = p + 1;
    }
    return record;
}

void change_all_substreams(DsiRecord* record) {
    for (DsiPresentation& presentation : record->presentations) {
        for (DsiSubstreamGroup& group : presentation.groups) {
            for (DsiSubstream& substream : group.substreams) {
                substream.dsi_sf_multiplier = 1;
            }
        }
    }
}

TEST(DsiComparison, FramesThatLackAllIdsAreToldInFullOnceAndNotForEver) {
    DsiRecord stream = record_of_shape(64, 2, 0);
    for (DsiPresentation& presentation : stream.presentations) {
        presentation.b_presentation_id = 0;
        presentation.extended_presentation_id = 0;
    }
    const ReferenceDsi reference = reference_of(stream);
    DsiRecord box = record_of_shape(64, 2, 0);
    RecordingSink sink;
    EXPECT_EQ(ac4_Ac4SpecificBox_comp(&reference, &box, true, nullptr), Status::kRuleBroken);
    EXPECT_EQ(sink.count(4484), 64U * 64U);
    EXPECT_EQ(sink.count(4417), 64U);
    EXPECT_TRUE(sink.notes().empty());
    sink.clear();
    for (int i = 0; i < 1000; ++i) {
        static_cast<void>(ac4_Ac4SpecificBox_comp(&reference, &box, true, nullptr));
    }
    EXPECT_LT(sink.count(4484), 64U * 64U);
    EXPECT_EQ(sink.notes(),
              std::vector<std::string>{"Frames of an AC-4 track were no longer compared with its "
                                       "box: they ask for too much."});
    sink.clear();
    EXPECT_EQ(ac4_Ac4SpecificBox_comp(&reference, &box, true, nullptr), Status::kOk);
    EXPECT_EQ(sink.ids(), Ids{});
}

TEST(DsiComparison, FramesThatNameLongGroupsAllOverEndTheComparison) {
    const ReferenceDsi reference = reference_of(record_of_shape(64, 8, 128));
    DsiRecord box = record_of_shape(64, 8, 128);
    change_all_substreams(&box);
    RecordingSink sink;
    for (int i = 0; i < 1000 && sink.count(4455) < 5000; ++i) {
        static_cast<void>(ac4_Ac4SpecificBox_comp(&reference, &box, true, nullptr));
    }
    EXPECT_GT(sink.count(4455), 1000U);
    EXPECT_LT(sink.count(4455), 5000U);
    EXPECT_EQ(sink.notes().size(), 1U);
    // Frames that weren't compared may have had what the box announces.
    box.presentations[0].stream_orvel_sphere_indicator = 0;
    sink.clear();
    EXPECT_EQ(ac4_check_sphere_indicators(box, nullptr), Status::kOk);
    EXPECT_EQ(sink.ids(), Ids{});
}

TEST(DsiComparison, LargeFramesWithFindingsAreComparedForEver) {
    const ReferenceDsi reference = reference_of(record_of_shape(20, 5, 2));
    DsiRecord box = record_of_shape(20, 5, 2);
    for (DsiPresentation& presentation : box.presentations) {
        presentation.mdcompat = 1;
        presentation.groups[4].substreams[1].dsi_sf_multiplier = 1;
    }
    for (int i = 0; i < 3; ++i) {
        RecordingSink sink;
        static_cast<void>(ac4_Ac4SpecificBox_comp(&reference, &box, true, nullptr));
        EXPECT_EQ(sink.ids().size(), 40U);
        EXPECT_EQ(box.spare_work, kSpareWorkOfABox);
    }
}

// A configuration behind 5 that both sides share has no skip bytes on either.
TEST(DsiComparison, SkipBytesAreComparedForConfigsBehindFive) {
    DsiRecord stream = record_of_two();
    DsiRecord box = stream;
    box.presentations[0].n_skip_bytes = 1;
    EXPECT_EQ(compare(stream, box).ids, Ids{4466});
    stream = rich_record();
    box = stream;
    box.presentations[0].n_skip_bytes = 1;
    EXPECT_EQ(compare(stream, box).ids, Ids{});
}

}  // namespace
}  // namespace mediasplit
