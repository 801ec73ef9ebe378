"""Runs mediasplit-report beside mediasplit, and holds what it writes against its schema."""

import json
import os
import subprocess

import jsonschema

from program import REPOSITORY, ProgramTest, Result

MEDIASPLIT_REPORT = os.path.abspath(
    os.environ.get("MEDIASPLIT_REPORT", "build/release/src/report/mediasplit-report"))

with open(os.path.join(REPOSITORY, "docs", "findings-schema.json"), encoding="utf-8") as schema_file:
    SCHEMA = json.load(schema_file)
jsonschema.Draft202012Validator.check_schema(SCHEMA)


def no_constants(name):
    raise ValueError("%s is no JSON" % name)


def read_report(text):
    """A JSON report, valid by its schema and in itself."""
    report = json.loads(text, parse_constant=no_constants)
    jsonschema.Draft202012Validator(SCHEMA).validate(report)
    names = [stream["stream"] for stream in report["streams"]]
    assert names[0] == "" and len(set(names)) == len(names), names
    assert report["evaluated"] == sorted(report["evaluated"])
    for finding in report["findings"]:
        assert finding["stream"] in names, finding
    for note in report["notes"]:
        assert note["stream"] in names, note
    return report


class ReportTest(ProgramTest):
    def run_report(self, *words, **options):
        options.setdefault("stdout", subprocess.PIPE)
        options.setdefault("stderr", subprocess.PIPE)
        options.setdefault("cwd", self.folder)
        return Result(subprocess.run([MEDIASPLIT_REPORT, *words], timeout=120, stdin=subprocess.DEVNULL,
                                     **options))

    def report_of(self, *words, status=0):
        """The JSON report of a run with these words."""
        result = self.run_report(*words, "--report", "report.json")
        self.assertEqual(result.status, status, result.out + result.err)
        return read_report(self.read("report.json"))

    def ids(self, report):
        return [finding["id"] for finding in report["findings"]]
