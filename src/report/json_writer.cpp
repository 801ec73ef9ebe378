#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "src/report/text_escape.h"
#include "src/report/writers.h"

namespace mediasplit::report {

namespace {

using Json = nlohmann::ordered_json;

Json json_of(const Output& output) {
    return {{"file", valid_utf8(output.file)},
            {"kind", valid_utf8(output.kind)},
            {"bytes", output.bytes}};
}

std::uint64_t count_of(const Stream& stream, Level level) {
    return stream.counts[static_cast<std::size_t>(level)];
}

Json json_of(const Stream& stream) {
    Json outputs = Json::array();
    for (const Output& output : stream.outputs) {
        outputs.push_back(json_of(output));
    }
    const Json counts = {
        {"error", count_of(stream, Level::kError) + count_of(stream, Level::kFatal)},
        {"warning", count_of(stream, Level::kWarning)},
        {"info", count_of(stream, Level::kInfo)}};
    return {{"stream", valid_utf8(stream.name)}, {"outputs", outputs}, {"counts", counts}};
}

Json json_of(const Finding& finding, const FindingsReport& report) {
    const CatalogueRow& row = row_of(finding);
    Json json = {{"id", finding.id},
                 {"level", name_of(level_of(row))},
                 {"checkpoint", row.checkpoint},
                 {"family", name_of(family_of(row))},
                 {"layer", name_of(layer_of(row))},
                 {"stream", valid_utf8(report.streams[finding.stream].name)},
                 {"element", valid_utf8(finding.element)},
                 {"attribute", valid_utf8(finding.attribute)},
                 {"text", valid_utf8(finding.text)},
                 {"reference", row.reference},
                 {"count", finding.count}};
    if (finding.stands_for_more) {
        json["stands_for_more"] = true;
    }
    return json;
}

Json json_of(const Note& note, const FindingsReport& report) {
    return {{"stream", valid_utf8(report.streams[note.stream].name)},
            {"text", valid_utf8(note.text)},
            {"count", note.count}};
}

// A list with one record a line, written record by record: a report may be long.
template <typename Records, typename ToJson>
void write_list(std::string_view name, const Records& records, const ToJson& to_json,
                std::string_view behind, std::ostream& out) {
    out << "  " << Json(name).dump() << ": [";
    std::string_view between = "\n    ";
    for (const auto& record : records) {
        out << between << to_json(record).dump();
        between = ",\n    ";
    }
    out << (records.empty() ? "]" : "\n  ]") << behind << '\n';
}

void write_member(std::string_view name, const Json& value, std::ostream& out) {
    out << "  " << Json(name).dump() << ": " << value.dump() << ",\n";
}

}  // namespace

void write_json(const FindingsReport& report, std::ostream& out) {
    out << "{\n";
    write_member("tool", kToolName, out);
    write_member("version", kToolVersion, out);
    write_member("input", valid_utf8(report.input), out);
    write_member("result", report.failed ? "Failed" : "Succeed", out);
    write_list(
        "streams", report.streams, [](const Stream& stream) { return json_of(stream); }, ",", out);
    write_list(
        "findings", report.findings,
        [&report](const Finding& finding) { return json_of(finding, report); }, ",", out);
    write_member("evaluated", report.evaluated, out);
    write_list(
        "notes", report.notes, [&report](const Note& note) { return json_of(note, report); }, "",
        out);
    out << "}\n";
}

}  // namespace mediasplit::report
