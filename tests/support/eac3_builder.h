#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <vector>

// Builds AC-3 and E-AC-3 syncframes bit by bit (ETSI TS 102 366): a header as described, filler
// where the audio would stand, auxiliary data and check words. Nothing here leans on the code under
// test; the CRC is computed bit by bit.

namespace mediasplit::test_support {

using Bytes = std::vector<std::uint8_t>;

// Auxiliary data: `bits` of it, from the top bit of the first byte on.
struct AuxSpec {
    unsigned bits = 0;
    Bytes data{};
};

struct AudprodSpec {
    unsigned mixlevel = 0;
    unsigned roomtyp = 0;
    unsigned adconvtyp = 0;  // E-AC-3 alone
};

struct PanSpec {
    unsigned panmean = 0;
    unsigned paninfo = 0;
};

// mixdata2 of mixdef 3; an unset scale has a clear flag.
struct Mixdata2Spec {
    unsigned premixcmpsel = 0;
    unsigned drcsrc = 0;
    unsigned premixcmpscl = 0;
    std::array<std::optional<unsigned>, 6> extpgmscl{};  // L, C, R, Ls, Rs, LFE
    std::optional<unsigned> dmixscl{};
    bool addche = false;
    std::array<std::optional<unsigned>, 2> aux_scl{};
};

struct MixSpec {
    unsigned dmixmod = 0;
    unsigned ltrtcmixlev = 4;
    unsigned lorocmixlev = 4;
    unsigned ltrtsurmixlev = 4;
    unsigned lorosurmixlev = 4;
    std::optional<unsigned> lfemixlevcod{};
    std::array<std::optional<unsigned>, 2> pgmscl{};
    std::optional<unsigned> extpgmscl{};
    unsigned mixdef = 0;
    unsigned premixcmpsel = 0;  // mixdef 1
    unsigned drcsrc = 0;
    unsigned premixcmpscl = 0;
    unsigned mixdata12 = 0;  // mixdef 2
    unsigned mixdeflen = 0;  // mixdef 3
    std::optional<Mixdata2Spec> mixdata2{};
    std::array<std::optional<PanSpec>, 2> pan{};
    std::optional<std::array<std::optional<unsigned>, 6>> blkmixcfginfo{};
};

struct InfoSpec {
    unsigned bsmod = 0;
    unsigned copyrightb = 0;
    unsigned origbs = 0;
    unsigned dsurmod = 0;
    unsigned dheadphonmod = 0;
    unsigned dsurexmod = 0;
    std::array<std::optional<AudprodSpec>, 2> audprod{};
    unsigned sourcefscod = 0;
};

struct Eac3Spec {
    unsigned strmtyp = 0;
    unsigned substreamid = 0;
    unsigned words = 384;
    unsigned fscod = 0;
    unsigned numblkscod = 3;
    unsigned acmod = 7;
    unsigned lfeon = 1;
    unsigned bsid = 16;
    std::array<unsigned, 2> dialnorm{27, 27};
    std::array<std::optional<unsigned>, 2> compr{};
    std::optional<unsigned> chanmap{};
    std::optional<MixSpec> mix{};
    std::optional<InfoSpec> info{};
    unsigned convsync = 1;
    unsigned blkid = 1;
    unsigned frmsizecod = 0;
    std::optional<Bytes> addbsi{};  // 1 to 64 bytes
    std::optional<AuxSpec> aux{};
    unsigned encinfo = 0;
    bool good_crc = true;
};

struct Xbsi1Spec {
    unsigned dmixmod = 0;
    unsigned ltrtcmixlev = 4;
    unsigned ltrtsurmixlev = 4;
    unsigned lorocmixlev = 4;
    unsigned lorosurmixlev = 4;
};

struct Xbsi2Spec {
    unsigned dsurexmod = 0;
    unsigned dheadphonmod = 0;
    unsigned adconvtyp = 0;
    unsigned xbsi2 = 0;
    unsigned encinfo = 0;
};

struct Ac3Spec {
    unsigned fscod = 0;
    unsigned frmsizecod = 20;  // 192 kbit/s
    unsigned bsid = 8;
    unsigned bsmod = 0;
    unsigned acmod = 7;
    unsigned cmixlev = 0;
    unsigned surmixlev = 0;
    unsigned dsurmod = 0;
    unsigned lfeon = 1;
    std::array<unsigned, 2> dialnorm{27, 27};
    std::array<std::optional<unsigned>, 2> compr{};
    std::array<std::optional<unsigned>, 2> langcod{};
    std::array<std::optional<AudprodSpec>, 2> audprod{};
    unsigned copyrightb = 0;
    unsigned origbs = 1;
    std::optional<unsigned> timecod1{};
    std::optional<unsigned> timecod2{};
    std::optional<Xbsi1Spec> xbsi1{};  // bsid 6
    std::optional<Xbsi2Spec> xbsi2{};  // bsid 6
    std::optional<Bytes> addbsi{};
    std::optional<AuxSpec> aux{};
    bool good_crc1 = true;
    bool good_crc2 = true;
};

// The frame in file order, 0B 77 first. A header longer than the frame is cut.
Bytes build_eac3_frame(const Eac3Spec& spec);
Bytes build_ac3_frame(const Ac3Spec& spec);

// Size of an AC-3 frame in words by the rule of the standard, not by table.
unsigned ac3_frame_words(unsigned fscod, unsigned frmsizecod);

// Writes the check word over everything behind the sync word again, after a frame was changed by
// hand.
void repair_eac3_crc(Bytes& frame);

// The frame with the bytes of each word swapped.
Bytes swapped(const Bytes& frame);

// Frames behind each other.
Bytes join(std::initializer_list<Bytes> frames);

// CRC-16 of generator 0x8005 over a range of bytes, bit by bit.
std::uint16_t reference_crc(const std::uint8_t* data, std::size_t size);

// The bytes as words in host order.
std::vector<std::uint16_t> to_words(const Bytes& frame);

}  // namespace mediasplit::test_support
