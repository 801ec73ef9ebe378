// Comma lists of codec texts.
#include <algorithm>
#include <array>
#include <string_view>

#include "src/log/logging.h"
#include "src/util/text.h"
#include "src/video/codec_text.h"

namespace mediasplit {
namespace {

constexpr std::size_t kMaxComparedList = 127;
constexpr std::size_t kMaxSplitList = 100;
constexpr std::size_t kFullPrismaCodec = 10;  // "pxhe.08.09"

// Calls `visit(piece)` for each piece between commas, runs of commas counting as one, until it
// returns false. Tells whether all were visited.
template <typename Visit>
bool for_each_piece(std::string_view list, Visit visit) {
    while (!list.empty()) {
        const std::size_t comma = std::min(list.find(','), list.size());
        if (comma > 0 && !visit(list.substr(0, comma))) {
            return false;
        }
        list.remove_prefix(std::min(comma + 1, list.size()));
    }
    return true;
}

bool all_contained(std::string_view pieces, std::string_view list) {
    return for_each_piece(pieces,
                          [&](std::string_view piece) { return codec_is_contained(list, piece); });
}

// Keeps the enhancement codecs of a list. Tells whether there was a list to look at.
bool keep_prisma_codecs(OptText list, std::string* out) {
    if (out == nullptr) {
        return false;
    }
    out->clear();
    if (!list || list->size() > kMaxSplitList) {
        return false;
    }
    constexpr std::array<std::string_view, 3> kMarks = {"pxa", "pxh", "pav"};
    for_each_piece(*list, [&](std::string_view piece) {
        const bool is_prisma = std::any_of(
            kMarks.begin(), kMarks.end(),
            [&](std::string_view mark) { return piece.find(mark) != std::string_view::npos; });
        if (is_prisma) {
            *out += out->empty() ? "" : ",";
            *out += piece;
        }
        return true;
    });
    *out = std::string(erasespace(*out));
    return true;
}

struct CodecFamily {
    std::string_view prefix;
    bool is_audio;
    bool is_video;
};

constexpr std::array<CodecFamily, 10> kCodecFamilies = {{
    {"mp4a", true, false},
    {"ac-3", true, false},
    {"ac-4", true, false},
    {"ec-3", true, false},
    {"avc", false, true},
    {"hev", false, true},
    {"hvc", false, true},
    {"pxa", false, true},
    {"pxh", false, true},
    // In both columns on purpose: the enhancement codecs with an AV1 base pass both filters.
    {"pav", true, true},
}};

bool split_codecs(OptText codecs, std::optional<std::string>& out, Status& status, Loglist* loglist,
                  bool CodecFamily::*wanted) {
    if (!codecs || codecs->size() > kMaxSplitList) {
        return false;
    }
    bool kept = false;
    for_each_piece(*codecs, [&](std::string_view piece) {
        const auto* const family =
            std::find_if(kCodecFamilies.begin(), kCodecFamilies.end(),
                         [&](const CodecFamily& row) { return piece.starts_with(row.prefix); });
        if (family == kCodecFamilies.end()) {
            status |= check(false, loglist, 2021, {}, piece);
            return true;
        }
        note_evaluated(2021);
        if (!(family->*wanted)) {
            return true;
        }
        kept = true;
        if (!out) {
            out = std::string(piece);
        } else if (out->find(piece) == std::string::npos) {
            *out += ',';
            *out += piece;
        }
        return true;
    });
    return kept;
}

}  // namespace

bool codec_is_contained(OptText list, OptText codec) {
    if (!list || !codec || list->size() > kMaxComparedList || codec->size() > kMaxComparedList) {
        return false;
    }
    if (list->find(',') == std::string_view::npos) {
        return codec_match(list, codec);
    }
    return !for_each_piece(*list,
                           [&](std::string_view piece) { return !codec_match(piece, codec); });
}

bool codecs_match(OptText a, OptText b) {
    if (!a || !b) {
        return !a && !b;
    }
    if (a->data() == b->data() && a->size() == b->size()) {
        return true;
    }
    if (a->size() > kMaxComparedList || b->size() != a->size() ||
        std::count(a->begin(), a->end(), ',') != std::count(b->begin(), b->end(), ',')) {
        return false;
    }
    return *a == *b || (all_contained(*a, *b) && all_contained(*b, *a));
}

bool splitprsmcodec(OptText list, std::string* out) {
    return keep_prisma_codecs(list, out) && out->size() == kFullPrismaCodec;
}

bool splitprsm_supplemental_codec(OptText list, std::string* out) {
    return keep_prisma_codecs(list, out) && out->size() >= kFullPrismaCodec;
}

bool splitcodec_audio(OptText codecs, std::optional<std::string>& out, Status& status,
                      Loglist* loglist) {
    return split_codecs(codecs, out, status, loglist, &CodecFamily::is_audio);
}

bool splitcodec_video(OptText codecs, std::optional<std::string>& out, Status& status,
                      Loglist* loglist) {
    return split_codecs(codecs, out, status, loglist, &CodecFamily::is_video);
}

}  // namespace mediasplit
