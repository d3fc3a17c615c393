// The validator's checks, group by group, in the order they run.
#include "check.h"

namespace validate {
namespace {

using AddChecks = void (*)(const Plan&, Checks&);

const AddChecks kGroups[] = {
    addLifecycleChecks,
    addMissingChecks,
    addFaultChecks,
    addCancelChecks,
    addHostileChecks,
    addInputChecks,
    addDialogFuzzChecks,
    addScoreChecks,
    addProcessChecks,
};

}  // namespace

Checks allChecks(const Plan& plan) {
    Checks out;
    for (AddChecks add : kGroups) add(plan, out);
    return out;
}

}  // namespace validate
