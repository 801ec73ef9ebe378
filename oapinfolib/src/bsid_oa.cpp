#include <algorithm>

#include "oapinfolib/src/bsid.h"
#include "oapinfolib/src/bsid_tables.h"
#include "oapinfolib/src/fatal.h"

namespace mediasplit {

namespace {

constexpr FatalSite kSiteGetBsid{kSourceBsidOa, 62};
constexpr FatalSite kSiteFrameSizeBsid{kSourceBsidOa, 101};
constexpr FatalSite kSiteFrameSizeRate{kSourceBsidOa, 112};
constexpr FatalSite kSiteFrameSizeCode{kSourceBsidOa, 121};
constexpr FatalSite kSiteUnpack{kSourceBsidOa, 168};
constexpr FatalSite kSiteUnpackSync{kSourceBsidOa, 193};
constexpr FatalSite kSiteUnpackRate{kSourceBsidOa, 206};
constexpr FatalSite kSiteUnpackSize{kSourceBsidOa, 215};
constexpr FatalSite kSiteUnpackBsid{kSourceBsidOa, 224};

constexpr std::int64_t kBsidBit = 40;

int refuse_bsid(FatalSite site) {
    return refuse(kBsidUnsupported, "Unsupported bitstream id", site);
}

int refuse_rate(FatalSite site) {
    return refuse(kBsidBadSampleRate, "Invalid sampling rate code", site);
}

int refuse_size(FatalSite site) {
    return refuse(kBsidBadFrameSize, "Invalid frame size code", site);
}

std::uint16_t peek(const BsodReader& reader, std::int64_t bit, int n) {
    BsodReader second = reader;
    bsod_skip(second, bit);
    return bsod_unprj(second, n);
}

bool is_supported(std::uint16_t bsid) {
    return is_oa_bsid(bsid) || is_oap_bsid(bsid);
}

void unpack_program(BsodReader& reader, BitstreamInfo& info, std::size_t program) {
    info.dialnorm[program] = bsod_unprj(reader, 5);
    info.compre[program] = bsod_unprj(reader, 1);
    if (info.compre[program] != 0) {
        info.compr[program] = bsod_unplj(reader, 8);
    }
    info.langcode[program] = bsod_unprj(reader, 1);
    if (info.langcode[program] != 0) {
        info.langcod[program] = bsod_unprj(reader, 8);
    }
    info.audprodie[program] = bsod_unprj(reader, 1);
    if (info.audprodie[program] != 0) {
        info.mixlevel[program] = bsod_unprj(reader, 5);
        info.roomtyp[program] = bsod_unprj(reader, 2);
    }
}

void unpack_time_codes(BsodReader& reader, BitstreamInfo& info) {
    info.timecod1e = bsod_unprj(reader, 1);
    if (info.timecod1e != 0) {
        info.timecod1 = bsod_unprj(reader, 14);
    }
    info.timecod2e = bsod_unprj(reader, 1);
    if (info.timecod2e != 0) {
        info.timecod2 = bsod_unprj(reader, 14);
    }
}

// D.2.3: the 14 bits stand there for each acmod, and say something for three channels and more.
void unpack_xbsi1(BsodReader& reader, BitstreamInfo& info) {
    info.xbsi1e = bsod_unprj(reader, 1);
    if (info.xbsi1e == 0) {
        return;
    }
    if (info.acmod < 3) {
        bsod_skip(reader, 14);
        return;
    }
    info.dmixmod = bsod_unprj(reader, 2);
    info.ltrtcmixlev = bsod_unprj(reader, 3);
    info.ltrtsurmixlev = bsod_unprj(reader, 3);
    info.lorocmixlev = bsod_unprj(reader, 3);
    info.lorosurmixlev = bsod_unprj(reader, 3);
    bsid_unp_surround_levels(info);
    info.mixlevels_present = 1;
    info.dmixmod_present = 1;
}

void unpack_xbsi2(BsodReader& reader, BitstreamInfo& info) {
    info.xbsi2e = bsod_unprj(reader, 1);
    if (info.xbsi2e == 0) {
        return;
    }
    const std::uint16_t dsurexmod = bsod_unprj(reader, 2);
    const std::uint16_t dheadphonmod = bsod_unprj(reader, 2);
    if (info.acmod >= 6) {
        info.dsurexmod = dsurexmod;
        info.dsurexmod_present = 1;
    }
    if (info.acmod == 2) {
        info.dheadphonmod = dheadphonmod;
        info.dheadphonmod_present = 1;
    }
    info.adconvtyp[0] = bsod_unprj(reader, 1);
    info.xbsi2 = bsod_unprj(reader, 8);
    info.encinfo = bsod_unprj(reader, 1);
}

}  // namespace

void bsid_frminit(BitstreamInfo& info) {
    info = BitstreamInfo{};
}

void bsid_set_channels(BitstreamInfo& info) {
    info.nfchans = kChannelCount[info.acmod & 7U];
    info.nchans = static_cast<std::uint16_t>(info.nfchans + info.lfeon);
    info.nprograms = info.acmod == 0 ? 2 : 1;
}

// The codes 0 to 2 are reserved and stand for 3 (E.1.3.1.13).
void bsid_unp_surround_levels(BitstreamInfo& info) {
    info.ltrtsurmixlev = std::max<std::uint16_t>(info.ltrtsurmixlev, 3);
    info.lorosurmixlev = std::max<std::uint16_t>(info.lorosurmixlev, 3);
}

void bsid_unp_addbsi(BsodReader& reader, BitstreamInfo& info) {
    info.addbsie = bsod_unprj(reader, 1);
    if (info.addbsie == 0) {
        return;
    }
    info.addbsil = bsod_unprj(reader, 6);
    info.addbsi_position = {reader.words + std::min(reader.index, reader.count), reader.bit};
    for (std::size_t i = 0; i <= info.addbsil; ++i) {
        info.addbsi[i] = static_cast<std::uint8_t>(bsod_unprj(reader, 8));
    }
}

int bsid_getbsid(const BsodReader& reader, std::uint16_t& bsid) {
    bsid = peek(reader, kBsidBit, 5);
    return is_supported(bsid) ? kBsidGood : refuse_bsid(kSiteGetBsid);
}

int bsid_getfrmsize(const BsodReader& reader, BitstreamInfo& info, std::uint16_t& frame_words) {
    info.bsid = peek(reader, kBsidBit, 5);
    if (!is_supported(info.bsid)) {
        return refuse_bsid(kSiteFrameSizeBsid);
    }
    if (is_oap_bsid(info.bsid)) {
        info.frmsiz = static_cast<std::uint16_t>(peek(reader, 21, 11) + 1);
        frame_words = info.frmsiz;
        return kBsidGood;
    }
    info.fscod = peek(reader, 32, 2);
    if (info.fscod == 3) {
        return refuse_rate(kSiteFrameSizeRate);
    }
    info.frmsizecod = peek(reader, 34, 6);
    if (info.frmsizecod > kMaxFrmsizecod) {
        return refuse_size(kSiteFrameSizeCode);
    }
    frame_words = kFrameSize[info.fscod][info.frmsizecod];
    return kBsidGood;
}

std::uint16_t bsid_frame_words(const BitstreamInfo& info) {
    if (is_oap_bsid(info.bsid)) {
        return info.frmsiz;
    }
    const bool known = info.fscod < kFrameSize.size() && info.frmsizecod <= kMaxFrmsizecod;
    return known ? kFrameSize[info.fscod][info.frmsizecod] : std::uint16_t{0};
}

int bsid_unp(BsodReader& reader, BitstreamInfo& info) {
    bsid_frminit(info);
    const std::uint16_t bsid = peek(reader, kBsidBit, 5);
    if (is_oap_bsid(bsid)) {
        return bsid_unpoap(reader, info);
    }
    if (is_oa_bsid(bsid)) {
        return bsid_unpoa(reader, info);
    }
    return refuse_bsid(kSiteUnpack);
}

int bsid_unpoa(BsodReader& reader, BitstreamInfo& info) {
    info.syncword = bsod_unprj(reader, 16);
    if (info.syncword != kSyncWord) {
        return refuse(kBsidBadSync, "Invalid synchronization word", kSiteUnpackSync);
    }
    info.crc1 = bsod_unprj(reader, 16);
    info.fscod = bsod_unprj(reader, 2);
    if (info.fscod == 3) {
        return refuse_rate(kSiteUnpackRate);
    }
    info.frmsizecod = bsod_unprj(reader, 6);
    if (info.frmsizecod > kMaxFrmsizecod) {
        return refuse_size(kSiteUnpackSize);
    }
    info.bsid = bsod_unprj(reader, 5);
    if (!is_oa_bsid(info.bsid)) {
        return refuse_bsid(kSiteUnpackBsid);
    }
    info.bsmod = bsod_unprj(reader, 3);
    info.acmod = bsod_unprj(reader, 3);
    if ((info.acmod & 1U) != 0 && info.acmod != 1) {
        info.cmixlev = bsod_unprj(reader, 2);
    }
    if ((info.acmod & 4U) != 0) {
        info.surmixlev = bsod_unprj(reader, 2);
    }
    if (info.acmod == 2) {
        info.dsurmod = bsod_unprj(reader, 2);
    }
    info.lfeon = bsod_unprj(reader, 1);
    bsid_set_channels(info);
    info.karaoke = info.bsmod == 7 && info.acmod > 1 ? 1 : 0;
    for (std::size_t program = 0; program < info.nprograms; ++program) {
        unpack_program(reader, info, program);
    }
    info.copyrightb = bsod_unprj(reader, 1);
    info.origbs = bsod_unprj(reader, 1);
    if (info.bsid == 6) {
        unpack_xbsi1(reader, info);
        unpack_xbsi2(reader, info);
    } else {
        unpack_time_codes(reader, info);
    }
    bsid_unp_addbsi(reader, info);
    info.numblks = 6;
    return kBsidGood;
}

}  // namespace mediasplit
