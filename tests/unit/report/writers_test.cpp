#include "src/report/writers.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

namespace mediasplit::report {
namespace {

using Json = nlohmann::json;

Finding finding(int id, std::size_t stream, std::string text, std::uint64_t count = 1) {
    Finding result;
    result.id = id;
    result.stream = stream;
    result.text = std::move(text);
    result.count = count;
    return result;
}

// Two streams with findings of all levels.
FindingsReport sample() {
    FindingsReport report;
    report.input = "master.m3u8";
    report.streams.resize(2);
    report.streams[0].counts = {0, 0, 0, 1};
    report.streams[1].name = "audio/1.m3u8";
    report.streams[1].counts = {1, 1, 1, 0};
    report.streams[1].outputs = {{"out/1.out.ec3", "ec3", 1234567},
                                 {"out/long_name.264", "264", 5}};
    report.findings = {finding(1001, 1, "version_major : 1."), finding(4303, 1, "data_rate", 1234),
                       finding(3004, 0, "MEMORY"), finding(2039, 1, "timescale")};
    report.findings[1].element = "Representation[1]";
    report.findings[1].attribute = "codecs";
    report.evaluated = {2039, 4303, 4304};
    report.notes = {{1, "a note", 3}};
    return report;
}

std::string json_of(const FindingsReport& report) {
    std::ostringstream out;
    write_json(report, out);
    return out.str();
}

std::string text_of(const FindingsReport& report, const TextLayout& layout = {}) {
    std::ostringstream out;
    write_text(report, layout, out);
    return out.str();
}

std::string junit_of(const FindingsReport& report) {
    std::ostringstream out;
    write_junit(report, out);
    return out.str();
}

std::string html_of(const FindingsReport& report) {
    std::ostringstream out;
    write_html(report, out);
    return out.str();
}

TEST(JsonWriter, WritesAllThereIs) {
    const Json expected = Json::parse(R"({
      "tool": "mediasplit", "version": "2.0.0", "input": "master.m3u8", "result": "Succeed",
      "streams": [
        {"stream": "", "outputs": [], "counts": {"error": 1, "warning": 0, "info": 0}},
        {"stream": "audio/1.m3u8",
         "outputs": [{"file": "out/1.out.ec3", "kind": "ec3", "bytes": 1234567},
                     {"file": "out/long_name.264", "kind": "264", "bytes": 5}],
         "counts": {"error": 1, "warning": 1, "info": 1}}],
      "findings": [
        {"id": 1001, "level": "info", "checkpoint": 0, "family": "Orvel Prisma", "layer": "TS",
         "stream": "audio/1.m3u8", "element": "", "attribute": "", "text": "version_major : 1.",
         "reference": "", "count": 1},
        {"id": 4303, "level": "error", "checkpoint": 213104, "family": "E-AC-3", "layer": "MP4",
         "stream": "audio/1.m3u8", "element": "Representation[1]", "attribute": "codecs",
         "text": "data_rate", "reference": "ETSI TS 102 366 V1.4.1 (2017-09) F.6.2",
         "count": 1234},
        {"id": 3004, "level": "fatal", "checkpoint": 0, "family": "general", "layer": "general",
         "stream": "", "element": "", "attribute": "", "text": "MEMORY", "reference": "",
         "count": 1},
        {"id": 2039, "level": "warning", "checkpoint": 213002, "family": "E-AC-3", "layer": "MP4",
         "stream": "audio/1.m3u8", "element": "", "attribute": "", "text": "timescale",
         "reference": "Recommendation", "count": 1}],
      "evaluated": [2039, 4303, 4304],
      "notes": [{"stream": "audio/1.m3u8", "text": "a note", "count": 3}]})");
    EXPECT_EQ(Json::parse(json_of(sample())), expected);
}

TEST(JsonWriter, EmptyReportIsWhole) {
    FindingsReport report;
    report.streams.resize(1);
    report.failed = true;
    const Json json = Json::parse(json_of(report));
    EXPECT_EQ(json["result"], "Failed");
    EXPECT_EQ(json["findings"], Json::array());
    EXPECT_EQ(json["notes"], Json::array());
    EXPECT_EQ(json["evaluated"], Json::array());
}

TEST(JsonWriter, AnyBytesMakeAValidDocument) {
    FindingsReport report = sample();
    std::string all;
    for (int c = 0; c < 256; ++c) {
        all += static_cast<char>(c);
    }
    report.input = all;
    report.streams[1].name = all;
    report.streams[1].outputs[0] = {all, all, 1};
    report.findings[0].text = all;
    report.findings[0].element = all;
    report.findings[0].attribute = all;
    report.notes[0].text = all;
    const Json json = Json::parse(json_of(report));
    const std::string read = json["findings"][0]["text"];
    EXPECT_EQ(read.substr(0, 128), all.substr(0, 128));
    EXPECT_EQ(read.substr(128, 8), "\\x80\\x81");
    EXPECT_EQ(json["streams"][1]["stream"], read);
    EXPECT_EQ(json["findings"][0]["stream"], read);
}

TEST(JsonWriter, EntriesForFurtherTextsSaySo) {
    FindingsReport report = sample();
    report.findings[0].stands_for_more = true;
    const Json json = Json::parse(json_of(report));
    EXPECT_EQ(json["findings"][0]["stands_for_more"], true);
    EXPECT_FALSE(json["findings"][1].contains("stands_for_more"));
}

TEST(TextWriter, GroupsByStreamAndLevel) {
    EXPECT_EQ(text_of(sample()),
              "master.m3u8\n"
              "Succeed; 1 fatal error, 1 error, 1 warning, 1 info; 3 rules tested\n"
              "\n"
              "Main stream: 1 fatal error\n"
              "  Fatal errors\n"
              "    3004  MEMORY\n"
              "          general\n"
              "\n"
              "audio/1.m3u8: 1 error, 1 warning, 1 info\n"
              "    out/1.out.ec3      1,234,567 bytes\n"
              "    out/long_name.264          5 bytes\n"
              "  Errors\n"
              "    4303  data_rate\n"
              "          E-AC-3, MP4; Representation[1] @codecs; ETSI TS 102 366 V1.4.1 (2017-09) "
              "F.6.2; 1,234\n"
              "          times\n"
              "  Warnings\n"
              "    2039  timescale\n"
              "          E-AC-3, MP4; Recommendation\n"
              "  Info\n"
              "    1001  version_major : 1.\n"
              "          Orvel Prisma, TS\n"
              "  Notes\n"
              "          a note (3 times)\n");
}

TEST(TextWriter, IdleMainStreamOfAManifestIsLeftOut) {
    FindingsReport report = sample();
    report.findings.erase(report.findings.begin() + 2);
    report.streams[0].counts = {};
    EXPECT_EQ(text_of(report).find("Main stream"), std::string::npos);
    report.streams.resize(1);
    report.findings.clear();
    report.notes.clear();
    EXPECT_EQ(text_of(report),
              "master.m3u8\nSucceed; no findings; 3 rules tested\n\nMain stream: no findings\n");
}

TEST(TextWriter, LinesFitTheWidth) {
    FindingsReport report = sample();
    report.findings[0].text = "words of many letters " + std::string(60, 'x') + " and a few more";
    std::istringstream lines(text_of(report, {40, false}));
    bool has_long_word = false;
    for (std::string line; std::getline(lines, line);) {
        const bool is_word = line == std::string(10, ' ') + std::string(60, 'x');
        has_long_word = has_long_word || is_word;
        const bool is_table = line.find(" bytes") != std::string::npos || line[0] != ' ';
        EXPECT_TRUE(line.size() <= 40 || is_word || is_table) << line;
    }
    EXPECT_TRUE(has_long_word);
}

TEST(TextWriter, ColoursAreForTerminals) {
    EXPECT_EQ(text_of(sample()).find('\033'), std::string::npos);
    const std::string coloured = text_of(sample(), {100, true});
    EXPECT_NE(coloured.find("\033[31m4303\033[0m  data_rate"), std::string::npos);
}

TEST(TextWriter, TextsOfStreamsSteerNoTerminal) {
    FindingsReport report = sample();
    report.input = "\033]0;x\007";
    report.streams[1].name = "\033[2J";
    report.streams[1].outputs[0].file = "\033[2J";
    report.findings[0].text = "\033[2J";
    report.findings[0].element = "\033[2J";
    report.notes[0].text = "\033[2J";
    const std::string text = text_of(report);
    EXPECT_EQ(text.find('\033'), std::string::npos);
    EXPECT_NE(text.find("\\x1B[2J"), std::string::npos);
}

TEST(JunitWriter, SuiteForEachStreamFailureForEachFinding) {
    EXPECT_EQ(junit_of(sample()),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<testsuites name=\"mediasplit\" tests=\"6\" failures=\"4\" errors=\"0\">\n"
              "  <testsuite name=\"Main stream\" tests=\"2\" failures=\"1\" errors=\"0\" "
              "skipped=\"0\">\n"
              "    <testcase classname=\"Main stream\" name=\"demultiplex master.m3u8\"/>\n"
              "    <testcase classname=\"Main stream.general\" name=\"3004: MEMORY\">\n"
              "      <failure type=\"fatal\" message=\"MEMORY\">MEMORY</failure>\n"
              "    </testcase>\n"
              "  </testsuite>\n"
              "  <testsuite name=\"audio/1.m3u8\" tests=\"4\" failures=\"3\" errors=\"0\" "
              "skipped=\"0\">\n"
              "    <testcase classname=\"audio/1.m3u8\" name=\"demultiplex master.m3u8\"/>\n"
              "    <testcase classname=\"audio/1.m3u8.Orvel Prisma, TS\" name=\"1001: "
              "version_major : 1.\">\n"
              "      <failure type=\"info\" message=\"version_major : 1.\">version_major : "
              "1.</failure>\n"
              "    </testcase>\n"
              "    <testcase classname=\"audio/1.m3u8.E-AC-3, MP4\" name=\"4303 Representation[1] "
              "@codecs: data_rate\">\n"
              "      <failure type=\"error\" message=\"data_rate\">data_rate\n"
              "at Representation[1] @codecs\n"
              "ETSI TS 102 366 V1.4.1 (2017-09) F.6.2\n"
              "1,234 times</failure>\n"
              "    </testcase>\n"
              "    <testcase classname=\"audio/1.m3u8.E-AC-3, MP4\" name=\"2039: timescale\">\n"
              "      <failure type=\"warning\" message=\"timescale\">timescale\n"
              "Recommendation</failure>\n"
              "    </testcase>\n"
              "  </testsuite>\n"
              "</testsuites>\n");
}

TEST(JunitWriter, FailedRunIsAnErrorOfTheMainStream) {
    FindingsReport report;
    report.input = "a<b>.mp4";
    report.failed = true;
    report.streams.resize(2);
    report.streams[1].name = "x";
    const std::string text = junit_of(report);
    EXPECT_NE(text.find("tests=\"2\" failures=\"0\" errors=\"1\""), std::string::npos);
    EXPECT_NE(text.find("<error type=\"run\" message=\"Failed to demultiplex a&lt;b&gt;.mp4\"/>"),
              std::string::npos);
    EXPECT_NE(text.find("<testcase classname=\"x\" name=\"demultiplex a&lt;b&gt;.mp4\"/>"),
              std::string::npos);
}

TEST(HtmlWriter, PageNeedsNothingElse) {
    const std::string page = html_of(sample());
    for (const char* word : {"http:", "https:", "src=", "@import", "url(", "<link"}) {
        EXPECT_EQ(page.find(word), std::string::npos) << word;
    }
    EXPECT_NE(page.find("default-src 'none'"), std::string::npos);
}

TEST(HtmlWriter, TextsOfStreamsStayTexts) {
    FindingsReport report = sample();
    const std::string evil = "</script><script>alert(\"1\")</script><img src=x onerror='y'>";
    report.input = evil;
    report.streams[1].name = evil;
    report.streams[1].outputs[0].file = evil;
    report.findings[0].text = evil;
    report.findings[0].element = evil;
    report.findings[0].attribute = evil;
    report.notes[0].text = evil;
    const std::string page = html_of(report);
    EXPECT_EQ(page.find("alert(\""), std::string::npos);
    EXPECT_EQ(page.find("<img"), std::string::npos);
    const auto count = [&page](std::string_view word) {
        std::size_t found = 0;
        for (std::size_t at = page.find(word); at != std::string::npos;
             at = page.find(word, at + 1)) {
            ++found;
        }
        return found;
    };
    EXPECT_EQ(count("<script>"), 1U);
    EXPECT_EQ(count("</script>"), 1U);
}

TEST(HtmlWriter, SummaryCountsByFamilyAndLayer) {
    const std::string page = html_of(sample());
    EXPECT_NE(page.find("<th scope=\"row\">E-AC-3</th><td></td><td><span class=\"error\">1 error"
                        "</span> <span class=\"warning\">1 warning</span> </td>"),
              std::string::npos);
}

TEST(HtmlWriter, ReportWithoutFindingsSaysSo) {
    FindingsReport report;
    report.streams.resize(1);
    const std::string page = html_of(report);
    EXPECT_NE(page.find("<p>No findings.</p>"), std::string::npos);
    EXPECT_EQ(page.find("id=\"filters\""), std::string::npos);
}

}  // namespace
}  // namespace mediasplit::report
