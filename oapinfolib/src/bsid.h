#pragma once

#include <array>
#include <cstdint>

#include "oapinfolib/src/bsod.h"

// Header of one AC-3 or E-AC-3 syncframe: synchronisation and bitstream information of ETSI TS 102
// 366 (clause 4, Annex D for bsid 6, Annex E for bsid 11 to 16). Audio blocks are never read.

namespace mediasplit {

// Where `addbsi` starts in the frame it was read from, for a second reading while that frame
// stands.
struct BitPosition {
    const std::uint16_t* word = nullptr;
    std::int16_t bit = 0;

    bool operator==(const BitPosition&) const = default;
};

// Fields carry the standard's names; an array of two holds one value for each program of 1+1. A
// field that the stream doesn't carry holds the value given here.
struct BitstreamInfo {
    using Word = std::uint16_t;
    using Pair = std::array<std::uint16_t, 2>;

    Word syncword = 0;
    Word crc1 = 0;
    Word fscod = 0;
    Word frmsizecod = 0;
    Word bsid = 0;
    Word bsmod = 0;
    Word acmod = 0;
    Word lfeon = 0;
    Word nfchans = 0;    // derived: full bandwidth channels
    Word nchans = 0;     // derived: nfchans + lfeon
    Word nprograms = 0;  // derived: 2 for 1+1, else 1
    Word karaoke = 0;    // derived: bsmod 7 with two channels or more
    Word cmixlev = 0;    // derived from lorocmixlev in E-AC-3
    Word surmixlev = 0;  // derived from lorosurmixlev in E-AC-3
    Word dsurmod = 0;
    Pair dialnorm{};
    Pair compre{};
    Pair compr{};  // left-justified: the 8 bits stand in the high byte
    Pair langcode{};
    Pair langcod{};
    Pair audprodie{};
    Pair mixlevel{};
    Pair roomtyp{};
    Word copyrightb = 1;
    Word origbs = 1;
    Word timecod1e = 0;
    Word timecod1 = 0;
    Word timecod2e = 0;
    Word timecod2 = 0;
    Word xbsi1e = 0;
    Word dmixmod = 0;
    Word ltrtcmixlev = 4;
    Word ltrtsurmixlev = 4;
    Word lorocmixlev = 4;
    Word lorosurmixlev = 4;
    Word mixlevels_present = 0;  // derived
    Word dmixmod_present = 0;    // derived
    Word xbsi2e = 0;
    Word dsurexmod = 0;
    Word dheadphonmod = 0;
    Pair adconvtyp{};
    Word xbsi2 = 0;
    Word encinfo = 0;
    Word dsurexmod_present = 0;     // derived
    Word dheadphonmod_present = 0;  // derived
    Word addbsie = 0;
    Word addbsil = 0;  // bytes of addbsi less 1
    BitPosition addbsi_position{};
    std::array<std::uint8_t, 64> addbsi{};
    Word strmtyp = 0;
    Word substreamid = 0;
    Word frmsiz = 0;  // frame size in words, the coded value plus 1
    Word chanmape = 0;
    Word chanmap = 0;  // derived from acmod and lfeon when a dependent frame has none
    Word mixmdate = 0;
    Word lfemixlevcode = 0;
    Word lfemixlevcod = 10;
    Pair pgmscle{};
    Pair pgmscl{};
    Word extpgmscle = 0;
    Word extpgmscl = 0;
    Word mixdef = 0;
    Word mixdeflen = 0;
    Word mixdata2e = 0;
    Word premixcmpsel = 0;
    Word drcsrc = 0;
    Word premixcmpscl = 0;
    Word extpgmlscle = 0;
    Word extpgmcscle = 0;
    Word extpgmrscle = 0;
    Word extpgmlsscle = 0;
    Word extpgmrsscle = 0;
    Word extpgmlfescle = 0;
    Word extpgmlscl = 0;
    Word extpgmcscl = 0;
    Word extpgmrscl = 0;
    Word extpgmlsscl = 0;
    Word extpgmrsscl = 0;
    Word extpgmlfescl = 0;
    Word dmixscle = 0;
    Word dmixscl = 0;
    Word addche = 0;
    Word extpgmaux1scle = 0;
    Word extpgmaux1scl = 0;
    Word extpgmaux2scle = 0;
    Word extpgmaux2scl = 0;
    Word frmmixcfginfoe = 0;
    Word blkmixcfginfoe = 0;  // of the last block read
    std::array<Word, 6> blkmixcfginfo{};
    Pair paninfoe{};
    Pair panmean{};
    Pair paninfo{};
    Word infomdate = 0;
    Word sourcefscod = 0;
    Word convsync = 1;
    Word blkid = 0;
    Word numblks = 6;  // derived: blocks per frame

    bool operator==(const BitstreamInfo&) const = default;
};

// Codes of the header operations. Each one but kBsidGood comes with its fatal text.
inline constexpr int kBsidGood = 0;
inline constexpr int kBsidBadSync = 1537;         // "Invalid synchronization word"
inline constexpr int kBsidBadSampleRate = 1538;   // "Invalid sampling rate code"
inline constexpr int kBsidBadFrameSize = 1539;    // "Invalid frame size code"
inline constexpr int kBsidUnsupported = 1540;     // "Unsupported bitstream id"
inline constexpr int kBsidHalfSampleRate = 1541;  // "Half sample rate unsupported"

// Resets a record to what stands for an empty header.
void bsid_frminit(BitstreamInfo& info);

// Gives the `bsid` of the frame at whose start `reader` stands, without moving the reader.
// kBsidUnsupported if it is neither 0 to 8 nor 11 to 16.
int bsid_getbsid(const BsodReader& reader, std::uint16_t& bsid);

// Gives the size in 16-bit words of the frame at whose start `reader` stands, without moving the
// reader. Fills `bsid` and what the size came from: `fscod` and `frmsizecod`, or `frmsiz`.
int bsid_getfrmsize(const BsodReader& reader, BitstreamInfo& info, std::uint16_t& frame_words);

// Size in words of the frame that an unpacked header describes, 0 if its codes are undefined.
std::uint16_t bsid_frame_words(const BitstreamInfo& info);

// Resets the record and fills it from the frame at whose start `reader` stands.
int bsid_unp(BsodReader& reader, BitstreamInfo& info);

// The two syntaxes, on a record that bsid_frminit has reset: AC-3 and E-AC-3.
int bsid_unpoa(BsodReader& reader, BitstreamInfo& info);
int bsid_unpoap(BsodReader& reader, BitstreamInfo& info);

// What both syntaxes share, for the two unpackers alone.
void bsid_set_channels(BitstreamInfo& info);
void bsid_unp_surround_levels(BitstreamInfo& info);
void bsid_unp_addbsi(BsodReader& reader, BitstreamInfo& info);

}  // namespace mediasplit
