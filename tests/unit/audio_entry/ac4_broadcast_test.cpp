// AC-4 sample entries under broadcast manifests.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <map>

#include "src/fmp4demuxer/checks/ac4_broadcast.h"
#include "src/fmp4demuxer/checks/ac4_preselection.h"
#include "tests/unit/audio_entry/dash_entry.h"

namespace mediasplit {
namespace {

const std::string kCicpScheme = "urn:mpeg:mpegB:cicp:ChannelConfiguration";
const std::string kRoleScheme = "urn:mpeg:dash:role:2011";
const std::string kPurposeScheme = "urn:tva:metadata:cs:AudioPurposeCS:2007";
const std::string kPreselectionUri = "urn:mpeg:dash:preselection:2016";

std::string channels() {
    return descriptor("AudioChannelConfiguration", kCicpScheme, "2");
}

// A Preselection that breaks no rule for stereo_record().
struct PreselectionSpec {
    std::map<std::string, std::string> attributes = {{"id", "30"},
                                                     {"preselectionComponents", "1"},
                                                     {"tag", "7"},
                                                     {"codecs", "ac-4.02.01.03"},
                                                     {"audioSamplingRate", "48000"}};
    std::string children = channels();

    [[nodiscard]] std::string text() const {
        std::string out = "<Preselection";
        for (const auto& [name, value] : attributes) {
            out += " " + name + "=\"" + value + "\"";
        }
        return out + ">" + children + "</Preselection>";
    }
};

struct Broadcast {
    DsiRecord record = stereo_record();
    AudioMpd mpd{};
    std::vector<PreselectionSpec> preselections = {PreselectionSpec{}};

    Broadcast() { mpd.set_attributes = R"(mimeType="audio/mp4" codecs="ac-4.02.01.03")"; }

    [[nodiscard]] Findings find() const { return find_of(ac4_track(record)); }
    [[nodiscard]] Findings find_of(const EntryTrack& track) const {
        AudioMpd whole = mpd;
        for (const PreselectionSpec& preselection : preselections) {
            whole.more_elements += preselection.text();
        }
        return find_in_dash(track, whole, broadcast_list());
    }
    [[nodiscard]] Ids ids() const { return find().ids(); }
    DsiPresentation& presentation() { return record.presentations[0]; }
    PreselectionSpec& preselection() { return preselections[0]; }
    std::string& attribute(const std::string& name) { return preselection().attributes[name]; }
    void erase(const std::string& name) { preselection().attributes.erase(name); }
    // A second Preselection of the set, of the same presentation.
    void share() {
        preselections.push_back(preselections[0]);
        preselections[1].attributes["id"] = "31";
    }
    // A content classifier and a language of the only substream group.
    void set_content(std::uint32_t classifier, const std::string& language = "") {
        DsiSubstreamGroup& group = presentation().groups[0];
        group.b_content_type = 1;
        group.content_classifier = classifier;
        group.b_language_indicator = language.empty() ? 0 : 1;
        group.n_language_tag_bytes = static_cast<std::uint32_t>(language.size());
        group.language_tag_bytes = language;
    }
    // A presentation that has another part in another set.
    void spread() {
        DsiPresentation& spread = presentation();
        spread.presentation_config_v1 = 0;
        spread.b_multi_pid = 1;
        spread.groups.push_back(spread.groups[0]);
        spread.groups[1].b_substreams_present = 0;
    }
};

TEST(Ac4Broadcast, GoodManifestHasNoFinding) {
    const Findings findings = Broadcast().find();
    EXPECT_EQ(findings.ids(), Ids{});
    EXPECT_EQ(findings.status, Status::kOk);
}

TEST(Ac4Broadcast, RulesAreForItsFamilyAlone) {
    Broadcast broadcast;
    broadcast.preselections.clear();
    broadcast.mpd.set_children = channels();
    EXPECT_EQ(broadcast.ids(), Ids{2045});
    EXPECT_EQ(find_in_dash(ac4_track(broadcast.record), broadcast.mpd).ids(), Ids{});
}

// One change alone, and what it raises.
struct Row {
    Ids ids;
    std::function<void(Broadcast&)> change;
    std::string part{};  // of the first message
};

void expect_rows(const std::vector<Row>& rows) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        Broadcast broadcast;
        rows[i].change(broadcast);
        const Findings findings = broadcast.find();
        EXPECT_EQ(findings.ids(), rows[i].ids) << "row " << i;
        if (!rows[i].part.empty() && !findings.reports.empty()) {
            EXPECT_NE(findings.reports[0].text.find(rows[i].part), std::string::npos)
                << findings.reports[0].text;
        }
    }
}

