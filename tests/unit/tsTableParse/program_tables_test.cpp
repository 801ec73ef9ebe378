#include <gtest/gtest.h>

#include <algorithm>

#include "src/tsTableParse/descriptors.h"
#include "src/tsTableParse/pmt.h"
#include "src/tsTableParse/section_assembly.h"
#include "tests/unit/tsTableParse/ts_run.h"

namespace mediasplit {
namespace {

constexpr std::uint16_t kVideo = 0x101;
constexpr std::uint16_t kAudio = 0x102;

TsRun select(const std::vector<TsStreamDescription>& streams) {
    return demux(one_program(streams).bytes());
}

std::vector<std::string> names(const TsRun& run) {
    std::vector<std::string> result;
    for (const auto& file : run.files) {
        result.push_back(file.first);
    }
    return result;
}

using Names = std::vector<std::string>;

TEST(StreamSelection, ExtensionFollowsTheStreamType) {
    const std::vector<std::pair<std::uint8_t, std::string>> rows = {
        {0x01, "mpeg"}, {0x02, "mpeg"}, {0x04, ""},    {0x0F, "adts"}, {0x11, "aac"},
        {0x1B, "h264"}, {0x24, "h265"}, {0x81, "ac3"}, {0x87, "ec3"}};
    for (const auto& [type, extension] : rows) {
        const TsRun run = select({{type, kVideo, {}}});
        EXPECT_EQ(names(run), Names{"main_PID_257.out." + extension}) << int{type};
        EXPECT_EQ(run.count(2022), 0U);
    }
}

TEST(StreamSelection, UnknownTypeIsReportedAndNotWritten) {
    const TsRun run = select({{0x15, kVideo, {}}});
    EXPECT_TRUE(run.files.empty());
    EXPECT_EQ(run.text(2022), "In TS, the stream type in PMT is unsupported : 0x15");
}

TEST(StreamSelection, PrivateDataFollowsItsDescriptors) {
    const std::vector<std::pair<std::uint8_t, std::string>> rows = {
        {0x7F, "ac4"}, {0x7A, "ec3"}, {0xCC, "ec3"}, {0x6A, "ac3"}, {0x28, "h264"}, {0x38, "h265"}};
    for (const auto& [tag, extension] : rows) {
        const TsRun run = select({{0x06, kVideo, descriptor(tag, {0, 0, 0, 0})}});
        EXPECT_EQ(names(run), Names{"main_PID_257.out." + extension}) << int{tag};
    }
}

TEST(StreamSelection, PrivateDataWithoutAKnownDescriptorIsSkippedSilently) {
    const TsRun run = select({{0x06, kVideo, descriptor(0x56, {1, 2, 3})}});
    EXPECT_TRUE(run.files.empty());
    EXPECT_TRUE(run.reports.empty());
}

TEST(StreamSelection, Ac4WinsTheExtensionAndEac3IsStillJudged) {
    Bytes tags = descriptor(0x7A, {0x00, 0x00, 0x00});
    const Bytes ac4 = descriptor(0x7F, {0});
    tags.insert(tags.end(), ac4.begin(), ac4.end());
    ManifestContext manifest;
    manifest.codecs = "mp4a.40.2";
    const TsRun run = demux(one_program({{0x06, kAudio, tags}}).bytes(), {.manifest = &manifest});
    EXPECT_EQ(names(run), Names{"main_PID_258.out.ac4"});
    EXPECT_EQ(run.count(4283), 1U);
}

TEST(StreamSelection, SecondVideoPidIsReportedAtEachTable) {
    TsBuilder builder = one_program({{0x1B, kVideo, {}}, {0x1B, kAudio, {}}});
    builder.pmt(0x100, 1, {{0x1B, kVideo, {}}, {0x1B, kAudio, {}}});
    const TsRun run = demux(builder.bytes());
    EXPECT_EQ(run.count(4075), 2U);
    EXPECT_EQ(run.files.size(), 1U);
    EXPECT_EQ(select({{0x1B, kVideo, {}}, {0x0F, kAudio, {}}}).count(4075), 0U);
}

TEST(StreamSelection, EleventhAudioStreamIsDropped) {
    std::vector<TsStreamDescription> streams;
    for (std::uint16_t i = 0; i < 12; ++i) {
        streams.push_back({0x0F, static_cast<std::uint16_t>(0x200 + i), {}});
    }
    const TsRun run = select(streams);
    EXPECT_EQ(run.files.size(), 10U);
    const std::string note =
        "A program has more audio streams than can be taken apart; one was dropped.";
    EXPECT_EQ(run.notes, Names(2, note));
}

TEST(StreamSelection, FilterKeepsOnePid) {
    TsBuilder builder = one_program({{0x1B, kVideo, {}}, {0x0F, kAudio, {}}});
    builder.pes(kVideo, {.payload = pattern(100, 1)});
    builder.pes(kAudio, {.stream_id = 0xC0, .pts = 5, .payload = pattern(50, 2)});
    const TsRun run = demux(builder.bytes(), {.pid_filter = kAudio});
    EXPECT_EQ(names(run), Names{"main_PID_258.out.adts"});
    EXPECT_EQ(run.files.at("main_PID_258.out.adts"), pattern(50, 2));
    EXPECT_EQ(run.summary.audio[0].first_pts, 5);
    const TsRun none = demux(builder.bytes(), {.pid_filter = 7});
    EXPECT_TRUE(none.files.empty());
    EXPECT_EQ(none.status, Status::kOk);
}

TEST(StreamSelection, NameHoldsTheBandwidth) {
    ManifestContext manifest;
    manifest.codecs = "avc1.640028";
    manifest.bandwidth = "2000000";
    const TsRun run = demux(one_program({{0x1B, kVideo, {}}}).bytes(), {.manifest = &manifest});
    EXPECT_EQ(names(run), Names{"main_PID_257_Bitrate_2000000bps.out.h264"});
}

TEST(StreamSelection, LongNameIsReportedAndCut) {
    const Bytes bytes = one_program({{0x1B, kVideo, {}}}).bytes();
    // The stem is the prefix and "_PID_257".
    const TsRun longest = demux(bytes, {.name_prefix = std::string(230, 'n')});
    EXPECT_EQ(longest.count(4079), 0U);
    EXPECT_EQ(names(longest), Names{std::string(230, 'n') + "_PID_257.out.h264"});
    const TsRun cut = demux(bytes, {.name_prefix = std::string(241, 'n')});
    EXPECT_EQ(cut.count(4079), 1U);
    ASSERT_EQ(cut.files.size(), 1U);
    EXPECT_EQ(names(cut)[0].substr(0, 227), std::string(225, 'n') + "%_");
}

TEST(StreamSelection, PrefixOf1024CharactersIsLeftOut) {
    const TsRun run =
        demux(one_program({{0x1B, kVideo, {}}}).bytes(), {.name_prefix = std::string(1024, 'n')});
    EXPECT_EQ(names(run), Names{"_PID_257.out.h264"});
}

TEST(StreamSelection, FileThatCannotBeMadeIsReportedAndFailsTheRun) {
    TsBuilder builder = one_program({{0x1B, kVideo, {}}});
    builder.pes(kVideo, {.payload = pattern(100, 1)});
    const TsRun run = demux(builder.bytes(), {.has_folder = false});
    EXPECT_EQ(run.count(4081), 1U);
    EXPECT_TRUE(has_failed(run.status));
    EXPECT_TRUE(run.files.empty());
    EXPECT_EQ(demux(builder.bytes()).count(4081), 0U);
}

// A program map over as many packets as it takes, each with a zero where a pointer field is read.
Bytes long_table(const Bytes& program_descriptors, const Bytes& streams) {
    const auto high = [](std::size_t value) { return static_cast<std::uint8_t>(value >> 8); };
    const auto low = [](std::size_t value) { return static_cast<std::uint8_t>(value); };
    const std::size_t length = 9 + program_descriptors.size() + streams.size() + 4;
    const std::size_t info = program_descriptors.size();
    Bytes section = {
        0x02, static_cast<std::uint8_t>(0xB0 | high(length)), low(length), 0, 1, 0xC1, 0, 0, 0xE1,
        0x01, static_cast<std::uint8_t>(0xF0 | high(info)),   low(info)};
    section.insert(section.end(), program_descriptors.begin(), program_descriptors.end());
    section.insert(section.end(), streams.begin(), streams.end());
    section.insert(section.end(), 4, 0);  // CRC_32
    TsBuilder builder;
    builder.pat({{1, 0x100}});
    constexpr std::size_t kRoom = 183;
    for (std::size_t at = 0; at < section.size(); at += kRoom) {
        Bytes payload = {0};
        const std::size_t end = std::min(at + kRoom, section.size());
        payload.insert(payload.end(), section.begin() + static_cast<std::ptrdiff_t>(at),
                       section.begin() + static_cast<std::ptrdiff_t>(end));
        builder.packet(0x100, at == 0, payload);
    }
    return builder.bytes();
}

void add_stream(Bytes& table, std::uint8_t type, std::uint16_t pid, const Bytes& descriptors = {}) {
    table.insert(table.end(),
                 {type, static_cast<std::uint8_t>(0xE0 | pid >> 8), static_cast<std::uint8_t>(pid),
                  0xF0, static_cast<std::uint8_t>(descriptors.size())});
    table.insert(table.end(), descriptors.begin(), descriptors.end());
}

TEST(Programs, HundredStreamsAreKept) {
    Bytes streams;
    for (std::uint16_t i = 0; i < 99; ++i) {
        add_stream(streams, 0x06, static_cast<std::uint16_t>(0x200 + i));
    }
    add_stream(streams, 0x0F, 0x300);
    add_stream(streams, 0x0F, 0x301);
    const TsRun run = demux(long_table({}, streams));
    EXPECT_EQ(names(run), Names{"main_PID_768.out.adts"});
    EXPECT_EQ(run.notes, Names{"A program has more than 100 streams; the others were dropped."});
}

TEST(Programs, TenDescriptorsOfAStreamAreKept) {
    for (const std::size_t ahead : {9U, 10U}) {
        Bytes descriptors;
        for (std::size_t i = 0; i < ahead; ++i) {
            descriptors.insert(descriptors.end(), {0x05, 0});
        }
        descriptors.insert(descriptors.end(), {0x6A, 0});
        Bytes streams;
        add_stream(streams, 0x06, 0x300, descriptors);
        add_stream(streams, 0x0F, 0x301);
        const Names others{"main_PID_769.out.adts"};
        const Names all{"main_PID_768.out.ac3", "main_PID_769.out.adts"};
        EXPECT_EQ(names(demux(long_table({}, streams))), ahead == 9 ? all : others);
    }
}

TEST(Programs, MoreThanAHundredProgramDescriptorsAreSteppedOver) {
    Bytes descriptors;
    for (int i = 0; i < 120; ++i) {
        descriptors.insert(descriptors.end(), {0x05, 1, 0xAA});
    }
    Bytes streams;
    add_stream(streams, 0x0F, 0x300);
    EXPECT_EQ(names(demux(long_table(descriptors, streams))), Names{"main_PID_768.out.adts"});
}

TEST(Programs, DescriptorLengthBeyondTheSectionReadsAsZeros) {
    Bytes streams;
    add_stream(streams, 0x0F, 0x300, {0x0A, 0xFF});
    const TsRun run = demux(long_table({0x05, 0xF0}, streams));
    EXPECT_EQ(names(run), Names{"main_PID_768.out.adts"});
}

TEST(Programs, OnlyProgramOfTheTableIsSelected) {
    TsBuilder builder;
    builder.pat({{5, 0x100}}).pmt(0x100, 5, {{0x1B, kVideo, {}}});
    EXPECT_EQ(demux(builder.bytes()).files.size(), 1U);
}

TEST(Programs, OfSeveralOnlyTheOneNumberedOneIsSelected) {
    TsBuilder builder;
    builder.pat({{2, 0x100}, {3, 0x110}});
    builder.pmt(0x100, 2, {{0x1B, kVideo, {}}}).pmt(0x110, 3, {{0x1B, kAudio, {}}});
    const TsRun none = demux(builder.bytes());
    EXPECT_TRUE(none.files.empty());
    EXPECT_EQ(none.status, Status::kOk);

    TsBuilder with_one;
    with_one.pat({{2, 0x100}, {1, 0x110}});
    with_one.pmt(0x100, 2, {{0x1B, kVideo, {}}}).pmt(0x110, 1, {{0x1B, kAudio, {}}});
    EXPECT_EQ(names(demux(with_one.bytes())), Names{"main_PID_258.out.h264"});
}

TEST(Programs, NetworkInformationIsCollectedAndNotRead) {
    TsBuilder builder;
    builder.pat({{0, 0x10}, {1, 0x100}});
    builder.pmt(0x10, 1, {{0x1B, kAudio, {}}});
    builder.pmt(0x100, 1, {{0x1B, kVideo, {}}});
    EXPECT_EQ(names(demux(builder.bytes())), Names{"main_PID_257.out.h264"});
}

TEST(Programs, ChangedTableOnTheSamePidIsIgnored) {
    TsBuilder builder = one_program({{0x1B, kVideo, {}}});
    builder.pmt(0x100, 1, {{0x1B, kVideo, {}}, {0x0F, kAudio, {}}});
    EXPECT_EQ(demux(builder.bytes()).files.size(), 1U);
}

TEST(Sections, SectionThatEndsWithThePacketIsComplete) {
    // 183 bytes of section behind the pointer field; the last three of them aren't collected.
    Bytes filler(183 - 3 - 9 - 5 - 2 - 4, 0);
    TsBuilder builder;
    builder.pat({{1, 0x100}}).pmt(0x100, 1, {{0x1B, kVideo, descriptor(0x52, filler)}});
    ASSERT_EQ(builder.bytes().size(), 2U * 188U);
    EXPECT_EQ(demux(builder.bytes()).files.size(), 1U);
}

TEST(Sections, SecondPacketOfASectionLosesItsFirstByteAsPointer) {
    // The stream entry lies in the second packet. With a first payload byte of 0 only that byte is
    // lost, which shifts the entry by one: no stream of a known type is found.
    Bytes descriptors;
    for (int i = 0; i < 2; ++i) {
        const Bytes one = descriptor(0x52, Bytes(84, 0));
        descriptors.insert(descriptors.end(), one.begin(), one.end());
    }
    TsBuilder builder;
    builder.pat({{1, 0x100}});
    builder.pmt(0x100, 1, {{0x0F, kAudio, {}}, {0x1B, kVideo, {}}}, descriptors);
    ASSERT_EQ(builder.bytes().size(), 3U * 188U);
    EXPECT_EQ(names(demux(builder.bytes())).size(), 0U);
}

TEST(Sections, LengthsOfNothingAndOfEverythingEnd) {
    for (const std::uint16_t pid : {std::uint16_t{0}, std::uint16_t{0x100}}) {
        TsBuilder builder = one_program({{0x1B, kVideo, {}}});
        builder.packet(pid, true, {0, 0x02, 0xB0, 0x00, 0, 0, 0});
        builder.packet(pid, true, {0, 0x02, 0xBF, 0xFF, 0, 0, 0});
        for (int i = 0; i < 40; ++i) {
            builder.packet(pid, false, pattern(184, 0));
        }
        demux(builder.bytes());
    }
}

TEST(Sections, MoreTablesThanThereIsRoomForAreDropped) {
    TsBuilder builder;
    std::vector<TsBuilder::Program> programs;
    for (std::uint16_t i = 0; i < 40; ++i) {
        programs.push_back(
            {static_cast<std::uint16_t>(i + 1), static_cast<std::uint16_t>(0x100 + i)});
    }
    builder.pat(programs);
    for (const auto& program : programs) {
        builder.pmt(program.pid, program.number,
                    {{0x0F, static_cast<std::uint16_t>(program.pid + 0x100), {}}});
    }
    const TsRun run = demux(builder.bytes());
    EXPECT_EQ(names(run), Names{"main_PID_512.out.adts"});
    EXPECT_EQ(run.notes,
              Names{"The transport stream has more than 10 programs; the others were dropped."});
}

TEST(Sections, TableThatNamesReservedPidsEnds) {
    TsBuilder builder = one_program({{0x1B, 0x0000, {}}, {0x0F, 0x1FFF, {}}, {0x0F, 0x0100, {}}});
    builder.packet(0x1FFF, true, pes_bytes({.stream_id = 0xC0, .payload = pattern(20, 1)}));
    const TsRun run = demux(builder.bytes());
    EXPECT_EQ(run.files.at("main_PID_8191.out.adts"), pattern(20, 1));
}

TEST(Descriptors, LabelsAreThoseOfTheirTags) {
    const std::vector<std::pair<std::uint8_t, std::string>> rows = {
        {0x0A, "(0x0A) ISO 639 Language Descriptor"},
        {0x6A, "(0x6A) AC-3 Descriptor (DVB)"},
        {0x7A, "(0x7A) Enhanced AC-3 Descriptor (DVB)"},
        {0x7F, "(0x7F) AC4 Descriptor"},
        {0x81, "(0x81) AC-3 / Descriptor (DVB)"},
        {0xB0, "(0xB0) PRSM Descriptor"},
        {0xCC, "(0xCC) Enhanced AC-3 Descriptor (ATSC)"},
        {0x05, "(0x05) STREAM DESCRIPTOR IS OF UNKNOWN TYPE"}};
    for (const auto& [tag, label] : rows) {
        const Bytes bytes = descriptor(tag, {1, 0, 0x10, 0x0D, 0});
        TsDescriptor parsed;
        std::size_t consumed = 0;
        (void)tsTableParseDescriptor({bytes}, parsed, consumed, nullptr, nullptr);
        EXPECT_EQ(parsed.name, label);
        EXPECT_EQ(consumed, bytes.size());
        EXPECT_EQ(parsed.raw, bytes);
    }
}

TEST(Descriptors, Eac3FieldsAreReadInOrder) {
    Ec3TsDescriptor ec3;
    const Bytes bytes =
        descriptor(0xCC, {0x7F, 0x6D, 0xD0, 0x15, 0xA1, 0xB1, 0xB2, 0xB3, 'e', 'n', 'g',  'f', 'r',
                          'a',  '1',  '1',  '1',  '2',  '2',  '2',  '3',  '3', '3', 0x01, 0x10});
    tsTableParseEAC3Descriptor({bytes}, ec3, nullptr);
    EXPECT_EQ(ec3.bsid_flag, 1);
    EXPECT_EQ(ec3.mixinfoexists_flag, 1);
    EXPECT_EQ(ec3.full_service_flag, 1);
    EXPECT_EQ(ec3.service_type, 5);
    EXPECT_EQ(ec3.number_of_channels, 5);
    EXPECT_EQ(ec3.language_flag, 1);
    EXPECT_EQ(ec3.language_flag_2, 1);
    EXPECT_EQ(ec3.bsid, 0x10);
    EXPECT_EQ(ec3.priority, 2);
    EXPECT_EQ(ec3.mainid, 5);
    EXPECT_EQ(ec3.asvc, 0xA1);
    EXPECT_EQ(ec3.substream1, 0xB1);
    EXPECT_EQ(ec3.substream3, 0xB3);
    EXPECT_EQ(ec3.language, (std::array<std::uint8_t, 3>{'e', 'n', 'g'}));
    EXPECT_EQ(ec3.language_2, (std::array<std::uint8_t, 3>{'f', 'r', 'a'}));
    EXPECT_EQ(ec3.substream2_lang, (std::array<std::uint8_t, 3>{'2', '2', '2'}));
    EXPECT_EQ(ec3.flag_ec3_extension_type_a, 1);
    EXPECT_EQ(ec3.complexity_index_type_a, 0x10);
}

TEST(Descriptors, Eac3ShorterThanItsFlagsHasNoExtension) {
    Ec3TsDescriptor ec3;
    Bytes bytes = descriptor(0xCC, {0x20, 0x00, 0x00});
    bytes.insert(bytes.end(), {0x1F, 0x01, 0x33});  // what follows the descriptor
    tsTableParseEAC3Descriptor({bytes}, ec3, nullptr);
    EXPECT_EQ(ec3.mainid, 7);
    EXPECT_EQ(ec3.flag_ec3_extension_type_a, 0);
    EXPECT_EQ(ec3.complexity_index_type_a, 0);
}

struct PrsmRun {
    PrsmTsDescriptor fields{};
    Status status = Status::kOk;
    std::vector<RecordedReport> reports{};

