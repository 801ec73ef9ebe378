// Follows a playlist that a test wrote, in a working folder of its own, and shows what came of it.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/list.h"
#include "src/hls/stream_worker.h"
#include "src/records/segment_timing.h"
#include "tests/support/http_server.h"
#include "tests/support/mp4_builder.h"
#include "tests/support/recording_sink.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {

using Ids = std::vector<int>;

// The sample bytes of a segment made by mp4_segment.
std::string sample_text(int number);
// A fragmented presentation of one track of unknown coding, whose samples come out as they are: its
// initialization section and its segments of one sample of 2 s.
std::string mp4_init();
std::string mp4_segment(int number);
// A transport stream with `payload` as ADTS stream of PID 257.
std::string ts_segment(const std::string& payload);
std::string as_text(const std::vector<std::uint8_t>& bytes);

class StreamRun : public testing::Test {
protected:
    StreamRun();
    ~StreamRun() override;

    // Follows the playlist once; `url` names it.
    void follow(const std::string& playlist, const std::string& url);
    // The same for a playlist of the working folder.
    void follow_local(const std::string& playlist) { follow(playlist, "list.m3u8"); }

    [[nodiscard]] std::string output(const std::string& name) const;
    [[nodiscard]] std::vector<std::string> files(const std::string& name) const;
    // Ids without message 3, which names each file.
    [[nodiscard]] Ids ids() const;
    [[nodiscard]] std::vector<std::string> texts(int id) const;
    std::vector<SegmentTiming> take_timing();

    TempFolder folder_;
    WorkingDirectory directory_{folder_.path()};
    HttpServer server_;
    RecordingSink sink_;
    std::unique_ptr<Loglist> loglist_;
    OsalContext osal_;
    List list_;
    StreamOutputs outputs_;

    std::optional<ManifestContext> context_;
    std::optional<std::string> keypairs_;
    double live_remaining_ = 10.0;
    Status status_ = Status::kOk;
    int result_ = -1;
};

}  // namespace mediasplit
