#include "ac4/toc_reader/toc_reader.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "ac4/toc_reader/table_compare.h"
#include "tests/unit/ac4/toc_fixture.h"

namespace mediasplit {
namespace {

class TocReaderTest : public TocFixture {
protected:
    // Asks everything there is to ask; only codes may come back.
    void query_all() {
        for (std::int32_t p = 0; p < toc_.n_presentations && p < 70; ++p) {
            PresentationInfo info;
            PresentationInfoExt ext;
            EmdfInfo emdf;
            check(AC4_ANALYZE_ac4toc_reader_get_presentation_info(reader_, toc_, p, &info));
            check(AC4_ANALYZE_ac4toc_reader_get_presentation_info_ext(reader_, toc_, p, &ext));
            check(AC4_ANALYZE_ac4toc_reader_get_emdf_info(reader_, p, &emdf));
            for (std::int32_t s = 0; s <= info.substream_total && s < 20; ++s) {
                SubstreamInfo substream;
                SubstreamInfoExt substream_ext;
                check(AC4_ANALYZE_ac4toc_reader_get_substream_info(reader_, p, s, &substream));
                const int found =
                    AC4_ANALYZE_ac4toc_reader_get_substream_info_ext(reader_, p, s, &substream_ext);
                check(found);
                if (found == 0) {
                    EXPECT_LE(substream_ext.segment.offset + substream_ext.segment.size,
                              bytes_.size());
                }
            }
            for (int kind = 0; kind < 4; ++kind) {
                std::int64_t position = 0;
                bool flag = false;
                check(AC4_ANALYZE_ac4toc_reader_get_param_presentation(
                    reader_, static_cast<TocParameter>(kind), p, p, &position, &flag));
            }
        }
    }
    static void check(int code) {
        EXPECT_GE(code, 0);
        EXPECT_LE(code, 4);
    }
    void expect_unchanged(bool unchanged, const BuildFrame& frame) {
        ASSERT_EQ(open_frame(frame), 0);
        EXPECT_EQ(reader_->toc_unchanged, unchanged);
    }
};

TEST_F(TocReaderTest, TablesThatDifferOnlyInEmdfProtectionAreNotWalkedAgain) {
    BuildFrame frame = many_presentations_frame(512, 16);
    expect_unchanged(false, frame);
    const PresentationInfo before = presentation(300);
    for (BuildPresentation& text : frame.presentations) {
        text.emdf.protection = 0xC3;
    }
    frame.sequence_counter = 2;
    frame.iframe = false;
    expect_unchanged(true, frame);
    EXPECT_EQ(toc_.sequence_counter, 2);
    EXPECT_FALSE(toc_.b_iframe_global);
    const PresentationInfo after = presentation(300);
    EXPECT_EQ(after.presentation_group_plus1, before.presentation_group_plus1);
    EXPECT_EQ(after.channel_mode, before.channel_mode);
    EXPECT_EQ(substream(511, 0).substream_index, 16);
    EXPECT_EQ(selection_.n_presentations, 64);
    EXPECT_EQ(selection_.n_groups, 16);
}

TEST_F(TocReaderTest, AnyOtherDifferenceOfTheTableIsSeen) {
    const BuildFrame frame = main_and_dialogue_frame();
    expect_unchanged(false, frame);
    expect_unchanged(true, frame);
    const std::int64_t end = reader_->substream_table_pos;
    const std::int64_t start = reader_->head.presentations_position;
    const Ac4Bytes bytes = write_ac4_frame(frame);
    for (std::int64_t bit = start; bit < end; ++bit) {
        ASSERT_EQ(open_frame(frame), 0);
        Ac4Bytes changed = bytes;
        changed[static_cast<std::size_t>(bit / 8)] ^= static_cast<std::uint8_t>(0x80U >> (bit % 8));
        open_bytes(changed);
        EXPECT_FALSE(reader_->toc_unchanged) << bit;
    }
}

TEST_F(TocReaderTest, SubstreamSizesMayChangeUnderAnUnchangedTable) {
    BuildFrame frame = simple_stereo_frame(40);
    expect_unchanged(false, frame);
    const std::uint64_t first = substream_ext(0, 0).segment.size;
    expect_unchanged(true, simple_stereo_frame(90));
    EXPECT_EQ(substream_ext(0, 0).segment.size, first + 50);
    EXPECT_EQ(substream_ext(0, 0).segment.offset + first + 50, bytes_.size());
}

TEST_F(TocReaderTest, HeadThatMovesTheTableForcesAWalk) {
    BuildFrame frame = main_and_dialogue_frame();
    expect_unchanged(false, frame);
    frame.wait_frames = 0;
    expect_unchanged(false, frame);
    EXPECT_EQ(substream(1, 0).substream_index, 3);
    expect_unchanged(true, frame);
    frame.payload_base = 3;
    expect_unchanged(false, frame);
    frame.short_program_id = 5;
    expect_unchanged(false, frame);
    frame.fs_index = 0;
    expect_unchanged(false, frame);
}

TEST_F(TocReaderTest, OldVersionsAreWalkedInEveryFrame) {
    const BuildFrame frame = old_frame(1, old_presentation(1));
    expect_unchanged(false, frame);
    expect_unchanged(false, frame);
}

TEST_F(TocReaderTest, BrokenFrameAndNewProgramForgetTheTable) {
    const BuildFrame frame = simple_stereo_frame();
    expect_unchanged(false, frame);
    EXPECT_EQ(open_bytes(Ac4Bytes{0xC0, 0, 0, 0}), 3);
    expect_unchanged(false, frame);
    expect_unchanged(true, frame);
    AC4_ANALYZE_ac4toc_reader_new_program(reader_);
    EXPECT_EQ(reader_->substream_table_pos, 0);
    EXPECT_EQ(reader_->group_contexts[5].frame_rate_factor, 1);
    expect_unchanged(false, frame);
}

TEST(TocReaderCopy, TableLongerThanTheCopyBufferIsWalkedInEveryFrame) {
    class Small : public TocFixture {
    public:
        Small() : TocFixture(16) {}
        void TestBody() override {
            ASSERT_EQ(open_frame(simple_stereo_frame()), 0);
            ASSERT_EQ(open_frame(simple_stereo_frame()), 0);
            EXPECT_TRUE(reader_->toc_unchanged);
            const BuildFrame frame = many_presentations_frame(20, 4);
            ASSERT_EQ(open_frame(frame), 0);
            ASSERT_EQ(open_frame(frame), 0);
            EXPECT_FALSE(reader_->toc_unchanged);
            EXPECT_EQ(presentation(19).substream_total, 3);
        }
    };
    Small().TestBody();
}

TEST_F(TocReaderTest, QueriesBeforeTheWalkWalkByThemselves) {
    ASSERT_EQ(feed(write_ac4_frame(main_and_dialogue_frame())), 0);
    EXPECT_EQ(substream(2, 0).substream_index, 4);
    ASSERT_EQ(feed(write_ac4_frame(main_and_dialogue_frame())), 0);
    SubstreamSegment segment;
    EXPECT_EQ(AC4_ANALYZE_ac4toc_get_substream_segment_info(reader_, 4, &segment), 0);
    EXPECT_GT(segment.size, 0U);
}

TEST_F(TocReaderTest, QueriesInAnyOrderGiveTheSame) {
    const BuildFrame frame = many_presentations_frame(100, 7);
    ASSERT_EQ(open_frame(frame), 0);
    std::vector<std::int32_t> in_order;
    for (std::int32_t p = 0; p < 100; ++p) {
        in_order.push_back(presentation(p).channel_mode * 1000 + substream(p, 1).substream_index);
    }
    for (std::int32_t p = 99; p >= 0; --p) {
        const std::int32_t index = p * 37 % 100;
        const std::int32_t second = substream(index, 1).substream_index;
        EXPECT_EQ(presentation(index).channel_mode * 1000 + second,
                  in_order[static_cast<std::size_t>(index)]);
    }
}

TEST_F(TocReaderTest, SeekFindsTheNearestKnownStart) {
    ASSERT_EQ(open_frame(many_presentations_frame(10, 3)), 0);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_seek_to_presentation_info(reader_, 6), 6);
    reader_->presentation_positions[6] = 0;
    reader_->presentation_positions[5] = 0;
    EXPECT_EQ(AC4_ANALYZE_ac4toc_seek_to_presentation_info(reader_, 6), 4);
    EXPECT_EQ(orv_bitbuf_get_abs_pos(&reader_->bits), reader_->presentation_positions[4]);
    EXPECT_EQ(presentation(6).presentation_group_plus1, 7);
    EXPECT_NE(reader_->presentation_positions[5], 0) << "the walk stored it";
    EXPECT_EQ(AC4_ANALYZE_ac4toc_seek_to_presentation_info(reader_, 0), 0);
}

TEST_F(TocReaderTest, ParameterPositionsPointAtTheirFlags) {
    BuildFrame frame = main_and_dialogue_frame();
    frame.presentations[1].filter = true;
    ASSERT_EQ(open_frame(frame), 0);
    const auto at = [&](TocParameter kind, std::int32_t presentation, std::int32_t group) {
        std::int64_t position = -1;
        bool flag = false;
        EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_param_presentation(reader_, kind, presentation,
                                                                   group, &position, &flag),
                  0);
        const unsigned byte = bytes_[static_cast<std::size_t>(position / 8)];
        if (kind != TocParameter::kSubstreamTable) {
            EXPECT_EQ(((byte >> (7 - position % 8)) & 1U) != 0, flag);
        }
        return flag;
    };
    EXPECT_TRUE(at(TocParameter::kPresentationId, 0, 0));
    EXPECT_FALSE(at(TocParameter::kEnablePresentation, 0, 0));
    EXPECT_TRUE(at(TocParameter::kEnablePresentation, 1, 0));
    EXPECT_TRUE(at(TocParameter::kContentClassifier, 0, 1));
    EXPECT_TRUE(at(TocParameter::kSubstreamTable, 0, 0));
    std::int64_t position = 0;
    bool flag = false;
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_param_presentation(
                  reader_, TocParameter::kContentClassifier, 0, 2, &position, &flag),
              4);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_param_presentation(
                  reader_, TocParameter::kPresentationId, 3, 0, &position, &flag),
              4);
    ASSERT_EQ(open_frame(old_frame(1, old_presentation(1))), 0);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_param_presentation(
                  reader_, TocParameter::kPresentationId, 0, 0, &position, &flag),
              3);
}

