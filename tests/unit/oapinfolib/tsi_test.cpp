#include "oapinfolib/src/tsi.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/unit/oapinfolib/oap_test_support.h"

namespace mediasplit {
namespace {

BitstreamInfo frame_of(std::uint16_t strmtyp, std::uint16_t substreamid) {
    BitstreamInfo info;
    info.bsid = 16;
    info.strmtyp = strmtyp;
    info.substreamid = substreamid;
    info.frmsiz = 384;
    info.acmod = 7;
    info.lfeon = 1;
    info.nfchans = 5;
    info.nchans = 6;
    info.nprograms = 1;
    return info;
}

BitstreamInfo independent(std::uint16_t id) {
    return frame_of(0, id);
}

BitstreamInfo dependent(std::uint16_t id, std::uint16_t chanmap = 0x0200) {
    BitstreamInfo info = frame_of(1, id);
    info.chanmap = chanmap;
    info.acmod = 2;
    info.lfeon = 0;
    info.nfchans = 2;
    info.nchans = 2;
    return info;
}

struct Tsi : testing::Test {
    std::unique_ptr<TimesliceState> owner = std::make_unique<TimesliceState>();
    TimesliceState& state = *owner;
    bool closed = false;
    std::string err;

    void SetUp() override { tsi_sysinit(state); }

