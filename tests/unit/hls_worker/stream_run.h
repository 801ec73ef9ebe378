// Follows a playlist that a test wrote, in a working folder of its own, and shows what came of it.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "src/hls/stream_worker.h"
#include "tests/support/worker_run.h"

namespace mediasplit {

// A transport stream with `payload` as ADTS stream of PID 257.
std::string ts_segment(const std::string& payload);

class StreamRun : public testing::Test, protected WorkerRun {
protected:
    // Follows the playlist once; `url` names it.
    void follow(const std::string& playlist, const std::string& url);
    // The same for a playlist of the working folder.
    void follow_local(const std::string& playlist) { follow(playlist, "list.m3u8"); }

    [[nodiscard]] std::string output(const std::string& name) const;
    [[nodiscard]] std::vector<std::string> files(const std::string& name) const;
    // Ids without message 3, which names each file.
    [[nodiscard]] Ids ids() const { return ids_without({3}); }

    StreamOutputs outputs_;
    std::optional<ManifestContext> context_;
    std::optional<std::string> keypairs_;
    double live_remaining_ = 10.0;
    Status status_ = Status::kOk;
    int result_ = -1;
};

}  // namespace mediasplit
