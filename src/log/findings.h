#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace mediasplit {

/// Where a finding lies; carried by the reporter, not used by it. The texts must live as long as
/// the call.
struct LogContext {
    std::uint32_t position = 0;
    std::string_view element{};    ///< identity of the manifest element
    std::string_view attribute{};  ///< name of the attribute
};

/// What became of a report's line.
enum class Outcome : std::uint8_t {
    kPrinted,      ///< written to standard output or standard error
    kCollected,    ///< stored in the Loglist
    kRepeated,     ///< stored in the Loglist before, once is enough
    kUncollected,  ///< there was no Loglist to store it in, or no memory
    kGated,        ///< stopped by the checkpoint gate: its rule isn't active
};

/// One report as a sink sees it. Its texts live as long as the call.
struct Report {
    int id = 0;
    std::string_view text{};  ///< message with its values, without prefix, reference, line end
    LogContext context{};
    std::string_view stream{};  ///< label of the stream that the thread serves, "" for the main one
    Outcome outcome = Outcome::kPrinted;
};

/// Receives all reports of the process, and what else there is to know of a run. Calls come from
/// all worker threads, at the same time: an implementation does its own locking. A sink can't
/// change what a run does. Texts live as long as the call; `stream` is the label of the stream that
/// the calling thread serves, "" for the main one.
class FindingsSink {
public:
    FindingsSink() = default;
    FindingsSink(const FindingsSink&) = delete;
    FindingsSink& operator=(const FindingsSink&) = delete;
    virtual ~FindingsSink() = default;

    /// A message was raised.
    virtual void report(const Report& report) = 0;
    /// The condition of the rule with this number was tested, whatever came out.
    virtual void evaluated(int id) = 0;
    /// A stream of a manifest will be followed. Told in the order of the manifest, ahead of
    /// everything that its worker tells.
    virtual void stream_announced(std::string_view /*stream*/) {}
    /// A file is open for the stream's data, for the first time or again.
    virtual void output_opened(std::string_view /*stream*/, std::string_view /*path*/) {}
    /// A segment, or a file of a series, was worked through.
    virtual void segment_done(std::string_view /*stream*/) {}
    /// Something worth knowing that no message of the catalogue tells.
    virtual void note(std::string_view /*stream*/, std::string_view /*text*/) {}
};

/// Installs the sink of the process, or none with nullptr. The caller keeps the sink alive until
/// another one is installed and no thread reports any more.
void set_findings_sink(FindingsSink* sink);

/// The installed sink, or nullptr.
FindingsSink* findings_sink();

/// Names the stream (address of a playlist or segment, id of a Representation) that the calling
/// thread serves as long as the object lives; labels nest.
class StreamLabel {
public:
    explicit StreamLabel(std::string label);
    StreamLabel(const StreamLabel&) = delete;
    StreamLabel& operator=(const StreamLabel&) = delete;
    ~StreamLabel();

private:
    std::string previous_;
};

/// Label of the stream that the calling thread serves, "" for the main one.
std::string_view current_stream_label();

// These tell the sink, if there is one; without one they do nothing.
void announce_stream(std::string_view stream);
void note_output(std::string_view path);
void note_segment();
void note_remark(std::string_view text);

}  // namespace mediasplit
