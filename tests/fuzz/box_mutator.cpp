// Changes ISO media files box by box: a box or its payload is changed, and the sizes of all boxes
// around it are put right, so that the change gets past the walk.
#include <array>
#include <cstring>
#include <string_view>

#include "tests/fuzz/mutation.h"

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed);

namespace {

using mediasplit::Bytes;
using mediasplit::Dice;

constexpr std::size_t kHeader = 8;
constexpr std::size_t kDeepest = 12;
constexpr std::size_t kMostBoxes = 20000;

struct Box {
    std::array<std::uint8_t, 4> type{};
    Bytes fields;  // what stands ahead of the children; the whole payload without them
    std::vector<Box> children;
};

struct Container {
    std::string_view type;
    std::size_t fields;  // bytes ahead of the children
};
constexpr Container kContainers[] = {
    {"moov", 0},  {"trak", 0},  {"edts", 0},  {"mdia", 0},  {"minf", 0},  {"dinf", 0},
    {"stbl", 0},  {"mvex", 0},  {"moof", 0},  {"traf", 0},  {"sinf", 0},  {"schi", 0},
    {"udta", 0},  {"mfra", 0},  {"meta", 4},  {"stsd", 8},  {"avc1", 78}, {"avc3", 78},
    {"hvc1", 78}, {"hev1", 78}, {"av01", 78}, {"encv", 78}, {"mp4a", 28}, {"ac-3", 28},
    {"ec-3", 28}, {"ac-4", 28}, {"enca", 28}, {"dref", 8},
};
constexpr std::string_view kTypes[] = {
    "ftyp", "styp", "moov", "trak", "mdia", "minf", "stbl", "stsd", "stts", "ctts", "stsc", "stsz",
    "stz2", "stco", "co64", "stss", "elst", "mvex", "trex", "moof", "mfhd", "traf", "tfhd", "tfdt",
    "trun", "mdat", "sidx", "senc", "saiz", "saio", "sbgp", "sgpd", "subs", "pssh", "tenc", "schm",
    "frma", "sinf", "schi", "encv", "enca", "avcC", "hvcC", "av1C", "esds", "dec3", "dac3", "dac4",
    "avc1", "avc3", "hvc1", "hev1", "av01", "mp4a", "ac-3", "ec-3", "ac-4", "btrt", "colr", "uuid",
    "free", "meta", "emsg", "prft", "hdlr", "mdhd", "tkhd", "mvhd", "elng",
};

std::uint32_t read_size(const std::uint8_t* data) {
    return std::uint32_t{data[0]} << 24U | std::uint32_t{data[1]} << 16U |
           std::uint32_t{data[2]} << 8U | data[3];
}

const Container* find_container(const std::uint8_t* type) {
    for (const Container& row : kContainers) {
        if (std::memcmp(row.type.data(), type, 4) == 0) {
            return &row;
        }
    }
    return nullptr;
}

std::vector<Box> take_apart(const std::uint8_t* data, std::size_t size, std::size_t depth) {
    std::vector<Box> boxes;
    while (size >= kHeader) {
        const std::size_t told = read_size(data);
        const std::size_t whole = told < kHeader || told > size ? size : told;
        Box box;
        std::copy_n(data + 4, 4, box.type.begin());
        const Container* const container = find_container(data + 4);
        std::size_t fields = whole - kHeader;
        if (container != nullptr && depth < kDeepest) {
            fields = std::min(fields, container->fields);
            box.children = take_apart(data + kHeader + fields, whole - kHeader - fields, depth + 1);
        }
        box.fields.assign(data + kHeader, data + kHeader + fields);
        boxes.push_back(std::move(box));
        data += whole;
        size -= whole;
    }
    return boxes;
}

void put_together(const std::vector<Box>& boxes, Bytes& out) {
    for (const Box& box : boxes) {
        const std::size_t start = out.size();
        out.insert(out.end(), 4, 0);
        out.insert(out.end(), box.type.begin(), box.type.end());
        out.insert(out.end(), box.fields.begin(), box.fields.end());
        put_together(box.children, out);
        const std::size_t size = out.size() - start;
        for (std::size_t i = 0; i < 4; ++i) {
            out[start + i] = static_cast<std::uint8_t>(size >> (24 - 8 * i));
        }
    }
}

// A box anywhere in the tree, by the list that holds it and its place there.
struct Place {
    std::vector<Box>* list;
    std::size_t index;
};

void list_places(std::vector<Box>& boxes, std::vector<Place>& places) {
    for (std::size_t i = 0; i < boxes.size() && places.size() < kMostBoxes; ++i) {
        places.push_back({&boxes, i});
        list_places(boxes[i].children, places);
    }
}

void mutate_fields(Box& box, Dice& dice, std::size_t most) {
    // Media data says little: most of its bytes are left alone.
    constexpr std::size_t kHead = 64;
    if (box.fields.size() <= kHead || !dice.one_in(2)) {
        mediasplit::mutate_plainly(box.fields, std::max(box.fields.size(), most));
        return;
    }
    Bytes head(box.fields.begin(), box.fields.begin() + kHead);
    mediasplit::mutate_plainly(head, kHead);
    std::copy(head.begin(), head.end(), box.fields.begin());
}

void change(std::vector<Box>& boxes, Dice& dice, std::size_t room) {
    std::vector<Place> places;
    list_places(boxes, places);
    const Place place = places[dice.below(places.size())];
    std::vector<Box>& list = *place.list;
    const auto at = list.begin() + static_cast<std::ptrdiff_t>(place.index);
    switch (dice.below(10)) {
        case 0:
            list.erase(at);
            break;
        case 1:
            list.insert(at, Box(*at));
            break;
        case 2:
            std::swap(*at, list[dice.below(list.size())]);
            break;
        case 3:
            std::copy_n(kTypes[dice.below(std::size(kTypes))].begin(), 4, at->type.begin());
            break;
        case 4: {
            const Place from = places[dice.below(places.size())];
            Box copy((*from.list)[from.index]);
            at->children.push_back(std::move(copy));
            break;
        }
        default:
            mutate_fields(*at, dice, at->fields.size() + std::min<std::size_t>(room, 64));
            break;
    }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
    Dice dice(seed);
    std::vector<Box> boxes = take_apart(data, size, 0);
    if (boxes.empty() || dice.one_in(8)) {
        return LLVMFuzzerMutate(data, size, most);
    }
    // A harness may take options from the bytes behind the last box.
    std::size_t walked = 0;
    for (std::size_t told = 0; size - walked >= kHeader; walked += told) {
        told = read_size(data + walked);
        told = told < kHeader || told > size - walked ? size - walked : told;
    }
    const Bytes tail(data + walked, data + size);
    for (std::size_t turns = 1 + dice.below(3); turns > 0 && !boxes.empty(); --turns) {
        change(boxes, dice, most > size ? most - size : 0);
    }
    Bytes result;
    put_together(boxes, result);
    result.insert(result.end(), tail.begin(), tail.end());
    return mediasplit::hand_over(result, data, most);
}
