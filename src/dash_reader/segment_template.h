// Templates of segment addresses (ISO/IEC 23009-1 5.3.9.4.4).
#pragma once

#include <string>

#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// Fills the identifiers of a template in. Raises 4036 to 4039 for an identifier without its value
// and 4040 to 4042 for a width above 20; fails without a message for a missing template and one of
// more than 1,024 characters. `out`, which may be null, is only changed by a success. What isn't an
// identifier stays, and of one identifier with a width only the first width found is filled in.
Status substitute_url(OptText url_template, OptText id, OptText bandwidth, OptText number,
                      OptText time, std::string* out, Loglist* loglist);

}  // namespace mediasplit
