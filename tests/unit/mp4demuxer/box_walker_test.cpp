#include "src/mp4demuxer/box_walker.h"

#include <algorithm>

#include "base/xml_tree.h"
#include "src/mp4demuxer/box_reader.h"
#include "src/mp4demuxer/box_table.h"
#include "tests/support/recording_sink.h"
#include "tests/unit/mp4demuxer/walk_support.h"

namespace mediasplit::mp4 {
namespace {

TEST(BoxTable, HasNinetyTwoRowsInTheirOrderThatAreFoundByType) {
    constexpr std::string_view kOrder =
        "ftypstypmdatmoovmvhdtraktkhdedtsstcoco64stszstsdstscsttsstsscttsmdhdstblsidxvmhd"
        "smhdencvencasinfschmschifrmamp4aavc1avc3pxavpxa1pavcpxh8hvc1hev1pxhepxh1av01pav1"
        "av1Cs263tx3gmetxac-3ec-3ac-4mlpawaveesdsd263avcCavcEhvcClhvChvcEpxcCpxvCpxwCdac3"
        "dec3dmlpdac4mdcvcllicolrhdlrmdiaminfdinfdrefudtametailstuuidsgpdmvexmehdmooftraf"
        "trextfhdtrunmfhdtrefvdeptfdtpsshtencsaizsaiosenc";
    std::string order;
    for (const BoxRow& row : box_table()) {
        EXPECT_EQ(find_box_row(row.type), &row);
        BoxNode node;
        node.type = row.type;
        order += box_type_text(node);
    }
    EXPECT_EQ(order, kOrder);
    EXPECT_EQ(box_table().size(), 92U);
    EXPECT_EQ(find_box_row(fourcc("free")), nullptr);
}

TEST(BoxTable, TellsFiftySevenTypesForTheTree) {
    EXPECT_EQ(std::count_if(box_table().begin(), box_table().end(),
                            [](const BoxRow& row) { return row.in_tree; }),
              57);
    EXPECT_TRUE(find_box_row(fourcc("ftyp"))->in_tree);
    EXPECT_FALSE(find_box_row(fourcc("styp"))->in_tree);
    EXPECT_FALSE(find_box_row(fourcc("mdat"))->in_tree);
    EXPECT_TRUE(find_box_row(fourcc("senc"))->in_tree);
}

TEST(BoxType, WantsFourPrintableBytes) {
    EXPECT_TRUE(valid_mp4_box_type("moov"));
    EXPECT_TRUE(valid_mp4_box_type(" ~ ~"));
    EXPECT_FALSE(valid_mp4_box_type("moo"));
    EXPECT_FALSE(valid_mp4_box_type("moovs"));
    EXPECT_FALSE(valid_mp4_box_type(std::string_view("mo\0v", 4)));
    EXPECT_FALSE(valid_mp4_box_type("mo\x7Fv"));
    EXPECT_FALSE(valid_mp4_box_type("mo\x1Fv"));
    EXPECT_FALSE(valid_mp4_box_type("mo\xE9v"));
}

TEST(BoxWalker, PrintsNothingForKnownBoxes) {
    const WalkResult result =
        walk_and_listen(join({ftyp(), movie_of({}), box("mdat", {zeros(9)})}));
    EXPECT_EQ(result.lines, "");
    EXPECT_EQ(result.demuxer->stream_count, 1U);
    EXPECT_EQ(result.demuxer->root.child_count, 3U);
}

TEST(BoxWalker, SkipsUnknownBoxesWithTheirPath) {
    const WalkResult result = walk_and_listen(
        join({box("free", {zeros(3)}), box("moov", {box("xxxx"), box("udta", {box("yyyy")})}),
              box("free")}));
    EXPECT_EQ(result.lines,
              "skip box file: free\n"
              "skip box file: moov->xxxx\n"
              "skip box file: moov->udta->yyyy\n"
              "skip box file: free[1]\n");
}

TEST(BoxWalker, NumbersSiblingsOfOneTypeFromTheSecondOn) {
    const Bytes trak = box("trak", {box("free"), box("skip"), box("free")});
    const WalkResult result = walk_and_listen(box("moov", {trak, trak}));
    EXPECT_EQ(result.lines,
              "skip box file: moov->trak->free\n"
              "skip box file: moov->trak->skip\n"
              "skip box file: moov->trak->free[1]\n"
              "skip box file: moov->trak[1]->free\n"
              "skip box file: moov->trak[1]->skip\n"
              "skip box file: moov->trak[1]->free[1]\n");
    EXPECT_EQ(result.demuxer->stream_count, 2U);
}

TEST(BoxWalker, KeepsCountingTopLevelSiblingsOverSegments) {
    const std::unique_ptr<Mp4Demuxer> demuxer = mp4demuxer_create();
    EXPECT_EQ(lines_of(*demuxer, box("free")), "skip box file: free\n");
    EXPECT_EQ(lines_of(*demuxer, box("free")), "skip box file: free[1]\n");
    EXPECT_EQ(lines_of(*demuxer, box("moov", {box("free")})), "skip box file: moov->free\n");
    EXPECT_EQ(lines_of(*demuxer, box("moov", {box("free")})), "skip box file: moov[1]->free\n");
    EXPECT_EQ(demuxer->root.child_count, 4U);
}

TEST(BoxWalker, CountsSiblingsOfManyTypesApart) {
    std::vector<Bytes> boxes;
    std::string expected;
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 40; ++i) {
            const std::string type = "x" + std::to_string(100 + i);
            boxes.push_back(box(type));
            expected += "skip box file: " + type + (round == 0 ? "\n" : "[1]\n");
        }
    }
    EXPECT_EQ(walk_and_listen(join(boxes)).lines, expected);
}

