#include "src/main/interruption.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>

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

bool memory_ran_out() {
    try {
        if (const std::exception_ptr thrown = std::current_exception(); thrown != nullptr) {
            std::rethrow_exception(thrown);
        }
    } catch (const std::bad_alloc&) {
        return true;
    } catch (...) {
        return false;
    }
    return false;
}

[[noreturn]] void end_unhandled() {
    if (!memory_ran_out()) {
        std::abort();
    }
    std::fputs("mediasplit: out of memory\n", stderr);
    std::fflush(stdout);
    stop_fetched_files();
    remove_all_fetched_files();
    ::_exit(EXIT_FAILURE);
}

}  // namespace

void prepare_for_want_of_memory() {
    std::set_terminate(end_unhandled);
}

void prepare_for_signals() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        catch_signal(signal);
    }
}

}  // namespace mediasplit
