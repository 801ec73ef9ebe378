#include "tests/support/eac3_builder.h"

#include "tests/support/bit_writer.h"

namespace mediasplit::test_support {

namespace {

using testing::BitWriter;

void put_optional(BitWriter& out, const std::optional<unsigned>& value, unsigned bits) {
    out.flag(value.has_value());
    if (value) {
        out.u(*value, bits);
    }
}

void set_bits(Bytes& bytes, std::size_t position, unsigned value, unsigned bits) {
    for (unsigned bit = bits; bit-- > 0; ++position) {
        const std::size_t byte = position / 8;
        if (byte >= bytes.size()) {
            return;
        }
        const unsigned mask = 0x80U >> position % 8;
        const bool set = (value >> bit & 1U) != 0;
        bytes[byte] = static_cast<std::uint8_t>(set ? bytes[byte] | mask : bytes[byte] & ~mask);
    }
}

bool get_bit(const Bytes& bytes, std::size_t position) {
    const std::size_t byte = position / 8;
    return byte < bytes.size() && (bytes[byte] >> (7 - position % 8) & 1U) != 0;
}

std::uint16_t crc_step(std::uint16_t crc, bool bit) {
    const bool feedback = (crc >> 15U != 0) != bit;
    return static_cast<std::uint16_t>((crc << 1U) ^ (feedback ? 0x8005U : 0U));
}

std::uint16_t crc_step_back(std::uint16_t crc, bool bit) {
    const bool feedback = (crc & 1U) != 0;
    const unsigned shifted = (crc ^ (feedback ? 0x8005U : 0U)) >> 1U;
    return static_cast<std::uint16_t>(shifted | (feedback != bit ? 0x8000U : 0U));
}

// The word to put in front of `data` so that both together leave no residue.
std::uint16_t leading_crc(const std::uint8_t* data, std::size_t size) {
    std::uint16_t crc = 0;
    for (std::size_t bit = size * 8; bit-- > 0;) {
        crc = crc_step_back(crc, (data[bit / 8] >> (7 - bit % 8) & 1U) != 0);
    }
    for (int bit = 0; bit < 16; ++bit) {
        crc = crc_step_back(crc, false);
    }
    return crc;
}

void put_word(Bytes& bytes, std::size_t word, unsigned value) {
    if (word * 2 + 1 < bytes.size()) {
        bytes[word * 2] = static_cast<std::uint8_t>(value >> 8U);
        bytes[word * 2 + 1] = static_cast<std::uint8_t>(value);
    }
}

unsigned get_word(const Bytes& bytes, std::size_t word) {
    return bytes[word * 2] * 256U + bytes[word * 2 + 1];
}

unsigned programs_of(unsigned acmod) {
    return acmod == 0 ? 2 : 1;
}

void put_addbsi(BitWriter& out, const std::optional<Bytes>& addbsi) {
    out.u(addbsi ? 1 : 0, 1);
    if (!addbsi) {
        return;
    }
    out.u(static_cast<unsigned>(addbsi->size()) - 1, 6);
    for (const std::uint8_t byte : *addbsi) {
        out.u(byte, 8);
    }
}

// Puts filler behind the header and the trailer at the end: auxiliary data, its length and flag,
// encinfo.
Bytes finish_frame(BitWriter& header, std::size_t size, const std::optional<AuxSpec>& aux,
                   unsigned encinfo) {
    std::uint32_t noise = 0x2545F491;
    while (header.bit_count() < size * 8) {
        noise = noise * 1664525U + 1013904223U;
        header.u(noise >> 24U, 8);
    }
    Bytes frame = header.bytes();
    frame.resize(size);
    const std::size_t end = size * 8;
    if (end < 48) {
        return frame;
    }
    set_bits(frame, end - 18, aux ? 1 : 0, 1);
    set_bits(frame, end - 17, encinfo, 1);
    if (aux) {
        set_bits(frame, end - 32, aux->bits, 14);
        for (unsigned bit = 0; bit < aux->bits && aux->bits <= end - 32; ++bit) {
            set_bits(frame, end - 32 - aux->bits + bit, get_bit(aux->data, bit) ? 1 : 0, 1);
        }
    }
    return frame;
}

void put_mixdata2(BitWriter& out, const Mixdata2Spec& spec) {
    out.u(spec.premixcmpsel, 1);
    out.u(spec.drcsrc, 1);
    out.u(spec.premixcmpscl, 3);
    for (const std::optional<unsigned>& scale : spec.extpgmscl) {
        put_optional(out, scale, 4);
    }
    put_optional(out, spec.dmixscl, 4);
    out.u(spec.addche ? 1 : 0, 1);
    if (spec.addche) {
        put_optional(out, spec.aux_scl[0], 4);
        put_optional(out, spec.aux_scl[1], 4);
    }
}

void put_mixdef(BitWriter& out, const MixSpec& spec) {
    out.u(spec.mixdef, 2);
    if (spec.mixdef == 1) {
        out.u(spec.premixcmpsel, 1);
        out.u(spec.drcsrc, 1);
        out.u(spec.premixcmpscl, 3);
    } else if (spec.mixdef == 2) {
        out.u(spec.mixdata12, 12);
    } else if (spec.mixdef == 3) {
        out.u(spec.mixdeflen, 5);
        const std::size_t start = out.bit_count();
        out.u(spec.mixdata2 ? 1 : 0, 1);
        if (spec.mixdata2) {
            put_mixdata2(out, *spec.mixdata2);
        }
        while (out.bit_count() < start + spec.mixdeflen * 8 + 16) {
            out.u(1, 1);
        }
    }
}

void put_mixing(BitWriter& out, const Eac3Spec& frame, const MixSpec& spec) {
    const bool has_center = (frame.acmod & 1U) != 0 && frame.acmod > 2;
    if (frame.acmod > 2) {
        out.u(spec.dmixmod, 2);
    }
    if (has_center) {
        out.u(spec.ltrtcmixlev, 3);
        out.u(spec.lorocmixlev, 3);
    }
    if ((frame.acmod & 4U) != 0) {
        out.u(spec.ltrtsurmixlev, 3);
        out.u(spec.lorosurmixlev, 3);
    }
    if (frame.lfeon != 0) {
        put_optional(out, spec.lfemixlevcod, 5);
    }
    if (frame.strmtyp != 0) {
        return;
    }
    for (unsigned program = 0; program < programs_of(frame.acmod); ++program) {
        put_optional(out, spec.pgmscl[program], 6);
    }
    put_optional(out, spec.extpgmscl, 6);
    put_mixdef(out, spec);
    for (unsigned program = 0; frame.acmod < 2 && program < programs_of(frame.acmod); ++program) {
        const std::optional<PanSpec>& pan = spec.pan[program];
        out.u(pan ? 1 : 0, 1);
        if (pan) {
            out.u(pan->panmean, 8);
            out.u(pan->paninfo, 6);
        }
    }
    out.u(spec.blkmixcfginfo ? 1 : 0, 1);
    if (!spec.blkmixcfginfo) {
        return;
    }
    constexpr std::array<std::size_t, 4> kBlocks{1, 2, 3, 6};
    const std::size_t blocks = kBlocks[frame.numblkscod];
    if (blocks == 1) {
        out.u((*spec.blkmixcfginfo)[0].value_or(0), 5);
        return;
    }
    for (std::size_t block = 0; block < blocks; ++block) {
        put_optional(out, (*spec.blkmixcfginfo)[block], 5);
    }
}

void put_information(BitWriter& out, const Eac3Spec& frame, const InfoSpec& spec) {
    out.u(spec.bsmod, 3);
    out.u(spec.copyrightb, 1);
    out.u(spec.origbs, 1);
    if (frame.acmod == 2) {
        out.u(spec.dsurmod, 2);
        out.u(spec.dheadphonmod, 2);
    }
    if (frame.acmod >= 6) {
        out.u(spec.dsurexmod, 2);
    }
    for (unsigned program = 0; program < programs_of(frame.acmod); ++program) {
        const std::optional<AudprodSpec>& audprod = spec.audprod[program];
        out.u(audprod ? 1 : 0, 1);
        if (audprod) {
            out.u(audprod->mixlevel, 5);
            out.u(audprod->roomtyp, 2);
            out.u(audprod->adconvtyp, 1);
        }
    }
    if (frame.fscod < 3) {
        out.u(spec.sourcefscod, 1);
    }
}

void put_ac3_extension(BitWriter& out, const Ac3Spec& spec) {
    out.u(spec.xbsi1 ? 1 : 0, 1);
    if (spec.xbsi1) {
        out.u(spec.xbsi1->dmixmod, 2);
        out.u(spec.xbsi1->ltrtcmixlev, 3);
        out.u(spec.xbsi1->ltrtsurmixlev, 3);
        out.u(spec.xbsi1->lorocmixlev, 3);
        out.u(spec.xbsi1->lorosurmixlev, 3);
    }
    out.u(spec.xbsi2 ? 1 : 0, 1);
    if (spec.xbsi2) {
        out.u(spec.xbsi2->dsurexmod, 2);
        out.u(spec.xbsi2->dheadphonmod, 2);
        out.u(spec.xbsi2->adconvtyp, 1);
        out.u(spec.xbsi2->xbsi2, 8);
        out.u(spec.xbsi2->encinfo, 1);
    }
}

void put_ac3_header(BitWriter& out, const Ac3Spec& spec) {
    out.u(0x0B77, 16);
    out.u(0, 16);  // crc1
    out.u(spec.fscod, 2);
    out.u(spec.frmsizecod, 6);
    out.u(spec.bsid, 5);
    out.u(spec.bsmod, 3);
    out.u(spec.acmod, 3);
    if ((spec.acmod & 1U) != 0 && spec.acmod != 1) {
        out.u(spec.cmixlev, 2);
    }
    if ((spec.acmod & 4U) != 0) {
        out.u(spec.surmixlev, 2);
    }
    if (spec.acmod == 2) {
        out.u(spec.dsurmod, 2);
    }
    out.u(spec.lfeon, 1);
    for (unsigned program = 0; program < programs_of(spec.acmod); ++program) {
        out.u(spec.dialnorm[program], 5);
        put_optional(out, spec.compr[program], 8);
        put_optional(out, spec.langcod[program], 8);
        const std::optional<AudprodSpec>& audprod = spec.audprod[program];
        out.u(audprod ? 1 : 0, 1);
        if (audprod) {
            out.u(audprod->mixlevel, 5);
            out.u(audprod->roomtyp, 2);
        }
    }
    out.u(spec.copyrightb, 1);
    out.u(spec.origbs, 1);
    if (spec.bsid == 6) {
        put_ac3_extension(out, spec);
    } else {
        put_optional(out, spec.timecod1, 14);
        put_optional(out, spec.timecod2, 14);
    }
    put_addbsi(out, spec.addbsi);
}

}  // namespace

Bytes build_eac3_frame(const Eac3Spec& spec) {
    BitWriter out;
    out.u(0x0B77, 16);
    out.u(spec.strmtyp, 2);
    out.u(spec.substreamid, 3);
    out.u(spec.words - 1, 11);
    out.u(spec.fscod, 2);
    out.u(spec.numblkscod, 2);
    out.u(spec.acmod, 3);
    out.u(spec.lfeon, 1);
    out.u(spec.bsid, 5);
    for (unsigned program = 0; program < programs_of(spec.acmod); ++program) {
        out.u(spec.dialnorm[program], 5);
        put_optional(out, spec.compr[program], 8);
    }
    if (spec.strmtyp == 1) {
        put_optional(out, spec.chanmap, 16);
    }
    out.u(spec.mix ? 1 : 0, 1);
    if (spec.mix) {
        put_mixing(out, spec, *spec.mix);
    }
    out.u(spec.info ? 1 : 0, 1);
    if (spec.info) {
        put_information(out, spec, *spec.info);
    }
    if (spec.strmtyp == 0 && spec.numblkscod != 3) {
        out.u(spec.convsync, 1);
    }
    if (spec.strmtyp == 2) {
        if (spec.numblkscod != 3) {
            out.u(spec.blkid, 1);
        }
        if (spec.numblkscod == 3 || spec.blkid == 1) {
            out.u(spec.frmsizecod, 6);
        }
    }
    put_addbsi(out, spec.addbsi);
    Bytes frame = finish_frame(out, std::size_t{spec.words} * 2, spec.aux, spec.encinfo);
    repair_eac3_crc(frame);
    if (!spec.good_crc) {
        frame.back() ^= 1U;
    }
    return frame;
}

Bytes build_ac3_frame(const Ac3Spec& spec) {
    BitWriter out;
    put_ac3_header(out, spec);
    const std::size_t words = ac3_frame_words(spec.fscod, spec.frmsizecod);
    Bytes frame = finish_frame(out, words * 2, spec.aux, 0);
    const std::size_t part = (words >> 1U) + (words >> 3U);
    put_word(frame, 1, leading_crc(frame.data() + 4, part * 2 - 4));
    put_word(frame, words - 1, reference_crc(frame.data() + part * 2, (words - part) * 2 - 2));
    if (!spec.good_crc1) {
        frame[3] ^= 1U;
    }
    if (!spec.good_crc2) {
        frame.back() ^= 1U;
    }
    return frame;
}

unsigned ac3_frame_words(unsigned fscod, unsigned frmsizecod) {
    constexpr std::array<unsigned, 19> kKbps{32,  40,  48,  56,  64,  80,  96,  112, 128, 160,
                                             192, 224, 256, 320, 384, 448, 512, 576, 640};
    constexpr std::array<unsigned, 3> kHz{48000, 44100, 32000};
    const unsigned words = kKbps[frmsizecod / 2] * 1000 * 96 / kHz[fscod];
    return fscod == 1 ? words + frmsizecod % 2 : words;
}

void repair_eac3_crc(Bytes& frame) {
    if (frame.size() >= 6) {
        put_word(frame, frame.size() / 2 - 1, reference_crc(frame.data() + 2, frame.size() - 4));
    }
}

Bytes swapped(const Bytes& frame) {
    Bytes result = frame;
    for (std::size_t i = 0; i + 1 < result.size(); i += 2) {
        std::swap(result[i], result[i + 1]);
    }
    return result;
}

Bytes join(std::initializer_list<Bytes> frames) {
    Bytes result;
    for (const Bytes& frame : frames) {
        result.insert(result.end(), frame.begin(), frame.end());
    }
    return result;
}

std::uint16_t reference_crc(const std::uint8_t* data, std::size_t size) {
    std::uint16_t crc = 0;
    for (std::size_t bit = 0; bit < size * 8; ++bit) {
        crc = crc_step(crc, (data[bit / 8] >> (7 - bit % 8) & 1U) != 0);
    }
    return crc;
}

std::vector<std::uint16_t> to_words(const Bytes& frame) {
    std::vector<std::uint16_t> words;
    for (std::size_t i = 0; i < frame.size() / 2; ++i) {
        words.push_back(static_cast<std::uint16_t>(get_word(frame, i)));
    }
    return words;
}

}  // namespace mediasplit::test_support
