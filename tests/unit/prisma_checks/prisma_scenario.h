// An enhancement stream and its manifest, built from a description and run through the driver.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "src/dash_reader/dash_info.h"
#include "src/fmp4demuxer/fmp4demux.h"
#include "src/records/manifest_context.h"
#include "tests/support/mp4_builder.h"
#include "tests/support/recording_sink.h"

namespace mediasplit {

struct ColourBox {
    std::string type = "nclx";
    std::uint16_t primaries = 9;
    std::uint16_t transfer = 16;
    std::uint16_t matrix = 9;
};

// Files from elsewhere.
struct ScenarioFiles {
    mp4::Bytes whole{};
    mp4::Bytes initialization{};
    mp4::Bytes segment{};
};

struct Scenario {
    std::uint32_t mode = kInputFile;
    std::string entry = "hev1";
    std::string config_box = "pxvC";  // empty: none
    std::uint32_t profile = 8;
    std::uint32_t level = 2;
    std::uint32_t compatible_id = 1;
    std::uint32_t md_compression = 0;
    std::uint32_t major = 1;
    std::uint32_t minor = 0;
    std::uint32_t rpu = 1;
    std::uint32_t base_layer = 1;
    std::uint32_t enhancement_layer = 0;
    bool has_codec_box = true;
    bool has_lhvC = false;
    std::uint8_t hevc_profile = 1;
    std::uint8_t hevc_level = 120;
    std::uint8_t vps_profile = 1;
    std::uint8_t vps_layers_minus1 = 0;
    std::uint8_t primaries = 9;
    std::uint8_t transfer = 16;
    std::uint8_t matrix = 9;
    std::uint32_t rate = 25;
    std::optional<ColourBox> colr{};
    std::vector<std::string> brands{"orv1", "pb1p", "pb2g", "cmfc"};
    std::string handler = "vide";
    bool has_vmhd = true;
    std::vector<std::string> checkpoints{"210000", "330000", "430000", "310000",
                                         "410000", "440000", "450000"};
    std::uint32_t slot_kind = 2;  // an initialization segment
    mp4::Bytes sample{};          // the only one of the track; without bytes there is none

    std::optional<ScenarioFiles> files{};  // in place of those built; for whole runs only

    DashInfo mpd{};  // one Period, two AdaptationSets
    ManifestContext context{};

    Scenario();
    DashPeriodInfo& period() { return mpd.periods.front(); }
    DashAdaptationSetInfo& set() { return period().adaptation_sets.front(); }
    DashRepresentationInfo& representation() { return period().representations.front(); }
    // A Representation with the same initialization segment.
    void share(const std::string& codecs, std::uint32_t adaptation_set_index);
    void set_codecs(const std::string& codecs);
    // Names the enhancement codec beside the base layer's: in a Representation bare.
    void set_supplement(const std::string& codec, const std::string& brand);
    void drop_supplement();

    // The whole file, and the same as an initialization segment.
    [[nodiscard]] mp4::Bytes bytes() const;
    [[nodiscard]] mp4::Bytes initialization() const;
};

struct ScenarioResult {
    std::vector<int> ids{};  // of warnings and errors, in order
    std::vector<std::string> texts{};
    std::set<int> evaluated{};
    Status status = Status::kOk;
    void take(const RecordingSink& sink);
    [[nodiscard]] bool raised(int id) const;
    [[nodiscard]] std::string text(int id) const;
};

// Runs the driver over the file, with the records of the manifest as the scenario has them.
ScenarioResult run(Scenario scenario);

// Writes file and manifest into a folder and runs the program on them, with its own checkpoints.
ScenarioResult run_program_on(const Scenario& scenario);

// Streams that break no rule of their profile. Those that are backward compatible stand once in the
// manifest, by the codec of their base layer, with the enhancement codec as supplement.
Scenario profile_8(std::uint32_t mode);
Scenario profile_9(std::uint32_t mode);
Scenario profile_10(std::uint32_t mode);
Scenario profile_5(std::uint32_t mode);
Scenario profile_4(std::uint32_t mode);
Scenario profile_20(std::uint32_t mode);
Scenario newer_profile(std::uint32_t profile, std::uint32_t mode = kInputFile);
inline Scenario profile_32(std::uint32_t mode) {
    return newer_profile(32, mode);
}
inline Scenario profile_34(std::uint32_t mode) {
    return newer_profile(34, mode);
}

// The same streams where the manifest names each of the two codecs in a place of its own.
Scenario profile_8_in_two(std::uint32_t mode);
Scenario profile_9_in_two(std::uint32_t mode);
// An AV1 stream without base layer.
Scenario profile_10_alone(std::uint32_t mode);

inline constexpr const char* kHevcCodec = "hev1.1.6.L120.90";
inline constexpr const char* kAvcCodec = "avc1.64001f";
inline constexpr const char* kAv1Codec = "av01.0.04M.10.0.110.09.16.09.0";

}  // namespace mediasplit
