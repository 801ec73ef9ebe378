#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace mediasplit {

/// A folder of its own for a test, removed with all that is in it.
class TempFolder {
public:
    TempFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "mediasplit-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            // Never some other folder: what is in this one goes away with it.
            throw std::filesystem::filesystem_error("no folder for the test", name,
                                                    {errno, std::generic_category()});
        }
        path_ = name;
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] std::string path() const { return path_.string(); }
    [[nodiscard]] std::string path(std::string_view name) const { return (path_ / name).string(); }

    /// Writes a file and returns its path.
    [[nodiscard]] std::string write(std::string_view name, std::string_view bytes) const {
        std::ofstream(path_ / name, std::ios::binary) << bytes;
        return path(name);
    }

private:
    std::filesystem::path path_;
};

/// Makes a folder the working directory as long as it lives.
class WorkingDirectory {
public:
    explicit WorkingDirectory(const std::string& path) : former_(std::filesystem::current_path()) {
        std::filesystem::current_path(path);
    }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;
    ~WorkingDirectory() { std::filesystem::current_path(former_); }

private:
    std::filesystem::path former_;
};

/// Removes the files of a folder whose names begin so.
inline void remove_files(const std::string& folder, std::string_view begin) {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().filename().string().starts_with(begin)) {
            std::filesystem::remove(entry.path());
        }
    }
}

/// The names of what lies in a folder, sorted.
inline std::vector<std::string> file_names(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// The whole content of a file.
inline std::string read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace mediasplit
