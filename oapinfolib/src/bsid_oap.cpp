#include <algorithm>

#include "oapinfolib/src/bsid.h"
#include "oapinfolib/src/bsid_tables.h"
#include "oapinfolib/src/fatal.h"

namespace mediasplit {

namespace {

constexpr FatalSite kSiteSync{kSourceBsidOap, 71};
constexpr FatalSite kSiteHalfRate{kSourceBsidOap, 88};
constexpr FatalSite kSiteBsid{kSourceBsidOap, 117};

// Takes a flag and, when it is set, a value of n bits.
void unpack_optional(BsodReader& reader, std::uint16_t& flag, std::uint16_t& value, int n) {
    flag = bsod_unprj(reader, 1);
    if (flag != 0) {
        value = bsod_unprj(reader, n);
    }
}

// A flag and its scale, 0 dB when the flag is clear.
void unpack_scale(BsodReader& reader, std::uint16_t& flag, std::uint16_t& scale) {
    scale = kUnityScale;
    unpack_optional(reader, flag, scale, 6);
}

// The channel map that a dependent frame without one has: the channels of its acmod.
std::uint16_t default_chanmap(const BitstreamInfo& info) {
    unsigned map = info.lfeon != 0 ? 1U : 0U;
    for (const int channel : kChannelTable[info.acmod]) {
        if (channel >= 0 && channel != kLfeIndex) {
            map |= 1U << static_cast<unsigned>(kLfePosition - channel);
        }
    }
    return static_cast<std::uint16_t>(map);
}

void unpack_premix(BsodReader& reader, BitstreamInfo& info) {
    info.premixcmpsel = bsod_unprj(reader, 1);
    info.drcsrc = bsod_unprj(reader, 1);
    info.premixcmpscl = bsod_unprj(reader, 3);
}

// A flag with a 4-bit scale in mixdata2; gives the bits taken.
int unpack_external_scale(BsodReader& reader, std::uint16_t& flag, std::uint16_t& scale) {
    unpack_optional(reader, flag, scale, 4);
    return flag != 0 ? 5 : 1;
}

int unpack_mixdata2(BsodReader& reader, BitstreamInfo& info) {
    unpack_premix(reader, info);
    int bits = 5;
    bits += unpack_external_scale(reader, info.extpgmlscle, info.extpgmlscl);
    bits += unpack_external_scale(reader, info.extpgmcscle, info.extpgmcscl);
    bits += unpack_external_scale(reader, info.extpgmrscle, info.extpgmrscl);
    bits += unpack_external_scale(reader, info.extpgmlsscle, info.extpgmlsscl);
    bits += unpack_external_scale(reader, info.extpgmrsscle, info.extpgmrsscl);
    bits += unpack_external_scale(reader, info.extpgmlfescle, info.extpgmlfescl);
    bits += unpack_external_scale(reader, info.dmixscle, info.dmixscl);
    info.addche = bsod_unprj(reader, 1);
    ++bits;
    if (info.addche != 0) {
        bits += unpack_external_scale(reader, info.extpgmaux1scle, info.extpgmaux1scl);
        bits += unpack_external_scale(reader, info.extpgmaux2scle, info.extpgmaux2scl);
    }
    return bits;
}

// mixdef 3: a block whose length is coded; what isn't unpacked of it is passed over. A length too
// small for the fields that were read passes over nothing.
void unpack_mixdef3(BsodReader& reader, BitstreamInfo& info) {
    info.mixdeflen = bsod_unprj(reader, 5);
    info.mixdata2e = bsod_unprj(reader, 1);
    int bits = 1;
    if (info.mixdata2e != 0) {
        bits += unpack_mixdata2(reader, info);
    }
    bsod_skip(reader, std::max(info.mixdeflen * 8 + 16 - bits, 0));
}

void unpack_block_mix_config(BsodReader& reader, BitstreamInfo& info) {
    info.frmmixcfginfoe = bsod_unprj(reader, 1);
    if (info.frmmixcfginfoe == 0) {
        return;
    }
    if (info.numblks == 1) {
        info.blkmixcfginfo[0] = bsod_unprj(reader, 5);
        return;
    }
    for (std::size_t block = 0; block < info.numblks; ++block) {
        unpack_optional(reader, info.blkmixcfginfoe, info.blkmixcfginfo[block], 5);
    }
}

// The part of the mixing data that only an independent substream has.
void unpack_program_mix(BsodReader& reader, BitstreamInfo& info) {
    for (std::size_t program = 0; program < info.nprograms; ++program) {
        unpack_scale(reader, info.pgmscle[program], info.pgmscl[program]);
    }
    unpack_scale(reader, info.extpgmscle, info.extpgmscl);
    info.mixdef = bsod_unprj(reader, 2);
    if (info.mixdef == 1) {
        unpack_premix(reader, info);
    } else if (info.mixdef == 2) {
        bsod_skip(reader, 12);
    } else if (info.mixdef == 3) {
        unpack_mixdef3(reader, info);
    }
    if (info.acmod < 2) {
        for (std::size_t program = 0; program < info.nprograms; ++program) {
            info.paninfoe[program] = bsod_unprj(reader, 1);
            if (info.paninfoe[program] != 0) {
                info.panmean[program] = bsod_unprj(reader, 8);
                info.paninfo[program] = bsod_unprj(reader, 6);
            }
        }
    }
    unpack_block_mix_config(reader, info);
}

// E.1.2.2, mixmdate.
void unpack_mixing(BsodReader& reader, BitstreamInfo& info) {
    info.mixmdate = bsod_unprj(reader, 1);
    if (info.mixmdate == 0) {
        return;
    }
    if (info.acmod > 2) {
        info.dmixmod = bsod_unprj(reader, 2);
        info.dmixmod_present = 1;
    }
    if ((info.acmod & 1U) != 0 && info.acmod > 2) {
        info.ltrtcmixlev = bsod_unprj(reader, 3);
        info.lorocmixlev = bsod_unprj(reader, 3);
        info.mixlevels_present = 1;
        info.cmixlev = kCmixlevFromLoro[info.lorocmixlev];
    }
    if ((info.acmod & 4U) != 0) {
        info.ltrtsurmixlev = bsod_unprj(reader, 3);
        info.lorosurmixlev = bsod_unprj(reader, 3);
        bsid_unp_surround_levels(info);
        info.mixlevels_present = 1;
        info.surmixlev = kSurmixlevFromLoro[info.lorosurmixlev];
    }
    if (info.lfeon != 0) {
        unpack_optional(reader, info.lfemixlevcode, info.lfemixlevcod, 5);
    }
    if (info.strmtyp == 0) {
        unpack_program_mix(reader, info);
    }
}

// E.1.2.2, infomdate.
void unpack_informational(BsodReader& reader, BitstreamInfo& info) {
    info.infomdate = bsod_unprj(reader, 1);
    if (info.infomdate == 0) {
        return;
    }
    info.bsmod = bsod_unprj(reader, 3);
    info.karaoke = info.bsmod == 7 && info.acmod > 1 ? 1 : 0;
    info.copyrightb = bsod_unprj(reader, 1);
    info.origbs = bsod_unprj(reader, 1);
    if (info.acmod == 2) {
        info.dsurmod = bsod_unprj(reader, 2);
        info.dheadphonmod = bsod_unprj(reader, 2);
        info.dheadphonmod_present = 1;
    }
    if (info.acmod >= 6) {
        info.dsurexmod = bsod_unprj(reader, 2);
        info.dsurexmod_present = 1;
    }
    for (std::size_t program = 0; program < info.nprograms; ++program) {
        info.audprodie[program] = bsod_unprj(reader, 1);
        if (info.audprodie[program] != 0) {
            info.mixlevel[program] = bsod_unprj(reader, 5);
            info.roomtyp[program] = bsod_unprj(reader, 2);
            info.adconvtyp[program] = bsod_unprj(reader, 1);
        }
    }
    if (info.fscod < 3) {
        info.sourcefscod = bsod_unprj(reader, 1);
    }
}

void unpack_converter(BsodReader& reader, BitstreamInfo& info) {
    if (info.strmtyp == 0 && info.numblks != 6) {
        info.convsync = bsod_unprj(reader, 1);
    }
    if (info.strmtyp == 2) {
        info.blkid = info.numblks != 6 ? bsod_unprj(reader, 1) : std::uint16_t{1};
        if (info.blkid == 1) {
            info.frmsizecod = bsod_unprj(reader, 6);
        }
    }
}

}  // namespace

int bsid_unpoap(BsodReader& reader, BitstreamInfo& info) {
    info.syncword = bsod_unprj(reader, 16);
    if (info.syncword != kSyncWord) {
        return refuse(kBsidBadSync, "Invalid synchronization word", kSiteSync);
    }
    info.strmtyp = bsod_unprj(reader, 2);
    info.substreamid = bsod_unprj(reader, 3);
    info.frmsiz = static_cast<std::uint16_t>(bsod_unprj(reader, 11) + 1);
    info.fscod = bsod_unprj(reader, 2);
    if (info.fscod == 3) {
        return refuse(kBsidHalfSampleRate, "Half sample rate unsupported", kSiteHalfRate);
    }
    info.numblks = kBlocksPerFrame[bsod_unprj(reader, 2)];
    info.acmod = bsod_unprj(reader, 3);
    info.lfeon = bsod_unprj(reader, 1);
    bsid_set_channels(info);
    info.bsid = bsod_unprj(reader, 5);
    if (!is_oap_bsid(info.bsid)) {
        return refuse(kBsidUnsupported, "Unsupported bitstream id", kSiteBsid);
    }
    for (std::size_t program = 0; program < info.nprograms; ++program) {
        info.dialnorm[program] = bsod_unprj(reader, 5);
        info.compre[program] = bsod_unprj(reader, 1);
        if (info.compre[program] != 0) {
            info.compr[program] = bsod_unplj(reader, 8);
        }
    }
    if (info.strmtyp == 1) {
        unpack_optional(reader, info.chanmape, info.chanmap, 16);
        if (info.chanmape == 0) {
            info.chanmap = default_chanmap(info);
        }
    }
    unpack_mixing(reader, info);
    unpack_informational(reader, info);
    unpack_converter(reader, info);
    bsid_unp_addbsi(reader, info);
    return kBsidGood;
}

}  // namespace mediasplit
