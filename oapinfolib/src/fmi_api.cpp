#include "oapinfolib/src/fmi_api.h"

#include <algorithm>

#include "oapinfolib/src/bsid_tables.h"
#include "oapinfolib/src/crc.h"
#include "oapinfolib/src/fatal.h"

namespace mediasplit {

namespace {

constexpr FatalSite kSiteShortOap{kSourceFmiApi, 188};
constexpr FatalSite kSiteShortOa{kSourceFmiApi, 208};

// The first three words, which the frame's size comes from, are in the buffer for any size coded
// there.
constexpr std::uint16_t kSizeWords = 3;

int refuse_short(FatalSite site) {
    return refuse(kFmiNotEnoughData, "Insufficient data in input frame buffer", site);
}

void open_reader(const FrameDescriptor& frame, BsodReader& reader) {
    const std::uint16_t readable =
        std::min<std::uint16_t>(std::max(frame.valid_words, kSizeWords), frame.capacity);
    bsod_init(frame.words, readable, 0, reader);
}

int map_bsid_result(int result) {
    if (result == kBsidUnsupported) {
        return kFmiUnsupportedBsid;
    }
    return result == kBsidGood ? kFmiGood : kFmiUnpackError;
}

int check_crc_oap(const FrameHandle& handle, const FrameDescriptor& frame, FrameStatus& status) {
    if (frame.valid_words < handle.info.frmsiz) {
        return refuse_short(kSiteShortOap);
    }
    const std::uint16_t residue = crc_calcfwd(frame.words + 1, handle.info.frmsiz - 1U);
    status = residue == 0 ? kStatusGood : kStatusFullError;
    return kFmiGood;
}

int check_crc_oa(const FrameHandle& handle, const FrameDescriptor& frame, FrameStatus& status) {
    const std::uint16_t words = bsid_frame_words(handle.info);
    if (frame.valid_words < words) {
        return refuse_short(kSiteShortOa);
    }
    switch (crc_chkoafrm(words, frame.words)) {
        case kCrcGood:
            status = kStatusGood;
            break;
        case kCrcErrorFirstPart:
            status = kStatusFullError;
            break;
        default:
            status = kStatusPartialError;
            break;
    }
    return kFmiGood;
}

}  // namespace

static_assert(sizeof(void*) != 8 || sizeof(FrameHandle) == 344);

int oapi_fmi_query(std::size_t& size) {
    size = sizeof(FrameHandle);
    return 0;
}

int oapi_fmi_openframe(FrameHandle& handle, const FrameDescriptor& frame,
                       std::uint16_t& frame_words) {
    frame_words = 0;
    handle.status = kStatusUnknown;
    handle.buffer = frame.words;
    open_reader(frame, handle.reader);
    return map_bsid_result(bsid_getfrmsize(handle.reader, handle.info, frame_words));
}

int oapi_fmi_checkframe(FrameHandle& handle, const FrameDescriptor& frame, FrameStatus& status) {
    status = handle.status;
    if (handle.buffer == nullptr) {
        return kFmiUnpackError;
    }
    if (handle.status != kStatusUnknown) {
        return kFmiGood;
    }
    // The size and CRC checks lean on what opening the frame has found.
    FrameStatus found = kStatusUnknown;
    int result = kFmiUnsupportedBsid;
    if (is_oap_bsid(handle.info.bsid)) {
        result = check_crc_oap(handle, frame, found);
    } else if (is_oa_bsid(handle.info.bsid)) {
        result = check_crc_oa(handle, frame, found);
    }
    if (result == kFmiGood) {
        open_reader(frame, handle.reader);
        result = map_bsid_result(bsid_unp(handle.reader, handle.info));
    }
    if (result == kFmiGood) {
        handle.status = found;
        status = found;
    }
    return result;
}

int oapi_fmi_getframeparam(FrameHandle& handle, const FrameDescriptor& frame, int group,
                           FrameParams& params, FrameStatus& status) {
    params.count = 0;
    int result = oapi_fmi_checkframe(handle, frame, status);
    if (result == kFmiGood) {
        result = getparamval(frame, handle.info, group, params);
    }
    if (result != kFmiGood) {
        return result;
    }
    if (status == kStatusFullError) {
        return kFmiCrcError;
    }
    const bool at_end =
        group == kGroupAuxdata || (group == kGroupEncinfo && is_oap_bsid(handle.info.bsid));
    return status == kStatusPartialError && at_end ? kFmiCrcError : kFmiGood;
}

int oapi_fmi_closeframe(FrameHandle& handle) {
    handle.status = kStatusUnknown;
    handle.buffer = nullptr;
    return 0;
}

}  // namespace mediasplit