TEST(BoxWalker, TakesTheRestOfTheFileForASizeOfZero) {
    const WalkResult result =
        walk_and_listen(join({box_of_size(0, "moov", {box("free"), mvhd(600), box("free")})}));
    EXPECT_EQ(result.lines,
              "skip box file: moov->free\n"
              "skip box file: moov->free[1]\n");
    EXPECT_EQ(result.demuxer->timescale, 600U);
}

TEST(BoxWalker, TakesTheRestOfTheParentForASizeOfZeroAtAnyLevel) {
    const WalkResult result =
        walk_and_listen(join({box("moov", {box_of_size(0, "udta", {box("free")})}), box("last")}));
    EXPECT_EQ(result.lines,
              "skip box file: moov->udta->free\n"
              "skip box file: last\n");
}

TEST(BoxWalker, PrintsTheRemainderThatIsTooSmallForABox) {
    const WalkResult result =
        walk_and_listen(join({box("moov", {box("free"), zeros(7)}), mvhd(), zeros(3)}));
    EXPECT_EQ(result.lines,
              "skip box file: moov->free\n"
              "The remain data in the box [file: moov] is not enough for a inner box: 7\n"
              "The remain data in the box [file] is not enough for a inner box: 3\n");
    EXPECT_EQ(result.demuxer->timescale, 1000U);
}

TEST(BoxWalker, PrintsTheSameForAContainerOfAFewBytes) {
    EXPECT_EQ(walk_and_listen(box("moov", {zeros(1)})).lines,
              "The remain data in the box [file: moov] is not enough for a inner box: 1\n");
    EXPECT_EQ(walk_and_listen(box("moov")).lines, "");
}

TEST(BoxWalker, ReadsSizeExtendedBoxes) {
    const WalkResult result = walk_and_listen(join({large_box("moov", {mvhd(90)}), box("free")}));
    EXPECT_EQ(result.lines, "skip box file: free\n");
    EXPECT_EQ(result.demuxer->timescale, 90U);
}

TEST(BoxWalker, EndsTheParentWhenFifteenBytesAreLeftForASizeExtendedBox) {
    const WalkResult result =
        walk_and_listen(join({box("moov", {box_of_size(1, "free", {zeros(7)})}), box("last")}));
    EXPECT_EQ(result.lines,
              "The remain data in the box [file: moov->free] is not enough for the size-extended "
              "box: 15\n"
              "skip box file: last\n");
}

TEST(BoxWalker, AcceptsASizeExtendedBoxOfSixteenBytes) {
    EXPECT_EQ(walk_and_listen(box("moov", {large_box("free")})).lines,
              "skip box file: moov->free\n");
}

