#pragma once

#include <string_view>

namespace mediasplit {

/// Writes text to standard output or standard error with one output call, so that lines of
/// concurrent threads stay whole, and hands it to the system at once.
void write_to_stdout(std::string_view text);
void write_to_stderr(std::string_view text);

/// Is told of each of these writes, ahead of it and behind it, by the thread that writes.
class OutputObserver {
public:
    OutputObserver() = default;
    OutputObserver(const OutputObserver&) = delete;
    OutputObserver& operator=(const OutputObserver&) = delete;
    virtual ~OutputObserver() = default;

    virtual void before_write() = 0;
    virtual void after_write() = 0;
};

/// Installs the observer of the process, or none with nullptr. The caller keeps it alive until
/// another one is installed and no thread writes any more.
void set_output_observer(OutputObserver* observer);

}  // namespace mediasplit
