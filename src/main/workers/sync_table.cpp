#include "src/main/workers/sync_table.h"

#include <utility>

#include "src/util/segments.h"

namespace mediasplit {

void SyncListEnd::operator()(List* list) const {
    while (take_segment_timing(list) != nullptr) {
    }
    (void)list_destroy(list);
    std::default_delete<List>()(list);
}

SyncList make_sync_list(const OsalContext& osal) {
    auto list = std::make_unique<List>();
    const ListParams params{&osal, 0};
    const ListCallbacks callbacks{cb_malloc, cb_free, nullptr, nullptr};
    if (list_create(list.get(), &params) != kListOk ||
        list_register_callbacks(list.get(), &callbacks) != kListOk) {
        return nullptr;
    }
    return SyncList(list.release());
}

SyncTable make_sync_table(const std::vector<std::int32_t>& capacities) {
    SyncTable table;
    table.group_count = static_cast<std::int32_t>(capacities.size());
    table.groups.resize(capacities.size());
    for (std::size_t i = 0; i < capacities.size(); ++i) {
        SyncGroup& group = table.groups[i];
        group.capacity = capacities[i];
        group.urls.resize(static_cast<std::size_t>(group.capacity));
        group.lists.resize(static_cast<std::size_t>(group.capacity));
    }
    return table;
}

List* join_sync_group(SyncTable& table, std::uint32_t group, const std::string& url,
                      const OsalContext& osal) {
    if (group == 0 || group > table.groups.size()) {
        return nullptr;
    }
    SyncGroup& joined = table.groups[group - 1];
    if (joined.filled >= joined.capacity) {
        return nullptr;
    }
    SyncList list = make_sync_list(osal);
    if (list == nullptr) {
        return nullptr;
    }
    const auto place = static_cast<std::size_t>(joined.filled++);
    joined.urls[place] = url;
    joined.lists[place] = std::move(list);
    return joined.lists[place].get();
}

}  // namespace mediasplit
