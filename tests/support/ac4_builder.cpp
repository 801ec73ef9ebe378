#include "tests/support/ac4_builder.h"

namespace mediasplit {
namespace {

MetadataBits substream_index(std::uint32_t index) {
    MetadataBits bits;
    return index < 3 ? bits.put(index, 2) : bits.put(3, 2).variable(index - 3, 2);
}

MetadataBits presence_and_rates(const BuildSubstream& substream, std::uint32_t fs_index) {
    MetadataBits bits;
    if (fs_index == 1) {
        bits.flag(substream.sf_multiplier.has_value());
        if (substream.sf_multiplier) {
            bits.flag(*substream.sf_multiplier);
        }
    }
    bits.flag(substream.bitrate.has_value());
    bits.code(substream.bitrate.value_or(""));
    if (substream.add_ch_base) {
        bits.flag(*substream.add_ch_base);
    }
    return bits;
}

MetadataBits frame_flags(const BuildSubstream& substream) {
    MetadataBits bits;
    for (const bool iframe : substream.iframes) {
        bits.flag(iframe);
    }
    return bits;
}

// ac4_substream_info.
MetadataBits inline_substream(const BuildSubstream& substream, std::uint32_t fs_index) {
    MetadataBits bits;
    bits.code(substream.mode).add(presence_and_rates(substream, fs_index));
    bits.add(write_content_type(substream.content)).add(frame_flags(substream));
    bits.add(substream_index(substream.index));
    if (substream.hsf_index) {
        bits.add(substream_index(*substream.hsf_index));
    }
    return bits;
}

MetadataBits group_substream(const BuildSubstream& substream, const BuildGroup& group,
                             std::uint32_t fs_index) {
    MetadataBits bits;
    if (group.channel_coded) {
        bits.code(substream.mode).code(substream.immersive);
    } else if (substream.ajoc) {
        bits.flag(true).code(*substream.ajoc);
    } else {
        bits.flag(false).code(
            substream.objects.value_or("000"
                                       "1"
                                       "0"));
    }
    bits.add(presence_and_rates(substream, fs_index)).add(frame_flags(substream));
    if (group.substreams_present) {
        bits.add(substream_index(substream.index));
        if (substream.hsf_index) {
            bits.add(substream_index(*substream.hsf_index));
        }
    }
    return bits;
}

MetadataBits emdf_count(std::size_t count) {
    MetadataBits bits;
    return count >= 1 && count <= 3 ? bits.put(count, 2) : bits.put(0, 2).variable(count - 4, 2);
}

MetadataBits skip_area(std::uint32_t skip_bytes) {
    MetadataBits bits;
    bits.put(skip_bytes & 31U, 5).flag(skip_bytes > 31);
    if (skip_bytes > 31) {
        bits.variable(skip_bytes >> 5, 2);
    }
    return bits.bytes(Ac4Bytes(skip_bytes, 0x5A));
}

MetadataBits config_bits(const BuildPresentation& presentation) {
    MetadataBits bits;
    bits.flag(!presentation.config.has_value());
    if (presentation.config) {
        const std::uint32_t config = *presentation.config;
        config < 7 ? bits.put(config, 3) : bits.put(7, 3).variable(config - 7, 2);
    }
    for (std::uint32_t i = 0; i < presentation.version; ++i) {
        bits.flag(true);
    }
    return bits.flag(false);
}

MetadataBits compatibility_and_id(const BuildPresentation& presentation) {
    MetadataBits bits;
    bits.put(presentation.mdcompat, 3).flag(presentation.id.has_value());
    if (presentation.id) {
        bits.variable(*presentation.id, 2);
    }
    return bits;
}

MetadataBits added_emdf(const BuildPresentation& presentation) {
    MetadataBits bits;
    if (presentation.add_emdf) {
        bits.add(emdf_count(presentation.add_emdf->size()));
        for (const BuildEmdf& emdf : *presentation.add_emdf) {
            bits.add(write_emdf_info(emdf));
        }
    }
    return bits;
}

// ac4_presentation_info.
MetadataBits old_presentation(const BuildPresentation& presentation, std::uint32_t fs_index) {
    MetadataBits bits = config_bits(presentation);
    if (presentation.config != 6U) {
        bits.add(compatibility_and_id(presentation)).code(presentation.rate_bits);
        bits.add(write_emdf_info(presentation.emdf));
        if (presentation.config) {
            bits.flag(presentation.hsf_ext);
        }
        if (presentation.config && *presentation.config > 6) {
            bits.add(skip_area(presentation.skip_bytes));
        }
        for (const BuildSubstream& substream : presentation.substreams) {
            bits.add(inline_substream(substream, fs_index));
        }
        bits.flag(presentation.pre_virtualized).flag(presentation.add_emdf.has_value());
    }
    return bits.add(added_emdf(presentation));
}

// ac4_presentation_v1_info.
MetadataBits new_presentation(const BuildPresentation& presentation) {
    MetadataBits bits = config_bits(presentation);
    if (presentation.config != 6U) {
        bits.add(compatibility_and_id(presentation)).code(presentation.rate_bits);
        bits.add(write_emdf_info(presentation.emdf)).flag(presentation.filter.has_value());
        if (presentation.filter) {
            bits.flag(*presentation.filter);
        }
        if (presentation.config) {
            bits.flag(presentation.multi_pid);
        }
        if (presentation.config == 5U) {
            const std::size_t count = presentation.groups.size();
            count < 5 ? bits.put(count - 2, 2) : bits.put(3, 2).variable(count - 5, 2);
        }
        if (presentation.config && *presentation.config > 6) {
            bits.add(skip_area(presentation.skip_bytes));
        } else {
            for (const std::uint32_t group : presentation.groups) {
                group < 7 ? bits.put(group, 3) : bits.put(7, 3).variable(group - 7, 2);
            }
        }
        bits.flag(presentation.pre_virtualized).flag(presentation.add_emdf.has_value());
        bits.flag(presentation.alternative).flag(presentation.pres_ndot);
        bits.add(substream_index(presentation.substream_index));
    }
    return bits.add(added_emdf(presentation));
}

MetadataBits index_table(const BuildFrame& frame) {
    MetadataBits bits;
    const std::size_t count =
        frame.substream_count.value_or(static_cast<std::uint32_t>(frame.substreams.size()));
    count >= 1 && count <= 3 ? bits.put(count, 2) : bits.put(0, 2).variable(count - 4, 2);
    if (count == 1) {
        bits.flag(frame.size_present);
    }
    if (count == 1 && !frame.size_present) {
        return bits;
    }
    for (std::size_t i = 0; i < count; ++i) {
        std::uint64_t size = i < frame.substreams.size() ? frame.substreams[i].size() : 0;
        if (i < frame.substream_sizes.size()) {
            size = frame.substream_sizes[i];
        }
        bits.flag(size > 1023).put(size & 1023U, 10);
        if (size > 1023) {
            bits.variable(size >> 10, 2);
        }
    }
    return bits;
}

unsigned crc_of(const Ac4Bytes& data) {
    unsigned crc = 0;
    for (const std::uint8_t byte : data) {
        crc ^= static_cast<unsigned>(byte) << 8;
        for (int i = 0; i < 8; ++i) {
            crc = (crc & 0x8000U) != 0 ? ((crc << 1) ^ 0x8005U) & 0xFFFFU : (crc << 1) & 0xFFFFU;
        }
    }
    return crc;
}

Ac4Bytes plain_audio(std::size_t audio_bytes, int ch_mode) {
    SubstreamText text;
    text.audio_bytes = audio_bytes;
    text.ch_mode = ch_mode;
    return write_substream(text);
}

Ac4Bytes plain_presentation_substream(std::uint32_t dialnorm) {
    PresentationText text;
    text.dialnorm = dialnorm;
    text.tail.put(0, 16);
    return write_presentation(text).to_bytes();
}

}  // namespace

MetadataBits write_emdf_info(const BuildEmdf& emdf) {
    constexpr std::array<std::size_t, 4> kBytes = {0, 1, 4, 16};
    MetadataBits bits;
    emdf.version < 3 ? bits.put(emdf.version, 2) : bits.put(3, 2).variable(emdf.version - 3, 2);
    emdf.key_id < 7 ? bits.put(emdf.key_id, 3) : bits.put(7, 3).variable(emdf.key_id - 7, 3);
    bits.flag(emdf.payloads_index.has_value());
    if (emdf.payloads_index) {
        bits.add(substream_index(*emdf.payloads_index));
    }
    bits.put(emdf.primary_length, 2).put(emdf.secondary_length, 2);
    return bits.bytes(
        Ac4Bytes(kBytes[emdf.primary_length] + kBytes[emdf.secondary_length], emdf.protection));
}

MetadataBits write_content_type(const std::optional<BuildContent>& content) {
    MetadataBits bits;
    bits.flag(content.has_value());
    if (!content) {
        return bits;
    }
    bits.put(content->classifier, 3).flag(content->language || content->serialized);
    if (content->serialized) {
        bits.flag(true).flag(content->serialized->first).put(content->serialized->second, 16);
    } else if (content->language) {
        bits.flag(false).put(content->language->size(), 6);
        bits.bytes(Ac4Bytes(content->language->begin(), content->language->end()));
    }
    return bits;
}

MetadataBits write_group(const BuildGroup& group, std::uint32_t fs_index) {
    MetadataBits bits;
    const std::size_t count = group.substreams.size();
    bits.flag(group.substreams_present).flag(group.hsf_ext).flag(count == 1);
    if (count != 1) {
        count < 5 ? bits.put(count - 2, 2) : bits.put(3, 2).variable(count - 5, 2);
    }
    bits.flag(group.channel_coded);
    if (!group.channel_coded) {
        bits.flag(group.oamd.has_value());
        if (group.oamd) {
            bits.flag(group.oamd->first);
            if (group.substreams_present) {
                bits.add(substream_index(group.oamd->second));
            }
        }
    }
    for (const BuildSubstream& substream : group.substreams) {
        bits.add(group_substream(substream, group, fs_index));
    }
    return bits.add(write_content_type(group.content));
}

MetadataBits write_toc_head(const BuildFrame& frame) {
    MetadataBits bits;
    bits.put(frame.bitstream_version, 2).put(frame.sequence_counter, 10);
    bits.flag(frame.wait_frames.has_value());
    if (frame.wait_frames) {
        bits.put(*frame.wait_frames, 3);
        if (*frame.wait_frames > 0) {
            bits.put(frame.br_code, 2);
        }
    }
    bits.put(frame.fs_index, 1).put(frame.frame_rate_index, 4).flag(frame.iframe);
    const std::size_t count = frame.presentations.size();
    bits.flag(count == 1);
    if (count != 1) {
        bits.flag(count > 0);
        if (count > 0) {
            bits.variable(count - 2, 2);
        }
    }
    bits.flag(frame.payload_base > 0);
    if (frame.payload_base > 31) {
        bits.put(31, 5).variable(frame.payload_base - 32, 3);
    } else if (frame.payload_base > 0) {
        bits.put(frame.payload_base - 1, 5);
    }
    if (frame.bitstream_version > 1) {
        bits.flag(frame.short_program_id.has_value());
        if (frame.short_program_id) {
            bits.put(*frame.short_program_id, 16).flag(frame.program_uuid.has_value());
            if (frame.program_uuid) {
                bits.bytes(Ac4Bytes(frame.program_uuid->begin(), frame.program_uuid->end()));
            }
        }
    }
    for (const BuildPresentation& presentation : frame.presentations) {
        bits.add(frame.bitstream_version > 1 ? new_presentation(presentation)
                                             : old_presentation(presentation, frame.fs_index));
    }
    if (frame.bitstream_version > 1) {
        for (const BuildGroup& group : frame.groups) {
            bits.add(write_group(group, frame.fs_index));
        }
    }
    return bits;
}

MetadataBits write_toc(const BuildFrame& frame) {
    return write_toc_head(frame).add(index_table(frame)).align();
}

Ac4Bytes write_ac4_frame(const BuildFrame& frame) {
    Ac4Bytes bytes = write_toc(frame).to_bytes();
    bytes.resize(bytes.size() + frame.payload_base, 0);
    for (const Ac4Bytes& substream : frame.substreams) {
        bytes.insert(bytes.end(), substream.begin(), substream.end());
    }
    return bytes;
}

Ac4Bytes write_syncframe(const Ac4Bytes& frame, bool with_crc, bool long_size) {
    Ac4Bytes body;
    if (long_size || frame.size() >= 0xFFFF) {
        body = {0xFF, 0xFF, static_cast<std::uint8_t>(frame.size() >> 16)};
    }
    body.push_back(static_cast<std::uint8_t>(frame.size() >> 8));
    body.push_back(static_cast<std::uint8_t>(frame.size()));
    body.insert(body.end(), frame.begin(), frame.end());
    if (with_crc) {
        const unsigned crc = crc_of(body);
        body.push_back(static_cast<std::uint8_t>(crc >> 8));
        body.push_back(static_cast<std::uint8_t>(crc));
    }
    const Ac4Bytes sync = {0xAC, static_cast<std::uint8_t>(with_crc ? 0x41 : 0x40)};
    body.insert(body.begin(), sync.begin(), sync.end());
    return body;
}

BuildFrame simple_stereo_frame(std::size_t audio_bytes) {
    BuildFrame frame;
    frame.presentations[0].substream_index = 0;
    frame.groups[0].substreams[0].index = 1;
    frame.groups[0].content = BuildContent{0, "en", {}};
    frame.substreams = {plain_presentation_substream(96), plain_audio(audio_bytes, 1)};
    return frame;
}

BuildFrame main_and_dialogue_frame(std::size_t audio_bytes) {
    BuildFrame frame;
    BuildPresentation mixed;
    mixed.config = 0;
    mixed.groups = {0, 1};
    mixed.id = 1;
    BuildPresentation main_alone;
    main_alone.id = 2;
    main_alone.substream_index = 1;
    BuildPresentation dialogue_alone;
    dialogue_alone.id = 3;
    dialogue_alone.groups = {1};
    dialogue_alone.substream_index = 2;
    frame.presentations = {mixed, main_alone, dialogue_alone};
    BuildGroup main;
    main.substreams[0].mode = ac4_mode::k51;
    main.substreams[0].index = 3;
    main.content = BuildContent{1, {}, {}};
    BuildGroup dialogue;
    dialogue.substreams[0].index = 4;
    dialogue.content = BuildContent{4, "en-GB", {}};
    frame.groups = {main, dialogue};
    frame.substreams = {plain_presentation_substream(96), plain_presentation_substream(92),
                        plain_presentation_substream(100), plain_audio(audio_bytes, 4),
                        plain_audio(audio_bytes, 1)};
    return frame;
}

BuildFrame many_presentations_frame(std::uint32_t count, std::uint32_t groups) {
    BuildFrame frame;
    frame.presentations.clear();
    for (std::uint32_t i = 0; i < count; ++i) {
        BuildPresentation presentation;
        presentation.id = i % 500;
        presentation.config = i % 5;
        presentation.groups = {i % groups, (i + 1) % groups};
        if (i % 5 >= 3) {
            presentation.groups.push_back((i + 2) % groups);
        }
        presentation.emdf.primary_length = 2;
        presentation.emdf.secondary_length = 1;
        frame.presentations.push_back(presentation);
    }
    frame.groups.clear();
    frame.substreams = {plain_presentation_substream(96)};
    for (std::uint32_t i = 0; i < groups; ++i) {
        BuildGroup group;
        group.substreams[0].mode = i % 2 == 0 ? ac4_mode::k51 : ac4_mode::kStereo;
        group.substreams[0].index = i + 1;
        group.content = BuildContent{i % 8, "de", {}};
        frame.groups.push_back(group);
        frame.substreams.push_back(plain_audio(4, i % 2 == 0 ? 4 : 1));
    }
    return frame;
}

}  // namespace mediasplit
