#include "src/report/wording.h"

#include "src/report/text_escape.h"

namespace mediasplit::report {

namespace {

std::string joined(std::string left, std::string_view between, std::string_view right) {
    if (!left.empty() && !right.empty()) {
        left += between;
    }
    left += right;
    return left;
}

}  // namespace

std::string grouped(std::uint64_t number) {
    std::string text = std::to_string(number);
    for (std::size_t at = text.size(); at > 3;) {
        at -= 3;
        text.insert(at, 1, ',');
    }
    return text;
}

std::string counted(std::uint64_t number, std::string_view noun) {
    return grouped(number) + " " + std::string(noun) + (number == 1 ? "" : "s");
}

std::string told_counts(const Stream& stream) {
    std::string text;
    for (int level = kLevelCount - 1; level >= 0; --level) {
        const std::uint64_t count = stream.counts[static_cast<std::size_t>(level)];
        if (count != 0) {
            const std::string_view name = name_of(static_cast<Level>(level));
            text = joined(std::move(text), ", ",
                          counted(count, name == "fatal" ? "fatal error" : name));
        }
    }
    return text.empty() ? "no findings" : text;
}

std::string told_counts(const FindingsReport& report) {
    Stream all;
    for (const Stream& stream : report.streams) {
        for (std::size_t level = 0; level < stream.counts.size(); ++level) {
            all.counts[level] += stream.counts[level];
        }
    }
    return told_counts(all);
}

std::string stream_title(const Stream& stream) {
    return stream.name.empty() ? "Main stream" : printable(stream.name);
}

std::string class_of(const CatalogueRow& row) {
    const Family family = family_of(row);
    const Layer layer = layer_of(row);
    if (family == Family::kGeneral) {
        return std::string(name_of(layer));
    }
    return layer == Layer::kGeneral
               ? std::string(name_of(family))
               : std::string(name_of(family)) + ", " + std::string(name_of(layer));
}

std::string place_of(const Finding& finding) {
    const std::string attribute =
        finding.attribute.empty() ? std::string() : "@" + printable(finding.attribute);
    return joined(printable(finding.element), " ", attribute);
}

}  // namespace mediasplit::report