TEST_F(TocReaderTest, VariableBitsGiveTheirLength) {
    const Ac4Bytes data = {0x20, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    orv_bitbuf bits;
    orv_bitbuf_init(&bits, data.data(), 56);
    std::uint32_t value = 9;
    EXPECT_EQ(AC4_ANALYZE_ac4toc_read_variable_bits(&bits, 2, nullptr, &value), 6);
    EXPECT_EQ(value, 4U);
    ASSERT_EQ(orv_bitbuf_set_abs_pos(&bits, 8), 0);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_read_variable_bits(&bits, 2, nullptr, &value), 0);
    EXPECT_EQ(value, 0U);
}

// Folds what the hook sees into one number; stops at the field given.
struct Fingerprint {
    std::uint64_t value = 0;
    int fields = 0;
    int stop_at = 0;
    static int note(void* user, std::uint64_t value, int bits) {
        auto* print = static_cast<Fingerprint*>(user);
        print->value = print->value * 31 + value * 2 + static_cast<std::uint64_t>(bits);
        return ++print->fields == print->stop_at ? 1 : 0;
    }
};

TEST_F(TocReaderTest, HookSeesTheFieldsOfTheAskedPresentation) {
    Fingerprint first;
    Fingerprint second;
    HashRecord hook{&Fingerprint::note, &first, 0};
    BuildFrame frame = main_and_dialogue_frame();
    ASSERT_EQ(open_frame(frame), 0);
    AC4_ANALYZE_ac4toc_reader_set_hash(reader_, &hook);
    PresentationInfoExt ext;
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_presentation_info_ext(reader_, toc_, 1, &ext), 0);
    EXPECT_GT(first.fields, 10);
    hook.user = &second;
    frame.presentations[0].mdcompat = 2;  // another presentation
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_presentation_info_ext(reader_, toc_, 1, &ext), 0);
    EXPECT_EQ(second.value, first.value);
    EXPECT_EQ(second.fields, first.fields);
    second = Fingerprint{};
    frame.presentations[1].mdcompat = 2;
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_presentation_info_ext(reader_, toc_, 1, &ext), 0);
    EXPECT_NE(second.value, first.value);
    second = Fingerprint{};
    second.stop_at = 4;
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_presentation_info_ext(reader_, toc_, 1, &ext), 1);
    EXPECT_EQ(hook.error, 1);
    EXPECT_EQ(second.fields, 4);
    AC4_ANALYZE_ac4toc_reader_set_hash(reader_, nullptr);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_presentation_info_ext(reader_, toc_, 1, &ext), 0);
}

