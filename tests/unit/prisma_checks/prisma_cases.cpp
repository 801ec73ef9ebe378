#include "tests/unit/prisma_checks/prisma_cases.h"

#include "tests/support/nal_builder.h"

namespace mediasplit {
namespace {

using Modes = std::vector<std::uint32_t>;
using Change = std::function<void(Scenario&)>;
using Maker = Scenario (*)(std::uint32_t mode);
using Makers = std::vector<Maker>;

const Modes kAllModes{kFile, kDash, kVariant, kIframe};
const Modes kPlaylists{kVariant, kIframe};
const Makers kCompatible{profile_8, profile_9, profile_10};

class Cases {
public:
    Cases& add(int id, const Makers& makers, const Modes& modes, const Change& change) {
        for (const Maker make : makers) {
            for (const std::uint32_t mode : modes) {
                rows_.push_back({id, make(mode), change});
            }
        }
        first_ = rows_.size() - makers.size() * modes.size();
        return *this;
    }
    // Of the cases added last.
    Cases& records_only() {
        for (std::size_t i = first_; i < rows_.size(); ++i) {
            rows_[i].as_program = false;
        }
        return *this;
    }
    Cases& accepted_before_the_rule() {
        for (std::size_t i = first_; i < rows_.size(); ++i) {
            rows_[i].accepted_is_evaluated = false;
        }
        return *this;
    }
    // One message for each of the two kinds of playlist streams.
    void add_playlists(int variant, int iframe, const Makers& makers, const Change& change) {
        add(variant, makers, {kVariant}, change);
        add(iframe, makers, {kIframe}, change);
    }

