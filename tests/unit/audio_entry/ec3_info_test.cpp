// Records of the bitstream against records of the box, field by field.
#include <gtest/gtest.h>

#include <functional>

#include "src/fmp4demuxer/checks/audio_entry.h"
#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

struct Pair {
    OapEsInfo info{};
    Ec3Config config{};
};

// Two programmes, the first with a dependent substream of Lc/Rc and LFE2; the box says the same.
Pair matching() {
    Pair pair;
    pair.info.framesets = 1;
    pair.info.data_rate = 640;
    pair.info.num_programs = 2;
    pair.config.ec3_datarate = 640;
    pair.config.ec3_ind_sub_stream_count = 2;
    for (std::size_t i = 0; i < 2; ++i) {
        OapProgramInfo& program = pair.info.program[i];
        program.bsid = 16;
        program.bsmod = 1;
        program.fscod = 2;
        program.acmod = 7;
        program.lfeon = 1;
        Ec3Substream& substream = pair.config.substreams[i];
        substream.bsid = 16;
        substream.bsmod = 1;
        substream.fscod = 2;
        substream.acmod = 7;
        substream.lfeon = 1;
    }
    pair.info.program[0].num_dependent = 1;
    pair.info.program[0].dependent[0].chanmap = 1U << 10 | 1U << 1;
    pair.config.substreams[0].num_dep_sub = 1;
    pair.config.substreams[0].chan_loc = 0x101;
    return pair;
}

struct Findings {
    Status status = Status::kOk;
    std::vector<int> ids{};
    std::vector<std::string> texts{};
};

Findings validate(const Pair& pair, bool check_extension = true) {
    RecordingSink sink;
    Findings findings;
    findings.status = oap_es_info_validate(&pair.info, &pair.config, check_extension, nullptr);
    findings.ids = sink.ids();
    for (const RecordedReport& report : sink.reports()) {
        findings.texts.push_back(report.text);
    }
    return findings;
}

TEST(Ec3Info, MatchingRecordsHaveNoFinding) {
    const Findings findings = validate(matching());
    EXPECT_EQ(findings.status, Status::kOk);
    EXPECT_TRUE(findings.ids.empty());
}

TEST(Ec3Info, MissingRecordsRaise3006) {
    RecordingSink sink;
    const Pair pair = matching();
    EXPECT_TRUE(has_failed(oap_es_info_validate(nullptr, &pair.config, true, nullptr)));
    EXPECT_TRUE(has_failed(oap_es_info_validate(&pair.info, nullptr, true, nullptr)));
    EXPECT_EQ(sink.ids(), (std::vector<int>{3006, 3006}));
}

TEST(Ec3Info, EachFieldAloneGivesItsMessage) {
    struct Row {
        int id;
        std::function<void(Pair&)> change;
        std::string ending;
    };
    const std::vector<Row> rows = {
        {4293, [](Pair& pair) { pair.info.framesets = 2; }, ""},
        {4293, [](Pair& pair) { pair.info.framesets = 0; }, ""},
        {4293, [](Pair& pair) { pair.info.remainder_blocks = 1; }, ""},
        {4303, [](Pair& pair) { pair.config.ec3_datarate = 639; },
         "(expected data_rate value: 640; actual value: 639)"},
        {4304, [](Pair& pair) { pair.config.ec3_ind_sub_stream_count = 3; },
         "(expected num_ind_sub value: 2; actual value: 3)"},
        {4305, [](Pair& pair) { pair.config.substreams[1].num_dep_sub = 2; },
         "(expected num_dep_sub value: 0; actual value: 2)"},
        {4306, [](Pair& pair) { pair.config.substreams[1].bsid = 8; },
         "(expected bsid value: 16; actual value: 8)"},
        {4307, [](Pair& pair) { pair.config.substreams[1].bsmod = 5; },
         "(expected bsmod value: 1; actual value: 5)"},
        {4308, [](Pair& pair) { pair.config.substreams[1].fscod = 0; },
         "(expected fscod value: 2; actual value: 0)"},
        {4309, [](Pair& pair) { pair.config.substreams[1].acmod = 2; },
         "(expected acmod value: 7; actual value: 2)"},
        {4310, [](Pair& pair) { pair.config.substreams[1].lfeon = 0; },
         "(expected lfeon value: 1; actual value: 0)"},
        {4311, [](Pair& pair) { pair.config.substreams[0].chan_loc = 2; },
         "(expected chan_loc value: 257; actual value: 2)"},
    };
    for (const Row& row : rows) {
        Pair pair = matching();
        row.change(pair);
        const Findings findings = validate(pair);
        EXPECT_EQ(findings.status, Status::kRuleBroken) << row.id;
        ASSERT_EQ(findings.ids, std::vector<int>{row.id});
        EXPECT_TRUE(findings.texts[0].ends_with(row.ending)) << findings.texts[0];
        const bool names_index = row.id >= 4305 && row.id != 4311;
        EXPECT_EQ(findings.texts[0].find("[index : 1]") != std::string::npos, names_index);
    }
}