TEST_F(TocReaderTest, EveryCutOfAFrameIsToldByACode) {
    std::vector<BuildFrame> frames = {main_and_dialogue_frame(4), many_presentations_frame(6, 3),
                                      old_frame(0, old_presentation(1))};
    frames[0].short_program_id = 1;
    frames[0].presentations[0].add_emdf = {BuildEmdf{}};
    for (const BuildFrame& frame : frames) {
        const Ac4Bytes whole = write_ac4_frame(frame);
        const std::size_t toc_bytes = write_toc(frame).size() / 8;
        for (std::size_t cut = 0; cut < whole.size(); ++cut) {
            const Ac4Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut));
            toc_ = TocInfo{};
            const int result = open_bytes(part);
            check(result);
            // The table itself ends before substream_index_table.
            if (cut + 16 < toc_bytes) {
                EXPECT_EQ(result, 1) << cut;
            }
            query_all();
        }
    }
}

TEST_F(TocReaderTest, FlippedBitsNeverLeadOutsideTheFrame) {
    std::mt19937 random(7);
    for (const BuildFrame& frame : {main_and_dialogue_frame(4), many_presentations_frame(6, 3),
                                    simple_stereo_frame(3), old_frame(1, old_presentation(1))}) {
        const Ac4Bytes whole = write_ac4_frame(frame);
        for (const TocMode mode : {TocMode::kStrict, TocMode::kTolerant}) {
            AC4_ANALYZE_ac4toc_reader_set_mode(reader_, mode);
            for (std::size_t bit = 0; bit < whole.size() * 8; ++bit) {
                Ac4Bytes changed = whole;
                changed[bit / 8] ^= static_cast<std::uint8_t>(0x80U >> (bit % 8));
                toc_ = TocInfo{};
                check(open_bytes(changed));
                query_all();
            }
        }
    }
    for (int i = 0; i < 2000; ++i) {
        Ac4Bytes noise(1 + random() % 200);
        for (std::uint8_t& byte : noise) {
            byte = static_cast<std::uint8_t>(random());
        }
        noise[0] = static_cast<std::uint8_t>((noise[0] & 0x3FU) | (random() % 3) << 6);
        toc_ = TocInfo{};
        open_bytes(noise);
        query_all();
    }
}

