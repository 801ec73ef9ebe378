// A doubly linked list that any number of threads may use at once. It holds pointers that belong to
// others; its nodes come from callbacks.
#pragma once

#include <cstdint>

#include "base/osal.h"

namespace mediasplit {

// Results of the list operations.
inline constexpr int kListOk = 0;
inline constexpr int kListInvalid = 0x18000;
inline constexpr int kListEmpty = 0x18001;  // or no such element
inline constexpr int kListNoMemory = 0x18002;
inline constexpr int kListNoMutex = 0x18003;
inline constexpr int kListLockFailed = 0x18004;
inline constexpr int kListUnlockFailed = 0x18005;
inline constexpr int kListMutexInUse = 0x18006;
inline constexpr int kListFull = 0x18008;
inline constexpr int kListNoCurrent = 0x18009;

// Places for list_insert_element and list_remove_element.
inline constexpr std::uint32_t kListHead = 0;
inline constexpr std::uint32_t kListTail = 1;
inline constexpr std::uint32_t kListInsertBehindCurrent = 2;
inline constexpr std::uint32_t kListInsertAheadOfCurrent = 3;
inline constexpr std::uint32_t kListRemoveCurrent = 2;
inline constexpr std::uint32_t kListRemoveBehindCurrent = 3;
inline constexpr std::uint32_t kListRemoveAheadOfCurrent = 4;

struct ListNode {
    void* payload = nullptr;
    ListNode* next = nullptr;
    ListNode* prev = nullptr;
};

// Belongs to the caller, who hands it to list_create first and to list_destroy last.
struct List {
    std::uint32_t count = 0;
    ListNode* head = nullptr;
    ListNode* tail = nullptr;
    AllocCallback alloc = nullptr;
    ReleaseCallback release = nullptr;
    void* alloc_context = nullptr;
    void* release_context = nullptr;
    OsalMutex* mutex = nullptr;  // guards all other fields
    ListNode* current = nullptr;
    std::uint32_t max_size = 0;  // 0: no limit
};

struct ListParams {
    const OsalContext* osal = nullptr;
    std::uint32_t max_size = 0;
};

struct ListCallbacks {
    AllocCallback alloc = nullptr;
    ReleaseCallback release = nullptr;
    void* alloc_context = nullptr;
    void* release_context = nullptr;
};

// "LIST_v2.9".
const char* list_get_version();

// Empties the list and makes its mutex. list_register_callbacks must follow.
int list_create(List* list, const ListParams* params);
// Sets where nodes come from; an entry left none keeps the former one.
int list_register_callbacks(List* list, const ListCallbacks* callbacks);
// Puts `payload` at the place `where`. The first element of a list becomes its current one.
int list_insert_element(List* list, std::uint32_t where, void* payload);
// Takes out the element at `where`; never waits for one. `*payload` is none unless the result is 0.
// If it was the current element, the one behind it becomes current.
int list_remove_element(List* list, std::uint32_t where, void** payload);
// Frees the nodes, not the payloads, and the mutex. No other thread may use the list any more.
int list_destroy(List* list);

}  // namespace mediasplit
