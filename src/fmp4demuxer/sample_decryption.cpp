#include "src/fmp4demuxer/sample_decryption.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "src/fmp4demuxer/decrypt.h"
#include "src/log/logging.h"
#include "src/mp4demuxer/mp4demuxer.h"
#include "src/util/text.h"

namespace mediasplit {
namespace {

constexpr std::uint32_t kContentKeyBits = 128;

using Bytes = std::span<std::uint8_t>;

// How the protected bytes of a video sample's subsample are decrypted.
using RangeRule = void (*)(DecryptContext& context, const Mp4Stream& stream, Bytes range);

struct Scheme {
    std::string_view name;
    std::uint32_t mode;
    RangeRule video;
};

void crypt(DecryptContext& context, Bytes range) {
    // A refused range stays as it is.
    static_cast<void>(context.crypt(context, range.size(), range.data(), range.data()));
}

void crypt_whole_range(DecryptContext& context, const Mp4Stream& /*stream*/, Bytes range) {
    crypt(context, range);
}

// Takes up to `blocks` blocks off the front of `range`.
Bytes take_blocks(Bytes& range, std::uint32_t blocks) {
    const Bytes front = range.first(std::min<std::size_t>(range.size(), blocks * kAesBlockSize));
    range = range.subspan(front.size());
    return front;
}

// The pattern of ISO/IEC 23001-7 9.6 over whole blocks. Deliberate: with a skip count of 0 only the
// first run is decrypted, with a crypt count of 0 nothing is; a last partial block stays as it is.
void crypt_block_pattern(DecryptContext& context, const Mp4Stream& stream, Bytes range) {
    range = range.first(range.size() / kAesBlockSize * kAesBlockSize);
    while (!range.empty() && stream.crypt_byte_block != 0) {
        crypt(context, take_blocks(range, stream.crypt_byte_block));
        if (stream.skip_byte_block == 0) {
            return;
        }
        take_blocks(range, stream.skip_byte_block);
    }
}

// The same pattern over bytes, so that a last partial block counts. Two counts of 0 leave the range
// as it is.
void crypt_byte_pattern(DecryptContext& context, const Mp4Stream& stream, Bytes range) {
    if (stream.skip_byte_block == 0) {
        if (stream.crypt_byte_block != 0) {
            crypt(context, range);
        }
        return;
    }
    while (!range.empty()) {
        crypt(context, take_blocks(range, stream.crypt_byte_block));
        take_blocks(range, stream.skip_byte_block);
    }
}

constexpr std::array<Scheme, 4> kSchemes{{
    {"cenc", kDecryptModeCtr, crypt_whole_range},
    {"cbc1", kDecryptModeCbc, crypt_whole_range},
    {"cens", kDecryptModeCtr, crypt_byte_pattern},
    {"cbcs", kDecryptModeCbc, crypt_block_pattern},
}};

const Scheme* find_scheme(const Mp4Stream& stream) {
    const std::string_view name(stream.scheme_type.data(), stream.scheme_type.size());
    const auto* const at = std::find_if(kSchemes.begin(), kSchemes.end(),
                                        [&](const Scheme& row) { return row.name == name; });
    return at == kSchemes.end() ? nullptr : &*at;
}

bool names_a_scheme(const Mp4Stream& stream) {
    return std::any_of(stream.scheme_type.begin(), stream.scheme_type.end(),
                       [](char c) { return c != 0; });
}

bool is_key_size(std::size_t size) {
    return size == 16 || size == 24 || size == 32;
}

// Looks the track's key up in the command line's pairs, unless there is a key.
Status find_key(Mp4Demuxer& demuxer, const Mp4Stream& stream) {
    if (!demuxer.key.empty() || !demuxer.key_list) {
        return Status::kOk;
    }
    const std::optional<std::string_view> text =
        get_decryption_key(demuxer.key_list, stream.default_KID, kContentKeyBits);
    return text ? take_content_key(demuxer, *text) : Status::kOk;
}

void make_context(Mp4Demuxer& demuxer, const Mp4Stream& stream) {
    if (const Scheme* scheme = find_scheme(stream); scheme != nullptr) {
        const bool has_iv = !stream.default_constant_IV.empty();
        demuxer.decrypt = decrypt_aes_create(scheme->mode, demuxer.key.data(), demuxer.key.size(),
                                             has_iv ? stream.default_constant_IV.data() : nullptr,
                                             stream.default_constant_IV.size());
    }
}

void decrypt_subsamples(DecryptContext& context, const Mp4Stream& stream, const SencEntry& entry,
                        RangeRule rule, Bytes sample) {
    for (const Subsample& subsample : senc_subsamples(stream, entry)) {
        sample = sample.subspan(std::min<std::size_t>(subsample.clear_bytes, sample.size()));
        const Bytes range =
            sample.first(std::min<std::size_t>(subsample.protected_bytes, sample.size()));
        rule(context, stream, range);
        sample = sample.subspan(range.size());
    }
}

// Bytes of a unit's length in the track's samples; none if they aren't made of such units.
std::optional<unsigned> unit_length_size(const Mp4Stream& stream) {
    if (stream.avc_config != nullptr) {
        return stream.avc_config->length_size_minus_one + 1U;
    }
    if (stream.hevc_config != nullptr) {
        return stream.hevc_config->length_size_minus_one + 1U;
    }
    return std::nullopt;
}

bool unit_lengths_add_up(std::span<const std::uint8_t> sample, unsigned length_size) {
    while (!sample.empty()) {
        if (sample.size() < length_size) {
            return false;
        }
        std::uint64_t length = 0;
        for (const std::uint8_t byte : sample.first(length_size)) {
            length = length << 8U | byte;
        }
        sample = sample.subspan(length_size);
        if (length > sample.size()) {
            return false;
        }
        sample = sample.subspan(length);
    }
    return true;
}

}  // namespace

void remark_on_decrypted(const Mp4Stream& stream, std::span<const std::uint8_t> sample) {
    if (findings_sink() == nullptr || sample.empty()) {
        return;
    }
    const std::optional<unsigned> length_size = unit_length_size(stream);
    if (length_size && !unit_lengths_add_up(sample, *length_size)) {
        note_remark("The NAL unit lengths of decrypted samples of track " +
                    std::to_string(stream.track_id) +
                    " don't add up to the samples' size: the key is probably wrong.");
    }
}

Status take_content_key(Mp4Demuxer& demuxer, std::string_view text) {
    const Status converted = StringtoChars(text, demuxer.key);
    const std::size_t size = demuxer.key.size();
    if (converted == Status::kOk && (size == 0 || is_key_size(size))) {
        demuxer.key_size = static_cast<std::uint32_t>(size);
        return Status::kOk;
    }
    demuxer.key.clear();
    demuxer.key_size = 0;
    return converted |
           Logging_err_type_check(demuxer.loglist, 4014, {}, text.substr(0, text.find(',')));
}

KeySetup set_up_decryption(Mp4Demuxer& demuxer) {
    KeySetup setup;
    if (demuxer.decrypt != nullptr) {
        return setup;
    }
    for (const auto& stream : demuxer.streams) {
        if (stream->is_encrypted == 0) {
            continue;
        }
        setup.status |= find_key(demuxer, *stream);
        setup.usable = setup.status == Status::kOk;
        if (setup.usable && demuxer.key.empty()) {
            setup.status |= Logging_err_type_check(demuxer.loglist, 4012, {});
            setup.usable = false;
        }
        // One context serves the presentation: deliberately, a second track with a scheme of its
        // own ends the work even when scheme and key are the same.
        if (setup.usable && demuxer.decrypt != nullptr && names_a_scheme(*stream)) {
            setup.status |= Logging_err_type_check(demuxer.loglist, 4071, {});
            setup.usable = false;
        }
        if (!setup.usable) {
            return setup;
        }
        if (demuxer.decrypt == nullptr) {
            make_context(demuxer, *stream);
        }
    }
    return setup;
}

bool needs_decryption(const Mp4Demuxer& demuxer, const Mp4Stream& stream) {
    return stream.is_encrypted != 0 && demuxer.decrypt != nullptr;
}

void decrypt_sample(Mp4Demuxer& demuxer, const Mp4Stream& stream, const SencEntry* entry,
                    Bytes sample) {
    DecryptContext& context = *demuxer.decrypt;
    if (entry != nullptr) {
        if (const auto iv = senc_iv(stream, *entry); !iv.empty()) {
            decrypt_update_iv(&context, iv.data(), iv.size());
        }
    }
    const Scheme* scheme = find_scheme(stream);
    if (scheme == nullptr) {
        return;
    }
    if (scheme->name == "cbcs") {
        // Without a constant IV this clears the sample's own one as well; deliberate.
        decrypt_update_iv(&context, stream.default_constant_IV.data(),
                          stream.default_constant_IV.size());
    }
    if (stream.stream_type == kStreamVideo) {
        if (entry != nullptr) {
            decrypt_subsamples(context, stream, *entry, scheme->video, sample);
        }
    } else if (scheme->name == "cenc") {
        crypt(context, sample);
    } else {
        crypt(context, sample.first(sample.size() / kAesBlockSize * kAesBlockSize));
    }
}

}  // namespace mediasplit
