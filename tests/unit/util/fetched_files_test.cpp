#include "src/util/fetched_files.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/temp_folder.h"

namespace mediasplit {
namespace {

TEST(FetchedFiles, AllNotedFilesAreRemovedAndNoOthers) {
    const TempFolder folder;
    for (const char* name : {"a", "b", "c", "d"}) {
        (void)folder.write(name, "x");
    }
    note_fetched_file(folder.path("a"));
    note_fetched_file(folder.path("b"));
    note_fetched_file(folder.path("c"));
    forget_fetched_file(folder.path("b"));
    remove_all_fetched_files();
    EXPECT_FALSE(std::filesystem::exists(folder.path("a")));
    EXPECT_TRUE(std::filesystem::exists(folder.path("b")));
    EXPECT_FALSE(std::filesystem::exists(folder.path("c")));
    EXPECT_TRUE(std::filesystem::exists(folder.path("d")));
    forget_fetched_file(folder.path("a"));
    forget_fetched_file(folder.path("c"));
}

TEST(FetchedFiles, FileThatWasNeverNotedIsRemovedAllTheSame) {
    const TempFolder folder;
    (void)folder.write("a", "x");
    EXPECT_EQ(remove_fetched_file(folder.path("a")), 0);
    EXPECT_NE(remove_fetched_file(folder.path("a")), 0);
}

TEST(FetchedFiles, NotedTwiceIsForgottenAtOnce) {
    const TempFolder folder;
    (void)folder.write("a", "x");
    note_fetched_file(folder.path("a"));
    note_fetched_file(folder.path("a"));
    forget_fetched_file(folder.path("a"));
    remove_all_fetched_files();
    EXPECT_TRUE(std::filesystem::exists(folder.path("a")));
}

TEST(FetchedFiles, NameLongerThanAnyOfTheProgramIsLeftAlone) {
    const std::string name(5000, 'x');
    note_fetched_file(name);
    EXPECT_NE(remove_fetched_file(name), 0);
}

// In a process of its own, which ends like a run that is told to.
TEST(FetchedFiles, NoThreadCreatesAFileOnceTheRunEnds) {
    const TempFolder folder;
    const auto end_amid_threads = [&folder] {
        for (int t = 0; t < 8; ++t) {
            std::thread([&folder, t] {
                for (int i = 0;; ++i) {
                    const std::string path =
                        folder.path(std::to_string(t) + "_" + std::to_string(i));
                    (void)std::fclose(create_fetched_file(path));
                    (void)remove_fetched_file(path);
                }
            }).detach();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        stop_fetched_files();
        remove_all_fetched_files();
        ::_exit(0);
    };
    EXPECT_EXIT(end_amid_threads(), testing::ExitedWithCode(0), "");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(FetchedFiles, FileThatCannotBeCreatedIsNotNoted) {
    const TempFolder folder;
    EXPECT_EQ(create_fetched_file(folder.path("none/a")), nullptr);
    std::filesystem::create_directory(folder.path("none"));
    (void)folder.write("none/a", "x");
    remove_all_fetched_files();
    EXPECT_TRUE(std::filesystem::exists(folder.path("none/a")));
}

TEST(FetchedFiles, ManyThreadsKeepTheirFilesApart) {
    const TempFolder folder;
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&folder, t] {
            for (int i = 0; i < 100; ++i) {
                const std::string name = std::to_string(t) + "_" + std::to_string(i);
                note_fetched_file(folder.path(name));
                (void)folder.write(name, "x");
                if (i % 2 == 0) {
                    EXPECT_EQ(remove_fetched_file(folder.path(name)), 0);
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    remove_all_fetched_files();
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
    for (int t = 0; t < 8; ++t) {
        for (int i = 1; i < 100; i += 2) {
            forget_fetched_file(folder.path(std::to_string(t) + "_" + std::to_string(i)));
        }
    }
}

}  // namespace
}  // namespace mediasplit
