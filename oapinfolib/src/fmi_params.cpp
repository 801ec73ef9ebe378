#include <algorithm>

#include "oapinfolib/src/axdd.h"
#include "oapinfolib/src/bsid_tables.h"
#include "oapinfolib/src/fmi_api.h"

// The words of the parameter groups, one function for each group.

namespace mediasplit {

namespace {

constexpr std::uint16_t kOff = 0xFFFF;

void put(FrameParams& params, std::uint16_t word) {
    if (params.count < params.word.size()) {
        params.word[params.count++] = word;
    }
}

// A value, or what stands for it when its flag is off.
void put_if(FrameParams& params, std::uint16_t flag, std::uint16_t word, std::uint16_t off) {
    put(params, flag != 0 ? word : off);
}

int put_frame(const BitstreamInfo& info, FrameParams& params) {
    put(params, info.bsid);
    put(params, static_cast<std::uint16_t>(kSampleRate[info.fscod & 3U]));
    put(params, info.strmtyp);
    put(params, info.substreamid);
    put(params, info.numblks);
    put(params, info.acmod);
    put(params, info.lfeon);
    return kFmiGood;
}

int put_mixing(const BitstreamInfo& info, FrameParams& params) {
    put(params, info.dmixmod);
    put(params, info.cmixlev);
    put(params, info.surmixlev);
    put(params, info.ltrtcmixlev);
    put(params, info.ltrtsurmixlev);
    put(params, info.lorocmixlev);
    put(params, info.lorosurmixlev);
    put_if(params, info.pgmscle[0], info.pgmscl[0], kUnityScale);
    put_if(params, info.pgmscle[1], info.pgmscl[1], kUnityScale);
    put_if(params, info.extpgmscle, info.extpgmscl, kUnityScale);
    put_if(params, info.paninfoe[0], info.paninfo[0], 0);
    put_if(params, info.paninfoe[1], info.paninfo[1], 0);
    put_if(params, info.paninfoe[0], info.panmean[0], 0);
    put_if(params, info.paninfoe[1], info.panmean[1], 0);
    put(params, info.lfemixlevcod);
    put(params, info.premixcmpsel);
    put(params, info.drcsrc);
    put(params, info.premixcmpscl);
    put_if(params, info.extpgmlscle, info.extpgmlscl, kOff);
    put_if(params, info.extpgmcscle, info.extpgmcscl, kOff);
    put_if(params, info.extpgmrscle, info.extpgmrscl, kOff);
    put_if(params, info.extpgmlsscle, info.extpgmlsscl, kOff);
    put_if(params, info.extpgmrsscle, info.extpgmrsscl, kOff);
    put_if(params, info.extpgmlfescle, info.extpgmlfescl, kOff);
    put_if(params, info.dmixscle, info.dmixscl, kOff);
    put_if(params, info.extpgmaux1scle, info.extpgmaux1scl, kOff);
    put_if(params, info.extpgmaux2scle, info.extpgmaux2scl, kOff);
    return kFmiGood;
}

int put_information(const BitstreamInfo& info, FrameParams& params) {
    put(params, info.bsmod);
    put(params, info.copyrightb);
    put(params, info.origbs);
    put(params, info.dsurmod);
    put(params, info.dsurexmod);
    put(params, info.dheadphonmod);
    put(params, info.langcod[0]);
    put(params, info.langcod[1]);
    for (std::size_t program = 0; program < 2; ++program) {
        put(params, info.audprodie[program]);
        put(params, info.roomtyp[program]);
        put(params, info.mixlevel[program]);
        put(params, info.adconvtyp[program]);
    }
    put(params, info.sourcefscod);
    return kFmiGood;
}

int put_dialnorm(const BitstreamInfo& info, FrameParams& params) {
    put(params, info.dialnorm[0]);
    put(params, info.dialnorm[1]);
    return kFmiGood;
}

int put_compr(const BitstreamInfo& info, FrameParams& params) {
    for (std::size_t program = 0; program < 2; ++program) {
        put(params, info.compre[program]);
        put_if(params, info.compre[program], info.compr[program], 0);
    }
    return kFmiGood;
}

int put_chanmap(const BitstreamInfo& info, FrameParams& params) {
    if (info.strmtyp != 1) {
        return kFmiAbsent;
    }
    put(params, info.chanmap);
    return kFmiGood;
}

int put_convsync(const BitstreamInfo& info, FrameParams& params) {
    put(params, info.convsync);
    return kFmiGood;
}

int put_blkid(const BitstreamInfo& info, FrameParams& params) {
    put(params, info.blkid);
    put(params, info.frmsizecod);
    return kFmiGood;
}

// Time codes of ETSI TS 102 366 4.4.2.27 and 4.4.2.28: the first counts to 8 seconds, the second
// the rest.
int put_timecode(const BitstreamInfo& info, FrameParams& params) {
    const bool has_syntax = info.bsid < 9 && info.bsid != 6;
    if (!has_syntax || (info.timecod1e == 0 && info.timecod2e == 0)) {
        for (int i = 0; i < 6; ++i) {
            put(params, 0);
        }
        return kFmiAbsent;
    }
    const unsigned first = info.timecod1e != 0 ? info.timecod1 : 0U;
    const unsigned second = info.timecod2e != 0 ? info.timecod2 : 0U;
    put(params, info.timecod2e != 0 ? 2 : 1);
    put(params, static_cast<std::uint16_t>(first >> 9U & 0x1FU));
    put(params, static_cast<std::uint16_t>(first >> 3U & 0x3FU));
    put(params, static_cast<std::uint16_t>((first & 7U) * 8 + (second >> 11U & 7U)));
    put(params, static_cast<std::uint16_t>(second >> 6U & 0x1FU));
    put(params, static_cast<std::uint16_t>(second & 0x3FU));
    return kFmiGood;
}

int put_addbsi(const FrameDescriptor& frame, const BitstreamInfo& info, FrameParams& params) {
    const BitPosition& position = info.addbsi_position;
    if (info.addbsie == 0 || position.word == nullptr) {
        return kFmiAbsent;
    }
    const std::ptrdiff_t index = position.word - frame.words;
    if (index < 0 || index > frame.capacity) {
        return kFmiAbsent;
    }
    BsodReader reader;
    bsod_init(frame.words, std::min(frame.valid_words, frame.capacity), index * 16 + position.bit,
              reader);
    const std::uint16_t length = info.addbsil + 1U;
    put(params, length);
    for (std::uint16_t i = 0; i < length; ++i) {
        put(params, bsod_unprj(reader, 8));
    }
    return kFmiGood;
}

bool is_whole(const FrameDescriptor& frame, std::uint16_t words) {
    return words <= frame.valid_words && words <= frame.capacity;
}

int put_auxdata(const FrameDescriptor& frame, const BitstreamInfo& info, FrameParams& params) {
    const std::uint16_t words = bsid_frame_words(info);
    if (!is_whole(frame, words)) {
        return kFmiNotEnoughData;
    }
    AuxField field;
    axdd_unp(frame.words, words, field);
    if (field.auxdatae == 0) {
        return kFmiAbsent;
    }
    if (!field.fits) {
        return kFmiNotEnoughData;
    }
    put(params, field.auxdatal);
    for (int left = field.auxdatal; left > 0; left -= 16) {
        put(params, bsod_unplj(field.data, std::min(left, 16)));
    }
    return kFmiGood;
}

int put_encinfo(const FrameDescriptor& frame, const BitstreamInfo& info, FrameParams& params) {
    if (!is_oap_bsid(info.bsid)) {
        if (info.bsid != 6 || info.xbsi2e == 0) {
            return kFmiAbsent;
        }
        put(params, info.encinfo);
        return kFmiGood;
    }
    const std::uint16_t words = bsid_frame_words(info);
    if (!is_whole(frame, words)) {
        return kFmiNotEnoughData;
    }
    BsodReader reader;
    bsod_init(frame.words, words, std::int64_t{words} * 16 - 17, reader);
    put(params, bsod_unprj(reader, 1));
    return kFmiGood;
}

}  // namespace

int getparamval(const FrameDescriptor& frame, const BitstreamInfo& info, int group,
                FrameParams& params) {
    params.count = 0;
    switch (group) {
        case kGroupFrame:
            return put_frame(info, params);
        case kGroupMixing:
            return put_mixing(info, params);
        case kGroupInformation:
            return put_information(info, params);
        case kGroupDialnorm:
            return put_dialnorm(info, params);
        case kGroupCompr:
            return put_compr(info, params);
        case kGroupChanmap:
            return put_chanmap(info, params);
        case kGroupConvsync:
            return put_convsync(info, params);
        case kGroupBlkid:
            return put_blkid(info, params);
        case kGroupTimecode:
            return put_timecode(info, params);
        case kGroupAddbsi:
            return put_addbsi(frame, info, params);
        case kGroupAuxdata:
            return put_auxdata(frame, info, params);
        case kGroupEncinfo:
            return put_encinfo(frame, info, params);
        default:
            return kFmiBadGroup;
    }
}

}  // namespace mediasplit
