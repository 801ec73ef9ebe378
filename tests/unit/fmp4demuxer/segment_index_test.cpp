#include "src/fmp4demuxer/segment_index.h"

#include <gtest/gtest.h>

#include "src/util/segments.h"
#include "tests/support/mp4_input.h"
#include "tests/unit/fmp4demuxer/demux_run.h"

namespace mediasplit {
namespace {

using mp4::Bytes;

int type_of(const Bytes& bytes) {
    TempFolder folder;
    static_cast<void>(folder.write("in", std::string(bytes.begin(), bytes.end())));
    return get_file_type(folder.path("in"), nullptr);
}

Bytes with_text(std::string_view head, std::size_t size = 8) {
    Bytes bytes = mp4::text(head);
    bytes.resize(size, 0);
    return bytes;
}

TEST(FileType, FewerThanEightBytesAreUnknown) {
    EXPECT_EQ(type_of(with_text("G", 7)), kFileTypeUnknown);
    EXPECT_EQ(type_of({}), kFileTypeUnknown);
    EXPECT_EQ(type_of(with_text("G", 8)), kFileTypeTs);
}

TEST(FileType, GoesByTheFirstBytes) {
    EXPECT_EQ(type_of(with_text("GIF89a")), kFileTypeTs);
    EXPECT_EQ(type_of(with_text("ID3")), kFileTypePackedAudio);
    EXPECT_EQ(type_of(with_text("#M3U8")), kFileTypePlaylist);
    EXPECT_EQ(type_of(with_text("#EXTM3U")), kFileTypeUnknown);
    EXPECT_EQ(type_of(mp4::hex("fff1508019fffc00")), kFileTypeAdts);
    EXPECT_EQ(type_of(mp4::hex("fff9508019fffc00")), kFileTypeUnknown);
    EXPECT_EQ(type_of(mp4::hex("ac40ffff000000ff")), kFileTypeAc4);
    EXPECT_EQ(type_of(mp4::hex("ac41ffff000000ff")), kFileTypeAc4);
    EXPECT_EQ(type_of(mp4::hex("ac42ffff000000ff")), kFileTypeUnknown);
}

TEST(FileType, SyncWordOfAc3GoesByBsid) {
    const auto with_bsid = [](unsigned bsid) {
        Bytes bytes = mp4::hex("0b77000000000000");
        bytes[5] = static_cast<std::uint8_t>(bsid << 3 | 7);
        return type_of(bytes);
    };
    for (unsigned bsid = 0; bsid < 32; ++bsid) {
        int expected = kFileTypeUnknown;
        if (bsid <= 8) {
            expected = kFileTypeAc3;
        } else if (bsid >= 11 && bsid <= 16) {
            expected = kFileTypeEc3;
        }
        EXPECT_EQ(with_bsid(bsid), expected) << bsid;
    }
}

TEST(FileType, SecondWordNamesAnIsoMediaFile) {
    for (const char* box : {"ftyp", "styp", "sidx", "moof"}) {
        EXPECT_EQ(type_of(mp4::join({mp4::u32(24), mp4::text(box)})), kFileTypeMp4) << box;
    }
    for (const char* box : {"moov", "mdat", "free"}) {
        EXPECT_EQ(type_of(mp4::join({mp4::u32(24), mp4::text(box)})), kFileTypeUnknown) << box;
    }
    // A test that fails at its second byte goes on to the box types.
    EXPECT_EQ(type_of(mp4::join({mp4::hex("0b000018"), mp4::text("ftyp")})), kFileTypeMp4);
    EXPECT_EQ(type_of(mp4::join({mp4::hex("ff000018"), mp4::text("ftyp")})), kFileTypeMp4);
    EXPECT_EQ(type_of(mp4::join({mp4::hex("ac000018"), mp4::text("ftyp")})), kFileTypeMp4);
    // That of AC-3 is final.
    EXPECT_EQ(type_of(mp4::join({mp4::hex("0b770018"), mp4::text("ftyp")})), kFileTypeEc3);
    EXPECT_EQ(type_of(mp4::join({mp4::hex("0b770018"), mp4::text("moof")})), kFileTypeEc3);
}

TEST(FileType, FileThatCannotBeOpenedRaises4022) {
    RecordingSink sink;
    EXPECT_EQ(get_file_type("/nowhere/at/all", nullptr), kFileTypeUnknown);
    EXPECT_EQ(get_file_type("http://127.0.0.1/x.mp4", nullptr), kFileTypeUnknown);
    EXPECT_EQ(get_file_type("https://127.0.0.1/x.mp4", "/nowhere/at/all"), kFileTypeUnknown);
    ASSERT_EQ(sink.ids(), (std::vector<int>{4022, 4022, 4022}));
    EXPECT_EQ(sink.reports()[2].text, "Fail to open the file : https://127.0.0.1/x.mp4");
}

TEST(FileType, AddressIsReadFromItsCopy) {
    TempFolder folder;
    static_cast<void>(folder.write("copy", "ID3....."));
    RecordingSink sink;
    EXPECT_EQ(get_file_type("http://127.0.0.1/x", folder.path("copy")), kFileTypePackedAudio);
    EXPECT_TRUE(sink.ids().empty());
}

// --- Walking by the index -----------------------------------------------------------------------

mp4::MovieSpec four_samples() {
    mp4::TrackSpec track;
    track.handler = "soun";
    track.entries = {mp4::audio_entry("ac-3", 2, 16, 48000)};
    for (std::uint8_t i = 1; i <= 4; ++i) {
        track.samples.push_back(sample(Bytes(i, i)));
    }
    mp4::MovieSpec movie;
    movie.tracks = {track};
    return movie;
}

Bytes sidx(std::uint32_t version, std::uint64_t first_offset,
           const std::vector<std::uint32_t>& sizes) {
    std::vector<Bytes> parts{mp4::u32(version << 24), mp4::u32(1), mp4::u32(1000)};
    for (const std::uint64_t value : {std::uint64_t{0}, first_offset}) {
        parts.push_back(version != 0 ? mp4::u64(value) : mp4::u32(value));
    }
    parts.push_back(mp4::u16(0));
    parts.push_back(mp4::u16(sizes.size()));
    for (const std::uint32_t size : sizes) {
        parts.insert(parts.end(), {mp4::u32(size), mp4::u32(1000), mp4::u32(0x90000000)});
    }
    return mp4::box("sidx", parts);
}

struct Indexed {
    Bytes bytes;
    std::size_t index_at = 0;
    std::size_t index_size = 0;
};

// Initialization, index and three subsegments, `gap` bytes behind the index.
Indexed indexed_file(std::uint32_t version, std::size_t gap = 0) {
    const auto movie = four_samples();
    Indexed out;
    out.bytes = mp4::initialization_segment(movie);
    out.index_at = out.bytes.size();
    out.index_size = sidx(version, gap, {0, 0, 0}).size();
    std::uint64_t at = out.index_at + out.index_size + gap;
    const Bytes first = mp4::media_segment(movie, 0, 1, at, 1);
    const Bytes second = mp4::media_segment(movie, 1, 2, at + first.size(), 2);
    const Bytes third = mp4::media_segment(movie, 3, 1, at + first.size() + second.size(), 3);
    const Bytes index = sidx(version, gap,
                             {static_cast<std::uint32_t>(first.size()),
                              // The bit that tells an index of indexes doesn't count.
                              static_cast<std::uint32_t>(second.size()) | 0x80000000U,
                              static_cast<std::uint32_t>(third.size())});
    out.bytes = mp4::join({out.bytes, index, Bytes(gap, 0), first, second, third});
    return out;
}

SegmentSlot index_slot(std::size_t first, std::size_t last) {
    SegmentSlot slot;
    slot.kind = kSlotIndexed;
    slot.byte_range = std::make_unique<ByteRangeText>();
    slot.byte_range->offset = std::to_string(first);
    slot.byte_range->last_byte = std::to_string(last);
    return slot;
}

class IndexWalk : public testing::Test {
protected:
    IndexWalk() {
        SegmentSlot initialization;
        initialization.kind = kSlotInitialization;
        static_cast<void>(run.walk(mp4::initialization_segment(four_samples()), &initialization));
        run.sink.clear();
    }

