#include <gtest/gtest.h>

#include <numeric>

#include "src/fmp4demuxer/sample_decryption.h"
#include "tests/support/encrypted_track.h"
#include "tests/support/recording_sink.h"
#include "tests/unit/fmp4demuxer/demux_run.h"

namespace mediasplit {
namespace {

using mp4::Bytes;
using mp4::SencRow;
using mp4::SubsampleSpec;
using mp4::TencSpec;

mp4::MovieSpec movie_of(std::vector<mp4::TrackSpec> tracks) {
    mp4::MovieSpec movie;
    movie.tracks = std::move(tracks);
    return movie;
}

// What comes out of a track with the key at hand, from the plain and the fragmented form.
Bytes decrypted(const mp4::TrackSpec& track) {
    const std::string name =
        std::string("in_track_id_1.out.") + (track.handler == "vide" ? "data" : "ac3");
    const auto movie = movie_of({track});
    std::optional<Bytes> result;
    for (const Bytes& file : {mp4::plain_file(movie), mp4::fragmented_file(movie)}) {
        DemuxRun run;
        run.key_list = kPair;
        EXPECT_EQ(run.walk(file), Status::kOk);
        EXPECT_TRUE(run.sink.ids().empty());
        const auto bytes = run.output(name);
        EXPECT_TRUE(bytes.has_value());
        if (result) {
            EXPECT_EQ(bytes, result);
        }
        result = bytes;
    }
    return result.value_or(Bytes{});
}

// --- Schemes ----------------------------------------------------------------------------------

TEST(Decryption, CencVideoDecryptsTheProtectedRangesOfEachSample) {
    for (const Bytes& iv : {kIv8, kIv16}) {
        auto track = video("cenc", tenc_spec(static_cast<std::uint32_t>(iv.size())));
        const Bytes plain = plain_text(100);
        Bytes data = plain;
        ctr(data, 10, 32, iv, 0);
        ctr(data, 47, 48, iv, 2);
        add(track, data, iv, {{10, 32}, {5, 48}});
        add(track, data, iv, {{10, 32}, {5, 48}});
        EXPECT_EQ(decrypted(track), mp4::join({plain, plain}));
    }
}

TEST(Decryption, CencRangeStartsAtAFreshKeystreamBlock) {
    auto track = video("cenc", tenc_spec(16));
    const Bytes plain = plain_text(60);
    Bytes data = plain;
    ctr(data, 0, 5, kIv16, 0);    // wastes 11 bytes of block 0
    ctr(data, 10, 20, kIv16, 1);  // blocks 1 and 2, wastes 12 bytes of block 2
    ctr(data, 30, 30, kIv16, 3);
    add(track, data, kIv16, {{0, 5}, {5, 20}, {0, 30}});
    EXPECT_EQ(decrypted(track), plain);
}

TEST(Decryption, CencRangeOfNoBytesTakesNoKeystream) {
    auto track = video("cenc", tenc_spec(8));
    const Bytes plain = plain_text(40);
    Bytes data = plain;
    ctr(data, 20, 20, kIv8, 0);
    add(track, data, kIv8, {{10, 0}, {10, 20}});
    EXPECT_EQ(decrypted(track), plain);
}

TEST(Decryption, CencCounterCarriesIntoTheIv) {
    const Bytes iv = mp4::hex("00000000000000ffffffffffffffffff");
    auto track = video("cenc", tenc_spec(16));
    const Bytes plain = plain_text(48);
    Bytes data = plain;
    ctr(data, 0, 48, iv, 0);
    add(track, data, iv, {{0, 48}});
    EXPECT_EQ(decrypted(track), plain);
}

TEST(Decryption, CencAudioDecryptsTheWholeSample) {
    auto track = audio("cenc", tenc_spec(8));
    const Bytes plain = plain_text(101);
    Bytes data = plain;
    ctr(data, 0, 101, kIv8, 0);
    add(track, data, kIv8);
    add(track, data, kIv8);
    EXPECT_EQ(decrypted(track), mp4::join({plain, plain}));
}

TEST(Decryption, Cbc1VideoChainRunsOnOverTheRangesOfASample) {
    auto track = video("cbc1", tenc_spec(16));
    const Bytes plain = plain_text(120);
    Bytes data = plain;
    Bytes chain = kIv16;
    cbc(data, 3, 32, chain);
    cbc(data, 40, 64, chain);
    add(track, data, kIv16, {{3, 32}, {5, 64}});
    add(track, data, kIv16, {{3, 32}, {5, 64}});
    EXPECT_EQ(decrypted(track), mp4::join({plain, plain}));
}

TEST(Decryption, Cbc1RangeOfPartBlocksStaysAsItIs) {
    auto track = video("cbc1", tenc_spec(16));
    const Bytes plain = plain_text(60);
    Bytes data = plain;
    Bytes chain = kIv16;
    cbc(data, 20, 32, chain);
    // The first range is refused as a whole and leaves the chain alone.
    add(track, data, kIv16, {{0, 20}, {0, 32}});
    EXPECT_EQ(decrypted(track), plain);
}

TEST(Decryption, CbcAudioDecryptsItsWholeBlocksInOneChain) {
    for (const std::string scheme : {"cbc1", "cbcs"}) {
        auto track = audio(scheme, scheme == "cbcs" ? pattern_spec(1, 9) : tenc_spec(16));
        const Bytes plain = plain_text(100);
        Bytes data = plain;
        Bytes chain = kIv16;
        cbc(data, 0, 96, chain);
        add(track, data, scheme == "cbcs" ? Bytes{} : kIv16);
        EXPECT_EQ(decrypted(track), plain) << scheme;
    }
}

TEST(Decryption, CensAudioDecryptsItsWholeBlocksWithoutAPattern) {
    auto track = audio("cens", pattern_spec(1, 9, 8, std::nullopt));
    const Bytes plain = plain_text(100);
    Bytes data = plain;
    ctr(data, 0, 96, kIv8, 0);
    add(track, data, kIv8);
    EXPECT_EQ(decrypted(track), plain);
}

TEST(Decryption, CbcsPatternDecryptsBlocks0And10Of200Bytes) {
    auto track = video("cbcs", pattern_spec(1, 9));
    const Bytes plain = plain_text(210);
    Bytes data = plain;
    Bytes chain = kIv16;
    cbc(data, 10, 16, chain);
    cbc(data, 170, 16, chain);
    add(track, data, {}, {{10, 200}});
    add(track, data, {}, {{10, 200}});
    EXPECT_EQ(decrypted(track), mp4::join({plain, plain}));
}

TEST(Decryption, CbcsPatternStartsAfreshAtEachSubsampleAndTheChainDoesNot) {
    auto track = video("cbcs", pattern_spec(2, 1));
    const Bytes plain = plain_text(150);
    Bytes data = plain;
    Bytes chain = kIv16;
    cbc(data, 0, 32, chain);
    cbc(data, 48, 16, chain);  // of 64 protected bytes
    cbc(data, 70, 32, chain);
    cbc(data, 118, 32, chain);
    add(track, data, {}, {{0, 64}, {6, 80}});
    EXPECT_EQ(decrypted(track), plain);
}

TEST(Decryption, CbcsLastPartBlockAndShortRangesStayAsTheyAre) {
    auto track = video("cbcs", pattern_spec(1, 1));
    const Bytes plain = plain_text(70);
    Bytes data = plain;
    Bytes chain = kIv16;
    cbc(data, 15, 16, chain);
    cbc(data, 47, 16, chain);
    add(track, data, {}, {{0, 15}, {0, 55}});
    EXPECT_EQ(decrypted(track), plain);
}

TEST(Decryption, CbcsSkip0DecryptsOnlyTheFirstBlocksOfASubsample) {
    auto track = video("cbcs", pattern_spec(2, 0));
    const Bytes plain = plain_text(128);
    Bytes data = plain;
    Bytes chain = kIv16;
    cbc(data, 0, 32, chain);
    cbc(data, 64, 32, chain);
    add(track, data, {}, {{0, 64}, {0, 64}});
    EXPECT_EQ(decrypted(track), plain);
}

TEST(Decryption, CbcsCrypt0DecryptsNothing) {
    for (const std::uint32_t skip : {0U, 3U}) {
        auto track = video("cbcs", pattern_spec(0, skip));
        const Bytes plain = plain_text(64);
        add(track, plain, {}, {{0, 64}});
        EXPECT_EQ(decrypted(track), plain);
    }
}

TEST(Decryption, CbcsTakesTheConstantIvAtEachSample) {
    auto track = video("cbcs", pattern_spec(1, 9, 16, kIv8));
    const Bytes plain = plain_text(16);
    Bytes data = plain;
    Bytes chain = padded(kIv8);
    cbc(data, 0, 16, chain);
    // The rows' own IVs don't count.
    add(track, data, kIv16, {{0, 16}});
    add(track, data, kIv16, {{0, 16}});
    EXPECT_EQ(decrypted(track), mp4::join({plain, plain}));
}

TEST(Decryption, CbcsWithoutAConstantIvClearsTheSamplesOwn) {
    auto track = video("cbcs", pattern_spec(1, 9, 16, Bytes{}));
    const Bytes plain = plain_text(16);
    Bytes data = plain;
    Bytes chain(16, 0);
    cbc(data, 0, 16, chain);
    add(track, data, kIv16, {{0, 16}});
    EXPECT_EQ(decrypted(track), plain);
}

TEST(Decryption, CensPatternDecryptsBytes0To15And160To175Of200) {
    auto track = video("cens", pattern_spec(1, 9, 8, std::nullopt));
    const Bytes plain = plain_text(203);
    Bytes data = plain;
    ctr(data, 3, 16, kIv8, 0);
    ctr(data, 163, 16, kIv8, 1);
    add(track, data, kIv8, {{3, 200}});
    EXPECT_EQ(decrypted(track), plain);
}

TEST(Decryption, CensDecryptsALastPartBlock) {
    auto track = video("cens", pattern_spec(2, 1, 8, std::nullopt));
    const Bytes plain = plain_text(60);
    Bytes data = plain;
    ctr(data, 0, 32, kIv8, 0);
    ctr(data, 48, 12, kIv8, 2);
    add(track, data, kIv8, {{0, 60}});
    EXPECT_EQ(decrypted(track), plain);
}

TEST(Decryption, CensSkip0DecryptsTheWholeRange) {
    auto track = video("cens", pattern_spec(1, 0, 8, std::nullopt));
    const Bytes plain = plain_text(75);
    Bytes data = plain;
    ctr(data, 0, 75, kIv8, 0);
    add(track, data, kIv8, {{0, 75}});
    EXPECT_EQ(decrypted(track), plain);
}

TEST(Decryption, CensCrypt0LeavesTheRange) {
    for (const std::uint32_t skip : {0U, 4U}) {
        auto track = video("cens", pattern_spec(0, skip, 8, std::nullopt));
        const Bytes plain = plain_text(75);
        add(track, plain, kIv8, {{0, 75}});
        EXPECT_EQ(decrypted(track), plain);
    }
}

TEST(Decryption, VideoWithoutSubsamplesStaysAsItIs) {
    auto track = video("cenc", tenc_spec(8));
    track.senc_with_subsamples = false;
    const Bytes data = plain_text(40);
    add(track, data, kIv8);
    EXPECT_EQ(decrypted(track), data);
}

TEST(Decryption, UnsupportedSchemeLeavesTheSamplesAndSaysNothing) {
    auto track = audio("sve1", tenc_spec(8));
    const Bytes data = plain_text(40);
    add(track, data, kIv8);
    EXPECT_EQ(decrypted(track), data);
}

TEST(Decryption, TrackThatSaysNotProtectedIsDecryptedAsItsSchemeTells) {
    TencSpec spec = tenc_spec(8);
    spec.is_protected = 0;
    auto track = audio("cenc", spec);
    const Bytes plain = plain_text(40);
    Bytes data = plain;
    ctr(data, 0, 40, kIv8, 0);
    add(track, data, kIv8);
    EXPECT_EQ(decrypted(track), plain);
}

TEST(Decryption, SamplesWithoutASencRowGoOnFromTheChainAtHand) {
    auto track = audio("cenc", tenc_spec(8));
    track.write_senc = false;
    const Bytes plain = plain_text(32);
    Bytes first = plain;
    Bytes second = plain;
    ctr(first, 0, 32, Bytes(16, 0), 0);
    ctr(second, 0, 32, Bytes(16, 0), 2);
    add(track, first);
    add(track, second);
    EXPECT_EQ(decrypted(track), mp4::join({plain, plain}));
}

// --- Several tracks ---------------------------------------------------------------------------

TEST(Decryption, ClearTrackBesideAnEncryptedOneIsUnchanged) {
    auto encrypted = audio("cenc", tenc_spec(8));
    const Bytes plain = plain_text(50);
    Bytes data = plain;
    ctr(data, 0, 50, kIv8, 0);
    add(encrypted, data, kIv8);
    mp4::TrackSpec clear;
    clear.track_id = 2;
    clear.handler = "soun";
    clear.entries = {mp4::audio_entry("ac-3", 2, 16, 48000)};
    add(clear, plain);
    add(clear, data);
    DemuxRun run;
    run.key_list = kPair;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({encrypted, clear}))), Status::kOk);
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), plain);
    EXPECT_EQ(run.output("in_track_id_2.out.ac3"), mp4::join({plain, data}));
}

