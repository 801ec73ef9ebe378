// An audio track without samples under a manifest that a test writes: what its sample entry raises.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ac4/descriptor_generator/dsi_record.h"
#include "src/fmp4demuxer/dash_context.h"
#include "src/log/loglist.h"
#include "tests/support/mp4_builder.h"
#include "tests/support/mpd_reading.h"
#include "tests/support/recording_sink.h"
#include "tests/unit/fmp4demuxer/demux_run.h"

namespace mediasplit {

using Ids = std::vector<int>;

inline const std::string kLive = "urn:mpeg:dash:profile:isoff-live:2011";
inline const std::string kOnDemand = "urn:mpeg:dash:profile:isoff-on-demand:2011";

// An element <name schemeIdUri="scheme" value="value"/>; without "value" for nullopt.
std::string descriptor(const std::string& name, const std::string& scheme,
                       const std::optional<std::string>& value);
// A scheme of the vendor.
std::string vendor_scheme(const std::string& ending);

// One Period with the AdaptationSet "1" and the Representation "2", and whatever is put where.
struct AudioMpd {
    std::string profiles{};
    std::string set_attributes = R"(mimeType="audio/mp4")";
    std::string set_children{};
    std::string representation_attributes{};
    std::string representation_children{};
    std::string more_representations{};
    std::string more_elements{};  // of the Period
    bool set_has_id = true;

    [[nodiscard]] std::string text() const;
};

// Rule families that are active.
std::unique_ptr<Loglist> over_the_top_list();  // as in every run
std::unique_ptr<Loglist> broadcast_list();

struct Findings {
    Status status = Status::kOk;
    std::vector<RecordedReport> reports{};

    [[nodiscard]] Ids ids() const;
    // The text of the only report of a number.
    [[nodiscard]] std::string text(int id) const;
};

// Everything about an audio track that rules on its entry look at.
struct EntryTrack {
    std::string type = "ec-3";
    std::string handler = "soun";
    std::uint32_t time_scale = 48000;
    std::uint32_t channels = 2;
    std::uint32_t sample_size = 16;
    std::uint32_t sample_rate = 48000;
    bool has_smhd = true;
    std::optional<std::size_t> reserved_at{};  // byte of the entry that isn't zero
    std::vector<mp4::Bytes> boxes{};

    [[nodiscard]] mp4::Bytes segment() const;
};

EntryTrack ec3_track(const std::string& dec3);
EntryTrack ac4_track(const DsiRecord& record);

// A stereo programme in one presentation of the number 7.
DsiRecord stereo_record();
// Immersive stereo with its legacy presentation, of one number.
DsiRecord ims_record();

// Walks the track's initialization segment: of a plain file, of a Representation, of a rendition.
Findings find_in_file(const EntryTrack& track, std::unique_ptr<Loglist> loglist);
Findings find_in_dash(const EntryTrack& track, const AudioMpd& mpd,
                      std::unique_ptr<Loglist> loglist = over_the_top_list());
Findings find_in_playlist(const EntryTrack& track, ManifestContext& playlist);

}  // namespace mediasplit
