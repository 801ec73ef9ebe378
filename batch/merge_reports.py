#!/usr/bin/env python3
"""Merges the reports of a batch into one JSON document on standard output.

    merge_reports.py RESULTS

"inputs": each input with its result, counts and the folder that holds its streams; "failed": the inputs whose run
failed or left no report; "rules": each message that was raised, with how often and for which inputs, the worst and
most frequent first.
"""

import json
import os
import sys

LEVELS = ("fatal", "error", "warning", "info")
COUNTS = ("error", "warning", "info")
RULE_FIELDS = ("id", "level", "family", "layer", "reference")


def text_of(path):
    with open(path, encoding="utf-8", errors="surrogateescape") as file:
        return file.read().rstrip("\n")


def report_of(folder):
    """The report of an input, or nothing if it is missing or broken."""
    try:
        with open(os.path.join(folder, "report.json"), encoding="utf-8") as file:
            report = json.load(file)
    except (OSError, ValueError):
        return {}
    return report if isinstance(report, dict) else {}


def folders_of(results):
    for name in sorted(os.listdir(results)):
        if os.path.isfile(os.path.join(results, name, "status")):
            yield name


def add_findings(rules, given, findings):
    for finding in findings:
        rule = rules.get(finding["id"])
        if rule is None:
            rule = rules[finding["id"]] = {
                **{field: finding.get(field, "") for field in RULE_FIELDS},
                "example": finding.get("text", ""), "count": 0, "inputs": []}
        rule["count"] += finding.get("count", 1)
        if rule["inputs"][-1:] != [given]:
            rule["inputs"].append(given)


def merge(results):
    inputs, failed, rules = [], [], {}
    for name in folders_of(results):
        folder = os.path.join(results, name)
        given, status, report = text_of(os.path.join(folder, "input")), int(text_of(os.path.join(folder, "status"))), \
            report_of(folder)
        counts = [stream.get("counts", {}) for stream in report.get("streams", [])]
        inputs.append({"input": given, "folder": name, "status": status, "result": report.get("result", "Failed"),
                       "counts": {level: sum(count.get(level, 0) for count in counts) for level in COUNTS}})
        if status == 1 or not report:
            failed.append(given)
        add_findings(rules, given, report.get("findings", []))

    def order(rule):
        level = LEVELS.index(rule["level"]) if rule["level"] in LEVELS else len(LEVELS)
        return level, -len(rule["inputs"]), -rule["count"], rule["id"]

    return {"tool": "mediasplit-report", "runs": len(inputs), "failed": failed, "inputs": inputs,
            "rules": sorted(rules.values(), key=order)}


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: %s RESULTS" % sys.argv[0])
    # Names that aren't UTF-8 come out as escapes, so that the document is valid whatever they are.
    json.dump(merge(sys.argv[1]), sys.stdout, indent=2)
    print()


if __name__ == "__main__":
    main()
