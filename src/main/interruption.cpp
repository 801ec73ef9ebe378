#include "src/main/interruption.h"

#include <csignal>

#include "src/util/fetched_files.h"

namespace mediasplit {
namespace {

extern "C" void end_run(int signal) {
    stop_fetched_files();
    remove_all_fetched_files();
    // The handler is installed for one call: this one meets the system's own.
    static_cast<void>(std::raise(signal));
}

void catch_signal(int signal) {
    struct sigaction before {};
    if (::sigaction(signal, nullptr, &before) != 0 || before.sa_handler == SIG_IGN) {
        return;
    }
    struct sigaction action {};
    action.sa_handler = end_run;
    action.sa_flags = SA_RESETHAND;
    static_cast<void>(::sigaction(signal, &action, nullptr));
}

}  // namespace

void prepare_for_signals() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        catch_signal(signal);
    }
}

}  // namespace mediasplit
