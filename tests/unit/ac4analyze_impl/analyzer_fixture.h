#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "src/ac4analyze_impl/frame_analyzer.h"
#include "tests/support/ac4_builder.h"

namespace mediasplit {

// An analyzer over its own memory and one record.
class AnalyzerFixture : public testing::Test {
protected:
    explicit AnalyzerFixture(std::int32_t mode = kInputWholeFrames,
                             std::uint64_t buffer_size = 0x20000) {
        std::uint64_t size = 0;
        EXPECT_EQ(orv_ac4analyze_query_mem(buffer_size, &size), 0);
        memory_.resize(static_cast<std::size_t>(size));
        const Ac4AnalyzeConfig config = {mode, 0};
        EXPECT_EQ(orv_ac4analyze_open(&analyzer_, memory_.data(), &config, buffer_size), 0);
    }
    ~AnalyzerFixture() override { orv_ac4analyze_close(analyzer_); }

    int analyze(const BuildFrame& frame) { return analyze_bytes(write_ac4_frame(frame)); }
    int analyze_bytes(const Ac4Bytes& bytes) {
        const Ac4Bytes held(bytes.begin(), bytes.end());  // exactly sized
        return orv_ac4analyze_analyze_frame(analyzer_, held.data(), held.size(), nullptr,
                                            record_.get());
    }
    const AnalysisPresentation& presentation(std::size_t i) { return record_->presentations[i]; }
    const AnalysisSubstream& substream(std::size_t i) { return record_->substreams[i]; }

    std::vector<std::byte> memory_;
    Ac4Analyzer* analyzer_ = nullptr;
    std::unique_ptr<AnalysisRecord> record_ = std::make_unique<AnalysisRecord>();
};

}  // namespace mediasplit
