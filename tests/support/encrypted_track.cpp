#include "tests/support/encrypted_track.h"

#include <mbedtls/aes.h>

#include <algorithm>
#include <utility>

namespace mediasplit {

using mp4::Bytes;
using mp4::SubsampleSpec;
using mp4::TencSpec;

const Bytes kKid = mp4::hex("a7e61c373e219033c21091fa607bf3b8");
const Bytes kKey = mp4::hex("76a6c65c5ea762046bd749a2e632ccbb");
const Bytes kIv8 = mp4::hex("0102030405060708");
const Bytes kIv16 = mp4::hex("0102030405060708090a0b0c0d0e0f10");

namespace {

Bytes block_cipher(Bytes block) {
    mbedtls_aes_context aes;
    mbedtls_aes_init(&aes);
    mbedtls_aes_setkey_enc(&aes, kKey.data(), 128);
    mbedtls_aes_crypt_ecb(&aes, MBEDTLS_AES_ENCRYPT, block.data(), block.data());
    mbedtls_aes_free(&aes);
    return block;
}

// Keystream block `number` for a counter that starts at `iv`, zeros behind it.
Bytes keystream(const Bytes& iv, std::uint32_t number) {
    Bytes counter = iv;
    counter.resize(16, 0);
    for (std::uint32_t n = 0; n < number; ++n) {
        for (std::size_t i = 16; i-- > 0 && ++counter[i] == 0;) {
        }
    }
    return block_cipher(counter);
}

}  // namespace

void ctr(Bytes& data, std::size_t from, std::size_t count, const Bytes& iv, std::uint32_t number) {
    for (std::size_t i = 0; i < count; ++i) {
        data[from + i] ^= keystream(iv, number + static_cast<std::uint32_t>(i / 16))[i % 16];
    }
}

void cbc(Bytes& data, std::size_t from, std::size_t count, Bytes& chain) {
    for (std::size_t at = from; at < from + count; at += 16) {
        Bytes block(data.begin() + static_cast<std::ptrdiff_t>(at),
                    data.begin() + static_cast<std::ptrdiff_t>(at + 16));
        for (std::size_t i = 0; i < 16; ++i) {
            block[i] ^= chain[i];
        }
        chain = block_cipher(block);
        std::copy(chain.begin(), chain.end(), data.begin() + static_cast<std::ptrdiff_t>(at));
    }
}

Bytes padded(Bytes iv) {
    iv.resize(16, 0);
    return iv;
}

Bytes plain_text(std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<std::uint8_t>(i * 5 + 1);
    }
    return bytes;
}

TencSpec tenc_spec(std::uint32_t iv_size) {
    TencSpec spec;
    spec.kid = kKid;
    spec.iv_size = iv_size;
    return spec;
}

TencSpec pattern_spec(std::uint32_t crypt, std::uint32_t skip, std::uint32_t iv_size,
                      std::optional<Bytes> constant_iv) {
    TencSpec spec = tenc_spec(iv_size);
    spec.version = 1;
    spec.pattern = crypt << 4 | skip;
    spec.constant_iv = std::move(constant_iv);
    return spec;
}

mp4::TrackSpec video(std::string_view scheme, const TencSpec& spec) {
    mp4::TrackSpec track;
    track.entries = {mp4::video_entry("encv", 64, 64, {mp4::sinf("s263", scheme, spec)})};
    track.write_senc = true;
    return track;
}

mp4::TrackSpec audio(std::string_view scheme, const TencSpec& spec) {
    mp4::TrackSpec track;
    track.handler = "soun";
    track.entries = {mp4::audio_entry("enca", 2, 16, 48000, {mp4::sinf("ac-3", scheme, spec)})};
    track.write_senc = true;
    track.senc_with_subsamples = false;
    return track;
}

void add(mp4::TrackSpec& track, Bytes data, Bytes iv, std::vector<SubsampleSpec> subsamples) {
    mp4::SampleSpec spec;
    spec.data = std::move(data);
    spec.senc.iv = std::move(iv);
    spec.senc.subsamples = std::move(subsamples);
    track.samples.push_back(std::move(spec));
}

}  // namespace mediasplit