// --- Preselections -------------------------------------------------------------------------------

TEST(Ac4BroadcastPreselection, TagPointsAtAPresentation) {
    expect_rows({
        {{4358, 2045}, [](Broadcast& b) { b.erase("tag"); }},
        {{4357, 4359, 2045}, [](Broadcast& b) { b.attribute("tag") = "x"; }, "value: x"},
        {{4357, 4359, 2045}, [](Broadcast& b) { b.attribute("tag") = ""; }},
        {{4357, 4359, 2045}, [](Broadcast& b) { b.attribute("tag") = "-7"; }},
        {{4359, 2045},
         [](Broadcast& b) { b.attribute("tag") = "8"; },
         "\"tag\" [value: 8] in the Preselection [id : 30]"},
        // 7 modulo 2^32.
        {{4359, 2045}, [](Broadcast& b) { b.attribute("tag") = "4294967303"; }},
        {{}, [](Broadcast& b) { b.attribute("tag") = "007"; }},
        {{},
         [](Broadcast& b) {
             b.presentation().b_extended_presentation_id = 1;
             b.presentation().extended_presentation_id = 300;
             b.attribute("tag") = "300";
         }},
        {{4359, 2045}, [](Broadcast& b) { b.presentation().b_presentation_id = 0; }},
    });
}

TEST(Ac4BroadcastPreselection, CodecsAreThoseOfThePresentation) {
    expect_rows({
        {{4371}, [](Broadcast& b) { b.erase("codecs"); }, "[id : 30]"},
        {{4370},
         [](Broadcast& b) { b.attribute("codecs") = "ac-4.02.01.04"; },
         "[id : 30] must be ac-4.02.01.03."},
        {{4367, 4370}, [](Broadcast& b) { b.attribute("codecs") = "mp4a.40.2"; }, "[id : 30]"},
        {{4367, 4370}, [](Broadcast& b) { b.attribute("codecs") = "ac-4"; }},
        {{4367, 4370}, [](Broadcast& b) { b.attribute("codecs") = "ac-4.02.01"; }},
        {{4367, 4370}, [](Broadcast& b) { b.attribute("codecs") = "ac-4.02.01.03.00"; }},
        {{4368, 4370}, [](Broadcast& b) { b.attribute("codecs") = "ac-4.2.01.03"; }, "[id : 30]"},
        {{4368, 4370}, [](Broadcast& b) { b.attribute("codecs") = "ac-4.02.0g.03"; }},
        {{4368, 4370}, [](Broadcast& b) { b.attribute("codecs") = "ac-4.02.01."; }},
        {{4368, 4370}, [](Broadcast& b) { b.attribute("codecs") = "ac-4..."; }},
    });
}

TEST(Ac4BroadcastPreselection, LevelOfARepresentationDoesNotExceedIt) {
    expect_rows({
        {{4370, 4369}, [](Broadcast& b) { b.attribute("codecs") = "ac-4.02.01.02"; }},
        // The level of the set may be lower.
        {{4364},
         [](Broadcast& b) {
             b.mpd.set_attributes = R"(mimeType="audio/mp4" codecs="ac-4.02.01.01")";
         }},
    });
    Broadcast broadcast;
    broadcast.attribute("codecs") = "ac-4.02.01.02";
    EXPECT_NE(broadcast.find().text(4369).find(
                  "level (value: 3) indicated in the \"codecs\" in the Representation [id : 2] "
                  "must not exceed the level (value: 2) indicated in the \"codecs\" in the "
                  "corresponding referencing Preselection [id : 30]"),
              std::string::npos);
}

