#include "src/id3demuxer/id3demux.h"

#include <gtest/gtest.h>

#include "tests/support/ac4_builder.h"
#include "tests/support/eac3_builder.h"
#include "tests/unit/id3demuxer/packed_run.h"

namespace mediasplit {
namespace {

using test_support::Ac3Spec;
using test_support::build_ac3_frame;
using test_support::build_eac3_frame;
using test_support::Eac3Spec;

const Bytes kAdts = {0xFF, 0xF1, 0x50, 0x80, 0x01, 0x3F, 0xFC, 0xDE, 0x02, 0x00};

Bytes ac3_frames() {
    return repeated(build_ac3_frame(Ac3Spec{}), 3);
}

Bytes eac3_frames() {
    return repeated(build_eac3_frame(Eac3Spec{}), 3);
}

Bytes ac4_frames() {
    return repeated(write_syncframe(write_ac4_frame(simple_stereo_frame())), 2);
}

// --- The tag ----------------------------------------------------------------------------------

TEST(PackedAudio, TimeStampIsReportedWithTheAddressOfTheSegment) {
    PackedRun run;
    EXPECT_EQ(run.segment(joined({id3_tag(0x1'2345'6789), kAdts})), Status::kOk);
    EXPECT_EQ(run.text_of(12), "seg.pa (pts:4886718345)");
    EXPECT_EQ(run.sink.count(4076), 0U);
}

TEST(PackedAudio, AllBitsOfTheTimeStampCount) {
    PackedRun run;
    EXPECT_EQ(run.segment(joined({id3_tag(0xFEDCBA9876543210), kAdts})), Status::kOk);
    EXPECT_EQ(run.text_of(12), "seg.pa (pts:18364758544493064720)");
}

TEST(PackedAudio, FramesBehindTheTimeStampAreNotLookedAt) {
    PackedRun run;
    EXPECT_EQ(run.segment(joined({id3_tag(7, 1000), kAdts})), Status::kOk);
    EXPECT_EQ(run.output("audio.out.aac"), kAdts);
}

void expect_damaged_tag(const Bytes& segment) {
    PackedRun run;
    EXPECT_TRUE(has_failed(run.segment(segment)));
    EXPECT_EQ(run.sink.ids(), std::vector<int>{4076});
    EXPECT_EQ(run.text_of(4076), "In Packed audio[seg.pa], fail to parse the ID3 tag.");
    EXPECT_TRUE(run.output_names().empty());
}

TEST(PackedAudio, DamagedTagsRaise4076AndNoAudioIsRead) {
    expect_damaged_tag({});
    expect_damaged_tag(kAdts);
    expect_damaged_tag(joined({{'I', 'D', '2'}, Bytes(80, 0)}));
    // No size, and one that isn't there.
    expect_damaged_tag(joined({id3_tag_of({}, 0), kAdts}));
    expect_damaged_tag(id3_tag_of(time_stamp_frame(1), 64));
    // Another frame first, another owner, an owner without its end.
    Bytes frame = time_stamp_frame(1);
    frame[0] = 'T';
    expect_damaged_tag(joined({id3_tag_of(frame), kAdts}));
    frame = time_stamp_frame(1);
    frame[20] = 'x';
    expect_damaged_tag(joined({id3_tag_of(frame), kAdts}));
    frame = time_stamp_frame(1);
    frame[54] = ' ';
    expect_damaged_tag(joined({id3_tag_of(frame), kAdts}));
    // A time stamp that the tag is too small for.
    frame = time_stamp_frame(1);
    frame.pop_back();
    expect_damaged_tag(joined({id3_tag_of(frame), kAdts}));
}

TEST(PackedAudio, TagCutAnywhereRaises4076) {
    const Bytes tag = id3_tag(90000, 5);
    for (std::size_t size = 0; size < tag.size(); ++size) {
        expect_damaged_tag(Bytes(tag.begin(), tag.begin() + static_cast<std::ptrdiff_t>(size)));
    }
    PackedRun run;
    EXPECT_EQ(run.segment(tag), Status::kOk);
    EXPECT_EQ(run.sink.ids(), std::vector<int>{12});
}

TEST(PackedAudio, LargestTagHasTwoMebibytes) {
    constexpr std::uint32_t kLimit = 0x200000;
    Bytes content = time_stamp_frame(90000);
    content.resize(kLimit);
    PackedRun run;
    EXPECT_EQ(run.segment(joined({id3_tag_of(content), kAdts})), Status::kOk);
    ASSERT_EQ(run.output_names().size(), 1U);
    EXPECT_EQ(run.output(run.output_names()[0]), kAdts);
    content.push_back(0);
    expect_damaged_tag(joined({id3_tag_of(content), kAdts}));
    expect_damaged_tag(id3_tag_of(time_stamp_frame(1), 0x0FFFFFFF));
}

TEST(PackedAudio, TagsOfOneMebibyteAreReadInFull) {
    // So large that the source is asked for whole blocks of its buffer.
    for (const std::size_t size : {0xFFFF6U, 0x100000U, 0x10000AU}) {
        Bytes content = time_stamp_frame(90000);
        content.resize(size);
        PackedRun run;
        EXPECT_EQ(run.segment(joined({id3_tag_of(content), kAdts})), Status::kOk);
        ASSERT_EQ(run.output_names().size(), 1U) << size;
        EXPECT_EQ(run.output(run.output_names()[0]), kAdts) << size;
    }
}

// --- Arguments --------------------------------------------------------------------------------

TEST(PackedAudio, NeitherFileNorSlotFails) {
    RecordingSink sink;
    EXPECT_EQ(id3demux(nullptr, nullptr, nullptr, "a", true, nullptr, nullptr), Status::kFailed);
    EXPECT_TRUE(sink.ids().empty());
}

TEST(PackedAudio, SegmentWithoutAFileRaises4063) {
    RecordingSink sink;
    SegmentSlot slot;
    slot.uri = "http://127.0.0.1/a.ec3";
    EXPECT_TRUE(has_failed(id3demux(nullptr, &slot, nullptr, "a", true, nullptr, nullptr)));
    ASSERT_EQ(sink.ids(), std::vector<int>{4063});
    EXPECT_EQ(sink.reports()[0].text, "Fail to get segment: http://127.0.0.1/a.ec3");
}

TEST(PackedAudio, FileWithoutASlotIsRead) {
    PackedRun run;
    run.has_slot = false;
    EXPECT_EQ(run.segment(joined({id3_tag(5), kAdts})), Status::kOk);
    EXPECT_EQ(run.text_of(12), "(null) (pts:5)");
    EXPECT_EQ(run.output_names().size(), 1U);
}

TEST(PackedAudio, ByteRangeOfTheSlotIsTheSegment) {
    const Bytes one = joined({id3_tag(1), kAdts});
    const Bytes two = joined({id3_tag(2), kAdts, kAdts});
    PackedRun run;
    run.slot.byte_range = std::make_unique<ByteRangeText>();
    run.slot.byte_range->offset = std::to_string(one.size());
    run.slot.byte_range->length = std::to_string(two.size());
    EXPECT_EQ(run.segment(joined({one, two, one})), Status::kOk);
    EXPECT_EQ(run.text_of(12), "seg.pa (pts:2)");
    EXPECT_EQ(run.output(run.output_names().at(0)), joined({kAdts, kAdts}));
    EXPECT_EQ(run.sink.count(3008), 0U);
}

TEST(PackedAudio, LastByteOfARangeGoesOverItsLength) {
    const Bytes one = joined({id3_tag(1), kAdts});
    PackedRun run;
    run.slot.byte_range = std::make_unique<ByteRangeText>();
    run.slot.byte_range->offset = "0";
    run.slot.byte_range->length = "3";
    run.slot.byte_range->last_byte = std::to_string(one.size() - 1);
    EXPECT_EQ(run.segment(joined({one, one})), Status::kOk);
    EXPECT_EQ(run.output(run.output_names().at(0)), kAdts);
}

TEST(PackedAudio, RangesThatAreNoneGiveNoAudio) {
    const Bytes one = joined({id3_tag(1), kAdts});
    for (const char* offset : {"-5", "9223372036854775807", "99999999999999999999", "x", ""}) {
        for (const char* last : {"-9223372036854775808", "0", "9223372036854775807"}) {
            PackedRun run;
            run.slot.byte_range = std::make_unique<ByteRangeText>();
            run.slot.byte_range->offset = offset;
            run.slot.byte_range->last_byte = last;
            const Status status = run.segment(one);
            const bool reads_all = std::string(last).starts_with("92") &&
                                   (std::string(offset) == "x" || std::string(offset).empty());
            EXPECT_TRUE(reads_all || has_failed(status)) << offset << " " << last;
        }
    }
}

// --- The audio --------------------------------------------------------------------------------

TEST(PackedAudio, EmptySegmentBehindTheTagIsGood) {
    for (const Bytes& rest : {Bytes{}, Bytes{0x0B}}) {
        PackedRun run;
        EXPECT_EQ(run.segment(joined({id3_tag(1), rest})), Status::kOk);
        EXPECT_EQ(run.sink.ids(), std::vector<int>{12});
        EXPECT_TRUE(run.output_names().empty());
    }
}

TEST(PackedAudio, UnknownAudioIsNoErrorDeliberately) {
    for (const Bytes& sync :
         {Bytes{'I', 'D'}, Bytes{0xFF, 0xF9}, Bytes{0xAC, 0x42}, Bytes{0x77, 0x0B}, Bytes{0, 0}}) {
        PackedRun run;
        EXPECT_EQ(run.segment(joined({id3_tag(1), sync, Bytes(50, 0)})), Status::kOk);
        EXPECT_EQ(run.sink.ids(), std::vector<int>{12});
        EXPECT_TRUE(run.output_names().empty());
        EXPECT_EQ(run.sink.notes(), std::vector<std::string>{
                                        "A segment of packed audio was passed over: it holds none "
                                        "of AC-3, E-AC-3, AAC and AC-4."});
    }
}

TEST(PackedAudio, EachKindIsWrittenAsItStands) {
    struct Row {
        Bytes audio;
        std::string name;
    };
    for (const Row& row : {Row{ac3_frames(), "audio.out.ac3"}, Row{eac3_frames(), "audio.out.ec3"},
                           Row{kAdts, "audio.out.aac"}, Row{ac4_frames(), "audio.out.ac4"}}) {
        PackedRun run;
        run.has_context = false;
        EXPECT_EQ(run.segment(joined({id3_tag(1), row.audio})), Status::kOk) << row.name;
        EXPECT_EQ(run.output_names(), std::vector<std::string>{row.name});
        EXPECT_EQ(run.output(row.name), row.audio);
        EXPECT_EQ(run.sink.ids(), std::vector<int>{12}) << row.name;
    }
}

TEST(PackedAudio, SegmentsOfOneStreamAddToOneFile) {
    PackedRun run;
    EXPECT_EQ(run.segment(joined({id3_tag(1), eac3_frames()}), true), Status::kOk);
    EXPECT_EQ(run.segment(joined({id3_tag(2), eac3_frames()}), false), Status::kOk);
    EXPECT_EQ(run.output("audio.out.ec3"), repeated(eac3_frames(), 2));
    EXPECT_EQ(run.segment(joined({id3_tag(3), eac3_frames()}), true), Status::kOk);
    EXPECT_EQ(run.output("audio.out.ec3"), eac3_frames());
}

TEST(PackedAudio, WithoutAFolderAudioIsReadAndCheckedOnly) {
    PackedRun run;
    run.has_folder = false;
    run.context.codecs = "mp4a.40.2";
    for (const Bytes& audio : {ac3_frames(), eac3_frames(), kAdts, ac4_frames()}) {
        (void)run.segment(joined({id3_tag(1), audio}));
    }
    EXPECT_TRUE(run.output_names().empty());
    EXPECT_EQ(run.sink.count(4497), 1U);
    EXPECT_EQ(run.sink.count(4283), 1U);
    EXPECT_EQ(run.sink.count(4495), 0U);
}

TEST(PackedAudio, AdtsWithoutAPlaylistIsCopied) {
    PackedRun run;
    run.has_context = false;
    EXPECT_EQ(run.segment(joined({id3_tag(1), repeated(kAdts, 30000)})), Status::kOk);
    EXPECT_EQ(run.output("audio.out.aac"), repeated(kAdts, 30000));
    EXPECT_EQ(run.sink.ids(), std::vector<int>{12});
}

TEST(PackedAudio, BsidTellsAc3FromEac3) {
    for (unsigned bsid = 0; bsid < 32; ++bsid) {
        Bytes frame = build_ac3_frame(Ac3Spec{});
        frame[5] = static_cast<std::uint8_t>(bsid << 3 | (frame[5] & 7));
        PackedRun run;
        const Status status = run.segment(joined({id3_tag(1), frame}));
        const std::vector<std::string> names = run.output_names();
        if (bsid <= 8) {
            EXPECT_EQ(names, std::vector<std::string>{"audio.out.ac3"}) << bsid;
            EXPECT_EQ(status, Status::kOk);
        } else if (bsid >= 11 && bsid <= 16) {
            EXPECT_EQ(names, std::vector<std::string>{"audio.out.ec3"}) << bsid;
        } else {
            // No kind, so no extension and no name.
            EXPECT_TRUE(names.empty()) << bsid;
            EXPECT_TRUE(has_failed(status)) << bsid;
            EXPECT_EQ(run.sink.ids(), (std::vector<int>{12, 3006})) << bsid;
        }
    }
}

TEST(PackedAudio, CutFirstFrameIsCopied) {
    const Bytes cut = {0x0B, 0x77, 0x01};
    PackedRun run;
    EXPECT_EQ(run.segment(joined({id3_tag(1), cut})), Status::kOk);
    EXPECT_EQ(run.output("audio.out.ac3"), cut);
}

TEST(PackedAudio, OutputThatCannotBeMadeFailsTheSegmentAndChecksGoOn) {
    PackedRun run;
    run.name = "x";
    std::filesystem::create_directory(run.folder.path("x.out.ec3"));
    run.context.codecs = "mp4a.40.2";
    EXPECT_TRUE(has_failed(run.segment(joined({id3_tag(1), eac3_frames()}))));
    EXPECT_EQ(run.sink.count(4082), 1U);
    EXPECT_EQ(run.sink.count(4283), 1U);
}

// --- CODECS -----------------------------------------------------------------------------------

// What becomes of this audio under these CODECS.
std::string codec_message(const Bytes& audio, const std::optional<std::string>& codecs, int id) {
    PackedRun run;
    run.context.codecs = codecs;
    run.context.channels_text = "2";
    const Status status = run.segment(joined({id3_tag(1), audio}));
    EXPECT_FALSE(has_failed(status));
    EXPECT_EQ(status == Status::kRuleBroken, run.sink.count(id) != 0);
    for (const RecordedReport& report : run.sink.reports()) {
        if (report.id == id) {
            EXPECT_EQ(report.position, 3U);
            EXPECT_EQ(report.attribute, "CODECS");
        }
    }
    return run.text_of(id);
}

TEST(PackedAudioCodecs, Ac3MustBeNamed) {
    EXPECT_EQ(codec_message(ac3_frames(), "ac-3", 4497), "");
    EXPECT_EQ(codec_message(ac3_frames(), "avc1.640028,ac-3", 4497), "");
    const std::string text =
        "For an [AC3] stream, in HLS master-playlist, the attribute \"CODECS\" in the "
        "#EXT-X-STREAM-INF [index : 3] must include \"ac-3\".";
    EXPECT_EQ(codec_message(ac3_frames(), "ec-3", 4497), text);
    EXPECT_EQ(codec_message(ac3_frames(), std::nullopt, 4497), text);
}

TEST(PackedAudioCodecs, AacMustBeNamed) {
    EXPECT_EQ(codec_message(kAdts, "mp4a.40.5", 4495), "");
    EXPECT_EQ(codec_message(kAdts, "avc1.640028,mp4a.40.2", 4495), "");
    const std::string text =
        "For an [AAC] stream, in HLS master-playlist, the attribute \"CODECS\" in the "
        "#EXT-X-STREAM-INF [index : 3] must include \"mp4a\".";
    EXPECT_EQ(codec_message(kAdts, "ec-3", 4495), text);
    EXPECT_EQ(codec_message(kAdts, std::nullopt, 4495), text);
}

TEST(PackedAudioCodecs, Ac4MustBeNamed) {
    EXPECT_EQ(codec_message(ac4_frames(), "ac-4.02.01.00", 4393), "");
    EXPECT_EQ(codec_message(ac4_frames(), "avc1.640028", 4393),
              "For an [AC4] stream, in HLS master-playlist, the attribute \"CODECS\" in the "
              "#EXT-X-STREAM-INF [index : 3] must include \"ac-4\".");
}

}  // namespace
}  // namespace mediasplit
