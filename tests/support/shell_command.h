#pragma once

#include <array>
#include <cstddef>
#include <cstdio>
#include <string>

namespace mediasplit {

struct ShellResult {
    std::string output{};  ///< what went to standard output
    int status = -1;       ///< as waitpid tells it; 0 for success
};

/// Runs a command of the shell to its end.
inline ShellResult run_shell(const std::string& command) {
    ShellResult result;
    std::FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return result;
    }
    std::array<char, 4096> buffer{};
    for (std::size_t size = 0; (size = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
        result.output.append(buffer.data(), size);
    }
    result.status = pclose(pipe);
    return result;
}

}  // namespace mediasplit