TEST(TableCompare, MaskedRangesMayDiffer) {
    const Ac4Bytes a = {0xFF, 0x0F, 0xA5, 0x3C, 0x81, 0x7E};
    MaskedRanges none;
    for (std::int64_t from = 0; from <= 48; ++from) {
        for (std::int64_t to = from; to <= 48; ++to) {
            for (std::int64_t bit = 0; bit < 48; ++bit) {
                Ac4Bytes b = a;
                b[static_cast<std::size_t>(bit / 8)] ^=
                    static_cast<std::uint8_t>(0x80U >> (bit % 8));
                EXPECT_EQ(orv_compare_fast(a.data(), b.data(), from, to, none),
                          bit < from || bit >= to);
            }
        }
    }
    MaskedRanges masked;
    masked.count = 2;
    masked.ranges[0] = {5, 10};
    masked.ranges[1] = {30, 3};
    for (std::int64_t bit = 0; bit < 48; ++bit) {
        Ac4Bytes b = a;
        b[static_cast<std::size_t>(bit / 8)] ^= static_cast<std::uint8_t>(0x80U >> (bit % 8));
        const bool hidden = (bit >= 5 && bit < 15) || (bit >= 30 && bit < 33) || bit >= 40;
        EXPECT_EQ(orv_compare_fast(a.data(), b.data(), 0, 40, masked), hidden) << bit;
    }
}

}  // namespace
}  // namespace mediasplit
