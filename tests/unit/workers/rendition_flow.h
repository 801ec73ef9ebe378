// Whole runs over a master playlist of one audio rendition: what comes out, and what is found about
// the rendition.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "src/file_util/output_file.h"
#include "src/main/flows/flows.h"
#include "src/records/run_options.h"
#include "tests/support/run_options_scope.h"
#include "tests/support/ts_builder.h"
#include "tests/support/worker_run.h"

namespace mediasplit {

// A rendition as its master playlist tells of it. CHANNELS is read in parts for playlists with a
// discontinuity alone.
struct Rendition {
    std::string codecs;
    std::string channels;  // the attribute with its comma, empty if there is none
    bool has_discontinuity = false;
};

inline Rendition rendition(const std::string& codecs, const std::string& channels,
                           bool has_discontinuity = false) {
    return {codecs, channels.empty() ? "" : "CHANNELS=\"" + channels + "\",", has_discontinuity};
}

class RenditionFlow : public testing::Test, protected WorkerRun {
protected:
    // Runs tell of the findings of these numbers alone.
    explicit RenditionFlow(Ids asked_for) : asked_for_(std::move(asked_for)) {
        loglist_ = begin_run(FormatId::kHls);
        add("video.ts", as_text(one_program({{0x0F, 257}}).bytes()));
        add("video.m3u8", "#EXTINF:2,\nvideo.ts\n#EXT-X-ENDLIST\n");
    }

    // A master playlist of the rendition and of one other stream, and the rendition's own playlist
    // of these lines and segments.
    void add_playlists(const Rendition& about, const std::string& head,
                       const std::vector<std::string>& segments) {
        std::string list = "#EXTM3U\n#EXT-X-TARGETDURATION:2\n" + head;
        for (std::size_t i = 0; i < segments.size(); ++i) {
            list += "#EXTINF:2,\n" + segments[i] + "\n";
            if (i == 0 && about.has_discontinuity) {
                list += "#EXT-X-DISCONTINUITY\n";
            }
        }
        add("audio.m3u8", list + "#EXT-X-ENDLIST\n");
        add("master.m3u8",
            "#EXTM3U\n#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"g\",LANGUAGE=\"en\",NAME=\"n\"," +
                about.channels +
                "URI=\"audio.m3u8\"\n#EXT-X-STREAM-INF:BANDWIDTH=1000,FRAME-RATE=25,CODECS=\"" +
                about.codecs + ",avc1.42c00d\",AUDIO=\"g\"\nvideo.m3u8\n");
    }

    // What a run finds of what is asked for, in order.
    Ids run(const std::string& input = "master.m3u8", bool fails = false) {
        sink_.clear();
        g_input = input;
        begin_outputs();
        EXPECT_EQ(has_failed(run_hls(loglist_.get())), fails);
        Ids found = sink_.ids();
        std::erase_if(found, [this](int id) {
            return std::find(asked_for_.begin(), asked_for_.end(), id) == asked_for_.end();
        });
        return found;
    }

    [[nodiscard]] static std::map<std::string, std::string> outputs() {
        std::map<std::string, std::string> result;
        for (const std::string& name : file_names("out")) {
            result[name] = read_file("out/" + name);
        }
        return result;
    }

    RunOptionsScope scope_;

private:
    Ids asked_for_;
};

}  // namespace mediasplit
