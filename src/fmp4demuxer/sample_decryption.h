// Common encryption of samples (ISO/IEC 23001-7): finding the key, and decryption in place.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "src/log/status.h"
#include "src/mp4demuxer/records.h"

namespace mediasplit {

// What a key setup came to. `usable` false ends the work on the input, `status` holds its message.
struct KeySetup {
    bool usable = true;
    Status status = Status::kOk;
};

// Sets the presentation's content key from hexadecimal text up to its first comma. Raises 4014,
// beside what the conversion raised, for a text that is no key of AES; there is no key then.
[[nodiscard]] Status take_content_key(Mp4Demuxer& demuxer, std::string_view text);

// Finds the content key of the presentation's encrypted tracks and makes its one DecryptContext,
// unless there is one from an earlier segment. Raises 4014 for a key text that is no key, 4012 when
// there is no key, and 4071 for a second track with a scheme of its own.
[[nodiscard]] KeySetup set_up_decryption(Mp4Demuxer& demuxer);

// True if the samples of the track are to be decrypted.
[[nodiscard]] bool needs_decryption(const Mp4Demuxer& demuxer, const Mp4Stream& stream);

// Decrypts one sample in place. `entry` is its `senc` row, or null: the sample then has neither IV
// nor subsamples. Subsamples that pass the end of `sample` are cut there.
void decrypt_sample(Mp4Demuxer& demuxer, const Mp4Stream& stream, const SencEntry* entry,
                    std::span<std::uint8_t> sample);

// Notes for the report of the run if a decrypted sample of NAL units (ISO/IEC 14496-15 4.3.3) isn't
// made of whole ones, which is what a wrong key leads to. Costs nothing without a findings sink.
void remark_on_decrypted(const Mp4Stream& stream, std::span<const std::uint8_t> sample);

}  // namespace mediasplit