TEST(Decryption, ClearAndEncryptedTwinEntriesAreDecrypted) {
    auto track = video("cenc", tenc_spec(8));
    const Bytes encrypted_entry = track.entries[0];
    track.entries = {mp4::video_entry("s263", 64, 64), encrypted_entry};
    const Bytes plain = plain_text(50);
    Bytes data = plain;
    ctr(data, 10, 40, kIv8, 0);
    add(track, data, kIv8, {{10, 40}});
    EXPECT_EQ(decrypted(track), plain);
}

TEST(Decryption, SecondTrackWithASchemeOfItsOwnEndsWith4071) {
    auto first = audio("cenc", tenc_spec(8));
    auto second = first;
    second.track_id = 2;
    add(first, plain_text(4), kIv8);
    DemuxRun run;
    run.key_list = kPair;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({first, second}))), Status::kFailed);
    ASSERT_EQ(run.sink.ids(), std::vector<int>{4071});
    EXPECT_TRUE(run.output_names().empty());
}

TEST(Decryption, SecondEncryptedTrackWithoutASchemeIsNoTrouble) {
    auto first = audio("cenc", tenc_spec(8));
    mp4::TrackSpec second;
    second.track_id = 2;
    second.handler = "soun";
    second.entries = {
        mp4::audio_entry("enca", 2, 16, 48000, {mp4::box("sinf", {mp4::frma("ac-3")})})};
    const Bytes plain = plain_text(20);
    Bytes data = plain;
    ctr(data, 0, 20, kIv8, 0);
    add(first, data, kIv8);
    add(second, data);
    DemuxRun run;
    run.key_list = kPair;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({first, second}))), Status::kOk);
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), plain);
    EXPECT_EQ(run.output("in_track_id_2.out.ac3"), data);
}

