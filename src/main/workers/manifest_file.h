// A playlist or manifest as a local file.
#pragma once

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "src/log/loglist.h"
#include "src/log/status.h"

namespace mediasplit {

class ManifestFile {
public:
    // Opens the file at `name`; of an address a copy, whose own name begins with `stem`, is fetched
    // first. The result of 4022, also for a folder, or of 4021 if that can't be done. A copy that
    // is gone again is no stream: its reader tells of that.
    [[nodiscard]] Status open(const std::string& name, std::string_view stem, Loglist* loglist);

    // Opened for reading, or nullptr; belongs to this object.
    [[nodiscard]] std::FILE* stream() const { return stream_.get(); }

    // Closes the file and removes the copy, if it is one: the result of 11 if that can't be done.
    // Without this call a copy stays where it is.
    [[nodiscard]] Status remove_copy(Loglist* loglist);

private:
    struct Close {
        void operator()(std::FILE* stream) const { static_cast<void>(std::fclose(stream)); }
    };

    std::unique_ptr<std::FILE, Close> stream_;
    std::string name_;
    std::optional<std::string> copy_;
};

}  // namespace mediasplit
