// Reading an MPD (ISO/IEC 23009-1) into records.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

#include "base/xml_tree.h"
#include "src/dash_reader/dash_info.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// Index that asks for all Periods.
inline constexpr std::int32_t kAllPeriods = -1;

// Parses an MPD from `text`, else from the start of the open `file`, else from the file `path`,
// which messages name in any case. A document that breaks off is used as far as it goes. Raises
// 4024 if nothing can be read, 4026 if the root isn't an MPD, 3006 without `root` or `path`;
// `*root` stays the caller's to free either way.
Status parse_dash_data(OptText text, std::FILE* file, OptText path, EzxmlPtr* root,
                       Loglist* loglist);

// Reads the whole manifest, or one Period of it, into a new `*info`. With a `representation_id`
// only Representations of that id are kept, and Preselections only if the broadcast rules of AC-4
// are active. Each element read gets its identity as attribute "ui-id" in the tree. Returns the OR
// of what was raised; if that isn't 0, `*info` is empty.
Status get_dash_info(std::unique_ptr<DashInfo>* info, Ezxml* root, OptText manifest_url,
                     std::int32_t period_index, OptText representation_id, Loglist* loglist);

// Frees an old record and makes an empty one.
Status init_dash_info(std::unique_ptr<DashInfo>* info, Loglist* loglist);
void desctroy_dash_info(std::unique_ptr<DashInfo>& info);

// Attribute `name` as a number by the rules of strtoul, cut to 32 bits; `out` is left alone if it
// is missing. Raises 4092 if the text is empty or has other characters at its end.
Status get_attribute_uint32(const Ezxml* node, const char* name, std::uint32_t& out,
                            Loglist* loglist = nullptr);
// The same by str2ulonglong, without a test; 0 if it is missing.
Status get_attribute_uint64(const Ezxml* node, const char* name, std::uint64_t& out);

}  // namespace mediasplit
