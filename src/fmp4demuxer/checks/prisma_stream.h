// An enhancement track and what the manifest says of it, as its checks want it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "src/dash_reader/dash_info.h"
#include "src/fmp4demuxer/checks/manifest_records.h"
#include "src/fmp4demuxer/checks/prisma_message.h"
#include "src/log/logging.h"
#include "src/log/status.h"
#include "src/mp4demuxer/records.h"

namespace mediasplit {

// "codecs" of the Representation, or of its AdaptationSet, and behind commas those of the
// Representations with the same initialization segment (texts of under 100 characters). A comma
// stands also for one without the attribute. At most 512 characters.
[[nodiscard]] std::string join_dash_codecs(const ManifestRecords& records);

// The AdaptationSet of a Representation with a shared initialization segment, or null.
[[nodiscard]] const DashAdaptationSetInfo* adaptation_set_of(const ManifestRecords& records,
                                                             const DashRepresentationInfo& shared);

// The values of one rule's messages.
struct RuleDetail {
    std::string_view expected{};
    std::string_view actual{};
    std::string_view scheme{};
    std::uint32_t expected_number = 0;
    std::uint32_t actual_number = 0;
};

// Whether there is such a track, with a configuration of the enhancement format.
[[nodiscard]] bool is_prisma_track(const Mp4Demuxer& demuxer, std::uint32_t stream_index);

// A track with a configuration of the enhancement format. It refers to the demultiplexer.
struct PrismaStream {
    PrismaStream(const Mp4Demuxer& from, std::uint32_t stream_index);

    const Mp4Demuxer& demuxer;
    const Mp4Stream& stream;
    const PxConfig& config;
    ManifestRecords manifest{};
    std::string codecs{};          // the manifest's list
    std::string expected_codec{};  // of the enhancement format, empty if none fits
    std::string profile_text{};    // "8.1"

    // Fills `manifest` and `codecs`: the joined list of a Representation, or the variant stream's.
    // A broken chain of records raises 3006, whose result is returned.
    [[nodiscard]] Status find_manifest();

    [[nodiscard]] Loglist* loglist() const { return demuxer.loglist; }
    [[nodiscard]] bool has_entry(std::uint32_t flags) const {
        return (stream.box_flags & flags) != 0;
    }

    // Applies a rule of a table; one without a number holds always.
    [[nodiscard]] Status check(bool holds, const RuleMessage& message,
                               const RuleDetail& detail = {}) const;
    // Applies the form of the rule that the manifest asks for; a plain file has none.
    [[nodiscard]] Status check(bool holds, const ManifestRule& manifest_rule,
                               const RuleDetail& detail = {}) const;
};

}  // namespace mediasplit