TEST(Ec3Info, ByteOrderIsAWarning) {
    Pair pair = matching();
    pair.info.byte_swapped = 1;
    const Findings findings = validate(pair);
    EXPECT_EQ(findings.status, Status::kOk);
    EXPECT_EQ(findings.ids, std::vector<int>{2040});
}

TEST(Ec3Info, LocationsAreTheChannelMapFromTheOtherEnd) {
    // Bit of chanmap for each bit of chan_loc; Lts/Rts and those below Lc/Rc have none.
    const std::vector<unsigned> bits = {10, 9, 8, 7, 6, 5, 4, 3, 1};
    for (std::size_t bit = 0; bit < bits.size(); ++bit) {
        Pair pair = matching();
        pair.info.program[0].dependent[0].chanmap = 1U << bits[bit] | 0xF805;
        pair.config.substreams[0].chan_loc = 1U << bit;
        EXPECT_TRUE(validate(pair).ids.empty()) << bit;
    }
}

TEST(Ec3Info, EveryDependentSubstreamIsCompared) {
    Pair pair = matching();
    pair.info.program[0].num_dependent = 2;
    pair.config.substreams[0].num_dep_sub = 2;
    pair.info.program[0].dependent[1].chanmap = 1U << 9;
    EXPECT_EQ(validate(pair).ids, std::vector<int>{4311});
}

TEST(Ec3Info, StreamWithoutASubstreamRaises4312) {
    Pair pair;
    pair.info.framesets = 1;
    EXPECT_EQ(validate(pair).ids, std::vector<int>{4312});
    EXPECT_TRUE(validate(pair, false).ids.empty());
}

Pair with_extension(bool of_dependent, std::uint32_t length, std::uint8_t flag,
                    std::uint8_t complexity) {
    Pair pair = matching();
    if (of_dependent) {
        OapDependentInfo& dependent = pair.info.program[0].dependent[0];
        dependent.addbsie = length != 0 ? 1 : 0;
        dependent.addbsi_len = length;
        dependent.addbsi = {flag, complexity};
    } else {
        OapProgramInfo& program = pair.info.program[0];
        program.num_dependent = 0;
        pair.config.substreams[0].num_dep_sub = 0;
        program.addbsie = length != 0 ? 1 : 0;
        program.addbsi_len = length;
        program.addbsi = {flag, complexity};
    }
    return pair;
}

TEST(Ec3Info, ExtensionOfTheBoxMustStandInTheStream) {
    for (const bool of_dependent : {false, true}) {
        Pair pair = with_extension(of_dependent, 2, 1, 16);
        pair.config.flag_ec3_extension_type_a = 1;
        pair.config.complexity_index_type_a = 16;
        EXPECT_TRUE(validate(pair).ids.empty());
        pair.config.complexity_index_type_a = 12;
        EXPECT_EQ(validate(pair).ids, std::vector<int>{4315});
        EXPECT_TRUE(validate(pair).texts[0].ends_with(
            "(expected complexity_index_type_a value: 16; actual value: 12)"));
        EXPECT_TRUE(validate(pair, false).ids.empty());
        pair = with_extension(of_dependent, 2, 3, 16);
        pair.config.flag_ec3_extension_type_a = 1;
        pair.config.complexity_index_type_a = 16;
        EXPECT_EQ(validate(pair).ids, std::vector<int>{4314});
        for (const std::uint32_t length : {0U, 1U}) {
            pair = with_extension(of_dependent, length, 1, 16);
            pair.config.flag_ec3_extension_type_a = 1;
            EXPECT_EQ(validate(pair).ids, std::vector<int>{4313});
        }
    }
}

TEST(Ec3Info, ExtensionOfTheStreamMustStandInTheBox) {
    for (const bool of_dependent : {false, true}) {
        EXPECT_EQ(validate(with_extension(of_dependent, 2, 1, 16)).ids, std::vector<int>{4316});
        EXPECT_TRUE(validate(with_extension(of_dependent, 2, 1, 16), false).ids.empty());
        EXPECT_TRUE(validate(with_extension(of_dependent, 2, 0, 16)).ids.empty());
        EXPECT_TRUE(validate(with_extension(of_dependent, 0, 1, 16)).ids.empty());
    }
}

TEST(Ec3Info, EightProgrammesOfEightSubstreamsAreCompared) {
    Pair pair;
    pair.info.framesets = 1;
    pair.info.num_programs = 8;
    pair.config.ec3_ind_sub_stream_count = 8;
    for (std::size_t i = 0; i < 8; ++i) {
        pair.info.program[i].num_dependent = 8;
        pair.config.substreams[i].num_dep_sub = 8;
    }
    EXPECT_TRUE(validate(pair).ids.empty());
    for (Ec3Substream& substream : pair.config.substreams) {
        substream.chan_loc = 1;
    }
    EXPECT_EQ(validate(pair).ids, std::vector<int>(64, 4311));
}

}  // namespace
}  // namespace mediasplit