TEST(Decryption, TrackOfAnUnsupportedSchemeAheadDoesNotTakeTheContext) {
    auto first = audio("sve1", tenc_spec(8));
    auto second = audio("cenc", tenc_spec(8));
    second.track_id = 2;
    const Bytes plain = plain_text(20);
    Bytes data = plain;
    ctr(data, 0, 20, kIv8, 0);
    add(first, data, kIv8);
    add(second, data, kIv8);
    DemuxRun run;
    run.key_list = kPair;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({first, second}))), Status::kOk);
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), data);
    EXPECT_EQ(run.output("in_track_id_2.out.ac3"), plain);
}

// --- Segments ---------------------------------------------------------------------------------

TEST(Decryption, ContextAndRowsServeAllSegments) {
    auto track = audio("cenc", tenc_spec(8));
    const Bytes plain = plain_text(30);
    std::vector<Bytes> ivs;
    for (std::uint8_t i = 0; i < 6; ++i) {
        ivs.push_back({i, 2, 3, 4, 5, 6, 7, 8});
        Bytes data = plain;
        ctr(data, 0, 30, ivs.back(), 0);
        add(track, data, ivs.back());
    }
    const auto movie = movie_of({track});
    DemuxRun run;
    run.key_list = kPair;
    EXPECT_EQ(run.walk(mp4::initialization_segment(movie)), Status::kOk);
    const auto* context = run.demuxer()->decrypt.get();
    EXPECT_NE(context, nullptr);
    EXPECT_EQ(run.walk(mp4::media_segment(movie, 0, 3, 0, 1)), Status::kOk);
    EXPECT_EQ(run.walk(mp4::media_segment(movie, 3, 3, 0, 2)), Status::kOk);
    EXPECT_EQ(run.demuxer()->decrypt.get(), context);
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"),
              mp4::join({plain, plain, plain, plain, plain, plain}));
}

