#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "oapinfolib/src/bsid.h"
#include "oapinfolib/src/dit_fio.h"
#include "oapinfolib/src/timeslice.h"

// One frame in the frame buffer: its size, its CRC status, its header, and selected groups of its
// parameters.

namespace mediasplit {

inline constexpr int kFmiGood = 0;
inline constexpr int kFmiNotEnoughData = 1;
inline constexpr int kFmiUnsupportedBsid = 2;
inline constexpr int kFmiUnpackError = 3;
inline constexpr int kFmiAbsent = 4;    // the frame doesn't have the group
inline constexpr int kFmiBadGroup = 5;  // there is no such group
inline constexpr int kFmiCrcError = 6;  // the group's data lies behind a CRC error

// Parameter groups; the order of the words of each stands with getparamval.
enum ParamGroup : int {
    kGroupFrame = 0,
    kGroupMixing = 1,
    kGroupInformation = 2,
    kGroupDialnorm = 3,
    kGroupCompr = 4,
    kGroupChanmap = 5,
    kGroupConvsync = 6,
    kGroupBlkid = 7,
    kGroupTimecode = 8,
    kGroupAddbsi = 9,
    kGroupAuxdata = 10,
    kGroupEncinfo = 11,
};

inline constexpr std::size_t kMaxParamWords = kMaxAuxWords + 1;

// Words of a parameter group; words behind `count` say nothing. -1 stands as 0xFFFF.
struct FrameParams {
    std::size_t count = 0;
    std::array<std::uint16_t, kMaxParamWords> word{};
};

struct FrameHandle {
    const std::uint16_t* buffer = nullptr;  // null while no frame is open
    FrameStatus status = kStatusUnknown;
    BitstreamInfo info{};
    BsodReader reader{};
};

// Bytes of a FrameHandle. 0.
int oapi_fmi_query(std::size_t& size);

// Opens the frame at the start of the buffer and gives its size in 16-bit words. Three valid words
// are enough. 0, kFmiUnsupportedBsid, or kFmiUnpackError.
int oapi_fmi_openframe(FrameHandle& handle, const FrameDescriptor& frame,
                       std::uint16_t& frame_words);

// Gives the words of one parameter group and the status of the frame, whose CRC is checked and
// whose header is unpacked on the first call.
int oapi_fmi_getframeparam(FrameHandle& handle, const FrameDescriptor& frame, int group,
                           FrameParams& params, FrameStatus& status);

// Does the CRC check and the unpacking alone.
int oapi_fmi_checkframe(FrameHandle& handle, const FrameDescriptor& frame, FrameStatus& status);

// Ends the work on the frame. 0.
int oapi_fmi_closeframe(FrameHandle& handle);

// Gives the words of a group from an unpacked header (`info`) and, for groups 9 to 11, from the
// frame. kFmiAbsent, kFmiBadGroup, and kFmiNotEnoughData if the frame doesn't hold what group 10
// needs.
//   0 bsid, sample rate in Hz, strmtyp, substreamid, blocks per frame, acmod, lfeon
//   1 mixing: dmixmod, cmixlev, surmixlev, ltrtcmixlev, ltrtsurmixlev, lorocmixlev, lorosurmixlev,
//     pgmscl (2), extpgmscl, paninfo (2), panmean (2), lfemixlevcod, premixcmpsel, drcsrc,
//     premixcmpscl, then -1 where off: extpgmlscl, extpgmcscl, extpgmrscl, extpgmlsscl,
//     extpgmrsscl, extpgmlfescl, dmixscl, extpgmaux1scl, extpgmaux2scl
//   2 bsmod, copyrightb, origbs, dsurmod, dsurexmod, dheadphonmod, langcod (2), then twice
//     audprodie, roomtyp, mixlevel, adconvtyp, then sourcefscod
//   3 dialnorm (2)
//   4 compre, compr, and the same of the second program
//   5 chanmap, of a dependent frame alone
//   6 convsync
//   7 blkid, frmsizecod
//   8 which time code came last (1 or 2), hours, minutes, seconds, frames, 1/64 frames
//   9 bytes of addbsi, then one byte a word
//  10 bits of auxiliary data, then the data left-justified
//  11 encinfo
int getparamval(const FrameDescriptor& frame, const BitstreamInfo& info, int group,
                FrameParams& params);

}  // namespace mediasplit