    Status walk(const Bytes& bytes, const SegmentSlot* slot, List* list = nullptr) {
        mp4::MemoryInput input(bytes);
        input.file().name = "film.mp4";
        return fmp4demux_with_sidx(input.file(), slot, run.demuxer(), list);
    }

    [[nodiscard]] std::size_t count(int id) const { return run.sink.count(id); }

    DemuxRun run;
};

TEST_F(IndexWalk, EachSubsegmentStartsWhereTheFormerEnded) {
    for (const std::uint32_t version : {0U, 1U}) {
        const Indexed file = indexed_file(version);
        const SegmentSlot slot = index_slot(file.index_at, file.index_at + file.index_size - 1);
        EXPECT_EQ(walk(file.bytes, &slot), Status::kOk);
    }
    const Bytes once = mp4::all_sample_data(four_samples().tracks[0]);
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), mp4::join({once, once}));
}

TEST_F(IndexWalk, FirstOffsetCountsFromTheEndOfTheIndex) {
    const Indexed file = indexed_file(0, 40);
    const SegmentSlot slot = index_slot(file.index_at, file.index_at + file.index_size - 1);
    EXPECT_EQ(walk(file.bytes, &slot), Status::kOk);
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), mp4::all_sample_data(four_samples().tracks[0]));
}

