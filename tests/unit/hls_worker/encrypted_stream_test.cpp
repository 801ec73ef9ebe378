// Encrypted fragments, with the key ids and keys that playlists and users give.
#include <gtest/gtest.h>

#include <functional>

#include "src/file_util/output_file.h"
#include "tests/support/encrypted_track.h"
#include "tests/unit/hls_worker/stream_run.h"

namespace mediasplit {
namespace {

constexpr std::size_t kSegments = 3;
constexpr std::size_t kSampleSize = 200;

// Each sample: 10 bytes in the clear, then a protected range.
struct Scheme {
    const char* name;
    mp4::TencSpec spec;
    mp4::Bytes iv;
    std::function<void(mp4::Bytes&)> encrypt;
};

std::vector<Scheme> schemes() {
    const auto chain_over = [](mp4::Bytes& data, std::vector<std::size_t> places,
                               std::size_t count) {
        mp4::Bytes chain = kIv16;
        for (const std::size_t at : places) {
            cbc(data, at, count, chain);
        }
    };
    return {
        {"cenc", tenc_spec(8), kIv8, [](mp4::Bytes& data) { ctr(data, 10, 190, kIv8, 0); }},
        {"cens", pattern_spec(1, 9, 8, std::nullopt), kIv8,
         [](mp4::Bytes& data) {
             ctr(data, 10, 16, kIv8, 0);
             ctr(data, 170, 16, kIv8, 1);
         }},
        {"cbc1", tenc_spec(16), kIv16, [=](mp4::Bytes& data) { chain_over(data, {10}, 176); }},
        {"cbcs",
         pattern_spec(1, 9),
         {},
         [=](mp4::Bytes& data) {
             chain_over(data, {10, 170}, 16);
         }},
    };
}

// Sample `number` in the clear.
mp4::Bytes clear_sample(std::size_t number) {
    mp4::Bytes data = plain_text(kSampleSize);
    data[0] = static_cast<std::uint8_t>(number);
    data[100] ^= static_cast<std::uint8_t>(number);
    return data;
}

std::string clear_samples() {
    std::string all;
    for (std::size_t i = 0; i < kSegments; ++i) {
        all += as_text(clear_sample(i));
    }
    return all;
}

mp4::MovieSpec movie_of(const Scheme& scheme, const mp4::Bytes& key_id = kKid) {
    mp4::TencSpec spec = scheme.spec;
    spec.kid = key_id;
    mp4::TrackSpec track = video(scheme.name, spec);
    for (std::size_t i = 0; i < kSegments; ++i) {
        mp4::Bytes data = clear_sample(i);
        scheme.encrypt(data);
        // The range of "cbc1" is one of whole blocks.
        const std::uint32_t protected_bytes = std::string(scheme.name) == "cbc1" ? 176 : 190;
        add(track, data, scheme.iv, {{10, protected_bytes}});
    }
    mp4::MovieSpec movie;
    movie.tracks = {track};
    return movie;
}

class EncryptedStream : public StreamRun {
protected:
    // Puts a presentation into the working folder and onto the server, and gives its playlist.
    std::string add_presentation(const std::string& name, const mp4::MovieSpec& movie) {
        const auto put = [&](const std::string& file, const mp4::Bytes& bytes) {
            (void)folder_.write(file, as_text(bytes));
            server_.serve("/" + file, as_text(bytes));
        };
        put(name + "_init.mp4", mp4::initialization_segment(movie));
        std::string text = "#EXT-X-MAP:URI=\"" + name + "_init.mp4\"\n";
        for (std::size_t i = 0; i < kSegments; ++i) {
            const std::string file = name + std::to_string(i) + ".m4s";
            put(file, mp4::media_segment(movie, i, 1, 0, static_cast<std::uint32_t>(i) + 1));
            text += "#EXTINF:1,\n" + file + "\n";
        }
        return text;
    }
    // The same in one file of byte ranges.
    std::string add_ranges(const std::string& name, const mp4::MovieSpec& movie) {
        mp4::Bytes all = mp4::initialization_segment(movie);
        std::string text = "#EXT-X-MAP:URI=\"" + name + ".mp4\",BYTERANGE=\"" +
                           std::to_string(all.size()) + "@0\"\n";
        for (std::size_t i = 0; i < kSegments; ++i) {
            const auto segment = mp4::media_segment(movie, i, 1, all.size());
            text += "#EXTINF:1,\n#EXT-X-BYTERANGE:" + std::to_string(segment.size()) + "@" +
                    std::to_string(all.size()) + "\n" + name + ".mp4\n";
            all.insert(all.end(), segment.begin(), segment.end());
        }
        (void)folder_.write(name + ".mp4", as_text(all));
        return text;
    }
    [[nodiscard]] std::string data(const std::string& name) const {
        return output("list_" + name + "_track_id_1.out.data");
    }
};

// a7e61c37 3e219033 c21091fa 607bf3b8
const std::string kKeyTag =
    "#EXT-X-KEY:METHOD=SAMPLE-AES-CTR,URI=\"data:text/plain;base64,p+YcNz4hkDPCEJH6YHvzuA==\"\n";
const std::string kOtherKeyTag =
    "#EXT-X-KEY:METHOD=SAMPLE-AES,URI=\"data:text/plain;base64,AAECAwQFBgcICQoLDA0ODw==\"\n";

TEST_F(EncryptedStream, KeyIdOfTheTrackLeadsToTheKey) {
    keypairs_ = kPair;
    for (const Scheme& scheme : schemes()) {
        const std::string name = scheme.name;
        follow_local(add_presentation(name, movie_of(scheme)));
        EXPECT_EQ(status_, Status::kOk) << name;
        EXPECT_EQ(data(name + "_init"), clear_samples()) << name;
        follow_local(add_ranges(name + "_one", movie_of(scheme)));
        EXPECT_EQ(data(name + "_one"), clear_samples()) << name;
    }
    EXPECT_EQ(ids(), Ids{});
}

TEST_F(EncryptedStream, KeyIdOfThePlaylistLeadsToTheKey) {
    // The tracks name a key id that no pair has.
    keypairs_ = "ffffffffffffffffffffffffffffffff:00112233445566778899aabbccddeeff," + kPair;
    for (const Scheme& scheme : schemes()) {
        const std::string name = scheme.name;
        const auto movie = movie_of(scheme, mp4::Bytes(16, 7));
        follow_local(kKeyTag + add_presentation(name, movie));
        EXPECT_EQ(data(name + "_init"), clear_samples()) << name;
        follow_local(kKeyTag + add_ranges(name + "_one", movie));
        EXPECT_EQ(data(name + "_one"), clear_samples()) << name;
    }
    EXPECT_EQ(ids(), Ids{});
    EXPECT_EQ(status_, Status::kOk);
}

TEST_F(EncryptedStream, AddressesGiveWhatFoldersGive) {
    keypairs_ = kPair;
    live_remaining_ = 100;
    for (const Scheme& scheme : schemes()) {
        follow(kKeyTag + add_presentation(scheme.name, movie_of(scheme)) + "#EXT-X-ENDLIST\n",
               server_.url("/list.m3u8"));
        EXPECT_EQ(data(std::string(scheme.name) + "_init"), clear_samples()) << scheme.name;
    }
    EXPECT_EQ(ids(), Ids{});
    EXPECT_TRUE(files("tmp").empty());
}

TEST_F(EncryptedStream, EachInitializationSectionTakesTheKeyInForce) {
    const auto scheme = schemes()[0];
    const auto unnamed = movie_of(scheme, mp4::Bytes(16, 7));
    // The key of the second presentation is a wrong one on purpose.
    keypairs_ = "000102030405060708090a0b0c0d0e0f:00112233445566778899aabbccddeeff," + kPair;
    follow_local(kKeyTag + add_presentation("a", unnamed) + kOtherKeyTag +
                 add_presentation("b", unnamed) + kKeyTag + add_presentation("c", unnamed));
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(data("a_init"), clear_samples());
    EXPECT_EQ(data("b_init").size(), clear_samples().size());
    EXPECT_NE(data("b_init"), clear_samples());
    EXPECT_EQ(data("c_init"), clear_samples());
}

TEST_F(EncryptedStream, KeyOfTheFirstSlotIsLookedUpAnewWithEachReload) {
    const auto movie = movie_of(schemes()[0], mp4::Bytes(16, 7));
    keypairs_ = kPair;
    follow_local(kKeyTag + add_presentation("a", movie));
    follow_local(kKeyTag + add_presentation("a", movie));
    EXPECT_EQ(data("a_init"), clear_samples() + clear_samples());
    // Without the tag the key of the round before is forgotten.
    follow_local(add_presentation("a", movie));
    EXPECT_TRUE(has_failed(status_));
    EXPECT_EQ(sink_.count(4012), kSegments + 1);  // the initialization section, too
}

TEST_F(EncryptedStream, NoKeyFailsTheStreamAndWritesNothing) {
    const auto scheme = schemes()[0];
    for (const char* pairs : {"", "ffffffffffffffffffffffffffffffff:00"}) {
        keypairs_ = pairs;
        status_ = Status::kOk;
        sink_.clear();
        follow_local(kKeyTag + add_presentation("a", movie_of(scheme)));
        EXPECT_TRUE(has_failed(status_)) << pairs;
        EXPECT_EQ(ids(), Ids(kSegments + 1, 4012)) << pairs;
        EXPECT_EQ(data("a_init"), "") << pairs;
    }
}

TEST_F(EncryptedStream, OtherKeyAddressesAndMethodsAreNotLookedAt) {
    keypairs_ = kPair;
    for (const char* tag :
         {"#EXT-X-KEY:METHOD=AES-128,URI=\"http://127.0.0.1:1/key\"\n", "#EXT-X-KEY:METHOD=NONE\n",
          "#EXT-X-KEY:METHOD=SAMPLE-AES,URI=\"k\"\n"}) {
        outputs_ = StreamOutputs{};
        begin_outputs();
        follow_local(tag + add_presentation("a", movie_of(schemes()[0])));
        EXPECT_EQ(data("a_init"), clear_samples()) << tag;
    }
    EXPECT_EQ(ids(), Ids{});
}

}  // namespace
}  // namespace mediasplit
