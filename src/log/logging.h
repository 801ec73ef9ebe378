#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "src/log/findings.h"
#include "src/log/loglist.h"
#include "src/log/message_id.h"
#include "src/log/status.h"

namespace mediasplit {

/// The reporting call without its compile-time checks: expands row `id` with `count` values and
/// prints, collects or drops the line as the row tells. An unknown id fails and writes nothing;
/// values that don't fit the row fail with a debug line on standard output.
Status report_message(Loglist* loglist, int id, const LogContext& context,
                      const MessageValue* values, std::size_t count);

/// Tells the sink, if there is one, that the condition of a rule was tested.
inline void note_evaluated(int id) {
    if (FindingsSink* sink = findings_sink(); sink != nullptr) {
        sink->evaluated(id);
    }
}

/// Reports a message of the catalogue, the only way to one. Returns the row's code for errors and
/// 0 for everything else; the caller ORs it into its status. `loglist` may be nullptr: collected
/// rows are dropped then, and still return their code.
template <typename... Values>
Status Logging_err_type_check(Loglist* loglist, MessageId<std::type_identity_t<Values>...> id,
                              const LogContext& context, const Values&... values) {
    note_evaluated(id.number());
    if constexpr (sizeof...(Values) == 0) {
        return report_message(loglist, id.number(), context, nullptr, 0);
    } else {
        const MessageValue erased[] = {make_message_value(values)...};
        return report_message(loglist, id.number(), context, erased, sizeof...(Values));
    }
}

/// The usual path of a rule: tells the sink that the rule was looked at, and reports it when the
/// condition doesn't hold.
template <typename... Values>
[[nodiscard]] Status check(bool holds, Loglist* loglist,
                           MessageId<std::type_identity_t<Values>...> id, const LogContext& context,
                           const Values&... values) {
    if (holds) [[likely]] {
        note_evaluated(id.number());
        return Status::kOk;
    }
    return Logging_err_type_check<Values...>(loglist, id, context, values...);
}

/// A test that `value_check_match` makes.
struct ValueCheck {
    std::uint32_t kind = 0;
    std::uint64_t a = 0;
    std::uint64_t b = 0;
    const char* text_a = nullptr;  ///< kinds 3 to 5; nullptr is "none"
    const char* text_b = nullptr;
    std::uint32_t length = 0;  ///< kind 5: bytes to compare; both sides hold as many
};

/// Whether the test holds. Kinds: 1 `b` isn't zero; 2 the low 32 bits of `a` and `b` are equal;
/// 3 the texts are there and equal; 4 the same, ignoring case; 5 the first `length` bytes are
/// equal. Any other kind, also that of an empty record, never holds.
bool value_check_match(const ValueCheck& check);

/// Copies the columns of a row. Fails if the number lies in no table.
Status get_log_attrs(int id, CatalogueRow& row);

/// Takes a debug text and does nothing with it.
inline void fake([[maybe_unused]] std::string_view text) {}

}  // namespace mediasplit