    int feed(const BitstreamInfo& info, FrameStatus status = kStatusGood, int mode = 1) {
        TsiFrame frame;
        frame.info = &info;
        frame.status = status;
        frame.compliance_mode = mode;
        ExpectText text;
        const int result = tsi_procframe(frame, state, closed);
        err = text.err();
        return result;
    }
    ProgramRecord& program(std::size_t index) { return state.current.program[index]; }
};

TEST_F(Tsi, StartsEmptyWithUnknownConverterState) {
    EXPECT_EQ(state.timeslice_count, 0);
    EXPECT_EQ(state.status, kStatusGood);
    EXPECT_EQ(state.current.nprograms, 0);
    const SubstreamRecord& first = program(0).independent;
    EXPECT_EQ(first.convsync, kUnset16);
    EXPECT_EQ(first.previous_convsync, kUnset16);
    EXPECT_EQ(first.frames_since_convsync, kUnset16);
    EXPECT_EQ(first.sourcefscod, kUnset16);
    EXPECT_EQ(first.chanmap, kUnset16);
    EXPECT_EQ(first.status, kStatusUnknown);
    EXPECT_EQ(program(7).dependent[7].status, kStatusUnknown);
    EXPECT_EQ(program(7).dependent[7].bsi.lfemixlevcod, 10);
}

TEST_F(Tsi, IndependentFrameFillsItsRecord) {
    BitstreamInfo info = independent(0);
    info.sourcefscod = 1;
    info.convsync = 1;
    EXPECT_EQ(feed(info), 0);
    EXPECT_FALSE(closed);
    EXPECT_EQ(state.timeslice_count, 1);
    EXPECT_EQ(state.frame_count, 1);
    const SubstreamRecord& record = program(0).independent;
    EXPECT_EQ(record.present, 1U);
    EXPECT_EQ(record.acmod, 7);
    EXPECT_EQ(record.bsid, 16);
    EXPECT_EQ(record.chanmap, kUnset16);
    EXPECT_EQ(record.convsync, 1);
    EXPECT_EQ(record.nfchans, 5);
    EXPECT_EQ(record.nchans, 6);
    EXPECT_EQ(record.numblks, 6);
    EXPECT_EQ(record.frame_words, 384);
    EXPECT_EQ(record.frame_bytes, 768);
    EXPECT_EQ(record.sample_rate, 48000);
    EXPECT_EQ(record.source_rate, 96000 - 65536) << "kept in 16 bits";
    EXPECT_EQ(record.status, kStatusGood);
    EXPECT_FLOAT_EQ(record.rate, 192.0F);
    EXPECT_EQ(record.bsi, info);
    EXPECT_EQ(record.frames_since_convsync, kUnset16) << "-1 until a second time slice";
    for (std::size_t position = 0; position < 16; ++position) {
        const std::uint32_t expected = position < 5 || position == 15 ? 1 : 0;
        EXPECT_EQ(record.channel_present[position], expected);
        EXPECT_EQ(program(0).channel_present[position], expected);
    }
    EXPECT_FLOAT_EQ(state.playing_time, 0.032F);
    EXPECT_FLOAT_EQ(state.data_rate, 192.0F);
}

TEST_F(Tsi, RateIsBitsPerFrameOverItsDuration) {
    BitstreamInfo info = independent(0);
    info.frmsiz = 100;
    info.fscod = 1;
    info.numblks = 2;
    feed(info);
    EXPECT_FLOAT_EQ(program(0).independent.rate, 44100.0F * 100 * 16 / (2 * 256 * 1000));
}

TEST_F(Tsi, Ac3SizeComesFromItsTable) {
    BitstreamInfo info = independent(0);
    info.bsid = 8;
    info.fscod = 1;
    info.frmsizecod = 21;
    feed(info);
    EXPECT_EQ(program(0).independent.frame_words, 418);
}

TEST_F(Tsi, NextIndependentZeroClosesTheTimeSlice) {
    feed(independent(0));
    EXPECT_EQ(feed(independent(0)), 0);
    EXPECT_TRUE(closed);
    EXPECT_EQ(state.timeslice_count, 2);
    EXPECT_EQ(state.previous.nprograms, 1);
    EXPECT_EQ(feed(dependent(0)), 0);
    EXPECT_FALSE(closed);
    EXPECT_EQ(state.timeslice_count, 2);
}

TEST_F(Tsi, TwoProgramsHaveTheirOwnDependentSlots) {
    for (const BitstreamInfo& info : {independent(0), dependent(0, 0x0200), dependent(1, 0x0080),
                                      independent(1), dependent(0, 0x0040)}) {
        EXPECT_EQ(feed(info), 0);
        EXPECT_EQ(err, "");
    }
    EXPECT_EQ(state.timeslice_count, 1);
    EXPECT_EQ(state.current.nprograms, 2);
    EXPECT_EQ(program(0).num_dependent, 2);
    EXPECT_EQ(program(0).num_substreams, 3);
    EXPECT_EQ(program(0).channel_map, 0x0280);
    EXPECT_EQ(program(0).dependent[0].chanmap, 0x0200);
    EXPECT_EQ(program(0).dependent[1].chanmap, 0x0080);
    EXPECT_EQ(program(1).num_dependent, 1);
    EXPECT_EQ(program(1).dependent[0].chanmap, 0x0040);
    EXPECT_EQ(program(1).dependent[1].present, 0U);
    EXPECT_EQ(program(0).coded_channels, 5 + 2 + 2);
    EXPECT_EQ(program(0).coded_lfe, 1);
    EXPECT_EQ(program(0).total_channels, 5 + 2 + 1) << "Lrs/Rrs is a pair, Ts is not";
    EXPECT_EQ(program(0).lfe_count, 1);
    EXPECT_EQ(program(0).total_words, 3 * 384);
    EXPECT_FLOAT_EQ(program(0).combined_rate, 576.0F);
    EXPECT_FLOAT_EQ(state.data_rate, 960.0F);
    EXPECT_EQ(program(0).channel_present[6], 1U);
    EXPECT_EQ(program(0).channel_present[8], 1U);
    EXPECT_EQ(program(0).dependent[0].convsync, kUnset16);
}

TEST_F(Tsi, BothLfeBitsOfTheMapCountTwo) {
    feed(independent(0));
    feed(dependent(0, 0x0003));
    EXPECT_EQ(program(0).lfe_count, 2);
    EXPECT_EQ(program(0).total_channels, 5);
}

TEST_F(Tsi, EachMapBitMarksItsPosition) {
    for (unsigned bit = 0; bit < 16; ++bit) {
        tsi_sysinit(state);
        BitstreamInfo first = independent(0);
        first.acmod = 1;
        first.lfeon = 0;
        first.nfchans = 1;
        feed(first);
        feed(dependent(0, static_cast<std::uint16_t>(1U << bit)));
        EXPECT_EQ(program(0).dependent[0].channel_present[15 - bit], 1U) << bit;
    }
}

TEST_F(Tsi, ReservedStreamTypeIsRefused) {
    EXPECT_EQ(feed(frame_of(3, 0)), 6913);
    EXPECT_EQ(err,
              fatal_text("Invalid bitstream detected.  Streamtype is not supported.", "tsi", 102));
    EXPECT_EQ(state.frame_count, 0);
}

TEST_F(Tsi, DependentFrameFirstIsRefused) {
    EXPECT_EQ(feed(dependent(0)), 6913);
    EXPECT_EQ(err, fatal_text("Invalid bitstream detected.  Dependent stream type has no "
                              "associated independent frames.",
                              "tsi", 126));
    EXPECT_EQ(state.frame_count, 0);
    EXPECT_EQ(state.timeslice_count, 0);
    EXPECT_EQ(state.current.nprograms, 0);
}

TEST_F(Tsi, FurtherIndependentFrameFirstIsRefused) {
    EXPECT_EQ(feed(independent(1)), 6913);
    EXPECT_EQ(err, fatal_text("Invalid bitstream detected.  First independent frame is not I0.",
                              "tsi", 152));
}

TEST_F(Tsi, GapInIndependentIdsIsAWarning) {
    feed(independent(0));
    EXPECT_EQ(feed(independent(2)), 0);
    EXPECT_EQ(err,
              "\nWARNING:  Invalid bitstream detected.  Indpendent frames are out of order.\n");
    EXPECT_EQ(state.current.nprograms, 2);
}

TEST_F(Tsi, NinthIndependentFrameIsRefusedLikeASecondOne) {
    feed(independent(0));
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(feed(independent(1)), 0) << i;
    }
    EXPECT_EQ(state.current.nprograms, 8);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(feed(independent(1)), 6913);
        EXPECT_EQ(err, fatal_text("Invalid bitstream detected.  Multiple independent frames exist "
                                  "for the same program.",
                                  "tsi", 144));
        EXPECT_EQ(state.current.nprograms, 8);
    }
    EXPECT_EQ(feed(independent(0)), 0) << "a new time slice";
    EXPECT_EQ(state.current.nprograms, 1);
}

