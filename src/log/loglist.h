#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "src/log/status.h"

namespace mediasplit {

/// An entry of a checkpoint list: six digits, filled up with zero bytes.
using CheckpointText = std::array<char, 8>;

/// Collector of one stream's findings. It belongs to one thread.
struct Loglist {
    std::int32_t message_count = 0;
    std::deque<std::string> messages{};  ///< complete lines, with prefix and line end
    std::uint32_t checkpoint_count = 0;
    std::vector<CheckpointText> checkpoints{};  ///< own copy of the active checkpoint list
    /// The lines of `messages`, to find duplicates; views stay valid because a deque doesn't move
    /// what it holds.
    std::unordered_set<std::string_view> known{};
    std::size_t bytes = 0;  ///< what `messages` and `known` take, about
};

/// Most that the lines of a collector may take: hostile streams can ask for any number of them.
inline constexpr std::size_t kLoglistCapacity = std::size_t{16} << 20;

/// Makes a collector with a copy of the first `count` entries of `list`. An entry longer than six
/// characters ends the copying and is still counted. No list: no collector.
std::unique_ptr<Loglist> init_loglist(std::uint32_t count, const CheckpointText* list);

void destroy_loglist(std::unique_ptr<Loglist>& loglist);

std::uint32_t get_loglist_checkpoints_count(const Loglist* loglist);

/// The entries of the collector's checkpoint list, nullptr if there are none.
const CheckpointText* get_loglist_checkpoints(const Loglist* loglist);

/// The gate of collected rows: whether the rule with this checkpoint number is active.
bool checkpoint_should_check(const Loglist* loglist, int checkpoint);

/// Stores a finished line once; info lines are stored each time. Without a collector the line is
/// dropped. Fails if the line is missing or can't be stored: memory or kLoglistCapacity ran out.
Status print_message(Loglist* loglist, const char* line);

/// Whether the rule family of a mask is active: some entry of six characters begins with the
/// family's digits. Mask 0 always is, an unlisted mask never; without entries none is.
bool has_checkpoint_set(const Loglist* loglist, std::uint32_t mask);
bool input_has_checkpoint_set(std::uint32_t count, const CheckpointText* list, std::uint32_t mask);

}  // namespace mediasplit
