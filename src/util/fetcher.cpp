#include "src/util/fetcher.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <memory>

#include "src/log/logging.h"
#include "src/util/fetched_files.h"
#include "src/util/player_clock.h"
#include "src/util/text.h"

namespace mediasplit {
namespace {

constexpr std::size_t kUrlRoom = 1024;
constexpr int kNoFile = -1;

struct HandleFree {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
using Handle = std::unique_ptr<CURL, HandleFree>;

// Where fetched bytes go, and how many more may come.
struct Target {
    std::FILE* file = nullptr;
    std::uint64_t room = kUnlimitedFetch;
};

// Taking less than what came ends the transfer.
std::size_t write_callback(char* data, std::size_t size, std::size_t count, void* argument) {
    auto& target = *static_cast<Target*>(argument);
    if (size * count > target.room) {
        return 0;
    }
    target.room -= size * count;
    return write_data(data, size, count, target.file);
}

// In the order that they are set; the first that fails ends it.
bool set_options(CURL* handle, const std::string& url, Target& target) {
    const auto set = [handle](CURLoption option, auto value) {
        return curl_easy_setopt(handle, option, value) == CURLE_OK;
    };
    return set(CURLOPT_URL, url.c_str()) && set(CURLOPT_FAILONERROR, 1L) &&
           set(CURLOPT_NOSIGNAL, 1L) && set(CURLOPT_FOLLOWLOCATION, 1L) &&
           set(CURLOPT_MAXREDIRS, fetch_limits().redirects) && set(CURLOPT_NOPROGRESS, 1L) &&
           set(CURLOPT_TIMEOUT, fetch_limits().timeout_seconds) &&
           set(CURLOPT_WRITEFUNCTION, &write_callback) &&
           set(CURLOPT_WRITEDATA, static_cast<void*>(&target));
}

// The present time as asctime tells it, with its line feed.
std::string present_time() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    std::array<char, 64> text{};
    if (gmtime_r(&now, &parts) == nullptr || asctime_r(&parts, text.data()) == nullptr) {
        return {};
    }
    return text.data();
}

void report_failure(const std::string& path, std::string_view url, const std::string& cleaned,
                    int code) {
    if (remove_fetched_file(path) != 0) {
        (void)Logging_err_type_check(nullptr, 11, LogContext{}, path, url);
    }
    (void)Logging_err_type_check(nullptr, 2054, LogContext{}, cleaned, present_time(), code);
}

}  // namespace

FetchLimits& fetch_limits() {
    static FetchLimits limits;
    return limits;
}

void urlinit() {
    curl_global_init(CURL_GLOBAL_ALL);
}

void urluninit() {
    curl_global_cleanup();
}

bool fetch_segment(const std::string& url, const std::string& path, double pause_seconds,
                   Loglist* loglist) {
    constexpr int kTries = 3;
    constexpr double kLongestPause = 300;  // seconds
    const auto pause = static_cast<std::uint32_t>(std::clamp(pause_seconds, 0.0, kLongestPause));
    for (int number = 1; number <= kTries; ++number) {
        if (url2file(url, path) == 0) {
            return true;
        }
        // A warning; it has no result.
        (void)Logging_err_type_check(loglist, 2052, {}, url, number);
        player_clock().sleep(pause);
    }
    return false;
}

std::size_t write_data(const void* data, std::size_t size, std::size_t count, std::FILE* file) {
    return std::fwrite(data, size, count, file);
}

int url2file(OptText url, OptText path, std::uint64_t most_bytes) {
    if (!url || !path) {
        return kNoFile;
    }
    const std::string local = path.str();
    std::FILE* const file = create_fetched_file(local);
    if (file == nullptr) {
        return kNoFile;
    }
    Target target{file, most_bytes};
    const Handle handle(curl_easy_init());
    std::string cleaned;
    (void)remove_parent_folder(cleaned, url);
    int code = CURLE_FAILED_INIT;
    if (handle) {
        if (!set_options(handle.get(), cleaned, target)) {
            // Deliberate: counts as fetched, with an empty file.
            (void)std::fclose(file);
            return 0;
        }
        code = curl_easy_perform(handle.get());
    }
    if (std::fclose(file) != 0 && code == CURLE_OK) {
        code = CURLE_WRITE_ERROR;
    }
    if (code != CURLE_OK) {
        report_failure(local, *url, cleaned, code);
    }
    return code;
}

int remove_parent_folder(std::string& out, OptText url) {
    out.clear();
    if (!url || url->size() >= kUrlRoom) {
        return 1;
    }
    out = url.str();
    while (out.find("/./") != std::string::npos) {
        out = str_replace(out, "/./", "/", kUrlRoom);
    }
    constexpr std::string_view kParent = "/../";
    for (;;) {
        const std::size_t at = out.find(kParent);
        if (at == std::string::npos || at == 0) {
            return 0;
        }
        const std::size_t separator = out.find_last_of("/\\", at - 1);
        if (separator == std::string::npos) {
            return 0;
        }
        const std::string climbed = out.substr(separator, at + kParent.size() - separator);
        out = str_replace(out, climbed, "/", kUrlRoom);
    }
}

}  // namespace mediasplit
