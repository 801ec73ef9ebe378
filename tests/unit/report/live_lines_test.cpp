#include "src/report/live_lines.h"

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace mediasplit::report {
namespace {

StreamProgress progress_of(const std::string& name, std::uint64_t segments) {
    StreamProgress progress;
    progress.name = name;
    progress.segments = segments;
    return progress;
}

TEST(LiveLines, MainStreamStandsAlone) {
    const TempFolder folder;
    StreamProgress main = progress_of("", 0);
    main.findings = 1;
    main.outputs = {folder.write("a", std::string(1500, 'x')), folder.write("b", "x"),
                    folder.path("missing")};
    EXPECT_EQ(live_text({main}, 80, 10), "Main stream: 1,501 bytes, 1 finding\n");
}

TEST(LiveLines, StreamsOfAManifestStandWithoutTheMainOne) {
    const std::vector<StreamProgress> streams = {progress_of("", 0), progress_of("a.m3u8", 1),
                                                 progress_of("b\n", 12)};
    EXPECT_EQ(live_text(streams, 80, 10),
              "a.m3u8: 1 segment, 0 bytes, 0 findings\n"
              "b\\x0A: 12 segments, 0 bytes, 0 findings\n");
}

TEST(LiveLines, FitTheTerminal) {
    std::vector<StreamProgress> streams = {progress_of("", 0)};
    for (int i = 0; i < 5; ++i) {
        streams.push_back(progress_of("\u00e4\u00e4" + std::to_string(i), 0));
    }
    EXPECT_EQ(live_text(streams, 3, 3),
              "\u00e4\u00e4"
              "0\n\u00e4\u00e4"
              "1\nand\n");
    EXPECT_EQ(live_text(streams, 80, 2),
              "\u00e4\u00e4"
              "0: 0 bytes, 0 findings\nand 4 streams more\n");
    EXPECT_EQ(live_text(streams, 80, 0), "");
    EXPECT_EQ(live_text(streams, 80, 1), "and 5 streams more\n");
    EXPECT_EQ(live_text({}, 80, 5), "");
}

}  // namespace
}  // namespace mediasplit::report
