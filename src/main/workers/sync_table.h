// The lists by which the workers tell the timing thread how long their segments are.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/list.h"
#include "src/log/status.h"

namespace mediasplit {

// Ends a list with the records that are still in it.
struct SyncListEnd {
    void operator()(List* list) const;
};
using SyncList = std::unique_ptr<List, SyncListEnd>;

// An empty list with memory of `osal`; none if it can't be made.
SyncList make_sync_list(const OsalContext& osal);

// Streams whose segments last equally long.
struct SyncGroup {
    std::int32_t capacity = 0;  // streams that belong to the group
    std::int32_t filled = 0;    // streams that have a list
    std::vector<std::string> urls;
    std::vector<SyncList> lists;  // none for a stream that never started
};

struct SyncTable {
    std::int32_t group_count = 0;
    std::vector<SyncGroup> groups;
    Status status = Status::kOk;  // written by the timing thread
};

// A table with a group for each capacity.
SyncTable make_sync_table(const std::vector<std::int32_t>& capacities);

// Gives a stream named `url` the next list of `group` (numbered from 1). None if there is no such
// group or it is full.
List* join_sync_group(SyncTable& table, std::uint32_t group, const std::string& url,
                      const OsalContext& osal);

}  // namespace mediasplit
