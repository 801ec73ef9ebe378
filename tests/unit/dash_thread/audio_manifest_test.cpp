// Manifests of E-AC-3 and AC-4, from the flow of a run down to the rules on their sample entries.
#include <algorithm>
#include <array>
#include <map>

#include "src/ac4analyze_impl/es_parser.h"
#include "src/main/flows/flows.h"
#include "src/records/run_options.h"
#include "tests/support/ac4_builder.h"
#include "tests/support/dsi_builder.h"
#include "tests/support/eac3_builder.h"
#include "tests/support/mp4_builder.h"
#include "tests/support/run_options_scope.h"
#include "tests/unit/dash_thread/dash_run.h"

namespace mediasplit {
namespace {

using mp4::Bytes;

constexpr std::size_t kSegmentSamples = 3;
constexpr std::size_t kSegments = 2;

mp4::MovieSpec movie_of(const Bytes& entry, const std::vector<Bytes>& frames,
                        std::uint32_t duration) {
    mp4::TrackSpec track;
    track.handler = "soun";
    track.time_scale = 48000;
    track.entries = {entry};
    for (const Bytes& frame : frames) {
        mp4::SampleSpec& sample = track.samples.emplace_back();
        sample.data = frame;
        sample.duration = duration;
    }
    mp4::MovieSpec movie;
    movie.tracks = {track};
    return movie;
}

mp4::MovieSpec ec3_movie() {
    const std::vector<Bytes> frames(kSegments * kSegmentSamples,
                                    test_support::build_eac3_frame({}));
    const Bytes entry =
        mp4::audio_entry("ec-3", 2, 16, 48000, {mp4::box("dec3", {mp4::hex("0600 20 0f 00")})});
    return movie_of(entry, frames, 1536);
}

mp4::MovieSpec ac4_movie() {
    std::vector<Bytes> frames;
    for (std::uint32_t i = 0; i < kSegments * kSegmentSamples; ++i) {
        BuildFrame frame = simple_stereo_frame();
        frame.sequence_counter = i + 1;
        frame.presentations[0].id = 7;
        frame.substreams = {{}, {}};
        frames.push_back(write_ac4_frame(frame));
    }
    const auto parser = ac4_es_parser_new(nullptr);
    const auto reference = ac4_es_parser_ref_dsi_init();
    const auto analysis = ac4_es_parser_init();
    EXPECT_EQ(ac4_es_parser_ref_dsi(*parser, frames[0], *reference, *analysis, 1, nullptr),
              Status::kOk);
    const Bytes entry = mp4::audio_entry("ac-4", 2, 16, 48000,
                                         {mp4::box("dac4", {write_dac4(record_of(*reference))})});
    return movie_of(entry, frames, 2048);
}

constexpr const char* kCicp6 =
    R"(<AudioChannelConfiguration schemeIdUri="urn:mpeg:mpegB:cicp:ChannelConfiguration" value="6"/>)";
constexpr const char* kCicp2 =
    R"(<AudioChannelConfiguration schemeIdUri="urn:mpeg:mpegB:cicp:ChannelConfiguration" value="2"/>)";

// What a manifest says of its two streams.
struct Told {
    std::string profiles = "urn:mpeg:dash:profile:isoff-live:2011";
    std::string ec3 = R"(mimeType="audio/mp4" codecs="ec-3" startWithSAP="1")";
    std::string ec3_children = kCicp6;
    std::string ac4 = R"(mimeType="audio/mp4" codecs="ac-4.02.01.00" startWithSAP="1")";
    std::string ac4_children = kCicp2;
    std::string preselections{};
};

// Rules on sample entries against manifests.
bool is_entry_rule(int id) {
    return (id >= 2036 && id <= 2047) || (id >= 4269 && id <= 4282) || (id >= 4293 && id <= 4302) ||
           (id >= 4339 && id <= 4386) || (id >= 4400 && id <= 4413) || id == 4489;
}

class AudioManifest : public DashRun {
protected:
    AudioManifest() {
        loglist_ = begin_run(FormatId::kDash);
        add_stream("ec3", ec3_movie());
        add_stream("ac4", ac4_movie());
    }

    // Segments of their own, and the same in one file with an index.
    void add_stream(const std::string& name, const mp4::MovieSpec& movie) {
        const std::string init = as_text(mp4::initialization_segment(movie));
        add(name + "_init.mp4", init);
        std::vector<Bytes> index = {mp4::u32(0), mp4::u32(1), mp4::u32(48000),    mp4::u32(0),
                                    mp4::u32(0), mp4::u16(0), mp4::u16(kSegments)};
        std::string all;
        for (std::size_t i = 0; i < kSegments; ++i) {
            const std::string segment = as_text(mp4::media_segment(
                movie, i * kSegmentSamples, kSegmentSamples, 0, static_cast<std::uint32_t>(i) + 1));
            add(name + "_" + std::to_string(i + 1) + ".mp4", segment);
            index.push_back(mp4::u32(segment.size()));
            index.push_back(mp4::zeros(8));
            all += segment;
        }
        const std::string sidx = as_text(mp4::box("sidx", index));
        add(name + ".mp4", init + sidx + all);
        init_size_[name] = init.size();
        index_end_[name] = init.size() + sidx.size() - 1;
    }

