#include "src/util/fetched_files.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>

namespace mediasplit {
namespace {

// One note. Notes are used again and never freed, so that a signal handler can walk them at any
// time; there are as many as files were ever in use at once.
struct Note {
    std::atomic<bool> in_use = false;
    std::array<char, 256> path{};
    Note* next = nullptr;
};

std::atomic<Note*> first_note = nullptr;
std::mutex change;

std::atomic<bool> run_ends = false;
// Threads that may be about to create a file; 1 if this one is. A signal between the two finds this
// thread counted among the others, which costs some waiting.
std::atomic<int> creating = 0;
thread_local std::atomic<int> creating_here = 0;

// While one stands, stop_fetched_files() waits.
class Creation {
public:
    Creation() {
        ++creating;
        ++creating_here;
        while (run_ends) {
            stand_back();
        }
    }
    Creation(const Creation&) = delete;
    Creation& operator=(const Creation&) = delete;
    ~Creation() {
        --creating_here;
        --creating;
    }

private:
    static void stand_back() {
        --creating;
        ::pause();
        ++creating;
    }
};

Note* find_note(const auto& wanted) {
    for (Note* note = first_note.load(); note != nullptr; note = note->next) {
        if (wanted(*note)) {
            return note;
        }
    }
    return nullptr;
}

Note* find_path(const std::string& path) {
    return find_note([&path](const Note& note) { return note.in_use && path == note.path.data(); });
}

Note* free_note() {
    if (Note* const note = find_note([](const Note& note) { return !note.in_use; })) {
        return note;
    }
    auto* const note = new Note;
    note->next = first_note.load();
    first_note.store(note);
    return note;
}

}  // namespace

void note_fetched_file(const std::string& path) {
    const std::lock_guard lock(change);
    if (path.size() >= Note{}.path.size() || find_path(path) != nullptr) {
        return;
    }
    Note* const note = free_note();
    std::memcpy(note->path.data(), path.c_str(), path.size() + 1);
    note->in_use.store(true);
}

std::FILE* create_fetched_file(const std::string& path) {
    const Creation creation;
    note_fetched_file(path);
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        forget_fetched_file(path);
    }
    return file;
}

void forget_fetched_file(const std::string& path) {
    const std::lock_guard lock(change);
    if (Note* const note = find_path(path)) {
        note->in_use.store(false);
    }
}

int remove_fetched_file(const std::string& path) {
    const int result = std::remove(path.c_str());
    forget_fetched_file(path);
    return result;
}

void stop_fetched_files() {
    run_ends = true;
    constexpr int kTurns = 1000;
    constexpr timespec kTurn{0, 1'000'000};  // a millisecond
    for (int turn = 0; turn < kTurns && creating > creating_here; ++turn) {
        static_cast<void>(::nanosleep(&kTurn, nullptr));
    }
}

void remove_all_fetched_files() {
    static_cast<void>(find_note([](const Note& note) {
        if (note.in_use) {
            static_cast<void>(::unlink(note.path.data()));
        }
        return false;
    }));
}

}  // namespace mediasplit
