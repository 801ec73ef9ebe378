#include "src/tsTableParse/descriptors.h"

#include <array>
#include <cstdio>
#include <string>

#include "src/log/logging.h"
#include "src/tsTableParse/tree_fields.h"

namespace mediasplit {

namespace {

struct DescriptorLabel {
    std::int64_t tag;
    const char* name;
};

constexpr std::array kLabels = {
    DescriptorLabel{0x0A, "(0x0A) ISO 639 Language Descriptor"},
    DescriptorLabel{kTagAc3, "(0x6A) AC-3 Descriptor (DVB)"},
    DescriptorLabel{kTagEc3Dvb, "(0x7A) Enhanced AC-3 Descriptor (DVB)"},
    DescriptorLabel{kTagAc4, "(0x7F) AC4 Descriptor"},
    DescriptorLabel{0x81, "(0x81) AC-3 / Descriptor (DVB)"},
    DescriptorLabel{kTagPrsm, "(0xB0) PRSM Descriptor"},
    DescriptorLabel{kTagEc3Atsc, "(0xCC) Enhanced AC-3 Descriptor (ATSC)"},
};

std::string label_of(std::int64_t tag) {
    for (const auto& label : kLabels) {
        if (label.tag == tag) {
            return label.name;
        }
    }
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "(0x%02lx) STREAM DESCRIPTOR IS OF UNKNOWN TYPE",
                  static_cast<unsigned long>(tag));
    return text.data();
}

constexpr std::array<const char*, 10> kProfileNames = {
    "pxav.per", "pxav.pen", "pxhe.der", "pxhe.den",   "pxhe.dtr",
    "pxhe.stn", "pxhe.dth", "pxhe.dtb", "unassigned", "pxav.ser"};

// Names of profile 8 by compatibility id; an id of 0 has none.
constexpr std::array<const char*, 6> kCompatibilityNames = {"",         "pxhe.sth", "pxhe.str",
                                                            "pxhe.stl", "pxhe.stg", "pxhe.sts"};

constexpr std::array<const char*, 10> kLevelNames = {"",      "hd24",  "hd30",  "fhd24", "fhd30",
                                                     "fhd60", "uhd24", "uhd30", "uhd48", "uhd60"};

constexpr const char* yes_or_no(std::uint8_t flag) {
    return flag != 0 ? "Yes" : "No";
}

struct NamedByte {
    const char* name;
    std::uint8_t value;
};

void add_fields(Ezxml* tree, std::initializer_list<NamedByte> fields) {
    for (const auto& field : fields) {
        add_field(tree, field.name, field.value);
    }
}

// Steps through the optional parts of a descriptor.
struct DescriptorCursor {
    SectionBytes bytes;
    std::size_t position;

    std::uint8_t next() { return bytes[position++]; }
    std::array<std::uint8_t, 3> next_language() { return {next(), next(), next()}; }
};

}  // namespace

void tsTableParseEAC3Descriptor(SectionBytes bytes, Ec3TsDescriptor& ec3, Ezxml* tree) {
    const auto bit = [&bytes](std::size_t index, unsigned shift) {
        return static_cast<std::uint8_t>((bytes[index] >> shift) & 1);
    };
    ec3.bsid_flag = bit(2, 6);
    ec3.mainid_flag = bit(2, 5);
    ec3.asvc_flag = bit(2, 4);
    ec3.mixinfoexists_flag = bit(2, 3);
    ec3.substream1_flag = bit(2, 2);
    ec3.substream2_flag = bit(2, 1);
    ec3.substream3_flag = bit(2, 0);
    ec3.full_service_flag = bit(3, 6);
    ec3.service_type = (bytes[3] >> 3) & 7;
    ec3.number_of_channels = bytes[3] & 7;
    ec3.language_flag = bit(4, 7);
    ec3.language_flag_2 = bit(4, 6);
    ec3.bsid = ec3.bsid_flag != 0 ? bytes[4] & 0x1F : 0;

    DescriptorCursor cursor{bytes, 5};
    if (ec3.mainid_flag != 0) {
        const std::uint8_t value = cursor.next();
        ec3.priority = (value >> 3) & 3;
        ec3.mainid = value & 7;
    }
    const auto optional_byte = [&cursor](std::uint8_t flag, std::uint8_t& field) {
        field = flag != 0 ? cursor.next() : std::uint8_t{0};
    };
    optional_byte(ec3.asvc_flag, ec3.asvc);
    optional_byte(ec3.substream1_flag, ec3.substream1);
    optional_byte(ec3.substream2_flag, ec3.substream2);
    optional_byte(ec3.substream3_flag, ec3.substream3);
    const auto optional_language = [&cursor](std::uint8_t flag,
                                             std::array<std::uint8_t, 3>& field) {
        if (flag != 0) {
            field = cursor.next_language();
        }
    };
    optional_language(ec3.language_flag, ec3.language);
    optional_language(ec3.language_flag_2, ec3.language_2);
    optional_language(ec3.substream1_flag, ec3.substream1_lang);
    optional_language(ec3.substream2_flag, ec3.substream2_lang);
    optional_language(ec3.substream3_flag, ec3.substream3_lang);

    const std::size_t end = std::size_t{bytes[1]} + 2;
    ec3.flag_ec3_extension_type_a = cursor.position < end ? cursor.next() & 1 : 0;
    ec3.complexity_index_type_a =
        ec3.flag_ec3_extension_type_a != 0 ? cursor.next() : std::uint8_t{0};

    add_fields(tree, {{"bsid_flag", ec3.bsid_flag},
                      {"mainid_flag", ec3.mainid_flag},
                      {"asvc_flag", ec3.asvc_flag},
                      {"mixinfoexists_flag", ec3.mixinfoexists_flag},
                      {"substream1_flag", ec3.substream1_flag},
                      {"substream2_flag", ec3.substream2_flag},
                      {"substream3_flag", ec3.substream3_flag},
                      {"full_service_flag", ec3.full_service_flag},
                      {"service_type", ec3.service_type},
                      {"number_of_channels", ec3.number_of_channels},
                      {"language_flag", ec3.language_flag},
                      {"language_flag_2", ec3.language_flag_2},
                      {"bsid", ec3.bsid},
                      {"flag_ec3_extension_type_a", ec3.flag_ec3_extension_type_a},
                      {"complexity_index_type_a", ec3.complexity_index_type_a}});
}