TEST(BoxWalker, EndsTheParentAtASizeBelowTheHeader) {
    for (const int size : {2, 4, 7}) {
        const WalkResult result = walk_and_listen(
            join({box("moov", {box_of_size(size, "free", {zeros(12)}), mvhd()}), box("last")}));
        const std::size_t left = 20 + mvhd().size();
        EXPECT_EQ(result.lines,
                  "The box size [" + std::to_string(size) +
                      "] indicated in the box [file: moov->free] is less than the mp4 box header "
                      "size. So all the remain data [" +
                      std::to_string(left) +
                      "] in the box [file: moov] is released.\n"
                      "skip box file: last\n");
        EXPECT_EQ(result.demuxer->timescale, 0U);
    }
}

TEST(BoxWalker, TellsSmallExtendedSizesWithTheirEightBytes) {
    EXPECT_EQ(walk_and_listen(large_box_of_size(15, "free", {zeros(4)})).lines,
              "The box size [15] indicated in the box [file: free] is less than the mp4 box header "
              "size. So all the remain data [12] in the box [file] is released.\n");
    EXPECT_EQ(walk_and_listen(large_box_of_size(0, "free")).lines,
              "The box size [0] indicated in the box [file: free] is less than the mp4 box header "
              "size. So all the remain data [8] in the box [file] is released.\n");
}

TEST(BoxWalker, EndsTheParentWhenABoxOverrunsItByMoreThanEight) {
    const WalkResult result =
        walk_and_listen(join({box("moov", {box_of_size(29, "free", {zeros(12)})}), box("last")}));
    EXPECT_EQ(result.lines,
              "The box size [29] indicated in the box [file: moov->free] is beyond the remain data "
              "[20] in the parent box [file: moov]\n"
              "skip box file: last\n");
}

TEST(BoxWalker, LetsABoxOverrunItsParentByFourBytesAndThenEndsTheParent) {
    // The handler runs: the time scale is there.
    Bytes header = mvhd(77);
    header[3] = static_cast<std::uint8_t>(header[3] + 4);
    const WalkResult result = walk_and_listen(join({box("moov", {header}), box("last")}));
    EXPECT_EQ(result.lines,
              "The remained data size in box [file: moov] is invalid: -4\n"
              "skip box file: last\n");
    EXPECT_EQ(result.demuxer->timescale, 77U);
}

TEST(BoxWalker, LetsABoxOverrunItsParentByExactlyEightBytes) {
    EXPECT_EQ(
        walk_and_listen(join({box("moov", {box_of_size(28, "free", {zeros(12)})}), box("last")}))
            .lines,
        "skip box file: moov->free\n"
        "The remained data size in box [file: moov] is invalid: -8\n"
        "skip box file: last\n");
}

TEST(BoxWalker, TellsHugeSizesAsTheyStand) {
    EXPECT_EQ(
        walk_and_listen(box_of_size(0xFFFFFFFF, "free", {zeros(8)})).lines,
        "The box size [4294967295] indicated in the box [file: free] is beyond the remain data "
        "[16] in the parent box [file]\n");
    EXPECT_EQ(walk_and_listen(large_box_of_size(0x7FFFFFFFFFFFFFFF, "free", {zeros(8)})).lines,
              "The box size [9223372036854775807] indicated in the box [file: free] is beyond the "
              "remain data [24] in the parent box [file]\n");
    EXPECT_EQ(walk_and_listen(large_box_of_size(0x8000000000000000, "free", {zeros(8)})).lines,
              "The box size [-9223372036854775808] indicated in the box [file: free] is beyond the "
              "remain data [24] in the parent box [file]\n");
    EXPECT_EQ(walk_and_listen(large_box_of_size(0xFFFFFFFFFFFFFFFF, "free", {zeros(8)})).lines,
              "The box size [-1] indicated in the box [file: free] is less than the mp4 box header "
              "size. So all the remain data [16] in the box [file] is released.\n");
}

