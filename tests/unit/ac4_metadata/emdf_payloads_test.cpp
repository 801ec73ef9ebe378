#include "ac4/metadata/emdf_payloads.h"

#include <gtest/gtest.h>

#include "ac4/metadata/metadata_codes.h"
#include "tests/unit/ac4_metadata/metadata_test_reader.h"

namespace mediasplit {
namespace {

struct Outcome {
    std::uint32_t code;
    EmdfContext context;
    std::size_t position;
};

Outcome parse(const MetadataBits& text, Ac4MetadataState& state, int substream = 0) {
    TestReader reader(text);
    Outcome out{};
    out.code = parse_emdf_payloads_substream(&state, substream, reader.in, &out.context);
    out.position = reader.position();
    return out;
}

EmdfText ims_payload(const ImsText& text) {
    EmdfText payload;
    payload.id = 18;
    payload.payload = write_ims(text);
    return payload;
}

TEST(EmdfPayloads, ClosingIdAloneIsAlignedToAByte) {
    Ac4MetadataState state;
    const Outcome out = parse(write_emdf({}).align(), state);
    EXPECT_EQ(out.code, kMetadataOk);
    EXPECT_EQ(out.position, 8U);
    EXPECT_EQ(out.context.payload_count, 0U);
}

TEST(EmdfPayloads, EveryFormOfConfigurationIsSteppedOver) {
    std::vector<EmdfText> payloads;
    for (int form = 0; form < 64; ++form) {
        EmdfText payload;
        payload.id = form % 2 == 0 ? 1 : 77;  // the second is extended
        const auto number = static_cast<std::uint32_t>(form);
        payload.smpoffst = form & 1 ? OptionalCode(number * 100) : std::nullopt;
        payload.duration = form & 2 ? OptionalCode(number * 99) : std::nullopt;
        payload.groupid = form & 4 ? OptionalCode(number) : std::nullopt;
        payload.codecdata = form & 8 ? OptionalCode(number) : std::nullopt;
        payload.discard = (form & 16) != 0;
        payload.frame_aligned = (form & 32) != 0 && !payload.smpoffst;
        payload.payload.assign(number * 7, 0xFF);
        payloads.push_back(payload);
    }
    const MetadataBits bits = write_emdf(payloads).align();
    Ac4MetadataState state;
    const Outcome out = parse(bits, state);
    EXPECT_EQ(out.code, kMetadataOk);
    EXPECT_EQ(out.position, bits.size());
    EXPECT_EQ(out.context.payload_count, 64U);
    EXPECT_FALSE(out.context.ims_present);
    EXPECT_EQ(ac4analyze_get_ims_info(&state, 0), nullptr);  // no trace of them
}

TEST(EmdfPayloads, ImmersiveStereoKeepsEveryField) {
    ImsText text;
    text.version = 2;
    text.code_3 = 5;
    text.flag_1 = true;
    text.code_5 = 19;
    text.code_2 = 3;
    text.flag_2 = true;
    text.tail = {2, true};
    const MetadataBits bits = write_emdf({ims_payload(text)}).align();
    Ac4MetadataState state;
    const Outcome out = parse(bits, state, 127);
    EXPECT_EQ(out.code, kMetadataOk);
    EXPECT_TRUE(out.context.ims_present);
    const ImsInfo* ims = ac4analyze_get_ims_info(&state, 127);
    ASSERT_NE(ims, nullptr);
    EXPECT_EQ(ims->version, 2);
    EXPECT_EQ(ims->code_3, 5);
    EXPECT_TRUE(ims->flag_1 && ims->has_code_5 && ims->flag_2 && ims->has_tail && ims->tail_flag);
    EXPECT_EQ(ims->code_5, 19);
    EXPECT_EQ(ims->code_2, 3);
    EXPECT_EQ(ims->tail_code_2, 2);
    EXPECT_EQ(ac4analyze_get_ims_info(&state, 126), nullptr);
}

TEST(EmdfPayloads, ImmersiveStereoWithoutItsOptionalFields) {
    Ac4MetadataState state;
    const Outcome out = parse(write_emdf({ims_payload({})}).align(), state, 3);
    EXPECT_EQ(out.code, kMetadataOk);
    const ImsInfo* ims = ac4analyze_get_ims_info(&state, 3);
    ASSERT_NE(ims, nullptr);
    EXPECT_FALSE(ims->flag_1 || ims->has_code_5 || ims->flag_2 || ims->has_tail);
}

TEST(EmdfPayloads, ImmersiveStereoVersion3IsNotUnderstood) {
    ImsText text;
    text.version = 3;
    Ac4MetadataState state;
    const Outcome out = parse(write_emdf({ims_payload(text)}).align(), state);
    EXPECT_EQ(out.code, kMetadataImsVersion);
    EXPECT_EQ(out.code, 128U);
    EXPECT_EQ(ac4analyze_get_ims_info(&state, 0), nullptr);
}

TEST(EmdfPayloads, ImmersiveStereoCutByItsPayloadSizeRunsOut) {
    ImsText text;
    text.code_5 = 1;
    EmdfText payload = ims_payload(text);
    payload.payload.resize(1);
    Ac4MetadataState state;
    EXPECT_EQ(parse(write_emdf({payload}).align(), state).code, kMetadataRanOut);
}

TEST(EmdfPayloads, SubstreamNumberOutsideTheSlotsDropsTheRecord) {
    for (const int substream : {-1, 128, 100000}) {
        Ac4MetadataState state;
        EXPECT_EQ(parse(write_emdf({ims_payload({})}).align(), state, substream).code, kMetadataOk);
        EXPECT_EQ(ac4analyze_get_ims_info(&state, substream), nullptr);
    }
}

TEST(EmdfPayloads, PayloadBeyondTheDataRunsOut) {
    EmdfText payload;
    payload.id = 5;
    payload.payload = {1, 2, 3};
    payload.size = 4;
    Ac4MetadataState state;
    const Outcome out = parse(MetadataBits(write_emdf_payload(payload)), state);
    EXPECT_EQ(out.code, kMetadataRanOut);
    EXPECT_EQ(out.context.payload_count, 0U);
}

TEST(EmdfPayloads, EndlessIdIsRefused) {
    Ac4MetadataState state;
    EXPECT_EQ(parse(MetadataBits().code(std::string(4000, '1')), state).code, kMetadataTooLong);
}

TEST(EmdfPayloads, CutAnywhereRunsOut) {
    EmdfText other;
    other.id = 40;
    other.smpoffst = 5000;
    other.discard = false;
    other.payload = {1, 2};
    const MetadataBits bits = write_emdf({other, ims_payload({})}).align();
    const std::size_t needed = write_emdf({other, ims_payload({})}).size();
    for (std::size_t kept = 0; kept < bits.size(); ++kept) {
        Ac4MetadataState state;
        EXPECT_EQ(parse(bits.first(kept), state).code, kMetadataRanOut) << kept << " " << needed;
    }
}

TEST(EmdfSubstream, OfSizeZeroIsDone) {
    Ac4MetadataState state;
    EmdfContext context;
    EXPECT_EQ(ac4analyze_parse_emdf_payloads_substream(&state, 0, nullptr, 0, &context),
              kMetadataOk);
}

TEST(EmdfSubstream, ReadsItsPayloads) {
    const std::vector<std::uint8_t> data = write_emdf({ims_payload({})}).to_bytes();
    Ac4MetadataState state;
    EmdfContext context;
    EXPECT_EQ(
        ac4analyze_parse_emdf_payloads_substream(&state, 9, data.data(), data.size(), &context),
        kMetadataOk);
    EXPECT_NE(ac4analyze_get_ims_info(&state, 9), nullptr);
    EXPECT_EQ(
        ac4analyze_parse_emdf_payloads_substream(&state, 9, data.data(), data.size() - 1, &context),
        kMetadataRanOut);
}

TEST(EmdfSubstream, CountsWhatItReadsWithoutThePayloads) {
    EmdfText payload;
    payload.id = 1;
    payload.payload.assign(100, 0x55);
    // Twice id 5, flags 5 and size 9, the closing id 5 and 5 bits up to the byte.
    const std::vector<std::uint8_t> data = write_emdf({payload, payload}).to_bytes();
    ASSERT_EQ(data.size(), 206U);
    Ac4MetadataState state;
    EmdfContext context;
    for (const std::int64_t counted : {48, 96}) {
        EXPECT_EQ(
            ac4analyze_parse_emdf_payloads_substream(&state, 0, data.data(), data.size(), &context),
            kMetadataOk);
        EXPECT_EQ(state.bits_read, counted);
    }
    EXPECT_EQ(
        ac4analyze_parse_emdf_payloads_substream(nullptr, 0, data.data(), data.size(), &context),
        kMetadataOk);
}

TEST(EmdfSubstream, StateResetForgetsTheRecord) {
    Ac4MetadataState state;
    parse(write_emdf({ims_payload({})}).align(), state);
    ASSERT_NE(ac4analyze_get_ims_info(&state, 0), nullptr);
    ac4_metadata_state_reset(&state);
    EXPECT_EQ(ac4analyze_get_ims_info(&state, 0), nullptr);
}

}  // namespace
}  // namespace mediasplit
