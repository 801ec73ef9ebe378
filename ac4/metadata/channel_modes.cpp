#include "ac4/metadata/channel_modes.h"

#include <array>
#include <cstddef>

namespace mediasplit {
namespace {

struct ModeRow {
    int code;  // prefix code times two
    std::uint32_t speakers;
};

constexpr std::uint32_t kFront = kHasCentre | kHasLeftRight;
constexpr std::uint32_t kFive = kFront | kHasSurround;

constexpr std::array<ModeRow, 17> kModes = {{
    {2, kHasCentre},                                // mono
    {4, kHasLeftRight},                             // stereo
    {24, kFront},                                   // 3.0
    {26, kFive},                                    // 5.0
    {28, kFive | kHasLfe},                          // 5.1
    {240, kFive | kHasBack},                        // 7.0, 3/4/0
    {242, kFive | kHasBack | kHasLfe},              // 7.1, 3/4/0.1
    {244, kFive | kHasWide},                        // 7.0, 5/2/0
    {246, kFive | kHasWide | kHasLfe},              // 7.1, 5/2/0.1
    {248, kFive | kHasTopFront},                    // 7.0, 3/2/2
    {250, kFive | kHasTopFront | kHasLfe},          // 7.1, 3/2/2.1
    {504, kFive | kHasBack},                        // 7.0.4
    {506, kFive | kHasBack | kHasLfe},              // 7.1.4
    {1016, kFive | kHasBack},                       // 9.0.4
    {1018, kFive | kHasBack | kHasLfe},             // 9.1.4
    {1020, kFive | kHasBack | kHasWide | kHasLfe},  // 22.2
    {1022, 0},                                      // reserved
}};

constexpr int kStereo = 1;

}  // namespace

std::uint32_t ch_mode_speakers(int ch_mode) {
    const auto row = static_cast<std::size_t>(ch_mode);
    return ch_mode >= 0 && row < kModes.size() ? kModes[row].speakers : 0;
}

int ch_mode_from_code(int code) {
    if (code == 8 || code == 10) {  // immersive stereo, by kind of source
        return kStereo;
    }
    for (std::size_t row = 0; row < kModes.size(); ++row) {
        if (kModes[row].code == code) {
            return static_cast<int>(row);
        }
    }
    return kNoChannelMode;
}

int core_ch_mode_from_code(int code) {
    struct CoreRow {
        int code;
        int mode;
    };
    constexpr std::array<CoreRow, 4> kCores = {{{26, 3}, {28, 4}, {248, 5}, {250, 6}}};
    for (const CoreRow& row : kCores) {
        if (row.code == code) {
            return row.mode;
        }
    }
    return kNoChannelMode;
}

}  // namespace mediasplit