    std::vector<PrismaCase> take() { return std::move(rows_); }

private:
    std::vector<PrismaCase> rows_;
    std::size_t first_ = 0;
};

Scenario plain_avc(std::uint32_t mode) {
    Scenario s;
    s.mode = mode;
    s.entry = "avc1";
    s.config_box.clear();
    s.set_codecs(kAvcCodec);
    return s;
}

Scenario plain_hevc(std::uint32_t mode) {
    Scenario s = plain_avc(mode);
    s.entry = "hvc1";
    s.set_codecs("hvc1.1.6.L120.90");
    return s;
}

Scenario plain_av1(std::uint32_t mode) {
    Scenario s = plain_avc(mode);
    s.entry = "av01";
    s.set_codecs(kAv1Codec);
    return s;
}

// The enhancement layer's parameter set in its unit, of half the base layer's size or not.
mp4::Bytes layers(std::uint32_t width, std::uint32_t height) {
    testing::HevcSpsOptions options;
    options.width = width;
    options.height = height;
    const mp4::Bytes unit = mp4::join({{0x7E, 0x01}, testing::build_hevc_sps(options), {0x7E}});
    return mp4::join({mp4::u32(unit.size()), unit});
}

Scenario profile_4_of_two_layers(std::uint32_t mode) {
    Scenario s = profile_4(mode);
    s.sample = layers(640, 360);
    return s;
}

void add_entry_cases(Cases& cases) {
    const auto names = [](const char* codecs) {
        return [codecs](Scenario& s) { s.set_codecs(codecs); };
    };
    const Modes manifests{kDash, kVariant, kIframe};
    cases.add(4111, {plain_avc, profile_9}, manifests, names("hvc1.1.6.L120.90"));
    cases.add(4112, {plain_hevc, profile_8, profile_5}, manifests, names("avc1.64001f"));
    cases.add(4127, {plain_avc}, {kDash}, names("avc1.64001f,pxav.09.02"));
    cases.add(4127, {plain_hevc}, {kDash}, names("hvc1.1.6.L120.90,pxh1.08.02"));
    cases.add(4155, {plain_avc}, {kVariant}, names("avc1.64001f,pxav.09.02"));
    cases.add(4155, {plain_hevc}, {kVariant}, names("hvc1.1.6.L120.90,pxh1.08.02"));

    const auto no_config = [](Scenario& s) {
        s.config_box.clear();
        s.entry = s.profile == 9 ? "pxav" : s.profile == 10 ? "pav1" : "pxhe";
    };
    cases.add(4171, {profile_8, profile_9, profile_10}, kAllModes, no_config);
    const auto no_codec_box = [](Scenario& s) { s.has_codec_box = false; };
    cases.add(4174, {profile_9}, kAllModes, no_codec_box);
    cases.add(4175, {profile_8}, kAllModes, no_codec_box);
    cases.add(4176, {profile_10, plain_av1}, kAllModes, no_codec_box);
    cases.add(2029, {profile_5, profile_9, profile_10}, kAllModes,
              [](Scenario& s) { s.profile = 7; });
    cases.add(4188, {profile_10}, kAllModes, [](Scenario& s) { s.profile = 8; });
    cases.add(4189, {profile_9}, kAllModes, [](Scenario& s) { s.profile = 8; });
    cases.add(4190, {profile_8}, kAllModes, [](Scenario& s) { s.profile = 9; });
    for (int id = 1010; id <= 1018; ++id) {
        cases
            .add(id, {plain_hevc}, kAllModes,
                 [](Scenario& s) {
                     s.config_box = "pxvC";
                     s.set_codecs("hvc1.1.6.L120.90");
                 })
            .accepted_before_the_rule();
    }
}

void add_container_cases(Cases& cases) {
    const Makers all{profile_4,  profile_5,  profile_8,  profile_9,
                     profile_10, profile_20, profile_32, profile_34};
    const Makers versioned{profile_4,  profile_5,  profile_8, profile_9,
                           profile_10, profile_32, profile_34};
    cases.add(4170, all, kAllModes, [](Scenario& s) { s.brands = {"isom"}; });
    cases.add(4172, all, kAllModes, [](Scenario& s) { s.handler = "meta"; });
    cases.add(4173, all, kAllModes, [](Scenario& s) { s.has_vmhd = false; });
    cases.add(4191, {profile_4, profile_5}, kAllModes, [](Scenario& s) { s.config_box = "pxvC"; });
    cases.add(4192, kCompatible, kAllModes, [](Scenario& s) { s.config_box = "pxcC"; });
    cases.add(4193, {profile_32, profile_34}, kAllModes,
              [](Scenario& s) { s.config_box = "pxvC"; });
    cases.add(4194, versioned, kAllModes, [](Scenario& s) { s.major = 2; });
    cases.add(4195, versioned, kAllModes, [](Scenario& s) { s.minor = 1; });
    cases.add(4253, {profile_4, profile_5, profile_8, profile_9, profile_32, profile_34}, kAllModes,
              [](Scenario& s) { s.level = 5; });
    // Of an I-frame list only the initialization section is taken apart, no sample.
    cases.add(4252, {profile_4_of_two_layers}, {kFile, kDash, kVariant},
              [](Scenario& s) { s.sample = layers(1280, 720); });
    cases.add(4210, {profile_8}, kAllModes, [](Scenario& s) { s.vps_profile = 2; });
    cases.add(4117, all, {kDash}, [](Scenario& s) { s.set().mimeType = "video/MP4"; });
}

void add_configuration_cases(Cases& cases) {
    const Makers compliant{profile_8, profile_9, profile_10, profile_32, profile_34};
    const auto no_metadata = [](Scenario& s) { s.rpu = 0; };
    const auto no_base_layer = [](Scenario& s) { s.base_layer = 0; };
    const auto two_layers = [](Scenario& s) { s.enhancement_layer = 1; };
    const auto id_is = [](std::uint32_t id) { return [id](Scenario& s) { s.compatible_id = id; }; };
    cases.add(4196, compliant, kAllModes, no_metadata);
    cases.add(4197, compliant, kAllModes, no_base_layer);
    cases.add(4198, compliant, kAllModes, two_layers);
    cases.add(4199, {profile_5}, kAllModes, no_metadata);
    cases.add(4200, {profile_5}, kAllModes, no_base_layer);
    cases.add(4201, {profile_5}, kAllModes, two_layers);
    cases.add(4228, {profile_5}, kAllModes, id_is(1));
    cases.add(4229, {profile_5}, kAllModes, [](Scenario& s) { s.md_compression = 1; });
    cases.add(4211, {profile_8}, kAllModes, id_is(3));
    cases.add(4213, {profile_9}, kAllModes, id_is(1));
    cases.add(4216, {profile_10}, kAllModes, id_is(2));
    cases.add(4217, {profile_10_alone}, kAllModes, id_is(3));
    cases.add(4231, {profile_32, profile_34}, kAllModes, id_is(1));
    cases.add(2031, {profile_32, profile_34}, kAllModes, id_is(2));
    cases.add(2032, {profile_32, profile_34}, kAllModes, [](Scenario& s) { s.level = 10; });

    const auto entry_is = [](const char* entry) {
        return [entry](Scenario& s) { s.entry = entry; };
    };
    // A plain entry with a configuration box counts by its own type.
    cases.add(4230, {profile_5}, kAllModes, entry_is("hev1"));
    cases.add(4212, {profile_8}, kAllModes, entry_is("pxhe"));
    cases.add(4214, {profile_9}, kAllModes, entry_is("pxav"));
    cases.add(4219, {profile_10}, kAllModes, entry_is("hvc1"));
    cases.add(4232, {profile_32}, kAllModes, entry_is("avc1"));
    cases.add(4233, {profile_34}, kAllModes, entry_is("hvc1"));

    cases.add(4234, {profile_20}, kAllModes, [](Scenario& s) { s.config_box = "pxvC"; });
    cases.add(4235, {profile_20}, kAllModes, [](Scenario& s) { s.level = 13; });
    cases.add(4236, {profile_20}, kAllModes, [](Scenario& s) { s.major = 1; });
    cases.add(4237, {profile_20}, kAllModes, [](Scenario& s) { s.minor = 1; });
    cases.add(4238, {profile_20}, kAllModes, no_metadata);
    cases.add(4239, {profile_20}, kAllModes, no_base_layer);
    cases.add(4240, {profile_20}, kAllModes, two_layers);
    cases.add(4241, {profile_20}, kAllModes, id_is(1));
    cases.add(4242, {profile_20}, kAllModes, [](Scenario& s) { s.md_compression = 1; });
    cases.add(4243, {profile_20}, kAllModes, entry_is("hvc1"));
    cases.add(4244, {profile_20}, kAllModes, [](Scenario& s) { s.hevc_profile = 1; });
    cases.add(4245, {profile_20}, kAllModes, [](Scenario& s) { s.hevc_level = 184; });
    cases.add(4246, {profile_20}, kAllModes, [](Scenario& s) { s.vps_layers_minus1 = 1; });
}

void add_colour_cases(Cases& cases) {
    const auto colr = [](const char* type, std::uint16_t primaries, std::uint16_t transfer,
                         std::uint16_t matrix) {
        return [=](Scenario& s) { s.colr = ColourBox{type, primaries, transfer, matrix}; };
    };
    const auto with_colr = [](std::uint32_t mode) {
        Scenario s = profile_8(mode);
        s.colr = ColourBox{};
        return s;
    };
    cases.add(2030, {profile_8}, kAllModes, [](Scenario& s) { s.brands = {"orv1", "pb2g"}; });
    cases.add(2030, {profile_9}, kAllModes, [](Scenario& s) { s.brands = {"orv1", "pb1p"}; });
    cases.add(4203, {profile_8}, kAllModes, [](Scenario& s) { s.matrix = 1; });
    cases.add(4204, {profile_8}, kAllModes, [](Scenario& s) { s.primaries = 1; });
    cases.add(4205, {profile_8}, kAllModes, [](Scenario& s) { s.transfer = 18; });
    cases.add(4206, {with_colr, profile_10}, kAllModes, colr("prof", 9, 16, 9));
    cases.add(4207, {with_colr, profile_10}, kAllModes, colr("nclx", 9, 16, 1));
    cases.add(4208, {with_colr, profile_10}, kAllModes, colr("nclx", 1, 16, 9));
    cases.add(4209, {with_colr, profile_10}, kAllModes, colr("nclx", 9, 14, 9));
}

void add_codec_list_cases(Cases& cases) {
    const auto names = [](const char* codecs) {
        return [codecs](Scenario& s) { s.set_codecs(codecs); };
    };
    const auto none = [](Scenario& s) {
        s.representation().codecs.reset();
        s.context.variant_codecs.reset();
    };
    const auto broken = names("pxhe.05.02,");
    cases.add(4118, {profile_5}, {kDash}, broken);
    cases.add(4118, {profile_5}, {kDash}, none).records_only();
    cases.add_playlists(4142, 4149, {profile_5}, broken);
    cases.add(4142, {profile_5}, {kVariant}, none).records_only();
    cases.add(4149, {profile_5}, {kIframe}, none).records_only();

    const auto no_kind = [](Scenario& s) { s.entry = "pxh8"; };
    cases.add(4119, {profile_5, profile_4}, {kDash}, no_kind);
    cases.add(4143, {profile_5, profile_4}, kPlaylists, no_kind);

    cases.add(4120, {profile_5}, {kDash}, names("hvc1.2"));
    cases.add_playlists(4144, 4150, {profile_5}, names("hvc1.2"));
    const auto not_told = [](Scenario& s) { s.drop_supplement(); };
    cases.add(4120, {profile_10}, {kDash}, not_told);
    cases.add_playlists(4144, 4150, {profile_10}, not_told);
    cases.add(4121, {profile_8, profile_9}, {kDash}, not_told);
    cases.add_playlists(4145, 4151, {profile_8, profile_9}, not_told);

    cases.add(4122, {profile_5}, {kDash}, names("pxhe.05.03"));
    cases.add_playlists(4146, 4152, {profile_5}, names("pxhe.05.03"));
    cases.add(4125, {profile_4}, {kDash}, names("pxhe.04.02,hev1,mp4a"));
    cases.add_playlists(4147, 4153, {profile_4}, names("pxhe.04.02,hev1,mp4a"));
    cases.add(4126, {profile_5}, {kDash}, names("pxhe.05.02,mp4a"));
    cases.add_playlists(4148, 4154, {profile_5}, names("pxhe.05.02,mp4a"));
}

void add_compatible_codec_cases(Cases& cases) {
    const auto in_one_list = [](const char* ours) {
        return [ours](Scenario& s) {
            s.representation().shared_init_representations.clear();
            s.context.duplicate_codecs_1.reset();
            s.set_codecs(std::string(ours) + "," + (s.profile == 9 ? kAvcCodec : kHevcCodec));
        };
    };
    const Modes manifests{kDash, kVariant, kIframe};
    cases.add(4113, {profile_8}, manifests, in_one_list("pxhe.08.02"));
    cases.add(4113, {profile_9}, manifests, in_one_list("pxa1.09.02"));
    cases.add(4114, {profile_5}, manifests, in_one_list("pxhe.05.02"));
    cases.add(4115, {profile_8}, manifests,
              [](Scenario& s) { s.set_codecs("pxhe.08.02,hev1.2.4.L93"); });
    cases.add(4115, {profile_9}, manifests, [](Scenario& s) { s.set_codecs("pxa1.09.02"); });
    const auto beside = [](const char* codecs, std::uint32_t set) {
        return [codecs, set](Scenario& s) {
            s.representation().shared_init_representations.clear();
            s.share(codecs, set);
            s.context.duplicate_codecs_1 = codecs;
        };
    };
    cases.add(4116, {profile_5}, {kDash, kVariant}, beside("hev1.2", 1));
    cases.add(4123, {profile_8_in_two}, {kDash}, beside(kHevcCodec, 0));
    cases.add(4123, {profile_9_in_two}, {kDash}, beside(kAvcCodec, 0));
    cases.add(4124, {profile_5}, {kDash}, beside("hev1.2", 0));
    cases.add(2024, {profile_8_in_two}, {kDash, kVariant}, beside("pxhe.08.03", 1));
    cases.add(2024, {profile_5}, {kDash, kVariant}, beside("pxhe.05.03", 1));
    cases.add(2025, {profile_8}, {kDash, kVariant}, beside("hev1.1.6.L120.90,x", 1));
    cases.add(2025, {profile_9}, {kDash, kVariant}, beside("avc1.64001F", 1));
}

void add_dash_cases(Cases& cases) {
    const auto only_ours = [](const char* codecs) {
        return [codecs](Scenario& s) { s.set_codecs(codecs); };
    };
    cases.add(4128, {profile_9}, {kDash}, only_ours("pxa1.09.02"));
    cases.add(4129, {profile_8}, {kDash}, only_ours("pxhe.08.02"));
    cases.add(4131, {profile_10}, {kDash}, only_ours("pav1.10.02"));
    cases.add(4128, {profile_9}, {kDash}, only_ours("avc1.640020"));
    cases.add(4129, {profile_8}, {kDash}, only_ours("hev1.2.4.L120.90"));
    cases.add(4131, {profile_10}, {kDash}, only_ours("av01.0.08M.10"));
    cases.add(4133, kCompatible, {kDash}, [](Scenario& s) { s.mpd.xmlns_scte214 = "urn:scte"; });
    cases.add(4133, kCompatible, {kDash}, [](Scenario& s) { s.mpd.xmlns_scte214.reset(); });
    cases.add(4134, {profile_8}, {kDash}, [](Scenario& s) { s.compatible_id = 2; });
    cases.add(4135, {profile_8, profile_9}, {kDash},
              [](Scenario& s) { s.representation().supplementalCodecs.reset(); });
    cases.add(4136, kCompatible, {kDash},
              [](Scenario& s) { s.representation().supplementalCodecs = "x"; });
    cases.add(4137, {profile_8, profile_9}, {kDash},
              [](Scenario& s) { s.representation().supplementalProfiles.reset(); });
    cases.add(4138, kCompatible, {kDash},
              [](Scenario& s) { s.representation().supplementalProfiles = "x"; });
    const Makers coloured{profile_8, profile_10};
    cases.add(4139, coloured, {kDash}, [](Scenario& s) { s.set().colour_primaries = {}; });
    cases.add(4139, coloured, {kDash}, [](Scenario& s) { s.set().matrix_coefficients = {}; });
    cases.add(4139, coloured, {kDash}, [](Scenario& s) { s.set().transfer_characteristics = {}; });
    cases.add(4140, coloured, {kDash}, [](Scenario& s) { s.set().colour_primaries.value = "1"; });
    cases.add(4140, coloured, {kDash},
              [](Scenario& s) { s.set().matrix_coefficients.value = "1"; });
    cases.add(4140, coloured, {kDash},
              [](Scenario& s) { s.set().transfer_characteristics.value = "1"; });
    cases.add(4141, coloured, {kDash}, [](Scenario& s) {
        s.representation().colour_primaries = {"x", "9"};
    });
    cases.add(4141, coloured, {kDash}, [](Scenario& s) {
        s.representation().matrix_coefficients = {"x", "9"};
    });
    cases.add(4141, coloured, {kDash}, [](Scenario& s) {
        s.representation().transfer_characteristics = {"x", "16"};
    });
    cases.add(2026, {profile_8}, {kDash},
              [](Scenario& s) { s.representation().segmentProfiles.reset(); });
    cases.add(2027, {profile_8}, {kDash},
              [](Scenario& s) { s.representation().segmentProfiles = "chd2"; });
}

void add_playlist_cases(Cases& cases) {
    const auto only_ours = [](const char* codecs) {
        return [codecs](Scenario& s) { s.set_codecs(codecs); };
    };
    cases.add_playlists(4157, 4159, {profile_8}, only_ours("pxhe.08.02"));
    cases.add_playlists(4157, 4159, {profile_9}, only_ours("pxa1.09.02"));
    cases.add_playlists(4158, 4159, {profile_10}, only_ours("pav1.10.02"));

    const Makers ranged{profile_5, profile_8, profile_9, profile_10};
    cases.add_playlists(4160, 4161, ranged, [](Scenario& s) { s.context.video_range.reset(); });
    cases.add_playlists(4162, 4163, ranged, [](Scenario& s) { s.context.video_range = "pq"; });
    cases.add_playlists(4164, 4165, kCompatible, [](Scenario& s) { s.drop_supplement(); });
    cases.add_playlists(4166, 4167, {profile_8},
                        [](Scenario& s) { s.context.supplemental_codecs = "pxhe.08.02"; });
    cases.add_playlists(4166, 4167, kCompatible,
                        [](Scenario& s) { s.context.supplemental_codecs = "pxhe.08.02/pb4h"; });

    cases.add_playlists(4248, 4249, {profile_20},
                        [](Scenario& s) { s.context.req_video_layout.reset(); });
    cases.add_playlists(4250, 4251, {profile_20},
                        [](Scenario& s) { s.context.req_video_layout = "CH-MONO"; });
    cases.add(4247, {profile_20}, kPlaylists, [](Scenario& s) { s.context.hls_version = 11; });
}

}  // namespace

std::vector<PrismaCase> prisma_cases() {
    Cases cases;
    add_entry_cases(cases);
    add_container_cases(cases);
    add_configuration_cases(cases);
    add_colour_cases(cases);
    add_codec_list_cases(cases);
    add_compatible_codec_cases(cases);
    add_dash_cases(cases);
    add_playlist_cases(cases);
    return cases.take();
}

std::vector<RequiredCases> required_prisma_cases() {
    return {
        // Entry, container, configuration and colour.
        {kAllModes,
         {1010, 1011, 1012, 1013, 1014, 1015, 1016, 1017, 1018, 2029, 2030, 2031, 2032, 4170,
          4171, 4172, 4173, 4174, 4175, 4176, 4188, 4189, 4190, 4191, 4192, 4193, 4194, 4195,
          4196, 4197, 4198, 4199, 4200, 4201, 4203, 4204, 4205, 4206, 4207, 4208, 4209, 4211,
          4212, 4213, 4214, 4216, 4217, 4219, 4228, 4229, 4230, 4231, 4232, 4233, 4234, 4235,
          4236, 4237, 4238, 4239, 4240, 4241, 4242, 4243, 4244, 4245, 4246, 4253}},
        {{kFile, kDash, kVariant}, {4252}},
        // What any manifest says of a codec.
        {{kDash, kVariant, kIframe}, {4111, 4112, 4113, 4114, 4115}},
        {{kDash, kVariant}, {2024, 2025, 4116}},
        {{kDash}, {2026, 2027, 4117, 4118, 4119, 4120, 4121, 4122, 4123, 4124, 4125, 4126, 4127,
                   4128, 4129, 4131, 4133, 4134, 4135, 4136, 4137, 4138, 4139, 4140, 4141}},
        {kPlaylists, {4143, 4247}},
        {{kVariant},
         {4142, 4144, 4145, 4146, 4147, 4148, 4155, 4157, 4158, 4160, 4162, 4164, 4166, 4248,
          4250}},
        {{kIframe}, {4149, 4150, 4151, 4152, 4153, 4154, 4159, 4161, 4163, 4165, 4167, 4249, 4251}},
    };
}

}  // namespace mediasplit
