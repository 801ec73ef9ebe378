#include "src/log/loglist.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <new>
#include <span>

#include "src/log/rule_families.h"

namespace mediasplit {

namespace {

constexpr std::size_t kCheckpointDigits = 6;
constexpr int kLargestCheckpoint = 999999;
constexpr std::size_t kBytesBesideALine = 128;  // its records in the two containers

std::string_view text_of(const CheckpointText& entry) {
    const auto end = std::find(entry.begin(), entry.end(), '\0');
    return {entry.data(), static_cast<std::size_t>(end - entry.begin())};
}

struct RuleFamily {
    std::uint32_t mask = 0;
    std::string_view prefix{};
};

constexpr RuleFamily kRuleFamilies[] = {
    {kEac3Rules, "21"},           {kAc4OverTheTopRules, "31"},   {kAc4BroadcastRules, "32"},
    {kPrismaManifestRules, "43"}, {kPrismaBroadcastRules, "42"}, {kPrismaOverTheTopRules, "41"},
    {kPrismaNewerRules, "44"},    {kPrismaNewestRules, "45"},    {kAc4Rules, "3"},
    {kPrismaRules, "4"},
};

}  // namespace

std::unique_ptr<Loglist> init_loglist(std::uint32_t count, const CheckpointText* list) {
    if (list == nullptr) {
        return nullptr;
    }
    auto loglist = std::make_unique<Loglist>();
    for (const CheckpointText& entry : std::span(list, count)) {
        ++loglist->checkpoint_count;
        // Deliberate: the entry that is too long is counted though it isn't copied.
        if (text_of(entry).size() > kCheckpointDigits) {
            break;
        }
        loglist->checkpoints.push_back(entry);
    }
    return loglist;
}

void destroy_loglist(std::unique_ptr<Loglist>& loglist) {
    loglist.reset();
}

std::uint32_t get_loglist_checkpoints_count(const Loglist* loglist) {
    return loglist == nullptr ? 0 : loglist->checkpoint_count;
}

const CheckpointText* get_loglist_checkpoints(const Loglist* loglist) {
    return loglist == nullptr || loglist->checkpoints.empty() ? nullptr
                                                              : loglist->checkpoints.data();
}

bool checkpoint_should_check(const Loglist* loglist, int checkpoint) {
    if (loglist == nullptr) {
        return true;
    }
    if (loglist->checkpoints.empty() || checkpoint > kLargestCheckpoint) {
        return false;
    }
    if (checkpoint == 0) {
        return true;
    }
    if (checkpoint < 100000) {
        return false;
    }
    std::array<char, kCheckpointDigits> digits{};
    std::to_chars(digits.data(), digits.data() + digits.size(), checkpoint);
    const std::string_view number(digits.data(), digits.size());
    return std::any_of(loglist->checkpoints.begin(), loglist->checkpoints.end(),
                       [number](const CheckpointText& entry) {
                           const std::string_view text = text_of(entry);
                           // The first digit decides: the longer prefixes and the whole number
                           // begin with it.
                           return text.substr(0, 1) == number.substr(0, 1);
                       });
}

Status print_message(Loglist* loglist, const char* line) {
    if (line == nullptr) {
        return Status::kFailed;
    }
    if (loglist == nullptr) {
        return Status::kOk;
    }
    const std::string_view text(line);
    const bool is_info = text.find("INFO: ") != std::string_view::npos;
    if (!is_info && loglist->known.count(text) != 0) {
        return Status::kOk;
    }
    const std::size_t bytes = text.size() + kBytesBesideALine;
    if (bytes > kLoglistCapacity - loglist->bytes) {
        return Status::kFailed;
    }
    try {
        loglist->messages.emplace_back(text);
    } catch (const std::bad_alloc&) {
        return Status::kFailed;
    }
    ++loglist->message_count;
    loglist->bytes += bytes;
    if (is_info) {
        return Status::kOk;
    }
    try {
        loglist->known.insert(loglist->messages.back());
    } catch (const std::bad_alloc&) {
        // The line is stored all the same; only its repetitions aren't recognised.
        return Status::kOk;
    }
    return Status::kOk;
}

bool has_checkpoint_set(const Loglist* loglist, std::uint32_t mask) {
    if (loglist == nullptr) {
        return false;
    }
    return input_has_checkpoint_set(static_cast<std::uint32_t>(loglist->checkpoints.size()),
                                    get_loglist_checkpoints(loglist), mask);
}

bool input_has_checkpoint_set(std::uint32_t count, const CheckpointText* list, std::uint32_t mask) {
    if (list == nullptr || count == 0) {
        return false;
    }
    if (mask == 0) {
        return true;
    }
    const auto* family = std::find_if(std::begin(kRuleFamilies), std::end(kRuleFamilies),
                                      [mask](const RuleFamily& row) { return row.mask == mask; });
    if (family == std::end(kRuleFamilies)) {
        return false;
    }
    const std::span entries(list, count);
    return std::any_of(entries.begin(), entries.end(), [family](const CheckpointText& entry) {
        const std::string_view text = text_of(entry);
        return text.size() == kCheckpointDigits && text.starts_with(family->prefix);
    });
}

}  // namespace mediasplit