    [[nodiscard]] std::string text(int id) const {
        for (const auto& report : reports) {
            if (report.id == id) {
                return report.text;
            }
        }
        return {};
    }
};

PrsmRun read_prsm(const Bytes& body) {
    PrsmRun run;
    RecordingSink sink;
    const Bytes bytes = descriptor(0xB0, body);
    run.status = tsTableParsePRSMDescriptor({bytes}, run.fields, nullptr, nullptr);
    run.reports = sink.reports();
    return run;
}

// profile, level and the flags rpu, el, bl in the order of the descriptor's bits
Bytes prsm_body(unsigned profile, unsigned level, unsigned flags, const Bytes& rest) {
    Bytes body = {1, 0, static_cast<std::uint8_t>(profile << 1 | level >> 5),
                  static_cast<std::uint8_t>((level & 0x1F) << 3 | flags)};
    body.insert(body.end(), rest.begin(), rest.end());
    return body;
}

TEST(PrsmDescriptor, FieldsAreToldAsInfo) {
    const PrsmRun run = read_prsm(prsm_body(8, 5, 5, {0x40}));
    EXPECT_EQ(run.status, Status::kOk);
    EXPECT_EQ(run.fields.px_profile, 8);
    EXPECT_EQ(run.fields.px_level, 5);
    EXPECT_EQ(run.fields.px_bl_signal_compatibility_id, 4);
    const std::string lead = "In the TS PMT descriptor, the [Orvel Prisma] stream ";
    EXPECT_EQ(run.text(1001), lead + "version_major     : 1.");
    EXPECT_EQ(run.text(1002), lead + "version_minor     : 0.");
    EXPECT_EQ(run.text(1004), lead + "profile           : pxhe.stg(8).");
    EXPECT_EQ(run.text(1005), lead + "level              : fhd60(5).");
    EXPECT_EQ(run.text(1006), lead + "rpu_present       : Yes.");
    EXPECT_EQ(run.text(1007), lead + "el_present        : No.");
    EXPECT_EQ(run.text(1008), lead + "bl_present       : Yes.");
    EXPECT_EQ(run.text(1009), lead + "bl_compatible_id : 4.");
    EXPECT_EQ(run.text(1003), "");
    EXPECT_EQ(run.text(2034), "");
}

TEST(PrsmDescriptor, ProfileNamesAreThoseOfTheTable) {
    const std::vector<std::string> expected = {"pxav.per",   "pxav.pen", "pxhe.der", "pxhe.den",
                                               "pxhe.dtr",   "pxhe.stn", "pxhe.dth", "pxhe.dtb",
                                               "unassigned", "pxav.ser"};
    for (unsigned profile = 0; profile < expected.size(); ++profile) {
        const PrsmRun run = read_prsm(prsm_body(profile, 1, 5, {}));
        EXPECT_NE(run.text(1004).find(expected[profile] + "(" + std::to_string(profile) + ")"),
                  std::string::npos);
        EXPECT_EQ(run.text(1009), "");
    }
    const std::vector<std::string> compatible = {"pxhe.sth", "pxhe.str", "pxhe.stl", "pxhe.stg",
                                                 "pxhe.sts"};
    for (unsigned id = 1; id <= compatible.size(); ++id) {
        const PrsmRun run = read_prsm(prsm_body(8, 1, 5, {static_cast<std::uint8_t>(id << 4)}));
        EXPECT_NE(run.text(1004).find(compatible[id - 1] + "(8)"), std::string::npos);
    }
}

TEST(PrsmDescriptor, LevelNamesAreThoseOfTheTable) {
    const std::vector<std::string> expected = {"hd24",  "hd30",  "fhd24", "fhd30", "fhd60",
                                               "uhd24", "uhd30", "uhd48", "uhd60"};
    for (unsigned level = 1; level <= expected.size(); ++level) {
        const PrsmRun run = read_prsm(prsm_body(5, level, 5, {}));
        EXPECT_NE(run.text(1005).find(": " + expected[level - 1] + "("), std::string::npos);
    }
}

TEST(PrsmDescriptor, DependencyIsReadWithoutABaseLayer) {
    const PrsmRun run = read_prsm(prsm_body(4, 3, 6, {0x08, 0x08, 0x20}));
    EXPECT_EQ(run.fields.dependency_pid, 0x101U);
    EXPECT_EQ(run.text(1003),
              "In the TS PMT descriptor, the [Orvel Prisma] stream dependency PID : 257.");
    EXPECT_EQ(run.fields.px_bl_signal_compatibility_id, 2);
}

TEST(PrsmDescriptor, ValuesOutOfRangeStop) {
    const PrsmRun profile = read_prsm(prsm_body(10, 1, 5, {}));
    EXPECT_EQ(profile.status, Status::kRuleBroken);
    EXPECT_EQ(profile.text(4254),
              "For a [Orvel Prisma] stream, in TS PMT descriptor, the profile is invalid : 10.");
    EXPECT_EQ(profile.text(1004), "");
    const PrsmRun level = read_prsm(prsm_body(9, 10, 5, {}));
    EXPECT_NE(level.text(4255), "");
    EXPECT_NE(read_prsm(prsm_body(9, 0, 5, {})).text(4255), "");
    EXPECT_EQ(read_prsm(prsm_body(9, 9, 5, {})).status, Status::kOk);
    const PrsmRun id = read_prsm(prsm_body(8, 1, 5, {0x60}));
    EXPECT_NE(id.text(4256), "");
    EXPECT_EQ(id.text(1004), "");
    EXPECT_EQ(read_prsm(prsm_body(9, 1, 5, {0x60})).status, Status::kOk);
}

TEST(PrsmDescriptor, UnknownBytesLeftAreAWarning) {
    const PrsmRun run = read_prsm(prsm_body(5, 1, 5, {0, 0}));
    EXPECT_NE(run.text(2034), "");
    EXPECT_EQ(run.status, Status::kOk);
}

TEST(PrsmDescriptor, RefusedTableIsJudgedAgainAndSelectsNothing) {
    TsBuilder builder = one_program({{0x1B, kVideo, descriptor(0xB0, prsm_body(10, 1, 5, {}))}});
    builder.pmt(0x100, 1, {{0x1B, kVideo, {}}});
    const TsRun run = demux(builder.bytes());
    EXPECT_EQ(run.count(4254), 2U);
    EXPECT_TRUE(run.files.empty());
    EXPECT_EQ(run.status, Status::kRuleBroken);
}

// A table of 4 KB that is refused at its end, and small packets that would have it read each time.
TEST(PrsmDescriptor, LargeRefusedTableIsNotReadForEver) {
    Bytes descriptors;
    for (int i = 0; i < 2000; ++i) {
        descriptors.insert(descriptors.end(), {0x0A, 0});
    }
    const Bytes refused = descriptor(0xB0, prsm_body(10, 1, 5, {}));
    descriptors.insert(descriptors.end(), refused.begin(), refused.end());
    TsBuilder builder;
    builder.bytes() = long_table(descriptors, {});
    constexpr std::size_t kPackets = 5000;
    for (std::size_t i = 0; i < kPackets; ++i) {
        builder.packet(0x100, false, {0});
    }
    const TsRun run = demux(builder.bytes());
    EXPECT_GT(run.count(4254), 10U);
    EXPECT_LT(run.count(4254), 100U);  // (2^18 + 8 * 5000) / 4000 bytes, and one more
    EXPECT_EQ(run.status, Status::kRuleBroken);
    EXPECT_FALSE(run.notes.empty());
}

}  // namespace
}  // namespace mediasplit
