// The file that a report goes to.
#pragma once

#include <sys/types.h>

#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "src/file_util/output_file.h"
#include "src/report/findings_report.h"
#include "src/report/writers.h"

namespace mediasplit::report {

/// An open place for a report.
class ReportFile {
public:
    /// Opens `path`, "-" for standard output, whose own lines go to standard error from then on. A
    /// regular file is emptied. `folder` is made if the report is to lie in it and it isn't there.
    /// None, with `error`, if it can't be written or is the file at `input`.
    static std::optional<ReportFile> open(const std::string& path,
                                          const std::optional<std::string>& input,
                                          const std::optional<std::string>& folder,
                                          std::string& error);

    /// Width and colours that suit where the report goes.
    [[nodiscard]] const TextLayout& layout() const { return layout_; }
    /// Whether the report lies in a file that one of the streams was written to.
    [[nodiscard]] bool is_output_of(const std::vector<Stream>& streams) const;
    /// Lets `writer` write and closes the file. False if anything couldn't be written.
    bool write(const std::function<void(std::ostream&)>& writer);

private:
    explicit ReportFile(int descriptor);

    std::unique_ptr<OutputFile> file_;
    TextLayout layout_{};
    dev_t device_ = 0;
    ino_t inode_ = 0;
};

}  // namespace mediasplit::report
