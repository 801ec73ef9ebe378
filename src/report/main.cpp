#include "src/report/report_run.h"

int main(int argc, char** argv) {
    return mediasplit::report::run_reporting(argc, argv);
}
