// Base URLs of a manifest's levels (ISO/IEC 23009-1 5.6) and joining addresses.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/xml_tree.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// Longest relative text, longest address that merge_baseURL takes, longest segment template.
inline constexpr std::size_t kLongestRelativeUrl = 1024;
// No address or path of this length can be opened, so a longer prefix is cut here.
inline constexpr std::size_t kLongestUrlPrefix = 2048;
// What a list of base URLs holds at most: each level multiplies the entries of its parent, and only
// the first one is ever used. The first entry is kept whatever its length.
inline constexpr std::size_t kMostBaseUrls = 64;
inline constexpr std::size_t kMostBaseUrlText = 8192;

// The base URLs of one level; levels without a BaseURL of their own share their parent's.
class BaseUrls {
public:
    BaseUrls() = default;
    explicit BaseUrls(std::vector<std::string> entries)
        : entries_(std::make_shared<const std::vector<std::string>>(std::move(entries))) {}

    [[nodiscard]] std::size_t size() const { return entries_ == nullptr ? 0 : entries_->size(); }
    [[nodiscard]] bool empty() const { return size() == 0; }
    const std::string& operator[](std::size_t index) const { return (*entries_)[index]; }
    // The entry that counts; none if there is no entry.
    [[nodiscard]] OptText first() const { return empty() ? OptText{} : OptText((*entries_)[0]); }

private:
    std::shared_ptr<const std::vector<std::string>> entries_{};
};

// 0 if the text is an absolute address or path (begins with "/" or "http", or has ":" as second
// character), 1 if it is relative, -1 if there is none.
int check_absolute_url(OptText text);

// `base` up to its last separator, with `relative` (at most its first 1,024 characters) behind it.
// 0; -1 if a text is missing; 1 without `out`.
int merge_url_simply(OptText base, OptText relative, std::string* out);

// The address that `url` means below `base`: itself if it is absolute, the base if it is missing.
// 0; -1, and `out` unchanged, without a base or `out` or if `url` has more than 1,024 characters.
int merge_baseURL(OptText base, OptText url, std::string* out);

// The base URLs of the MPD: its BaseURL children, relative ones below the manifest's address; the
// manifest's address itself without any.
BaseUrls get_mpd_baseURLs(OptText manifest_url, const Ezxml* mpd);

// The base URLs of a level: the parent's, or for each BaseURL child of `node` its text if that is
// absolute, else one entry for each of the parent's.
BaseUrls get_cur_level_baseURLs(const BaseUrls& parent, const Ezxml* node);

}  // namespace mediasplit
