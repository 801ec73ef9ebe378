#include "src/audio/ec3_extension.h"

namespace mediasplit {

AdditionalBsi extension_of(const OapProgramInfo& program) {
    if (program.num_dependent != 0) {
        const OapDependentInfo& dependent = program.dependent[0];
        return {dependent.addbsie != 0, dependent.addbsi_len, dependent.addbsi};
    }
    return {program.addbsie != 0, program.addbsi_len, program.addbsi};
}

}  // namespace mediasplit