TEST(Decryption, RowsCountFromTheEnd) {
    auto track = audio("cenc", tenc_spec(8));
    track.write_senc = false;
    const Bytes plain = plain_text(16);
    const Bytes iv_b{9, 9, 9, 9, 9, 9, 9, 9};
    Bytes with_a = plain;
    Bytes with_b = plain;
    ctr(with_a, 0, 16, kIv8, 0);
    ctr(with_b, 0, 16, iv_b, 0);
    add(track, with_a);
    add(track, with_b);
    const auto entry_with = [](const std::vector<SencRow>& rows) {
        return mp4::audio_entry("enca", 2, 16, 48000,
                                {mp4::sinf("ac-3", "cenc", tenc_spec(8)), mp4::senc(rows, false)});
    };
    // Three rows for two samples: the first is left over.
    track.entries = {entry_with({{{1, 1, 1, 1, 1, 1, 1, 1}, {}}, {kIv8, {}}, {iv_b, {}}})};
    DemuxRun more;
    more.key_list = kPair;
    EXPECT_EQ(more.walk(mp4::plain_file(movie_of({track}))), Status::kOk);
    EXPECT_EQ(more.output("in_track_id_1.out.ac3"), mp4::join({plain, plain}));
    // One row for two samples: it belongs to the last, the first has none.
    Bytes without = plain;
    ctr(without, 0, 16, Bytes(16, 0), 0);
    track.samples[0].data = without;
    track.entries = {entry_with({{iv_b, {}}})};
    DemuxRun fewer;
    fewer.key_list = kPair;
    EXPECT_EQ(fewer.walk(mp4::plain_file(movie_of({track}))), Status::kOk);
    EXPECT_EQ(fewer.output("in_track_id_1.out.ac3"), mp4::join({plain, plain}));
}