TEST(BoxWalker, SkipsTypesThatAreNotPrintable) {
    const Bytes broken = join({u32(12), Bytes{'m', 0, 'o', 'v'}, zeros(4)});
    const WalkResult result =
        walk_and_listen(join({broken, box("moov", {broken, broken, mvhd()})}));
    EXPECT_EQ(result.lines,
              "skip box file: (invalid string)\n"
              "skip box file: moov->(invalid string)\n"
              "skip box file: moov->(invalid string)[1]\n");
    EXPECT_EQ(result.demuxer->timescale, 1000U);
}

TEST(BoxWalker, TakesAnUnknownVideoEntryForAVideoEntry) {
    const WalkResult result = walk_and_listen(entry_movie(
        "vide", video_entry("zzzz", 640, 360, {avcC({hex("6742c01e")}, {hex("68ce")})})));
    EXPECT_EQ(
        result.lines,
        "unsupport the video SampleEntry box file: moov->trak->mdia->minf->stbl->stsd->zzzz\n");
    EXPECT_EQ(result.stream().width, 640U);
    EXPECT_EQ(result.stream().height, 360U);
    ASSERT_NE(result.stream().avc_config, nullptr);
    EXPECT_EQ(result.stream().avc_config->sps.size(), 1U);
    EXPECT_EQ(result.stream().stream_id, 0U);
}

TEST(BoxWalker, TakesAnUnknownAudioEntryForAnAudioEntry) {
    const WalkResult result = walk_and_listen(
        entry_movie("soun", audio_entry("zzzz", 2, 16, 48000, {esds(hex("1190"))})));
    EXPECT_EQ(
        result.lines,
        "unsupport the audio SampleEntry box file: moov->trak->mdia->minf->stbl->stsd->zzzz\n");
    EXPECT_EQ(result.stream().audio_channel_count, 2U);
    EXPECT_EQ(result.stream().dsi, hex("1190"));
}

TEST(BoxWalker, PassesOverAnUnknownAudioEntryThatIsTooShort) {
    const WalkResult result =
        walk_and_listen(join({entry_movie("soun", box("zzzz", {repeat(0xFF, 27)})), box("last")}));
    EXPECT_EQ(result.lines,
              "unsupport the audio SampleEntry box file: moov->trak->mdia->minf->stbl->stsd->zzzz\n"
              "skip box file: last\n");
    EXPECT_EQ(result.stream().audio_channel_count, 0U);
}

TEST(BoxWalker, SkipsAnUnknownEntryOfAnotherKindOfTrack) {
    EXPECT_EQ(walk_and_listen(entry_movie("text", box("zzzz", {zeros(40)}))).lines,
              "skip box file: moov->trak->mdia->minf->stbl->stsd->zzzz\n");
}

TEST(BoxWalker, PutsThePositionRightBehindAnUnknownEntry) {
    // The entry is walked as video and is too short for one.
    const WalkResult result = walk_and_listen(
        box("moov", {mvhd(), track_of("vide", {stsd({box("zzzz", {zeros(10)})}), stsz({5, 6})})}));
    EXPECT_EQ(result.lines,
              "unsupport the video SampleEntry box file: moov->trak->mdia->minf->stbl->stsd->zzzz\n"
              "The mp4 file: moov->trak->mdia->minf->stbl->stsd->zzzz size is out of the range we "
              "support: -68\n");
    EXPECT_EQ(result.stream().num_samples, 2U);
}

TEST(BoxWalker, ReadsTheSiblingOfABoxThatIsRefused) {
    const Bytes too_many = box("stts", {u32(0), u32(262145), zeros(16)});
    const WalkResult result = walk_and_listen(movie_of({too_many, table_box("stsc", {{1, 3, 1}})}));
    EXPECT_EQ(result.lines, "");
    EXPECT_TRUE(result.stream().stts.empty());
    EXPECT_EQ(result.stream().stts_count, 262145U);
    EXPECT_EQ(result.stream().stsc_count, 1U);
}

TEST(BoxWalker, DispatchesABoxWhereverItStands) {
    const WalkResult result = walk_and_listen(join({mvhd(44), box("udta", {mvhd(55)})}));
    EXPECT_EQ(result.lines, "");
    EXPECT_EQ(result.demuxer->timescale, 55U);
}