Status tsTableParsePRSMDescriptor(SectionBytes bytes, PrsmTsDescriptor& prsm, Ezxml* tree,
                                  Loglist* loglist) {
    prsm.px_version_major = bytes[2];
    Status status = Logging_err_type_check(loglist, 1001, {}, prsm.px_version_major);
    prsm.px_version_minor = bytes[3];
    status |= Logging_err_type_check(loglist, 1002, {}, prsm.px_version_minor);
    prsm.px_profile = bytes[4] >> 1;
    prsm.px_level = static_cast<std::uint8_t>((bytes[4] & 1) << 5 | bytes[5] >> 3);
    prsm.rpu_present_flag = (bytes[5] >> 2) & 1;
    prsm.el_present_flag = (bytes[5] >> 1) & 1;
    prsm.bl_present_flag = bytes[5] & 1;

    note_evaluated(4254);
    if (prsm.px_profile >= kProfileNames.size()) {
        return status | Logging_err_type_check(loglist, 4254, {}, prsm.px_profile);
    }
    note_evaluated(4255);
    if (prsm.px_level == 0 || prsm.px_level >= kLevelNames.size()) {
        return status | Logging_err_type_check(loglist, 4255, {}, prsm.px_level);
    }
    std::size_t position = 6;
    int left = int{bytes[1]} - 4;
    if (prsm.bl_present_flag == 0) {
        prsm.dependency_pid = bytes[6] * 32U + (bytes[7] >> 3);
        position = 8;
        left -= 2;
        status |= Logging_err_type_check(loglist, 1003, {}, prsm.dependency_pid);
    }
    const char* profile_name = kProfileNames[prsm.px_profile];
    if (left == 1) {
        prsm.px_bl_signal_compatibility_id = bytes[position] >> 4;
        if (prsm.px_profile == 8) {
            note_evaluated(4256);
            if (prsm.px_bl_signal_compatibility_id >= kCompatibilityNames.size()) {
                return status | Logging_err_type_check(loglist, 4256, {},
                                                       prsm.px_bl_signal_compatibility_id);
            }
            profile_name = kCompatibilityNames[prsm.px_bl_signal_compatibility_id];
        }
    }
    status |=
        Logging_err_type_check(loglist, 1004, {}, profile_name, std::to_string(prsm.px_profile));
    status |= Logging_err_type_check(loglist, 1005, {}, kLevelNames[prsm.px_level],
                                     std::to_string(prsm.px_level));
    status |= Logging_err_type_check(loglist, 1006, {}, yes_or_no(prsm.rpu_present_flag));
    status |= Logging_err_type_check(loglist, 1007, {}, yes_or_no(prsm.el_present_flag));
    status |= Logging_err_type_check(loglist, 1008, {}, yes_or_no(prsm.bl_present_flag));
    if (left == 1) {
        status |= Logging_err_type_check(loglist, 1009, {}, prsm.px_bl_signal_compatibility_id);
    }
    status |= check(left == 0 || left == 1, loglist, 2034, {});

    add_fields(tree, {{"px_version_major", prsm.px_version_major},
                      {"px_version_minor", prsm.px_version_minor},
                      {"px_profile", prsm.px_profile},
                      {"px_level", prsm.px_level},
                      {"rpu_present_flag", prsm.rpu_present_flag},
                      {"el_present_flag", prsm.el_present_flag},
                      {"bl_present_flag", prsm.bl_present_flag},
                      {"px_bl_signal_compatibility_id", prsm.px_bl_signal_compatibility_id}});
    add_field(tree, "dependency_pid", prsm.dependency_pid);
    return status;
}

Status tsTableParseDescriptor(SectionBytes bytes, TsDescriptor& descriptor, std::size_t& consumed,
                              Ezxml* tree, Loglist* loglist) {
    descriptor.tag = bytes[0];
    descriptor.length = bytes[1];
    descriptor.name = label_of(descriptor.tag);
    consumed = static_cast<std::size_t>(descriptor.length) + 2;
    descriptor.raw.resize(consumed);
    for (std::size_t i = 0; i < consumed; ++i) {
        descriptor.raw[i] = bytes[i];
    }
    add_field(tree, "descriptorTag", descriptor.tag);
    add_field(tree, "descriptorLength", descriptor.length);
    switch (descriptor.tag) {
        case kTagEc3Dvb:
        case kTagEc3Atsc:
            tsTableParseEAC3Descriptor(bytes, descriptor.ec3,
                                       add_element(tree, "EnhancedAC3Descriptor"));
            return Status::kOk;
        case kTagPrsm:
            return tsTableParsePRSMDescriptor(bytes, descriptor.prsm,
                                              add_element(tree, "PRSMDescriptor"), loglist);
        default:
            return Status::kOk;
    }
}

}  // namespace mediasplit
