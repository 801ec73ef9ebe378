#include "src/log/logging.h"

#include <cstring>
#include <optional>
#include <string>

#include "base/ascii.h"
#include "src/log/expand.h"
#include "src/log/output.h"

namespace mediasplit {

namespace {

bool is_error(MessageType type) {
    return type == MessageType::kError || type == MessageType::kFatalError;
}

void tell_sink(int id, const LogContext& context, std::string_view text, Outcome outcome) {
    if (FindingsSink* sink = findings_sink(); sink != nullptr) {
        sink->report({id, text, context, current_stream_label(), outcome});
    }
}

Outcome collect(Loglist* loglist, const std::string& line) {
    if (loglist == nullptr) {
        return Outcome::kUncollected;
    }
    const std::int32_t before = loglist->message_count;
    // A line that can't be stored is lost and nothing else.
    if (print_message(loglist, line.c_str()) != Status::kOk) {
        return Outcome::kUncollected;
    }
    return loglist->message_count > before ? Outcome::kCollected : Outcome::kRepeated;
}

}  // namespace

Status report_message(Loglist* loglist, int id, const LogContext& context,
                      const MessageValue* values, std::size_t count) {
    const CatalogueRow* row = find_catalogue_row(id);
    if (row == nullptr) {
        return Status::kFailed;
    }
    std::optional<ExpandedMessage> expanded = expand_message(*row, values, count);
    if (!expanded) {
        write_to_stdout("DEBUG: log type is invalid : " + std::to_string(id));
        return Status::kFailed;
    }
    const Status result = is_error(row->type) ? Status{row->code} : Status::kOk;
    if (row->collect == 0) {
        const std::string line = written_form(expanded->line);
        if (is_error(row->type)) {
            write_to_stderr(line);
        } else {
            write_to_stdout(line);
        }
        tell_sink(id, context, expanded->text(), Outcome::kPrinted);
        return result;
    }
    if (!checkpoint_should_check(loglist, row->checkpoint)) {
        tell_sink(id, context, expanded->text(), Outcome::kGated);
        return Status::kOk;
    }
    const Outcome outcome = collect(loglist, expanded->line);
    tell_sink(id, context, expanded->text(), outcome);
    return result;
}

bool value_check_match(const ValueCheck& check) {
    const bool has_texts = check.text_a != nullptr && check.text_b != nullptr;
    switch (check.kind) {
        case 1:
            return check.b != 0;
        case 2:
            return static_cast<std::uint32_t>(check.a) == static_cast<std::uint32_t>(check.b);
        case 3:
            return has_texts && std::string_view(check.text_a) == check.text_b;
        case 4:
            return has_texts && equal_ignoring_case(check.text_a, check.text_b);
        case 5:
            return has_texts && std::memcmp(check.text_a, check.text_b, check.length) == 0;
        default:
            return false;
    }
}

Status get_log_attrs(int id, CatalogueRow& row) {
    const CatalogueRow* found = find_catalogue_row(id);
    if (found == nullptr) {
        return Status::kFailed;
    }
    row = *found;
    return Status::kOk;
}

}  // namespace mediasplit
