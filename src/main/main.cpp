#include "src/main/run.h"

int main(int argc, char** argv) {
    return mediasplit::run_program(argc, argv);
}
