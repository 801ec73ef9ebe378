#include "src/log/findings.h"

#include <atomic>
#include <utility>

namespace mediasplit {

namespace {

std::atomic<FindingsSink*> g_findings_sink{nullptr};
thread_local std::string g_stream_label;

}  // namespace

void set_findings_sink(FindingsSink* sink) {
    g_findings_sink.store(sink, std::memory_order_release);
}

FindingsSink* findings_sink() {
    return g_findings_sink.load(std::memory_order_acquire);
}

StreamLabel::StreamLabel(std::string label)
    : previous_(std::exchange(g_stream_label, std::move(label))) {}

StreamLabel::~StreamLabel() {
    g_stream_label = std::move(previous_);
}

std::string_view current_stream_label() {
    return g_stream_label;
}

}  // namespace mediasplit