TEST(Ac4BroadcastPreselection, SamplingRateIsThatOfThePresentation) {
    expect_rows({
        {{2046}, [](Broadcast& b) { b.erase("audioSamplingRate"); }, "[id : 30]"},
        {{4379},
         [](Broadcast& b) { b.attribute("audioSamplingRate") = "44100"; },
         "(expected audioSamplingRate value: 48000; actual value: 44100)"},
        {{4379}, [](Broadcast& b) { b.attribute("audioSamplingRate") = "48 kHz"; }},
        {{},
         [](Broadcast& b) {
             b.presentation().groups[0].substreams[0].dsi_sf_multiplier = 1;
             b.attribute("audioSamplingRate") = "96000";
         }},
        {{4379},
         [](Broadcast& b) { b.presentation().groups[0].substreams[0].dsi_sf_multiplier = 2; },
         "expected audioSamplingRate value: 192000"},
    });
}

TEST(Ac4BroadcastPreselection, LanguageIsThatOfThePresentation) {
    expect_rows({
        {{4382},
         [](Broadcast& b) { b.attribute("lang") = "en"; },
         "\"lang\" in the Preselection [id : 30]"},
        {{}, [](Broadcast& b) { b.set_content(0, "en"); }},
        {{},
         [](Broadcast& b) {
             b.set_content(0, "en");
             b.attribute("lang") = "eng";
         }},
        {{},
         [](Broadcast& b) {
             b.set_content(0, "es-MX");
             b.attribute("lang") = "es-MX";
         }},
        {{4381},
         [](Broadcast& b) {
             b.set_content(0, "en");
             b.attribute("lang") = "de";
         },
         "(expected lang value: en; actual value: de)"},
    });
}

TEST(Ac4BroadcastPreselection, ElementsThatItMustAndMustNotHave) {
    expect_rows({
        {{4378}, [](Broadcast& b) { b.preselection().children += "<Language>en</Language>"; }},
        {{4378}, [](Broadcast& b) { b.preselection().children += "<Language/>"; }},
        {{4347, 4383},
         [](Broadcast& b) {
             b.preselection().children = "";
             b.mpd.set_children = descriptor("AudioChannelConfiguration", "x", "2");
         }},
    });
    Broadcast broadcast;
    broadcast.preselection().children = "";
    EXPECT_NE(broadcast.find().text(4383).find("[id : 30]"), std::string::npos);
    EXPECT_EQ(broadcast.ids(), Ids{4383});
}

std::string for_the_visually_impaired() {
    return channels() + descriptor("Role", kRoleScheme, "alternate") +
           descriptor("Accessibility", kPurposeScheme, "1") +
           descriptor("Accessibility", kRoleScheme, "description");
}

TEST(Ac4BroadcastPreselection, VisuallyImpairedContentIsMarked) {
    expect_rows({
        {{4384, 4385, 2047}, [](Broadcast& b) { b.set_content(2); }, "[id: 30]"},
        {{},
         [](Broadcast& b) {
             b.set_content(2);
             b.preselection().children = for_the_visually_impaired();
         }},
        {{4384},
         [](Broadcast& b) {
             b.set_content(2);
             b.preselection().children = channels() + descriptor("Role", kRoleScheme, "main") +
                                         descriptor("Accessibility", kPurposeScheme, "1") +
                                         descriptor("Accessibility", kRoleScheme, "description");
         }},
        {{4385},
         [](Broadcast& b) {
             b.set_content(2);
             b.preselection().children = channels() + descriptor("Role", kRoleScheme, "alternate") +
                                         descriptor("Accessibility", kPurposeScheme, "1");
         },
         "[id: 30]"},
        {{2047},
         [](Broadcast& b) {
             b.set_content(2);
             b.preselection().children = channels() + descriptor("Role", kRoleScheme, "alternate") +
                                         descriptor("Accessibility", kRoleScheme, "description");
         }},
        // For the hearing impaired there is no rule.
        {{}, [](Broadcast& b) { b.set_content(3); }},
    });
}

