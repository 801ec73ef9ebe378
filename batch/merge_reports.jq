# Folds {folder, input, status, report} documents into one; a report may be null.
def rank: {"fatal": 0, "error": 1, "warning": 2, "info": 3}[.] // 4;
def counts: reduce (.[]?.counts // {}) as $c ({error: 0, warning: 0, info: 0};
    .error += ($c.error // 0) | .warning += ($c.warning // 0) | .info += ($c.info // 0));

reduce inputs as $run ({inputs: [], failed: [], rules: {}};
    .inputs += [{
        input: $run.input,
        folder: $run.folder,
        status: $run.status,
        result: ($run.report.result // "Failed"),
        counts: ($run.report.streams | counts)
    }]
    | if $run.status == 1 or $run.report == null then .failed += [$run.input] else . end
    | reduce ($run.report.findings[]?) as $finding (.;
        ($finding.id | tostring) as $id
        | .rules[$id] //= ($finding | {id, level, family, layer, reference, example: .text, count: 0, inputs: []})
        | .rules[$id].count += ($finding.count // 1)
        | if .rules[$id].inputs[-1] == $run.input then . else .rules[$id].inputs += [$run.input] end))
| {
    tool: "mediasplit-report",
    runs: (.inputs | length),
    failed,
    inputs,
    rules: ([.rules[]] | sort_by([(.level | rank), -(.inputs | length), -.count, .id]))
}
