#include <gtest/gtest.h>

#include "src/id3demuxer/id3demux.h"
#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

struct Name {
    int result = 0;
    std::string path{};
    std::vector<int> ids{};
};

Name name_of(const ManifestContext* context, OptText name = "a",
             PackedKind kind = PackedKind::kEac3, OptText extension = "ec3") {
    RecordingSink sink;
    Name made;
    made.result = buildFullName_Id3(&made.path, "out", name, context, extension, kind);
    made.ids = sink.ids();
    return made;
}

ManifestContext rendition() {
    ManifestContext context;
    context.group_id = "surround";
    context.language = "en";
    context.channels_text = "6";
    return context;
}

TEST(PackedAudioName, TellsTheRendition) {
    const ManifestContext context = rendition();
    EXPECT_EQ(name_of(&context).path, "out/a_GroupID_surround_Lang_en_Channel_6ch.out.ec3");
    for (const PackedKind kind : {PackedKind::kAc3, PackedKind::kAac, PackedKind::kAc4}) {
        EXPECT_EQ(name_of(&context, "a", kind, "x").path,
                  "out/a_GroupID_surround_Lang_en_Channel_6ch.out.x");
    }
}

TEST(PackedAudioName, LeavesOutWhatThePlaylistDoesNotTell) {
    ManifestContext context = rendition();
    context.group_id.reset();
    EXPECT_EQ(name_of(&context).path, "out/a_Lang_en_Channel_6ch.out.ec3");
    context.language.reset();
    EXPECT_EQ(name_of(&context).path, "out/a_Channel_6ch.out.ec3");
    context.channels_text.reset();
    EXPECT_EQ(name_of(&context).path, "out/a.out.ec3");
}

TEST(PackedAudioName, ChannelsWithAnIdentifierLoseWhatNoFileNameHas) {
    ManifestContext context;
    context.channels_text = "16/JOC";
    EXPECT_EQ(name_of(&context).path, "out/a_Channel_16JOC.out.ec3");
    context.channels_text = std::string(32, '/');
    EXPECT_EQ(name_of(&context).path, "out/a_Channel_.out.ec3");
}

TEST(PackedAudioName, ChannelsOfMoreThan32CharactersAreLeftOut) {
    ManifestContext context;
    context.channels_text = std::string(33, '7');
    const Name made = name_of(&context);
    EXPECT_EQ(made.path, "out/a.out.ec3");
    EXPECT_EQ(made.ids, (std::vector<int>{4025, 3006}));
}

TEST(PackedAudioName, PiecesThatWouldPassTheLimitAreLeftOut) {
    ManifestContext context = rendition();
    context.group_id = std::string(1024, 'g');
    EXPECT_EQ(name_of(&context).path, "out/a_Lang_en_Channel_6ch.out.ec3");
    // 1 + 9 + 1013 is one below the limit; what is longer than a name may be is cut.
    context = {};
    context.group_id = std::string(1013, 'g');
    EXPECT_TRUE(name_of(&context).path.starts_with("out/a_GroupID_ggg"));
    context.group_id = std::string(1014, 'g');
    EXPECT_EQ(name_of(&context).path, "out/a.out.ec3");
}

TEST(PackedAudioName, LongNamesAreCut) {
    const Name made = name_of(nullptr, std::string(1023, 'n'));
    EXPECT_EQ(made.result, 0);
    EXPECT_LT(made.path.size(), 4 + 249 + 8U);
    EXPECT_EQ(name_of(nullptr, std::string(1024, 'n')).path, "out/.out.ec3");
}

TEST(PackedAudioName, CharactersThatNoFileNameHasAreReplaced) {
    ManifestContext context = rendition();
    context.group_id = "a/b,c";
    EXPECT_EQ(name_of(&context).path, "out/a_GroupID_a_b_c_Lang_en_Channel_6ch.out.ec3");
}

TEST(PackedAudioName, WithoutAPlaylistIsTheNameAlone) {
    EXPECT_EQ(name_of(nullptr).path, "out/a.out.ec3");
    EXPECT_EQ(name_of(nullptr, "b", PackedKind::kNone, "aac").path, "out/b.out.aac");
}

TEST(PackedAudioName, LongExtensionsBecomeUnknow) {
    EXPECT_EQ(name_of(nullptr, "a", PackedKind::kNone, "sixsix").path, "out/a.out.sixsix");
    EXPECT_EQ(name_of(nullptr, "a", PackedKind::kNone, "seven77").path, "out/a.out.unknow");
}

TEST(PackedAudioName, UnknownKindIsNamedForItsCodecsAndTheTime) {
    ManifestContext context;
    context.codecs = "opus";
    const Name made = name_of(&context, "a", PackedKind::kNone, "unknown");
    EXPECT_EQ(made.result, 0);
    EXPECT_TRUE(made.path.starts_with("out/_Codecopus_")) << made.path;
    EXPECT_TRUE(made.path.ends_with(".out.unknow"));
    EXPECT_EQ(made.path.find_first_not_of("0123456789", 15), made.path.size() - 11);
    // Another extension has no name.
    const Name none = name_of(&context, "a", PackedKind::kNone, "aac");
    EXPECT_EQ(none.result, 1);
    EXPECT_EQ(none.path, "");
    EXPECT_TRUE(none.ids.empty());
}

TEST(PackedAudioName, MissingArgumentsRaise3006) {
    const Name made = name_of(nullptr, "a", PackedKind::kNone, nullptr);
    EXPECT_EQ(made.result, 1);
    EXPECT_EQ(made.ids, std::vector<int>{3006});
    RecordingSink sink;
    EXPECT_EQ(buildFullName_Id3(nullptr, "out", "a", nullptr, "ec3", PackedKind::kEac3), 1);
    ASSERT_EQ(sink.ids(), std::vector<int>{3006});
    EXPECT_EQ(sink.reports()[0].text,
              "INVALID INPUT PARAMETER ! [ File : ../../../../mediacheck2/src/id3demuxer, Line : "
              "553 ]");
}

}  // namespace
}  // namespace mediasplit