TEST(Ac4BroadcastPreselection, FirstComponentHasTheMainOne) {
    const auto of_dialogue = [](Broadcast& b) {
        b.spread();
        b.set_content(4);
        b.mpd.set_children = descriptor("EssentialProperty", kPreselectionUri, {});
        b.mpd.set_attributes = R"(mimeType="audio/mp4" codecs="ac-4.02.01")";
    };
    const auto of_main = [&](Broadcast& b) {
        of_dialogue(b);
        b.set_content(1);
    };
    // No presentation of these is whole, which leaves the level out.
    expect_rows({
        {{4360, 2044},
         [&](Broadcast& b) {
             of_dialogue(b);
             b.attribute("preselectionComponents") = "1 5";
         },
         "in the Preselection [id : 30] must be the id"},
        {{2044},
         [&](Broadcast& b) {
             of_dialogue(b);
             b.attribute("preselectionComponents") = "5 1";
         }},
        {{2044},
         [&](Broadcast& b) {
             of_main(b);
             b.attribute("preselectionComponents") = "1 5";
         }},
        {{4360, 2044},
         [&](Broadcast& b) {
             of_main(b);
             b.attribute("preselectionComponents") = "5 1";
         }},
        // There is no other one.
        {{2044}, of_dialogue},
        // The box doesn't tell.
        {{2044},
         [&](Broadcast& b) {
             of_dialogue(b);
             b.presentation().groups[0].b_content_type = 0;
             b.attribute("preselectionComponents") = "5 1";
         }},
    });
}

TEST(Ac4BroadcastPreselection, IsJudgedWhereItsFirstComponentIs) {
    Broadcast broadcast;
    broadcast.preselection().attributes = {{"id", "30"}, {"preselectionComponents", "5 1"}};
    broadcast.preselection().children = "";
    EXPECT_EQ(broadcast.ids(), Ids{2045});
}

TEST(Ac4BroadcastPreselection, OthersAreNotLookedAt) {
    for (const char* components : {"5", "11", "5 6 7", "x", "", "01x"}) {
        Broadcast broadcast;
        broadcast.share();
        broadcast.preselections[1].attributes = {{"preselectionComponents", components}};
        broadcast.preselections[1].children = "";
        EXPECT_EQ(broadcast.ids(), Ids{}) << components;
    }
    Broadcast broadcast;
    broadcast.share();
    broadcast.preselections[1].attributes = {{"tag", "x"}};
    EXPECT_EQ(broadcast.ids(), Ids{});
}

// --- The set -------------------------------------------------------------------------------------

TEST(Ac4BroadcastSet, PresentationsAreReferenced) {
    Broadcast broadcast;
    broadcast.record.n_presentations = 3;
    broadcast.record.presentations.resize(3, broadcast.record.presentations[0]);
    broadcast.record.presentations[1].presentation_id = 8;
    broadcast.record.presentations[2].presentation_id = 9;
    broadcast.share();
    broadcast.preselections[1].attributes["tag"] = "9";
    const Findings findings = broadcast.find();
    ASSERT_EQ(findings.ids(), Ids{2045});
    EXPECT_EQ(findings.status, Status::kOk);
    EXPECT_NE(findings.text(2045).find("[id : 8] in the AdaptationSet [id : 1]"),
              std::string::npos);
}

TEST(Ac4BroadcastSet, IncompletePresentationsMarkIt) {
    const std::string codecs = R"(mimeType="audio/mp4" codecs="ac-4.02.01")";
    expect_rows({
        {{4386, 2044},
         [&](Broadcast& b) {
             b.spread();
             b.mpd.set_attributes = codecs;
         }},
        {{2044},
         [&](Broadcast& b) {
             b.spread();
             b.mpd.set_attributes = codecs;
             b.mpd.set_children = descriptor("EssentialProperty", kPreselectionUri, {});
         }},
        {{4386, 2044},
         [&](Broadcast& b) {
             b.spread();
             b.mpd.set_attributes = codecs;
             b.mpd.set_children = descriptor("EssentialProperty", kPreselectionUri, "1");
         }},
    });
}