TEST(BoxWalker, WalksARangeOfTheFile) {
    const Bytes bytes = join({box("aaaa"), box("bbbb"), box("cccc")});
    const std::unique_ptr<Mp4Demuxer> demuxer = mp4demuxer_create();
    MemoryInput input(bytes);
    EXPECT_EQ(mp4demuxer_update(demuxer.get(), 8, 8), 0U);
    ::testing::internal::CaptureStdout();
    mp4demuxer_parse_boxes(*demuxer, input.file());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "skip box file: bbbb\n");
}

TEST(BoxWalker, WalksTheFirstBytesForALengthWithoutAStart) {
    const Bytes bytes = join({box("aaaa"), box("bbbb"), box("cccc")});
    const std::unique_ptr<Mp4Demuxer> demuxer = mp4demuxer_create();
    MemoryInput input(bytes);
    mp4demuxer_update(demuxer.get(), 0, 16);
    ::testing::internal::CaptureStdout();
    mp4demuxer_parse_boxes(*demuxer, input.file());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "skip box file: aaaa\nskip box file: bbbb\n");
}

TEST(BoxWalker, RefusesToUpdateNothing) {
    EXPECT_EQ(mp4demuxer_update(nullptr, 0, 0), 1U);
    mp4demuxer_destroy(nullptr);
}

TEST(BoxWalker, PrintsParentsBeyondEightGigabytes) {
    // A claimed size is enough: nothing is read before the test.
    const std::unique_ptr<Mp4Demuxer> demuxer = mp4demuxer_create();
    MemoryInput input(box("free"));
    demuxer->root.type = fourcc("file");
    demuxer->root.size = 0x200000001;
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(parse_box_with_index(*demuxer, input.file(), demuxer->root, nullptr, 0), 1U);
    demuxer->root.size = -5;
    EXPECT_EQ(parse_box(*demuxer, input.file(), demuxer->root, nullptr), 1U);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "The mp4 file size is out of the range we support: 8589934593\n"
              "The mp4 file size is out of the range we support: -5\n");
}

TEST(BoxWalker, ReturnsTheOrOfTheHandlersResults) {
    const std::unique_ptr<Mp4Demuxer> demuxer = mp4demuxer_create();
    const Bytes bytes = join({ftyp(), ftyp(), mvhd()});  // the second is refused
    MemoryInput input(bytes);
    demuxer->root.size = static_cast<std::int64_t>(bytes.size());
    EXPECT_EQ(parse_box(*demuxer, input.file(), demuxer->root, nullptr), 1U);
    EXPECT_EQ(demuxer->timescale, 1000U);
}

TEST(BoxWalker, CutsPathsAtTwoHundredFiftyFiveCharacters) {
    Bytes bytes = box("free");
    for (int i = 0; i < 60; ++i) {
        bytes = box("udta", {bytes});
    }
    std::string path = "file: udta";
    for (int i = 1; i < 60; ++i) {
        path += "->udta";
    }
    path += "->free";
    ASSERT_GT(path.size(), 255U);
    EXPECT_EQ(walk_and_listen(bytes).lines, "skip box " + path.substr(0, 255) + "\n");
}

TEST(BoxWalker, PassesOverBoxesNestedTooDeep) {
    // The box at level 65 isn't walked, and its sibling outside is.
    Bytes bytes = mvhd(33);
    for (int i = 0; i < 100; ++i) {
        bytes = box("udta", {bytes});
    }
    const WalkResult result = walk_and_listen(join({bytes, box("last")}));
    EXPECT_EQ(std::count(result.lines.begin(), result.lines.end(), '\n'), 2);
    EXPECT_NE(result.lines.find("skip box file: last\n"), std::string::npos);
    EXPECT_EQ(result.demuxer->timescale, 0U);
}

TEST(BoxWalker, WalksSixtyFourLevels) {
    Bytes bytes = mvhd(33);
    for (int i = 0; i < 63; ++i) {
        bytes = box("udta", {bytes});
    }
    EXPECT_EQ(walk_and_listen(bytes).demuxer->timescale, 33U);
    EXPECT_EQ(walk_and_listen(box("udta", {bytes})).demuxer->timescale, 0U);
}