// --- Keys -------------------------------------------------------------------------------------

struct KeyResult {
    std::vector<int> ids;
    Status status = Status::kOk;
    std::optional<Bytes> out;
    std::string last_text;
};

KeyResult with_keys(std::optional<std::string> key_list, std::optional<std::string> key_text) {
    auto track = audio("cenc", tenc_spec(8));
    Bytes data = plain_text(20);
    ctr(data, 0, 20, kIv8, 0);
    add(track, data, kIv8);
    DemuxRun run;
    run.key_list = std::move(key_list);
    run.key_text = std::move(key_text);
    KeyResult result;
    result.status = run.walk(mp4::plain_file(movie_of({track})));
    result.ids = run.sink.ids();
    result.out = run.output("in_track_id_1.out.ac3");
    if (!result.ids.empty()) {
        result.last_text = run.sink.reports().back().text;
    }
    return result;
}

TEST(DecryptionKeys, PairIsFoundAnywhereInTheList) {
    const std::string other = "00000000000000000000000000000000:11111111111111111111111111111111";
    const std::vector<std::string> lists{kPair, other + "," + kPair, kPair + "," + other,
                                         std::string(kKidText) + "=" + kKeyText};
    for (const std::string& list : lists) {
        EXPECT_EQ(with_keys(list, std::nullopt).out, plain_text(20)) << list;
    }
}