TEST(Ac4BroadcastSet, WithoutAWholePresentationTheLevelIsNotChecked) {
    for (const char* codecs : {"ac-4.02.01", "ac-4.02.01.00", "ac-4.02.01.07"}) {
        Broadcast broadcast;
        broadcast.spread();
        broadcast.mpd.set_children = descriptor("EssentialProperty", kPreselectionUri, {});
        broadcast.mpd.set_attributes =
            std::string(R"(mimeType="audio/mp4" codecs=")") + codecs + "\"";
        broadcast.attribute("codecs") = "ac-4.02.01.07";
        broadcast.presentation().mdcompat = 7;
        const Findings findings = broadcast.find();
        ASSERT_EQ(findings.ids(), Ids{2044}) << codecs;
        EXPECT_NE(findings.text(2044).find("AdaptationSet [id : 1]"), std::string::npos);
    }
    Broadcast broadcast;
    broadcast.spread();
    broadcast.mpd.set_children = descriptor("EssentialProperty", kPreselectionUri, {});
    broadcast.mpd.set_attributes = R"(mimeType="audio/mp4" codecs="ac-4.02.02.03")";
    const Findings findings = broadcast.find();
    EXPECT_EQ(findings.ids(), (Ids{2044, 4364}));
    EXPECT_NE(findings.text(4364).find("[id : 1] must be ac-4.02.01."), std::string::npos);
}

TEST(Ac4BroadcastSet, CodecsStandInOnePlaceAndAreThoseOfTheBox) {
    expect_rows({
        {{4364},
         [](Broadcast& b) {
             b.mpd.set_attributes = R"(mimeType="audio/mp4" codecs="ac-4.02.01.02")";
         },
         "AdaptationSet [id : 1] must be ac-4.02.01.03."},
        {{4365}, [](Broadcast& b) { b.mpd.set_attributes = R"(mimeType="audio/mp4")"; }},
        {{4366},
         [](Broadcast& b) { b.mpd.representation_attributes = R"(codecs="ac-4.02.01.03")"; }},
        {{},
         [](Broadcast& b) {
             b.mpd.set_attributes = R"(mimeType="audio/mp4")";
             b.mpd.representation_attributes = R"(codecs="ac-4.02.01.03")";
         }},
    });
}

TEST(Ac4BroadcastSet, SharedOneLeavesItsFactsToThePreselections) {
    const std::vector<std::pair<int, std::function<void(Broadcast&)>>> rows = {
        {4372, [](Broadcast& b) { b.mpd.set_children = channels(); }},
        {4372, [](Broadcast& b) { b.mpd.representation_children = channels(); }},
        {4373, [](Broadcast& b) { b.mpd.set_attributes += R"( audioSamplingRate="48000")"; }},
        {4373,
         [](Broadcast& b) { b.mpd.representation_attributes = R"(audioSamplingRate="48000")"; }},
        {4374, [](Broadcast& b) { b.mpd.set_children = descriptor("Role", kRoleScheme, "main"); }},
        {4375, [](Broadcast& b) { b.mpd.set_children = "<Accessibility/>"; }},
        {4376, [](Broadcast& b) { b.mpd.set_attributes += R"( lang="und")"; }},
    };
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (const bool is_shared : {false, true}) {
            Broadcast broadcast;
            rows[i].second(broadcast);
            if (is_shared) {
                broadcast.share();
            }
            EXPECT_EQ(broadcast.ids(), is_shared ? Ids{rows[i].first} : Ids{}) << "row " << i;
        }
    }
}

TEST(Ac4BroadcastSet, HasNoLanguageElement) {
    expect_rows({{{4377}, [](Broadcast& b) { b.mpd.set_children = "<Language>en</Language>"; }}});
}

TEST(Ac4BroadcastSet, SapIsAWarning) {
    expect_rows({
        {{2043}, [](Broadcast& b) { b.mpd.representation_attributes = R"(startWithSAP="2")"; }},
        {{}, [](Broadcast& b) { b.mpd.representation_attributes = R"(startWithSAP="1")"; }},
    });
}

// Representations with the same initialization segment are the same stream.
TEST(Ac4BroadcastSet, EachRepresentationIsLookedAt) {
    Broadcast broadcast;
    broadcast.mpd.more_representations =
        R"(<Representation id="3" bandwidth="2" startWithSAP="5"/>)"
        R"(<Representation id="4" bandwidth="3" codecs="ac-4.02.01.03"/>)";
    EXPECT_EQ(broadcast.ids(), (Ids{2043, 4366}));
}

// --- What isn't there ----------------------------------------------------------------------------