TEST_F(Tsi, RepeatedDependentIdIsRefused) {
    feed(independent(0));
    feed(dependent(3));
    EXPECT_EQ(feed(dependent(3)), 6913);
    EXPECT_EQ(err, fatal_text("Invalid bitstream detected.  Multiple dependent frames exist with "
                              "same substream ID.",
                              "tsi", 214));
}

TEST_F(Tsi, GapInDependentIdsIsAWarning) {
    feed(independent(0));
    EXPECT_EQ(feed(dependent(1)), 0);
    EXPECT_EQ(err, "\nWARNING:  Invalid bitstream detected.  Dependent frames are out of order.\n");
    EXPECT_EQ(program(0).dependent[1].present, 1U);
    EXPECT_EQ(program(0).dependent[0].present, 0U);
}

TEST_F(Tsi, DependentFrameOfARefusedProgramIsAWarning) {
    feed(independent(1));
    EXPECT_EQ(feed(dependent(0)), 0);
    EXPECT_EQ(err,
              "\nWARNING:  Invalid bitstream detected.  No I0 frame detected for dependent "
              "frame.\n");
    EXPECT_FLOAT_EQ(state.data_rate, 192.0F);
}

TEST_F(Tsi, CounterRunsFromConverterSyncToConverterSync) {
    BitstreamInfo info = independent(0);
    info.numblks = 1;
    const int convsync[] = {1, 0, 0, 1, 0};
    const int counter[] = {0xFFFF, 1, 2, 3, 1};
    for (int i = 0; i < 5; ++i) {
        info.convsync = static_cast<std::uint16_t>(convsync[i]);
        feed(info);
        EXPECT_EQ(program(0).independent.frames_since_convsync, counter[i]) << i;
    }
}