    std::string representation(const std::string& name, bool indexed) {
        const std::string head = R"(<Representation bandwidth="1" id=")" + name + "\">";
        if (indexed) {
            return head + "<BaseURL>" + name + R"(.mp4</BaseURL><SegmentBase indexRange=")" +
                   std::to_string(init_size_[name]) + "-" + std::to_string(index_end_[name]) +
                   R"("><Initialization range="0-)" + std::to_string(init_size_[name] - 1) +
                   R"("/></SegmentBase></Representation>)";
        }
        return head + R"(<SegmentList duration="2"><Initialization sourceURL=")" + name +
               R"(_init.mp4"/><SegmentURL media=")" + name + R"(_1.mp4"/><SegmentURL media=")" +
               name + R"(_2.mp4"/></SegmentList></Representation>)";
    }

    std::string mpd_of(const Told& told, bool indexed) {
        return R"(<MPD profiles=")" + told.profiles +
               R"("><Period duration="PT4S"><AdaptationSet id="1" )" + told.ec3 + ">" +
               told.ec3_children + representation("ec3", indexed) +
               R"(</AdaptationSet><AdaptationSet id="2" )" + told.ac4 + ">" + told.ac4_children +
               representation("ac4", indexed) + "</AdaptationSet>" + told.preselections +
               "</Period></MPD>";
    }

    // Runs the whole flow, a worker for each stream.
    Ids entry_ids(const Told& told, bool indexed = false) {
        sink_.clear();
        add("stream.mpd", mpd_of(told, indexed));
        g_input = "stream.mpd";
        EXPECT_FALSE(has_failed(run_dash(loglist_.get())));
        return sorted_entry_ids();
    }

    [[nodiscard]] Ids sorted_entry_ids() const {
        Ids result;
        for (const int id : sink_.ids()) {
            if (is_entry_rule(id)) {
                result.push_back(id);
            }
        }
        std::sort(result.begin(), result.end());
        return result;
    }

    std::map<std::string, std::size_t> init_size_{};
    std::map<std::string, std::size_t> index_end_{};
    RunOptionsScope scope_;
};

Told on_demand() {
    Told told;
    told.profiles = "urn:mpeg:dash:profile:isoff-on-demand:2011";
    told.ec3 = R"(mimeType="audio/mp4" codecs="ec-3" subsegmentStartsWithSAP="1")";
    told.ac4 = R"(mimeType="audio/mp4" codecs="ac-4.02.01.00" subsegmentStartsWithSAP="1")";
    return told;
}

TEST_F(AudioManifest, RightOnesRaiseNothing) {
    EXPECT_EQ(entry_ids({}), Ids{});
    EXPECT_EQ(entry_ids(on_demand(), true), Ids{});
    // The rules were looked at all the same.
    for (const int id : {4269, 4270, 4273, 4275, 4277, 4282, 4293, 4294, 4339, 4341, 4342, 4343,
                         4347, 4351, 4400, 4402, 4410, 4412}) {
        EXPECT_TRUE(sink_.was_evaluated(id)) << id;
    }
}

TEST_F(AudioManifest, EachStreamIsHeldAgainstItsRepresentation) {
    Told told;
    told.ec3 = R"(mimeType="audio/mp4" codecs="ac-4.02.01.00")";
    told.ec3_children = kCicp2;
    told.ac4 = R"(mimeType="video/mp4" codecs="ec-3")";
    told.ac4_children = kCicp6;
    EXPECT_EQ(entry_ids(told), (Ids{4269, 4273, 4276, 4339, 4340, 4342, 4343}));
    for (const RecordedReport& report : sink_.reports()) {
        if (is_entry_rule(report.id)) {
            EXPECT_EQ(report.stream.find(report.id < 4300 ? "ec3" : "ac4") != std::string::npos,
                      true)
                << report.id << " of " << report.stream;
        }
    }
}

TEST_F(AudioManifest, OnDemandOnesHaveTheirOwnRules) {
    Told told = on_demand();
    told.ec3 = R"(mimeType="audio/mp4" codecs="ec-3" startWithSAP="2")";
    told.ac4 = R"(mimeType="audio/mp4" codecs="ac-4.02.01.00" startWithSAP="2")";
    EXPECT_EQ(entry_ids(told, true), (Ids{2037, 2042, 4277, 4341}));
}

TEST_F(AudioManifest, BroadcastRulesRunWithTheirFamilyOnly) {
    const std::string preselection =
        R"(<Preselection id="30" preselectionComponents="2" tag="8" codecs="ac-4.02.01.00" )"
        R"(audioSamplingRate="48000">)" +
        std::string(kCicp2) + "</Preselection>";
    Told told;
    told.preselections = preselection;
    EXPECT_EQ(entry_ids(told), Ids{});
    constexpr std::array<CheckpointText, 2> kActive{{{"210000"}, {"320000"}}};
    loglist_ = init_loglist(kActive.size(), kActive.data());
    for (const char* tag : {"7", "8"}) {
        sink_.clear();
        std::string mpd = mpd_of(told, false);
        mpd.replace(mpd.find("tag=\"") + 5, 1, tag);
        representation_ = "ac4";
        play(mpd);
        EXPECT_FALSE(has_failed(status_));
        EXPECT_EQ(sorted_entry_ids(), tag == std::string("7") ? Ids{} : (Ids{2045, 4359}));
        EXPECT_TRUE(sink_.was_evaluated(4364));
    }
}

}  // namespace
}  // namespace mediasplit