TEST_F(IndexWalk, RangeThatHoldsNoIndexRaises4061) {
    const Indexed file = indexed_file(0);
    const SegmentSlot slot = index_slot(file.index_at + 4, file.index_at + file.index_size - 1);
    EXPECT_EQ(walk(file.bytes, &slot), Status::kFailed);
    EXPECT_EQ(run.sink.ids(), std::vector<int>{4061});
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), Bytes{});
}

TEST_F(IndexWalk, IndexWithoutReferencesIsNoFailure) {
    const Bytes bytes = sidx(0, 0, {});
    EXPECT_EQ(walk(bytes, nullptr), Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
}

TEST_F(IndexWalk, WithoutARangeTheIndexStandsFirstAndOffsetsCountFromZero) {
    const auto movie = four_samples();
    const std::size_t index_size = sidx(0, 0, {0}).size();
    const Bytes media = mp4::media_segment(movie, 0, 4, index_size, 1);
    const Bytes index = sidx(0, index_size, {static_cast<std::uint32_t>(media.size())});
    EXPECT_EQ(walk(mp4::join({index, media}), nullptr), Status::kOk);
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), mp4::all_sample_data(movie.tracks[0]));
}

TEST_F(IndexWalk, ReferenceOfSize0Raises2023) {
    const Indexed file = indexed_file(0);
    Bytes bytes = file.bytes;
    // The size of the second reference.
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[file.index_at + 32 + 12 + i] = 0;
    }
    const SegmentSlot slot = index_slot(file.index_at, file.index_at + file.index_size - 1);
    static_cast<void>(walk(bytes, &slot));
    ASSERT_EQ(count(2023), 1U);
    for (const RecordedReport& report : run.sink.reports()) {
        if (report.id == 2023) {
            EXPECT_EQ(report.text,
                      "In the MP4, the referenced_size of the No.1(starts from 0) subsegment in "
                      "file[film.mp4] is 0.");
        }
    }
}

TEST_F(IndexWalk, ReferenceOfSize0DoesNotStandForTheWholeFile) {
    const auto movie = four_samples();
    const Bytes media = mp4::media_segment(movie, 0, 4, 0, 1);
    // The first offset leads from the end of the index back to the start of the file.
    const std::size_t end = media.size() + sidx(1, 0, {0, 0}).size();
    const Bytes bytes = mp4::join({media, sidx(1, 0 - static_cast<std::uint64_t>(end), {0, 0})});
    const SegmentSlot slot = index_slot(media.size(), end - 1);
    static_cast<void>(walk(bytes, &slot));
    EXPECT_EQ(count(2023), 2U);
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), Bytes{});
}

TEST_F(IndexWalk, LocationIsToldForEachSubsegment) {
    const Indexed file = indexed_file(0);
    const SegmentSlot slot = index_slot(file.index_at, file.index_at + file.index_size - 1);
    EXPECT_EQ(walk(file.bytes, &slot), Status::kOk);
    EXPECT_EQ(count(3), 3U);
    EXPECT_EQ(count(2023), 0U);
}

void* plain_alloc(void* /*context*/, std::size_t size) {
    return std::malloc(size);
}
void plain_release(void* /*context*/, void* pointer) {
    std::free(pointer);
}

TEST_F(IndexWalk, TimingRecordsGoToTheListAndTheLastOneSaysSo) {
    OsalContext osal;
    osal_init(&osal);
    const OsalContext callbacks{nullptr, plain_alloc, plain_release};
    ASSERT_EQ(osal_register_callbacks(&osal, &callbacks), 0);
    List list;
    const ListParams params{&osal, 0};
    ASSERT_EQ(list_create(&list, &params), kListOk);
    const ListCallbacks nodes{plain_alloc, plain_release, nullptr, nullptr};
    ASSERT_EQ(list_register_callbacks(&list, &nodes), kListOk);
    const Indexed file = indexed_file(0);
    const SegmentSlot slot = index_slot(file.index_at, file.index_at + file.index_size - 1);
    EXPECT_EQ(walk(file.bytes, &slot, &list), Status::kOk);
    std::vector<std::uint32_t> ends;
    while (const auto record = take_segment_timing(&list)) {
        ends.push_back(record->end);
    }
    EXPECT_EQ(ends, (std::vector<std::uint32_t>{0, 0, 1}));
    list_destroy(&list);
    osal_close(&osal);
}

TEST_F(IndexWalk, CutIndexEndsByItself) {
    const Indexed file = indexed_file(0);
    for (std::size_t cut = 0; cut <= file.index_size; ++cut) {
        Bytes bytes = file.bytes;
        bytes.resize(file.index_at + cut);
        const SegmentSlot slot = index_slot(file.index_at, file.index_at + file.index_size - 1);
        static_cast<void>(walk(bytes, &slot));
    }
}

}  // namespace
}  // namespace mediasplit
