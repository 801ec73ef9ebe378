#include "base/list.h"

#include <new>

namespace mediasplit {
namespace {

void link_behind(List& list, ListNode* at, ListNode* node) {
    node->prev = at;
    node->next = at->next;
    (at->next == nullptr ? list.tail : at->next->prev) = node;
    at->next = node;
}

void link_ahead(List& list, ListNode* at, ListNode* node) {
    node->next = at;
    node->prev = at->prev;
    (at->prev == nullptr ? list.head : at->prev->next) = node;
    at->prev = node;
}

void unlink(List& list, ListNode* node) {
    (node->prev == nullptr ? list.head : node->prev->next) = node->next;
    (node->next == nullptr ? list.tail : node->next->prev) = node->prev;
    if (list.current == node) {
        list.current = node->next;
    }
}

void free_node(List& list, ListNode* node) {
    if (list.release != nullptr) {
        list.release(list.release_context, node);
    }
}

int insert_locked(List& list, std::uint32_t where, void* payload) {
    if (list.max_size != 0 && list.count == list.max_size) {
        return kListFull;
    }
    void* const place =
        list.alloc == nullptr ? nullptr : list.alloc(list.alloc_context, sizeof(ListNode));
    if (place == nullptr) {
        return kListNoMemory;
    }
    auto* const node = ::new (place) ListNode{payload, nullptr, nullptr};
    if (list.head == nullptr) {
        list.head = node;
        list.tail = node;
        list.current = node;
    } else if (where == kListHead) {
        link_ahead(list, list.head, node);
    } else if (where == kListTail) {
        link_behind(list, list.tail, node);
    } else if (list.current == nullptr) {
        free_node(list, node);
        return kListNoCurrent;
    } else if (where == kListInsertBehindCurrent) {
        link_behind(list, list.current, node);
    } else {
        link_ahead(list, list.current, node);
    }
    ++list.count;
    return kListOk;
}

// The node at a place, or none and why.
ListNode* find_node(const List& list, std::uint32_t where, int& result) {
    ListNode* const current = list.current;
    ListNode* node = nullptr;
    switch (where) {
        case kListHead:
            node = list.head;
            break;
        case kListTail:
            node = list.tail;
            break;
        case kListRemoveCurrent:
            node = current;
            break;
        case kListRemoveBehindCurrent:
            node = current == nullptr ? nullptr : current->next;
            break;
        default:
            node = current == nullptr ? nullptr : current->prev;
            break;
    }
    if (node == nullptr) {
        result = current == nullptr ? kListNoCurrent : kListEmpty;
    }
    return node;
}

int remove_locked(List& list, std::uint32_t where, void** payload) {
    if (list.head == nullptr) {
        return kListEmpty;
    }
    int result = kListOk;
    ListNode* const node = find_node(list, where, result);
    if (node == nullptr) {
        return result;
    }
    unlink(list, node);
    *payload = node->payload;
    free_node(list, node);
    --list.count;
    return kListOk;
}

}  // namespace

const char* list_get_version() {
    return "LIST_v2.9";
}

int list_create(List* list, const ListParams* params) {
    if (list == nullptr || params == nullptr || params->osal == nullptr) {
        return kListInvalid;
    }
    *list = List{};
    list->max_size = params->max_size;
    list->mutex = osal_mutex_create(params->osal);
    return list->mutex == nullptr ? kListNoMutex : kListOk;
}

int list_register_callbacks(List* list, const ListCallbacks* callbacks) {
    if (list == nullptr || callbacks == nullptr) {
        return kListInvalid;
    }
    if (osal_mutex_lock(list->mutex) != 0) {
        return kListLockFailed;
    }
    const auto take = [](auto& field, auto value) {
        if (value != nullptr) {
            field = value;
        }
    };
    take(list->alloc, callbacks->alloc);
    take(list->release, callbacks->release);
    take(list->alloc_context, callbacks->alloc_context);
    take(list->release_context, callbacks->release_context);
    return osal_mutex_unlock(list->mutex) == 0 ? kListOk : kListUnlockFailed;
}

int list_insert_element(List* list, std::uint32_t where, void* payload) {
    if (list == nullptr || where > kListInsertAheadOfCurrent) {
        return kListInvalid;
    }
    if (osal_mutex_lock(list->mutex) != 0) {
        return kListLockFailed;
    }
    const int result = insert_locked(*list, where, payload);
    return osal_mutex_unlock(list->mutex) == 0 ? result : kListUnlockFailed;
}

int list_remove_element(List* list, std::uint32_t where, void** payload) {
    if (payload != nullptr) {
        *payload = nullptr;
    }
    if (list == nullptr || payload == nullptr || where > kListRemoveAheadOfCurrent) {
        return kListInvalid;
    }
    if (osal_mutex_lock(list->mutex) != 0) {
        return kListLockFailed;
    }
    const int result = remove_locked(*list, where, payload);
    return osal_mutex_unlock(list->mutex) == 0 ? result : kListUnlockFailed;
}

int list_destroy(List* list) {
    if (list == nullptr) {
        return kListInvalid;
    }
    void* payload = nullptr;
    int result = kListOk;
    while ((result = list_remove_element(list, kListHead, &payload)) == kListOk) {
    }
    if (result != kListEmpty) {
        return result;
    }
    OsalMutex* const mutex = list->mutex;
    *list = List{};
    return osal_mutex_destroy(mutex) == 0 ? kListOk : kListMutexInUse;
}

}  // namespace mediasplit