TEST(DecryptionKeys, KeyInUpperCaseIsTaken) {
    EXPECT_EQ(
        with_keys(std::string(kKidText) + ":76A6C65C5EA762046BD749A2E632CCBB", std::nullopt).out,
        plain_text(20));
}

TEST(DecryptionKeys, KeyTextGoesBeforeTheList) {
    const std::string wrong = std::string(kKidText) + ":00000000000000000000000000000000";
    EXPECT_EQ(with_keys(wrong, kKeyText).out, plain_text(20));
}

TEST(DecryptionKeys, NoKeyEndsWith4012) {
    const std::string upper = "A7E61C373E219033C21091FA607BF3B8:" + std::string(kKeyText);
    const std::string too_short = kPair.substr(0, kPair.size() - 1);
    const std::vector<std::optional<std::string>> lists{
        std::nullopt, "", "00000000000000000000000000000000:" + std::string(kKeyText), upper,
        too_short};
    for (const auto& list : lists) {
        const KeyResult result = with_keys(list, std::nullopt);
        EXPECT_EQ(result.ids, std::vector<int>{4012});
        EXPECT_EQ(result.status, Status::kFailed);
        EXPECT_FALSE(result.out.has_value());
    }
}

TEST(DecryptionKeys, TextThatIsNoKeyEndsWith4014) {
    const std::string kid = std::string(kKidText) + ":";
    KeyResult result = with_keys(kid + "76a6c65c5ea762046bd749a2e632ccb,and:more", std::nullopt);
    EXPECT_EQ(result.ids, (std::vector<int>{4015, 4014}));
    EXPECT_EQ(result.last_text,
              "The input decryption key is invalid : 76a6c65c5ea762046bd749a2e632ccb.");
    EXPECT_EQ(result.status, Status::kFailed);
    EXPECT_FALSE(result.out.has_value());
    result = with_keys(kid + "76a6c65c5ea7zz046bd749a2e632ccbb", std::nullopt);
    EXPECT_EQ(result.ids, (std::vector<int>{4016, 4014}));
}

TEST(DecryptionKeys, KeyOfASizeThatAesDoesNotKnowEndsWith4014) {
    const KeyResult listed =
        with_keys(std::string(kKidText) + ":0011,00000000000000000000000000000000", std::nullopt);
    EXPECT_EQ(listed.ids, std::vector<int>{4014});
    EXPECT_EQ(listed.last_text, "The input decryption key is invalid : 0011.");
    EXPECT_EQ(listed.status, Status::kFailed);
    EXPECT_FALSE(listed.out.has_value());
}

TEST(DecryptionKeys, ClearFileNeedsNone) {
    mp4::TrackSpec track;
    track.handler = "soun";
    track.entries = {mp4::audio_entry("ac-3", 2, 16, 48000)};
    add(track, {1});
    DemuxRun run;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({track}))), Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
}

// --- Bad input --------------------------------------------------------------------------------

