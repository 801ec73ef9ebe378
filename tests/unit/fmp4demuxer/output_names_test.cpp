#include "src/fmp4demuxer/output_names.h"

#include <gtest/gtest.h>

#include "src/fmp4demuxer/checks/prisma_codecs.h"
#include "tests/unit/fmp4demuxer/demux_run.h"

namespace mediasplit {
namespace {

// A demultiplexer with one track of id 7.
struct Named {
    Named() {
        demuxer.input_mode = kInputFile;
        demuxer.output_dir = "dir";
        demuxer.output_base = "film";
        demuxer.streams.push_back(std::make_unique<Mp4Stream>());
        demuxer.streams[0]->track_id = 7;
        demuxer.stream_count = 1;
    }

    void use(ManifestContext& context) {
        demuxer.input_mode = kInputHls;
        demuxer.manifest_context = &context;
    }
    void use(DashContext& context) {
        demuxer.input_mode = kInputDash;
        demuxer.dash_context = &context;
    }
    std::string name(std::uint32_t stream_type = kStreamVideo, OptText extension = "264") {
        std::string text;
        EXPECT_EQ(buildFullName_mp4(&text, &demuxer, 0, extension, stream_type), Status::kOk);
        return text;
    }

    Mp4Demuxer demuxer;
};

TEST(OutputNames, PlainFileHasBaseAndTrackId) {
    Named named;
    EXPECT_EQ(named.name(), "dir/film_track_id_7.out.264");
    named.demuxer.output_suffix = "seg";
    EXPECT_EQ(named.name(), "dir/film_seg_track_id_7.out.264");
}

TEST(OutputNames, LongExtensionIsReplaced) {
    Named named;
    EXPECT_EQ(named.name(kStreamVideo, "abcdef"), "dir/film_track_id_7.out.abcdef");
    EXPECT_EQ(named.name(kStreamVideo, "abcdefg"), "dir/film_track_id_7.out.unknow");
}

TEST(OutputNames, IframeStreamHasNoName) {
    Named named;
    named.demuxer.input_mode = kInputHlsIframe;
    EXPECT_EQ(named.name(), "");
}

TEST(OutputNames, MissingArgumentsAreRefused) {
    Named named;
    RecordingSink sink;
    std::string text;
    EXPECT_TRUE(has_failed(buildFullName_mp4(nullptr, &named.demuxer, 0, "264", kStreamVideo)));
    EXPECT_TRUE(has_failed(buildFullName_mp4(&text, nullptr, 0, "264", kStreamVideo)));
    EXPECT_TRUE(has_failed(buildFullName_mp4(&text, &named.demuxer, 0, nullptr, kStreamVideo)));
    EXPECT_TRUE(has_failed(buildFullName_mp4(&text, &named.demuxer, 1, "264", kStreamVideo)));
    EXPECT_EQ(sink.count(3006), 4U);
}

TEST(OutputNames, AudioOfAPlaylistHasGroupLanguageAndChannels) {
    Named named;
    ManifestContext context;
    named.use(context);
    EXPECT_EQ(named.name(kStreamAudio, "aac"), "dir/film.out.aac");
    context.group_id = "aud1";
    context.language = "en";
    context.channels_text = "6";
    EXPECT_EQ(named.name(kStreamAudio, "aac"), "dir/film_GroupID_aud1_Lang_en_Channel_6ch.out.aac");
    context.channels_text = "16/JOC";
    EXPECT_EQ(named.name(kStreamAudio, "ec3"),
              "dir/film_GroupID_aud1_Lang_en_Channel_16JOC.out.ec3");
}

TEST(OutputNames, OverlongChannelTextIsLeftOut) {
    Named named;
    ManifestContext context;
    named.use(context);
    context.channels_text = std::string(32, 'J');
    EXPECT_EQ(named.name(kStreamAudio), "dir/film_Channel_" + std::string(32, 'J') + ".out.264");
    RecordingSink sink;
    context.channels_text = std::string(33, 'J');
    EXPECT_EQ(named.name(kStreamAudio), "dir/film.out.264");
    EXPECT_EQ(sink.count(3006), 1U);
}

TEST(OutputNames, VideoOfAPlaylistHasMainCodecAndBitrate) {
    Named named;
    ManifestContext context;
    context.codecs = "mp4a.40.2,pxhe.08.07";
    context.bandwidth = "800000";
    named.use(context);
    EXPECT_EQ(named.name(), "dir/film_Codec_pxhe.08.07_Bitrate_800000bps.out.264");
    context.codecs = "mp4a.40.2,avc1.64001f";
    EXPECT_EQ(named.name(), "dir/film_Codec_mp4a.40.2_avc1.64001f_Bitrate_800000bps.out.264");
}

TEST(OutputNames, AdditionThatWouldPass1023CharactersIsLeftOut) {
    Named named;
    ManifestContext context;
    context.group_id = std::string(1024, 'g');
    context.language = "en";
    named.use(context);
    EXPECT_EQ(named.name(kStreamAudio), "dir/film_Lang_en.out.264");
}

TEST(OutputNames, OtherTypesOfAPlaylistKeepTheBaseUnlessTheExtensionIsUnknown) {
    Named named;
    ManifestContext context;
    context.codecs = "stpp";
    named.use(context);
    EXPECT_EQ(named.name(kStreamText, "data"), "dir/film.out.data");
    const std::string unknown = named.name(kStreamText, "unknow");
    EXPECT_EQ(unknown.substr(0, 16), "dir/_Codec_stpp_");
    EXPECT_EQ(unknown.substr(unknown.size() - 11), ".out.unknow");
}

TEST(OutputNames, RepresentationHasPeriodAndItsId) {
    Named named;
    DashContext context;
    context.period_index = 3;
    named.use(context);
    EXPECT_EQ(named.name(), "dir/film_PerIdx_3.out.264");
    context.period_id = "p1";
    context.representation_id = "v/720";
    EXPECT_EQ(named.name(), "dir/film_PerID_p1_RepID_v_720.out.264");
    context.period_id = std::string(1020, 'p');
    EXPECT_EQ(named.name(), "dir/film_PerIdx_3_RepID_v_720.out.264");
}

TEST(OutputNames, LongNamesAreMadeSafe) {
    Named named;
    ManifestContext context;
    context.language = std::string(300, 'l');
    named.use(context);
    RecordingSink sink;
    const std::string text = named.name(kStreamAudio);
    EXPECT_EQ(text.substr(0, 16), "dir/film_Lang_ll");
    EXPECT_EQ(text.substr(4 + 225, 2), "%_");
    EXPECT_EQ(sink.count(4079), 1U);
}

TEST(MainCodec, IsTheFirstEnhancementWordElseTheWholeList) {
    EXPECT_EQ(get_main_codec("mp4a.40.2,pxav.09.01,pxh1.08.02"), "pxav.09.01");
    EXPECT_EQ(get_main_codec("pxa1.09.01"), "pxa1.09.01");
    EXPECT_EQ(get_main_codec("pxh1.08.02,x"), "pxh1.08.02");
    EXPECT_EQ(get_main_codec("avc1.64001f,mp4a.40.2"), "avc1.64001f,mp4a.40.2");
    EXPECT_EQ(get_main_codec("pav1.10.01"), "pav1.10.01");
}

TEST(MainCodec, IsEmptyForNoListAndOverlongOnes) {
    EXPECT_EQ(get_main_codec(nullptr), "");
    EXPECT_EQ(get_main_codec(""), "");
    EXPECT_EQ(get_main_codec(std::string(100, 'a')), std::string(100, 'a'));
    EXPECT_EQ(get_main_codec(std::string(90, 'a') + ",pxhe.08.07"), "");
}

}  // namespace
}  // namespace mediasplit
