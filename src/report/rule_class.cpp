#include "src/report/rule_class.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

#include "src/log/catalogue.h"

namespace mediasplit::report {

namespace {

constexpr std::array<std::string_view, kLevelCount> kLevelNames{"info", "warning", "error",
                                                                "fatal"};
constexpr std::array<std::string_view, kFamilyCount> kFamilyNames{"general", "E-AC-3", "AC-4",
                                                                  "Orvel Prisma"};
constexpr std::array<std::string_view, kLayerCount> kLayerNames{"general", "DASH", "HLS",
                                                                "MP4",     "TS",   "ES"};

// Families by the first digit of a checkpoint number, layers by its third.
constexpr std::array<Family, 10> kFamilyOfDigit{Family::kGeneral, Family::kGeneral, Family::kEac3,
                                                Family::kAc4, Family::kPrisma};
constexpr std::array<Layer, 10> kLayerOfDigit{Layer::kGeneral, Layer::kDash, Layer::kHls,
                                              Layer::kMp4,     Layer::kTs,   Layer::kEs};

// Rows without a checkpoint number that speak of a layer or a family all the same. Rows on none of
// these lines are of the run itself: command line, files, addresses, memory.
struct UnnumberedRows {
    int first = 0;
    int last = 0;
    Family family = Family::kGeneral;
    Layer layer = Layer::kGeneral;
};

constexpr UnnumberedRows kUnnumberedRows[] = {
    {1001, 1009, Family::kPrisma, Layer::kTs},    {1010, 1018, Family::kPrisma, Layer::kMp4},
    {1019, 1020, Family::kGeneral, Layer::kHls},  {1022, 1023, Family::kGeneral, Layer::kDash},
    {1024, 1024, Family::kGeneral, Layer::kHls},  {1026, 1027, Family::kGeneral, Layer::kDash},
    {2005, 2010, Family::kGeneral, Layer::kDash}, {2011, 2021, Family::kGeneral, Layer::kHls},
    {2022, 2022, Family::kGeneral, Layer::kTs},   {2023, 2023, Family::kGeneral, Layer::kMp4},
    {2028, 2028, Family::kPrisma, Layer::kMp4},   {2035, 2035, Family::kEac3, Layer::kEs},
    {4003, 4003, Family::kGeneral, Layer::kTs},   {4011, 4011, Family::kGeneral, Layer::kMp4},
    {4018, 4019, Family::kGeneral, Layer::kDash}, {4020, 4020, Family::kGeneral, Layer::kHls},
    {4024, 4046, Family::kGeneral, Layer::kDash}, {4047, 4060, Family::kGeneral, Layer::kHls},
    {4061, 4061, Family::kGeneral, Layer::kDash}, {4064, 4064, Family::kGeneral, Layer::kTs},
    {4067, 4073, Family::kGeneral, Layer::kMp4},  {4074, 4075, Family::kGeneral, Layer::kTs},
    {4076, 4076, Family::kGeneral, Layer::kEs},   {4077, 4077, Family::kAc4, Layer::kEs},
    {4083, 4085, Family::kGeneral, Layer::kMp4},  {4086, 4096, Family::kGeneral, Layer::kDash},
    {4097, 4103, Family::kGeneral, Layer::kHls},  {4104, 4104, Family::kGeneral, Layer::kMp4},
    {4105, 4108, Family::kGeneral, Layer::kTs},   {4111, 4112, Family::kPrisma, Layer::kGeneral},
    {4264, 4265, Family::kEac3, Layer::kEs},      {4414, 4414, Family::kAc4, Layer::kMp4},
    {4494, 4494, Family::kGeneral, Layer::kMp4},  {4495, 4497, Family::kGeneral, Layer::kHls},
};

// Looks through the tables by index: what a pointer to a row is compared with isn't a constant
// under the sanitizers.
constexpr int checkpoint_of(int id) {
    for (const CatalogueTable& table : kCatalogueTables) {
        if (id >= table.first_id && id - table.first_id < table.row_count) {
            return table.rows[id - table.first_id].checkpoint;
        }
    }
    return 0;
}

// The lines are in the order of their numbers, and name rows of the catalogue that have no
// checkpoint number.
constexpr bool lines_are_sound() {
    int behind = 0;
    for (const UnnumberedRows& line : kUnnumberedRows) {
        if (line.first <= behind || line.last < line.first) {
            return false;
        }
        for (int id = line.first; id <= line.last; ++id) {
            if (catalogue_index(id) < 0 || checkpoint_of(id) != 0) {
                return false;
            }
        }
        behind = line.last;
    }
    return true;
}
static_assert(lines_are_sound());

const UnnumberedRows* line_of(int id) {
    const auto* line =
        std::find_if(std::begin(kUnnumberedRows), std::end(kUnnumberedRows),
                     [id](const UnnumberedRows& l) { return id >= l.first && id <= l.last; });
    return line == std::end(kUnnumberedRows) ? nullptr : line;
}

constexpr std::size_t digit(int checkpoint, int unit) {
    return static_cast<std::size_t>(checkpoint / unit % 10);
}

constexpr int kFirstDigit = 100000;
constexpr int kThirdDigit = 1000;

}  // namespace

std::string_view name_of(Level level) {
    return kLevelNames[static_cast<std::size_t>(level)];
}

std::string_view name_of(Family family) {
    return kFamilyNames[static_cast<std::size_t>(family)];
}

std::string_view name_of(Layer layer) {
    return kLayerNames[static_cast<std::size_t>(layer)];
}

bool is_finding(const CatalogueRow& row) {
    return row.type != MessageType::kPlain && row.type != MessageType::kDebug;
}

Level level_of(const CatalogueRow& row) {
    switch (row.type) {
        case MessageType::kFatalError:
            return Level::kFatal;
        case MessageType::kError:
            return Level::kError;
        case MessageType::kWarning:
            return Level::kWarning;
        default:
            return Level::kInfo;
    }
}

bool is_rule(const CatalogueRow& row) {
    return row.type == MessageType::kWarning || row.type == MessageType::kError;
}

Family family_of(const CatalogueRow& row) {
    if (row.checkpoint != 0) {
        return kFamilyOfDigit[digit(row.checkpoint, kFirstDigit)];
    }
    const UnnumberedRows* line = line_of(row.id);
    return line == nullptr ? Family::kGeneral : line->family;
}

Layer layer_of(const CatalogueRow& row) {
    if (row.checkpoint != 0) {
        return kLayerOfDigit[digit(row.checkpoint, kThirdDigit)];
    }
    const UnnumberedRows* line = line_of(row.id);
    return line == nullptr ? Layer::kGeneral : line->layer;
}

}  // namespace mediasplit::report