TEST(Ac4BroadcastHostile, MissingBoxLeavesTheRulesOnTheManifest) {
    Broadcast broadcast;
    EntryTrack track = ac4_track(broadcast.record);
    track.boxes.clear();
    EXPECT_EQ(broadcast.find_of(track).ids(), Ids{4402});
    broadcast.preselection().attributes = {{"preselectionComponents", "1"},
                                           {"codecs", "ac-4.02.01.00"}};
    broadcast.preselection().children = "<Language/>";
    EXPECT_EQ(broadcast.find_of(track).ids(), (Ids{4402, 4358, 2046, 4383, 4378, 4369}));
}

TEST(Ac4BroadcastHostile, SetWithoutANumberIsInNoPreselection) {
    for (const char* id : {R"(id="")", R"(id="x1")", ""}) {
        Broadcast broadcast;
        broadcast.mpd.set_has_id = false;
        broadcast.mpd.set_attributes += std::string(" ") + id;
        broadcast.mpd.set_children = channels();
        EXPECT_EQ(broadcast.ids(), Ids{2045}) << id;
    }
}

TEST(Ac4BroadcastHostile, ComponentsOfAnyForm) {
    for (const std::string& components :
         {std::string(99, '1') + " 1", std::string(200, ' ') + "1", std::string("  1  "),
          std::string("1\t2"), std::string("1 1 1 1")}) {
        Broadcast broadcast;
        broadcast.attribute("preselectionComponents") = components;
        EXPECT_FALSE(has_failed(broadcast.find().status));
    }
}

TEST(Ac4BroadcastHostile, PeriodWithoutSetsOrRepresentations) {
    const DashInfo mpd;
    const DashPeriodInfo period;
    DashAdaptationSetInfo set;
    DashRepresentationInfo representation;
    representation.adaptation_set_index = 5;
    const DsiRecord record = stereo_record();
    const auto loglist = broadcast_list();
    const DashAudio audio{mpd, set, representation, loglist.get()};
    RecordingSink sink;
    EXPECT_EQ(check_ac4_broadcast_set(audio, period, {}, &record), Status::kOk);
    EXPECT_EQ(sink.ids(), Ids{2045});
    DashPeriodInfo strange;
    strange.representations = {representation};
    strange.representations[0].shared_init_representations = {representation};
    EXPECT_EQ(check_ac4_broadcast_set(audio, strange, {}, nullptr), Status::kOk);
    EXPECT_EQ(sink.ids(), Ids{2045});
}

// The number of messages for pairs of Representations and Preselections has a bound.
TEST(Ac4BroadcastHostile, PairsAreReportedUpToALimit) {
    constexpr std::size_t kMany = 1000;
    std::vector<DashPreselectionInfo> infos(kMany);
    Ac4Preselections preselections;
    for (DashPreselectionInfo& info : infos) {
        info.codecs = "ac-4.02.01.00";
        preselections.push_back({info, true, false});
    }
    PreselectionLevels levels(preselections);
    RecordingSink sink;
    DashRepresentationInfo representation;
    for (std::size_t i = 0; i < kMany; ++i) {
        (void)levels.check_representation(representation, "ac-4.02.01.07", nullptr);
        EXPECT_EQ(levels.check_representation(representation, "ac-4.02.01.00", nullptr),
                  Status::kOk);
    }
    EXPECT_EQ(sink.count(4369), kMostLevelReports);
}

TEST(Ac4BroadcastHostile, ManyPreselectionsAndPresentations) {
    Broadcast broadcast;
    broadcast.record.n_presentations = 511;
    broadcast.record.presentations.resize(511, broadcast.record.presentations[0]);
    for (std::uint32_t i = 0; i < 511; ++i) {
        broadcast.record.presentations[i].b_extended_presentation_id = 1;
        broadcast.record.presentations[i].extended_presentation_id = i;
    }
    broadcast.preselections.resize(5000, broadcast.preselections[0]);
    for (std::size_t i = 0; i < broadcast.preselections.size(); ++i) {
        broadcast.preselections[i].attributes["id"] = std::to_string(1000 + i);
        broadcast.preselections[i].attributes["tag"] = std::to_string(i);
    }
    const Findings findings = broadcast.find();
    const Ids ids = findings.ids();
    EXPECT_EQ(std::count(ids.begin(), ids.end(), 4359), 5000 - 511);
    EXPECT_EQ(ids.size(), 5000U - 511);
}

}  // namespace
}  // namespace mediasplit