TEST_F(Tsi, CounterOfALaterProgramStartsUnknown) {
    feed(independent(0));
    feed(independent(0));
    feed(independent(1));
    EXPECT_EQ(program(1).independent.frames_since_convsync, kUnset16);
    feed(independent(0));
    feed(independent(1));
    EXPECT_EQ(program(1).independent.frames_since_convsync, 1);
    feed(independent(0));
    feed(independent(0));
    feed(independent(1));
    EXPECT_EQ(program(1).independent.frames_since_convsync, kUnset16) << "after a gap";
}

TEST_F(Tsi, NothingOfATimeSliceStaysInTheNext) {
    feed(independent(0));
    feed(dependent(0));
    feed(dependent(1));
    feed(independent(1));
    feed(dependent(0));
    feed(independent(0));
    EXPECT_EQ(program(0).num_dependent, 0);
    EXPECT_EQ(program(0).channel_map, 0);
    EXPECT_EQ(program(0).dependent[0].present, 0U);
    EXPECT_EQ(program(0).dependent[1].present, 0U);
    EXPECT_EQ(program(0).dependent[0].chanmap, kUnset16);
    EXPECT_EQ(program(1).independent.present, 0U);
    EXPECT_EQ(program(1).dependent[0].present, 0U);
    EXPECT_EQ(program(0).coded_channels, 5);
    EXPECT_EQ(state.previous.nprograms, 2);
    EXPECT_EQ(state.previous.program[0].dependent[1].present, 1U);
    EXPECT_EQ(state.previous.program[1].dependent[0].present, 1U);
}

TEST_F(Tsi, DataRateIsTheMeanOverTimeSlices) {
    BitstreamInfo info = independent(0);
    feed(info);
    info.frmsiz = 192;
    feed(info);
    EXPECT_FLOAT_EQ(state.data_rate, (192.0F + 96.0F) / 2);
    feed(info);
    EXPECT_FLOAT_EQ(state.data_rate, (192.0F + 96.0F + 96.0F) / 3);
}

TEST_F(Tsi, StatusOfTheStreamKeepsTheWorst) {
    feed(independent(0), kStatusPartialError);
    EXPECT_EQ(state.status, kStatusPartialError);
    EXPECT_EQ(program(0).status, kStatusPartialError);
    feed(independent(0), kStatusFullError);
    EXPECT_EQ(state.status, kStatusFullError);
    feed(independent(0), kStatusGood);
    EXPECT_EQ(state.status, kStatusFullError);
    EXPECT_EQ(program(0).status, kStatusGood);
    feed(independent(0), kStatusUnknown);
    EXPECT_EQ(state.status, kStatusUnknown);
}

TEST(TsiStatus, EveryPairOfStatuses) {
    const int expected[4][4] = {{-1, -1, -1, -1}, {-1, 0, 1, 2}, {-1, 1, 1, 1}, {-1, 2, 1, 2}};
    for (int status = -1; status < 3; ++status) {
        for (int before = -1; before < 3; ++before) {
            FrameStatus aggregate = before;
            EXPECT_EQ(tsi_determinestatus(status, aggregate), 0);
            EXPECT_EQ(aggregate, expected[status + 1][before + 1]) << status << ' ' << before;
        }
    }
    FrameStatus aggregate = 0;
    EXPECT_EQ(tsi_determinestatus(5, aggregate), 6913);
    EXPECT_EQ(aggregate, -1);
}