TEST(BoxWalker, RefusesTheTrackBeyondTwoHundredFiftySix) {
    const RecordingSink sink;
    std::vector<Bytes> traks;
    for (std::uint32_t i = 1; i <= 257; ++i) {
        traks.push_back(box("trak", {tkhd(i)}));
    }
    traks.push_back(mvhd(12));
    const WalkResult result = walk_and_listen(box("moov", traks));
    EXPECT_EQ(result.demuxer->stream_count, 256U);
    EXPECT_EQ(result.demuxer->streams.size(), 256U);
    EXPECT_EQ(result.stream(255).track_id, 256U);
    EXPECT_EQ(result.demuxer->timescale, 12U);
    EXPECT_EQ(sink.notes(),
              std::vector<std::string>{"A track was dropped: there are more than 256 of them."});
}

TEST(BoxWalker, IgnoresTrackBoxesOutsideATrack) {
    const WalkResult result =
        walk_and_listen(join({tkhd(1),
                              mdhd(1000),
                              hdlr("vide"),
                              edts({{0, 5}}),
                              table_box("stts", {{1, 1}}),
                              stsz({1}),
                              stsd({video_entry("avc1", 1, 1, {avcC({}, {})})}),
                              esds({}),
                              full_box("tfdt", 0, 0, {u32(1)}),
                              trun(0, 1),
                              senc({}, false),
                              tenc({}),
                              box("stco", {u32(0), u32(0)}),
                              box("vmhd"),
                              box("vdep", {u32(1)}),
                              box("colr"),
                              box("mdcv"),
                              box("clli"),
                              box("dec3"),
                              box("dac3"),
                              box("dac4"),
                              box("av1C"),
                              box("hvcC"),
                              box("lhvC"),
                              box("pxcC"),
                              box("tx3g"),
                              box("metx"),
                              box("sgpd"),
                              box("schm"),
                              box("frma"),
                              box("avcE"),
                              box("sinf")}));
    EXPECT_EQ(result.demuxer->stream_count, 0U);
}

TEST(BoxWalker, TellsWhereTheLastFragmentBegins) {
    const WalkResult result = walk_and_listen(join({box("free", {zeros(4)}), moof_of({tfhd(9)})}));
    EXPECT_EQ(result.demuxer->moof_offset, 12);
    EXPECT_EQ(result.demuxer->moof_size, static_cast<std::int64_t>(moof_of({tfhd(9)}).size() - 8));
}

TEST(BoxWalker, BuildsATreeOfTheBoxesThatAreAskedFor) {
    const EzxmlPtr tree = ezxml_new("file");
    const std::unique_ptr<Mp4Demuxer> demuxer = mp4demuxer_create();
    demuxer->tree_root = tree.get();
    walk_again(*demuxer, join({ftyp(), movie_of({stsz({1})})}));
    EXPECT_STREQ(ezxml_attr(ezxml_child(tree.get(), "ftyp"), "size"), "12");
    const Ezxml* moov = ezxml_child(tree.get(), "moov");
    ASSERT_NE(moov, nullptr);
    EXPECT_EQ(ezxml_child(moov, "mvhd"), nullptr);
    const Ezxml* trak = ezxml_child(moov, "trak");
    ASSERT_NE(trak, nullptr);
    EXPECT_NE(ezxml_child(trak, "tkhd"), nullptr);
    EXPECT_NE(ezxml_child(ezxml_child(ezxml_child(trak, "mdia"), "minf"), "stbl"), nullptr);
}

TEST(FileReaders, ReadBigEndianNumbersAndZerosBehindTheEnd) {
    MemoryInput input(hex("01 0203 04050607 08090a0b0c0d0e0f 10"));
    InputFile& file = input.file();
    EXPECT_EQ(f_src_read_u8(file), 0x01);
    EXPECT_EQ(f_src_read_u16(file), 0x0203);
    EXPECT_EQ(f_src_read_u32(file), 0x04050607U);
    EXPECT_EQ(f_src_read_u64(file), 0x08090a0b0c0d0e0fU);
    EXPECT_EQ(f_src_read_u32(file), 0x10000000U);
    EXPECT_EQ(f_src_read_u64(file), 0U);
}

}  // namespace
}  // namespace mediasplit::mp4
