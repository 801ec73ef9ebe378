// Tracks whose samples are encrypted here, by a few lines of their own over the block cipher alone
// (ISO/IEC 23001-7).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/mp4_builder.h"

namespace mediasplit {

// The key of the tests.
extern const mp4::Bytes kKid;
extern const mp4::Bytes kKey;
inline constexpr const char* kKidText = "a7e61c373e219033c21091fa607bf3b8";
inline constexpr const char* kKeyText = "76a6c65c5ea762046bd749a2e632ccbb";
inline const std::string kPair = std::string(kKidText) + ":" + kKeyText;
extern const mp4::Bytes kIv8;
extern const mp4::Bytes kIv16;

// Encrypts [from, from + count) with the keystream from block `number` on, for a counter that
// starts at `iv`, zeros behind it.
void ctr(mp4::Bytes& data, std::size_t from, std::size_t count, const mp4::Bytes& iv,
         std::uint32_t number);
// Encrypts the blocks of [from, from + count) in a chain; `chain` is the block before them.
void cbc(mp4::Bytes& data, std::size_t from, std::size_t count, mp4::Bytes& chain);

mp4::Bytes padded(mp4::Bytes iv);
mp4::Bytes plain_text(std::size_t count);

mp4::TencSpec tenc_spec(std::uint32_t iv_size);
mp4::TencSpec pattern_spec(std::uint32_t crypt, std::uint32_t skip, std::uint32_t iv_size = 0,
                           std::optional<mp4::Bytes> constant_iv = kIv16);

// Tracks whose samples come out as they stand: video of an unknown codec and AC-3.
mp4::TrackSpec video(std::string_view scheme, const mp4::TencSpec& spec);
mp4::TrackSpec audio(std::string_view scheme, const mp4::TencSpec& spec);
void add(mp4::TrackSpec& track, mp4::Bytes data, mp4::Bytes iv = {},
         std::vector<mp4::SubsampleSpec> subsamples = {});

}  // namespace mediasplit