TEST_F(Tsi, UnknownModeEndsTheFrame) {
    feed(independent(0), kStatusGood, 9);
    EXPECT_EQ(feed(independent(0), kStatusGood, 9), 7169);
    EXPECT_EQ(count_of(err, "FATAL ERROR:  Unknown compliance mode requested\n"), 1U);
}

TEST_F(Tsi, IdenticalTimeSlicesAreJudgedOnce) {
    // Mark the stream's block by hand: a check would not clear it, but would leave its own marks.
    BitstreamInfo info = independent(0);
    info.fscod = 1;
    for (int i = 0; i < 3; ++i) {
        feed(info);
    }
    EXPECT_EQ(state.failures.results[74], Verdict::kFailure);
    EXPECT_EQ(state.previous.compliance.results[74], Verdict::kFailure);
    EXPECT_EQ(state.current.compliance, ComplianceBlock{}) << "judged when it closes";
}

TEST_F(Tsi, GoodTimeSliceThatEqualsItsPredecessorIsNotJudged) {
    for (int i = 0; i < 3; ++i) {
        feed(independent(0));
    }
    // Equal to its predecessor from here on: a mode without rules would be refused if it were
    // judged.
    EXPECT_EQ(feed(independent(0), kStatusGood, 99), 0);
    BitstreamInfo other = independent(0);
    other.dialnorm[0] = 5;
    EXPECT_EQ(feed(other, kStatusGood, 99), 0);
    EXPECT_EQ(feed(other, kStatusGood, 99), 7169);
}

TEST_F(Tsi, FlushOfOneTimeSliceRunsTheFrameRulesAlone) {
    BitstreamInfo info = independent(0);
    info.fscod = 1;
    info.numblks = 1;
    info.convsync = 0;
    feed(info);
    EXPECT_EQ(tsi_flush(1, state), 0);
    EXPECT_EQ(state.failures.results[74], Verdict::kFailure);
    EXPECT_EQ(state.failures.results[170], Verdict::kPassed);
    EXPECT_EQ(state.failures.results[172], Verdict::kPassed);
    EXPECT_EQ(state.previous.nprograms, 1);
    EXPECT_TRUE(tsi_compare_ts(state.current, state.previous));
}

TEST_F(Tsi, FlushOfSeveralRunsTheProgramRulesToo) {
    BitstreamInfo info = independent(0);
    feed(info);
    info.frmsiz = 300;
    feed(info);
    EXPECT_EQ(tsi_flush(1, state), 0);
    EXPECT_EQ(state.failures.results[63], Verdict::kFailure);
    EXPECT_EQ(state.failures.results[77], Verdict::kFailure);
    ExpectText text;
    EXPECT_EQ(tsi_flush(9, state), 7169);
}

TEST_F(Tsi, AuxiliaryDataAndEncoderInformationAreKept) {
    BitstreamInfo info = independent(0);
    const std::uint16_t aux[] = {0x1234, 0x5600};
    const std::uint16_t encinfo = 1;
    TsiFrame frame;
    frame.info = &info;
    frame.status = kStatusGood;
    frame.aux_bits = 24;
    frame.aux_data = aux;
    frame.encinfo = &encinfo;
    EXPECT_EQ(tsi_procframe(frame, state, closed), 0);
    const SubstreamRecord& record = program(0).independent;
    EXPECT_EQ(record.aux.bits, 24);
    EXPECT_EQ(record.aux.words[0], 0x1234);
    EXPECT_EQ(record.aux.words[1], 0x5600);
    EXPECT_EQ(record.encinfo_present, 1);
    EXPECT_EQ(record.encinfo, 1);
    frame.aux_bits = 32767;
    frame.aux_data = nullptr;
    EXPECT_EQ(tsi_procframe(frame, state, closed), 0);
    EXPECT_EQ(program(0).independent.aux.used_words(), kMaxAuxWords);
    EXPECT_EQ(program(0).independent.aux.words[0], 0);
}

}  // namespace
}  // namespace mediasplit
