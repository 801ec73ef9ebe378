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

void announce_stream(std::string_view stream) {
    if (FindingsSink* sink = findings_sink(); sink != nullptr) {
        sink->stream_announced(stream);
    }
}

void note_output(std::string_view path) {
    if (FindingsSink* sink = findings_sink(); sink != nullptr) {
        sink->output_opened(current_stream_label(), path);
    }
}

void note_segment() {
    if (FindingsSink* sink = findings_sink(); sink != nullptr) {
        sink->segment_done(current_stream_label());
    }
}

void note_remark(std::string_view text) {
    if (FindingsSink* sink = findings_sink(); sink != nullptr) {
        sink->note(current_stream_label(), text);
    }
}

}  // namespace mediasplit
