// Compiled, or refused, once for each call that CMakeLists.txt lists.
#include <string>

#include "src/log/logging.h"

mediasplit::Status call(mediasplit::Loglist* loglist, [[maybe_unused]] const std::string& text,
                        [[maybe_unused]] int number) {
    return mediasplit::Logging_err_type_check(loglist, CALL);
}
