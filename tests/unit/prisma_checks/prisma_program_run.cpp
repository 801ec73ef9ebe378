// Scenarios as files, for runs of the whole program.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "src/dash_reader/property_schemes.h"
#include "src/main/run.h"
#include "tests/support/recording_sink.h"
#include "tests/support/run_options_scope.h"
#include "tests/support/temp_folder.h"
#include "tests/unit/prisma_checks/prisma_scenario.h"

namespace mediasplit {
namespace {

using Text = std::optional<std::string>;

std::string text_of(const mp4::Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

std::string attribute(const std::string& name, const Text& value) {
    return value ? " " + name + "=\"" + *value + "\"" : "";
}

std::string descriptor(const std::string& element, const char* scheme,
                       const DashDescriptorText& text) {
    if (!text.scheme_id_uri) {
        return {};
    }
    return "<" + element + " schemeIdUri=\"" + scheme + "\"" + attribute("value", text.value) +
           "/>\n";
}

template <typename Record>
std::string colour_descriptors(const std::string& element, const Record& record) {
    return descriptor(element, kColourPrimariesScheme, record.colour_primaries) +
           descriptor(element, kMatrixCoefficientsScheme, record.matrix_coefficients) +
           descriptor(element, kTransferCharacteristicsScheme, record.transfer_characteristics);
}

std::string representation_text(const DashRepresentationInfo& record, const std::string& id) {
    return "<Representation id=\"" + id + "\" bandwidth=\"1000\"" +
           attribute("codecs", record.codecs) +
           attribute("scte214:supplementalCodecs", record.supplementalCodecs) +
           attribute("scte214:supplementalProfiles", record.supplementalProfiles) +
           attribute("segmentProfiles", record.segmentProfiles) + ">\n" +
           colour_descriptors("EssentialProperty", record) + "</Representation>\n";
}

std::string manifest_text(const DashInfo& mpd) {
    const DashPeriodInfo& period = mpd.periods.front();
    const DashRepresentationInfo& own = period.representations.front();
    std::string text =
        "<MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\" "
        "mediaPresentationDuration=\"PT2S\" profiles=\"urn:mpeg:dash:profile:isoff-live:2011\"" +
        attribute("xmlns:scte214", mpd.xmlns_scte214) + ">\n<Period id=\"p\">\n";
    for (std::uint32_t set = 0; set < period.adaptation_sets.size(); ++set) {
        const DashAdaptationSetInfo& record = period.adaptation_sets[set];
        std::string inside;
        if (set == own.adaptation_set_index) {
            inside += representation_text(own, *own.id);
        }
        for (std::size_t i = 0; i < own.shared_init_representations.size(); ++i) {
            const DashRepresentationInfo& shared = own.shared_init_representations[i];
            if (shared.adaptation_set_index == set) {
                inside += representation_text(shared, "s" + std::to_string(i));
            }
        }
        if (!inside.empty()) {
            text += "<AdaptationSet" + attribute("mimeType", record.mimeType) + ">\n" +
                    colour_descriptors("SupplementalProperty", record) +
                    "<SegmentTemplate initialization=\"init.mp4\" media=\"s$Number$.mp4\" "
                    "duration=\"2\"/>\n" +
                    inside + "</AdaptationSet>\n";
        }
    }
    return text + "</Period>\n</MPD>\n";
}

std::string stream_attributes(const ManifestContext& context, const Text& codecs) {
    const auto quoted = [](const char* name, const Text& value) {
        return value ? std::string(",") + name + "=\"" + *value + "\"" : std::string{};
    };
    return "BANDWIDTH=1000" + quoted("CODECS", codecs) +
           quoted("SUPPLEMENTAL-CODECS", context.supplemental_codecs) +
           (context.video_range ? ",VIDEO-RANGE=" + *context.video_range : "") +
           quoted("REQ-VIDEO-LAYOUT", context.req_video_layout);
}

std::string playlist_text(const Scenario& s) {
    const ManifestContext& context = s.context;
    std::string text = "#EXTM3U\n#EXT-X-VERSION:" + std::to_string(context.hls_version) + "\n";
    if (s.mode == kInputHlsIframe) {
        return text +
               "#EXT-X-I-FRAME-STREAM-INF:" + stream_attributes(context, context.variant_codecs) +
               ",URI=\"stream.m3u8\"\n"
               "#EXT-X-STREAM-INF:FRAME-RATE=25,BANDWIDTH=1000,CODECS=\"avc1.64001f\"\n"
               "plain.m3u8\n";
    }
    for (const Text* codecs :
         {&context.variant_codecs, &context.duplicate_codecs_1, &context.duplicate_codecs_2}) {
        if (codecs->has_value()) {
            text += "#EXT-X-STREAM-INF:FRAME-RATE=25," + stream_attributes(context, *codecs) +
                    "\nstream.m3u8\n";
        }
    }
    return text;
}

std::string media_playlist(const std::string& init, const std::string& segment,
                           const std::string& tags = "") {
    return "#EXTM3U\n#EXT-X-VERSION:7\n#EXT-X-TARGETDURATION:2\n" + tags + "#EXT-X-MAP:URI=\"" +
           init + "\"\n#EXTINF:2,\n" + segment + "\n#EXT-X-ENDLIST\n";
}

// Of one sample of 2 s, the given one or an empty unit.
mp4::Bytes built_segment(const mp4::Bytes& data) {
    mp4::MovieSpec movie;
    mp4::TrackSpec track;
    mp4::SampleSpec sample;
    sample.duration = 2000;
    sample.data = data.empty() ? mp4::Bytes{0, 0, 0, 1, 0x40} : data;
    track.samples = {sample};
    movie.tracks = {track};
    return mp4::media_segment(movie, 0, 1, 0);
}

std::string write_input(const Scenario& s, const TempFolder& folder) {
    const auto write = [&folder](const char* name, const mp4::Bytes& bytes) {
        return folder.write(name, text_of(bytes));
    };
    if (s.mode == kInputFile) {
        return write("in.mp4", s.files ? s.files->whole : s.bytes());
    }
    (void)write("init.mp4", s.files ? s.files->initialization : s.initialization());
    (void)write("s1.mp4", s.files ? s.files->segment : built_segment(s.sample));
    if (s.mode == kInputDash) {
        return folder.write("stream.mpd", manifest_text(s.mpd));
    }
    const char* const tags = s.mode == kInputHlsIframe ? "#EXT-X-I-FRAMES-ONLY\n" : "";
    (void)folder.write("stream.m3u8", media_playlist("init.mp4", "s1.mp4", tags));
    // A master playlist has to have a variant stream beside the I-frame stream.
    Scenario plain;
    plain.entry = "avc1";
    plain.config_box.clear();
    (void)write("plain_init.mp4", plain.initialization());
    (void)write("plain_s1.mp4", built_segment({}));
    (void)folder.write("plain.m3u8", media_playlist("plain_init.mp4", "plain_s1.mp4"));
    return folder.write("master.m3u8", playlist_text(s));
}

}  // namespace

ScenarioResult run_program_on(const Scenario& scenario) {
    const TempFolder folder;
    const WorkingDirectory inside(folder.path());
    const RunOptionsScope scope;
    const RecordingSink sink;
    const std::string input = write_input(scenario, folder);
    const std::string output = folder.path("out");
    const char* const arguments[] = {"mediasplit", "-i", input.c_str(), "-o", output.c_str()};
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    ScenarioResult result;
    result.status =
        static_cast<Status>(run_program(static_cast<int>(std::size(arguments)), arguments));
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    result.take(sink);
    return result;
}

}  // namespace mediasplit