TEST(DecryptionBadInput, SubsamplesBeyondTheSampleAreCut) {
    auto track = video("cenc", tenc_spec(8));
    const Bytes plain = plain_text(40);
    Bytes data = plain;
    ctr(data, 10, 30, kIv8, 0);
    add(track, data, kIv8, {{10, 1000}, {5, 5}, {60000, 0xFFFFFFFF}});
    add(track, plain, kIv8, {{60000, 0xFFFFFFFF}});
    EXPECT_EQ(decrypted(track), mp4::join({plain, plain}));
}

TEST(DecryptionBadInput, OddIvSizesAreFilledUpOrCut) {
    for (const std::uint32_t size : {0U, 3U, 255U}) {
        auto track = audio("cenc", tenc_spec(size));
        const Bytes iv(size, 7);
        Bytes effective = iv;
        effective.resize(16, 0);
        const Bytes plain = plain_text(33);
        Bytes data = plain;
        ctr(data, 0, 33, effective, 0);
        add(track, data, iv);
        EXPECT_EQ(decrypted(track), plain) << size;
    }
}

TEST(DecryptionBadInput, RowsAheadOfTheirTencHaveNoIv) {
    auto track = audio("cenc", tenc_spec(8));
    track.write_senc = false;
    track.entries = {mp4::audio_entry(
        "enca", 2, 16, 48000,
        {mp4::senc({{kIv8, {}}}, false), mp4::sinf("ac-3", "cenc", tenc_spec(8))})};
    const Bytes plain = plain_text(20);
    Bytes data = plain;
    ctr(data, 0, 20, Bytes(16, 0), 0);
    add(track, data);
    EXPECT_EQ(decrypted(track), plain);
}

TEST(DecryptionBadInput, ConstantIvOver16BytesIsCut) {
    auto track = audio("cbcs", pattern_spec(1, 9, 0, Bytes(200, 3)));
    const Bytes plain = plain_text(32);
    Bytes data = plain;
    Bytes chain(16, 3);
    cbc(data, 0, 32, chain);
    add(track, data);
    EXPECT_EQ(decrypted(track), plain);
}

// --- What is told of a key that is probably wrong ------------------------------------------------

std::vector<std::string> remarks_on(const Bytes& sample, std::uint8_t length_size_minus_one) {
    const RecordingSink sink;
    Mp4Stream stream;
    stream.track_id = 7;
    stream.avc_config = std::make_unique<AvcConfig>();
    stream.avc_config->length_size_minus_one = length_size_minus_one;
    remark_on_decrypted(stream, sample);
    return sink.notes();
}

TEST(DecryptedSamples, OfWholeUnitsAreNotRemarkedOn) {
    EXPECT_TRUE(remarks_on({0, 0, 0, 2, 0x65, 1, 0, 0, 0, 1, 0x41}, 3).empty());
    EXPECT_TRUE(remarks_on({0, 1, 0x65, 0, 0}, 1).empty());
    EXPECT_TRUE(remarks_on({}, 3).empty());
}

TEST(DecryptedSamples, WhoseLengthsDoNotAddUpAreRemarkedOn) {
    const std::vector<std::string> expected = {
        "The NAL unit lengths of decrypted samples of track 7 don't add up to the samples' size: "
        "the key is probably wrong."};
    EXPECT_EQ(remarks_on({0, 0, 0, 3, 0x65, 1}, 3), expected);
    EXPECT_EQ(remarks_on({0xFF, 0xFF, 0xFF, 0xFF, 0x65}, 3), expected);
    EXPECT_EQ(remarks_on({0, 0, 0, 1, 0x65, 0}, 3), expected);
    EXPECT_EQ(remarks_on({2, 0x65}, 0), expected);
}

TEST(DecryptedSamples, OfOtherKindsAreNotRemarkedOn) {
    const RecordingSink sink;
    const Mp4Stream stream;
    const Bytes sample = {0xFF, 0xFF};
    remark_on_decrypted(stream, sample);
    EXPECT_TRUE(sink.notes().empty());
}

}  // namespace
}  // namespace mediasplit
