#include "src/dash_reader/base_url.h"

#include <string_view>

namespace mediasplit {
namespace {

constexpr std::string_view kSeparators = "/\\";

std::string_view prefix_of(std::string_view base) {
    const std::size_t at = base.find_last_of(kSeparators);
    // Deliberate: a separator that begins the text makes no prefix.
    if (at == std::string_view::npos || at == 0) {
        return {};
    }
    return base.substr(0, at + 1).substr(0, kLongestUrlPrefix);
}

// The text of a BaseURL element; none if it has none. An address has no blanks around it: those of
// an indented element belong to the layout (XML Schema part 2, 3.2.17).
OptText address_of(const Ezxml* node) {
    if (node->txt == nullptr) {
        return {};
    }
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::string_view text = node->txt;
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == std::string_view::npos
               ? text.substr(0, 0)
               : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

// Collects a level's entries up to the limits of a list.
class BaseUrlCollector {
public:
    void add(std::string entry) {
        text_ += entry.size();
        if (entries_.empty() || (entries_.size() < kMostBaseUrls && text_ <= kMostBaseUrlText)) {
            entries_.push_back(std::move(entry));
        }
    }
    void add_merged(OptText base, OptText relative) {
        std::string entry;
        merge_url_simply(base, relative, &entry);
        add(std::move(entry));
    }
    [[nodiscard]] bool full() const {
        return entries_.size() >= kMostBaseUrls || text_ > kMostBaseUrlText;
    }
    BaseUrls take() { return BaseUrls(std::move(entries_)); }

private:
    std::vector<std::string> entries_{};
    std::size_t text_ = 0;
};

}  // namespace

int check_absolute_url(OptText text) {
    if (!text) {
        return -1;
    }
    const bool absolute = text->starts_with('/') || text->starts_with("http") ||
                          (text->size() > 1 && (*text)[1] == ':');
    return absolute ? 0 : 1;
}

int merge_url_simply(OptText base, OptText relative, std::string* out) {
    if (!base || !relative) {
        return -1;
    }
    if (out == nullptr) {
        return 1;
    }
    std::string merged(prefix_of(*base));
    merged += relative->substr(0, kLongestRelativeUrl);
    *out = std::move(merged);
    return 0;
}

int merge_baseURL(OptText base, OptText url, std::string* out) {
    if (!base || out == nullptr || url.view().size() > kLongestRelativeUrl) {
        return -1;
    }
    if (!url) {
        *out = base.str();
        return 0;
    }
    if (check_absolute_url(url) == 0) {
        *out = url.str();
        return 0;
    }
    return merge_url_simply(base, url, out);
}

BaseUrls get_mpd_baseURLs(OptText manifest_url, const Ezxml* mpd) {
    BaseUrlCollector entries;
    const Ezxml* node = ezxml_child(mpd, "BaseURL");
    if (node == nullptr) {
        entries.add(manifest_url.str());
    }
    for (; node != nullptr && !entries.full(); node = node->next) {
        const OptText address = address_of(node);
        if (!address || check_absolute_url(address) == 0) {
            entries.add(address.str());
        } else {
            entries.add_merged(manifest_url, address);
        }
    }
    return entries.take();
}

BaseUrls get_cur_level_baseURLs(const BaseUrls& parent, const Ezxml* node) {
    const Ezxml* child = ezxml_child(node, "BaseURL");
    if (child == nullptr) {
        return parent;
    }
    BaseUrlCollector entries;
    for (; child != nullptr && !entries.full(); child = child->next) {
        const std::string_view address = address_of(child).view();
        if (check_absolute_url(address) == 0) {
            entries.add(std::string(address));
            continue;
        }
        for (std::size_t i = 0; i < parent.size() && !entries.full(); ++i) {
            entries.add_merged(parent[i], address);
        }
    }
    return entries.take();
}

}  // namespace mediasplit
