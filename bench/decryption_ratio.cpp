// How much longer an encrypted file takes than the same file in the clear and the cipher alone:
// three walls side by side in one run, for each scheme. All take turns, so that a disk busy writing
// back disturbs each alike; the best round of each counts. The target of the last column is 1.3.
#include <mbedtls/aes.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "src/fmp4demuxer/fmp4demux.h"
#include "tests/support/mp4_builder.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {
namespace {

using mp4::Bytes;

constexpr std::uint32_t kSampleSize = 250'000;
constexpr std::size_t kSampleCount = 1000;
constexpr int kRounds = 15;
const char* const kKeyText = "00112233445566778899aabbccddeeff";

double seconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    return took.count();
}

// A video track of one unit a sample; with a scheme its entry is protected, whatever its bytes are.
Bytes movie(const std::string& scheme) {
    mp4::TrackSpec track;
    const Bytes config = mp4::avcC({{0x67, 1}}, {{0x68, 1}});
    mp4::SampleSpec sample;
    sample.data = mp4::join({mp4::u32(kSampleSize - 4), mp4::repeat(0x41, kSampleSize - 4)});
    if (scheme.empty()) {
        track.entries = {mp4::video_entry("avc1", 1920, 1080, {config})};
    } else {
        mp4::TencSpec tenc;
        tenc.version = 1;
        tenc.pattern = scheme == "cbcs" || scheme == "cens" ? 0x19 : 0;
        tenc.iv_size = 16;
        if (scheme == "cbcs") {
            tenc.constant_iv = Bytes(16, 1);
        }
        track.entries = {
            mp4::video_entry("encv", 1920, 1080, {config, mp4::sinf("avc1", scheme, tenc)})};
        sample.senc.iv = Bytes(16, 7);
        sample.senc.subsamples = {{16, (kSampleSize - 16) / 16 * 16}};
        track.write_senc = true;
    }
    track.samples.assign(kSampleCount, sample);
    mp4::MovieSpec spec;
    spec.tracks = {track};
    return mp4::plain_file(spec);
}

void split(const std::string& path, const std::string& output) {
    Status status = Status::kOk;
    auto demuxer = fmp4demux_create(output, "out", nullptr, nullptr, nullptr, kKeyText, nullptr,
                                    &status, nullptr, kAllTracks);
    InputFile file;
    status |= OpenFileEx(path, nullptr, 0, file);
    status |= fmp4demux(&file, nullptr, demuxer.get(), nullptr);
    status |= CloseFile(file);
    status |= fmp4demux_destroy(std::move(demuxer));
}

// The cipher over as many bytes as the file has under protection, in calls of one sample.
void cipher_alone(const std::string& scheme, Bytes& sample) {
    mbedtls_aes_context aes;
    mbedtls_aes_init(&aes);
    std::array<std::uint8_t, 16> key{};
    std::array<std::uint8_t, 16> iv{};
    std::array<std::uint8_t, 16> block{};
    const bool chained = scheme == "cbc1" || scheme == "cbcs";
    if (chained) {
        mbedtls_aes_setkey_dec(&aes, key.data(), 128);
    } else {
        mbedtls_aes_setkey_enc(&aes, key.data(), 128);
    }
    const bool pattern = scheme == "cbcs" || scheme == "cens";
    const std::size_t whole = (kSampleSize - 16) / 16 * 16;
    const std::size_t length = pattern ? whole / 160 * 16 : whole;
    for (std::size_t i = 0; i < kSampleCount; ++i) {
        std::size_t offset = 0;
        if (chained) {
            mbedtls_aes_crypt_cbc(&aes, MBEDTLS_AES_DECRYPT, length, iv.data(), sample.data(),
                                  sample.data());
        } else {
            mbedtls_aes_crypt_ctr(&aes, length, &offset, iv.data(), block.data(), sample.data(),
                                  sample.data());
        }
    }
    mbedtls_aes_free(&aes);
}

void write_bytes_to(const std::string& path, const Bytes& bytes) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file != nullptr) {
        std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::fclose(file);
    }
}

struct Contender {
    std::string scheme;  // empty: in the clear
    std::string path;
    double split = 1e9;
    double cipher = 1e9;
};

void compare() {
    const TempFolder folder;
    std::vector<Contender> contenders;
    for (const std::string scheme : {"", "cenc", "cbc1", "cens", "cbcs"}) {
        contenders.push_back({scheme, folder.path(scheme + ".mp4")});
        write_bytes_to(contenders.back().path, movie(scheme));
    }
    Bytes sample(kSampleSize);
    for (int round = 0; round < kRounds; ++round) {
        for (Contender& each : contenders) {
            each.split = std::min(each.split, seconds([&] { split(each.path, folder.path()); }));
            if (!each.scheme.empty()) {
                each.cipher =
                    std::min(each.cipher, seconds([&] { cipher_alone(each.scheme, sample); }));
            }
        }
    }
    const double clear = contenders.front().split;
    std::printf("%-6s %10s %10s %10s %8s\n", "", "clear s", "cipher s", "split s", "ratio");
    for (const Contender& each : contenders) {
        if (!each.scheme.empty()) {
            std::printf("%-6s %10.3f %10.3f %10.3f %8.2f\n", each.scheme.c_str(), clear,
                        each.cipher, each.split, each.split / (clear + each.cipher));
        }
    }
}

}  // namespace
}  // namespace mediasplit

int main() {
    mediasplit::compare();
    return 0;
}
